"""A module, consoles of it that are played by hand, and kalvexctl, for the tests that need all three."""
import os
import pwd
import re
import signal
import socket
import subprocess
import sys
import threading

import module_process  # first: it takes its arguments

KALVEXCTL = sys.argv.pop(1)
SORVANED = module_process.SORVANED
PATIENCE = 60  # seconds for what has to come
ACCOUNT = pwd.getpwuid(os.geteuid()).pw_name
MODULE_IDENTITY = f"Kalvex_{socket.gethostname()}"


def identity_of(process):
    """Of a kalvexctl among the clients of a module."""
    return f"Kalvex_{socket.gethostname()}.{ACCOUNT}.{process.pid}_RC"


class Console(module_process.Console):
    """One that takes one change at a time."""

    def __init__(self, channel):
        super().__init__(channel)
        self.waiting = []

    def watch(self, *names):
        super().watch(*names)
        self.take("value_updates")

    def next(self):
        """The next change, in the order in which the module made them."""
        while not self.waiting:
            self.waiting += super().next()
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


class ControlTest(module_process.ModuleTest):
    def setUp(self):
        super().setUp()
        self.login = self.folder / "login"
        self.login.write_text("JAN\nhaslo\n", encoding="utf-8")
        self.login.chmod(0o600)
        self.environment["KALVEXCTL_LOGIN"] = str(self.login)

    def start_module(self, *arguments):
        service = super().start_module(*arguments)
        # What a module has to say must never fill the pipe.
        self.log = []

        def drain():
            for line in service.stdout:
                self.log.append(line)
        threading.Thread(target=drain, daemon=True).start()
        return service

    def connect(self, name, *watched):
        console = super().connect(Console)
        console.enter("JAN", "haslo", name)
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

