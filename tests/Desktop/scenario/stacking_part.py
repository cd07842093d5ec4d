# SPDX-License-Identifier: GPL-3.0-or-later
"""Windows that other programs show or raise during a break."""

import pathlib

from driver.notifications import Notifications
from driver.waiting import comes_true, wait_until

from .cover import Cover

_UNMANAGED = ((250, 240, 60), (300, 60, 280, 200), "unmanaged")
_LOOKS = 10
_RAISES = 20


def notification(desk, report):
    """A notification during a break."""
    notifications = Notifications(desk.bed)
    desk.rest_pointer()
    before = desk.settled_picture()
    desk.begin_break()
    notifications.show("Courrier", "Un message est arrivé")
    shown = wait_until(lambda: _windows(desk, "Dunst"), "the notification")[0]
    comes_true(lambda: _is_on_top(desk), 0.5)
    desk.keep_picture("notification")
    pictures = [desk.bed.picture() for _ in range(_LOOKS)]
    desk.bed.click(shown["x"] + shown["width"] // 2, shown["y"] + shown["height"] // 2)
    desk.rest_pointer()
    desk.end_break()
    report.promise("a notification during a break takes no click", notifications.shown() == 1, notifications.shown())
    _check_covered(desk, report, "a notification does not show through a break", pictures, before, desk.settled_picture())
    notifications.stop()


def _check_covered(desk, report, text, pictures, *settled):
    """Compares whole screens. With a compositor what is below the break changes, without one the break shows what was there."""
    cover = Cover(*settled, outputs=desk.bed.outputs(), restless=desk.panel_boxes())
    bare = [str(part) for picture in pictures for part in cover.bare_parts(picture)]
    report.promise(text, not bare, bare[:3])


def unmanaged_windows(desk, report):
    """Override-redirect windows that other programs show and raise during a break."""
    desk.rest_pointer()
    before = desk.settled_picture()
    desk.begin_break()
    windows = [desk.probe.window(f"Unmanaged {index}", *_UNMANAGED) for index in range(2)]
    is_covered = comes_true(lambda: _is_on_top(desk), 0.5)
    pictures = [desk.bed.picture() for _ in range(_LOOKS)]
    desk.bed.raise_window(windows[0].identifier)
    is_covered_again = comes_true(lambda: _is_on_top(desk), 0.5)
    pictures += [desk.bed.picture() for _ in range(_LOOKS)]
    desk.bed.click(440, 200)
    report.promise("windows that come up during a break are covered within half a second",
                   is_covered and is_covered_again, (is_covered, is_covered_again))
    report.promise("windows that come up during a break take no click", not any(window.clicks() for window in windows))
    desk.rest_pointer()
    desk.end_break()
    _check_covered(desk, report, "windows that come up during a break do not show through it", pictures, before,
                   desk.settled_picture())
    for window in windows:
        window.close()


def contest(desk, report):
    """A program that raises its window whenever the break covers it."""
    desk.begin_break()
    window = desk.probe.window("Contest", *_UNMANAGED, "stay-on-top")
    wait_until(window.raises, "the other program's answer")
    comes_true(lambda: window.raises() >= _RAISES, 4)
    comes_true(lambda: False, 0.5)
    raises, ticks = window.raises(), _processor_seconds(desk)
    comes_true(lambda: False, 2)
    used = _processor_seconds(desk) - ticks
    report.promise("two programs that both raise their windows come to rest",
                   raises <= 2 * _RAISES and window.raises() == raises, (raises, window.raises()))
    report.promise("a break that another program raised its window above costs no more than another", used < 0.4, used)
    report.promise("a break that another program raised its window above has the keyboard", desk.break_has_keyboard())
    desk.end_break()
    window.close()


def _processor_seconds(desk):
    fields = pathlib.Path(f"/proc/{desk.process.pid}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / 100


def _windows(desk, name):
    """The visible windows of the programs with this class."""
    return [window for window in desk.probe.state()["windows"] if window["viewable"] and name in window["class"]]


def _is_on_top(desk):
    """Whether the visible windows on top of the stack are the break's."""
    state = desk.probe.state()
    ours = {window["id"] for window in desk.overlays(state)}
    visible = [window["id"] for window in state["windows"] if window["viewable"]]
    return set(visible[-len(ours):]) == ours
