"""A module, consoles of it that are played by hand, and kalvexctl, for the tests that need all three."""
import os
import pwd
import re
import signal
import socket
import subprocess
import sys
import threading

PROTO = sys.argv.pop(2)
SORVANED = sys.argv.pop(2)
KALVEXCTL = sys.argv.pop(2)

from kalvexd_process import STARTED, STOPPED, ServiceTest  # noqa: E402, F401
import grpc  # noqa: E402
import stranger  # noqa: E402

MESSAGES, _ = stranger.generate(PROTO)
CURRENT = 1
TEXT = 190
INTEGER = 150
PATIENCE = 60  # seconds for what has to come
LOOP = "LOCAL X = 5\nLOCAL Y = 6\n:a\nSLEEP 1\nGOTO a\n"
ACCOUNT = pwd.getpwuid(os.geteuid()).pw_name
MODULE_IDENTITY = f"Kalvex_{socket.gethostname()}"


def identity_of(process):
    """Of a kalvexctl among the clients of a module."""
    return f"Kalvex_{socket.gethostname()}.{ACCOUNT}.{process.pid}_RC"


class Console(stranger.Conversation):
    """Subscribed names are handles in their order; every value that comes is (name, content)."""

    def __init__(self, channel):
        super().__init__(MESSAGES, channel)
        self.take("greeting")
        self.names = []
        self.waiting = []
        self.ids = 0

    def enter(self, name, user="JAN", password="haslo"):
        code, text = self.log_in(user, password, name)
        assert code == 0, (code, text)
        return text

    def watch(self, *names):
        first = len(self.names) + 1
        self.names += names
        self.say(subscribe={"added_handles": range(first, len(self.names) + 1), "added_names": names, "flags": 0})
        self.take("value_updates")

    def next(self):
        """The next change, in the order in which the module made them."""
        while not self.waiting:
            updates = self.take("value_updates")
            self.waiting += [(self.names[handle - 1], value[3]) for handle, value in
                             zip(updates.handles, stranger.values_of(updates.values))]
        return self.waiting.pop(0)

    def next_message(self, name="a.kx"):
        """The next text of a command variable, its tabs as "|"."""
        while True:
            variable, text = self.next()
            if variable == name:
                return text.replace("\t", "|")

    def read_to(self, wanted):
        """Passes over what comes before a message of the command variable."""
        while self.next_message() != wanted:
            pass

    def order(self, name, text):
        """The result of the write of a message."""
        self.ids += 1
        self.say(modify_requests={"requests": [{"id": self.ids, "kind": CURRENT, "variable": name, "time": 0,
                                                "value": {"type": TEXT, "text": text.replace("|", "\t")}}]})
        results = self.take("modify_results")
        return results.results[0]

    def leave(self):
        """In good order, whatever it holds."""
        self.say(farewell={"reason": 4106})
        self.end()

    def take_session(self, name):
        """From the module."""
        self.order("a.kx", f"0|{name}|0")
        while not self.next_message().startswith(f"1|{MODULE_IDENTITY}|{name}|"):
            pass
        self.read_to(f"0|{name}|0")


class ControlTest(ServiceTest):
    """Each test has a folder of its own with a user, and a module that runs the script a.kx."""

    def setUp(self):
        super().setUp()
        self.put("a.kx", LOOP)
        self.put("Kalvex.ini", "[Autostart]\nProcedura0=a.kx\n")
        users = self.folder / "users.sqlite"
        self.put("users.toml", f'[server]\nname = "x"\ndata = "{self.folder}/x"\nusers = "{users}"\n')
        self.add_user("JAN", "--level", "100")
        self.put("sorvane.ini", f"[Konfiguracja]\nUżytkownicy={users}\n")
        self.login = self.folder / "login"
        self.login.write_text("JAN\nhaslo\n", encoding="utf-8")
        self.login.chmod(0o600)
        self.environment["KALVEXCTL_LOGIN"] = str(self.login)

    def add_user(self, name, *options):
        subprocess.run([SORVANED, "--config", self.folder / "users.toml", "user", "add", name, *options],
                       input="haslo\nhaslo\n", encoding="utf-8", check=True, env=self.environment,
                       capture_output=True)

    def start_module(self, *arguments):
        service = self.start(*arguments)
        self.read_to(service, f"{self.folder}/a.kx : Start skryptu ")
        # What a module has to say must never fill the pipe.
        self.log = []

        def drain():
            for line in service.stdout:
                self.log.append(line)
        threading.Thread(target=drain, daemon=True).start()
        return service

    def connect(self, name, *watched):
        channel = grpc.insecure_channel(f"unix:{self.folder}/run/Kalvex")
        self.addCleanup(channel.close)
        console = Console(channel)
        console.enter(name)
        if watched:
            console.watch(*watched)
        return console

    def begin(self, *arguments, **options):
        """A kalvexctl that goes on while the test does."""
        process = subprocess.Popen([KALVEXCTL, *arguments], stdin=options.pop("stdin", subprocess.PIPE),
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding="utf-8", bufsize=1,
                                   env=self.environment, cwd=self.folder, **options)
        for stream in (process.stdin, process.stdout, process.stderr):
            if stream:
                self.addCleanup(stream.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def end_of(self, process):
        """(exit status, standard output, standard error)"""
        output, errors = process.communicate(timeout=PATIENCE)
        return process.returncode, output, errors

    def end_by_itself(self, process):
        """The same of one whose standard input stays open."""
        process.wait(timeout=PATIENCE)
        return process.returncode, process.stdout.read(), process.stderr.read()

    def control(self, *arguments, stdin=""):
        done = subprocess.run([KALVEXCTL, *arguments], input=stdin, capture_output=True, encoding="utf-8",
                              env=self.environment, cwd=self.folder, timeout=PATIENCE)
        return done.returncode, done.stdout, done.stderr

    def done(self, *arguments, **options):
        """The output of one that succeeds without a word of complaint."""
        status, output, errors = self.control(*arguments, **options)
        self.assertEqual((status, errors), (0, ""), arguments)
        return output

    def repeat_until(self, condition):
        """What the module is about to do can be seen by asking again."""
        for _ in range(500):
            if condition():
                return
        self.fail("it never came")

    def assert_ends(self, status, errors, *arguments, **options):
        self.assertEqual(self.control(*arguments, **options), (status, "", errors), arguments)

    def assert_module_holds(self):
        """It hands the session over to whoever asks, and gets it back."""
        console = self.connect("Proba_RC", "a.kx")
        console.take_session("Proba_RC")
        console.order("a.kx", f"1|Proba_RC|{MODULE_IDENTITY}")
        console.read_to(f"1|Proba_RC|{MODULE_IDENTITY}")
        console.leave()

