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
ROOT = pathlib.Path(__file__).resolve().parents[2]
SKIPPED = 77
READY = pathlib.Path(os.environ.get("KALVEX_BARE_SYSTEM", f"{BUILD}/bare_system"))
OLDER = "0.1.9"
UNITS = {"kalvex": "kalvexd", "sorvane-server": "sorvaned"}
CONFFILES = {"kalvex-common": "/etc/sorvane/sorvane.ini", "sorvane-server": "/etc/sorvane/sorvaned.toml"}
WINDOW_FILES = """/usr/bin/kalvex
/usr/share/applications/kalvex.desktop
/usr/share/bash-completion/completions/kalvex
/usr/share/doc/kalvex-window/changelog.gz
/usr/share/doc/kalvex-window/copyright
/usr/share/fish/vendor_completions.d/kalvex.fish
/usr/share/icons/hicolor/scalable/apps/kalvex.svg
/usr/share/icons/hicolor/scalable/mimetypes/text-x-kalvex-script.svg
/usr/share/man/man1/kalvex.1.gz
/usr/share/metainfo/pl.sorvane.kalvex.metainfo.xml
/usr/share/mime/packages/kalvex.xml
/usr/share/zsh/vendor-completions/_kalvex""".splitlines()
# Nobody needs these systems after a loss of power, nor the descriptions of packages in other languages.
QUICK = {"etc/dpkg/dpkg.cfg.d/quick": "force-unsafe-io\n", "etc/apt/apt.conf.d/quick": 'Acquire::Languages "none";\n'}
# Loaded at run time, so that no linker knows of them.
LOADED = ["libcurl4", "libxcb1"]


def run(*command, **more):
    return subprocess.run(command, capture_output=True, encoding="utf-8", **more)


def checked(*command, **more):
    done = run(*command, **more)
    assert done.returncode == 0, f"{command}\n{done.stdout}\n{done.stderr}"
    return done.stdout


def reason_to_skip(*programs):
    if os.geteuid() != 0:
        return "a system of its own needs root"
    needed = ("debootstrap", "lintian", "dpkg-deb", "dpkg-shlibdeps", *programs)
    missing = [name for name in needed if shutil.which(name) is None]
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


def put(folder, files):
    """Texts by name, in Windows-1250."""
    for name, text in files.items():
        (folder / name).parent.mkdir(parents=True, exist_ok=True)
        (folder / name).write_bytes(text.encode("cp1250"))


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
        put(folder, QUICK)
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

    def test_what_cpack_calls_is_installed_with_what_builds(self):
        rows = [line.split() for line in (ROOT / "tools/packages.list").read_text(encoding="utf-8").splitlines()]
        for program in ("file", "dpkg-shlibdeps"):
            package = checked("dpkg", "-S", shutil.which(program)).split(":")[0]
            self.assertIn([package, "build"], rows)

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

    def test_completions_are_with_their_programs(self):
        programs = {"kalvex": ["kalvex-convert", "kalvex-run", "kalvexctl", "kalvexd"], "kalvex-window": ["kalvex"],
                    "sorvane-server": ["sorvaned"]}
        for name, package in self.packages.items():
            listed = re.findall(r"(?m) \./usr/share/((?:bash-completion|fish|zsh)/.*[^/\n])$",
                                checked("dpkg-deb", "-c", str(package)))
            wanted = [place for program in programs.get(name, ())
                      for place in (f"bash-completion/completions/{program}", f"fish/vendor_completions.d/{program}.fish",
                                    f"zsh/vendor-completions/_{program}")]
            self.assertEqual(sorted(listed), sorted(wanted), name)

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
        if WINDOWS:
            self.window_starts(root)
            self.desktop_knows_the_window(root)
        configuration = root.path(CONFFILES["sorvane-server"])
        configuration.write_text(configuration.read_text(encoding="utf-8").replace('"sorvaned"', '"Gaz"'), encoding="utf-8")
        root.checked("sh", "-c", "echo tajne | setpriv --reuid=sorvane --regid=sorvane --clear-groups "
                     "sorvaned user add adam --level 50")
        # As earlier versions left them; one that somebody has chosen stays.
        root.checked("chmod", "750", "/var/lib/kalvex", "/var/lib/sorvane")
        self.installs(root, self.packages, self.version)
        root.checked("chmod", "710", "/var/lib/kalvex")
        root.checked("/var/lib/dpkg/info/kalvex.postinst", "configure", self.version)
        self.assertEqual(root.checked("stat", "-c", "%a", "/var/lib/kalvex"), "710\n")
        self.assertIn('name = "Gaz"', configuration.read_text(encoding="utf-8"))
        self.assertEqual(root.checked("sorvaned", "user", "list"), "adam\t50\t\t\t\n")
        self.programs_run(root)
        self.is_purged(root)

    def installs(self, root, packages, version):
        root.install(packages.values())
        for name in packages:
            shown = root.checked("dpkg-query", "-W", "-f", "${Status} ${Version}", name)
            self.assertEqual(shown, f"install ok installed {version}", name)
        account = root.checked("getent", "passwd", "sorvane").split(":")
        self.assertEqual(account[5:], ["/var/lib/sorvane", "/usr/sbin/nologin\n"])
        self.assertRegex(root.checked("getent", "group", "sorvane-clients"), r"^sorvane-clients:x:\d+:sorvane\n$")
        for folder, mode in (("/var/lib/kalvex", 700), ("/var/log/kalvex", 750), ("/var/lib/sorvane", 700)):
            self.assertEqual(root.checked("stat", "-c", "%U %G %a", folder), f"sorvane sorvane {mode}\n", folder)

    def programs_run(self, root):
        window = ["kalvex"] if WINDOWS else []
        for program in ("kalvexd", "kalvexctl", "kalvex-convert", "kalvex-run", "sorvaned", *window):
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

    def window_starts(self, root):
        """A script of the window sends it the signal at which it ends."""
        root.checked("install", "-d", "-o", "sorvane", "-g", "sorvane", "-m", "700", "/tmp/desk")
        put(root.path("/tmp/desk"), {
            "Kalvex.ini": "[Autostart]\r\nProcedura0=koniec.kx\r\n",
            "koniec.kx": 'PRIORITY 1\r\nEXEC "/bin/sh" "-c" "kill -TERM $PPID"\r\n'})
        done = root.run("env", "QT_QPA_PLATFORM=offscreen", "HOME=/tmp/desk", "XDG_RUNTIME_DIR=/tmp/desk",
                        "LANGUAGE=pl", "kalvex", "--working-dir", "/tmp/desk", user="sorvane")
        self.assertEqual((done.returncode, done.stdout), (0, ""), done.stderr)
        log = root.path("/tmp/desk/Kalvex.log").read_text(encoding="utf-8")
        self.assertEqual(re.sub(r"(?m)^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d  ", "", log).splitlines(), [
            "Uruchomienie modułu Kalvex", "/tmp/desk/koniec.kx : Inicjowanie skryptu ",
            "/tmp/desk/koniec.kx : Start skryptu ", "Poziom rejestracji: błędy ",
            "Brak pliku użytkowników: konto sorvane ma w tym oknie poziom 100", "Sesja Windows została zakończona",
            "Zatrzymanie modułu Kalvex"])

    def desktop_knows_the_window(self, root):
        listed = root.checked("dpkg", "-L", "kalvex-window").splitlines()
        self.assertEqual(sorted(name for name in listed if not root.path(name).is_dir()), WINDOW_FILES)
        kinds = root.path("/usr/share/mime/globs").read_text(encoding="utf-8").splitlines()
        self.assertEqual([line for line in kinds if "kalvex" in line], ["text/x-kalvex-script:*.kx"])

    def is_purged(self, root):
        root.path("/var/log/kalvex/Kalvex.log").write_text("x", encoding="utf-8")
        told = root.checked("apt-get", "-q", "-y", "purge", *self.packages)
        self.assertIn("\nsorvane-server: /var/lib/sorvane is kept\n", told)
        left = root.checked("find", "/", "-xdev", "-path", "/tmp", "-prune", "-o",
                            "(", "-name", "*kalvex*", "-o", "-name", "*sorvane*", ")", "-print")
        self.assertEqual(left, "/var/lib/sorvane\n")
        self.assertEqual(root.checked("sh", "-c", "grep -rl kalvex /usr/share /etc || true"), "")
        self.assertEqual([path.name for path in root.path("/var/lib/sorvane").iterdir()], ["users.sqlite"])
        self.assertEqual(root.checked("sh", "-c", "dpkg-query -W | grep -c 'kalvex\\|sorvane' || true"), "0\n")


def main(reason):
    """Runs the tests unless there is a reason not to; tells each reason for which something was passed over."""
    if reason:
        print(reason)
        sys.exit(SKIPPED)
    result = unittest.main(exit=False).result
    for _, passed_over in result.skipped:
        print(passed_over)
    sys.exit(1 if not result.wasSuccessful() else SKIPPED if result.skipped else 0)


if __name__ == "__main__":
    main(reason_to_skip())
