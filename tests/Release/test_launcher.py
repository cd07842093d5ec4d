#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The launcher: normal starts, the first start of an update, and the rollback of a failing update."""

import os
import signal
import subprocess
import unittest

from tree import HomeCase, end

_ARGUMENTS = ("--break-now", "deux mots", "", "*", "l'été \"$HOME\" \\")


class Launcher(HomeCase):
    def start(self, path=None, **changes):
        return self.run_in_home(path or self.root / "current/bin/orvanebreak", *_ARGUMENTS, **changes)

    def put_on_trial(self, version="2.0"):
        """The state after an update: 2.0 on trial, 1.0 as the previous version."""
        self.install("1.0")
        self.install("2.0")
        (self.root / "trial").write_text(version + "\n")

    def current(self):
        return os.readlink(self.root / "current")

    def test_every_start(self):
        self.install("1.0")
        self.plan("1.0", "exit 7")
        self.assertEqual(self.start().returncode, 7)
        self.assertEqual(self.log(), [("1.0", *_ARGUMENTS)])
        self.assertEqual(self.current(), "versions/1.0")

    def test_by_the_command_in_the_home(self):
        self.install("1.0")
        self.assertEqual(self.start(self.home / ".local/bin/orvanebreak").returncode, 0)
        self.assertEqual(self.log(), [("1.0", *_ARGUMENTS)])

    def test_without_any_installation(self):
        self.assertEqual(self.start(self.unpacked("1.0") / "bin/orvanebreak").returncode, 0)
        self.assertEqual(self.log(), [("1.0", *_ARGUMENTS)])

    def test_ignores_plug_ins_of_another_qt(self):
        self.install("1.0")
        self.plan("1.0", 'echo "${QT_PLUGIN_PATH-none} ${QT_QPA_PLATFORM_PLUGIN_PATH-none} $QT_QPA_PLATFORM"')
        result = self.start(QT_PLUGIN_PATH="/odd", QT_QPA_PLATFORM_PLUGIN_PATH="/odd", QT_QPA_PLATFORM="xcb")
        self.assertEqual(result.stdout, "none none xcb\n")

    def test_executes_the_program_directly_without_a_trial(self):
        self.install("1.0")
        self.plan("1.0", "echo $$; exec sleep 60")
        process = subprocess.Popen([self.root / "current/bin/orvanebreak"], env=self.environment(),
                                   stdout=subprocess.PIPE, text=True)
        self.addCleanup(process.stdout.close)
        self.addCleanup(end, process)
        self.assertEqual(int(process.stdout.readline()), process.pid)

    def test_update_that_works(self):
        self.put_on_trial()
        self.plan("2.0", 'rm "$HOME/.local/opt/OrvaneBreak/trial"; exit 5')
        self.assertEqual(self.start().returncode, 5)
        self.assertEqual(self.log(), [("2.0", *_ARGUMENTS)])
        self.assertEqual(self.current(), "versions/2.0")

    def test_update_that_exits_normally_on_trial(self):
        self.put_on_trial()
        self.assertEqual(self.start().returncode, 0)
        self.assertEqual(self.current(), "versions/2.0")
        self.assertTrue((self.root / "trial").exists())

    def test_update_that_fails(self):
        for plan in ("exit 1", "kill -KILL $$", "kill -SEGV $$"):
            with self.subTest(plan):
                self.setUp()
                self.put_on_trial()
                self.plan("2.0", plan)
                self.plan("1.0", "exit 3")
                self.assertEqual(self.start().returncode, 3)
                self.assertEqual(self.log(), [("2.0", *_ARGUMENTS), ("1.0", *_ARGUMENTS)])
                self.assertEqual(self.current(), "versions/1.0")
                self.assertFalse((self.root / "trial").exists())

    def test_update_that_cannot_be_started_at_all(self):
        self.put_on_trial()
        (self.root / "versions/2.0/bin/orvanebreak-program").unlink()
        self.assertEqual(self.start().returncode, 0)
        self.assertEqual(self.log(), [("1.0", *_ARGUMENTS)])

    def test_trial_of_another_version(self):
        for named in ("1.0", "", "2.0.1", "../2.0"):
            with self.subTest(named):
                self.setUp()
                self.put_on_trial(named)
                self.plan("2.0", "exit 1")
                self.assertEqual(self.start().returncode, 1)
                self.assertEqual(self.log(), [("2.0", *_ARGUMENTS)])
                self.assertEqual(self.current(), "versions/2.0")

    def test_no_previous_version(self):
        self.put_on_trial()
        self.plan("2.0", "exit 1")
        for target in (None, "versions/0.9", "versions/2.0"):
            with self.subTest(target):
                (self.root / "previous").unlink()
                if target:
                    (self.root / "previous").symlink_to(target)
                else:
                    (self.root / "previous").mkdir()
                starts = len(self.log())
                self.assertEqual(self.start().returncode, 1)
                self.assertEqual(len(self.log()), starts + 1)
                self.assertEqual(self.current(), "versions/2.0")
                if not target:
                    (self.root / "previous").rmdir()
                    (self.root / "previous").touch()

    def test_stays_within_one_version(self):
        self.put_on_trial()
        self.plan("2.0", 'cd "$HOME/.local/opt/OrvaneBreak" && rm trial && ln -sfn versions/1.0 current; exit 1')
        self.assertEqual(self.start().returncode, 1)
        self.assertEqual(self.log(), [("2.0", *_ARGUMENTS)])

    def test_signals_reach_a_program_on_trial(self):
        for name, passed_on in (("TERM", "TERM"), ("INT", "TERM"), ("HUP", "HUP")):
            for plan, status in ((f"trap 'exit 4' {passed_on}", 4), (f"trap 'exit 0' {passed_on}", 0)):
                with self.subTest(name + plan):
                    self.setUp()
                    self.put_on_trial()
                    self.plan("2.0", plan + "; echo ready; while :; do read line || sleep 0.05; done")
                    self.assertEqual(self.status_after(name), status)
                    self.assertEqual(self.log(), [("2.0",)])
                    self.assertEqual(self.current(), "versions/2.0")

    def test_program_that_goes_on_after_a_signal(self):
        self.put_on_trial()
        self.plan("2.0", "trap 'echo once; trap - TERM' TERM; echo ready; for i in 1 2 3 4; do sleep 0.1; done; exit 6")
        self.assertEqual(self.status_after("TERM"), 6)

    def status_after(self, name):
        process = subprocess.Popen([self.root / "current/bin/orvanebreak"], env=self.environment(),
                                   stdout=subprocess.PIPE, text=True, start_new_session=True)
        self.addCleanup(process.stdout.close)
        self.addCleanup(end, process)
        self.assertEqual(process.stdout.readline(), "ready\n")
        process.send_signal(getattr(signal, "SIG" + name))
        return process.wait(20)


if __name__ == "__main__":
    unittest.main()
