#!/usr/bin/env python3
"""Every block of commands of docs/first-plant.md as it stands, on a bare system that this test makes.

    first_plant_test.py PATH_OF_CPACK BUILD_FOLDER [PATH_OF_KALVEX] [unittest arguments]

The system is that of packages_test.py. It has no service manager: the one that answers to systemctl here starts what the
units name, as the account that they name, waits until it says that it is ready, and ends it by SIGTERM.
"""
import os
import pathlib
import re
import shutil
import signal
import socket
import subprocess
import tempfile
import threading
import unittest

from packages_test import Root, main, make_packages, reason_to_skip

PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs/first-plant.md"
END = "-- the block has ended --"
LIMIT_SECONDS = 120
SYSTEMCTL = """#!/bin/sh
echo "$*" >/run/manager.asked
read -r answer </run/manager.answer
exit "$answer"
"""


def blocks_of(page):
    """(commands, what they print or None), in the order of the page."""
    blocks = []
    for language, text in re.findall(r"(?ms)^```(\w*)\n(.*?)^```$", page):
        if language == "sh":
            blocks.append([text, None])
        else:
            blocks[-1][1] = text
    return blocks


def steady(text):
    """Without what differs from run to run: times, and how often a line was tried."""
    text = re.sub(r"\d{4}-\d\d-\d\d \d\d:\d\d(:\d\d)?", "TIME", text)
    return re.sub(r"\(times: \d+\)", "(times: N)", text)


class Manager:
    """Starts and ends services in the system when its systemctl asks for it."""

    def __init__(self, root):
        self.root = root
        self.services = {}
        for name in ("asked", "answer"):
            os.mkfifo(root.path(f"/run/manager.{name}"))
        command = root.path("/usr/local/bin/systemctl")
        command.write_text(SYSTEMCTL, encoding="utf-8")
        command.chmod(0o755)
        threading.Thread(target=self.serve, daemon=True).start()

    def serve(self):
        while True:
            asked = self.root.path("/run/manager.asked").read_text(encoding="utf-8").split()
            verb, units = asked[0], [word for word in asked[1:] if not word.startswith("-")]
            act = {"start": self.start, "enable": self.start, "stop": self.stop, "restart": self.restart}[verb]
            done = all([act(unit) for unit in units])
            self.root.path("/run/manager.answer").write_text("0\n" if done else "1\n", encoding="utf-8")

    def unit(self, name):
        """Its settings, and its environment with what drop-ins add."""
        files = [self.root.path(f"/usr/lib/systemd/system/{name}.service"),
                 *self.root.path(f"/etc/systemd/system/{name}.service.d").glob("*.conf")]
        settings = re.findall(r"(?m)^(\w+)=(.*)$", "".join(path.read_text(encoding="utf-8") for path in files))
        return dict(settings), [value for key, value in settings if key == "Environment"]

    def start(self, name):
        if name in self.services:
            return True
        unit, environment = self.unit(name)
        user = unit["User"]
        self.root.checked("install", "-d", "-o", user, "-g", user, "-m", unit["RuntimeDirectoryMode"],
                          f"/run/{unit['RuntimeDirectory']}")
        place = self.root.path(f"/run/{name}.ready")
        place.unlink(missing_ok=True)
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as ready:
            ready.bind(str(place))
            place.chmod(0o666)
            ready.settimeout(LIMIT_SECONDS)
            self.services[name] = subprocess.Popen(
                ["chroot", str(self.root.folder), "setpriv", f"--reuid={user}", f"--regid={user}", "--clear-groups",
                 "env", "-i", f"NOTIFY_SOCKET=/run/{name}.ready", *environment, "sh", "-c",
                 f"cd {unit.get('WorkingDirectory', '/')} && umask {unit['UMask']} && exec {unit['ExecStart']}"],
                stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            try:
                while b"READY=1" not in ready.recv(4096):
                    pass
            except TimeoutError:
                return False
        return True

    def stop(self, name):
        service = self.services.pop(name, None)
        if service is None:
            return True
        service.send_signal(signal.SIGTERM)
        return service.wait(LIMIT_SECONDS) == 0

    def restart(self, name):
        return self.stop(name) and self.start(name)

    def end(self):
        for name in list(self.services):
            self.stop(name)


class FirstPlant(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="kalvex-plant-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.folder.chmod(0o755)
        self.root = Root(self.folder / "root")
        self.root.mount_processes(self)
        packages = self.root.path("/srv/packages")
        packages.mkdir()
        for package in make_packages(self.folder / "made").values():
            shutil.copy(package, packages)
        self.root.refresh()
        self.manager = Manager(self.root)
        self.addCleanup(self.manager.end)
        self.shell = subprocess.Popen(
            ["chroot", str(self.root.folder), "bash", "-e"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT, encoding="utf-8", bufsize=1,
            env={"PATH": "/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin", "HOME": "/root", "LC_ALL": "C.UTF-8",
                 "DEBIAN_FRONTEND": "noninteractive"})
        for cleanup in (self.shell.stdin.close, self.shell.stdout.close, self.shell.wait, self.shell.kill):
            self.addCleanup(cleanup)
        guard = threading.Timer(10 * LIMIT_SECONDS, self.shell.kill)
        guard.start()
        self.addCleanup(guard.cancel)

    def run_block(self, commands):
        self.root.path("/tmp/block").write_text(commands, encoding="utf-8")
        self.shell.stdin.write(f". /tmp/block </dev/null\necho '{END}'\n")
        printed = ""
        for line in self.shell.stdout:
            if line == f"{END}\n":
                return printed
            printed += line
        self.fail(f"failed:\n{commands}\n{printed}")

    def test_every_block_does_what_the_page_says(self):
        for commands, shown in blocks_of(PAGE.read_text(encoding="utf-8")):
            printed = self.run_block(commands)
            if os.environ.get("KALVEX_SHOW_BLOCKS"):
                print(f"{commands}=====\n{printed}=====")
                continue
            if "apt-get" not in commands:
                self.assertEqual(steady(printed), steady(shown or ""), commands)


if __name__ == "__main__":
    main(reason_to_skip())
