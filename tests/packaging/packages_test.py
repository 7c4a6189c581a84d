#!/usr/bin/env python3
"""The Debian packages: what they are made of, what lintian says, and their life on a bare system that this test makes.

    packages_test.py PATH_OF_CPACK BUILD_FOLDER [PATH_OF_KALVEX]

Ends with 77 where it may not make such a system. It is made once, by debootstrap, in the folder of the build or the one
that KALVEX_BARE_SYSTEM names, and each test uses a copy.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

CPACK, BUILD, *WINDOWS = sys.argv[1:]
del sys.argv[1:]
SKIPPED = 77
READY = pathlib.Path(os.environ.get("KALVEX_BARE_SYSTEM", f"{BUILD}/bare_system"))
OLDER = "0.1.9"
UNITS = {"kalvex": "kalvexd", "sorvane-server": "sorvaned"}
CONFFILES = {"kalvex-common": "/etc/sorvane/sorvane.ini", "sorvane-server": "/etc/sorvane/sorvaned.toml"}
# Loaded at run time, so that no linker knows of them.
LOADED = ["libcurl4", "libxcb1"]


def run(*command, **more):
    return subprocess.run(command, capture_output=True, encoding="utf-8", **more)


def checked(*command, **more):
    done = run(*command, **more)
    assert done.returncode == 0, f"{command}\n{done.stdout}\n{done.stderr}"
    return done.stdout


def reason_to_skip():
    if os.geteuid() != 0:
        return "a system of its own needs root"
    missing = [name for name in ("debootstrap", "lintian", "dpkg-deb", "dpkg-shlibdeps") if shutil.which(name) is None]
    if missing:
        return "not installed: " + ", ".join(missing)
    if not (pathlib.Path(BUILD) / "bin/kalvexd").exists():
        return "the programs are not built"
    return None


def make_packages(folder, version=None):
    """The packages by their names."""
    of_version = ["-D", f"CPACK_PACKAGE_VERSION={version}"] if version else []
    checked(CPACK, "-G", "DEB", "--config", f"{BUILD}/CPackConfig.cmake", "-B", str(folder), *of_version)
    return {path.name.split("_")[0]: path for path in folder.glob("*.deb")}


class Root:
    """A bare Debian in a folder."""

    def __init__(self, folder):
        self.folder = folder
        if not READY.exists():
            new = READY.with_suffix(".new")
            shutil.rmtree(new, ignore_errors=True)
            made = run("debootstrap", "--variant=minbase", "bookworm", str(new))
            if made.returncode != 0:
                raise unittest.SkipTest("no bare system can be made here:\n" + made.stdout[-500:] + made.stderr[-500:])
            new.rename(READY)
        checked("cp", "-a", str(READY), str(folder))
        policy = folder / "usr/sbin/policy-rc.d"
        policy.write_text("#!/bin/sh\nexit 101\n", encoding="utf-8")
        policy.chmod(0o755)

    def mount_processes(self, test):
        """For programs that look up where they lie."""
        place = str(self.path("/proc"))
        done = run("mount", "-t", "proc", "proc", place)
        if done.returncode != 0:
            raise unittest.SkipTest("nothing can be mounted here:\n" + done.stderr)
        test.addCleanup(run, "umount", "--lazy", place)

    def run(self, *command, user=None):
        prefix = ["setpriv", f"--reuid={user}", f"--regid={user}", "--clear-groups"] if user else []
        environment = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "DEBIAN_FRONTEND": "noninteractive", "LC_ALL": "C.UTF-8",
                       "LANGUAGE": "en"}
        return run("chroot", str(self.folder), *prefix, *command, env=environment)

    def checked(self, *command, **more):
        done = self.run(*command, **more)
        assert done.returncode == 0, f"{command}\n{done.stdout}\n{done.stderr}"
        return done.stdout + done.stderr

    def refresh(self):
        """Looks up what the mirrors have now."""
        done = self.run("apt-get", "-q", "-o", "Acquire::Retries=3", "update")
        if done.returncode != 0 or "Failed to fetch" in done.stderr:
            raise unittest.SkipTest("the mirrors of the distribution cannot be reached:\n" + done.stderr[-500:])

    def install(self, packages):
        for path in packages:
            shutil.copy(path, self.folder / "tmp")
        # Settings that somebody has changed stay.
        self.refresh()
        command = ("apt-get", "-q", "-y", "--no-install-recommends", "-o", "Dpkg::Options::=--force-confdef",
                   "-o", "Dpkg::Options::=--force-confold", "-o", "Acquire::Retries=3", "install",
                   *(f"/tmp/{path.name}" for path in packages))
        self.checked(*command)

    def path(self, name):
        return self.folder / name.lstrip("/")


class Packages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="kalvex-packages-")
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.folder.chmod(0o755)
        cls.packages = make_packages(cls.folder / "new")
        cls.version = re.search(r"_([^_]*)_", cls.packages["kalvex"].name)[1]

    def field(self, name, field):
        return checked("dpkg-deb", "-f", str(self.packages[name]), field).strip()

    def test_there_is_a_package_for_each_part(self):
        window = ["kalvex-window"] if WINDOWS else []
        self.assertEqual(sorted(self.packages), ["kalvex", "kalvex-common", "kalvex-doc", *window, "sorvane-server"])

    def test_packages_need_what_their_programs_load(self):
        for name in UNITS:
            depends = {word.split()[0] for word in self.field(name, "Depends").split(", ")}
            self.assertLessEqual({"kalvex-common", "libc6", "libsqlite3-0", "libssl3"}, depends, name)
            self.assertIn(f"kalvex-common (= {self.version})", self.field(name, "Depends"), name)
        self.assertIn("libcpp-httplib0.11", self.field("kalvex", "Depends"))
        self.assertLessEqual(set(LOADED), set(self.field("kalvex", "Depends").split(", ")))
        self.assertEqual(self.field("kalvex-doc", "Depends"), "")

    def test_settings_are_kept_by_the_package_manager(self):
        for name, package in self.packages.items():
            listed = run("dpkg-deb", "-I", str(package), "conffiles").stdout.split()
            self.assertEqual(listed, [CONFFILES[name]] if name in CONFFILES else [], name)

    def test_lintian_finds_no_error(self):
        done = run("lintian", "--allow-root", "--fail-on", "error", "--tag-display-limit", "0",
                   *map(str, self.packages.values()))
        self.assertEqual([line for line in done.stdout.splitlines() if line.startswith("E:")], [])
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def test_life_on_a_bare_system(self):
        root = Root(self.folder / "root")
        older = make_packages(self.folder / "old", OLDER)
        self.installs(root, older, OLDER)
        self.programs_run(root)
        configuration = root.path(CONFFILES["sorvane-server"])
        configuration.write_text(configuration.read_text(encoding="utf-8").replace('"sorvaned"', '"Gaz"'), encoding="utf-8")
        root.checked("sh", "-c", "echo tajne | setpriv --reuid=sorvane --regid=sorvane --clear-groups "
                     "sorvaned user add adam --level 50")
        self.installs(root, self.packages, self.version)
        self.assertIn('name = "Gaz"', configuration.read_text(encoding="utf-8"))
        self.assertEqual(root.checked("sorvaned", "user", "list"), "adam\t50\t\t\t\n")
        self.programs_run(root)
        self.is_purged(root)

    def installs(self, root, packages, version):
        root.install([path for name, path in packages.items() if name != "kalvex-window"])
        for name in packages:
            if name != "kalvex-window":
                shown = root.checked("dpkg-query", "-W", "-f", "${Status} ${Version}", name)
                self.assertEqual(shown, f"install ok installed {version}", name)
        account = root.checked("getent", "passwd", "sorvane").split(":")
        self.assertEqual(account[5:], ["/var/lib/sorvane", "/usr/sbin/nologin\n"])
        for folder in ("/var/lib/kalvex", "/var/log/kalvex", "/var/lib/sorvane"):
            self.assertEqual(root.checked("stat", "-c", "%U %G %a", folder), "sorvane sorvane 750\n", folder)

    def programs_run(self, root):
        for program in ("kalvexd", "kalvexctl", "kalvex-convert", "kalvex-run", "sorvaned"):
            # The program's own version; packages of an older one are made of the same programs.
            self.assertEqual(root.checked(program, "--version"), f"{program} {self.version}\n")
        self.assertEqual(root.checked("sorvaned", "--check"), "")
        root.path("/tmp/a.kx").write_bytes(b"LOCAL X = 6 * 7\r\n")
        table = root.checked("kalvex-run", "--clock", "2024-03-10 07:00:00", "/tmp/a.kx", user="sorvane")
        self.assertRegex(table, r"(?m)^X +\S+ +42\b")
        for name, unit in UNITS.items():
            files = root.checked("dpkg", "-L", name).splitlines()
            self.assertIn(f"/usr/lib/systemd/system/{unit}.service", files)
            text = root.path(f"/usr/lib/systemd/system/{unit}.service").read_text(encoding="utf-8")
            self.assertIn(f"\nExecStart=/usr/bin/{unit} ", text)

    def is_purged(self, root):
        root.path("/var/log/kalvex/Kalvex.log").write_text("x", encoding="utf-8")
        told = root.checked("apt-get", "-q", "-y", "purge", "kalvex", "kalvex-common", "kalvex-doc", "sorvane-server")
        self.assertIn("\nsorvane-server: /var/lib/sorvane is kept\n", told)
        for gone in ("/etc/sorvane", "/var/log/kalvex", "/var/lib/kalvex", "/usr/bin/kalvexd", "/usr/share/doc/kalvex",
                     "/usr/lib/systemd/system/sorvaned.service"):
            self.assertFalse(root.path(gone).exists(), gone)
        self.assertEqual([path.name for path in root.path("/var/lib/sorvane").iterdir()], ["users.sqlite"])
        self.assertEqual(root.checked("sh", "-c", "dpkg-query -W | grep -c 'kalvex\\|sorvane' || true"), "0\n")


if __name__ == "__main__":
    reason = reason_to_skip()
    if reason:
        print(reason)
        sys.exit(SKIPPED)
    unittest.main()
