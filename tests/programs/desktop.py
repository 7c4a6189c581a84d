"""A desktop of its own for a program with windows: a display, the bus of a session and that of assistive programs.

What a program shows is read as a screen reader does, over org.a11y.atspi itself: nothing is kept between two calls."""
import contextlib
import os
import pathlib
import re
import select
import subprocess
import time

import dbus
import dbus.bus
import dbus.lowlevel

PATIENCE = 20  # seconds for what has to come
BREATH = 0.01  # seconds between two looks

STATES = {name: bit for bit, name in {
    1: "active", 4: "checked", 5: "collapsed", 7: "editable", 8: "enabled", 9: "expandable", 10: "expanded",
    11: "focusable", 12: "focused", 16: "modal", 18: "multi-line", 23: "selected", 25: "showing", 30: "visible",
    41: "checkable", 43: "read-only"}.items()}

ACCESSIBLE, ACTION, COMPONENT, TEXT, EDITABLE, TABLE, VALUE, SELECTION = (
    f"org.a11y.atspi.{name}" for name in
    ("Accessible", "Action", "Component", "Text", "EditableText", "Table", "Value", "Selection"))


# A search does not go through what these hold, which may be much.
FULL = ("menu bar", "table", "tree", "list", "text")


class Gone(Exception):
    """What was asked is not there any more."""


class Accessible:
    """A thing that a program shows."""

    def __init__(self, bus, owner, path):
        self.bus = bus
        self.owner = owner
        self.path = path

    def __eq__(self, other):
        return (self.owner, self.path) == (other.owner, other.path)

    def __hash__(self):
        return hash((self.owner, self.path))

    def __repr__(self):
        with contextlib.suppress(Gone):
            return f'{self.role} "{self.name}"'
        return f"gone: {self.path}"

    def call(self, interface, method, signature="", *arguments):
        try:
            return self.bus.call_blocking(self.owner, self.path, interface, method, signature, arguments,
                                          timeout=PATIENCE)
        except dbus.DBusException as error:
            raise Gone(f"{self.path}: {method}: {error}") from error

    def send(self, interface, method, signature="", *arguments):
        """Without waiting: what opens a modal dialog answers when that is closed."""
        message = dbus.lowlevel.MethodCallMessage(self.owner, self.path, interface, method)
        message.append(*arguments, signature=signature)
        message.set_no_reply(True)
        self.bus.send_message(message)
        self.bus.flush()

    def get(self, interface, name):
        return self.call("org.freedesktop.DBus.Properties", "Get", "ss", interface, name)

    @property
    def name(self):
        return str(self.get(ACCESSIBLE, "Name"))

    @property
    def role(self):
        return str(self.call(ACCESSIBLE, "GetRoleName"))

    @property
    def description(self):
        return str(self.get(ACCESSIBLE, "Description"))

    @property
    def children(self):
        return [Accessible(self.bus, str(owner), str(path))
                for owner, path in self.call(ACCESSIBLE, "GetChildren")]

    def has(self, *names):
        """All these states."""
        low, high = self.call(ACCESSIBLE, "GetState")
        bits = int(low) | int(high) << 32
        return all(bits >> STATES[name] & 1 for name in names)

    # ---- to be found

    def walk(self, passed_over=FULL):
        """Itself and all below it, the nearest first; nothing below what is hidden or has one of these roles."""
        row = [self]
        while row:
            below = []
            for thing in row:
                with contextlib.suppress(Gone):
                    if thing is not self and not thing.has("visible"):
                        continue
                    yield thing
                    if thing is self or thing.role not in passed_over:
                        below += thing.children
            row = below

    def find_all(self, role=None, name=None, passed_over=FULL):
        found = []
        for thing in self.walk(passed_over):
            with contextlib.suppress(Gone):
                if thing is not self and role in (None, thing.role) and name in (None, thing.name):
                    found.append(thing)
        return found

    def find(self, role=None, name=None, passed_over=FULL):
        """The first, or None."""
        for thing in self.walk(passed_over):
            with contextlib.suppress(Gone):
                if thing is not self and role in (None, thing.role) and name in (None, thing.name):
                    return thing
        return None

    # ---- to be used

    def press(self):
        self.send(ACTION, "DoAction", "i", 0)

    def focus(self):
        self.call(COMPONENT, "GrabFocus")

    @property
    def keys(self):
        """Of a command, as the toolkit spells them."""
        return str(self.call(ACTION, "GetKeyBinding", "i", 0))

    @property
    def extents(self):
        """x, y, width, height on the screen."""
        return tuple(int(number) for number in self.call(COMPONENT, "GetExtents", "u", 0))

    @property
    def text(self):
        return str(self.call(TEXT, "GetText", "ii", 0, -1))

    @text.setter
    def text(self, text):
        self.call(EDITABLE, "SetTextContents", "s", text)

    @property
    def selected_text(self):
        begin, end = self.call(TEXT, "GetSelection", "i", 0)
        return self.text[begin:end]

    @property
    def caret(self):
        return int(self.get(TEXT, "CaretOffset"))

    @caret.setter
    def caret(self, offset):
        self.call(TEXT, "SetCaretOffset", "i", offset)

    @property
    def value(self):
        return float(self.get(VALUE, "CurrentValue"))

    @property
    def size_of_table(self):
        return int(self.get(TABLE, "NRows")), int(self.get(TABLE, "NColumns"))

    def cell(self, row, column):
        return Accessible(self.bus, *map(str, self.call(TABLE, "GetAccessibleAt", "ii", row, column)))

    @property
    def headers(self):
        return [str(self.call(TABLE, "GetColumnDescription", "i", column)) for column in range(self.size_of_table[1])]

    @property
    def rows(self):
        """The texts of a table."""
        rows, columns = self.size_of_table
        return [[self.cell(row, column).name for column in range(columns)] for row in range(rows)]

    @property
    def items(self):
        """The texts of a list."""
        return [child.name for child in self.children]


class Desktop:
    """To be used in a with statement; folder is scratch and becomes the home of all that runs here."""

    def __init__(self, folder, size="1280x1024", framebuffer=False):
        """With a framebuffer the display lies in the file Xvfb_screen0 of the folder."""
        self.folder = pathlib.Path(folder)
        self.size = size
        self.framebuffer = framebuffer
        self.processes = []
        self.buses = []

    def __enter__(self):
        for name in ("runtime", "config", "data", "cache"):
            (self.folder / name).mkdir(mode=0o700, parents=True, exist_ok=True)
        self.environment = {
            "PATH": os.environ.get("PATH", "/usr/bin:/bin"),
            "HOME": str(self.folder),
            "XDG_RUNTIME_DIR": str(self.folder / "runtime"),
            "XDG_CONFIG_HOME": str(self.folder / "config"),
            "XDG_DATA_HOME": str(self.folder / "data"),
            "XDG_CACHE_HOME": str(self.folder / "cache"),
            "LANG": "C.UTF-8",
            "TZ": "Europe/Warsaw",
            "GSETTINGS_BACKEND": "memory",
            "QT_QPA_PLATFORM": "xcb",
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
        }
        try:
            number = self.begin(["Xvfb", "-displayfd", "{}", "-screen", "0", f"{self.size}x24", "-nolisten", "tcp",
                                 "-noreset", *(["-fbdir", str(self.folder)] if self.framebuffer else [])])
            self.environment["DISPLAY"] = f":{number}"
            address = self.begin(["dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address={}"])
            self.environment["DBUS_SESSION_BUS_ADDRESS"] = address
            self.session = self.connect(address)
            accessibility = self.session.call_blocking("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress",
                                                       "", ())
            self.accessibility = self.connect(str(accessibility))
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for bus in self.buses:
            bus.close()
        for process in reversed(self.processes):
            process.terminate()
            process.wait()

    def begin(self, command):
        """A process that tells a line on the descriptor that stands for {}."""
        reader, writer = os.pipe()
        with open(reader, encoding="utf-8") as told:
            try:
                self.processes.append(subprocess.Popen(
                    [word.replace("{}", str(writer)) for word in command], pass_fds=[writer], env=self.environment,
                    stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL))
            finally:
                os.close(writer)
            line = told.readline().strip()
        assert line, f"{command[0]} has ended"
        return line

    def connect(self, address):
        """A connection to a bus."""
        bus = dbus.bus.BusConnection(address)
        bus.set_exit_on_disconnect(False)
        self.buses.append(bus)
        return bus

    def tool(self, *command):
        """The output of a program that talks with the display."""
        done = subprocess.run(command, capture_output=True, encoding="utf-8", env=self.environment, timeout=PATIENCE)
        assert done.returncode == 0, (command, done.stderr)
        return done.stdout

    def keys(self, *names):
        """One after the other, to whatever has the focus."""
        self.tool("xdotool", "key", "--delay", "2", *names)

    def type(self, text):
        self.tool("xdotool", "type", "--delay", "2", "--", text)

    def click(self, x, y, button=1, count=1):
        self.tool("xdotool", "mousemove", str(x), str(y), "click", "--repeat", str(count), "--delay", "20", str(button))

    def registered(self):
        """Process and root of each program that assistive programs can see."""
        registry = Accessible(self.accessibility, "org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")
        found = {}
        for root in registry.children:
            with contextlib.suppress(dbus.DBusException):
                process = self.accessibility.call_blocking(
                    "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                    "GetConnectionUnixProcessID", "s", (root.owner,))
                found[int(process)] = root
        return found


class Application:
    """A program on a desktop, by the number of its process."""

    def __init__(self, desktop, number):
        self.desktop = desktop
        self.number = number
        self.handle = os.pidfd_open(number)
        self.found = None

    def close(self):
        if self.handle is not None:
            os.close(self.handle)
            self.handle = None

    def complaint(self):
        """What a program that has ended leaves to be told."""
        return ""

    # ---- waiting

    def wait(self, condition, what="it"):
        """For the condition to hold, as long as the program lives; what it gave."""
        deadline = time.monotonic() + PATIENCE
        seen = None
        while time.monotonic() < deadline:
            try:
                seen = condition()
                if seen:
                    return seen
            except (Gone, IndexError) as error:
                seen = error
            ended, _, _ = select.select([self.handle], [], [], BREATH)
            if ended:
                raise AssertionError(f"the program has ended before {what} came{self.complaint()}")
        raise AssertionError(f"{what} never came; {seen!r}; {self.describe()}")

    def describe(self):
        with contextlib.suppress(Gone):
            return f"windows: {[window for window in self.windows]}"
        return "it does not answer"

    # ---- what it shows

    @property
    def root(self):
        if self.found is None:
            self.found = self.wait(lambda: self.desktop.registered().get(self.number), "its place on the bus")
        return self.found

    @property
    def windows(self):
        """Those that are on the display."""
        return [window for window in self.root.children if window.has("visible")]

    def main(self):
        """The window with the menu bar."""
        return self.wait(lambda: [window for window in self.windows
                                  if any(child.role == "menu bar" for child in window.children)][0], "the main window")

    def window(self, title):
        """A window of its own, such as a dialog."""
        return self.wait(lambda: [window for window in self.windows if window.name == title][0], f'"{title}"')

    def find(self, role=None, name=None, within=None):
        """Something in a window, the main window unless told."""
        place = within or self.main()
        return self.wait(lambda: place.find(role, name), f'{role} "{name}" in {place}')

    def menu(self, *path):
        """An entry of the menu bar, such as ("Plik", "Zapisz")."""
        def follow():
            place = self.main().find("menu bar", passed_over=())
            for name in path:
                # Between an entry and those below it there is the menu itself.
                place = [entry for child in place.children
                         for entry in ([child] if child.role != "popup menu" else child.children)
                         if entry.name == name][0]
            return place
        return self.wait(follow, " ▸ ".join(path))

    def entries(self, *path):
        """Name, keys, and the entry itself of each entry of a menu that is no separator."""
        found = []
        for child in self.menu(*path).children:
            found += child.children if child.role == "popup menu" else [child]
        return [entry for entry in found if entry.role != "separator"]

    def choose(self, *path):
        """A command of the menu, as soon as it may be."""
        entry = self.menu(*path)
        self.wait(lambda: entry.has("enabled"), f"permission for {path}")
        entry.press()

    # ---- boxes

    def boxes(self):
        return [window for window in self.windows if window.name == "Kalvex" and window.role != "frame"]

    def box(self):
        """(box, its text, its buttons in the order of their names)"""
        box = self.wait(lambda: self.boxes()[0], "a box")
        texts = [label.name for label in box.find_all("label") if label.name]
        return box, texts[0] if len(texts) == 1 else texts, sorted(item.name for item in box.find_all("push button"))

    def answer(self, button):
        """The text of the box that is there, which goes."""
        box, text, _ = self.box()
        self.find("push button", button, box).press()
        self.wait(lambda: box not in self.windows, f'the end of "{text}"')
        return text

    # ---- keys

    def take_focus(self, title=None):
        """The display sends keys to the window that has its focus, and without a window manager nobody passes it on."""
        if title is None and self.has_focus():
            return
        names = [title] if title else [window.name for window in self.windows][-1:]
        self.desktop.tool("xdotool", "search", "--all", "--onlyvisible", "--pid", str(self.number), "--name",
                          f"^{re.escape(names[0])}( - .*)?$", "windowfocus", "--sync")

    def has_focus(self):
        done = subprocess.run(["xdotool", "getwindowfocus", "getwindowpid"], capture_output=True, encoding="utf-8",
                              env=self.desktop.environment, timeout=PATIENCE)
        return done.stdout.strip() == str(self.number)


class Child(Application):
    """One that is started here."""

    def __init__(self, desktop, command, environment=(), folder=None):
        self.errors = desktop.folder / f"{time.monotonic_ns()}.stderr"
        with open(self.errors, "wb") as errors:
            self.process = subprocess.Popen(command, env={**desktop.environment, **dict(environment)}, cwd=folder,
                                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=errors)
        super().__init__(desktop, self.process.pid)

    def close(self):
        super().close()
        self.process.kill()
        self.process.wait()
        self.process.stdout.close()

    def complaint(self):
        return f", with {self.process.wait()}: {self.errors.read_text(encoding='utf-8', errors='replace')}"

    def end(self):
        """(exit status, standard output, standard error) of one that ends by itself."""
        output, _ = self.process.communicate(timeout=PATIENCE)
        return self.process.returncode, output.decode(), self.errors.read_text(encoding="utf-8", errors="replace")
