# SPDX-License-Identifier: GPL-3.0-or-later
"""Breaks and the screen lockers of Wayland desktops."""

from driver.bed import NotPossibleHere
from driver.waiting import comes_true, stays_true, wait_until
from driver.wayland_locker import LOCKERS, WaylandLocker

from .desk import BREAK_NOW


def lockers(desk, report):
    """Screen lockers before and during a break."""
    for name in LOCKERS:
        texts = (f"no break appears above {name}", f"{name} takes the password while a break is on",
                 f"{name} covers a break", f"a break is shown again after {name}")
        try:
            desk.bed.require_lock_protocol()
            _locked_before(desk, report, name, texts)
            _locked_during(desk, report, name, texts)
        except NotPossibleHere as reason:
            for text in texts:
                report.not_possible(text, reason)


def _locked_before(desk, report, name, texts):
    locker = WaylandLocker(desk.bed, name)
    wait_until(locker.covers, f"the lock screen of {name}")
    desk.tray.click(BREAK_NOW)
    report.promise(texts[0], stays_true(locker.covers, 2))
    _unlock(desk, report, locker, texts)
    desk.clean_up(program_runs=True)


def _locked_during(desk, report, name, texts):
    desk.begin_break()
    locker = WaylandLocker(desk.bed, name)
    report.promise(texts[2], comes_true(locker.covers, 3) and stays_true(locker.covers, 1))
    _unlock(desk, report, locker, texts)


def _unlock(desk, report, locker, texts):
    locker.type_password()
    if not report.promise(texts[1], comes_true(locker.is_unlocked, 5)):
        desk.stop_program()
        locker.type_password()
        wait_until(locker.is_unlocked, "the unlock after the program has ended")
    desk.clean_up(program_runs=True)
    desk.begin_break()
    desk.bed.press("Escape")
    report.promise(texts[3], comes_true(lambda: not desk.overlays(), 2))
