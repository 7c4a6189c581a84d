#!/usr/bin/env python3
"""The logins of data servers in the profile, managed by the service's program."""
import os
import pty
import socket
import subprocess
import time
import unittest

from kalvexd_process import LOCKED, PROGRAM, ServiceTest

LOST = "Profil ma hasła, których nie otwiera klucz "


class Sources(ServiceTest):
    def profile(self, name="Kalvex.ini"):
        return (self.folder / name).read_bytes().decode("cp1250")

    def names_listed(self):
        status, out, err = self.run_with("--list-sources")
        self.assertEqual((status, err), (0, ""))
        return [line.split("\t")[0] for line in out.splitlines()]

    def test_source_is_added_listed_and_removed(self):
        self.put("Kalvex.ini", "; uwaga\r\n[Log]\r\nRodzaj=2\r\n")
        self.assertEqual(self.run_with("--add-source", "Gaz,skrypty", stdin="tajne, z przecinkiem\n"), (0, "", ""))
        self.assertEqual(self.run_with("--add-source", "Woda,Żaneta", stdin="żółw"), (0, "", ""))
        self.assertEqual(self.run_with("--list-sources"), (0, "Gaz\tskrypty\nWoda\tŻaneta\n", ""))
        text = self.profile()
        self.assertTrue(text.startswith("; uwaga\r\n[Log]\r\nRodzaj=2\r\n"), text)
        self.assertRegex(text, r"Zrodlo0=Gaz,skrypty,\{kx1\}\S+\r\nZrodlo1=Woda,Żaneta,\{kx1\}\S+\r\n")
        self.assertNotIn("tajne", text)
        self.assertEqual((self.folder / "Kalvex.key").stat().st_mode & 0o777, 0o600)
        self.assertEqual(self.run_with("--remove-source", "Gaz"), (0, "", ""))
        self.assertEqual(self.run_with("--list-sources"), (0, "Woda\tŻaneta\n", ""))
        self.assertEqual(self.run_with("--remove-source", "Gaz"), (1, "", "Brak źródła o tej nazwie\n"))

    def test_source_that_is_there_gets_another_login(self):
        for user in ("ewa", "jan"):
            self.assertEqual(self.run_with("--add-source", f"Gaz,{user}", stdin="tajne\n"), (0, "", ""))
        self.assertEqual(self.run_with("--list-sources"), (0, "Gaz\tjan\n", ""))
        first = self.profile()
        self.assertEqual(self.run_with("--add-source", "Gaz,jan", stdin="nowe\n"), (0, "", ""))
        self.assertNotEqual(self.profile(), first)

    def test_profile_of_an_instance_is_its_own(self):
        self.assertEqual(self.run_with("/INST:2", "--add-source", "Gaz,ewa", stdin="tajne\n"), (0, "", ""))
        self.assertFalse((self.folder / "Kalvex.ini").exists())
        self.assertIn("Zrodlo0=Gaz,ewa,", self.profile("Kalvex2.ini"))

    def test_name_and_user_are_checked_and_a_password_is_needed(self):
        fault = "Nazwa źródła i użytkownik nie mogą być puste ani zawierać przecinka\n"
        for source in ("Gaz", "Gaz,", ",ewa", "Gaz,ewa,tajne", "Ga\nz,ewa"):
            self.assertEqual(self.run_with("--add-source", source, stdin="tajne\n"), (1, "", fault), source)
        self.assertEqual(self.run_with("--add-source", "Gaz,ewa"), (1, "", "Nie podano hasła\n"))
        self.assertFalse((self.folder / "Kalvex.ini").exists())

    def test_password_of_characters_that_the_texts_of_scripts_have_not_is_refused(self):
        fault = "Hasło ma znaki spoza Windows-1250\n"
        for order in (("--add-source", "Gaz,ewa"), ("--protect",)):
            for password in ("пароль\n", "tajne☃"):
                self.assertEqual(self.run_with(*order, stdin=password), (1, "", fault), order)
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_nothing_is_listed_and_nothing_is_made_without_a_profile(self):
        self.assertEqual(self.run_with("--list-sources"), (0, "", ""))
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_passwords_of_a_lost_key_are_not_written_over(self):
        self.assertEqual(self.run_with("--add-source", "Gaz,ewa", stdin="tajne\n"), (0, "", ""))
        before = self.profile()
        key = self.folder / "Kalvex.key"
        secret = key.read_bytes()
        key.unlink()
        self.assertEqual(self.run_with("--add-source", "Woda,jan", stdin="nowe\n"), (1, "", f"{LOST}{key}\n"))
        self.assertFalse(key.exists())
        key.touch(0o600)
        key.write_bytes(bytes(len(secret)))
        self.assertEqual(self.run_with("--remove-source", "Gaz"), (1, "", f"{LOST}{key}\n"))
        self.assertEqual(self.profile(), before)
        key.write_bytes(secret)
        self.assertEqual(self.run_with("--add-source", "Woda,jan", stdin="nowe\n"), (0, "", ""))

    def test_key_that_others_can_read_is_told_and_not_used(self):
        self.assertEqual(self.run_with("--add-source", "Gaz,ewa", stdin="tajne\n"), (0, "", ""))
        before = self.profile()
        key = self.folder / "Kalvex.key"
        key.chmod(0o644)
        told = f"Do pliku {key}, który ma być tajny, mają dostęp inni (prawa 644, a mają być 600)\n"
        for order in (("--add-source", "Woda,jan"), ("--remove-source", "Gaz"), ("--protect",)):
            self.assertEqual(self.run_with(*order, stdin="nowe\n"), (1, "", told), order)
        self.assertEqual(self.profile(), before)
        self.assertEqual(self.run_with("--list-sources"), (0, "Gaz\tewa\n", ""))
        key.chmod(0o600)
        self.assertEqual(self.run_with("--remove-source", "Gaz"), (0, "", ""))

    def test_profile_that_cannot_be_written_is_told(self):
        (self.folder / "Kalvex.ini").mkdir()
        status, out, err = self.run_with("--add-source", "Gaz,ewa", stdin="tajne\n")
        self.assertEqual((status, out, err),
                         (1, "", f"Nie można zapisać profilu lub jego klucza: {self.folder}/Kalvex.ini\n"))

    def test_binary_profile_is_neither_listed_nor_changed(self):
        self.put("Kalvex.ini", "[Log]\0")
        reason = f"{self.folder}/Kalvex.ini (to plik binarny, a nie tekst)"
        self.assertEqual(self.run_with("--list-sources"), (1, "", f"Nie można odczytać pliku {reason}\n"))
        self.assertEqual(self.run_with("--add-source", "Gaz,ewa", stdin="tajne\n"),
                         (1, "", f"Nie można zapisać profilu {reason}\n"))
        self.assertEqual(self.profile(), "[Log]\0")

    def test_profile_is_whole_however_often_its_writer_is_killed(self):
        self.put("Kalvex.ini", "; uwaga\r\n[Log]\r\nRodzaj=2\r\n")
        begin = time.monotonic()
        self.assertEqual(self.run_with("--add-source", "Gaz,ewa", stdin="tajne\n"), (0, "", ""))
        whole = time.monotonic() - begin
        names = ["Gaz"]
        for number in range(100):
            writer = subprocess.Popen([PROGRAM, "--working-dir", self.folder, "--add-source", f"Z{number},ewa"],
                                      stdin=subprocess.PIPE, stderr=subprocess.PIPE, bufsize=0,
                                      env=self.environment)
            self.addCleanup(writer.stdin.close)
            try:
                # Each a little later than the one before, from the first steps of the program to behind its end.
                writer.communicate(b"tajne\n", 1.5 * whole * number / 100)
                names.append(f"Z{number}")
                continue
            except subprocess.TimeoutExpired:
                writer.kill()
                writer.communicate()
            listed = self.names_listed()
            self.assertIn(listed, [names, [*names, f"Z{number}"]])
            names = listed
            self.assertTrue(self.profile().startswith("; uwaga\r\n[Log]\r\nRodzaj=2\r\n"))
        self.assertEqual(self.names_listed(), names)
        # The key has outlived them all: otherwise this refuses.
        self.assertEqual(self.run_with("--add-source", "Woda,jan", stdin="nowe\n"), (0, "", ""))
        self.assertEqual({path.name for path in self.folder.iterdir()}, {"Kalvex.ini", "Kalvex.key"})

    def test_sources_that_are_added_at_once_are_all_there(self):
        names = []
        for turn in range(5):
            writers = []
            for number in range(8):
                names.append(f"Z{turn}_{number}")
                writer = subprocess.Popen([PROGRAM, "--working-dir", self.folder, "--add-source", f"{names[-1]},ewa"],
                                          stdin=subprocess.PIPE, stderr=subprocess.PIPE, env=self.environment)
                self.addCleanup(writer.stderr.close)
                writers.append(writer)
            # All of them wait for the password, and go on together.
            for writer in writers:
                writer.stdin.write(b"tajne\n")
            for writer in writers:
                writer.stdin.close()
            self.assertEqual([(writer.wait(60), writer.stderr.read()) for writer in writers], [(0, b"")] * 8)
            self.assertCountEqual(self.names_listed(), names)
        # One key has protected them all: otherwise this refuses.
        self.assertEqual(self.run_with("--add-source", "Woda,jan", stdin="nowe\n"), (0, "", ""))

    def test_profile_that_stays_locked_is_told(self):
        self.assertEqual(self.run_with("--add-source", "Gaz,ewa", stdin="tajne\n"), (0, "", ""))
        with self.lock_of_the_folder():
            self.assertEqual(
                self.run_with("--remove-source", "Gaz"),
                (1, "", f"Nie można zapisać profilu {self.folder}/Kalvex.ini ({LOCKED})\n"))
        self.assertEqual(self.run_with("--remove-source", "Gaz"), (0, "", ""))

    def test_password_is_protected_for_a_script(self):
        first = self.run_with("--protect", stdin="tajne\n")
        second = self.run_with("--protect", stdin="tajne\n")
        for status, out, err in (first, second):
            self.assertEqual((status, err), (0, ""))
            self.assertRegex(out, r"\A\{kx1\}[A-Za-z0-9+/]+\n\Z")
        self.assertNotEqual(first, second)
        self.assertEqual({path.name for path in self.folder.iterdir()}, {"Kalvex.key"})
        self.assertEqual((self.folder / "Kalvex.key").stat().st_mode & 0o777, 0o600)
        self.assertEqual(self.run_with("--protect"), (1, "", "Nie podano hasła\n"))

    def test_key_is_not_made_anew_to_protect_a_password(self):
        self.assertEqual(self.run_with("--add-source", "Gaz,ewa", stdin="tajne\n"), (0, "", ""))
        key = self.folder / "Kalvex.key"
        key.unlink()
        self.assertEqual(self.run_with("--protect", stdin="tajne\n"), (1, "", f"{LOST}{key}\n"))
        self.assertFalse(key.exists())

    def test_key_that_cannot_be_made_is_told(self):
        key = self.folder / "Kalvex.key"
        key.mkdir()
        self.assertEqual(self.run_with("--protect", stdin="tajne\n"), (1, "", f"Nie można zapisać klucza: {key}\n"))

    def test_script_logs_in_with_what_was_protected_for_it_and_is_told_why_not_otherwise(self):
        self.assertEqual(self.run_with("--add-source", "Gaz,ewa", stdin="tajne\n"), (0, "", ""))
        line = self.profile().split("Zrodlo0=Gaz,ewa,")[1].split("\r\n")[0]
        listener = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(listener.close)
        listener.settimeout(60)
        port = listener.getsockname()[1]
        protected = self.run_with("--protect", stdin="żółw tajny\n")[1].strip()
        self.put("Kalvex.ini", self.profile() + "[Autostart]\r\nProcedura0=a.kx\r\n")
        self.put("a.kx", f'PRIORITY 1\r\nFTP_INIT "127.0.0.1" {port} "ja" "{protected}"\r\n'
                         f'FTP_INIT "127.0.0.1" {port} "ja" "{line}"\r\n'
                         ':czekaj\r\nLOCAL A = FTP_RESULT "127.0.0.1"\r\nIF A == -100 GOTO czekaj\r\n')
        service = self.start()
        connection = listener.accept()[0]
        self.addCleanup(connection.close)
        connection.settimeout(60)
        heard = connection.makefile("rb")
        self.addCleanup(heard.close)
        answers = {b"USER": b"331 haslo\r\n", b"PASS": b"230 jest\r\n", b"PWD": b'257 "/"\r\n'}
        connection.sendall(b"220 serwer\r\n")
        words = b""
        while not words.startswith(b"PASS"):
            words = heard.readline()
            self.assertNotEqual(words, b"")
            connection.sendall(answers.get(words[:4].strip(), b"200 dobrze\r\n"))
        self.assertEqual(words, "PASS żółw tajny\r\n".encode("cp1250"))
        connection.close()
        listener.close()
        self.read_to(service,
                     "Błąd FTP: klucz tej instalacji nie otwiera zabezpieczonego hasła użytkownika ja, a hasło źródła "
                     "z profilu nie jest hasłem dla skryptu; właściwe tworzy kalvexd --protect")

    def test_instance_that_is_no_number_is_not_taken_for_the_first(self):
        self.assertEqual(
            self.run_with("/INST:abc", "--add-source", "Gaz,ewa", stdin="tajne\n"),
            (2, "", "kalvexd: Pominięte parametry wiersza poleceń, które wymagają liczby: /INST:abc\n"))
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_terminal_does_not_show_the_password(self):
        try:
            pid, terminal = pty.fork()
        except OSError as fault:
            self.skipTest(f"no terminal can be had from /dev/ptmx: {fault}")
        if pid == 0:
            try:
                os.execve(PROGRAM, [PROGRAM, "--working-dir", str(self.folder), "--add-source", "Gaz,ewa"],
                          self.environment)
            finally:  # without the program, this copy of the tests would go on
                os._exit(127)
        self.addCleanup(os.close, terminal)
        shown = b""
        for question, answer in (("Hasło: ", "tajne"), ("Hasło ponownie: ", "tajen"), ("Hasło: ", "tajne"),
                                 ("Hasło ponownie: ", "tajne")):
            while not shown.endswith(question.encode()):
                more = os.read(terminal, 1000)
                self.assertTrue(more, f"{shown!r} and nothing more")
                shown += more
            os.write(terminal, f"{answer}\n".encode())
            shown += os.read(terminal, 1)
        try:
            while more := os.read(terminal, 1000):
                shown += more
        except OSError:  # the other end is closed
            pass
        self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1]), 0)
        self.assertNotIn(b"taj", shown)
        self.assertIn("Hasła różnią się".encode(), shown)
        self.assertEqual(self.run_with("--list-sources"), (0, "Gaz\tewa\n", ""))


if __name__ == "__main__":
    unittest.main()
