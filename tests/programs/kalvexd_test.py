#!/usr/bin/env python3
"""The service as a process: its start, its end, its files, its signals."""
import fcntl
import os
import re
import resource
import signal
import subprocess
import unittest

from kalvexd_process import LOCKED, PROGRAM, STARTED, STOPPED, ServiceTest

NOT_PRIMARY = "Ten program może być uruchamiany wyłącznie w pierwszej instancji systemu Sorvane"
OPTION_C = (
    "Opcja  /C nie jest wspierana w tej wersji systemu. Należy zmodyfikować konfigurację systemu "
    "z wykorzystaniem opcji /INST"
)


class Kalvexd(ServiceTest):
    def line_of(self, service):
        return self.lines_of(service, 1)[0]

    def expect_end(self, service, ending=signal.SIGTERM):
        service.send_signal(ending)
        self.assertEqual(self.line_of(service), STOPPED)
        self.assertEqual(service.wait(60), 0)
        self.assertEqual(service.stderr.read(), "")

    def file_lines(self, name):
        return [line[21:] for line in (self.folder / name).read_text(encoding="utf-8").splitlines()]

    def test_scripts_of_the_profile_run_until_the_polite_end(self):
        self.put("Kalvex.ini", "[Autostart]\r\nProcedura0=a.kx\r\nProcedura1=brak.kx\r\n")
        self.put("a.kx", "PRIORITY 1\r\nLOCAL ŻAR = 1\r\nBZDURA\r\n")
        script = self.folder / "a.kx"
        for ending in (signal.SIGTERM, signal.SIGINT):
            service = self.start()
            self.assertEqual(self.lines_of(service, 5), [
                STARTED[0],
                f"{script} : Inicjowanie skryptu ",
                f"{script} : Start skryptu ",
                f"{self.folder}/brak.kx : No such file or directory",
                STARTED[1],
            ])
            self.assertEqual(self.line_of(service), f"{script} : Linia 3 - Nieznane słowo kluczowe : BZDURA")
            self.expect_end(service, ending)
        self.assertEqual(len(self.file_lines("Kalvex.log")), 14)

    def test_failed_check_is_logged_though_no_script_asks_for_its_result(self):
        self.put("a.kx", 'HTTP_INIT "127.0.0.1" 1\r\n:w\r\nGOTO w\r\n')
        self.put("Kalvex.ini", "[Autostart]\r\nProcedura0=a.kx\r\n")
        service = self.start()
        self.read_to(service, "Wystąpił błąd podczas próby zestawienia połączenia z serwerem http 127.0.0.1. "
                              "Connection refused")
        self.expect_end(service)

    def test_script_that_is_a_pipe_is_told_and_not_waited_for(self):
        os.mkfifo(self.folder / "rura.kx")
        self.put("Kalvex.ini", "[Autostart]\r\nProcedura0=rura.kx\r\n")
        service = self.start()
        self.assertEqual(self.lines_of(service, 4), self.idle_start(f"{self.folder}/rura.kx : Not a regular file"))
        self.expect_end(service)

    def test_log_file_that_was_moved_is_opened_anew(self):
        service = self.start()
        self.assertEqual(self.lines_of(service, 3), self.idle_start())
        (self.folder / "Kalvex.log").rename(self.folder / "stary.log")
        service.send_signal(signal.SIGHUP)
        self.expect_end(service)
        self.assertEqual(self.file_lines("stary.log"), self.idle_start())
        self.assertEqual(self.file_lines("Kalvex.log"), [STOPPED])

    def test_profile_is_whole_however_often_the_service_is_killed(self):
        before = "; ustawienia\r\n[Konfiguracja]\r\nNazwa=Kotłownia\r\n[Log]\r\nRodzaj=3\r\n"
        after = before.replace("3", "1")
        self.put("Kalvex.ini", before)
        for _ in range(100):
            service = self.start()
            # The level is told, then written: transmission is never kept.
            self.read_to(service, "Poziom rejestracji: transmisja")
            service.kill()
            service.wait(60)
            content = (self.folder / "Kalvex.ini").read_bytes().decode("cp1250")
            self.assertIn(content, (before, after))
            if content == after:
                self.put("Kalvex.ini", before)

    def test_logs_may_lie_elsewhere(self):
        (self.folder / "dziennik").mkdir()
        service = self.start("--log-dir", str(self.folder / "dziennik"))
        self.assertEqual(self.lines_of(service, 3), self.idle_start())
        self.expect_end(service)
        self.assertEqual(self.file_lines("dziennik/Kalvex.log"), [*self.idle_start(), STOPPED])
        self.assertFalse((self.folder / "Kalvex.log").exists())

    def test_second_copy_ends_silently_and_the_next_one_starts(self):
        service = self.start()
        self.assertEqual(self.lines_of(service, 3), self.idle_start())
        self.assertEqual(self.run_with(), (1, "", ""))
        service.kill()
        service.wait(60)
        service = self.start()
        self.assertEqual(self.lines_of(service, 3), self.idle_start())

    def test_second_instance_is_not_the_primary_one(self):
        service = self.start()
        self.assertEqual(self.lines_of(service, 3), self.idle_start())
        self.assertEqual(self.run_with("/INST:2"), (1, "", f"kalvexd: {NOT_PRIMARY}\n"))
        self.assertEqual(self.file_lines("Kalvex2_d.log"), [NOT_PRIMARY])
        self.assertFalse((self.folder / "Kalvex2.log").exists())
        self.expect_end(service)

    def test_instances_of_two_runtime_folders_run_side_by_side(self):
        first = self.start()
        self.assertEqual(self.lines_of(first, 3), self.idle_start())
        self.environment["SORVANE_RUNTIME_DIR"] = str(self.folder / "run2")
        second = self.start("/INST:2")
        self.assertEqual(self.line_of(second), "Uruchomienie modułu Kalvex [2]")
        self.assertTrue((self.folder / "Kalvex2.log").exists())

    def test_profile_that_cannot_be_read_is_told(self):
        (self.folder / "Kalvex.ini").mkdir()
        fault = f"Nie można odczytać pliku {self.folder}/Kalvex.ini (Is a directory)"
        self.assertEqual(self.run_with(), (1, "", f"kalvexd: {fault}\n"))
        self.assertEqual(self.file_lines("Kalvex_d.log"), [fault])

    def test_refused_options_are_told(self):
        self.assertEqual(self.run_with("/C"), (1, "", f"kalvexd: {OPTION_C}\n"))
        self.assertEqual(
            self.run_with("/RC"),
            (1, "", "kalvexd: Ten program nie może pracować jako zdalna konsola innego modułu\n"))

    def test_unknown_options_are_passed_over(self):
        service = self.start("/ZZ:1", "/srv/a.kx")
        self.assertEqual(
            self.lines_of(service, 4),
            self.idle_start("Pominięte parametry wiersza poleceń: /ZZ:1 /srv/a.kx"))
        self.expect_end(service)

    def test_faults_of_the_configuration_are_told_with_file_and_key(self):
        (self.folder / "sorvane.ini").mkdir()
        (self.folder / "Kalvex.log").mkdir()
        self.put("Kalvex.ini", "[Zrodla]\r\nZrodlo0=Gaz,ewa,{kx1}zgubione\r\n")
        service = self.start("/INST:abc")
        log = f"Nie można zapisać pliku rejestru {self.folder}/Kalvex.log (Is a directory)"
        self.assertEqual(self.lines_of(service, 7), self.idle_start(
            "Pominięte parametry wiersza poleceń, które wymagają liczby: /INST:abc",
            f"Nie można odczytać pliku {self.folder}/sorvane.ini (Is a directory)",
            f"Klucz {self.folder}/Kalvex.key nie otwiera hasła z pliku {self.folder}/Kalvex.ini ([Zrodla] Zrodlo0): "
            "źródło bez logowania",
            log))
        service.send_signal(signal.SIGTERM)
        self.assertEqual(self.line_of(service), STOPPED)
        self.assertEqual(service.wait(60), 0)
        self.assertEqual(service.stderr.read(), f"kalvexd: {log}\n")
        self.assertFalse((self.folder / "Kalvex.key").exists())

    def test_faults_of_the_profile_are_told_with_their_lines(self):
        profile = "[Autsotart]\r\n[Autostart]\r\nProcedra0=a.kx\r\nProcedura1=a.kx\r\n[Log]\r\nRodzaj=dwa\r\n"
        self.put("Kalvex.ini", profile)
        service = self.start()
        file = f"Plik {self.folder}/Kalvex.ini, wiersz"
        self.assertEqual(self.lines_of(service, 7), self.idle_start(
            f"{file} 1: nieznana sekcja [Autsotart], może chodzi o [Autostart]",
            f"{file} 3, [Autostart] Procedra0: nieznany klucz, może chodzi o Procedura0",
            f"{file} 4, [Autostart] Procedura1: nie jest czytany, bo Procedura0 nie ma wartości",
            f"{file} 6, [Log] Rodzaj: oczekiwano liczby całkowitej od 0 do 3"))
        self.expect_end(service)
        self.assertEqual((self.folder / "Kalvex.ini").read_bytes().decode("cp1250"), profile)

    def test_binary_profile_is_refused(self):
        self.put("Kalvex.ini", "[Log]\0")
        self.assertEqual(self.run_with(), (
            1, "", f"kalvexd: Nie można odczytać pliku {self.folder}/Kalvex.ini (to plik binarny, a nie tekst)\n"))

    def test_profile_that_somebody_has_locked_holds_up_neither_start_nor_end(self):
        with self.lock_of_the_folder():
            service = self.start()
            self.assertEqual(self.lines_of(service, 3), self.idle_start())
            service.send_signal(signal.SIGTERM)
            self.assertEqual(self.line_of(service),
                             f"Nie można zapisać pliku {self.folder}/Kalvex.ini ({LOCKED}): [Log] Rodzaj")
            self.assertEqual(self.line_of(service), STOPPED)
            self.assertEqual(service.wait(60), 0)

    def test_error_output_that_nobody_reads_holds_up_nothing(self):
        (self.folder / "Kalvex.log").mkdir()
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        filling = b"x" * fcntl.fcntl(writer, fcntl.F_SETPIPE_SZ, 4096)
        os.write(writer, filling)
        service = subprocess.Popen([PROGRAM, "--working-dir", self.folder, "--log-stdout"], stdout=subprocess.PIPE,
                                   stderr=writer, encoding="utf-8", env=self.environment)
        os.close(writer)
        for cleanup in (service.stdout.close, service.wait, service.kill):
            self.addCleanup(cleanup)
        log = f"Nie można zapisać pliku rejestru {self.folder}/Kalvex.log (Is a directory)"
        self.assertEqual(self.lines_of(service, 4), self.idle_start(log))
        service.send_signal(signal.SIGTERM)
        self.assertEqual(self.line_of(service), STOPPED)
        self.assertEqual(service.wait(60), 0)
        self.assertEqual(os.read(reader, 8192), filling)

    def test_file_of_the_log_that_may_not_grow_ends_nothing(self):
        service = self.start()
        self.assertEqual(self.lines_of(service, 3), self.idle_start())
        log = self.folder / "Kalvex.log"
        whole = log.read_bytes()
        hard = resource.prlimit(service.pid, resource.RLIMIT_FSIZE)[1]
        resource.prlimit(service.pid, resource.RLIMIT_FSIZE, (len(whole) + 25, hard))
        service.send_signal(signal.SIGUSR1)
        told = [self.line_of(service)]
        while not told[-1].startswith("Stan modułu, pominięte wiersze rejestru: "):
            told.append(self.line_of(service))
            self.assertNotEqual(told[-1], "", "the service has ended")
        resource.prlimit(service.pid, resource.RLIMIT_FSIZE, (hard, hard))
        service.send_signal(signal.SIGHUP)
        self.expect_end(service)
        lines = self.file_lines("Kalvex.log")
        self.assertEqual(lines, [*self.idle_start(), told[0][:4], f"Pominięte wiersze rejestru: {len(told)}", STOPPED])

    def test_levels_are_for_the_journal_alone(self):
        self.environment["JOURNAL_STREAM"] = "1:1"
        service = self.start()
        self.assertEqual(self.lines_of(service, 3), self.idle_start())
        service.kill()
        service.wait(60)
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        stream = os.fstat(writer)
        self.environment["JOURNAL_STREAM"] = f"{stream.st_dev}:{stream.st_ino}"
        service = subprocess.Popen([PROGRAM, "--working-dir", self.folder, "--log-stdout"], stdout=writer,
                                   env=self.environment)
        os.close(writer)
        self.addCleanup(service.wait)
        self.addCleanup(service.kill)
        with open(reader, encoding="utf-8", closefd=False) as log:
            self.assertEqual([log.readline() for _ in range(3)],
                             [f"<{level}>{line}\n" for level, line in zip((5, 3, 5), self.idle_start())])

    def test_wrong_usage(self):
        self.assertEqual(self.run_with("--log-dir"), (2, "", "kalvexd: --log-dir needs a value\n"))
        self.assertEqual(self.run_with("--log-stdout=1"), (2, "", "kalvexd: --log-stdout takes no value\n"))
        self.assertEqual(
            self.run_with("--working-dir", str(self.folder / "brak")),
            (1, "", f"kalvexd: {self.folder}/brak: No such file or directory\n"))

    def test_help_and_version(self):
        status, out, err = self.run_with("--help")
        self.assertEqual((status, err), (0, ""))
        self.assertTrue(out.startswith("Usage: kalvexd [OPTIONS] [OPTIONS OF A MODULE]\n"), out)
        status, out, err = self.run_with("--version")
        self.assertEqual((status, err), (0, ""))
        self.assertTrue(re.fullmatch(r"kalvexd \d+\.\d+\.\d+\n", out), out)
        status, out, err = self.run_with("/?")
        self.assertEqual((status, err), (0, ""))
        self.assertEqual(out.splitlines()[0], "/?            lista parametrów")

    def test_what_nobody_knows_is_refused_and_nothing_starts(self):
        hint = ("the profile names the scripts, kalvex-run runs one at a prompt, kalvexctl asks a running module "
                "(kalvexd --help lists the options)")
        for word in ("status", "foo.kx"):
            self.assertEqual(self.run_with(word), (2, "", f'kalvexd: unknown word "{word}": {hint}\n'))
        self.assertEqual(self.run_with("--log-level", "2"),
                         (2, "", "kalvexd: unknown option --log-level (kalvexd --help lists the options)\n"))
        self.assertEqual(list(self.folder.iterdir()), [])
        self.assertEqual(self.run_with("-h"), self.run_with("--help"))
        self.assertEqual(self.run_with("-V"), self.run_with("--version"))

    def test_check_of_what_is_right_is_silent_and_writes_nothing(self):
        self.put("a.kx", "LOCAL A = 1\r\nIF A > 0 THEN\r\nENDIF\r\n")
        self.put("Kalvex2.ini", "[Autostart]\r\nProcedura0=a.kx\r\n[Log]\r\nRodzaj=3\r\n")
        self.assertEqual(self.run_with("--check", "/INST:2"), (0, "", ""))
        self.assertEqual({path.name for path in self.folder.iterdir()}, {"a.kx", "Kalvex2.ini"})

    def test_check_tells_all_that_is_wrong(self):
        users = self.folder / "users.sqlite"
        self.put("sorvane.ini", f"[Konfiguracja]\nUżytkownicy={users}\nAutoRc2=1\n")
        self.put("a.kx", "LOCAL A = 1\r\nENDIF\r\n")
        self.put("b.kx", "INCLUDE nie_ma.kx\r\nIF 1 > 0 THEN\r\n")
        self.put("c.kx", "BZDURA\r\n")
        self.put("Kalvex.ini", "[Autostart]\r\nProcedura0=a.kx\r\nProcedura1=b.kx\r\nProcedura2=brak.kx\r\n"
                 "Procedura3=c.kx\r\nProcedura5=c.kx\r\n[Konsola]\r\nKlienci=0\r\n"
                 "[Zrodla]\r\nZrodlo0=Gaz,ewa,{kx1}zgubione\r\n")
        status, out, err = self.run_with("--check", "/ZZ")
        self.assertEqual((status, out), (1, ""))
        profile = f"{self.folder}/Kalvex.ini"
        self.assertEqual(err.splitlines(), [
            "Pominięte parametry wiersza poleceń: /ZZ",
            f"Plik {profile}, wiersz 6, [Autostart] Procedura5: nie jest czytany, bo Procedura4 nie ma wartości",
            f"Plik {self.folder}/sorvane.ini, wiersz 3, [Konfiguracja] AutoRc2: nieznany klucz, może chodzi o AutoRC",
            f"Klucz {self.folder}/Kalvex.key nie otwiera hasła z pliku {profile} ([Zrodla] Zrodlo0): "
            "źródło bez logowania",
            f"Plik {profile}, wiersz 8, [Konsola] Klienci: oczekiwano liczby całkowitej od 1 do 10000",
            f"Nie można otworzyć pliku użytkowników {users} (No such file or directory)",
            f"{self.folder}/a.kx : Linia 2 - Brak instrukcji IF...THEN dla użytej komendy ENDIF",
            f"{self.folder}/b.kx : Nie można odczytać pliku {self.folder}/nie_ma.kx (No such file or directory), "
            "INCLUDE w wierszu 1",
            f"{self.folder}/b.kx : Brak instrukcji ENDIF dla instrukcji IF...THEN",
            f"{self.folder}/brak.kx : No such file or directory",
        ])
        self.assertFalse((self.folder / "run").exists())

    def test_check_needs_a_profile_that_can_be_read_and_names_scripts(self):
        profile = f"{self.folder}/Kalvex.ini"
        self.assertEqual(self.run_with("--check"), (1, "", f"Nie ma pliku {profile}\n"))
        self.put("Kalvex.ini", "\0")
        self.assertEqual(self.run_with("--check"),
                         (1, "", f"Nie można odczytać pliku {profile} (to plik binarny, a nie tekst)\n"))
        self.put("Kalvex.ini", "[Autostart]\r\n")
        self.assertEqual(self.run_with("--check"),
                         (1, "", f"Brak skryptów do uruchomienia (plik {profile}, sekcja [Autostart])\n"))

    def test_runtime_folder_that_cannot_be_made_is_told(self):
        self.put("plik", "")
        self.environment["SORVANE_RUNTIME_DIR"] = str(self.folder / "plik")
        self.assertEqual(
            self.run_with(),
            (1, "", f"kalvexd: Nie można zablokować instancji ({self.folder}/plik/Kalvex.1.lock: Not a directory)\n"))

    def test_messages_are_translated(self):
        self.environment["LANGUAGE"] = "en"
        self.assertEqual(
            self.run_with("/RC"),
            (1, "", "kalvexd: This program cannot work as the remote console of another module\n"))

    def test_user_is_logged_in_from_the_users_file_or_the_service_ends(self):
        users = self.folder / "users.sqlite"
        self.put("sorvane.ini", f"[Konfiguracja]\nUżytkownicy={users}\n")
        fault = f"Nie można otworzyć pliku użytkowników {users} (No such file or directory)"
        self.assertEqual(self.run_with(), (1, "", f"kalvexd: {fault}\n"))
        users.touch()
        fault = "Nie można zalogować użytkownika ADAM"
        self.assertEqual(self.run_with("/U:adam:tajne"), (1, "", f"kalvexd: {fault}\n"))


if __name__ == "__main__":
    unittest.main()
