#!/usr/bin/env python3
"""What a data server tells of its health: to the log, and to Prometheus.

    sorvaned_health_test.py PATH_OF_KALVEX_RUN PATH_OF_SORVANED [unittest arguments]
"""
import signal
import subprocess

from local_http import LocalConnection, figures_of
from server_and_run import LIMIT_SECONDS, ServerAndRun, main

PLANT = """[[access]]
write = "0"
[[variable]]
name = "X"
at = 32
[[variable]]
name = "Y"
"""
NUMBER = r"\d+(?:\.\d+)?(?:e[+-]\d+)?"
LINES = (rf"czas pracy: {NUMBER} s", "klienci: zalogowani 0, przed logowaniem 0", "zmienne: 2", "subskrypcje: 0",
         rf"operacje czekające na zapis: {NUMBER}", rf"zapisane operacje: {NUMBER}", "powtórzone transakcje: 0",
         "utracone wartości: 0", rf"czas transakcji: 50% {NUMBER} ms, 99% {NUMBER} ms", rf"plik danych: {NUMBER} MB",
         rf"wolne miejsce na dysku danych: {NUMBER} MB", rf"pamięć procesu: {NUMBER} MB")


class Health(ServerAndRun):
    def setUp(self):
        super().setUp()
        self.configure(PLANT)
        self.metrics = self.folder / "stan.sock"

    def figures(self):
        connection = LocalConnection(str(self.metrics))
        try:
            connection.request("GET", "/metrics")
            answer = connection.getresponse()
            self.assertEqual((answer.status, answer.headers["Content-Type"]),
                             (200, "text/plain; version=0.0.4; charset=utf-8"))
            text = answer.read().decode("utf-8")
        finally:
            connection.close()
        return figures_of(text)

    def test_prometheus_reads_the_figures(self):
        server = self.start_server("--metrics", str(self.metrics))
        server.await_line(f"Udostępnianie stanu serwera: {self.metrics}")
        before = self.figures()
        self.assertEqual((before["sorvaned_variables"], before['sorvaned_clients{state="login"}'],
                          before["sorvaned_subscriptions"]), (2, 0, 0))
        run = self.run_script("REMOTE x srv@X\nLOCAL u = x.UNIT\nSET x = 7\n:w\nIF x < 7 GOTO w")
        self.assertEqual(run.code, 0)
        after = self.figures()
        self.assertGreater(after["sorvaned_operations_stored_total"], before["sorvaned_operations_stored_total"])
        self.assertGreater(after["sorvaned_commit_seconds_count"], 0)
        self.assertGreater(after["sorvaned_commit_seconds_sum"], 0)
        self.assertGreater(after["sorvaned_store_bytes"], 0)
        self.assertGreater(after["sorvaned_disk_free_bytes"], 0)
        self.assertGreater(after["process_resident_memory_bytes"], 0)
        self.assertEqual((after["sorvaned_transactions_repeated_total"], after["sorvaned_operations_lost_total"]), (0, 0))

    def test_signal_has_the_figures_in_the_log(self):
        server = self.start_server()
        server.send(signal.SIGUSR1)
        for form in LINES:
            self.assertRegex(server.next_line(), f"^Stan serwera, {form}$")

    def test_address_that_others_could_reach_is_refused(self):
        done = subprocess.run([self.SERVER, "--config", self.configuration, "--metrics", "0.0.0.0:9464"],
                              capture_output=True, encoding="utf-8", timeout=LIMIT_SECONDS, env=self.environment)
        self.assertEqual((done.returncode, done.stderr.splitlines()[-1]),
                         (1, "Nie można udostępnić stanu serwera: 0.0.0.0:9464 (to nie jest adres tego komputera)"))


if __name__ == "__main__":
    main()
