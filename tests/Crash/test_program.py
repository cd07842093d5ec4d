#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The whole program crashes, restarts and sends the report to a real server, once.

usage: test_program.py PROGRAM MAKERS-SERVER CRASHER"""

import contextlib
import json
import os
import pathlib
import re
import resource
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import unittest

TESTS = pathlib.Path(__file__).resolve().parent.parent
sys.path += [str(TESTS / "MakersServer"), str(TESTS / "Desktop")]

from driver.waiting import wait_until  # noqa: E402
from makers_server import MakersServer  # noqa: E402

PROGRAM = MAKERS_SERVER = CRASHER = None
SIGNALS = [signal.SIGABRT, signal.SIGSEGV, signal.SIGILL, signal.SIGBUS, signal.SIGFPE, signal.SIGTRAP]
STRING = "std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >"
FRAME = re.compile(r"\d+ \S+ 0x[0-9a-f]+( \S+ \+ \d+)?")


def without_core_dump():
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


@contextlib.contextmanager
def silent_server():
    """The address of a server that accepts no connection, and refuses none."""
    with contextlib.ExitStack() as sockets:
        listener = sockets.enter_context(socket.create_server(("127.0.0.1", 0), backlog=0))
        sockets.enter_context(socket.create_connection(listener.getsockname()))
        yield "http://127.0.0.1:{}".format(listener.getsockname()[1])


class User:
    """A user with a home directory and a server for reports."""

    def __init__(self, home, server):
        self.home = pathlib.Path(home)
        self.server = server
        self.pending = self.home / "data/OrvaneBreak/pending-crash.txt"
        self.environment = {
            **os.environ, "HOME": home, "XDG_DATA_HOME": f"{home}/data", "XDG_CONFIG_HOME": f"{home}/config",
            "XDG_STATE_HOME": f"{home}/state", "USER": "anna", "ORVANE_TEST_SERVER": server.address,
            "ORVANE_TEST_PUBLIC_KEY": server.public_key}
        preferences = self.home / "config/OrvaneBreak/preferences.json"
        preferences.parent.mkdir(parents=True)
        preferences.write_text('{"OBOnboarded": true, "OBDeviceId": "ANNAS-DEVICE"}')

    def crash(self, kind, window="MainWindow", **variables):
        """Starts the program with a planned crash; returns its status."""
        done = subprocess.run([PROGRAM], env={**self.environment, "ORVANE_TEST_CRASH": kind, **variables,
                                              "ORVANE_TEST_CRASH_WINDOW": window},
                              stderr=subprocess.DEVNULL, timeout=30, check=False)
        return done.returncode

    def start_and_stop(self, reports):
        """Starts the program and ends it after its check-in, once the server has this many reports."""
        known = len(self.server.received("check-in"))
        with subprocess.Popen([PROGRAM], env=self.environment) as process:
            try:
                wait_until(lambda: len(self.server.received("check-in")) > known, "the check-in")
                wait_until(lambda: len(self.reports()) >= reports, "the reports")
            finally:
                process.terminate()
        if process.returncode != 0:
            raise AssertionError(f"the program ended with status {process.returncode}")

    def reports(self):
        return [json.loads(entry["body"]) for entry in self.server.received("crash")]


class Crashes(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        server = MakersServer(MAKERS_SERVER, folder.name + "/server")
        server.start()
        self.addCleanup(server.stop)
        self.user = User(folder.name + "/home", server)

    def check(self, kind, number, message, **options):
        with self.subTest(kind=kind, **options):
            already = len(self.user.reports())
            self.assertEqual(self.user.crash(kind, **options), -number)
            written = self.user.pending.read_text("utf-8")
            self.assertEqual(written.split("\n---\n")[0], message)
            self.user.start_and_stop(already + 1)
            self.assertFalse(self.user.pending.exists())
            new = self.user.reports()[already:]
            self.assertEqual(len(new), 1)
            self.assertEqual(sorted(new[0]), ["d", "kind", "message", "os", "stack", "v"])
            self.assertEqual((new[0]["d"], new[0]["kind"]), ("ANNAS-DEVICE", "crash"))
            self.assertEqual(new[0]["message"] + "\n---\n" + new[0]["stack"], written)
            lines = new[0]["stack"].split("\n")
            self.assertTrue(1 <= len(lines) <= 30 and all(FRAME.fullmatch(line) for line in lines), new[0]["stack"])
            self.user.start_and_stop(already + 1)
            self.assertEqual(len(self.user.reports()), already + 1)

    def test_each_signal_on_the_main_thread_and_on_another(self):
        for number in SIGNALS:
            self.check(f"signal {int(number)}", number, f"Signal {int(number)}")
            self.check(f"thread signal {int(number)}", number, f"Signal {int(number)}")

    def test_damage(self):
        self.check("overflow", signal.SIGSEGV, "Signal 11")
        self.check("thread overflow", signal.SIGSEGV, "Signal 11")
        self.check("bad free", signal.SIGABRT, "Signal 6")
        self.check("corrupt heap", signal.SIGABRT, "Signal 6")
        self.check("nowhere", signal.SIGSEGV, "Signal 11")
        self.check("after a child in the same memory", signal.SIGFPE, "Signal 8")

    def test_exceptions_across_the_event_loop(self):
        self.check("throw exception", signal.SIGABRT, "Exception: std::runtime_error : the disk is tired")
        self.check("throw string", signal.SIGABRT, f"Exception: {STRING} : a text")
        self.check("throw int", signal.SIGABRT, "Exception: int : ")
        self.check("throw Latin-1", signal.SIGABRT, "Exception: std::runtime_error : no file caf\ufffd")
        self.check("throw in thread", signal.SIGABRT, "Exception: std::runtime_error : elsewhere")

    def test_inside_a_break(self):
        self.check("signal 11", signal.SIGSEGV, "Signal 11", window="BreakOverlayPanel", ORVANE_DEBUG_BREAK="1")
        self.check("throw int", signal.SIGABRT, "Exception: int : ", window="BreakOverlayPanel",
                   ORVANE_DEBUG_BREAK="1")

    def test_at_every_start(self):
        numbers = [signal.SIGSEGV, signal.SIGFPE, signal.SIGABRT]
        for sent, number in enumerate(numbers):
            self.assertEqual(self.user.crash(f"signal {int(number)}"), -number)
            self.assertEqual(len(self.user.reports()), sent)
        self.user.start_and_stop(len(numbers))
        self.assertEqual([report["message"] for report in self.user.reports()], [f"Signal {int(number)}" for number in numbers])

    def test_at_the_start_before_the_report_has_left(self):
        self.user.crash("signal 11")
        # That process ran for an hour.
        status = self.user.pending.stat()
        os.utime(self.user.pending, (status.st_mtime - 3600, status.st_mtime))
        with silent_server() as address:
            self.user.crash("signal 8", ORVANE_TEST_SERVER=address)
        self.user.start_and_stop(2)
        self.assertEqual(sorted(report["message"] for report in self.user.reports()), ["Signal 11", "Signal 8"])
        self.user.start_and_stop(2)
        self.assertEqual(len(self.user.reports()), 2)

    def test_without_the_folder_that_it_created(self):
        with subprocess.Popen([PROGRAM], env=self.user.environment, preexec_fn=without_core_dump) as process:
            wait_until(lambda: self.user.server.received("check-in"), "the check-in")
            shutil.rmtree(self.user.home / "data")
            process.send_signal(signal.SIGSEGV)
        self.assertEqual(process.returncode, -signal.SIGSEGV)
        self.user.start_and_stop(1)

    def test_reports_of_the_system_are_sent_once(self):
        folder = self.user.home / "state/OrvaneBreak/Logs/DiagnosticReports"
        folder.mkdir(parents=True)
        (folder / "OrvaneBreak-1.crash").write_text("Process: 1\nException Type: SIGKILL\n" + "é" * 18_000)
        (folder / "Other-1.crash").write_text("Exception")
        for _ in range(2):
            self.user.start_and_stop(1)
        self.assertEqual([(report["message"], len(report["stack"])) for report in self.user.reports()],
                         [("Exception Type: SIGKILL", 18_000)])

    def test_an_unwritable_folder_loses_only_the_report(self):
        self.user.pending.parent.parent.mkdir()
        self.user.pending.parent.write_text("in the way")
        self.assertEqual(self.user.crash("signal 11"), -signal.SIGSEGV)
        self.user.start_and_stop(0)
        self.assertEqual(self.user.reports(), [])


class SourceLines(unittest.TestCase):
    def test_frames_of_the_program_become_source_lines(self):
        with tempfile.TemporaryDirectory() as folder:
            report = pathlib.Path(folder, "OrvaneBreak", "pending-crash.txt")
            subprocess.run([CRASHER, report, "bad free"], stderr=subprocess.DEVNULL, timeout=20, check=False)
            tool = TESTS.parent / "tools" / "where-it-crashed"
            lines = subprocess.run([tool, report, PROGRAM, CRASHER], timeout=60, stdout=subprocess.PIPE, text=True,
                                   check=True).stdout.splitlines()
            other = pathlib.Path(folder, "orvanebreak")
            other.symlink_to(PROGRAM)
            for files in ([PROGRAM], [other, CRASHER]):
                refused = subprocess.run([tool, report, *files], timeout=60, stdout=subprocess.PIPE,
                                         stderr=subprocess.PIPE, text=True, check=False)
                self.assertEqual((refused.returncode, refused.stdout), (1, ""), files)
        self.assertEqual(lines[:2], ["Signal 6", "---"])
        frame = next(line for line in lines if "freeWhatIsNotAllocated()" in line)
        self.assertRegex(frame, r"^\d+ orvanebreak 0x[0-9a-f]+ .*/tests/Crash/Crashes\.cpp:\d+$")
        self.assertTrue(any(re.match(r"    inlined into \S.* \S+:\d+$", line) for line in lines), lines)


if __name__ == "__main__":
    PROGRAM, MAKERS_SERVER, CRASHER = sys.argv[1:4]
    unittest.main(argv=sys.argv[:1] + sys.argv[4:])
