"""What kalvexctl asks beside the conversation, of one module and of many; and the completion of its command lines."""
import json
import os
import socket
import subprocess
import unittest

from kalvexctl_process import KALVEXCTL, MODULE_IDENTITY, SORVANED, ControlTest, signal  # noqa: E402

import completion_shells  # noqa: E402

UNREACHABLE = "Brak połączenia z modułem B (serwer nie odpowiada)"


class SupervisionTest(ControlTest):
    def setUp(self):
        super().setUp()
        self.service = self.start_module()

    def stop_at(self, line):
        self.done("break", "a.kx", str(line))
        self.repeat_until(lambda: self.done("status") == f"a.kx\tstopped\t{line}\t-\n")

    def test_status(self):
        self.assertRegex(self.done("status"), r"^a\.kx\trunning\t[1-5]\t-\n$")
        self.done("reset", "a.kx")
        self.assertEqual(self.done("status"), "a.kx\tidle\t-\t-\n")
        self.assertEqual(json.loads(self.done("status", "--json")),
                         {"module": "Kalvex", "identity": MODULE_IDENTITY, "logLevel": 1, "scripts": [
                             {"path": "a.kx", "state": "idle", "line": None, "statusWord": 8, "report": None}]})

    def test_report_is_the_newest_one_since_the_start(self):
        self.put("a.kx", "LOCAL X = 5\nFOO\n")
        self.done("reload", "a.kx")
        line = "a.kx\trunning\t2\tLinia 2 - Nieznane słowo kluczowe : FOO\n"
        self.repeat_until(lambda: self.done("status") == line)
        script, = json.loads(self.done("status", "--json"))["scripts"]
        report = script.pop("report")
        self.assertIsInstance(report.pop("time"), int)
        self.assertEqual(report, {"level": 1, "line": 1, "text": "Nieznane słowo kluczowe : FOO", "waiting": False})
        self.assertEqual(script, {"path": "a.kx", "state": "running", "line": 1, "statusWord": 9})
        self.done("reset", "a.kx")
        self.assertEqual(self.done("status"), "a.kx\tidle\t-\t-\n")

    def test_show(self):
        self.stop_at(4)
        self.done("break", "a.kx", "1")
        self.assertEqual(self.done("show", "a.kx"),
                         " *    1  LOCAL X = 5\n      2  LOCAL Y = 6\n      3  :a\n>*    4  SLEEP 1\n      5  GOTO a\n")
        self.assertEqual(self.done("show", "a.kx", "--context", "1"),
                         "      3  :a\n>*    4  SLEEP 1\n      5  GOTO a\n")
        self.done("reset", "a.kx")
        self.assertEqual(self.done("show", "a.kx", "--context", "1"), " *    1  LOCAL X = 5\n      2  LOCAL Y = 6\n")
        elsewhere = self.folder / "gdzie"
        elsewhere.mkdir()
        self.assert_ends(1, f"kalvexctl: Nie można odczytać pliku {elsewhere}/a.kx (No such file or directory)\n",
                         "--dir", str(elsewhere), "show", "a.kx")

    def test_why(self):
        self.stop_at(4)
        lines = self.done("why", "a.kx").splitlines()
        self.assertEqual(lines[:2], ["Linia:            4: SLEEP 1",
                                     "Stan:             zatrzymany w punkcie przerwania"])
        told = json.loads(self.done("why", "a.kx", "--json"))
        for key in ("since", "stopped", "lastFinished"):
            self.assertIsInstance(told.pop(key), int)
        self.assertEqual(told, {"script": "a.kx", "state": "stoppedAtBreakpoint", "line": 3, "text": "SLEEP 1",
                                "until": None, "missing": [], "error": None, "release": "resume"})

    def test_script_that_is_not_open(self):
        for command in ("show", "breaks", "why"):
            self.assert_ends(6, "kalvexctl: Moduł Kalvex nie ma otwartego skryptu nie.kx\n", command, "nie.kx")

    def test_audit(self):
        process = self.begin("reset", "a.kx")
        self.end_of(process)
        identity = f"{MODULE_IDENTITY}.{self.account()}.{process.pid}_RC"
        rows = [line.split("\t")[1:] for line in self.done("audit").splitlines()]
        tail = ["JAN", "local", identity]
        self.assertEqual(rows, [["session-taken", "a.kx", "-", MODULE_IDENTITY, identity, *tail],
                                ["reset", "a.kx", "-", "running", "idle", *tail],
                                ["session-given", "a.kx", "-", identity, MODULE_IDENTITY, *tail]])
        self.done("level", "2")
        entries = [json.loads(line) for line in self.done("audit", "--json", "--since", "1h").splitlines()]
        self.assertEqual([entry["action"] for entry in entries],
                         ["session-taken", "reset", "session-given", "level"])
        self.assertEqual(self.done("audit", "--since", "2999-01-01"), "")
        self.assertEqual(self.done("audit", "--script", "inny.kx"), "")
        self.assertEqual(len(self.done("audit", "--script", "a.kx").splitlines()), 3)

    def account(self):
        return subprocess.run(["id", "-un"], capture_output=True, encoding="utf-8", check=True).stdout.strip()

    # ---- many modules

    def test_module_that_does_not_answer_is_told_in_its_row(self):
        self.done("reset", "a.kx")
        self.assertEqual(self.control("status", "-m", "Kalvex", "-m", "B"),
                         (3, f"Kalvex\ta.kx\tidle\t-\t-\nB\t-\t-\t-\t{UNREACHABLE}\n", ""))
        status, output, errors = self.control("-m", "B", "-m", "Kalvex", "status", "--json")
        self.assertEqual((status, errors), (3, ""))
        first, second = map(json.loads, output.splitlines())
        self.assertEqual(first, {"module": "B", "identity": None, "logLevel": None, "scripts": [],
                                 "error": UNREACHABLE})
        self.assertEqual(second["module"], "Kalvex")

    def test_module_that_hangs_costs_its_time_once(self):
        self.service.send_signal(signal.SIGSTOP)
        try:
            silent = "Brak połączenia z modułem Kalvex (brak odpowiedzi drugiej strony)"
            self.assertEqual(self.control("--timeout", "1", "status", "--all"),
                             (3, f"Kalvex\t-\t-\t-\t{silent}\n", ""))
        finally:
            self.service.send_signal(signal.SIGCONT)

    def test_all_modules(self):
        self.done("reset", "a.kx")
        other = self.folder / "druga"
        other.mkdir()
        with socket.create_server(("127.0.0.1", 0)) as listener:
            port = listener.getsockname()[1]
        (other / "Kalvex.ini").write_bytes("[Konfiguracja]\nNazwa=Druga\n[Konsola]\nGniazdo lokalne=0\n"
                                           f"Adres=127.0.0.1:{port}\nOtwarty tekst=1\n".encode("cp1250"))
        profile = (self.folder / "sorvane.ini").read_bytes()
        (self.folder / "sorvane.ini").write_bytes(profile + f"[Serwery]\nDruga=127.0.0.1:{port}\n".encode())
        runtime = self.environment["SORVANE_RUNTIME_DIR"]
        self.environment["SORVANE_RUNTIME_DIR"] = str(other / "run")
        service = self.start("--working-dir", str(other))
        self.environment["SORVANE_RUNTIME_DIR"] = runtime
        self.read_to(service, "Poziom rejestracji: błędy ")
        self.assertEqual(self.done("status", "--all"), "Druga\t-\t-\t-\t-\nKalvex\ta.kx\tidle\t-\t-\n")

    def test_server_that_is_no_module_is_told_where_it_is_named(self):
        self.put("x.toml", f'[server]\nname = "x"\ndata = "{self.folder}/x"\nusers = "{self.folder}/users.sqlite"\n')
        server = subprocess.Popen([SORVANED, "--config", self.folder / "x.toml"], stderr=subprocess.PIPE,
                                  encoding="utf-8", env=self.environment)
        for cleanup in (server.stderr.close, server.wait, server.kill):
            self.addCleanup(cleanup)
        while "Nasłuchiwanie: gniazdo lokalne" not in server.stderr.readline():
            pass
        refusal = "Moduł x nie udostępnia nadzoru skryptów"
        self.assert_ends(1, f"kalvexctl: {refusal}\n", "-m", "x", "status")
        self.assert_ends(1, f"kalvexctl: {refusal}\n", "-m", "x", "why", "a.kx")
        self.done("reset", "a.kx")
        self.assertEqual(self.control("-m", "x", "-m", "Kalvex", "status"),
                         (1, f"x\t-\t-\t-\t{refusal}\nKalvex\ta.kx\tidle\t-\t-\n", ""))
        self.assertEqual(self.done("status", "--all"), "Kalvex\ta.kx\tidle\t-\t-\n")

    def test_user_without_the_right_at_many(self):
        del self.environment["KALVEXCTL_LOGIN"]
        refused = "Brak uprawnień do sterowania skryptami modułu Kalvex"
        self.assertEqual(self.control("status", "--all"), (4, f"Kalvex\t-\t-\t-\t{refused}\n", ""))


class CompletionTest(ControlTest):
    def complete(self, *words):
        """What bash offers for the last word."""
        return completion_shells.bash("kalvexctl", [["kalvexctl", *words]], self.folder, self.path_and_all())[0]

    def path_and_all(self):
        return self.environment | {"PATH": f"{os.path.dirname(KALVEXCTL)}:{os.environ['PATH']}"}

    def test_bash(self):
        self.put("ą b.kx", "HALT\n")
        self.start_module()
        self.done("open", "ą b.kx")
        self.assertEqual(self.complete("st"), ["status", "start", "stop", "step"])
        self.assertEqual(self.complete("--wait", "5", "un"), ["unbreak"])
        self.assertEqual(self.complete("stop", ""), ["a.kx", "ą b.kx"])
        self.assertEqual(self.complete("-m", "Kalvex", "stop", "ą"), ["ą b.kx"])
        self.assertEqual(self.complete("-m", "Nie", "stop", ""), [])
        self.assertEqual(self.complete("set", "a.kx", ""), ["X", "Y"])
        self.assertEqual(self.complete("take", "a.kx", "--f"), ["--force"])
        self.assertEqual(self.complete("--ti"), ["--timeout"])
        self.assertEqual(self.complete("--login", "lo"), ["login"])
        self.assertEqual(self.complete("level", ""), ["1", "2", "3"])
        self.assertEqual(self.complete("list", ""), [])
        self.assertEqual(self.complete("audit", "--script", "a"), ["a.kx"])

    def offer_what_the_module_has(self, shell):
        self.put("ą b.kx", "HALT\n")
        self.start_module()
        self.done("open", "ą b.kx")
        offered = {"kalvexctl stop ": ["a.kx", "ą b.kx"], "kalvexctl -m Kalvex stop ą": ["ą b.kx"],
                   "kalvexctl --module=Kalvex stop a": ["a.kx"], "kalvexctl --module=Nie stop ": [],
                   "kalvexctl -m Nie stop ": [], "kalvexctl set a.kx ": ["X", "Y"],
                   "kalvexctl -m Kalvex set a.kx X": ["X"], "kalvexctl audit --script a": ["a.kx"]}
        found = shell("kalvexctl", list(offered), self.folder, self.path_and_all())
        self.assertEqual(dict(zip(offered, found)), offered)

    def test_zsh(self):
        self.offer_what_the_module_has(completion_shells.zsh)

    def test_fish(self):
        self.offer_what_the_module_has(completion_shells.fish)


if __name__ == "__main__":
    unittest.main()
