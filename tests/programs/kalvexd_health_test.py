#!/usr/bin/env python3
"""What a service tells of its health: to the log, to Prometheus, to its service manager."""
import http.client
import os
import re
import shutil
import signal
import socket
import subprocess
import unittest

from kalvexd_process import PROGRAM, STOPPED, ServiceTest
from local_http import LocalConnection, figures_of

PROFILE = "[Autostart]\r\nProcedura0=dziala.kx\r\nProcedura1=blad.kx\r\nProcedura2=koniec.kx\r\n"
RUNNING = "PRIORITY 1\r\nLOCAL A = 0\r\n:obieg\r\nSET A = A + 1\r\nGOTO obieg\r\n"
NUMBER = r"\d+(?:\.\d+)?(?:e[+-]\d+)?"


class Health(ServiceTest):
    def start_scripts(self, *arguments):
        """A service with a script that runs, one that stands on an error and one that has finished."""
        self.put("Kalvex.ini", PROFILE)
        self.put("dziala.kx", RUNNING)
        self.put("blad.kx", "PRIORITY 1\r\nBZDURA\r\n")
        self.put("koniec.kx", "PRIORITY 1\r\nLOCAL A = 1")
        service = self.start(*arguments)
        self.seen = self.read_to(service, f"{self.folder}/blad.kx : Linia 2 - Nieznane słowo kluczowe : BZDURA")
        return service

    def metrics_of(self, connection):
        connection.request("GET", "/metrics")
        response = connection.getresponse()
        text = response.read().decode("utf-8")
        self.assertEqual((response.status, response.headers["Content-Type"]),
                         (200, "text/plain; version=0.0.4; charset=utf-8"), text)
        rows = [line for line in text.splitlines() if not line.startswith("#")]
        for row in rows:
            self.assertRegex(row, rf'^[a-z_0-9]+(\{{[a-z]+="[a-z0-9.]+"\}})? {NUMBER}$')
        return figures_of(text)

    def wait_for_metrics(self, connect, condition):
        """The figures, as soon as they are as they should be; the test ends at its limit otherwise."""
        for _ in range(100000):
            figures = self.metrics_of(connect())
            if condition(figures):
                return figures
        self.fail(figures)

    def read_through(self, service, beginning):
        """The lines of the log up to one that begins so."""
        lines = [""]
        while not lines[-1].startswith(beginning):
            lines += self.lines_of(service, 1)
            self.assertNotEqual(lines[-1], "", lines)
        return lines[1:]

    def end(self, service):
        service.send_signal(signal.SIGTERM)
        self.seen_at_end = self.read_to(service, STOPPED)
        self.assertEqual(service.wait(60), 0)
        self.assertEqual(service.stderr.read(), "")

    def test_signal_has_the_figures_in_the_log(self):
        service = self.start_scripts()
        service.send_signal(signal.SIGUSR1)
        expected = [rf"czas pracy: {NUMBER} s", rf"takty: {NUMBER}", rf"takty na sekundę: {NUMBER}",
                    rf"spóźnienie taktów: 50% {NUMBER} ms, 99% {NUMBER} ms",
                    rf"największe spóźnienie taktu: {NUMBER} ms", rf"wykonane wiersze: {NUMBER}",
                    rf"wiersze na sekundę: {NUMBER}", rf"wiersze z błędem: {NUMBER}", "wiersze czekające na dane: 0",
                    rf"długie wiersze: {NUMBER}",
                    "skrypty: działa 1, czeka na dane 0, w błędzie 1, zatrzymane 0, zakończone 1, nieuruchomione 0",
                    "połączenia: połączone 0, logowanie 0, łączenie 0, rozłączone 0", rf"pamięć procesu: {NUMBER} MB",
                    "pominięte wiersze rejestru: 0"]
        for line, form in zip(self.lines_of(service, len(expected)), expected, strict=True):
            self.assertTrue(re.fullmatch("Stan modułu, " + form, line), line)
        # A script in error is named behind the figures, one that runs or has finished is not.
        self.assertRegex(self.lines_of(service, 1)[0],
                         r"^Stan modułu, skrypt blad\.kx: w błędzie, linia 2 od \d{4}-\d\d-\d\d \d\d:\d\d:\d\d, "
                         r"Nieznane słowo kluczowe : BZDURA \(razy: \d+\)$")
        self.end(service)
        self.assertEqual(self.seen_at_end, [STOPPED])

    def test_signal_names_the_scripts_that_wait(self):
        self.put("Kalvex.ini", "[Autostart]\r\nProcedura0=czeka.kx\r\n")
        self.put("czeka.kx", "PRIORITY 1\r\nREMOTE A brak@A\r\nLOCAL B = A\r\n")
        service = self.start()
        self.read_to(service, "Błąd nawiązania połączenia z brak (serwer nie odpowiada)")
        service.send_signal(signal.SIGUSR1)
        *_, before, last = self.read_through(service, "Stan modułu, skrypt ")
        self.assertEqual(before, "Stan modułu, pominięte wiersze rejestru: 0")
        self.assertRegex(last, r"^Stan modułu, skrypt czeka\.kx: czeka na dane, linia 3 od \d{4}-\d\d-\d\d \d\d:\d\d:\d\d, "
                               r"A = brak@A CURDATA: brak połączenia ze źródłem \(serwer nie odpowiada\)$")
        self.end(service)

    def test_prometheus_reads_figures_that_grow(self):
        service = self.start_scripts("--metrics", "127.0.0.1:0")
        address = [line for line in self.seen if line.startswith("Udostępnianie stanu modułu: 127.0.0.1:")]
        port = int(address[0].rsplit(":", 1)[1])

        def connect():
            return http.client.HTTPConnection("127.0.0.1", port, timeout=60)

        first = self.metrics_of(connect())
        self.assertEqual(first['kalvex_scripts{state="running"}'], 1)
        self.assertEqual(first['kalvex_scripts{state="error"}'], 1)
        self.assertEqual(first['kalvex_scripts{state="finished"}'], 1)
        self.assertGreater(first["process_resident_memory_bytes"], 1e6)
        for name, value in (("state", (1, 3, 5)), ("error_code", (0, 1, 0))):
            self.assertEqual(tuple(first[f'kalvex_script_{name}{{script="{script}.kx"}}']
                                   for script in ("dziala", "blad", "koniec")), value)
        self.assertEqual(first['kalvex_script_line{script="blad.kx"}'], 2)
        self.assertEqual(first['kalvex_script_line{script="koniec.kx"}'], 0)
        self.assertEqual(first['kalvex_script_standing_seconds{script="dziala.kx"}'], 0)
        self.assertEqual(first['kalvex_script_standing_seconds{script="koniec.kx"}'], 0)
        self.assertEqual(first['kalvex_script_lines_total{script="koniec.kx"}'], 2)
        self.assertEqual(first['kalvex_script_line_errors_total{script="dziala.kx"}'], 0)
        names = ("kalvex_ticks_total", "kalvex_lines_total", "kalvex_line_errors_total", "kalvex_uptime_seconds",
                 'kalvex_script_lines_total{script="dziala.kx"}', 'kalvex_script_line_errors_total{script="blad.kx"}',
                 'kalvex_script_standing_seconds{script="blad.kx"}')
        second = self.wait_for_metrics(connect, lambda now: all(now[name] > first[name] for name in names))
        self.assertEqual(second["kalvex_tick_lateness_seconds_count"], second["kalvex_ticks_total"])
        self.end(service)

    def test_log_folder_that_cannot_be_written_is_told_and_counted(self):
        path = str(self.folder / "stan.sock")
        logs = self.folder / "logi"
        logs.mkdir()
        service = self.start("--metrics", path, "--log-dir", str(logs))
        self.read_to(service, f"Udostępnianie stanu modułu: {path}")
        self.assertEqual(self.metrics_of(LocalConnection(path))["kalvex_log_lines_lost_total"], 0)
        logs.rename(self.folder / "stare")
        logs.touch()
        service.send_signal(signal.SIGHUP)
        fault = f"Nie można zapisać pliku rejestru {logs}/Kalvex.log (Not a directory)"
        self.assertEqual(service.stderr.readline(), f"kalvexd: {fault}\n")
        self.read_to(service, fault)
        self.wait_for_metrics(lambda: LocalConnection(path), lambda now: now["kalvex_log_lines_lost_total"] > 0)
        service.send_signal(signal.SIGUSR1)
        self.assertRegex(self.read_through(service, "Stan modułu, pominięte wiersze rejestru: ")[-1], r": [1-9]\d*$")
        logs.unlink()
        logs.mkdir()
        service.send_signal(signal.SIGHUP)
        # The file is made when the signal has come through.
        self.wait_for_metrics(lambda: LocalConnection(path), lambda _: (logs / "Kalvex.log").exists())
        self.metrics_of(LocalConnection(path))
        self.end(service)
        written = (logs / "Kalvex.log").read_text(encoding="utf-8").splitlines()
        self.assertRegex(written[0][21:], r"^Pominięte wiersze rejestru: \d+$")
        self.assertEqual(written[1][21:], STOPPED)

    def test_prometheus_reads_from_a_local_socket(self):
        path = str(self.folder / "stan.sock")
        service = self.start("--metrics", path)
        self.assertEqual(self.lines_of(service, 4), [*self.idle_start(), f"Udostępnianie stanu modułu: {path}"])
        self.assertEqual(self.metrics_of(LocalConnection(path))["kalvex_ticks_total"], 0)
        self.end(service)
        self.assertFalse((self.folder / "stan.sock").exists())

    def test_client_that_hangs_does_not_hold_up_the_end(self):
        path = str(self.folder / "stan.sock")
        service = self.start("--metrics", path)
        self.read_to(service, f"Udostępnianie stanu modułu: {path}")
        hanging = LocalConnection(path)
        hanging.connect()
        self.addCleanup(hanging.close)
        hanging.sock.sendall(b"GET /metr")
        self.end(service)

    def test_address_beyond_the_machine_keeps_the_service_from_starting(self):
        self.put("Kalvex.ini", PROFILE)
        for address in ("0.0.0.0:9464", "[::]:9464", "stan.sock"):
            fault = f"Nie można udostępnić stanu modułu: {address} (to nie jest adres tego komputera)"
            self.assertEqual(self.run_with("--metrics", address), (1, "", f"kalvexd: {fault}\n"))
        log = (self.folder / "Kalvex.log").read_text(encoding="utf-8").splitlines()
        self.assertEqual([line[21:] for line in log[-2:]], [fault, STOPPED])

    def test_module_that_is_missing_is_named(self):
        self.put("Kalvex.ini", PROFILE)
        alone = shutil.copy(PROGRAM, self.folder / "kalvexd")
        done = subprocess.run([alone, "--working-dir", self.folder, "--metrics", "127.0.0.1:0"], capture_output=True,
                              encoding="utf-8", env=self.environment, timeout=60)
        fault = "Nie można udostępnić stanu modułu: 127.0.0.1:0 (nie można załadować kalvex-health.so)"
        self.assertEqual((done.returncode, done.stdout, done.stderr), (1, "", f"kalvexd: {fault}\n"))

    def test_without_the_option_nothing_listens(self):
        service = self.start()
        self.assertEqual(self.lines_of(service, 3), self.idle_start())
        self.end(service)
        with open(f"{self.folder}/Kalvex.log", encoding="utf-8") as log:
            self.assertNotIn("Udostępnianie", log.read())

    def test_service_manager_hears_of_the_start_the_life_and_the_end(self):
        manager = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.addCleanup(manager.close)
        manager.settimeout(60)
        manager.bind(str(self.folder / "notify"))
        self.environment.update(NOTIFY_SOCKET=str(self.folder / "notify"), WATCHDOG_USEC="20000")
        self.put("Kalvex.ini", "[Autostart]\r\nProcedura0=dziala.kx\r\n")
        self.put("dziala.kx", RUNNING)
        service = self.start()
        self.assertEqual(manager.recv(1000), b"READY=1")
        self.assertEqual(
            manager.recv(1000).decode("utf-8"),
            "STATUS=skrypty: działa 1, czeka na dane 0, w błędzie 0, zatrzymane 0, zakończone 0, nieuruchomione 0; "
            "połączenia: połączone 0, logowanie 0, łączenie 0, rozłączone 0")
        self.assertEqual(manager.recv(1000), b"WATCHDOG=1")
        self.assertEqual(manager.recv(1000), b"WATCHDOG=1")
        service.send_signal(signal.SIGTERM)
        heard = b"WATCHDOG=1"
        while heard == b"WATCHDOG=1":
            heard = manager.recv(1000)
        self.assertEqual(heard, b"STOPPING=1")
        self.assertEqual(service.wait(60), 0)

    def manager(self):
        manager = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.addCleanup(manager.close)
        manager.settimeout(60)
        manager.bind(str(self.folder / "notify"))
        self.environment.update(NOTIFY_SOCKET=str(self.folder / "notify"), WATCHDOG_USEC="20000")
        return manager

    def forget(self, manager):
        """Nothing that has been told so far is heard any more."""
        manager.setblocking(False)
        with self.assertRaises(BlockingIOError):
            while manager.recv(1000):
                pass
        manager.settimeout(60)

    def end_program(self):
        with open(self.folder / "koniec", "r+b", buffering=0) as end:
            end.write(b"x\n")

    def test_wait_for_a_program_gives_signs_of_life_and_ends_with_the_service(self):
        manager = self.manager()
        for name in ("zapytany", "koniec"):
            os.mkfifo(self.folder / name)
        self.addCleanup(self.end_program)
        self.put("program", "#!/bin/sh\ntrap 'echo > zapytany' TERM\nexec 3<>koniec\necho > gotowy\n"
                            "while ! read -r x <&3; do :; done\n")
        (self.folder / "program").chmod(0o700)
        self.put("Kalvex.ini", "[Autostart]\r\nProcedura0=a.kx\r\n")
        # A file that is not there yet keeps its line.
        self.put("a.kx", "PRIORITY 1\r\nLOCAL ID = EXEC \"./program\"\r\nREAD_FILE \"gotowy\"\r\n"
                         "CLOSE_EXEC ID 0 1000000\r\n")
        service = self.start()
        with open(self.folder / "zapytany", "rb") as asked:
            asked.read(1)
        self.forget(manager)
        self.assertEqual([manager.recv(1000), manager.recv(1000)], [b"WATCHDOG=1"] * 2)
        service.send_signal(signal.SIGTERM)
        unclosed, slow = self.read_to(service, STOPPED)[-3:-1]
        self.assertRegex(unclosed,
                         "^" + re.escape(f"{self.folder}/a.kx - Brak informacji o zamknięciu programu (Id procesu ") +
                         r"\d+\)$")
        self.assertRegex(slow, rf"^{re.escape(str(self.folder))}/a\.kx : Linia 4 trwała {NUMBER} ms \(takich linii: 1\)$")
        self.assertEqual(service.wait(60), 0)

    def test_documents_that_wait_for_their_checks_gain_time_for_the_end(self):
        manager = self.manager()
        listener = socket.socket()
        self.addCleanup(listener.close)
        listener.bind(("127.0.0.1", 0))
        listener.listen(0)
        address = listener.getsockname()
        # Nobody takes it, so there is no place for the next one, which waits.
        first = socket.create_connection(address)
        self.addCleanup(first.close)
        self.put("Kalvex.ini", "[Autostart]\r\nProcedura0=a.kx\r\n")
        self.put("a.kx", f'PRIORITY 1\r\nHTTP_INIT "127.0.0.1" {address[1]}\r\nBZDURA\r\n')
        service = self.start()
        self.read_to(service, f"{self.folder}/a.kx : Linia 3 - Nieznane słowo kluczowe : BZDURA")
        service.send_signal(signal.SIGTERM)
        while manager.recv(1000) != b"STOPPING=1":
            pass
        busy = b"WATCHDOG=1\nEXTEND_TIMEOUT_USEC=30000000"
        self.assertEqual([manager.recv(1000) for _ in range(5)], [busy] * 5)
        listener.close()
        self.assertEqual(service.wait(60), 0)

    def test_log_that_nobody_reads_stops_no_script(self):
        path = str(self.folder / "stan.sock")
        self.put("Kalvex.ini", "[Autostart]\r\nProcedura0=a.kx\r\n")
        self.put("a.kx", "PRIORITY 1\r\n:obieg\r\nTERMINATE_EXEC 17\r\nGOTO obieg\r\n")
        manager = self.manager()
        service = self.start("--metrics", path)
        self.assertEqual(manager.recv(1000), b"READY=1")
        # Far more than a pipe holds.
        self.wait_for_metrics(lambda: LocalConnection(path), lambda now: now["kalvex_lines_total"] > 5000)
        service.send_signal(signal.SIGTERM)
        self.assertEqual(service.wait(60), 0)
        self.assertEqual(service.stderr.read(), "")
        told = f"{self.folder}/a.kx - Brak procesu o podanym identyfikatorze (Id procesu 17)"
        self.assertEqual(self.lines_of(service, 7)[-2:], [told, told])

    def test_service_that_does_not_start_never_says_that_it_is_ready(self):
        manager = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.addCleanup(manager.close)
        manager.bind(str(self.folder / "notify"))
        self.environment["NOTIFY_SOCKET"] = str(self.folder / "notify")
        self.assertEqual(self.run_with("--metrics", "0.0.0.0:1")[0], 1)
        manager.setblocking(False)
        self.assertRaises(BlockingIOError, manager.recv, 1000)


if __name__ == "__main__":
    unittest.main()
