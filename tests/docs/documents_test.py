#!/usr/bin/env python3
"""What the documents say of the project, compared with the project."""
import collections
import json
import pathlib
import re
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENTS = [ROOT / "README.md", ROOT / "CONTRIBUTING.md", *ROOT.glob("docs/*.md"), *ROOT.glob("examples/*.md")]


def read(path):
    return (ROOT / path).read_text(encoding="utf-8")


def folders_below(path):
    """The folders that hold something besides what a build or a program leaves there."""
    return {
        entry.name
        for entry in (ROOT / path).iterdir()
        if entry.is_dir() and not entry.name.startswith((".", "__")) and entry.name != "build"
    }


def prose(document):
    """The document without its blocks of code."""
    return re.sub(r"(?ms)^```.*?^```$|^    [^\n]*$", "", document.read_text(encoding="utf-8"))


def anchors(document):
    """Where links into the document may lead: a heading in small letters, without its signs."""
    counts = collections.Counter()
    for title in re.findall(r"(?m)^#{1,6} (.*)$", prose(document)):
        anchor = "".join(c for c in title.lower().replace(" ", "-") if c.isalnum() or c in "-_")
        yield f"{anchor}-{counts[anchor]}" if counts[anchor] else anchor
        counts[anchor] += 1


def own_lines(script):
    """What a script test runs: its lines without comments and without what stands in quotes."""
    lines = script.read_bytes().decode("cp1250").splitlines()
    bare = (re.sub(r'"[^"]*"', '""', line).partition(";")[0] for line in lines)
    return [line for line in bare if line.strip()]


class Documents(unittest.TestCase):
    def test_dependencies_list_the_packages_that_are_installed(self):
        lines = read("tools/packages.list").splitlines()
        installed = [tuple(line.split()) for line in lines if line and not line.startswith("#")]
        rows = re.findall(r"(?m)^\| ([a-z0-9.+-]+) \| (build|check|peers) \| \S.* \|$", read("docs/dependencies.md"))
        self.assertTrue(installed)
        self.assertEqual(rows, installed)

    def test_architecture_has_a_paragraph_for_each_folder(self):
        paragraphs = re.findall(r"(?m)^\*\*`src/([a-z]+)/`\*\*", read("docs/architecture.md"))
        self.assertCountEqual(paragraphs, folders_below("src"))

    def test_architecture_draws_the_arrows_that_the_build_allows(self):
        drawn = {}
        for name, depends in re.findall(r"(?m)^    ([a-z_]+)(?: +-> +([a-z_, ]+))?$", read("docs/architecture.md")):
            drawn[name] = depends.split(", ") if depends else []
        allowed = {}
        for lists in ROOT.glob("src/**/CMakeLists.txt"):
            text = re.sub(r"#.*", "", lists.read_text(encoding="utf-8"))
            for name, rest in re.findall(r"kalvex_folder\(([a-z_]+)([^)]*)\)", text):
                depends = re.search(r"\bDEPENDS\s+((?:[a-z_]+\s*)+)", rest)
                allowed[name] = depends[1].split() if depends else []
        self.assertEqual(drawn, allowed)

    def test_no_code_compares_a_word_with_a_text_of_its_own(self):
        word = r'"[A-Z][A-Z_]+"(?:sv)?'
        own = re.compile(
            rf"[=!]=\s*{word}|{word}\s*[=!]=|(?:EqualNoCase|starts_with|ends_with|compare)\([^;{{}}]*?{word}"
            rf"|(?:string_view|char\s*\*|k[A-Z]\w*(?:\[\])?)\s+?\w*(?:\[\])?\s*=\s*{word}"
        )
        users = {'constexpr std::string_view kNobody = "NOBODY"'}  # a user's name
        folders = ["text", "value", "operands", "engine", "sources", "host"]
        paths = [path for folder in folders for path in (ROOT / "src" / folder).rglob("*.[ch]*")]
        self.assertGreater(len(paths), len(folders))
        for path in paths:
            if path.name == "Keywords.h":
                continue
            code = re.sub(r"(?m)//.*$", "", path.read_text(encoding="utf-8"))
            for text in users:
                code = code.replace(text, "")
            self.assertEqual([found[0] for found in own.finditer(code)], [], path.name)

    def test_console_page_has_a_row_for_each_message_and_method(self):
        page = read("docs/console.md")
        codes = re.findall(r"(?m)^    [A-Z]\w+ = (\d+),$", read("src/console/ConsoleMessages.h"))
        self.assertEqual(re.findall(r"(?m)^\| (\d+) \|", page), codes)
        methods = re.findall(r"(?m)^  rpc (\w+)\(", read("src/supervision/kalvex.proto"))
        self.assertEqual(re.findall(r"(?m)^\| `((?:Get|Watch)\w+)` \|", page), methods)

    def test_operations_page_has_each_action_of_the_audit_trail(self):
        actions = re.findall(r"AuditAction::\w+, \"([a-z-]+)\"", read("src/audit/AuditRecord.cpp"))
        self.assertTrue(actions)
        table = re.search(r"(?s)\| action \| `old` \| `new` \|\n\|---\|---\|---\|\n(.*?)\n\n", read("docs/operations.md"))
        told = [word for row in table[1].splitlines() for word in re.findall(r"`([a-z-]+)`", row.split("|")[1])]
        self.assertCountEqual(told, actions)

    def test_front_page_has_a_line_for_each_folder(self):
        lines = re.findall(r"(?m)^\| `([a-z./]+)/` \|", read("README.md"))
        folders = {"src/" + folder for folder in folders_below("src")} | (folders_below(".") - {"src"})
        self.assertCountEqual(lines, folders)

    def test_front_page_shows_the_script_that_it_names(self):
        shown = re.search(r"`(examples/\w+\.kx)`[^`]*```\n(.*?)```", read("README.md"), re.DOTALL)
        script = (ROOT / shown[1]).read_bytes().decode("cp1250").replace("\r\n", "\n")
        self.assertEqual(shown[2], script)

    def test_every_example_is_run_by_a_script_test(self):
        for examples, folder in {"examples": "examples", "examples/cookbook": "cookbook"}.items():
            texts = [path.read_bytes().decode("cp1250") for path in ROOT.glob(f"tests/scripts/{folder}/*.kx")]
            scripts = rf"(?m)^;; script: ../../../{examples}/([^/\s]+)"
            run = {name for text in texts for name in re.findall(scripts, text)}
            self.assertEqual(run, {path.name for path in ROOT.glob(f"{examples}/*.kx")})

    def test_cookbook_shows_every_script_once(self):
        text = read("docs/cookbook.md")
        block = r"(?s)`(examples/cookbook/\w+\.kx)`:\n\n<!-- made: file \1 -->\n\n```\n(.*?)```\n"
        shown = re.findall(block, text)
        scripts = {str(path.relative_to(ROOT)): path for path in ROOT.glob("examples/cookbook/*.kx")}
        self.assertGreaterEqual(len(scripts), 30)
        self.assertCountEqual([name for name, _ in shown], scripts)
        for name, lines in shown:
            self.assertEqual(lines, scripts[name].read_bytes().decode("cp1250").replace("\r\n", "\n"), name)
        tasks = re.findall(r"(?m)^### .+\n\n(?:.+\n)+\n`(examples/cookbook/\w+\.kx)`:$", text)
        self.assertEqual(tasks, [name for name, _ in shown])

    def test_examples_read_variables_that_their_plants_have(self):
        plant = read("examples/plant/plant.toml") + read("examples/plant/stacje.csv")
        names = set(re.findall(r'(?m)^name = "([A-Z.]+)"$|^([A-Z0-9._]+);', plant))
        live = {one or other for one, other in names}
        simulated = set(json.loads(read("examples/cookbook/plant.json"))["sources"]["Gaz"]["variables"])
        self.assertLessEqual(simulated, live)
        for path in ROOT.glob("examples/**/*.kx"):
            used = set(re.findall(r"\bGaz@(\S+)", path.read_bytes().decode("cp1250")))
            self.assertLessEqual(used, simulated, path.name)

    def test_every_row_of_the_language_is_in_a_script_test(self):
        spellings = dict(re.findall(r'string_view (\w+) = "([A-Z_]+)";', read("src/operands/Keywords.h")))
        lines = [line for path in ROOT.glob("tests/scripts/*/*.kx") for line in own_lines(path)]
        statements = {line.split()[0].upper() for line in lines}
        functions = {word for line in lines for word in re.findall(r"(?:=|\bIF|\bNOT)\s*([A-Z_]+)\b", line)}
        for table, used in {"Statements": statements, "Functions": functions}.items():
            text = read(f"src/language/{table}.cpp")
            rows = re.findall(r'(?m)^    \{(?:"([A-Z_]+)"|operands::Keyword::(\w+)), \w+::\w+,', text)
            self.assertEqual(len(rows), len(re.findall(r"(?m)^    \{\S", text)))
            self.assertTrue(rows)
            keywords = [keyword or spellings[name] for keyword, name in rows]
            self.assertEqual([keyword for keyword in keywords if keyword not in used], [], table)

    def test_operations_explain_the_options_of_the_service(self):
        rows = re.findall(r'(?m)^    \{"(--[a-z-]+)", (?:"([A-Z,]+)"|nullptr)', read("src/programs/kalvexd/Options.cpp"))
        self.assertTrue(rows)
        explained = set(re.findall(r"`(--[a-z-]+(?: [A-Z,]+)?)`", read("docs/operations.md")))
        for name, value in rows:
            self.assertIn(f"{name} {value}".rstrip(), explained)

    def test_operations_explain_the_keys_of_the_profiles(self):
        words = re.findall(r'constexpr const char\* \w+ = "([^"]+)";', read("src/app/ProfileKeys.h"))
        self.assertTrue(words)
        page = read("docs/operations.md")
        explained = re.findall(r"`([^`|]+)`", "".join(re.findall(r"(?m)^\| (.*)$", page)))
        for word in words:
            self.assertTrue([told for told in explained if re.fullmatch(rf"{word}(\d|NAME)?", told)], word)

    def test_operations_explain_the_figures_of_health(self):
        figures = re.findall(r'(?m)^    \{"([a-z_]+)",$', read("src/app/HealthText.cpp"))
        table = re.search(r"(?ms)^\| figure \|.*?\n\n", read("docs/operations.md"))[0]
        self.assertTrue(figures)
        self.assertEqual(re.findall(r"`((?:kalvex|process)_[a-z_]+)`", table), figures)

    def test_suites_are_named_after_their_files(self):
        for path in ROOT.glob("tests/**/*.cpp"):
            suites = set(re.findall(r"(?m)^TEST(?:_F|_P)?\((\w+),", path.read_text(encoding="utf-8")))
            words = path.stem.split("_")
            self.assertEqual(bool(suites), words[-1] == "test", path)
            concept = "".join(word.capitalize() for word in words[:-1])
            for suite in suites:
                self.assertRegex(suite, f"^{concept}([A-Z]\\w*)?Test$", path)

    def test_no_program_compiles_a_source_of_another_folder(self):
        lists = [ROOT / "bench/CMakeLists.txt", *ROOT.glob("tests/**/CMakeLists.txt")]
        for path in lists:
            self.assertNotRegex(path.read_text(encoding="utf-8"), r"\.\./\S*\.cpp", path)

    def test_every_path_in_a_document_is_there(self):
        folders = "|".join(folders_below("src"))
        tops_of_all = ["src", "tests", "tools", "docs", "examples", "bench", "packaging", "translations", r"\.ci"]
        for document in DOCUMENTS:
            # The page of the examples tells of what lies beside it.
            base = document.parent if document.parent.name == "examples" else ROOT
            tops = "|".join(tops_of_all if base == ROOT else folders_below("examples"))
            text = document.read_text(encoding="utf-8")
            paths = re.findall(rf"(?<![\w/.-])((?:{tops})/[\w./*<>+-]*)", text)
            self.assertTrue(paths, document.name)
            for path in paths:
                pattern = re.sub(r"<\w+>", "*", path.rstrip("./"))
                self.assertTrue(list(base.glob(pattern)), f"{document.name}: {path}")
            self.assertEqual(re.findall(rf"`((?:{folders})/[^`\n]*)`", text), [], document.name)

    def test_every_link_between_documents_leads_somewhere(self):
        for document in DOCUMENTS:
            for target in re.findall(r"\]\(([^)#:]+)\)", document.read_text(encoding="utf-8")):
                self.assertTrue((document.parent / target).exists(), f"{document.name}: {target}")

    def test_every_link_within_a_document_leads_to_a_heading(self):
        for document in DOCUMENTS:
            for path, anchor in re.findall(r"\]\(([^)#:]*)#([^)]+)\)", prose(document)):
                self.assertIn(anchor, list(anchors(document.parent / path if path else document)), document.name)

    def test_contents_of_the_manual_have_every_heading(self):
        text = read("docs/language.md")
        contents = re.search(r"(?s)<!-- made: contents -->(.*?)<!-- end -->", text)[1]
        linked = re.findall(r"\]\(#([^)]+)\)", contents)
        self.assertEqual(linked, list(anchors(ROOT / "docs/language.md"))[1:])

    def test_made_parts_of_documents_are_as_they_are_made(self):
        done = subprocess.run([ROOT / "tools/renew-documents", "--check"], capture_output=True, encoding="utf-8")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))


if __name__ == "__main__":
    unittest.main()
