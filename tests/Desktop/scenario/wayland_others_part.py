# SPDX-License-Identifier: GPL-3.0-or-later
"""What other programs and monitors do just when a break begins, and during it."""

from PIL import Image, ImageChops

from driver.bed import NotPossibleHere
from driver.waiting import comes_true, stays_true, wait_until

from .desk import BREAK_NOW

#: Moments after the start of a break at which a monitor goes, in seconds.
_MOMENTS = (0, 0.02, 0.05, 0.1)
_COLOUR = (0, 160, 80)


def open_menu(desk, report):
    """A menu of another program that is open when a break begins."""
    window = desk.other_window(colour=_COLOUR)
    desk.bed.click(*wait_until(lambda: _middle_of_colour(desk.bed.picture()), "another program's window"), button=3)
    wait_until(window.has_menu, "another program's menu")
    desk.tray.click(BREAK_NOW)
    # The first key may close the menu.
    report.promise("Escape, pressed twice, ends a break that began with a menu open",
                   comes_true(lambda: _escape(desk) and not desk.overlays(), 4))


def _middle_of_colour(picture):
    """The middle of the other program's window, which the compositor places; None where it is not shown."""
    red, green, blue = ImageChops.difference(picture, Image.new("RGB", picture.size, _COLOUR)).split()
    others = ImageChops.lighter(ImageChops.lighter(red, green), blue)
    box = others.point(lambda difference: 0 if difference else 255).getbbox()
    return box and ((box[0] + box[2]) // 2, (box[1] + box[3]) // 2)


def _escape(desk):
    desk.wait_for_break()
    for _ in range(2):
        desk.bed.press("Escape")
        if comes_true(lambda: not desk.overlays(), 1):
            return True
    return False


def sudden_unplugging(desk, report):
    """Monitors that go while a break begins, until none is left."""
    text, last = "runs on when a monitor goes while a break begins", "runs on when a break begins without a monitor"
    names = [output.name for output in desk.bed.outputs()]
    try:
        for moment in _MOMENTS:
            desk.tray.click(BREAK_NOW)
            comes_true(lambda: False, moment)
            desk.bed.unplug(names[-1])
            report.promise(text, stays_true(lambda: desk.process.poll() is None, 0.5), (moment, desk.said()))
            desk.bed.plug(names[-1])
            desk.clean_up(program_runs=True)
        _without_monitors(desk, report, names, last)
    except NotPossibleHere as reason:
        for promise in (text, last):
            report.not_possible(promise, reason)


def _without_monitors(desk, report, names, text):
    for name in reversed(names):
        desk.bed.unplug(name)
    desk.tray.click(BREAK_NOW)
    report.promise(text, stays_true(lambda: desk.process.poll() is None, 1), desk.said())
    for name in names:
        desk.bed.plug(name)
    wait_until(lambda: len(desk.bed.outputs()) == len(names), "all monitors")
    # That break runs on unseen for its whole length.
    report.promise("a break is shown when the monitors are back", comes_true(
        lambda: desk.tray.click(BREAK_NOW) and comes_true(lambda: len(desk.overlays()) == len(names), 1), 25))
    desk.end_break()
