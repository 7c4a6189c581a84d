#!/usr/bin/env python3
"""The data server as a process: its users, its configuration, its files, its signals."""
import fcntl
import grp
import os
import pathlib
import re
import resource
import signal
import socket
import sqlite3
import subprocess
import sys
import tempfile
import unittest

PROGRAM = sys.argv.pop(1)
MEMORY = 200 << 20

PLANT = """[server]
name = "Stacja"
[[variable]]
name = "X"
at = 2
signal = "counter rate=1"
"""


class Sorvaned(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.config = self.folder / "plant.toml"
        self.config.write_text(PLANT, encoding="utf-8")
        self.environment = os.environ | {"SORVANE_RUNTIME_DIR": str(self.folder / "run"), "LC_ALL": "C.UTF-8"}
        self.environment.pop("LANGUAGE", None)

    def run_with(self, *arguments, stdin=""):
        done = subprocess.run([PROGRAM, "--config", self.config, *arguments], input=stdin, capture_output=True,
                              encoding="utf-8", timeout=60, env=self.environment)
        return done.returncode, done.stdout, done.stderr

    def start(self, *listening):
        """A server that has said where it listens: the local socket, unless told otherwise."""
        server = subprocess.Popen([PROGRAM, "--config", self.config], stderr=subprocess.PIPE, encoding="utf-8",
                                  env=self.environment)
        self.addCleanup(server.stderr.close)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        self.assertEqual(self.line_of(server), "Uruchomienie serwera Stacja")
        for place in listening or [self.local_socket()]:
            self.assertRegex(self.line_of(server), f"^Nasłuchiwanie: {place}$")
        return server

    def local_socket(self):
        return "gniazdo lokalne " + re.escape(str(self.folder / "run" / "Stacja"))

    def stop(self, server):
        server.send_signal(signal.SIGTERM)
        self.assertEqual(self.line_of(server), "Zatrzymanie serwera Stacja")
        self.assertEqual(server.wait(60), 0)

    def listen_as(self, keys):
        self.config.write_text(PLANT + "[network]\n" + keys, encoding="utf-8")

    def refusal(self):
        """What a server says that does not start: the log without its times."""
        status, out, err = self.run_with()
        self.assertEqual((status, out), (1, ""))
        lines = err.splitlines()
        return [line[len("2024-03-10 07:00:00 "):] if line[:1].isdigit() else line for line in lines]

    def make_certificate(self):
        made = subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
                               "-nodes", "-days", "2", "-subj", "/CN=localhost", "-keyout", self.folder / "a.key",
                               "-out", self.folder / "a.pem"], capture_output=True, encoding="utf-8")
        self.assertEqual(made.returncode, 0, made.stderr)

    def line_of(self, server):
        """The next line of the log without its time."""
        return server.stderr.readline().rstrip("\n")[len("2024-03-10 07:00:00 "):]

    def test_configuration_of_the_machine_needs_no_more_than_the_name(self):
        """As under its unit: the configuration in /etc/sorvane, the only folder to write in /var/lib/sorvane."""
        self.config.write_text('[server]\nname = "Stacja"\n', encoding="utf-8")
        into_place = ["mount -t tmpfs none /etc", "mkdir /etc/sorvane", 'cp "$1" /etc/sorvane/sorvaned.toml',
                      "mount -o remount,ro /etc", "mount -t tmpfs none /var/lib", "mkdir -m 700 /var/lib/sorvane"]
        inside = ["unshare", "--user", "--map-root-user", "--mount", "sh", "-ec"]
        mounted = subprocess.run([*inside, "; ".join(into_place), "sh", self.config], capture_output=True,
                                 encoding="utf-8", timeout=60)
        if mounted.returncode != 0:
            self.skipTest(f"folders of its own cannot be mounted here: {mounted.stderr.strip()}")
        server = ['"$2" --config /etc/sorvane/sorvaned.toml user add adam', 'ls /var/lib/sorvane',
                  'exec "$2" --config /etc/sorvane/sorvaned.toml']
        program = subprocess.Popen([*inside, "; ".join(into_place + server), "sh", self.config, PROGRAM],
                                   stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   encoding="utf-8", env=self.environment)
        for cleanup in (program.stdout.close, program.stderr.close, program.wait, program.kill):
            self.addCleanup(cleanup)
        program.stdin.write("tajne\n")
        program.stdin.close()
        self.assertEqual(program.stdout.readline(), "users.sqlite\n")
        self.assertEqual(self.line_of(program), "Uruchomienie serwera Stacja")
        self.assertRegex(self.line_of(program), f"^Nasłuchiwanie: {self.local_socket()}$")
        store = pathlib.Path(f"/proc/{program.pid}", "root", "var/lib/sorvane/store.sqlite")
        self.assertTrue(store.exists())
        self.stop(program)

    def test_users_are_managed(self):
        self.assertEqual(self.run_with("user", "add", "adam", "--level", "50", "--group", "gaz", stdin="tajne\n"),
                         (0, "", ""))
        self.assertEqual(self.run_with("user", "add", "Żaneta", "--description", "Dyspozytor", stdin="tajne"),
                         (0, "", ""))
        self.assertEqual(self.run_with("user", "list"), (0, "adam\t50\tgaz\t\t\nŻaneta\t0\t\t\tDyspozytor\n", ""))
        self.assertEqual(self.run_with("user", "add", "ADAM", stdin="tajne\n"),
                         (1, "", "Użytkownik o tej nazwie już istnieje\n"))
        self.assertEqual(self.run_with("user", "passwd", "adam", stdin="nowe\n"), (0, "", ""))
        self.assertEqual(self.run_with("user", "passwd", "adam"), (1, "", ""))
        self.assertEqual(self.run_with("user", "remove", "żaneta"), (0, "", ""))
        self.assertEqual(self.run_with("user", "remove", "żaneta"), (1, "", "Brak użytkownika o tej nazwie\n"))
        self.assertEqual(self.run_with("user", "list"), (0, "adam\t50\tgaz\t\t\n", ""))
        users = self.folder / "data" / "users.sqlite"
        self.assertEqual(users.stat().st_mode & 0o777, 0o600)

    def test_configuration_is_checked(self):
        self.assertEqual(self.run_with("--check"), (0, "", ""))
        self.assertFalse((self.folder / "data").exists())
        self.config.write_text(PLANT + "kolor = 5\n", encoding="utf-8")
        fault = f"{self.config}:7: variable.kolor: nieznany klucz\n"
        self.assertEqual(self.run_with("--check"), (1, "", fault))
        self.assertEqual(self.run_with(), (1, "", fault))
        self.assertEqual(self.run_with("user", "list"), (1, "", fault))

    def test_configuration_that_is_no_toml_ends_nothing(self):
        place = f"{self.config}:"
        inKey = "Error while parsing key: expected bare key starting character or string delimiter, saw"
        refused = [
            ("[[", "1:3: błąd składni (Error while parsing table header: encountered end-of-file)"),
            ("[[[", f"1:3: błąd składni ({inKey} '[')"),
            ("[=]\n", f"1:2: błąd składni ({inKey} '=')"),
            ("[a.[b]]\n", f"1:4: błąd składni ({inKey} '[')"),
            ("a = [}\n", "1:6: błąd składni (Error while parsing value: could not determine value type)"),
            ("a" + ".a" * 300_000 + " = 1\n", "1:128: zagnieżdżenie głębsze niż 64"),
            ("[a" + ".a" * 300_000 + "]\n", "1:127: zagnieżdżenie głębsze niż 64"),
        ]
        server = self.start()
        for text, fault in refused:
            self.config.write_text(text, encoding="utf-8")
            self.assertEqual(self.run_with("--check"), (1, "", place + fault + "\n"))
            server.send_signal(signal.SIGHUP)
            self.assertEqual(self.line_of(server), place + fault)
            self.assertEqual(self.line_of(server), "Konfiguracja bez zmian")
        self.stop(server)

    def test_configuration_beyond_the_memory_is_refused(self):
        def limited(*arguments):
            return subprocess.run([PROGRAM, *arguments], capture_output=True, encoding="utf-8", timeout=60,
                                  env=self.environment,
                                  preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY)))
        if limited("--version").returncode != 0:
            self.skipTest("a sanitized program takes more addresses")
        self.config.write_text("a = [" + "0," * (8 << 20) + "]\n", encoding="utf-8")
        refused = limited("--config", self.config, "--check")
        self.assertEqual((refused.returncode, refused.stdout, refused.stderr),
                         (1, "", f"{self.config}: brak pamięci\n"))

    def test_messages_are_translated(self):
        self.environment["LANGUAGE"] = "en"
        self.assertEqual(self.run_with("user", "remove", "adam"), (1, "", "There is no user of this name\n"))
        server = subprocess.Popen([PROGRAM, "--config", self.config], stderr=subprocess.PIPE, encoding="utf-8",
                                  env=self.environment)
        self.addCleanup(server.stderr.close)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        self.assertEqual(self.line_of(server), "The server Stacja starts")
        self.assertEqual(self.line_of(server), f"Listening: local socket {self.folder}/run/Stacja")
        server.send_signal(signal.SIGTERM)
        self.assertEqual(self.line_of(server), "The server Stacja stops")
        self.assertEqual(server.wait(60), 0)

    def test_files_of_a_newer_program_are_refused(self):
        self.stop(self.start())
        for name, version, fault in (("store", 3, "Plik danych jest z nowszej wersji programu"),
                                     ("users", 1, "Plik użytkowników jest z nowszej wersji programu")):
            path = self.folder / "data" / f"{name}.sqlite"
            database = sqlite3.connect(path)
            self.assertEqual(database.execute("PRAGMA user_version").fetchone(), (version,))
            database.execute(f"PRAGMA user_version = {version + 1}")
            self.assertEqual(self.refusal(), [f"{path}: {fault}"])
            self.assertEqual(database.execute("PRAGMA user_version").fetchone(), (version + 1,))
            database.execute(f"PRAGMA user_version = {version}")
            database.close()

    def make_older(self, store):
        """Takes from the store what version 1 did not have."""
        columns = [("history", name) for name in ("writer", "written")]
        columns += [("last_values", name) for name in ("writer", "written", "before_time", "before_type",
                                                       "before_status", "before_value", "before_writer",
                                                       "before_written")]
        database = sqlite3.connect(store)
        database.execute("DROP TRIGGER keep_version")
        for table, column in columns:
            database.execute(f"ALTER TABLE {table} DROP COLUMN {column}")
        database.execute("PRAGMA user_version = 1")
        database.close()

    def test_store_of_an_older_program_stays_in_a_copy(self):
        self.stop(self.start())
        store = self.folder / "data" / "store.sqlite"
        self.assertFalse(store.with_name("store.sqlite.v3").exists())
        self.make_older(store)
        self.stop(self.start())
        for path, version in ((store, 3), (store.with_name("store.sqlite.v1"), 1)):
            database = sqlite3.connect(path)
            self.assertEqual(database.execute("PRAGMA user_version").fetchone(), (version,), path.name)
            self.assertEqual(database.execute("SELECT name FROM variables").fetchall(), [("X",)], path.name)
            database.close()
        store.with_name("store.sqlite.v1").unlink()
        store.with_name("store.sqlite.v1").mkdir()
        self.make_older(store)
        self.assertEqual(self.refusal(), [f"{store}.v1: nie można zachować danych sprzed zmiany wersji (Is a directory)"])

    def test_polite_end_commits_everything(self):
        for ending in (signal.SIGTERM, signal.SIGINT):
            server = self.start()
            server.send_signal(ending)
            self.assertEqual(self.line_of(server), "Zatrzymanie serwera Stacja")
            self.assertEqual(server.wait(60), 0)
            store = sqlite3.connect(self.folder / "data" / "store.sqlite")
            self.assertEqual(store.execute("SELECT count(*) FROM progress WHERE what = 'alive'").fetchone(), (1,))
            store.close()

    def test_service_manager_hears_of_the_start_the_life_and_the_end(self):
        manager = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.addCleanup(manager.close)
        manager.settimeout(60)
        manager.bind(str(self.folder / "notify"))
        self.environment.update(NOTIFY_SOCKET=str(self.folder / "notify"), WATCHDOG_USEC="20000")
        server = self.start()
        self.assertEqual(manager.recv(100), b"READY=1")
        self.assertEqual(manager.recv(100), b"WATCHDOG=1")
        self.stop(server)
        heard = b"WATCHDOG=1"
        while heard == b"WATCHDOG=1":
            heard = manager.recv(100)
        self.assertEqual(heard, b"STOPPING=1")

    def test_definitions_are_read_again(self):
        server = self.start()
        self.config.write_text(PLANT + "kolor = 5\n", encoding="utf-8")
        server.send_signal(signal.SIGHUP)
        self.assertEqual(self.line_of(server), f"{self.config}:7: variable.kolor: nieznany klucz")
        self.assertEqual(self.line_of(server), "Konfiguracja bez zmian")
        self.config.write_text(PLANT + '[[variable]]\nname = "Y"\n', encoding="utf-8")
        server.send_signal(signal.SIGHUP)
        self.assertEqual(self.line_of(server), "Konfiguracja odczytana ponownie")
        server.send_signal(signal.SIGTERM)
        self.assertEqual(self.line_of(server), "Zatrzymanie serwera Stacja")
        self.assertEqual(server.wait(60), 0)
        store = sqlite3.connect(self.folder / "data" / "store.sqlite")
        self.assertEqual(store.execute("SELECT name FROM variables ORDER BY id").fetchall(), [("X",), ("Y",)])
        store.close()

    def test_folder_is_for_one_server_and_free_after_its_death(self):
        server = self.start()
        self.assertEqual(self.run_with(), (1, "", f"{self.folder}/data: używa go już inny serwer (sorvaned[{server.pid}])\n"))
        server.kill()
        server.wait(60)
        self.start()

    def test_local_socket_is_for_one_server_and_its_owner(self):
        server = self.start()
        place = self.folder / "run" / "Stacja"
        self.assertEqual(place.stat().st_mode & 0o777, 0o600)
        self.config.write_text(PLANT.replace("[server]", '[server]\ndata = "data2"'), encoding="utf-8")
        self.assertEqual(self.refusal(), ["Uruchomienie serwera Stacja", "Zatrzymanie serwera Stacja",
                                          f"Gniazdo {place} (obsługuje je inny serwer: sorvaned[{server.pid}])"])
        self.stop(server)
        self.assertFalse(place.exists())

    def test_listens_where_it_is_told(self):
        self.make_certificate()
        for keys, listening in (
            ('address = "127.0.0.1:0"', [self.local_socket(), r"127\.0\.0\.1:\d+ \(bez szyfrowania\)"]),
            ('local-socket = false\naddress = "127.0.0.1:0"\ncertificate = "a.pem"\nkey = "a.key"',
             [r"127\.0\.0\.1:\d+ \(TLS\)"]),
            ('local-socket = false\naddress = "0.0.0.0:0"\ncertificate = "a.pem"\nkey = "a.key"\nauthority = "a.pem"',
             [r"0\.0\.0\.0:\d+ \(TLS, certyfikaty klientów\)"]),
            ('local-socket = false\naddress = "0.0.0.0:0"\nplain-text-allowed = true',
             [r"0\.0\.0\.0:\d+ \(bez szyfrowania\)"]),
        ):
            self.listen_as(keys)
            self.assertEqual(self.run_with("--check"), (0, "", ""))
            self.stop(self.start(*listening))

    def test_server_may_be_told_to_listen_nowhere(self):
        self.listen_as("local-socket = false")
        server = subprocess.Popen([PROGRAM, "--config", self.config], stderr=subprocess.PIPE, encoding="utf-8",
                                  env=self.environment)
        self.addCleanup(server.stderr.close)
        self.addCleanup(server.kill)
        self.assertEqual(self.line_of(server), "Uruchomienie serwera Stacja")
        self.assertEqual(self.line_of(server), "Serwer nie nasłuchuje: local-socket = false, brak address")
        self.stop(server)
        self.assertFalse((self.folder / "run").exists())

    def test_wrong_network_settings_are_told(self):
        self.listen_as('address = "0.0.0.0:4300"')
        fault = (f"{self.config}:8: network.address: poza tym komputerem połączenia muszą być szyfrowane "
                 "(certificate, key), chyba że plain-text-allowed = true\n")
        self.assertEqual(self.run_with("--check"), (1, "", fault))
        self.assertEqual(self.run_with(), (1, "", fault))
        self.make_certificate()
        self.listen_as('address = "0.0.0.0:4300"\ncertificate = "a.pem"\nkey = "b.key"')
        fault = f"{self.config}:10: network.key: {self.folder}/b.key: No such file or directory\n"
        self.assertEqual(self.run_with("--check"), (1, "", fault))
        self.assertEqual(self.run_with(), (1, "", fault))

    def test_server_that_cannot_listen_does_not_start(self):
        self.make_certificate()
        (self.folder / "b.pem").write_bytes((self.folder / "a.pem").read_bytes())
        (self.folder / "b.pem").chmod(0o600)
        other = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(other.close)
        taken = f"127.0.0.1:{other.getsockname()[1]}"
        for keys, fault in (
            (f'address = "{taken}"', f"Nie można nasłuchiwać {taken} (Address already in use)"),
            ('address = "127.0.0.1:0"\ncertificate = "a.pem"\nkey = "b.pem"',
             "Nie można nasłuchiwać 127.0.0.1:0 (niepoprawny certyfikat albo klucz)"),
        ):
            self.listen_as(keys)
            self.assertEqual(self.refusal(), ["Uruchomienie serwera Stacja", "Zatrzymanie serwera Stacja", fault])
        self.listen_as("")
        (self.folder / "file").touch()
        self.environment["SORVANE_RUNTIME_DIR"] = str(self.folder / "file" / "run")
        self.assertEqual(self.refusal()[-1], f"Nie można utworzyć folderu {self.folder}/file/run (Not a directory)")

    def test_key_that_others_can_read_is_refused(self):
        self.make_certificate()
        (self.folder / "a.key").chmod(0o604)
        self.listen_as('address = "127.0.0.1:0"\ncertificate = "a.pem"\nkey = "a.key"')
        fault = (f"{self.config}:10: network.key: Do pliku {self.folder}/a.key, który ma być tajny, mają dostęp inni "
                 "(prawa 604, a mają być 600)\n")
        self.assertEqual(self.run_with("--check"), (1, "", fault))
        self.assertEqual(self.run_with(), (1, "", fault))

    def test_what_it_makes_is_for_its_owner_alone(self):
        self.environment["SORVANE_RUNTIME_DIR"] = str(self.folder)
        self.assertEqual(self.run_with("user", "add", "adam", stdin="tajne\n"), (0, "", ""))
        server = subprocess.Popen([PROGRAM, "--config", self.config], stderr=subprocess.PIPE, encoding="utf-8",
                                  env=self.environment, umask=0)
        for cleanup in (server.stderr.close, server.wait, server.kill):
            self.addCleanup(cleanup)
        self.assertEqual(self.line_of(server), "Uruchomienie serwera Stacja")
        self.assertEqual(self.line_of(server), f"Nasłuchiwanie: gniazdo lokalne {self.folder}/Stacja")
        data = self.folder / "data"
        self.assertEqual({path.name: oct(path.stat().st_mode & 0o777) for path in (data, *data.iterdir())},
                         {"data": "0o700", "lock": "0o600", "users.sqlite": "0o600", "store.sqlite": "0o600",
                          "store.sqlite-wal": "0o600", "store.sqlite-shm": "0o600", "store.sqlite.reserve": "0o600"})
        self.assertEqual((self.folder / ".Stacja.lock").stat().st_mode & 0o777, 0o600)

    def test_store_that_others_could_read_is_closed_and_told(self):
        self.stop(self.start())
        data = self.folder / "data"
        data.chmod(0o750)
        (data / "store.sqlite").chmod(0o640)
        server = subprocess.Popen([PROGRAM, "--config", self.config], stderr=subprocess.PIPE, encoding="utf-8",
                                  env=self.environment)
        for cleanup in (server.stderr.close, server.wait, server.kill):
            self.addCleanup(cleanup)
        for path in (data, data / "store.sqlite"):
            self.assertEqual(self.line_of(server), f"{path}: dostęp mieli inni, teraz ma go tylko właściciel")
        self.assertEqual(self.line_of(server), "Uruchomienie serwera Stacja")
        self.assertEqual([oct(path.stat().st_mode & 0o777) for path in (data, data / "store.sqlite")],
                         ["0o700", "0o600"])

    def test_lock_that_somebody_holds_is_waited_for_and_told(self):
        self.stop(self.start())
        with open(self.folder / "data" / "lock", encoding="utf-8") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            holder = f"{pathlib.Path(sys.executable).name}[{os.getpid()}]"
            self.assertEqual(self.run_with(), (1, "", f"{self.folder}/data: używa go już inny serwer ({holder})\n"))

    def test_lock_that_is_a_link_is_refused(self):
        (self.folder / "data").mkdir()
        (self.folder / "data" / "lock").symlink_to(self.folder / "somebodys")
        self.assertEqual(self.run_with(), (1, "", f"{self.folder}/data: Not a regular file\n"))
        self.assertFalse((self.folder / "somebodys").exists())

    def test_socket_for_a_group_lies_in_a_folder_of_its_own(self):
        self.listen_as(f'group = "{grp.getgrgid(os.getgid()).gr_name}"')
        server = self.start()
        place = self.folder / "run" / "Stacja"
        self.assertEqual(os.readlink(place), ".Stacja/s")
        self.assertEqual([oct(path.stat().st_mode & 0o777) for path in (place.parent / ".Stacja", place)],
                         ["0o710", "0o660"])
        with socket.socket(socket.AF_UNIX) as client:
            client.connect(str(place))
        self.stop(server)
        self.assertEqual([path.name for path in place.parent.iterdir()], [".Stacja.lock"])

    def test_changed_network_settings_wait_for_the_next_start(self):
        server = self.start()
        self.listen_as('local-socket = false\naddress = "127.0.0.1:0"')
        server.send_signal(signal.SIGHUP)
        for key in ("local-socket", "address"):
            self.assertEqual(self.line_of(server), f"network.{key}: zmiana zadziała po ponownym uruchomieniu serwera")
        self.assertEqual(self.line_of(server), "Konfiguracja odczytana ponownie")
        self.assertTrue((self.folder / "run" / "Stacja").is_socket())
        self.stop(server)


if __name__ == "__main__":
    unittest.main()
