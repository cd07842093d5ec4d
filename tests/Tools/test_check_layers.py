#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""tools/check-layers on this tree, and on small trees that it must refuse."""

import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
_TABLE = "| `Top` | `OrvaneTop` | Bottom | x |\n| `Bottom` | `OrvaneBottom` | - | x |\n"
_PICTURE = "<title>Top uses Bottom</title>"


def complaints_about(root):
    return subprocess.run([ROOT / "tools/check-layers", root], capture_output=True, text=True, check=False)


class ThisTree(unittest.TestCase):
    def test_is_as_it_says(self):
        result = complaints_about(ROOT)
        self.assertEqual((result.returncode, result.stderr), (0, ""))


class SmallTrees(unittest.TestCase):
    def setUp(self):
        self.root = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.root)
        self.write("OrvaneBreak/Top/CMakeLists.txt", "orvane_add_library(OrvaneTop SOURCES Top.cpp PRIVATE OrvaneBottom)")
        self.write("OrvaneBreak/Top/Top.cpp", '#include "Bottom.h"\n#include "Top.moc"\n')
        self.write("OrvaneBreakCore/Bottom/CMakeLists.txt", "orvane_add_library(OrvaneBottom SOURCES Bottom.cpp PUBLIC Qt6::Core)")
        self.write("OrvaneBreakCore/Bottom/Bottom.h", "#include <QObject>\n")
        self.write("docs/architecture.md", _TABLE)
        self.write("docs/architecture.svg", _PICTURE)

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, "utf-8")

    def assert_refused(self, words):
        result = complaints_about(self.root)
        self.assertEqual(result.returncode, 1)
        self.assertIn(words, result.stderr)

    def test_a_sound_one_passes(self):
        result = complaints_about(self.root)
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_an_arrow_upwards(self):
        self.write("OrvaneBreak/Top/Top.h", "")
        self.write("OrvaneBreakCore/Bottom/Bottom.cpp", '#include "Top.h"\n')
        self.write("OrvaneBreakCore/Bottom/CMakeLists.txt", "orvane_add_library(OrvaneBottom SOURCES Bottom.cpp PRIVATE OrvaneTop)")
        self.write("docs/architecture.md", _TABLE.replace("| - |", "| Top |"))
        self.assert_refused("Bottom uses Top, which stands above it")

    def test_a_library_that_is_not_named(self):
        self.write("OrvaneBreak/Top/CMakeLists.txt", "orvane_add_library(OrvaneTop SOURCES Top.cpp)")
        self.assert_refused("Top: PRIVATE lacks OrvaneBottom")

    def test_a_library_of_a_header_is_public(self):
        self.write("OrvaneBreak/Top/Top.h", '#include "Bottom.h"\n')
        self.assert_refused("Top: PUBLIC lacks OrvaneBottom")

    def test_a_library_that_nothing_needs(self):
        self.write("OrvaneBreak/Top/Top.cpp", "")
        self.assert_refused("Top: PRIVATE names OrvaneBottom, which nothing here needs there")

    def test_a_header_by_its_path(self):
        self.write("OrvaneBreak/Top/Top.cpp", '#include "Bottom/Bottom.h"\n')
        self.assert_refused("Top/Top.cpp: no folder has the header Bottom/Bottom.h")

    def test_two_headers_of_one_name(self):
        self.write("OrvaneBreak/Top/Bottom.h", "")
        self.assert_refused("has a header of this name, too")

    def test_another_table(self):
        self.write("docs/architecture.md", _TABLE.replace("| Bottom |", "| - |"))
        self.assert_refused("docs/architecture.md: Top uses: Bottom")

    def test_a_row_that_is_missing(self):
        self.write("docs/architecture.md", _TABLE.splitlines()[0])
        self.assert_refused("docs/architecture.md: no row for Bottom")

    def test_another_picture(self):
        self.write("docs/architecture.svg", "<title>Bottom uses Top</title>")
        self.assert_refused("docs/architecture.svg: draws: Bottom uses Top")
        self.assert_refused("docs/architecture.svg: lacks: Top uses Bottom")


if __name__ == "__main__":
    unittest.main()
