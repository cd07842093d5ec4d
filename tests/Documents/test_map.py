#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""tests/README.md names every source file of the program that has no test of its own name, and every test; all names exist."""

import fnmatch
import re
import unittest

from documents import ROOT

_PARTS = ("OrvaneBreak", "OrvaneBreakCore")


def stems(part, *endings):
    return {path.stem for ending in endings for path in (ROOT / part).rglob(f"*{ending}")}


def expected_tests():
    lines = (ROOT / "tests" / "expected-tests").read_text("utf-8").splitlines()
    return {line.split()[0] for line in lines if not line.startswith("#")}


class Map(unittest.TestCase):
    def setUp(self):
        text = (ROOT / "tests" / "README.md").read_text("utf-8").split("\n## Labels\n")[0]
        rows = [line.strip("|").split("|") for line in text.splitlines() if line.startswith("| ")]
        self.files, self.patterns = ({name for row in rows for name in re.findall("`([^`]+)`", row[column])} for column in (1, 2))

    def test_every_source_file_has_a_test(self):
        own = {name.removesuffix(ending) for name in stems("tests", ".cpp") for ending in ("Test", "Target")
               if name.endswith(ending)}
        sources = set().union(*(stems(part, ".cpp") for part in _PARTS))
        self.assertEqual(sorted(sources - own - self.files), [])

    def test_every_file_exists(self):
        self.assertTrue(self.files)
        self.assertEqual(sorted(self.files.difference(*(stems(part, ".cpp", ".h") for part in _PARTS))), [])

    def test_every_test_is_named(self):
        self.assertEqual([name for name in sorted(expected_tests())
                          if not any(fnmatch.fnmatch(name, pattern) for pattern in self.patterns)], [])

    def test_every_named_test_exists(self):
        self.assertTrue(self.patterns)
        self.assertEqual([pattern for pattern in sorted(self.patterns) if not fnmatch.filter(expected_tests(), pattern)], [])


if __name__ == "__main__":
    unittest.main()
