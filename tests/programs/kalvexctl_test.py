"""The commands of kalvexctl against a real module: what they print, and how they end."""
import os
import pty
import socket
import subprocess
import unittest

from kalvexctl_process import KALVEXCTL, PATIENCE, ControlTest, signal

NO_RIGHT = "kalvexctl: Brak uprawnień do sterowania skryptami modułu Kalvex\n"
ZERO_TIME = "1970-01-01 01:00:00"


def not_open(script):
    return f"kalvexctl: Moduł Kalvex nie ma otwartego skryptu {script}\n"


class CommandsTest(ControlTest):
    def setUp(self):
        super().setUp()
        self.put("ą b.kx", 'LOCAL T = "ab"\nLOCAL Z = 1\nREMOTE R ZR@V\nHALT\n')
        self.service = self.start_module()

    # ---- what a module has

    def test_list(self):
        self.done("open", "ą b.kx")
        self.assertEqual(self.done("list"), "a.kx\ną b.kx\n")

    def test_nobody_may_list_and_see_the_level(self):
        del self.environment["KALVEXCTL_LOGIN"]
        self.assertEqual(self.done("list"), "a.kx\n")
        self.assertEqual(self.done("level"), "1\n")
        for arguments in (["vars", "a.kx"], ["set", "a.kx", "X", "1"], ["start", "a.kx"], ["stop", "a.kx"],
                          ["take", "a.kx"], ["release", "a.kx"], ["open", "a.kx"], ["close", "a.kx"],
                          ["close", "a.kx", "--force"], ["log"], ["level", "2"], ["status"], ["show", "a.kx"],
                          ["breaks", "a.kx"], ["why", "a.kx"], ["audit"]):
            self.assert_ends(4, NO_RIGHT, *arguments)

    def test_script_that_is_not_open(self):
        self.done("open", "ą b.kx")
        self.done("close", "ą b.kx")
        for script in ("nie.kx", "ą b.kx", "./a.kx"):
            for arguments in (["vars", script], ["set", script, "X", "1"], ["start", script], ["stop", script],
                              ["step", script], ["reset", script], ["break", script, "1"], ["unbreak", script],
                              ["reload", script], ["take", script], ["release", script], ["close", script],
                              ["close", script, "--force"]):
                self.assert_ends(6, not_open(script), *arguments)
        # Nor has asking opened one.
        self.assertEqual(self.done("list"), "a.kx\n")

    def test_open_and_close(self):
        self.assertEqual(self.done("open", "ą b.kx"), "")
        self.assertEqual(self.done("open", "ą b.kx"), "")
        self.assertEqual(self.done("open", str(self.folder / "ą b.kx")), "")
        self.assertEqual(self.done("open", str(self.folder / "ą b.kx"), "--dir", "/nigdzie"), "")
        self.assert_ends(6, "kalvexctl: Moduł Kalvex nie otworzył skryptu /nigdzie/ą b.kx\n", "open", "/nigdzie/ą b.kx")
        self.assertEqual(self.done("close", "ą b.kx"), "")
        self.assertEqual(self.done("open", str(self.folder / "ą b.kx")), "")
        self.assertEqual(self.done("list"), "a.kx\ną b.kx\n")
        self.assert_ends(6, "kalvexctl: Moduł Kalvex nie otworzył skryptu nie.kx\n", "open", "nie.kx")
        self.done("close", "ą b.kx")
        (self.folder / "ą b.kx").unlink()
        self.assert_ends(6, "kalvexctl: Moduł Kalvex nie otworzył skryptu ą b.kx\n", "open", "ą b.kx")

    def test_close_leaves_a_script_alone_that_runs_unless_it_is_forced(self):
        refusal = "kalvexctl: Skrypt a.kx działa albo stoi w trybie krokowym\n"
        self.assert_ends(1, refusal, "close", "a.kx")
        self.done("stop", "a.kx")
        self.assert_ends(1, refusal, "close", "a.kx")
        self.assert_module_holds()
        self.assertEqual(self.done("close", "a.kx", "--force"), "")
        self.assertEqual(self.done("list"), "")

    def test_close_by_force_needs_no_session(self):
        console = self.connect("Obca_RC", "a.kx")
        console.take_session("Obca_RC")
        self.assertEqual(self.done("close", "--force", "a.kx"), "")

    # ---- control

    def test_start_stop_step_reset(self):
        self.assertEqual(self.done("reset", "a.kx"), "a.kx\tidle\t-\n")
        self.assertEqual(self.done("reset", "a.kx"), "a.kx\tidle\t-\n")
        self.assert_ends(1, "kalvexctl: Skrypt a.kx nie jest uruchomiony\n", "stop", "a.kx")
        self.assert_ends(1, "kalvexctl: Skrypt a.kx nie stoi w trybie krokowym\n", "step", "a.kx")
        self.assertEqual(self.done("start", "a.kx"), "a.kx\trunning\t1\n")
        self.assert_ends(1, "kalvexctl: Skrypt a.kx nie stoi w trybie krokowym\n", "step", "a.kx")
        self.assertRegex(self.done("start", "a.kx"), r"^a\.kx\trunning\t[1-5]\n$")
        stopped = self.done("stop", "a.kx")
        self.assertRegex(stopped, r"^a\.kx\tstopped\t[1-5]\n$")
        self.assertEqual(self.done("stop", "a.kx"), stopped)
        self.assertRegex(self.done("step", "a.kx"), r"^a\.kx\tstopped\t[1-5]\n$")
        self.assertEqual(self.done("reset", "a.kx"), "a.kx\tidle\t-\n")
        self.assert_module_holds()

    def test_step_runs_one_line(self):
        self.put("a.kx", "LOCAL X = 5\nSET X = 7\nSET X = 8\nHALT\n")
        self.done("break", "a.kx", "2")
        self.done("reload", "a.kx")
        self.repeat_until(lambda: self.done("status").startswith("a.kx\tstopped\t2\t"))
        self.assertEqual(self.done("vars", "a.kx"), f"X\t{ZERO_TIME} ( 0 ) 5.00\n")
        self.assertEqual(self.done("step", "a.kx"), "a.kx\tstopped\t3\n")
        self.assertEqual(self.done("vars", "a.kx"), f"X\t{ZERO_TIME} ( 0 ) 7.00\n")

    def test_start_that_is_refused(self):
        self.put("a.kx", "IF 1 THEN\nLOCAL X = 5\n")
        self.assert_ends(1, "kalvexctl: Skrypt a.kx nie został uruchomiony\n", "reload", "a.kx")
        self.assert_ends(1, "kalvexctl: Skrypt a.kx nie został uruchomiony\n", "start", "a.kx")
        self.assert_module_holds()

    def test_reload_takes_the_text_that_is_on_disk(self):
        for text, states in (("LOCAL NOWA = 1\n:a\nGOTO a\n", "running"), ("LOCAL NOWSZA = 2\n:a\nGOTO a\n", "idle")):
            if states == "idle":
                self.done("reset", "a.kx")
            self.put("a.kx", text)
            self.assertIn(self.done("reload", "a.kx"), ("a.kx\trunning\t1\n", "a.kx\trunning\t2\n"))
            name = text.split()[1]
            self.repeat_until(lambda wanted=name: self.done("vars", "a.kx").startswith(f"{wanted}\t"))

    def test_breakpoints(self):
        for line in ("40", "7", "12"):
            self.assertEqual(self.done("break", "a.kx", line), "")
        self.assertEqual(self.done("breaks", "a.kx"), "7\n12\n40\n")
        self.assertEqual(self.done("unbreak", "a.kx", "12"), "")
        self.assertEqual(self.done("breaks", "a.kx"), "7\n40\n")
        self.assertEqual(self.done("unbreak", "a.kx"), "")
        self.assertEqual(self.done("breaks", "a.kx"), "")

    # ---- variables

    def test_vars(self):
        self.done("open", "ą b.kx")
        self.assertEqual(self.done("vars", "ą b.kx"), "")
        self.assertEqual(self.done("vars", "ą b.kx", "--json"), '{"script":"ą b.kx","variables":[]}\n')
        self.done("start", "ą b.kx")
        self.repeat_until(lambda: self.done("vars", "ą b.kx").count("\n") == 3)
        self.assertEqual(self.done("vars", "ą b.kx"),
                         f"T\t{ZERO_TIME} ( 0 ) ab\nZ\t{ZERO_TIME} ( 0 ) 1.00\n"
                         "R\t\t\t\t\t\n")

    def test_vars_as_json(self):
        self.repeat_until(lambda: self.done("vars", "a.kx").count("\n") == 2)
        self.done("set", "a.kx", "X", '"a;b ""c"')
        self.assertEqual(self.done("vars", "--json", "a.kx"),
                         '{"script":"a.kx","variables":['
                         '{"name":"X","slots":{"CURDATA":{"time":"1970-01-01 01:00:00","status":0,'
                         '"text":"a;b \\"\\"c"}}},'
                         '{"name":"Y","slots":{"CURDATA":{"time":"1970-01-01 01:00:00","status":0,"text":"6.00"}}}]}\n')

    def test_set(self):
        for text, line in (("12.5", "( 0 ) 12.50"), ("-12.5", "( 0 ) -12.50"), ("-.5", "( 0 ) -0.50"),
                           ('"żółć"', "( 0 ) żółć"), ("słowo", "( 0 ) 0.00"), ("#7", "( 2080 ) 7.00"),
                           ("*", "( 1 ) 0.00"), ("$", "( 545 ) 0.00"), ('"a;b"', "( 0 ) a;b"), ("1e3", "( 0 ) 1000.00"),
                           ("0x10", "( 0 ) 16.00")):
            self.assertEqual(self.done("set", "a.kx", "X", text), f"X\t{ZERO_TIME} {line}\n", text)
        self.assert_ends(1, "kalvexctl: Skrypt a.kx nie ma zmiennej NIE\n", "set", "a.kx", "NIE", "1")

    def test_watch_until_a_signal(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            process = self.begin("vars", "a.kx", "--watch", "1")
            for _ in range(2):
                self.assertEqual(process.stdout.readline(), f"X\t{ZERO_TIME} ( 0 ) 5.00\n")
                self.assertEqual(process.stdout.readline(), f"Y\t{ZERO_TIME} ( 0 ) 6.00\n")
            process.send_signal(number)
            status, _, errors = self.end_of(process)
            self.assertEqual((status, errors), (0, ""))

    # ---- log and level

    def test_level(self):
        self.assertEqual(self.done("level"), "1\n")
        self.assertEqual(self.done("level", "3"), "")
        self.assertEqual(self.done("level"), "3\n")
        self.assertEqual(self.done("level", "3"), "")
        self.assertEqual(self.done("level", "1"), "")
        self.assertEqual(self.done("level"), "1\n")

    def test_log(self):
        lines = self.done("log", "-n", "2").splitlines()
        files = sorted(self.folder.glob("Kalvex*.log"))
        logged = files[-1].read_text(encoding="utf-8").splitlines()
        self.assertEqual(lines, logged[-2:])
        self.assertEqual(self.done("log", "-n", "0"), "")
        self.assertEqual(self.done("log").splitlines(), logged)

    def test_log_of_some_levels(self):
        self.done("level", "2")
        texts = [line[21:] for line in self.done("log", "--level", "0").splitlines()]
        self.assertEqual(texts[-1], "Poziom rejestracji: zdarzenia")
        self.assertEqual([line[21:] for line in self.done("log", "-n", "2", "--level", "0").splitlines()], texts[-2:])
        texts = [line[21:] for line in self.done("log").splitlines()]
        self.assertTrue(texts[-1].startswith("Rejestracja użytkownika JAN (Sorvane: 100) z Kalvex_"), texts[-1])

    def test_log_that_is_followed(self):
        process = self.begin("log", "-n", "1", "--follow")
        self.assertEqual(process.stdout.readline()[21:], "Poziom rejestracji: błędy \n")
        self.done("reset", "a.kx")
        self.assertEqual(process.stdout.readline()[21:], f"{self.folder}/a.kx : Reset skryptu \n")
        process.send_signal(signal.SIGTERM)
        self.assertEqual(self.end_of(process), (0, "", ""))
        process = self.begin("log", "-n", "1", "--follow")
        self.assertEqual(process.stdout.readline()[21:], f"{self.folder}/a.kx : Reset skryptu \n")
        process.send_signal(signal.SIGHUP)
        status, _, errors = self.end_of(process)
        self.assertEqual((status, errors), (129, ""))

    def test_reader_that_goes_away_ends_it(self):
        process = self.begin("log", "-n", "1", "--follow")
        process.stdout.readline()
        process.stdout.close()
        self.done("reset", "a.kx")
        self.assertEqual(process.wait(timeout=PATIENCE), 0)

    def test_module_that_ends(self):
        process = self.begin("log", "-n", "1", "--follow")
        process.stdout.readline()
        self.service.send_signal(signal.SIGTERM)
        status, _, errors = self.end_of(process)
        self.assertEqual((status, errors),
                         (3, "kalvexctl: Połączenie z modułem Kalvex zerwane (zakończenie pracy serwera)\n"))

    # ---- output that cannot be written

    def test_output_that_cannot_be_written_is_told(self):
        with open("/dev/full", "w") as full:
            done = subprocess.run([KALVEXCTL, "list"], stdout=full, stderr=subprocess.PIPE, encoding="utf-8",
                                  env=self.environment, cwd=self.folder, timeout=PATIENCE)
        self.assertEqual((done.returncode, done.stderr),
                         (1, "kalvexctl: Nie można zapisać wyniku (No space left on device)\n"))
        done = subprocess.run([KALVEXCTL, "list"], stderr=subprocess.PIPE, encoding="utf-8", env=self.environment,
                              cwd=self.folder, timeout=PATIENCE, preexec_fn=lambda: os.close(1))
        self.assertEqual((done.returncode, done.stderr),
                         (1, "kalvexctl: Nie można zapisać wyniku (Bad file descriptor)\n"))

    def test_reader_that_goes_is_no_fault(self):
        reading, writing = os.pipe()
        os.close(reading)
        done = subprocess.run([KALVEXCTL, "list"], stdout=writing, stderr=subprocess.PIPE, encoding="utf-8",
                              env=self.environment, cwd=self.folder, timeout=PATIENCE)
        os.close(writing)
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    # ---- language and terminal

    def test_english(self):
        self.environment |= {"LANGUAGE": "en", "LC_ALL": "C.UTF-8"}
        self.assert_ends(6, "kalvexctl: Module Kalvex has no open script nie.kx\n", "start", "nie.kx")

    def on_terminal(self, *arguments):
        """The output at 40 columns."""
        leader, follower = pty.openpty()
        self.addCleanup(os.close, leader)
        subprocess.run(["stty", "cols", "40"], stdin=follower, check=True)
        process = subprocess.Popen([KALVEXCTL, *arguments], stdout=follower, stderr=follower, stdin=follower,
                                   env=self.environment, cwd=self.folder)
        self.assertEqual(process.wait(timeout=PATIENCE), 0)
        os.close(follower)
        shown = b""
        while True:
            try:
                piece = os.read(leader, 4096)
            except OSError:
                return shown.decode().replace("\r\n", "\n")
            shown += piece

    def test_terminal(self):
        self.done("reset", "a.kx")
        self.assertEqual(self.on_terminal("status"),
                         "\033[90mSKRYPT\033[0m  \033[90mSTAN\033[0m  \033[90mLINIA\033[0m  \033[90mRAPORT\033[0m\n"
                         "a.kx    \033[90midle\033[0m  -      -\n")
        self.environment["NO_COLOR"] = "1"
        self.done("start", "a.kx")
        self.repeat_until(lambda: self.done("vars", "a.kx").count("\n") == 2)
        _, line = self.done("stop", "a.kx").rstrip("\n").rsplit("\t", 1)
        shown = self.on_terminal("status").split("\n")
        self.assertEqual(shown[:2], ["SKRYPT  STAN     LINIA  RAPORT", f"a.kx    stopped  {line}      -"])
        self.assertTrue(shown[2].startswith(f"    zatrzymany poleceniem, linia {line} od "), shown[2])
        self.assertEqual((len(shown[2]), shown[3:]), (40, [""]))
        self.assertEqual(self.on_terminal("list"), "a.kx\n")
        self.done("set", "a.kx", "X", "5")
        last = self.on_terminal("audit").rstrip("\n").split("\n")[-2:]
        self.assertRegex(last[0], r"^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d  JAN         value$")
        self.assertRegex(last[1], r"^    5.00 -> 5.00  \(local, .*$")
        self.repeat_until(lambda: self.done("vars", "a.kx").count("\n") == 2)
        self.assertEqual(self.on_terminal("vars", "a.kx"),
                         "ZMIENNA  CURDATA\n"
                         "X        1970-01-01 01:00:00 ( 0 ) 5.00\n"
                         "Y        1970-01-01 01:00:00 ( 0 ) 6.00\n")


class ConnectionTest(ControlTest):
    def test_no_module(self):
        self.assert_ends(3, "kalvexctl: Brak połączenia z modułem Kalvex (serwer nie odpowiada)\n", "list")
        self.assert_ends(3, "kalvexctl: Brak połączenia z modułem Nie (serwer nie odpowiada)\n", "-m", "Nie", "status")
        self.assert_ends(3, "kalvexctl: Brak połączenia z modułem Kalvex (serwer nie odpowiada)\n", "list",
                         "--address", "127.0.0.1:1")

    def test_module_that_hangs(self):
        service = self.start_module()
        service.send_signal(signal.SIGSTOP)
        try:
            status, output, errors = self.control("--timeout", "1", "list")
            self.assertEqual((status, output), (3, ""))
            self.assertIn(errors, ["kalvexctl: Brak połączenia z modułem Kalvex (serwer nie odpowiada)\n",
                                   "kalvexctl: Brak połączenia z modułem Kalvex (brak odpowiedzi drugiej strony)\n"])
            self.assert_ends(3, "kalvexctl: Brak połączenia z modułem Kalvex (brak odpowiedzi drugiej strony)\n",
                             "--timeout", "1", "status")
        finally:
            service.send_signal(signal.SIGCONT)

    def test_question_waits_as_long_as_the_timeout_says(self):
        service = self.start_module()
        service.send_signal(signal.SIGSTOP)
        try:
            asking = self.begin("--timeout", "60", "breaks", "a.kx")
            self.assertEqual(self.control("--timeout", "4", "list")[0], 3)
        finally:
            service.send_signal(signal.SIGCONT)
        self.assertEqual(self.end_of(asking), (0, "", ""))

    def test_name_of_the_module(self):
        self.put("Kalvex.ini", "[Konfiguracja]\nNazwa=Oczyszczalnia\n[Autostart]\nProcedura0=a.kx\n")
        self.start_module()
        self.assertEqual(self.done("-mOczyszczalnia", "list"), "a.kx\n")
        self.assertEqual(self.done("list", "--module=Oczyszczalnia"), "a.kx\n")
        self.assert_ends(6, "kalvexctl: Moduł Oczyszczalnia nie ma otwartego skryptu b.kx\n", "-m", "Oczyszczalnia",
                         "start", "b.kx")

    def free_port(self):
        with socket.create_server(("127.0.0.1", 0)) as listener:
            return listener.getsockname()[1]

    def test_plain_address(self):
        port = self.free_port()
        self.put("Kalvex.ini", "[Autostart]\nProcedura0=a.kx\n[Konsola]\nGniazdo lokalne=0\n"
                 f"Adres=127.0.0.1:{port}\nOtwarty tekst=1\n")
        self.start_module()
        self.assertEqual(self.done("--address", f"127.0.0.1:{port}", "list"), "a.kx\n")
        self.assertEqual(self.done("--address", f"127.0.0.1:{port}", "status").split("\t")[0], "a.kx")
        profile = (self.folder / "sorvane.ini").read_bytes()
        (self.folder / "sorvane.ini").write_bytes(profile + f"[Serwery]\nKalvex=127.0.0.1:{port}\n".encode())
        self.assertEqual(self.done("list"), "a.kx\n")

    def openssl(self, *arguments):
        subprocess.run(["openssl", *arguments], cwd=self.folder, capture_output=True, check=True)

    def test_tls(self):
        self.openssl("req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-noenc", "-subj",
                     "/CN=urzad", "-keyout", "urzad.key", "-out", "urzad.pem")
        (self.folder / "names").write_text("subjectAltName=DNS:stacja7\n", encoding="utf-8")
        self.openssl("req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-noenc", "-subj",
                     "/CN=stacja7", "-keyout", "m.key", "-out", "m.csr")
        self.openssl("x509", "-req", "-in", "m.csr", "-CA", "urzad.pem", "-CAkey", "urzad.key", "-CAcreateserial",
                     "-extfile", "names", "-out", "m.pem")
        port = self.free_port()
        self.put("Kalvex.ini", "[Autostart]\nProcedura0=a.kx\n[Konsola]\nGniazdo lokalne=0\n"
                 f"Adres=127.0.0.1:{port}\nCertyfikat={self.folder}/m.pem\nKlucz={self.folder}/m.key\n")
        self.start_module()
        address = ["--address", f"127.0.0.1:{port}"]
        trusting = [*address, "--authority", "urzad.pem"]
        self.assertEqual(self.done(*trusting, "--certificate-name", "stacja7", "list"), "a.kx\n")
        self.assertEqual(self.done(*trusting, "--certificate-name", "stacja7", "breaks", "a.kx"), "")
        unreachable = "kalvexctl: Brak połączenia z modułem Kalvex (serwer nie odpowiada)\n"
        self.assert_ends(3, unreachable, *trusting, "list")
        self.assert_ends(3, unreachable, *address, "list")


class LoginTest(ControlTest):
    def setUp(self):
        super().setUp()
        self.start_module()

    def test_file_that_others_may_read(self):
        refusal = f"kalvexctl: Plik {self.login} może mieć prawa tylko dla właściciela\n"
        for mode in (0o640, 0o604, 0o610, 0o601, 0o620):
            self.login.chmod(mode)
            self.assert_ends(4, refusal, "list")
        for mode in (0o600, 0o400):
            self.login.chmod(mode)
            self.assertEqual(self.done("list"), "a.kx\n")

    def test_file_that_is_named(self):
        other = self.folder / "inny"
        self.assert_ends(4, f"kalvexctl: Nie można odczytać danych logowania z pliku {other} (No such file or directory)\n",
                         "list", "--login", str(other))
        other.write_text("JAN\nzłe\n", encoding="utf-8")
        other.chmod(0o600)
        refusal = "kalvexctl: Moduł Kalvex odrzucił rejestrację użytkownika JAN (brak uprawnień)\n"
        self.assert_ends(4, refusal, "list", "--login", str(other))
        self.assert_ends(4, refusal, "status", "--login", str(other))

    def test_user_without_the_right(self):
        self.add_user("OLA", "--level", "0")
        self.login.write_text("OLA\nhaslo\n", encoding="utf-8")
        self.assertEqual(self.done("list"), "a.kx\n")
        for arguments in (["stop", "a.kx"], ["vars", "a.kx"], ["log"], ["level", "2"], ["status"]):
            self.assert_ends(4, NO_RIGHT, *arguments)

    def test_password_without_a_terminal(self):
        process = self.begin("list", "-u", "JAN", start_new_session=True)
        self.assertEqual(self.end_of(process), (4, "", "kalvexctl: Hasło można podać tylko na terminalu\n"))

    def test_password_at_a_terminal(self):
        for answer, ending in ((b"haslo\n", (0, "a.kx\n", "")),
                               (b"inne\n", (4, "", "kalvexctl: Moduł Kalvex odrzucił rejestrację użytkownika JAN "
                                                   "(brak uprawnień)\n"))):
            child, leader = pty.fork()
            if child == 0:
                with open(self.folder / "out", "wb") as out, open(self.folder / "err", "wb") as errors:
                    os.dup2(out.fileno(), 1)
                    os.dup2(errors.fileno(), 2)
                    os.execve(KALVEXCTL, [KALVEXCTL, "list", "--user", "JAN"], self.environment)
            shown = b""
            while "Hasło: ".encode() not in shown:
                shown += os.read(leader, 100)
            os.write(leader, answer)
            _, status = os.waitpid(child, 0)
            rest = os.read(leader, 1000)
            os.close(leader)
            self.assertEqual((shown + rest).decode(), "Hasło: \r\n")
            self.assertEqual((os.waitstatus_to_exitcode(status), (self.folder / "out").read_text(encoding="utf-8"),
                              (self.folder / "err").read_text(encoding="utf-8")), ending)


class UsageTest(ControlTest):
    def test_wrong_usage(self):
        for arguments, text in (
                ([], "no command is named"),
                (["skok"], 'there is no command "skok"'),
                (["lst"], 'there is no command "lst", did you mean list?'),
                (["list", "--skok"], "unknown option --skok"),
                (["list", "--adress=x"], "unknown option --adress, did you mean --address?"),
                (["-z", "list"], "unknown option -z"),
                (["list", "a"], 'list: "a" is too much'),
                (["list", "--json"], "list takes no --json"),
                (["start"], "start needs SCRIPT"),
                (["start", ""], "start: SCRIPT is empty"),
                (["set", "a.kx", "X"], "set needs TEXT"),
                (["set", "a.kx", "X", ""], "set: TEXT is empty"),
                (["set", "a.kx", "X", '""'], "set: TEXT is empty"),
                (["set", "a.kx", "X", '#""'], "set: TEXT is empty"),
                (["set", "a.kx", "X", "a\tb"], "set: TEXT has a tab"),
                (["set", "a.kx", "X", "-x"], "unknown option -x"),
                (["break", "a.kx"], "break needs LINE"),
                (["break", "a.kx", "0"], 'break: "0" is not a whole number from 1 to 2147483647'),
                (["break", "a.kx", "-1"], 'break: "-1" is not a whole number from 1 to 2147483647'),
                (["level", "0"], 'level: "0" is not a whole number from 1 to 3'),
                (["level", "4"], 'level: "4" is not a whole number from 1 to 3'),
                (["log", "-n"], "-n needs a value"),
                (["log", "-n", "-1"], '-n: "-1" is not a whole number from 0 to 1000000'),
                (["log", "--level", "4"], '--level: "4" is not a whole number from 0 to 3'),
                (["list", "--timeout", "0"], '--timeout: "0" is not a whole number from 1 to 600'),
                (["list", "--timeout", "601"], '--timeout: "601" is not a whole number from 1 to 600'),
                (["list", "--wait=-1"], '--wait: "-1" is not a whole number from 0 to 600'),
                (["list", "--wait", "601"], '--wait: "601" is not a whole number from 0 to 600'),
                (["list", "--address", "x"], '--address: "x" is no address HOST:PORT'),
                (["list", "--authority", "x"], "--authority, --certificate, --key, --certificate-name and --plain-text "
                                               "go with --address"),
                (["list", "--address", "a:1", "--key", "x"], "--certificate and --key go together"),
                (["list", "-m", "A", "-m", "B"], "list takes one module"),
                (["status", "--all", "-m", "B"], "--all goes without --module"),
                (["list", "-u", "JAN", "--login", "x"], "--user goes without --login"),
                (["list", "-m", ""], "-m: an empty name is no module's"),
                (["audit", "--since", "kiedyś"],
                 '--since: "kiedyś" is no time such as 2024-03-10, "2024-03-10 07:00" or 2h'),
                (["take", "a.kx", "--force=1"], "--force takes no value"),
                (["open", "~a.kx"], "open: PATH begins with ~")):
            self.assert_ends(2, f"kalvexctl: {text}\n", *arguments)

    def test_help_and_version(self):
        self.assertRegex(self.done("--version"), r"^kalvexctl \d+\.\d+\.\d+\n$")
        self.assertEqual(self.done("-V"), self.done("--version"))
        self.assertTrue(self.done("start", "--help").startswith("Usage: kalvexctl [OPTIONS] COMMAND [ARGUMENTS]\n"))
        self.assertEqual(self.done("-h"), self.done("--help"))


if __name__ == "__main__":
    unittest.main()
