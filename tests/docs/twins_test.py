#!/usr/bin/env python3
"""No type has the qualified name of another.

Each program holds some of them only, so no linker sees all. The target `twins` asks the compiler about the headers below
src/; here are the headers of tests and benchmarks as well, and the types that a source file does not keep to itself."""
import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]

# What can hide a brace: comments, literals, lines of the preprocessor with those that continue them.
HIDDEN = re.compile(
    r'//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\''
    r"|^[ \t]*#(?:\\\n|[^\n])*",
    re.DOTALL | re.MULTILINE,
)
SEPARATOR = re.compile(r"(?<=\w)'(?=\w)")
NAMESPACE = re.compile(r"\bnamespace(?:\s+([\w:]+))?\s*$")
TYPE = re.compile(
    r"(?:^|[\s>])(?:class|struct|union|enum(?:\s+class|\s+struct)?)\s+(?:alignas\([^)]*\)\s*)?"
    r"([A-Za-z_][\w:]*(?:\s*<[^{}]*?>)?)\s*(?:final\s*)?(?::[^:].*)?$",
    re.DOTALL,
)


def types(text):
    """The qualified names of the types that a text defines, in its order."""
    text = SEPARATOR.sub("", HIDDEN.sub(" ", text))
    scopes = []  # a name for a namespace or a type, None for any other pair of braces
    names = []
    start = 0
    for brace in re.finditer(r"[{};]", text):
        head = text[start : brace.start()].strip()
        start = brace.end()
        if brace[0] == "}":
            scopes.pop()
        if brace[0] != "{":
            continue
        space = NAMESPACE.search(head)
        kind = None if space else TYPE.search(re.sub(r"^(?:public|protected|private)\s*:\s*", "", head))
        if space:
            scopes.append(space[1] or "(anonymous)")
        elif kind and None not in scopes and not head.endswith((")", "=")):
            scopes.append(re.sub(r"\s+", "", kind[1]))
            names.append("::".join(scopes))
        else:
            scopes.append(None)
    return names


class Types(unittest.TestCase):
    def test_types_are_found_where_they_are_defined(self):
        text = """
        #define OPEN struct Macro {
        namespace kalvex {
        class Declared;
        enum class Colour : int { Red, Green };
        template <class T> struct Pair final : Base<T> { struct Row { int n = {1'000}; }; private: enum { One }; };
        template <> struct Pair<int> { };
        inline const struct Declared* Make(struct Row& row) { struct Inner { char c = '{'; }; return {}; }
        constexpr Row kRows[] = {{"class Text {"}, {R"(struct Raw {)"}};
        namespace server { /* union No { */ union Yes { int a; }; }  // namespace server
        namespace { struct Hidden { }; }
        }
        namespace kalvex::vantrel { struct Yes : public Other { }; }
        """
        self.assertEqual(
            types(text),
            [
                "kalvex::Colour",
                "kalvex::Pair",
                "kalvex::Pair::Row",
                "kalvex::Pair<int>",
                "kalvex::server::Yes",
                "kalvex::(anonymous)::Hidden",
                "kalvex::vantrel::Yes",
            ],
        )

    def test_no_two_types_have_one_name(self):
        places = {}
        for pattern in ("src/**/*.h", "src/**/*.cpp", "tests/**/*.h", "bench/**/*.h"):
            for path in sorted(ROOT.glob(pattern)):
                for name in types(path.read_text(encoding="utf-8")):
                    if "(anonymous)" not in name:
                        places.setdefault(name, []).append(str(path.relative_to(ROOT)))
        self.assertEqual(places["kalvex::value::CVal"], ["src/value/Value.h"])
        self.assertEqual({name: files for name, files in places.items() if len(files) > 1}, {})


if __name__ == "__main__":
    unittest.main()
