#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Installing, upgrading, downgrading and removing, in a home directory with an odd name."""

import fcntl
import os
import pty
import re
import shutil
import subprocess
import unittest

from gi.repository import GLib

from tree import APPLICATION, HomeCase, end

_SHARED = (f"applications/{APPLICATION}.desktop", f"dbus-1/services/{APPLICATION}.service",
           "icons/hicolor/scalable/apps/orvanebreak.svg", "icons/hicolor/symbolic/apps/orvanebreak-symbolic.svg")


def commands_of_desktop_entry(path):
    """The command lines of a desktop entry and its actions, as a desktop reads them."""
    entry = GLib.KeyFile()
    entry.load_from_file(str(path), GLib.KeyFileFlags.NONE)
    groups = [group for group in entry.get_groups()[0] if "Exec" in entry.get_keys(group)[0]]
    texts = [entry.get_string(group, "Exec") for group in groups]
    return [GLib.shell_parse_argv(re.sub("%(.)", lambda code: {"%": "%"}.get(code[1], ""), text))[1] for text in texts]


class Installation(HomeCase):
    def assert_installed(self, version):
        self.assertEqual(os.readlink(self.root / "current"), "versions/" + version)
        for name in ("bin/orvanebreak", "bin/orvanebreak-program", "lib", "share", "install", "uninstall"):
            self.assertTrue((self.root / "current" / name).exists(), name)
        for path in _SHARED:
            self.assertTrue((self.data / path).is_file(), path)
        left = [path for path in self.below_home() if path.endswith((".new", ".old"))]
        self.assertEqual(left, [])

    def test_first_time(self):
        result = self.install("1.0")
        self.assert_installed("1.0")
        self.assertIn(f"OrvaneBreak 1.0 est installé dans {self.root}/versions/1.0.", result.stdout)
        self.assertEqual(result.stderr, "")
        self.assertFalse(os.path.lexists(self.root / "previous"))

    def test_command_lines_lead_through_current(self):
        self.install("1.0")
        start = str(self.root / "current/bin/orvanebreak")
        self.assertEqual(commands_of_desktop_entry(self.data / _SHARED[0]), [[start], [start, "--break-now"]])
        service = GLib.KeyFile()
        service.load_from_file(str(self.data / _SHARED[1]), GLib.KeyFileFlags.NONE)
        self.assertEqual(service.get_string("D-BUS Service", "Name"), APPLICATION)
        self.assertEqual(GLib.shell_parse_argv(service.get_string("D-BUS Service", "Exec"))[1], [start])
        self.assertEqual(os.readlink(self.home / ".local/bin/orvanebreak"), start)

    def test_message_bus_starts_it(self):
        self.install("1.0")
        bus = ("dbus-run-session", "--", "dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/",
               "org.freedesktop.DBus.StartServiceByName", "string:" + APPLICATION, "uint32:0")
        # The bus does not wait for a failing service. Without the variable it would look in the account's home directory.
        self.plan("1.0", "exit 1")
        self.run_in_home(*bus, XDG_DATA_HOME=str(self.data))
        self.assertEqual(self.log(), [("1.0",)])

    def test_data_folder_of_the_desktop(self):
        self.data = self.home / "données"
        self.install("1.0", XDG_DATA_HOME=str(self.data))
        self.assert_installed("1.0")
        self.assertFalse((self.home / ".local/share").exists())

    def test_twice(self):
        self.install("1.0")
        (self.root / "versions/1.0/bin/orvanebreak-program").write_text("damaged")
        first = self.below_home()
        shutil.rmtree(self.scratch / "téléchargé 1.0")
        self.install("1.0")
        self.assert_installed("1.0")
        self.assertIn(b"version=1.0", (self.root / "versions/1.0/bin/orvanebreak-program").read_bytes())
        self.assertEqual(set(self.below_home()), set(first))
        before = self.below_home()
        result = self.run_in_home(self.root / "current/install")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertEqual(self.below_home(), before)

    def test_repair_that_is_interrupted_anywhere(self):
        """Every program that the script calls is once the last one."""
        tools = self.scratch / "tools"
        tools.mkdir()
        for name in ("cp", "ln", "mv", "rm", "mkdir", "sync", "chmod", "touch"):
            (tools / name).write_text(f"""#!/bin/sh
calls=$(($(cat "$HOME/calls") + 1))
echo $calls >"$HOME/calls"
[ $calls -ne $LAST_CALL ] || {{ kill -KILL $PPID; exit 1; }}
exec /usr/bin/{name} "$@"
""")
            (tools / name).chmod(0o755)
        self.install("1.0")
        whole = self.scratch / "téléchargé 1.0/OrvaneBreak-1.0"
        program = self.root / "current/bin/orvanebreak-program"
        last, calls = 0, 1
        while calls > last:
            last += 1
            (self.home / "calls").write_text("0")
            program.write_text("damaged")
            result = self.run_in_home(whole / "install", PATH=f"{tools}:{os.environ['PATH']}", LAST_CALL=str(last))
            calls = int((self.home / "calls").read_text()) if result.returncode == 0 else last + 1
            self.assertTrue(program.exists() and (self.root / "current/install").exists(), last)
            self.assertEqual(self.run_in_home(whole / "install").returncode, 0)
            self.assert_installed("1.0")
            self.assertIn(b"version=1.0", program.read_bytes())
            self.assertEqual(os.listdir(self.root / "versions"), ["1.0"])
        self.assertGreater(last, 15)

    def test_waits_for_a_program_that_is_installing(self):
        self.install("1.0")
        newer = self.unpacked("1.1")
        with open(self.root / ".lock", "a") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            process = subprocess.Popen([newer / "install"], env=self.environment(), stdout=subprocess.DEVNULL)
            self.addCleanup(end, process)
            with self.assertRaises(subprocess.TimeoutExpired):
                process.wait(1)
            self.assertEqual(os.readlink(self.root / "current"), "versions/1.0")
        self.assertEqual(process.wait(20), 0)
        self.assert_installed("1.1")

    def test_upgrade(self):
        self.install("1.9")
        (self.root / "trial").write_text("1.9\n")
        result = self.install("1.10")
        self.assert_installed("1.10")
        self.assertIn("La version 1.9 reste à côté.", result.stdout)
        self.assertEqual(os.readlink(self.root / "previous"), "versions/1.9")
        self.assertTrue((self.root / "versions/1.9/bin/orvanebreak").exists())
        self.assertFalse((self.root / "trial").exists())

    def test_downgrade(self):
        self.install("1.10")
        before = self.below_home()
        older = self.unpacked("1.9")
        result = self.run_in_home(older / "install")
        self.assertEqual((result.returncode, result.stdout), (1, ""))
        self.assertIn("La version 1.10, plus récente que 1.9, est installée", result.stderr)
        self.assertEqual(self.below_home(), before)
        self.assertEqual(self.run_in_home(older / "install", "--force").returncode, 0)
        self.assert_installed("1.9")

    def test_foreign_command_is_kept(self):
        command = self.home / ".local/bin/orvanebreak"
        command.parent.mkdir(parents=True)
        command.write_text("mine")
        self.assertIn("existe déjà et n’a pas été remplacé", self.install("1.0").stdout)
        self.assertEqual(command.read_text(), "mine")
        self.assertEqual(self.run_in_home(self.root / "current/uninstall").returncode, 0)
        self.assertEqual(command.read_text(), "mine")

    def test_without_a_folder_for_the_command(self):
        (self.home / ".local").mkdir()
        (self.home / ".local/bin").write_text("a file")
        self.assertIn("la commande orvanebreak n’a pas été créée", self.install("1.0").stdout)
        self.assert_installed("1.0")

    def test_read_only_part(self):
        for is_upgrade in (False, True):
            for name in (".local/share/applications", ".local/share/icons/hicolor/symbolic/apps", ".local/opt/OrvaneBreak",
                         ".local/opt/OrvaneBreak/versions"):
                with self.subTest(name, is_upgrade=is_upgrade):
                    self.setUp()
                    if is_upgrade:
                        self.install("1.0")
                    (self.home / name).mkdir(parents=True, exist_ok=True)
                    self.give_home_to_nobody()
                    (self.home / name).chmod(0o555)
                    before = self.below_home()
                    result = self.run_in_home(self.unpacked("2.0") / "install", is_stopped_by_modes=True)
                    self.assertEqual((result.returncode, result.stdout), (1, ""))
                    self.assertRegex(result.stderr, r"^Impossible d’écrire dans .*\u00a0: rien n’a été installé\.\n$")
                    self.assertEqual(self.below_home(), before)
                    if (self.home / name).exists():
                        (self.home / name).chmod(0o755)

    def test_folder_instead_of_a_file(self):
        (self.data / _SHARED[0]).mkdir(parents=True)
        self.assertEqual(self.run_in_home(self.unpacked("1.0") / "install").returncode, 1)
        self.assertEqual(self.below_home(), {})

    def test_something_in_the_way(self):
        (self.root / "current").mkdir(parents=True)
        result = self.run_in_home(self.unpacked("1.0") / "install")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(self.below_home(), {})

    def test_unknown_home(self):
        folder = self.unpacked("1.0")
        for home in ("", "relative", f"{self.scratch}/a\nb"):
            result = self.run_in_home(folder / "install", HOME=home)
            self.assertEqual((result.returncode, result.stdout), (1, ""), home)
            self.assertIn("rien n’a été fait", result.stderr)

    def test_unknown_argument(self):
        for name in ("install", "uninstall"):
            self.assertEqual(self.run_in_home(self.unpacked(f"1.{name}") / name, "--frob").returncode, 2)


class Removal(HomeCase):
    def setUp(self):
        super().setUp()
        self.mine = {".config/OrvaneBreak/preferences.json": b"{}"}
        other = {".config/autostart/other.desktop": b"other", ".local/share/applications/other.desktop": b"other",
                 ".local/opt/other/file": b"other"}
        ours = {f".config/autostart/{APPLICATION}.desktop": b"ours", ".local/share/OrvaneBreak/pending-crash.txt": b"ours",
                ".local/state/OrvaneBreak/Logs/DiagnosticReports/report.txt": b"ours",
                ".cache/OrvaneBreak/updates/2.0.part": b"ours"}
        for path, content in {**self.mine, **other, **ours}.items():
            (self.home / path).parent.mkdir(parents=True, exist_ok=True)
            (self.home / path).write_bytes(content)
        self.other = other
        self.install("1.0")
        self.install("2.0")

    def test_keeps_preferences_without_a_terminal(self):
        result = self.run_in_home(self.root / "current/uninstall")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertEqual(self.below_home(), {**self.other, **self.mine})
        self.assertIn("Les préférences restent", result.stdout)
        self.assertFalse(self.root.exists())

    def test_keeps_or_removes_preferences_as_told(self):
        for option, left in (("--keep-preferences", {**self.other, **self.mine}), ("--remove-preferences", self.other)):
            with self.subTest(option):
                self.setUp()
                self.assertEqual(self.run_in_home(self.root / "current/uninstall", option).returncode, 0)
                self.assertEqual(self.below_home(), left)

    def test_asks_on_a_terminal(self):
        for answer, left in (("\n", {**self.other, **self.mine}), ("n\n", self.other)):
            with self.subTest(answer):
                self.setUp()
                master, terminal = pty.openpty()
                os.write(master, answer.encode())
                result = subprocess.run([self.root / "current/uninstall"], env=self.environment(), stdin=terminal,
                                        capture_output=True, text=True, timeout=60)
                os.close(master)
                os.close(terminal)
                self.assertEqual(result.returncode, 0)
                self.assertIn("Garder les préférences", result.stdout)
                self.assertEqual(self.below_home(), left)

    def test_from_the_unpacked_archive_and_twice(self):
        folder = self.unpacked("3.0")
        for _ in range(2):
            self.assertEqual(self.run_in_home(folder / "uninstall", "--remove-preferences").returncode, 0)
            self.assertEqual(self.below_home(), self.other)

    def test_reports_what_remains(self):
        self.give_home_to_nobody()
        (self.data / "applications").chmod(0o555)
        result = self.run_in_home(self.root / "current/uninstall", is_stopped_by_modes=True)
        self.assertEqual(result.returncode, 1)
        self.assertIn(str(self.data / _SHARED[0]), result.stderr)
        self.assertFalse(self.root.exists())


if __name__ == "__main__":
    unittest.main()
