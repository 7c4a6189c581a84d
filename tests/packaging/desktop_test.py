#!/usr/bin/env python3
"""What a desktop reads of the window: its entry, the kind of its files, its pictures and its description."""
import configparser
import pathlib
import shutil
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as xml

FOLDER = pathlib.Path(__file__).resolve().parents[2] / "packaging/desktop"
KIND = "text/x-kalvex-script"
MIME = "{http://www.freedesktop.org/standards/shared-mime-info}"
SVG = "{http://www.w3.org/2000/svg}"
LANGUAGE = "{http://www.w3.org/XML/1998/namespace}lang"
# The keys of an entry of an application; those of KEYS_WITH_LANGUAGES may be there for a language as well.
KEYS = {"Type", "Version", "Name", "GenericName", "Comment", "Exec", "Icon", "Terminal", "StartupNotify",
        "StartupWMClass", "Categories", "MimeType", "Keywords"}
KEYS_WITH_LANGUAGES = {"GenericName", "Comment", "Keywords"}
LISTS = {"Categories", "MimeType", "Keywords"}


class Desktop(unittest.TestCase):
    def setUp(self):
        parser = configparser.RawConfigParser(delimiters="=", comment_prefixes="#")
        parser.optionxform = str
        parser.read(FOLDER / "kalvex.desktop", encoding="utf-8")
        self.assertEqual(parser.sections(), ["Desktop Entry"])
        self.entry = dict(parser["Desktop Entry"])
        self.kind = xml.parse(FOLDER / "kalvex.xml").getroot()
        self.description = xml.parse(FOLDER / "pl.sorvane.kalvex.metainfo.xml").getroot()

    def test_entry_has_keys_that_there_are(self):
        for key in self.entry:
            plain, _, language = key.partition("[")
            self.assertIn(plain, KEYS_WITH_LANGUAGES if language else KEYS)
            self.assertIn(language, ("", "pl]"))
        self.assertEqual({key for key in self.entry if "[" not in key}, KEYS)
        for key in KEYS_WITH_LANGUAGES:
            self.assertIn(f"{key}[pl]", self.entry)
        for key, value in self.entry.items():
            self.assertEqual(value.endswith(";"), key.partition("[")[0] in LISTS, key)
            self.assertTrue(value, key)

    def test_entry_starts_the_program_with_files(self):
        wanted = {"Type": "Application", "Name": "Kalvex", "Exec": "kalvex %F", "Icon": "kalvex", "Terminal": "false",
                  "StartupWMClass": "kalvex", "MimeType": f"{KIND};"}
        self.assertEqual({key: self.entry[key] for key in wanted}, wanted)

    def test_kind_of_scripts_is_a_text_of_its_name(self):
        kind, = self.kind
        self.assertEqual((self.kind.tag, kind.tag, kind.get("type")), (f"{MIME}mime-info", f"{MIME}mime-type", KIND))
        self.assertEqual(kind.find(f"{MIME}sub-class-of").get("type"), "text/plain")
        self.assertEqual([glob.get("pattern") for glob in kind.findall(f"{MIME}glob")], ["*.kx"])
        self.assertEqual({comment.get(LANGUAGE) for comment in kind.findall(f"{MIME}comment")}, {None, "pl"})
        self.assertTrue((FOLDER / (kind.find(f"{MIME}icon").get("name") + ".svg")).is_file())

    def test_kind_is_taken_by_the_database(self):
        if shutil.which("update-mime-database") is None:
            self.skipTest("update-mime-database is not installed")
        with tempfile.TemporaryDirectory() as folder:
            packages = pathlib.Path(folder) / "packages"
            packages.mkdir()
            shutil.copy(FOLDER / "kalvex.xml", packages)
            subprocess.run(["update-mime-database", folder], check=True, capture_output=True, timeout=60)
            self.assertIn(f"{KIND}:*.kx", (pathlib.Path(folder) / "globs").read_text(encoding="utf-8").splitlines())

    def test_pictures_scale_and_hold_no_foreign_thing(self):
        self.assertEqual({path.stem for path in FOLDER.glob("*.svg")}, {self.entry["Icon"], KIND.replace("/", "-")})
        for path in FOLDER.glob("*.svg"):
            root = xml.parse(path).getroot()
            self.assertEqual(root.tag, f"{SVG}svg", path.name)
            box = [float(number) for number in root.get("viewBox").split()]
            self.assertEqual((box[:2], box[2]), ([0, 0], box[3]), path.name)
            self.assertEqual({element.tag.removeprefix(SVG) for element in root.iter()} - {"svg", "rect", "path"}, set())

    def test_description_names_what_there_is(self):
        self.assertEqual((self.description.tag, self.description.get("type")), ("component", "desktop-application"))
        self.assertEqual(self.description.findtext("id"), "pl.sorvane.kalvex")
        self.assertEqual(self.description.findtext("launchable"), "kalvex.desktop")
        self.assertEqual(self.description.findtext("provides/mediatype"), KIND)
        self.assertEqual(self.description.findtext("provides/binary"), self.entry["Exec"].split()[0])
        self.assertEqual([category.text for category in self.description.findall("categories/category")],
                         [name for name in self.entry["Categories"].split(";") if name])
        summaries = {element.get(LANGUAGE): element.text for element in self.description.findall("summary")}
        self.assertEqual(summaries, {None: self.entry["Comment"], "pl": self.entry["Comment[pl]"]})

    def test_description_says_everything_in_both_languages(self):
        for name in ("description/p", "description/ul/li"):
            languages = [element.get(LANGUAGE) for element in self.description.findall(name)]
            self.assertEqual(languages, [None, "pl"] * (len(languages) // 2))
            self.assertTrue(languages)

    def test_software_centre_takes_the_description(self):
        if shutil.which("appstreamcli") is None:
            self.skipTest("appstreamcli is not installed")
        done = subprocess.run(["appstreamcli", "validate", "--no-net", FOLDER / "pl.sorvane.kalvex.metainfo.xml"],
                              capture_output=True, encoding="utf-8", timeout=60)
        self.assertEqual(done.returncode, 0, done.stdout)


if __name__ == "__main__":
    unittest.main()
