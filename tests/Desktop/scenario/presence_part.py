# SPDX-License-Identifier: GPL-3.0-or-later
"""Breaks while nobody is there: locked sessions and suspended machines."""

import time

from driver.lock_screen import LockScreen, MateScreensaver
from driver.screen_locker import LOCKERS, ScreenLocker
from driver.waiting import comes_true, stays_true, wait_until

from .desk import BREAK_NOW, SWITCH_OFF, SWITCH_ON

_MINUTE = 60
_INTERVAL = 10 * _MINUTE
_NIGHT = 8 * 60 * _MINUTE
#: How late a break may be that nobody waits for, in seconds.
_TOLERANCE = 15
_SECONDS_TO_NOTICE = 1


def _start_with_reminders(desk, clock):
    """Starts the program with stepped clocks and reminders every ten minutes."""
    if desk.process:
        desk.stop_program()
    desk.write_preferences(desk.bed.home / "config", OBIntervalMinutes=10)
    clock.reset()
    desk.start_program(clock.environment())
    wait_until(desk.tray.items, "the icon in the tray")
    desk.tray.click(SWITCH_ON)
    wait_until(lambda: desk.tray.labels()[0] == SWITCH_OFF, "active reminders")


def _shows_break(desk):
    """Whether a break is on every screen soon, with its title, ring and texts."""
    return comes_true(lambda: len(desk.overlays()) == len(desk.bed.outputs()) and all(desk.parts()), 3)


def lock_screen_dies(desk, report, clock):
    """A lock screen on the session bus that dies while it is active."""
    _start_with_reminders(desk, clock)
    lock = MateScreensaver(desk.bed)
    desk.tray.click(BREAK_NOW)
    report.promise("no break appears above a lock screen", stays_true(lambda: not desk.overlays(), 1))
    lock.kill()
    report.promise("a break appears when the lock screen has died during it", _shows_break(desk))
    desk.end_break()
    desk.begin_break()
    report.promise("the next break is shown after a lock screen has died", _shows_break(desk))
    desk.end_break()
    report.promise("silent when a lock screen dies", not desk.said(), desk.said())


def due_while_locked(desk, report, clock):
    """A break that becomes due while the session is locked."""
    _start_with_reminders(desk, clock)
    lock = LockScreen(desk.bed)
    lock.set_locked(True)
    # The signal and the clock reach the program on different ways.
    time.sleep(_SECONDS_TO_NOTICE)
    clock.set_forward(desk.process, _INTERVAL + _TOLERANCE)
    report.promise("a break that becomes due in a locked session is skipped", stays_true(lambda: not desk.overlays(), 1))
    lock.set_locked(False)
    report.promise("it is not made up for after the unlock", stays_true(lambda: not desk.overlays(), 1))
    _check_next_break(desk, report, clock, "the next break comes an interval after the skipped one")
    lock.stop()


def _check_next_break(desk, report, clock, text):
    """Checks that the next break comes a whole interval from now. The user is there."""
    desk.bed.click(1000, 40)
    clock.set_forward(desk.process, _INTERVAL - _MINUTE)
    is_early = comes_true(desk.overlays, 1)
    clock.set_forward(desk.process, _MINUTE + _TOLERANCE)
    report.promise(text, not is_early and _shows_break(desk))
    desk.end_break()


def screen_lockers(desk, report, clock):
    """Screen lockers that report to no bus."""
    for name in LOCKERS:
        _start_with_reminders(desk, clock)
        _locked_before(desk, report, name)
        _locked_during(desk, report, name)
        _due_behind(desk, report, clock, name)
        report.promise(f"silent with {name}", not desk.said(), desk.said())


def _lock(desk, name):
    locker = ScreenLocker(desk, name)
    wait_until(locker.covers, f"the window of {name}")
    return locker


def _unlock(desk, report, name, locker):
    locker.type_password()
    report.promise(f"{name} takes the password while a break is on", comes_true(locker.is_unlocked, 5))
    locker.stop()


def _locked_before(desk, report, name):
    locker = _lock(desk, name)
    desk.tray.click(BREAK_NOW)
    report.promise(f"no break appears above {name}", stays_true(lambda: not desk.overlays(), 1))
    _unlock(desk, report, name, locker)
    report.promise(f"a break is shown after the unlock of {name} within it", _shows_break(desk))
    desk.end_break()


def _locked_during(desk, report, name):
    desk.begin_break()
    locker = _lock(desk, name)
    report.promise(f"a break ends when {name} locks the session", comes_true(lambda: not desk.overlays(), 2))
    _unlock(desk, report, name, locker)
    report.promise(f"a break returns after the unlock of {name} within it", _shows_break(desk))
    desk.end_break()
    report.promise(f"Escape ends a break that returned after {name}", not desk.overlays())


def _due_behind(desk, report, clock, name):
    locker = _lock(desk, name)
    clock.set_forward(desk.process, _INTERVAL + _TOLERANCE)
    report.promise(f"a break that becomes due behind {name} is skipped", stays_true(lambda: not desk.overlays(), 1))
    _unlock(desk, report, name, locker)
    report.promise(f"it is not made up for after the unlock of {name}", stays_true(lambda: not desk.overlays(), 1))
    _check_next_break(desk, report, clock, f"the next break comes an interval after the one skipped behind {name}")


def suspended(desk, report, clock):
    """A suspended machine."""
    _start_with_reminders(desk, clock)
    desk.bed.click(1000, 40)
    clock.sleep(desk.process, _NIGHT)
    report.promise("a break that became due during a night asleep is skipped", stays_true(lambda: not desk.overlays(), 2))
    _check_next_break(desk, report, clock, "the next break comes an interval after the resume")
    for _ in range(3):
        is_early = bool(desk.overlays())
        desk.bed.click(1000, 40)
        clock.sleep(desk.process, 4 * _MINUTE)
    report.promise("a break that became due during four minutes asleep comes at the resume",
                   not is_early and _shows_break(desk))
    desk.end_break()
    clock.sleep(desk.process, 6 * _MINUTE)
    desk.bed.click(1000, 40)
    clock.set_forward(desk.process, 4 * _MINUTE + _TOLERANCE)
    report.promise("a break comes on time for a user who is back after a sleep", _shows_break(desk))
    desk.end_break()
    report.promise("silent after a sleep", not desk.said(), desk.said())
