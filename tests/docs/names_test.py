#!/usr/bin/env python3
"""Names: what the family gave this module keeps its form; every other name is plain.

clang-tidy holds the case of each kind of name. What a case cannot tell, a C before a class or the letter of a type
before a member, is held here.
"""
import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
GIVEN = set(pathlib.Path(__file__).with_name("given_names").read_text(encoding="utf-8").split())

TYPE = re.compile(r"\b(?:class|struct|union|enum class|enum|using)\s+(C[A-Z]\w*)")
MEMBER = re.compile(r"\b(m_(?:(?:arr|b|e|f|lst|map|n|p|r|set|str|t|w)(?=[A-Z])|(?=[A-Z]))\w+)")


def lettered(text):
    """The names of a source that bear letters besides what they say."""
    return set(TYPE.findall(text)) | set(MEMBER.findall(text))


def sources():
    for folder in ("src", "tests", "bench"):
        for pattern in ("*.h", "*.cpp"):
            yield from (ROOT / folder).rglob(pattern)


class Names(unittest.TestCase):
    def test_a_letter_before_a_name_is_seen(self):
        self.assertEqual(lettered("class CReader { int m_nLine; Text m_line; bool m_Open; };"),
                         {"CReader", "m_nLine", "m_Open"})
        self.assertEqual(lettered("struct Cell { int m_nested; }; enum class Code { Carry };"), set())

    def test_only_given_names_bear_letters(self):
        found = {}
        for path in sources():
            for name in lettered(path.read_text(encoding="utf-8")) - GIVEN:
                found.setdefault(name, str(path.relative_to(ROOT)))
        self.assertEqual(found, {})

    def test_every_given_name_is_used(self):
        used = set()
        for path in sources():
            used |= lettered(path.read_text(encoding="utf-8"))
        self.assertEqual(GIVEN - used, set())


if __name__ == "__main__":
    unittest.main()
