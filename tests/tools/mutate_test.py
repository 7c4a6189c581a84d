#!/usr/bin/env python3
"""Which mutants tools/mutate makes of given lines."""
import importlib.machinery
import importlib.util
import pathlib
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]


def load(path):
    loader = importlib.machinery.SourceFileLoader(path.name, str(path))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(path.name, loader))
    loader.exec_module(module)
    return module


mutate = load(ROOT / "tools/mutate")


class Mutants(unittest.TestCase):
    maxDiff = None

    def check(self, text, *expected):
        """`expected` holds a pair for each mutant: its rule and the whole text that it makes."""
        made = [(mutant.rule, mutant.apply(text)) for mutant in mutate.mutants_of("src/a.cpp", text)]
        self.assertEqual(made, list(expected))

    def check_body(self, statement, *expected):
        around = "void F() {\n    %s\n}\n"
        self.check(around % statement, *((rule, around % changed) for rule, changed in expected))

    def test_each_comparison_has_its_neighbour(self):
        pairs = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">", "&&": "||", "||": "&&"}
        for sign, other in pairs.items():
            self.check_body(f"return a {sign} b;", ("comparison swapped", f"return a {other} b;"))

    def test_brackets_of_templates_and_references_are_no_comparisons(self):
        self.check("template <typename T>\nvoid F(std::vector<T>&& a, std::pair<int, T> b);\n")

    def test_condition_is_negated_as_a_whole(self):
        self.check_body("if (a.empty()) return;", ("condition negated", "if (!(a.empty())) return;"))
        self.check_body("while (IsAt(c)) ++n;", ("condition negated", "while (!(IsAt(c))) ++n;"),
                        ("statement left out", "while (IsAt(c)) ;"))  # fmt: skip
        self.check_body("if (const int a = F(); a) return;", ("condition negated", "if (const int a = F(); !(a)) return;"))

    def test_lone_equality_is_swapped_only(self):
        self.check_body("if (a == b) return;", ("comparison swapped", "if (a != b) return;"))
        self.check_body(
            "if (a < b) return;",
            ("condition negated", "if (!(a < b)) return;"),
            ("comparison swapped", "if (a <= b) return;"),
        )

    def test_condition_that_declares_is_left_alone(self):
        self.check_body("if (const Row* row = Find(a)) return;")

    def test_statements_that_do_something_are_left_out(self):
        for statement in (
            "Call(a, b);",
            "++at;",
            "at--;",
            "m_a = b;",
            "*a = b;",
            "a.b->c[d].e |= f;",
            "std::sort(a);",
            "static_cast<Row<int>*>(a)->Call();",
            "log << a;",
        ):
            self.check_body(statement, ("statement left out", ";"))

    def test_declarations_and_jumps_are_kept(self):
        for statement in (
            "int a;",
            "auto a = b;",
            "const Row& a = b;",
            "std::vector<int> a(b);",
            "Row* a = b;",
            "return Call();",
            "break;",
            "using std::swap;",
            "static_assert(a);",
            "throw Fault(a);",
        ):
            self.check_body(statement)

    def test_declarations_outside_of_blocks_are_kept(self):
        self.check("namespace a {\nstruct Row {\n    Row();\n    Row(Row&&) = default;\n};\nRow F();\n}\n")

    def test_statements_stand_in_every_kind_of_block(self):
        for opening, closing in (
            ("void Row::F() const {", "}"),
            ("Row::Row() : m_a{a} {", "}"),
            ("auto F() -> Row {", "}"),
            ("class Row {\n    void F() override {", "}\n};"),
            ("void F() {\n    Each([] {", "});\n    int a;\n}"),
            ("void F() {\n    switch (a) {\n        case Row::A:", "}\n}"),
            ("void F() {\n    if (const int a = b) {", "} else {\n        return;\n    }\n}"),
        ):
            text = f"{opening} Call(); {closing}\n"
            inner = [m.apply(text) for m in mutate.mutants_of("src/a.cpp", text) if text[m.start : m.end] == "Call();"]
            self.assertEqual(inner, [f"{opening} ; {closing}\n"])

    def test_returned_truth_is_flipped(self):
        self.check_body("return true;", ("truth flipped", "return false;"))
        self.check_body("return false;", ("truth flipped", "return true;"))

    def test_integers_are_off_by_one(self):
        for number, other in {"0": "1", "9": "10", "1'000": "1001", "0x1F": "32", "0b11": "4", "0644": "421", "7u": "8u"}.items():
            self.check(f"constexpr auto kA = {number};\n", ("constant off by one", f"constexpr auto kA = {other};\n"))
        self.check("constexpr double kA = 1.5;\nconstexpr double kB = 1e3;\n")

    def test_rows_of_tables_are_left_out(self):
        self.check(
            'constexpr Row kRows[] = {\n    {"A", F},\n    {"B", G},\n};\n',
            ("row left out", 'constexpr Row kRows[] = {\n    \n    {"B", G},\n};\n'),
            ("row left out", 'constexpr Row kRows[] = {\n    {"A", F},\n    \n};\n'),
        )
        self.check(
            'constexpr const char* kNames[] = {"A", "B"};\n',
            ("row left out", 'constexpr const char* kNames[] = { "B"};\n'),
            ("row left out", 'constexpr const char* kNames[] = {"A"};\n'),
        )

    def test_fields_and_arguments_are_no_rows(self):
        self.check("constexpr Row kRow = {a, b};\nvoid F(Row row = {a, b});\n")

    def test_rows_of_macros_are_left_out(self):
        self.check(
            '#define ROWS(X) \\\n    X(1, "A") \\\n    X(2, "B")\n',
            ("row left out", '#define ROWS(X) \\\n     \\\n    X(2, "B")\n'),
            ("row left out", '#define ROWS(X) \\\n    X(1, "A") \\\n    \n'),
        )

    def test_comments_directives_and_texts_are_left_alone(self):
        self.check('#include "a1.h"\n#if A == 1\n#endif\n// a == 1\n/* a\n == 1; */\n')
        self.check("constexpr auto kA = \"a == 1; \\\" b\";\nconstexpr auto kB = R\"x(\" == 1)\" )x\";\nconstexpr auto kC = '1';\n")

    def test_mutants_stand_in_the_order_of_their_lines(self):
        text = "void F() {\n    Call(1);\n    if (a == b) return;\n}\n"
        made = [(mutant.line, mutant.rule) for mutant in mutate.mutants_of("src/a.cpp", text)]
        expected = [(2, "statement left out"), (2, "constant off by one"), (3, "comparison swapped")]
        self.assertEqual(made, expected)

    def test_mutant_is_shown_with_its_place_and_its_line(self):
        text = "void F() {\n    if (a ==\n        b) return;\n}\n"
        [mutant] = mutate.mutants_of("src/a.cpp", text)
        self.assertEqual(mutant.describe(text), "src/a.cpp:2: comparison swapped\n    - if (a ==\n    + if (a !=")


class Folders(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.root = pathlib.Path(scratch.name)
        for folder in ("text", "operands", "engine", "server", "language"):
            (self.root / "tests" / folder).mkdir(parents=True)
            (self.root / "src" / folder).mkdir(parents=True)
        for name, depends in {"operands": "text", "engine": "operands", "server": "engine", "language": "engine text"}.items():
            text = f"kalvex_folder({name}\n  SOURCES\n    A.cpp\n  DEPENDS {depends}\n  LIBRARIES X\n)\n"
            (self.root / "src" / name / "CMakeLists.txt").write_text(text, encoding="utf-8")
        (self.root / "src/text/CMakeLists.txt").write_text("kalvex_folder(text\n  SOURCES\n    A.cpp\n)\n", encoding="utf-8")

    def test_tests_are_those_of_the_nearest_folder(self):
        self.assertEqual(mutate.test_folders(self.root, "src/text/A.cpp"), ["text"])
        self.assertEqual(mutate.test_folders(self.root, "src/server/part/A.cpp"), ["server"])

    def test_folders_through_which_scripts_run_have_the_script_tests_too(self):
        for folder in ("operands", "engine", "language"):
            self.assertEqual(mutate.test_folders(self.root, f"src/{folder}/A.cpp"), [folder, "scripts"])


if __name__ == "__main__":
    unittest.main()
