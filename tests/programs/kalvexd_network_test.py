#!/usr/bin/env python3
"""Scripts of the service kalvexd at the data server sorvaned, over a local socket.

    kalvexd_network_test.py PATH_OF_KALVEXD PATH_OF_KALVEX_RUN PATH_OF_SORVANED [unittest arguments]
"""
import signal
import sys
import unittest

from server_and_run import Process, ServerAndRun

SERVICE, ServerAndRun.RUNNER, ServerAndRun.SERVER = (sys.argv.pop(1) for _ in range(3))
STAMP = 21  # one blank more than in the log of a server


class Service(Process):
    """The service with its log on standard output."""

    def __init__(self, test):
        super().__init__(test, [SERVICE, "--working-dir", str(test.folder), "--log-stdout"], test.environment, "stdout")

    def await_line(self, expected):
        for line in self.stream:
            if line.rstrip("\n")[STAMP:] == expected:
                return
        raise AssertionError(f"the log ended without {expected!r}")


class ServiceAtServer(ServerAndRun):
    PLANT = """
[[access]]
write = "0"
[[variable]]
name = "X"
value = 0
"""

    def start_service(self, *, refresh=1000):
        """A service whose one script counts up the variable X."""
        self.script("REMOTE x srv@X\n:p\nSET x = x + 1\nGOTO p", "licz.kx")
        self.write_profile(f"[Autostart]\r\nProcedura0=licz.kx\r\n[Log]\r\nRodzaj=2\r\n"
                           f"[Okna]\r\nCzęstotliwość odświeżania={refresh}\r\n")
        return Service(self)

    def value_of_x(self):
        return self.run_script("REMOTE x srv@X\nLOCAL v = x", name="czytaj.kx").value("v")

    def test_script_reads_and_writes_until_the_polite_end(self):
        self.start_server()
        service = self.start_service()
        service.await_line("Nawiązanie połączenia z srv")
        self.await_value("X", 20)
        service.send(signal.SIGTERM)
        service.await_line("Zatrzymanie modułu Kalvex")
        self.assertEqual(service.process.wait(60), 0)
        value = self.value_of_x()
        self.assertGreaterEqual(value, 20)
        self.assertEqual(self.value_of_x(), value)

    def test_connection_comes_back_however_rarely_views_are_refreshed(self):
        server = self.start_server()
        service = self.start_service(refresh=600000)
        self.await_value("X", 5)
        server.kill()
        self.start_server()
        service.await_line("Nawiązanie połączenia z srv")
        service.await_line("Nawiązanie połączenia z srv")
        self.await_value("X", self.value_of_x() + 5)

    def test_service_waits_for_a_server_that_comes_later(self):
        service = self.start_service()
        service.await_line(f"{self.folder}/licz.kx : Linia 4 - Oczekiwanie na pobranie danych bieżących : x")
        self.start_server()
        self.await_value("X", 5)


if __name__ == "__main__":
    unittest.main()
