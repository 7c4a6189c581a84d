#!/usr/bin/env python3
"""The installation: what lies where, that the programs run from there, and the service units."""
import configparser
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

CMAKE, BUILD, *WINDOWS = sys.argv[1:]
del sys.argv[1:]
ROOT = pathlib.Path(__file__).resolve().parents[2]
PROGRAMS = ["kalvex-convert", "kalvex-run", "kalvexctl", "kalvexd", "sorvaned",
            *(pathlib.Path(path).name for path in WINDOWS)]
SERVICES = ["kalvexd", "sorvaned"]


def output_of(*command):
    return subprocess.run(command, capture_output=True, encoding="utf-8", timeout=120)


class Unit(configparser.RawConfigParser):
    """A unit file, as far as its keys occur once."""

    def __init__(self, path):
        super().__init__(strict=False, delimiters="=", comment_prefixes="#")
        self.optionxform = str
        self.read(path, encoding="utf-8")


class Installation(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.prefix = pathlib.Path(folder.name) / "usr"
        done = output_of(CMAKE, "--install", BUILD, "--prefix", str(cls.prefix))
        assert done.returncode == 0, done.stderr

    def unit(self, service):
        return self.prefix / "lib/systemd/system" / f"{service}.service"

    def test_programs_run_from_where_they_are_installed(self):
        for program in PROGRAMS:
            shown = output_of(self.prefix / "bin" / program, "--help")
            self.assertEqual((shown.returncode, shown.stderr), (0, ""), program)
            self.assertIn(program, shown.stdout)
        self.assertEqual(sorted(path.name for path in (self.prefix / "bin").iterdir()), sorted(PROGRAMS))

    def test_service_finds_the_module_that_it_loads(self):
        with tempfile.TemporaryDirectory() as folder:
            environment = {"PATH": os.environ["PATH"], "SORVANE_RUNTIME_DIR": folder}
            done = subprocess.run([self.prefix / "bin/kalvexd", "--working-dir", folder, "--metrics", "0.0.0.0:9464"],
                                  capture_output=True, encoding="utf-8", timeout=120, env=environment)
        fault = "kalvexd: Nie można udostępnić stanu modułu: 0.0.0.0:9464 (to nie jest adres tego komputera)\n"
        self.assertEqual((done.returncode, done.stdout, done.stderr), (1, "", fault))

    def test_every_program_has_its_page(self):
        pages = {path.name for path in (self.prefix / "share/man").glob("man?/*")}
        self.assertEqual({page.rpartition(".")[0] for page in pages if page[-1] in "18"}, set(PROGRAMS))
        self.assertEqual({page for page in pages if page[-1] not in "18"},
                         {"kalvex.ini.5", "kalvex-language.7", "sorvaned.toml.5"})

    def test_pages_bear_the_version_and_the_day_that_the_changes_tell(self):
        version = output_of(self.prefix / "bin/sorvaned", "--version").stdout.split()[1]
        changes = (self.prefix / "share/doc/kalvex/CHANGELOG.md").read_text(encoding="utf-8")
        newest, date = re.search(r"(?m)^## (\S+) \((\d{4}-\d\d-\d\d)\)$", changes).groups()
        self.assertEqual(newest, version)
        for page in (self.prefix / "share/man").glob("man?/*"):
            title = page.read_text(encoding="utf-8").splitlines()[0]
            self.assertEqual(re.sub(r'^\.TH \S+ \d|"[^"]*"$', "", title), f' "{date}" "Kalvex {version}" ', page.name)

    def test_page_of_the_language_has_each_row_of_the_tables(self):
        page = (self.prefix / "share/man/man7/kalvex-language.7").read_text(encoding="utf-8")
        spellings = dict(re.findall(r'string_view (\w+) = "([A-Z_]+)";',
                                    (ROOT / "src/operands/Keywords.h").read_text(encoding="utf-8")))
        parts = re.split(r"(?m)^\.SH (.+)$", page)
        sections = dict(zip(parts[1::2], parts[2::2]))
        for table in ("Statements", "Functions", "Directives"):
            text = (ROOT / f"src/language/{table}.cpp").read_text(encoding="utf-8")
            rows = re.findall(r'(?m)^    \{(?:"([A-Z_]+)"|operands::Keyword::(\w+)),', text)
            self.assertTrue(rows)
            told = re.findall(r'(?m)^\.TP\n\.B "([A-Z_]+)', sections[table.upper()])
            self.assertEqual(told, [word or spellings[name] for word, name in rows], table)
        self.assertIn('\n.TP\n.B "SETTIME <year> <month> <day> <hour> <minute> <second>"\n\\&Sets the system time.\n',
                      page)

    def test_installation_can_be_taken_back(self):
        with tempfile.TemporaryDirectory() as folder:
            build = pathlib.Path(folder) / "build"
            prefix = pathlib.Path(folder) / "usr"
            (prefix / "bin").mkdir(parents=True)
            (prefix / "bin/other").write_text("x", encoding="utf-8")
            manifest = pathlib.Path(BUILD) / "install_manifest.txt"
            done = output_of(CMAKE, "--install", BUILD, "--prefix", str(prefix))
            self.assertEqual(done.returncode, 0, done.stderr)
            build.mkdir()
            shutil.move(manifest, build / manifest.name)
            done = output_of(CMAKE, "-D", f"MANIFEST={build / manifest.name}", "-P",
                             str(ROOT / "packaging/uninstall.cmake"))
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertEqual([path for path in prefix.rglob("*") if path.is_file()], [prefix / "bin/other"])
            self.assertFalse((prefix / "share/doc/kalvex").exists())
            self.assertFalse((build / manifest.name).exists())

    def test_shells_complete_command_lines(self):
        told = {"kalvex": ("--working-dir", "--log-dir"), "kalvexd": ("--metrics", "--add-source"),
                "sorvaned": ("--config", "user", "passwd", "--group", "backup"),
                "kalvexctl": ("list", "status", "start", "release"),
                "kalvex-convert": ("--to", "--check", "windows-1250", "utf-8"),
                "kalvex-run": ("--until", "--junit", "--language")}
        for program in PROGRAMS:
            words = told[program]
            places = [f"bash-completion/completions/{program}", f"zsh/site-functions/_{program}",
                      f"fish/vendor_completions.d/{program}.fish"]
            for place in places:
                text = (self.prefix / "share" / place).read_text(encoding="utf-8")
                for word in words:
                    # fish names long options without their dashes.
                    wanted = word.removeprefix("--") if place.endswith(".fish") else word
                    self.assertRegex(text, rf"(?<![\w-]){wanted}\b", place)
                self.assertNotRegex(text, "@[A-Z]+@", place)

    def test_completions_lie_where_shells_look_and_are_with_their_programs(self):
        packages = {"kalvex": ["kalvex-convert", "kalvex-run", "kalvexctl", "kalvexd"], "sorvane-server": ["sorvaned"],
                    "kalvex-window": ["kalvex"] if WINDOWS else [], "kalvex-common": []}
        # Below /usr, but nowhere else, zsh looks for what packages have.
        for prefix, zsh in (("/usr", "vendor-completions"), ("/usr/local", "site-functions")):
            for package, programs in packages.items():
                with tempfile.TemporaryDirectory() as folder:
                    done = subprocess.run([CMAKE, "--install", BUILD, "--prefix", prefix, "--component", package],
                                          capture_output=True, encoding="utf-8", timeout=120,
                                          env=os.environ | {"DESTDIR": folder})
                    self.assertEqual((done.returncode, done.stderr), (0, ""))
                    shared = pathlib.Path(folder + prefix) / "share"
                    found = [str(path.relative_to(shared)) for shell in ("bash-completion", "zsh", "fish")
                             for path in (shared / shell).rglob("*") if path.is_file()]
                self.assertEqual(sorted(found), sorted(
                    place for program in programs for place in (f"bash-completion/completions/{program}",
                                                                f"zsh/{zsh}/_{program}",
                                                                f"fish/vendor_completions.d/{program}.fish")), package)

    def test_catalogues_documents_and_examples_are_there(self):
        for language in (ROOT / "translations").glob("*.po"):
            catalogue = self.prefix / "share/locale" / language.stem / "LC_MESSAGES/kalvex.mo"
            self.assertTrue(catalogue.is_file(), catalogue)
        shared = self.prefix / "share/doc/kalvex"
        for source, target in (("docs", shared), ("examples", shared / "examples")):
            for path in (ROOT / source).glob("*.*"):
                self.assertEqual((target / path.name).read_bytes(), path.read_bytes())
        self.assertFalse((shared / "examples/plant/data").exists())
        if WINDOWS:
            self.assertEqual((shared / "card.pdf").read_bytes()[:5], b"%PDF-")

    @unittest.skipUnless(WINDOWS, "built without the window")
    def test_desktop_finds_the_window(self):
        shared = self.prefix / "share"
        for place, name in (("applications", "kalvex.desktop"), ("mime/packages", "kalvex.xml"),
                            ("metainfo", "pl.sorvane.kalvex.metainfo.xml"),
                            ("icons/hicolor/scalable/apps", "kalvex.svg"),
                            ("icons/hicolor/scalable/mimetypes", "text-x-kalvex-script.svg")):
            self.assertEqual((shared / place / name).read_bytes(),
                             (ROOT / "packaging/desktop" / name).read_bytes(), place)

    def test_units_name_options_that_their_programs_have(self):
        for service in SERVICES:
            program, *arguments = Unit(self.unit(service))["Service"]["ExecStart"].split()
            self.assertEqual(program, str(self.prefix / "bin" / service))
            shown = output_of(program, "--help").stdout
            options = [argument.split("=")[0] for argument in arguments if argument.startswith("-")]
            for option in options:
                self.assertRegex(shown, rf"(?m)(^|[\s,]){re.escape(option)}\b", service)

    def test_units_confine_their_services(self):
        for service in SERVICES:
            unit = Unit(self.unit(service))["Service"]
            for key, value in {"User": "sorvane", "NoNewPrivileges": "yes", "ProtectSystem": "strict",
                               "CapabilityBoundingSet": "", "Type": "notify", "RuntimeDirectory": "sorvane",
                               "RuntimeDirectoryPreserve": "yes", "RuntimeDirectoryMode": "0751",
                               "StateDirectoryMode": "0700"}.items():
                self.assertEqual(unit[key], value, f"{service}: {key}")

    def test_service_manager_takes_the_units(self):
        if shutil.which("systemd-analyze") is None:
            self.skipTest("systemd-analyze is not installed")
        for service in SERVICES:
            checked = output_of("systemd-analyze", "verify", "--man=no", str(self.unit(service)))
            self.assertEqual((checked.returncode, checked.stderr), (0, ""), service)

    def test_nothing_names_the_folder_of_the_build(self):
        for path in [self.unit(service) for service in SERVICES]:
            self.assertNotIn(str(BUILD), path.read_text(encoding="utf-8"))


if __name__ == "__main__":
    unittest.main()
