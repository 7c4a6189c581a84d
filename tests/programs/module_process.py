"""A running module with a script and a user, and consoles that know sorvane.proto and docs/console.md alone."""
import subprocess
import sys

PROTO = sys.argv.pop(2)
SORVANED = sys.argv.pop(2)

import grpc  # noqa: E402
import stranger  # noqa: E402
from kalvexd_process import ServiceTest  # noqa: E402

MESSAGES, _ = stranger.generate(PROTO)
CURRENT = 1
INTEGER, TEXT = 150, 190
SCRIPT = "LOCAL X = 5\nLOCAL Y = 6\n:a\nSLEEP 1\nGOTO a\n"


class Console(stranger.Conversation):
    """Subscribed names are handles in their order; every value that comes is kept as (name, content)."""

    def __init__(self, channel):
        super().__init__(MESSAGES, channel)
        self.take("greeting")
        self.names = []

    def enter(self, user="", password="", name="Obca_RC"):
        code, text = self.log_in(user, password, name)
        assert code == 0, (code, text)
        return text

    def watch(self, *names, flags=0):
        first = len(self.names) + 1
        self.names += names
        self.say(subscribe={"added_handles": range(first, len(self.names) + 1), "added_names": names,
                            "flags": flags})

    def next(self):
        updates = self.take("value_updates")
        return [(self.names[handle - 1], value[3]) for handle, value in
                zip(updates.handles, stranger.values_of(updates.values))]

    def order(self, name, text):
        """The result of the write of a message."""
        return self.modify(CURRENT, name, 0, type=TEXT, text=text.replace("|", "\t"))


class ModuleTest(ServiceTest):
    """Each test has a folder of its own with a user, and a module that runs the script a.kx."""

    def setUp(self):
        super().setUp()
        self.put("a.kx", SCRIPT)
        self.put("Kalvex.ini", "[Autostart]\nProcedura0=a.kx\n")
        users = self.folder / "users.sqlite"
        self.put("users.toml", f'[server]\nname = "x"\ndata = "{self.folder}/x"\nusers = "{users}"\n')
        self.add_user("JAN", "--level", "100")
        self.put("sorvane.ini", f"[Konfiguracja]\nUżytkownicy={users}\n")

    def add_user(self, name, *options):
        subprocess.run([SORVANED, "--config", self.folder / "users.toml", "user", "add", name, *options],
                       input="haslo\nhaslo\n", encoding="utf-8", check=True, env=self.environment,
                       capture_output=True)

    def connect(self, kind=Console):
        channel = grpc.insecure_channel(f"unix:{self.folder}/run/Kalvex")
        self.addCleanup(channel.close)
        return kind(channel)

    def start_module(self, *arguments):
        service = self.start(*arguments)
        self.read_to(service, f"{self.folder}/a.kx : Start skryptu ")
        return service
