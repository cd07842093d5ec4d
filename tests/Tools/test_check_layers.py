#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""tools/check-layers accepts this tree and refuses small trees with one mistake each."""

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
    def test_is_accepted(self):
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

    def test_a_correct_one_is_accepted(self):
        result = complaints_about(self.root)
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_an_upward_dependency(self):
        self.write("OrvaneBreak/Top/Top.h", "")
        self.write("OrvaneBreakCore/Bottom/Bottom.cpp", '#include "Top.h"\n')
        self.write("OrvaneBreakCore/Bottom/CMakeLists.txt", "orvane_add_library(OrvaneBottom SOURCES Bottom.cpp PRIVATE OrvaneTop)")
        self.write("docs/architecture.md", _TABLE.replace("| - |", "| Top |"))
        self.assert_refused("Bottom uses Top, which is above it")

    def test_one_wrong_file(self):
        for file, text, *complaints in (
                ("OrvaneBreak/Top/CMakeLists.txt", "orvane_add_library(OrvaneTop SOURCES Top.cpp)", "Top: PRIVATE lacks OrvaneBottom"),
                ("OrvaneBreak/Top/Top.h", '#include "Bottom.h"\n', "Top: PUBLIC lacks OrvaneBottom"),
                ("OrvaneBreak/Top/Top.cpp", "", "Top: PRIVATE names OrvaneBottom without need"),
                ("OrvaneBreak/Top/Top.cpp", '#include "Bottom/Bottom.h"\n', "Top/Top.cpp: no folder has the header Bottom/Bottom.h"),
                ("OrvaneBreak/Top/Bottom.h", "", "also has a header of this name"),
                ("docs/architecture.md", _TABLE.replace("| Bottom |", "| - |"), "docs/architecture.md: Top uses: Bottom"),
                ("docs/architecture.md", _TABLE.splitlines()[0], "docs/architecture.md: no row for Bottom"),
                ("docs/architecture.svg", "<title>Bottom uses Top</title>", "docs/architecture.svg: draws: Bottom uses Top",
                 "docs/architecture.svg: lacks: Top uses Bottom")):
            with self.subTest(complaints=complaints):
                self.setUp()
                self.write(file, text)
                for complaint in complaints:
                    self.assert_refused(complaint)


if __name__ == "__main__":
    unittest.main()
