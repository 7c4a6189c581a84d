"""Passwords in the memory of the services: none at a server, one place at a module that logs in. No core file is kept.

    password_memory_test.py PATH_OF_SORVANED PROTO PATH_OF_KALVEXD [unittest arguments]
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

os.environ["GRPC_VERBOSITY"] = "NONE"
import grpc  # noqa: E402, its first look at the environment

import stranger  # noqa: E402

PROGRAM = sys.argv.pop(1)
PROTO = sys.argv.pop(1)
MODULE = sys.argv.pop(1)

LONG = "przed-zolwiem-na-plocie-7143-stoi-kwarantanna"
SHORT = "kQ7!zX2v"
NOBODY = 65534


def count_in_memory(process, secret):
    """How often the bytes are in what the process may write to."""
    found = 0
    with open(f"/proc/{process}/maps", encoding="ascii", errors="replace") as maps, \
            open(f"/proc/{process}/mem", "rb", buffering=0) as memory:
        for line in maps:
            place, rights = line.split()[:2]
            if not rights.startswith("rw"):
                continue
            begin, end = (int(number, 16) for number in place.split("-"))
            memory.seek(begin)
            try:
                content = memory.read(end - begin)
            except OSError:
                continue  # pages of a device
            found += content.count(secret.encode())
    return found


@unittest.skipUnless(os.geteuid() == 0, "only root sees the memory of another program")
class PasswordMemory(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.config = self.folder / "plant.toml"
        self.config.write_text('[server]\nname = "Stacja"\n', encoding="utf-8")
        self.messages, _ = stranger.generate(PROTO)
        # Where it stands, other accounts may not come.
        self.program = shutil.copy(PROGRAM, self.folder)
        self.module = shutil.copy(MODULE, self.folder)
        for name, password in (("ola", LONG), ("ula", SHORT)):
            subprocess.run([self.program, "--config", self.config, "user", "add", name], input=password,
                           encoding="utf-8", check=True)

    def environment(self, **further):
        own = {"SORVANE_RUNTIME_DIR": str(self.folder), "SORVANE_COMMON_PROFILE": str(self.folder / "sorvane.ini"),
               "LC_ALL": "C.UTF-8"}
        return {name: value for name, value in os.environ.items() if name != "LANGUAGE"} | own | further

    def begin(self, arguments, awaited, **environment):
        """A process of another account, once its log has that."""
        os.chown(self.folder, NOBODY, NOBODY)
        for path in self.folder.rglob("*"):
            os.chown(path, NOBODY, NOBODY)
        process = subprocess.Popen(arguments, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8",
                                   user=NOBODY, group=NOBODY, extra_groups=[], env=self.environment(**environment))
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        lines = [""]
        while awaited not in lines[-1]:
            lines.append(process.stdout.readline())
            self.assertNotEqual(lines[-1], "", lines)
        return process

    def start(self, **environment):
        return self.begin([self.program, "--config", self.config, "--log-level", "0"], "Nasłuchiwanie", **environment)

    def start_module(self, **environment):
        (self.folder / "Kalvex.ini").write_bytes(b"[Autostart]\r\nProcedura0=a.kx\r\n[Log]\r\nRodzaj=2\r\n")
        for source, password in (("Stacja,ola", LONG), ("Inna,ula", SHORT)):
            subprocess.run([self.module, "--working-dir", self.folder, "--add-source", source], input=password,
                           encoding="utf-8", check=True, env=self.environment())
        (self.folder / "a.kx").write_bytes(b"REMOTE a Stacja@X\r\n:w\r\nGOTO w\r\n")
        return self.begin([self.module, "--working-dir", self.folder, "--log-stdout"],
                          "Nawiązanie połączenia z Stacja", **environment)

    def assert_count(self, process, secret, expected):
        """What is being sent or read at the moment may hold it as well."""
        begin = time.monotonic()
        while (count := count_in_memory(process.pid, secret)) != expected:
            self.assertLess(time.monotonic() - begin, stranger.PATIENCE, count)

    def skip_if_sanitized(self, process):
        with open(f"/proc/{process.pid}/maps", encoding="ascii", errors="replace") as maps:
            if "libasan" in maps.read():
                self.skipTest("a sanitized program keeps what it has freed")

    def log_in(self, user, password):
        channel = grpc.insecure_channel(f"unix:{self.folder}/Stacja")
        self.addCleanup(channel.close)
        conversation = stranger.Conversation(self.messages, channel)
        self.addCleanup(conversation.end)
        return conversation.log_in(user, password)

    def test_password_leaves_no_trace(self):
        process = self.start()
        self.skip_if_sanitized(process)
        # What is looked for would be found: a name that the server keeps.
        self.assertEqual(self.log_in("ola", LONG), (0, ""))
        self.assertGreater(count_in_memory(process.pid, "ola"), 0)
        self.assert_count(process, LONG, 0)
        self.assertEqual(self.log_in("ula", SHORT), (0, ""))
        self.assert_count(process, SHORT, 0)
        self.assertEqual(self.log_in("ula", LONG + "x"), (1, "brak uprawnień"))
        self.assert_count(process, LONG + "x", 0)

    def test_module_has_the_password_of_a_connection_once(self):
        self.start()
        module = self.start_module()
        self.skip_if_sanitized(module)
        self.assert_count(module, LONG, 1)
        # No connection has asked for it.
        self.assert_count(module, SHORT, 0)

    def test_memory_is_not_for_others_unless_that_is_wanted(self):
        for wanted, owner in (("", 0), ("1", NOBODY)):
            server = self.start(KALVEX_CORE_FILES=wanted)
            module = self.start_module(KALVEX_CORE_FILES=wanted)
            for process in (module, server):
                # The files of a process that keeps its memory to itself belong to root.
                self.assertEqual(os.stat(f"/proc/{process.pid}/maps").st_uid, owner)
                process.terminate()
                self.assertEqual(process.wait(), 0)


if __name__ == "__main__":
    unittest.main()
