# SPDX-License-Identifier: GPL-3.0-or-later
import time

from driver.tray import Tray
from driver.waiting import comes_true, stays_true, wait_until

from .desk import HELD_SECONDS, RESTING_PLACE

_LENGTH = 20


def starting(desk, report):
    """Starting with and without a tray."""
    report.promise("a break without a tray", _works_without_tray(desk), desk.said())
    desk.stop_program()
    before = desk.settled_picture()
    desk.start_with_tray()
    report.promise("starts without any window", stays_true(lambda: desk.bed.picture().tobytes() == before.tobytes(), 1))
    desk.tray.stop()
    desk.tray = Tray(desk.bed)
    report.promise("tray icon is back after the tray restarted", comes_true(desk.tray.items, 5))
    second = desk.start_again("--break-now")
    report.promise("a second start with --break-now begins a break", comes_true(lambda: all(desk.parts()), 5)
                   and comes_true(lambda: second.poll() is not None, 5) and second.returncode == 0, second.returncode)
    desk.end_break()


def _works_without_tray(desk):
    desk.start_in_break()
    desk.bed.press("Escape")
    return comes_true(lambda: not desk.overlays(), 2) and desk.process.poll() is None


def keyboard(desk, report):
    """Keyboard and focus during a break."""
    bed, other = desk.bed, desk.other_window()
    bed.type("ab")
    wait_until(lambda: other.keys() == ["a", "b"], "keys in another program before the break")
    desk.rest_pointer()
    desk.begin_break()
    report.promise("the break has the keyboard", comes_true(lambda: not other.has_focus(), 2))
    bed.type("xyz 1")
    for key in ("space", "Return", "Tab"):
        bed.press(key)
    bed.click(bed.outputs()[0].x + 100, 200)
    report.promise("typing and clicking beside the button do not end the break",
                   stays_true(lambda: len(desk.overlays()) == len(bed.outputs()), 0.5))
    report.promise("keys and clicks during the break reach no other program",
                   other.keys() == ["a", "b"] and other.clicks() == 0, (other.keys(), other.clicks()))
    bed.press("Escape")
    report.promise("Escape ends the break", comes_true(lambda: not desk.overlays(), 2))
    _has_keyboard_again(desk, report, other, "after Escape")


def _has_keyboard_again(desk, report, other, when):
    report.promise(f"the focus is back without a click {when}", comes_true(other.has_focus, 2))
    known = len(other.keys())
    desk.bed.type("k")
    report.promise(f"typing reaches the other program again {when}",
                   comes_true(lambda: other.keys()[known:] == ["k"], 2), other.keys()[known:])


def held_escape(desk, report):
    """A held Escape."""
    other = desk.other_window()
    desk.rest_pointer()
    desk.begin_break()
    known, release = len(other.keys()), desk.bed.hold("Escape")
    report.promise("a held Escape uncovers the screens at once", comes_true(lambda: not desk.overlays(), 1))
    time.sleep(HELD_SECONDS)
    release()
    report.promise("no Escape of a held key reaches another program", len(other.keys()) == known, other.keys()[known:])
    _has_keyboard_again(desk, report, other, "after a held Escape")


def pointer(desk, report):
    """Pointer and focus on each of the screens."""
    for index, output in enumerate(desk.bed.outputs()):
        # A click makes a screen the active one.
        desk.bed.click(output.x + RESTING_PLACE[0] // 2, RESTING_PLACE[1])
        desk.begin_break()
        desk.bed.click(output.x + 60, output.y + 150)
        desk.bed.press("Escape")
        report.promise(f"Escape ends the break with the pointer on screen {index + 1}",
                       comes_true(lambda: not desk.overlays(), 2), output)
        desk.clean_up(program_runs=True)


def button(desk, report):
    """The button that ends the break."""
    other = desk.other_window()
    for index, output in enumerate(desk.bed.outputs()):
        desk.rest_pointer()
        desk.begin_break()
        desk.bed.click(*desk.parts()[index]["button"].centre)
        report.promise(f"clicking Passer on screen {index + 1} ends the break",
                       comes_true(lambda: not desk.overlays(), 2), output)
        if desk.overlays():
            desk.end_break()
        _has_keyboard_again(desk, report, other, "after a click on Passer")
    report.promise("the clicks reach no other program", other.clicks() == 0)


def lasting(desk, report):
    """A break that ends by itself."""
    other = desk.other_window()
    desk.rest_pointer()
    desk.begin_break()
    wait_until(lambda: not desk.overlays(), "the end of the break", _LENGTH + 5, interval=0.05)
    _has_keyboard_again(desk, report, other, "after it ended by itself")
