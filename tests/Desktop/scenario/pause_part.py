# SPDX-License-Identifier: GPL-3.0-or-later
"""Breaks in a locked session and in a stopped program."""

import os
import signal
import time

from driver.lock_screen import LockScreen
from driver.waiting import comes_true, stays_true

from .desk import BREAK_NOW

_BREAK_SECONDS = 20


def locked(desk, report):
    """A locked session."""
    other = desk.other_window()
    lock = LockScreen(desk.bed)
    desk.begin_break()
    lock.set_locked(True)
    report.promise("a break ends when the session is locked", comes_true(lambda: not desk.overlays(), 2))
    report.promise("only the lock screen has the keyboard",
                   comes_true(lambda: desk.probe.state()["focus"] == other.identifier, 2))
    desk.stop_program()
    desk.start_with_tray()
    lock.set_locked(True)
    desk.tray.click(BREAK_NOW)
    report.promise("no break appears above a lock screen", stays_true(lambda: not desk.overlays(), 1))
    lock.set_locked(False)
    lock.stop()
    desk.stop_program()
    desk.start_with_tray()
    desk.begin_break()
    report.promise("breaks are shown again after the session was unlocked", desk.overlays())
    desk.end_break()


def stopped(desk, report):
    """The program is stopped during a break and continued after its end."""
    desk.other_window()
    desk.begin_break()
    began = time.monotonic()
    os.kill(desk.process.pid, signal.SIGSTOP)
    comes_true(lambda: time.monotonic() - began > _BREAK_SECONDS + 1, _BREAK_SECONDS + 5)
    os.kill(desk.process.pid, signal.SIGCONT)
    report.promise("a break that ended while the program was stopped is closed within a second",
                   comes_true(lambda: not desk.overlays(), 1))
    report.promise("the keyboard is back after the program was stopped",
                   comes_true(lambda: desk.probe.state()["focus"] not in (0, 1), 2))
    report.promise("silent after it was stopped", not desk.said(), desk.said())
