# SPDX-License-Identifier: GPL-3.0-or-later
from driver.waiting import comes_true, stays_true

from .desk import OPEN

_TITLE = "OrvaneBreak"


def shell(desk, report):
    """The main window in menu-bar mode."""
    second = desk.start_again()
    report.promise("a second start ends by itself", comes_true(lambda: second.poll() is not None, 5)
                   and second.returncode == 0, second.returncode)
    report.promise("a second start shows the window of the first", comes_true(lambda: _windows(desk), 3))
    report.promise("the window has the keyboard", comes_true(lambda: desk.probe.state()["focus"] in _windows(desk), 3))
    if desk.bed.window_manager:
        states = desk.bed.window_states(min(_windows(desk)))
        report.promise("the window has no entry in the task bar and the pager",
                       {"_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER"} <= states, sorted(states))
    _close(desk, report)
    desk.tray.click(OPEN)
    report.promise("the menu opens the window", comes_true(lambda: _windows(desk), 3))
    comes_true(lambda: desk.probe.state()["focus"] in _windows(desk), 3)
    _close(desk, report)


def _close(desk, report):
    desk.bed.press("ctrl+w")
    report.promise("Ctrl+W hides the window and the program goes on", comes_true(lambda: not _windows(desk), 3)
                   and stays_true(lambda: desk.process.poll() is None, 0.5))


def _windows(desk):
    return desk.bed.windows_titled(_TITLE)
