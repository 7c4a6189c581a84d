"""What a desktop offers to its programs on the bus, played by a test: a place for icons, and notifications."""
import ctypes
import threading

import dbus
import dbus.bus
import dbus.lowlevel
import dbus.mainloop.glib

CALL = 1  # the kind of message
GLIB = ctypes.CDLL("libglib-2.0.so.0")  # which the bus of Python stands on, and which nothing else here needs

WATCHER = "org.kde.StatusNotifierWatcher"
NOTIFICATIONS = "org.freedesktop.Notifications"
PROPERTIES = "org.freedesktop.DBus.Properties"

WATCHER_PROPERTIES = {"IsStatusNotifierHostRegistered": dbus.Boolean(True), "ProtocolVersion": dbus.Int32(0),
                      "RegisteredStatusNotifierItems": dbus.Array([], signature="s")}
WATCHER_DESCRIPTION = f"""<node><interface name="{WATCHER}">
<method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
<method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
<property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
<property name="ProtocolVersion" type="i" access="read"/>
<property name="RegisteredStatusNotifierItems" type="as" access="read"/>
<signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
<signal name="StatusNotifierHostRegistered"/>
</interface></node>"""


class Host:
    """Answers in a thread of its own. items: owner and path of each icon; notes: the arguments of each notification."""

    def __init__(self, address, icons=True):
        dbus.mainloop.glib.threads_init()
        self.items = []
        self.notes = []
        self.closed = threading.Event()
        self.answers = {
            (WATCHER, "RegisterStatusNotifierItem"): self.add_item,
            (WATCHER, "RegisterStatusNotifierHost"): lambda message: ("",),
            (PROPERTIES, "Get"): lambda message: ("v", WATCHER_PROPERTIES[str(message.get_args_list()[1])]),
            (PROPERTIES, "GetAll"): lambda message: ("a{sv}", dbus.Dictionary(WATCHER_PROPERTIES, signature="sv")),
            ("org.freedesktop.DBus.Introspectable", "Introspect"): lambda message: ("s", WATCHER_DESCRIPTION),
            (NOTIFICATIONS, "Notify"): self.add_note,
            (NOTIFICATIONS, "GetCapabilities"): lambda message: ("as", ["body", "actions", "default-action"]),
            (NOTIFICATIONS, "GetServerInformation"): lambda message: ("ssss", "test", "test", "1", "1.2"),
            (NOTIFICATIONS, "CloseNotification"): lambda message: ("",),
        }
        self.bus = dbus.bus.BusConnection(address, mainloop=dbus.mainloop.glib.DBusGMainLoop())
        self.bus.set_exit_on_disconnect(False)
        self.bus.add_message_filter(self.take)
        self.bus.request_name(NOTIFICATIONS)
        if icons:
            self.bus.request_name(WATCHER)
        self.thread = threading.Thread(target=self.serve)
        self.thread.start()

    def close(self):
        self.closed.set()
        self.thread.join()
        self.bus.close()

    def serve(self):
        while not self.closed.wait(0.002):
            while GLIB.g_main_context_iteration(None, 0):
                pass

    def take(self, _, message):
        answer = self.answers.get((message.get_interface(), message.get_member()))
        if message.get_type() != CALL or answer is None:
            return dbus.lowlevel.HANDLER_RESULT_NOT_YET_HANDLED
        signature, *values = answer(message)
        reply = dbus.lowlevel.MethodReturnMessage(message)
        if signature:
            reply.append(*values, signature=signature)
        self.bus.send_message(reply)
        return dbus.lowlevel.HANDLER_RESULT_HANDLED

    def add_item(self, message):
        name = str(message.get_args_list()[0])
        by_path = name.startswith("/")
        self.items.append((message.get_sender() if by_path else name, name if by_path else "/StatusNotifierItem"))
        return ("",)

    def add_note(self, message):
        self.notes.append(message.get_args_list())
        return "u", dbus.UInt32(len(self.notes))

    def invoke(self, note, action="default"):
        """A person has clicked on the notification of this number, from 1."""
        signal = dbus.lowlevel.SignalMessage("/org/freedesktop/Notifications", NOTIFICATIONS, "ActionInvoked")
        signal.append(dbus.UInt32(note), action, signature="us")
        self.bus.send_message(signal)
        self.bus.flush()
