#!/usr/bin/env python3
"""The account that a siege takes notices what is not as acknowledged."""
import pathlib
import sys
import unittest

sys.path[:0] = [str(pathlib.Path(__file__).resolve().parent), str(pathlib.Path(__file__).parents[1] / "programs")]

import clients  # noqa: E402

FIELD = clients.Field("A", clients.ARCHIVE, 2, 5)
START = clients.FIRST_TIME


class FakeReader:
    def __init__(self, *contents):
        self.values = {START + slot: content for slot, content in enumerate(contents) if content is not None}

    def contents(self, kind, variable, start, end):
        return {when: value for when, value in self.values.items() if start <= when <= end}


class Account(unittest.TestCase):
    def differences(self, written, first, *contents):
        return clients.differences(FakeReader(*contents), FIELD, written, first)

    def test_what_is_as_acknowledged(self):
        self.assertEqual(self.differences(3, 0, 0.0, 1.0, 2.0), (3, []))
        self.assertEqual(self.differences(0, 0), (0, []))

    def test_slots_that_have_come_again(self):
        self.assertEqual(self.differences(7, 0, 5.0, 6.0, 2.0, 3.0, 4.0), (5, []))
        self.assertEqual(self.differences(7, 5, 5.0, 6.0), (2, []))

    def test_value_that_is_missing(self):
        self.assertEqual(self.differences(3, 0, 0.0, None, 2.0), (3, ["A, slot 1: None for 1.0"]))

    def test_value_that_is_older_than_the_acknowledged(self):
        self.assertEqual(self.differences(7, 0, 5.0, 1.0, 2.0, 3.0, 4.0), (5, ["A, slot 1: 1.0 for 6.0"]))

    def test_text_is_known_by_its_index(self):
        field = clients.Field("T", clients.ARCHIVE, 1, 5, 10)
        self.assertEqual(clients.differences(FakeReader("0:xxxxxxxx", "2:xxxxxxxx"), field, 2),
                         (2, ["T, slot 1: 2:xxxxxxxx for 1:xxxxxxxx"]))


if __name__ == "__main__":
    unittest.main()
