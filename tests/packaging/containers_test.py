#!/usr/bin/env python3
"""The images of packaging/Containerfile: how they are built, and a plant that runs in them.

    containers_test.py PATH_OF_CPACK BUILD_FOLDER [PATH_OF_KALVEX]

No registry is asked: the bare system of packages_test.py stands for the one that the images begin with, and the
packages are those of the build, so that the stage which compiles them is left out. Passed over where there is no podman,
or where it cannot run a container.
"""
import json
import pathlib
import re
import shutil
import socket
import subprocess
import tempfile
import threading
import unittest

from first_plant_test import steady
from packages_test import ROOT, Root, checked, main, make_packages, put, reason_to_skip, run

BASE = "docker.io/library/debian:12-slim"
# What the system that the images begin with leaves out.
SLIM = {"etc/dpkg/dpkg.cfg.d/docker": "path-exclude /usr/share/doc/*\npath-include /usr/share/doc/*/copyright\n"
                                      "path-exclude /usr/share/locale/*\npath-exclude /usr/share/man/*\n"}
LIMIT_SECONDS = 300
SERVICE_VOLUMES = ("-v", "service:/var/lib/kalvex", "-v", "log:/var/log/kalvex")
# The limits of podman are more than some machines may give.
RUN = ("run", "--rm", "--network", "none", "--ulimit", "nofile=1024:1024", "--ulimit", "nproc=1024:1024")
PLANT = """[server]
name = "Gaz"

[[variable]]
name = "PRZEPLYW"
value = 7

[[variable]]
name = "SUMA"
value = 0
"""
MACHINE = "[Konfiguracja]\r\nUżytkownicy=/var/lib/sorvane/users.sqlite\r\n"
PROFILE = "[Autostart]\r\nProcedura0=suma.kx\r\n"
SCRIPT = """PRIORITY 1
REMOTE PRZEPLYW Gaz@PRZEPLYW
REMOTE SUMA Gaz@SUMA
LOCAL WYNIK = 0
SET WYNIK = SUMA + PRZEPLYW * 6
SET SUMA = WYNIK
:zapis
IF SUMA != WYNIK GOTO zapis
EXEC "/bin/sh" "-c" "sleep 0 & echo $! > sierota; exit 0"
:koniec
SLEEP 1
GOTO koniec
"""
SCRIPT_DONE_LINE = 10
SERVER_LOG = ["TIME Uruchomienie serwera Gaz", "TIME Nasłuchiwanie: gniazdo lokalne /run/sorvane/Gaz",
              "TIME Rejestracja użytkownika skrypty z Kalvex", "TIME Zatrzymanie serwera Gaz"]
SERVICE_LOG = ["TIME  The module Kalvex starts", "TIME  /var/lib/kalvex/suma.kx : Script initialised ",
               "TIME  /var/lib/kalvex/suma.kx : Script started ", "TIME  Log level: errors ",
               "TIME  The health of the module is offered: /run/sorvane/kalvexd.health",
               "TIME  The module Kalvex stops"]


class Podman:
    """Images and containers in a folder of their own, apart from those of the machine."""

    def __init__(self, folder):
        self.folder = folder
        self.command = ["podman", "--root", f"{folder}/store", "--runroot", f"{folder}/run",
                        "--tmpdir", f"{folder}/tmp", "--cgroup-manager", "cgroupfs", "--storage-driver", "overlay"]

    def __call__(self, *words, **more):
        return run(*self.command, *words, **more)

    def checked(self, *words, **more):
        return checked(*self.command, *words, **more)

    def close(self):
        self("rm", "--all", "--force", "--time", "0")
        run("umount", "--lazy", f"{self.folder}/store/overlay")


class Container:
    """One that runs, with its log."""

    def __init__(self, podman, name, *words):
        self.podman, self.name = podman, name
        self.process = subprocess.Popen([*podman.command, *RUN, "--name", name, *words],
                                        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8")
        self.guard = threading.Timer(LIMIT_SECONDS, self.process.kill)
        self.guard.start()
        self.log = []

    def read_to(self, last):
        for line in self.process.stdout:
            self.log.append(steady(line.rstrip("\n")))
            if self.log[-1] == last:
                return
        raise AssertionError(f"{self.name} has ended:\n" + "\n".join(self.log))

    def run(self, *words):
        return self.podman.checked("exec", self.name, *words, timeout=LIMIT_SECONDS)

    def stop(self):
        """Its exit status and its log."""
        self.podman.checked("stop", "--time", str(LIMIT_SECONDS), self.name)
        self.log += [steady(line.rstrip("\n")) for line in self.process.stdout]
        status = self.process.wait()
        self.close()
        return status, self.log

    def close(self):
        self.guard.cancel()
        self.process.kill()
        self.process.wait()
        self.process.stdout.close()


class Containers(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="kalvex-")
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.folder.chmod(0o755)
        cls.podman = Podman(cls.folder / "podman")
        cls.addClassCleanup(cls.podman.close)
        cls.import_base()
        packages = make_packages(cls.folder / "packages")
        cls.version = re.search(r"_([^_]*)_", packages["kalvex"].name)[1]
        for name in ("sorvaned", "kalvexd"):
            cls.build(name)

    @classmethod
    def import_base(cls):
        base = Root(cls.folder / "base")
        put(base.folder, SLIM)
        archive = str(cls.folder / "base.tar")
        checked("tar", "-cf", archive, "--exclude=./var/cache/apt/archives/*.deb", "-C", str(base.folder), ".")
        done = cls.podman("import", "--quiet", archive, BASE)
        told = done.stderr
        for runtime in filter(shutil.which, ("crun", "runc") if done.returncode == 0 else ()):
            done = cls.podman("--runtime", runtime, *RUN, BASE, "true")
            if done.returncode == 0:
                cls.podman.command += ["--runtime", runtime]
                return
            told += f"{runtime}: {done.stderr}"
        raise unittest.SkipTest("no container can run here:\n" + told)

    @classmethod
    def build(cls, name):
        # Without namespaces of its own, which fewer machines allow.
        done = cls.podman("build", "--isolation", "chroot", "--build-context", f"packages={cls.folder}/packages",
                          "--target", name, "--tag", name, "--file", str(ROOT / "packaging/Containerfile"), str(ROOT))
        told = done.stdout + done.stderr
        if done.returncode != 0 and "Failed to fetch" in told:
            raise unittest.SkipTest("the mirrors of the distribution cannot be reached:\n" + told[-500:])
        assert done.returncode == 0, told

    def run_once(self, image, *words, options=(), **more):
        return self.podman.checked(*RUN, "--interactive", *options, image, *words, **more)

    def started(self, name, *words):
        container = Container(self.podman, name, *words)
        self.addCleanup(container.close)
        return container

    def common(self):
        """Volumes of both."""
        return "-v", f"{self.folder}/etc:/etc/sorvane:ro", "-v", "run:/run/sorvane", "-v", "server:/var/lib/sorvane"

    def server(self):
        server = self.started("server", *self.common(), "sorvaned")
        server.read_to(SERVER_LOG[1])
        return server

    def service(self):
        """One whose script has come to its end."""
        service = self.started("service", *self.common(), *SERVICE_VOLUMES, "-e", "LANGUAGE=en",
                               "kalvexd", "--metrics", "/run/sorvane/kalvexd.health")
        service.read_to(SERVICE_LOG[-2])
        place = self.podman.checked("volume", "inspect", "--format", "{{.Mountpoint}}", "run").strip()
        while int(self.figures(f"{place}/kalvexd.health")['kalvex_script_line{script="suma.kx"}']) < SCRIPT_DONE_LINE:
            self.assertIsNone(service.process.poll(), service.log)
        return service

    def figures(self, place):
        with socket.socket(socket.AF_UNIX) as connection:
            connection.settimeout(LIMIT_SECONDS)
            connection.connect(place)
            connection.sendall(b"GET /metrics HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n")
            with connection.makefile(encoding="utf-8") as answer:
                return dict(line.rsplit(" ", 1) for line in answer if line.startswith("kalvex_"))

    def test_images_tell_what_they_need(self):
        for image, volumes, ports in (("sorvaned", ["/run/sorvane", "/var/lib/sorvane"], ["4300/tcp"]),
                                      ("kalvexd", ["/run/sorvane", "/var/lib/kalvex", "/var/log/kalvex"], [])):
            told = json.loads(self.podman.checked("image", "inspect", image))[0]["Config"]
            zone = [setting for setting in told["Env"] if setting.startswith("TZ=")]
            shown = (sorted(told["Volumes"]), list(told.get("ExposedPorts", [])), told["StopSignal"], zone)
            self.assertEqual(shown, (volumes, ports, "SIGTERM", ["TZ=:/etc/localtime"]), image)

    def test_programs_run_as_one_account_that_is_not_root(self):
        accounts = [self.run_once(image, options=("--entrypoint", "id")) for image in ("sorvaned", "kalvexd")]
        self.assertRegex(accounts[0], r"^uid=[1-9]\d*\(sorvane\) gid=[1-9]\d*\(sorvane\) "
                         r"groups=[1-9]\d*\(sorvane\),[1-9]\d*\(sorvane-clients\)\n$")
        self.assertEqual(accounts[1], accounts[0])
        self.assertEqual(self.run_once("sorvaned", "--version"), f"sorvaned {self.version}\n")
        self.assertEqual(self.run_once("kalvexd", "--version"), f"kalvexd {self.version}\n")

    def test_images_know_time_zones(self):
        for zone, shown in (((), "UTC"), (("-e", "TZ=Europe/Warsaw"), "CET")):
            told = self.run_once("kalvexd", "-d", "2024-01-01", "+%Z", options=("--entrypoint", "date", *zone))
            self.assertEqual(told, f"{shown}\n")

    def test_images_hold_no_package_that_was_installed(self):
        for image in ("sorvaned", "kalvexd"):
            left = self.run_once(image, "/", "-xdev", "(", "-path", "/var/lib/apt/lists/*_*", "-o",
                                 "-name", "kalvex*.deb", "-o", "-name", "sorvane*.deb", ")",
                                 options=("--entrypoint", "find", "--user", "root"))
            self.assertEqual(left, "", image)

    def test_plant_runs_in_containers_and_goes_on_from_its_volumes(self):
        put(self.folder, {"etc/sorvaned.toml": PLANT, "etc/sorvane.ini": MACHINE, "plant/Kalvex.ini": PROFILE,
                          "plant/suma.kx": SCRIPT.replace("\n", "\r\n"), "plant/adam": "adam\ntajne\n"})
        (self.folder / "plant/adam").chmod(0o600)
        for name, level in (("skrypty", "50"), ("adam", "100")):
            self.run_once("sorvaned", "user", "add", name, "--level", level, options=self.common(), input="tajne\n")
        with subprocess.Popen(["tar", "-C", self.folder / "plant", "-c", "Kalvex.ini", "suma.kx", "adam"],
                              stdout=subprocess.PIPE) as tar:
            self.run_once("kalvexd", "-x", options=("--entrypoint", "tar", *SERVICE_VOLUMES), stdin=tar.stdout)
        self.run_once("kalvexd", "--add-source", "Gaz,skrypty", options=SERVICE_VOLUMES, input="tajne\n")
        for total, status in ((42, 0), (84, 32768)):
            server, service = self.server(), self.service()
            told = service.run("kalvexctl", "--login", "/var/lib/kalvex/adam", "vars", "suma.kx")
            self.assertEqual(steady(told), "PRZEPLYW\tTIME ( 0 ) 7.00\t\t\t\t\n"
                                           f"SUMA\tTIME ( 32768 ) {total}.00\t\t\t\t\n"
                                           f"WYNIK\tTIME ( {status} ) {total}.00\n")
            # What a program of a script has left behind is gone for good.
            service.run("sh", "-c", 'while [ -e "/proc/$(cat sierota)" ]; do :; done; rm sierota')
            self.assertEqual(service.stop(), (0, SERVICE_LOG))
            self.assertEqual(server.stop(), (0, SERVER_LOG))


if __name__ == "__main__":
    main(reason_to_skip("podman"))
