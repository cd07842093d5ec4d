#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Stops the program for ten seconds and for a minute, and prints which promises it keeps. The scenario mostly waits, so other
tests can run in parallel. Status 0: all kept; 1: one is broken."""

import os
import pathlib
import signal
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "Desktop"))

from driver.waiting import comes_true, wait_until  # noqa: E402
from driver.x11 import X11Bed  # noqa: E402
from scenario import command_line  # noqa: E402
from scenario.desk import SWITCH_OFF, SWITCH_ON, Desk  # noqa: E402
from scenario.promises import carry_out  # noqa: E402

_SHORT, _LONG = 10, 60
_BREAK_SECONDS = 20
#: How late an event may be on a busy machine, in seconds.
_LATE = 3


class StoppedProgram:
    """A program that is stopped with SIGSTOP from construction on."""

    def __init__(self, desk):
        self._desk = desk
        self._began = time.monotonic()
        os.kill(desk.process.pid, signal.SIGSTOP)

    def continue_after(self, seconds):
        """Continues it once it has been stopped for these seconds."""
        comes_true(lambda: time.monotonic() - self._began >= seconds, seconds + 1)
        os.kill(self._desk.process.pid, signal.SIGCONT)


def start_with_reminders(desk):
    desk.start_with_tray()
    desk.tray.click(SWITCH_ON)
    wait_until(lambda: desk.tray.labels()[0] == SWITCH_OFF, "active reminders")


def ten_seconds(desk, report):
    """The program is stopped for ten seconds, while it waits and during a break."""
    start_with_reminders(desk)
    stopped = StoppedProgram(desk)
    second = desk.bed.run([desk.program, "--break-now"], stderr=subprocess.PIPE, text=True)
    said = second.stderr.read().splitlines()
    report.promise("a second start says that the first does not answer", second.wait(_SHORT) != 0 and len(said) == 1, said)
    desk.bed.stop(second)
    stopped.continue_after(_SHORT)
    report.promise("the break that was requested meanwhile appears once on each screen",
                   comes_true(lambda: len(desk.overlays()) == len(desk.bed.outputs()), _LATE), desk.overlays())
    began = time.monotonic()
    comes_true(lambda: time.monotonic() - began > 2, 3)
    StoppedProgram(desk).continue_after(_SHORT)
    report.promise("a break stays on the screen when the program was stopped for ten seconds", desk.overlays())
    ended = comes_true(lambda: not desk.overlays(), _BREAK_SECONDS)
    length = time.monotonic() - began
    report.promise("the break still ends on time",
                   ended and abs(length - _BREAK_SECONDS) <= _LATE, f"{length:.1f} s")
    check_afterwards(desk, report)


def check_afterwards(desk, report):
    report.promise("reminders are on after a standstill", desk.tray.labels()[0] == SWITCH_OFF, desk.tray.labels())
    desk.begin_break()
    report.promise("breaks open and close after a standstill", comes_true(desk.overlays, 1))
    desk.end_break()
    report.promise("silent after a standstill", not desk.said(), desk.said())
    desk.stop_program()
    report.promise("it exits normally after a standstill", desk.process.returncode == 0, desk.process.returncode)


def a_minute(desk, report, stopped):
    """The program is stopped for a minute, beginning during a break."""
    stopped.continue_after(_LONG)
    report.promise("a break that is long overdue closes at once", comes_true(lambda: not desk.overlays(), _LATE))
    check_afterwards(desk, report)


def run(arguments, report):
    program, helpers = arguments.program.resolve(), arguments.helpers.resolve()
    with X11Bed() as first, X11Bed() as second:
        longer, shorter = Desk(first, program, helpers), Desk(second, program, helpers)
        start_with_reminders(longer)
        longer.begin_break()
        stopped = StoppedProgram(longer)
        report.run(ten_seconds, shorter, report)
        report.run(a_minute, longer, report, stopped)
    for bed in (first, second):
        report.promise("the desktops end with all their processes", not bed.leftovers(), bed.leftovers())


def main():
    arguments = command_line.read(__doc__, program="the executable")
    return carry_out("x11-standstills", lambda report: run(arguments, report), arguments.results)


if __name__ == "__main__":
    sys.exit(main())
