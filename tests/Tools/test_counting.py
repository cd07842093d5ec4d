#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""./test counts a failed check as failed."""

import pathlib
import re
import subprocess
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parent.parent.parent / "test"


class Counting(unittest.TestCase):
    def test_checks_are_counted_by_their_status(self):
        functions = re.findall(r"^(?:stage|count)\(\) \{\n.*?^\}\n", SCRIPT.read_text("utf-8"), re.DOTALL | re.MULTILINE)
        self.assertEqual(len(functions), 2)
        commands = "set -euo pipefail\npassed=0 failed=0 stages=()\n" + "".join(functions)
        commands += 'count "broken" false\ncount "whole" true\necho "$passed $failed ${#stages[@]}"\n'
        done = subprocess.run(["bash", "-c", commands], capture_output=True, text=True, timeout=20, check=True)
        self.assertEqual(done.stdout.splitlines()[-1], "1 1 2")
        self.assertIn("FAILED: broken", done.stdout)


if __name__ == "__main__":
    unittest.main()
