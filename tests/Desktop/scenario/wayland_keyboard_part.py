# SPDX-License-Identifier: GPL-3.0-or-later
"""The keyboard of a break on Wayland when other programs and the desktop itself take it."""

import time

from driver.bed import NotPossibleHere
from driver.waiting import comes_true

#: The break looks for its keyboard every half second, and may need to do so twice.
_RETURN = 2


def late_window(desk, report):
    """A window that opens during a break."""
    desk.rest_pointer()
    desk.begin_break()
    late = desk.probe.window("Late", (160, 0, 80), (30, 60, 280, 200))
    comes_true(late.has_focus, 1)
    report.promise("the break has the keyboard again after another program opened a window",
                   comes_true(lambda: not late.has_focus(), 2))
    _escape_ends(desk, report, "during which a window opened")
    report.promise("no key of the break reaches that window", not late.keys(), late.keys())
    late.close()


def overview(desk, report):
    """The desktop's overview of all windows."""
    texts = ("a break begins although the overview is open", "during which the overview was opened")
    try:
        desk.bed.open_own("overview")
    except NotPossibleHere as reason:
        report.not_possible(texts[0], reason)
        return
    desk.begin_break()
    report.promise(texts[0], len(desk.overlays()) == len(desk.bed.outputs()))
    desk.bed.open_own("overview")
    time.sleep(1)
    comes_true(lambda: all(desk.parts()), 3)
    time.sleep(_RETURN)
    _escape_ends(desk, report, texts[1])


def menu(desk, report):
    """The desktop's own menu."""
    text = "during which the desktop's menu was open"
    desk.begin_break()
    try:
        desk.bed.open_own("menu")
    except NotPossibleHere as reason:
        report.not_possible(f"Escape ends a break {text}", reason)
        desk.end_break()
        return
    time.sleep(1)
    desk.bed.close_own("menu")
    time.sleep(_RETURN)
    _escape_ends(desk, report, text)


def _escape_ends(desk, report, when):
    desk.bed.press("Escape")
    report.promise(f"Escape ends a break {when}", comes_true(lambda: not desk.overlays(), 2))
    desk.clean_up(program_runs=True)
