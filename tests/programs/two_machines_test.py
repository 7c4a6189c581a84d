#!/usr/bin/env python3
"""A data server on one machine and kalvex-run on another, with a cable between them that can be pulled.

    two_machines_test.py PATH_OF_KALVEX_RUN PATH_OF_SORVANED [unittest arguments]

The machines are network namespaces, which live as long as a process in them, and no process here outlives the test.
"""
import signal
import subprocess
import sys

from server_and_run import (LIMIT_SECONDS, PASSWORD, SILENCE_LIMIT_SECONDS, WRITER, WRITER_PLANT, Run, ServerAndRun,
                            die_with_the_test, main)

SKIPPED = 77
SERVER_HOST = "10.99.0.1"
AWAY_HOST = "10.99.0.2"
PORT = 4000
LOST = "Połączenie z srv zerwane (brak odpowiedzi drugiej strony)"
CONNECTED = "Nawiązanie połączenia z srv"


class Machine:
    """A network of its own. Raises OSError where there can be none."""

    def __init__(self):
        self.holder = subprocess.Popen(["unshare", "--net", "sh", "-c", "echo ready; exec sleep infinity"],
                                       stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                       encoding="utf-8", preexec_fn=die_with_the_test)
        if self.holder.stdout.readline() != "ready\n":
            raise OSError(self.holder.communicate()[1].strip())

    def remove(self):
        self.holder.kill()
        self.holder.communicate()

    def command(self, *arguments):
        return ["nsenter", f"--net=/proc/{self.holder.pid}/ns/net", "--", *arguments]

    def ip(self, *arguments):
        done = subprocess.run(self.command("ip", *arguments), capture_output=True, encoding="utf-8",
                              timeout=LIMIT_SECONDS)
        if done.returncode != 0:
            raise OSError(done.stderr.strip())

    def plug_in(self, address):
        self.ip("link", "set", "lo", "up")
        self.ip("address", "add", f"{address}/24", "dev", "eth0")
        self.ip("link", "set", "eth0", "up")


def join(one, other):
    """Lays a cable between two machines."""
    one.ip("link", "add", "eth0", "type", "veth", "peer", "name", "eth0", "netns", str(other.holder.pid))
    one.plug_in(SERVER_HOST)
    other.plug_in(AWAY_HOST)


def why_there_are_no_machines():
    machines = []
    try:
        machines += [Machine()]
        machines += [Machine()]
        join(*machines)
        return ""
    except OSError as error:
        return str(error)
    finally:
        for machine in machines:
            machine.remove()


class TwoMachines(ServerAndRun):
    """What the base does, it does on the machine of the server, through the local socket."""

    PLANT = f"""[network]
address = "{SERVER_HOST}:{PORT}"
certificate = "server.pem"
key = "server.key"
authority = "urzad.pem"
""" + WRITER_PLANT

    def setUp(self):
        super().setUp()
        self.at_server, self.away = Machine(), Machine()
        self.addCleanup(self.at_server.remove)
        self.addCleanup(self.away.remove)
        join(self.at_server, self.away)
        self.make_certificates()
        self.add_user("jan", 50)
        self.log_in_as("jan", PASSWORD)
        self.away_environment = dict(self.environment, SORVANE_RUNTIME_DIR=str(self.folder / "away"),
                                     SORVANE_COMMON_PROFILE=str(self.folder / "away.ini"))
        self.write_common_profile("Certyfikat=client.pem\nKlucz=client.key\n")

    def command(self, *arguments):
        return self.at_server.command(*arguments)

    def openssl(self, *arguments):
        subprocess.run(["openssl", *arguments], cwd=self.folder, check=True, capture_output=True,
                       timeout=LIMIT_SECONDS)

    def make_certificates(self):
        new_key = ("-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes")
        self.openssl("req", "-x509", *new_key, "-keyout", "urzad.key", "-out", "urzad.pem", "-days", "2", "-subj",
                     "/CN=urzad")
        (self.folder / "names").write_text(f"subjectAltName=IP:{SERVER_HOST}\n")
        for name in ("server", "client"):
            self.openssl("req", *new_key, "-keyout", f"{name}.key", "-out", f"{name}.req", "-subj", f"/CN={name}")
            self.openssl("x509", "-req", "-in", f"{name}.req", "-CA", "urzad.pem", "-CAkey", "urzad.key",
                         "-CAcreateserial", "-days", "2", "-extfile", "names", "-out", f"{name}.pem")

    def write_common_profile(self, certificate):
        text = f"[Serwery]\nsrv={SERVER_HOST}:{PORT}\n[Szyfrowanie]\nUrząd=urzad.pem\n{certificate}"
        for name in ("urzad.pem", "client.pem", "client.key"):
            text = text.replace(name, str(self.folder / name))
        (self.folder / "away.ini").write_bytes(text.encode("cp1250"))

    def follow_away(self, text, name="away.kx"):
        run = Run(self, self.away.command(self.RUNNER, "--profile", str(self.folder / "Kalvex.ini"), "--log-level", "2",
                                          self.script(text, name)), self.away_environment)
        run.set_limit(SILENCE_LIMIT_SECONDS)
        return run

    def start_server(self):
        server = super().start_server()
        server.set_limit(SILENCE_LIMIT_SECONDS)
        return server

    def pull_and_plug_in(self, machine):
        """The cable of a script that writes is out until both sides have noticed."""
        server = self.start_server()
        writer = self.follow_away(WRITER)
        self.await_progress()
        machine.ip("link", "set", "eth0", "down")
        writer.await_line(LOST)
        machine.ip("link", "set", "eth0", "up")
        writer.await_line(CONNECTED)
        self.await_progress()
        self.finish_writer(writer)
        self.assertIsNone(server.process.poll())

    def test_client_without_a_certificate_is_not_let_in(self):
        self.start_server()
        self.write_common_profile("")
        run = self.follow_away("REMOTE k srv@KROK\nLOCAL x = k")
        run.await_line("Błąd nawiązania połączenia z srv (serwer nie odpowiada)")
        run.send(signal.SIGTERM)
        self.assertEqual(run.end(), 3)
        self.assertNotIn(CONNECTED, run.lines)

    def test_cable_pulled_at_the_server_and_plugged_in_again(self):
        self.pull_and_plug_in(self.at_server)

    def test_cable_pulled_at_the_client_and_plugged_in_again(self):
        self.pull_and_plug_in(self.away)


if __name__ == "__main__":
    reason = why_there_are_no_machines()
    if reason:
        print("skipped: there can be no network namespaces here:", reason)
        sys.exit(SKIPPED)
    main()
