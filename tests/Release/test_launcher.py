#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The launcher: normal starts, the first start of an update, and the rollback of a failing update."""

import os
import signal
import subprocess
import unittest

from tree import APPLICATION, HomeCase, end

_ARGUMENTS = ("--break-now", "deux mots", "", "*", "l'été \"$HOME\" \\")

_START = ("--break-now",)


class Launcher(HomeCase):
    def start(self, *arguments, path=None, **changes):
        return self.run_in_home(path or self.root / "current/bin/orvanebreak", *arguments, **changes)

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
        self.assertEqual(self.start(*_ARGUMENTS).returncode, 7)
        self.assertEqual(self.log(), [("1.0", *_ARGUMENTS)])
        self.assertEqual(self.current(), "versions/1.0")

    def test_by_the_command_in_the_home(self):
        self.install("1.0")
        self.assertEqual(self.start(*_ARGUMENTS, path=self.home / ".local/bin/orvanebreak").returncode, 0)
        self.assertEqual(self.log(), [("1.0", *_ARGUMENTS)])

    def test_without_any_installation(self):
        self.assertEqual(self.start(*_ARGUMENTS, path=self.unpacked("1.0") / "bin/orvanebreak").returncode, 0)
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

    def works(self):
        """What the program does once it works."""
        return 'rm "$HOME/.local/opt/OrvaneBreak/trial"; '

    def starts_of_trial(self):
        return (self.root / "trial").read_text().splitlines()

    def test_update_that_works(self):
        self.put_on_trial()
        self.plan("2.0", self.works() + "exit 5")
        self.assertEqual(self.start(*_START).returncode, 5)
        self.assertEqual(self.log(), [("2.0", *_START)])
        self.assertEqual(self.current(), "versions/2.0")

    def test_update_that_ends_twice_without_having_worked(self):
        for plan in ("exit 0", "exit 1", "kill -KILL $$", "kill -SEGV $$"):
            with self.subTest(plan):
                self.setUp()
                self.put_on_trial()
                self.plan("2.0", plan)
                self.plan("1.0", "exit 3")
                self.assertEqual(self.start(*_START).returncode, 3)
                self.assertEqual(self.log(), [("2.0", *_START), ("2.0", *_START), ("1.0", *_START)])
                self.assertEqual(self.current(), "versions/1.0")
                self.assertFalse((self.root / "trial").exists())
                self.assertEqual((self.root / "failed").read_text().splitlines()[0], "2.0")

    def test_update_that_works_the_second_time(self):
        self.put_on_trial()
        self.plan("2.0", f'[ "$(wc -l <"$HOME/log")" -eq 1 ] && exit 1; {self.works()} exit 4')
        self.assertEqual(self.start(*_START).returncode, 4)
        self.assertEqual(self.current(), "versions/2.0")
        self.assertFalse((self.root / "failed").exists())

    def test_update_that_hangs(self):
        self.put_on_trial()
        self.plan("2.0", "echo ready; sleep 60")
        for starts in ("1", "2"):
            process = self.start_in_background()
            self.assertEqual(self.starts_of_trial(), ["2.0", starts])
            os.killpg(process.pid, signal.SIGKILL)
            process.wait(10)
        self.assertEqual(self.start().returncode, 0)
        self.assertEqual([line[0] for line in self.log()], ["2.0", "2.0", "1.0"])

    def test_what_the_user_does_is_no_verdict(self):
        self.put_on_trial()
        self.plan("2.0", "exit 2")
        for _ in range(3):
            self.assertEqual(self.start("--nonsense").returncode, 2)
        self.assertEqual(self.current(), "versions/2.0")
        self.assertEqual(self.starts_of_trial(), ["2.0"])

    def test_start_that_the_program_takes_back(self):
        self.put_on_trial()
        self.plan("2.0", 'printf "2.0\\n0\\n" >"$HOME/.local/opt/OrvaneBreak/trial"; exit 1')
        for _ in range(3):
            self.assertEqual(self.start(*_START).returncode, 1)
        self.assertEqual([line[0] for line in self.log()], ["2.0"] * 3)
        self.assertEqual(self.current(), "versions/2.0")

    def test_update_that_cannot_be_started_at_all(self):
        self.put_on_trial()
        (self.root / "versions/2.0/bin/orvanebreak-program").unlink()
        self.assertEqual(self.start(*_START).returncode, 0)
        self.assertEqual(self.log(), [("1.0", *_START)])

    def test_damaged_trial(self):
        for starts in ("", "x", "-1", "99999999999999999999", "2; exit 9"):
            with self.subTest(starts):
                self.setUp()
                self.put_on_trial(f"2.0\n{starts}")
                self.plan("2.0", self.works())
                self.assertEqual(self.start().returncode, 0)
                self.assertEqual(self.log(), [("2.0",)])

    def test_trial_of_another_version(self):
        for named in ("1.0", "", "2.0.1", "../2.0"):
            with self.subTest(named):
                self.setUp()
                self.put_on_trial(named)
                self.plan("2.0", "exit 1")
                self.assertEqual(self.start(*_START).returncode, 1)
                self.assertEqual(self.log(), [("2.0", *_START)])
                self.assertEqual(self.current(), "versions/2.0")

    def test_menu_entry_and_icons_are_renewed(self):
        self.put_on_trial()
        entry, icon = (self.data / path for path in (f"applications/{APPLICATION}.desktop",
                                                     "icons/hicolor/scalable/apps/orvanebreak.svg"))
        new = entry.read_text()
        entry.write_text("old")
        icon.unlink()
        self.plan("2.0", self.works())
        self.start()
        self.assertEqual(entry.read_text(), new)
        self.assertFalse(icon.exists(), "what the user has removed comes back")

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
                (self.root / "trial").write_text("2.0\n2\n")
                starts = len(self.log())
                self.assertEqual(self.start(*_START).returncode, 1)
                self.assertEqual(len(self.log()), starts + 1)
                self.assertEqual(self.current(), "versions/2.0")
                if not target:
                    (self.root / "previous").rmdir()
                    (self.root / "previous").touch()

    def test_stays_within_one_version(self):
        self.put_on_trial()
        self.plan("2.0", 'cd "$HOME/.local/opt/OrvaneBreak" && rm trial && ln -sfn versions/1.0 current; exit 1')
        self.assertEqual(self.start(*_START).returncode, 1)
        self.assertEqual(self.log(), [("2.0", *_START)])

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
                    self.assertEqual(self.starts_of_trial(), ["2.0", "0"])

    def test_program_that_goes_on_after_a_signal(self):
        self.put_on_trial()
        self.plan("2.0", "trap 'echo once; trap - TERM' TERM; echo ready; for i in 1 2 3 4; do sleep 0.1; done; exit 6")
        self.assertEqual(self.status_after("TERM"), 6)

    def status_after(self, name):
        process = self.start_in_background()
        process.send_signal(getattr(signal, "SIG" + name))
        return process.wait(20)

    def start_in_background(self):
        """Starts the current version, which has to print a line."""
        process = subprocess.Popen([self.root / "current/bin/orvanebreak"], env=self.environment(),
                                   stdout=subprocess.PIPE, text=True, start_new_session=True)
        self.addCleanup(process.stdout.close)
        self.addCleanup(end, process)
        self.assertEqual(process.stdout.readline(), "ready\n")
        return process


if __name__ == "__main__":
    unittest.main()
