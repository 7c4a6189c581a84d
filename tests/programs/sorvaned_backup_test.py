#!/usr/bin/env python3
"""The backup of a data server that runs, and what is restored from it.

    sorvaned_backup_test.py PATH_OF_KALVEX_RUN PATH_OF_SORVANED [unittest arguments]
"""
import json
import pathlib
import shutil
import signal
import sqlite3
import subprocess

from server_and_run import LIMIT_SECONDS, PASSWORD, ServerAndRun, main

PLANT = """[network]
address = "127.0.0.1:0"
certificate = "tls/a.pem"
key = "tls/a.pem"
[[access]]
write = "0"
[[variables]]
file = "stacje/z1.csv"
[[variables]]
file = "FOLDER/obce/z2.csv"
"""
NAMES = ["configuration/plant.toml", "configuration/stacje/z1.csv", "configuration/tls/a.pem", "files", "store.sqlite",
         "users.sqlite"]


class Backup(ServerAndRun):
    def setUp(self):
        super().setUp()
        self.plant = self.folder / "etc"
        self.kept = self.folder / "kopia"
        for folder in ("etc/stacje", "etc/tls", "obce"):
            (self.folder / folder).mkdir(parents=True)
        (self.plant / "stacje/z1.csv").write_text("name;rt;at\nX;2;34\n", encoding="utf-8")
        (self.folder / "obce/z2.csv").write_text("name;type\nOPIS;text\n", encoding="utf-8")
        made = subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
                               "-nodes", "-subj", "/CN=localhost", "-keyout", "-", "-out", "-"], capture_output=True)
        self.assertEqual(made.returncode, 0, made.stderr)
        (self.plant / "tls/a.pem").write_bytes(made.stdout)
        (self.plant / "tls/a.pem").chmod(0o600)
        self.configuration = self.plant / "plant.toml"
        self.configure(PLANT.replace("FOLDER", str(self.folder)))
        self.outside = f"elsewhere{self.folder}/obce/z2.csv"

    def sorvaned(self, *arguments, stdin="", **more):
        done = subprocess.run([self.SERVER, "--config", self.configuration, *arguments], input=stdin,
                              capture_output=True, encoding="utf-8", timeout=LIMIT_SECONDS, cwd=self.folder,
                              env=self.environment | more)
        return done.returncode, done.stdout, done.stderr

    def saved(self):
        return sorted(str(path.relative_to(self.kept)) for path in self.kept.rglob("*") if path.is_file())

    def write_values(self):
        run = self.run_script('REMOTE x srv@X\nREMOTE opis srv@OPIS\nLOCAL a = x.UNIT\nSET opis = "zażółć"\nSET x = 7\n'
                              "PUT x HREP 2024 3 10 6 41.5\nPUT x HREP 2024 3 10 7 0.25\nLOCAL b = 0\n:w\n"
                              "GET x HREP 2024 3 10 7\n:c\nIF NOT READY x.HREP GOTO c\nIF UNKNOWN x.HREP GOTO w\n")
        self.assertEqual(run.code, 0, run.log)

    def values(self):
        run = self.run_script("REMOTE x srv@X\nREMOTE opis srv@OPIS\nLOCAL teraz = x\nLOCAL tekst = opis\n"
                              "GET x HREP 2024 3 10 6\n:c\nIF NOT READY x.HREP GOTO c\nLOCAL h = x.HREP\n",
                              name="read.kx")
        self.assertEqual(run.code, 0, run.log)
        return run.value("teraz"), run.value("tekst"), run.value("h")

    def destroy(self):
        shutil.rmtree(self.plant)
        (self.folder / "obce/z2.csv").unlink()

    def restore(self):
        """As docs/data-server.md tells."""
        shutil.copytree(self.kept / "configuration", self.plant)
        for name in ("store.sqlite", "users.sqlite"):
            (self.plant / "data").mkdir(exist_ok=True)
            shutil.copy2(self.kept / name, self.plant / "data" / name)
        shutil.copy2(self.kept / self.outside, self.folder / "obce/z2.csv")

    def test_what_a_running_server_had_is_restored(self):
        self.assertEqual(self.sorvaned("user", "add", "adam", "--level", "50", "--group", "gaz", stdin=PASSWORD),
                         (0, "", ""))
        server = self.start_server()
        self.write_values()
        self.assertEqual(self.sorvaned("backup", "kopia"), (0, "", ""))
        before = self.values()
        self.assertEqual(before, (7, "zażółć", 41.5))
        server.kill()
        self.destroy()
        self.restore()
        self.start_server()
        self.assertEqual(self.values(), before)
        self.assertEqual(self.sorvaned("user", "list"), (0, "adam\t50\tgaz\t\t\n", ""))
        self.log_in_as("adam", PASSWORD)
        self.assertEqual(self.values(), before)

    def test_folder_has_each_file_for_its_owner_alone(self):
        server = self.start_server()
        self.assertEqual(self.sorvaned("backup", f"{self.kept}/"), (0, "", ""))
        self.assertEqual(self.saved(), sorted([*NAMES, self.outside]))
        for path in [self.kept, *self.kept.rglob("*")]:
            self.assertEqual(oct(path.stat().st_mode & 0o777), "0o700" if path.is_dir() else "0o600", path)
        origins = dict(line.split("\t") for line in (self.kept / "files").read_text(encoding="utf-8").splitlines())
        self.assertEqual(origins, {
            "configuration/plant.toml": str(self.plant / "plant.toml"),
            "configuration/stacje/z1.csv": str(self.plant / "stacje/z1.csv"),
            "configuration/tls/a.pem": str(self.plant / "tls/a.pem"),
            self.outside: str(self.folder / "obce/z2.csv"),
            "store.sqlite": str(self.plant / "data/store.sqlite"),
            "users.sqlite": str(self.plant / "data/users.sqlite")})
        for name, origin in origins.items():
            if not name.endswith(".sqlite"):
                self.assertEqual((self.kept / name).read_bytes(), pathlib.Path(origin).read_bytes(), name)
        server.send(signal.SIGTERM)
        self.assertEqual(server.process.wait(), 0)
        code, out, err = self.sorvaned("backup", self.folder / "druga", "--json")
        self.assertEqual((code, err), (0, ""))
        self.assertEqual([json.loads(line) for line in out.splitlines()],
                         [{"file": name, "origin": origins[name],
                           "bytes": (self.folder / "druga" / name).stat().st_size} for name in sorted(origins)])

    def test_copies_are_single_files_that_need_no_others(self):
        self.start_server()
        self.assertEqual(self.sorvaned("backup", self.kept), (0, "", ""))
        for name in ("store.sqlite", "users.sqlite"):
            database = sqlite3.connect(f"file:{self.kept / name}?mode=ro&immutable=1", uri=True)
            # In the header: the ways of reading and writing, 2 with a log.
            self.assertEqual((self.kept / name).read_bytes()[18:20], bytes([1, 1]))
            self.assertEqual(database.execute("PRAGMA integrity_check").fetchall(), [("ok",)])
            database.close()

    def refused(self, folder, fault, **more):
        before = sorted(self.folder.iterdir())
        self.assertEqual(self.sorvaned("backup", folder, **more), (1, "", fault + "\n"))
        self.assertEqual(sorted(self.folder.iterdir()), before)

    def test_what_is_there_is_not_touched(self):
        self.start_server()
        self.kept.mkdir()
        taken = "już istnieje, a kopia ma być nowym folderem"
        self.refused("kopia", f"kopia: {taken}")
        (self.folder / "plik").write_text("x", encoding="utf-8")
        self.refused("plik", f"plik: {taken}")
        (self.folder / "donikąd").symlink_to("nigdzie")
        self.refused("donikąd", f"donikąd: {taken}")
        self.refused("kopia", "kopia: it is there already, and a backup is to be a new folder", LANGUAGE="en")
        self.assertEqual(self.saved(), [])
        self.refused("brak/kopia", "brak/kopia: No such file or directory")

    def test_nothing_is_left_of_a_backup_that_fails(self):
        data = self.plant / "data"
        self.refused("kopia", f"{data}/store.sqlite: unable to open database file")
        server = self.start_server()
        server.send(signal.SIGTERM)
        self.assertEqual(server.process.wait(), 0)
        (data / "users.sqlite").write_bytes(b"to nie jest baza danych" * 100)
        self.refused("kopia", f"{data}/users.sqlite: file is not a database")
        (data / "users.sqlite").unlink()
        self.refused("kopia", f"{data}/users.sqlite: unable to open database file")
        (self.plant / "stacje/z1.csv").write_text("name;kolor\n", encoding="utf-8")
        self.refused("kopia", f"{self.plant}/stacje/z1.csv:1: kolor: nieznana kolumna")

    def test_damaged_store_is_no_backup(self):
        server = self.start_server()
        self.write_values()
        server.send(signal.SIGTERM)
        self.assertEqual(server.process.wait(), 0)
        store = self.plant / "data/store.sqlite"
        database = sqlite3.connect(store)
        page_size, = database.execute("PRAGMA page_size").fetchone()
        root, = database.execute("SELECT rootpage FROM sqlite_schema WHERE name = 'variables'").fetchone()
        database.close()
        content = bytearray(store.read_bytes())
        content[(root - 1) * page_size:root * page_size] = bytes(page_size)
        store.write_bytes(content)
        self.refused("kopia", f"{store}: Page {root}: btreeInitPage() returns error code 11")


if __name__ == "__main__":
    main()
