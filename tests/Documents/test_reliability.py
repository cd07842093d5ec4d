#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Every fault in docs/reliability.md and every attack in docs/update-security.md has tests that exist.

usage: test_reliability.py CTEST BUILD-FOLDER"""

import functools
import re
import subprocess
import sys
import unittest

from documents import ROOT

CTEST = BUILD_FOLDER = None


def rows():
    """The cells of each table row about a fault."""
    lines = (ROOT / "docs" / "reliability.md").read_text("utf-8").splitlines()
    cells = [[cell.strip() for cell in line.strip("|").split("|")] for line in lines if line.startswith("| ")]
    return [row for row in cells[1:] if not row[0].startswith("**")] + attacks()


def attacks():
    """The cells of each row of the table of attacks."""
    text = (ROOT / "docs" / "update-security.md").read_text("utf-8")
    lines = [line for line in text.split("## The attacks")[1].split("\n## ")[0].splitlines() if line.startswith("| ")]
    return [[cell.strip() for cell in line.strip("|").split("|")] for line in lines[1:]]


@functools.cache
def sources_of(test):
    """The source text that defines the cases of a test: its own C++ file, or all Python files."""
    own = list((ROOT / "tests").rglob(f"{test}.cpp"))
    return "".join(path.read_text("utf-8") for path in own or (ROOT / "tests").rglob("*.py"))


class Faults(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        listed = subprocess.run([CTEST, "--test-dir", BUILD_FOLDER, "-N"], capture_output=True, text=True, check=True)
        cls.tests = set(re.findall(r"Test +#\d+: (\S+)", listed.stdout))

    def test_there_are_rows(self):
        self.assertGreater(len(rows()), 20)
        self.assertGreater(len(attacks()), 8)

    def test_every_fault_has_tests_that_exist(self):
        for fault, seen, column in rows():
            named = re.findall(r"`([^`]+)`", column)
            with self.subTest(fault=fault):
                self.assertTrue(seen and named)
            for name in named:
                with self.subTest(fault=fault, test=name):
                    test, _, part = name.partition("::")
                    self.assertIn(test, self.tests)
                    if part:
                        self.assertRegex(sources_of(test), rf"\b(void|def) {re.escape(part)}\(")


if __name__ == "__main__":
    CTEST, BUILD_FOLDER = sys.argv[1:]
    unittest.main(argv=sys.argv[:1])
