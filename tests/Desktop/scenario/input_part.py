# SPDX-License-Identifier: GPL-3.0-or-later
"""Keys and clicks around a break: before it shows, while it shows, and the rest of the press that ends it."""

import pathlib
import time

from driver.waiting import comes_true, stays_true, wait_until

from .desk import BREAK_NOW, HELD_SECONDS, near

_TITLE = "OrvaneBreak"
#: The first menu of the window's menu bar, from the window's upper left corner.
_FIRST_MENU = (25, 12)
#: The key that types ";" and with Shift "." on a French keyboard, and the keypad's decimal key, as X key codes.
_FRENCH_PERIOD, _KEYPAD_PERIOD = 59, 91
_COLOUR = (0, 160, 80)


def menus(desk, report):
    """A break that begins while one of the program's own menus is open."""
    configuration = pathlib.Path(desk.bed.environment()["XDG_CONFIG_HOME"])
    desk.stop_program()
    desk.write_preferences(configuration, OBMenuBarMode=False)
    desk.start_program()
    window = min(wait_until(lambda: desk.bed.windows_titled(_TITLE), "the program's window"))
    for _ in range(3):
        left, top, *_ = desk.bed.window_box(window)
        desk.bed.click(left + _FIRST_MENU[0], top + _FIRST_MENU[1])
        wait_until(desk.overlays, "the open menu")
        desk.start_again("--break-now").wait(10)
        report.promise("the program's own menus close before a break", comes_true(
            lambda: len(desk.overlays()) == len(desk.bed.outputs()), 3), desk.overlays())
        desk.bed.press("Tab")
        desk.bed.press("space")
        clients = desk.probe.state()["clients"]
        desk.bed.press("Escape")
        report.promise("Escape ends a break that began over an open menu",
                       comes_true(lambda: not desk.overlays(), 2), desk.overlays())
        report.promise("no key reaches the program's windows under a break",
                       stays_true(lambda: desk.probe.state()["clients"] == clients, 0.3))
        while desk.overlays():
            desk.end_break()
    # Without a window manager nothing else closes the window.
    desk.stop_program()
    desk.write_preferences(configuration)


def _background_points(desk):
    """Points on each screen away from the texts: its edges, and beside them."""
    return [(output.x + round(output.width * x), output.y + round(output.height * y)) for output in desk.bed.outputs()
            for x, y in ((0.05, 0.04), (0.5, 0.04), (0.95, 0.04), (0.05, 0.97), (0.5, 0.97), (0.95, 0.97), (0.15, 0.5))]


def first_keys(desk, report):
    """Keys while a break opens."""
    other = desk.other_window()
    desk.rest_pointer()
    points, picture = _background_points(desk), desk.settled_picture()
    for _ in range(3):
        known = len(other.key_times())
        watch = desk.probe.sample(points, 1200, 2)
        typing = desk.bed.run(["xdotool", "type", "--delay", "1", "a" * 200])
        wait_until(lambda: len(other.key_times()) > known + 5, "keys in another program before the break")
        desk.tray.click(BREAK_NOW)
        dark = [change.time for change in watch.results()
                if near(change.value, desk.dimmed(picture.getpixel(points[change.area])))]
        # A program that is killed here may leave its key down.
        typing.wait()
        late = [_milliseconds_after(moment, min(dark)) for moment in other.key_times()[known:]]
        report.promise("no key reaches another program after the first dark pixel", max(late) <= 0, sorted(late)[-5:])
        desk.end_break()


def _milliseconds_after(server_time, nanoseconds):
    """How much later a time of the X server is than a monotonic one. The server counts the same clock in 32 bits."""
    return (server_time - nanoseconds // 10**6 + 2**31) % 2**32 - 2**31


def rest_of_press(desk, report):
    """The rest of the press that ends a break."""
    desk.begin_break()
    place = tuple(round(part) for part in desk.parts()[0]["button"].centre)
    desk.end_break()
    other = desk.other_window("Other", _COLOUR, (place[0] - 150, place[1] - 100, 300, 200))
    desk.rest_pointer()
    picture = desk.settled_picture()
    _held_escape(desk, report, other, picture)
    _double_click(desk, report, other, place)


def _begin_break_over(desk, other):
    """The parts of a break cannot be told from a window behind them."""
    desk.tray.click(BREAK_NOW)
    place = other.place_to_click()
    wait_until(lambda: near(desk.bed.picture().getpixel(place), desk.dimmed(_COLOUR)), "the break over the window")


def _held_escape(desk, report, other, picture):
    known = len(other.keys())
    _begin_break_over(desk, other)
    release = desk.bed.hold("Escape")
    report.promise("a held Escape uncovers the screens at once", comes_true(lambda: not desk.overlays(), 1)
                   and comes_true(lambda: _is_bare(desk, picture, other), 1))
    time.sleep(HELD_SECONDS)
    release()
    report.promise("no Escape of a held key reaches another program", len(other.keys()) == known, other.keys()[known:])
    report.promise("the focus is back when the key is released",
                   comes_true(lambda: desk.probe.state()["focus"] == other.identifier, 1))


def _double_click(desk, report, other, place):
    clicks = other.clicks()
    _begin_break_over(desk, other)
    desk.bed.click(*place, count=2)
    report.promise("a double click on Passer ends the break", comes_true(lambda: not desk.overlays(), 1))
    report.promise("no click of a double click on Passer reaches another program",
                   stays_true(lambda: other.clicks() == clicks, 0.6), other.clicks() - clicks)
    desk.bed.click(*place)
    report.promise("a click half a second later reaches the other program",
                   comes_true(lambda: other.clicks() == clicks + 1, 2), other.clicks() - clicks)
    desk.rest_pointer()


def _is_bare(desk, picture, other):
    """Whether the screens and the window show as in this picture. Frames and panels may show that the focus is elsewhere."""
    now = desk.bed.picture()
    screens = [(output.x + 60, output.y + 150) for output in desk.bed.outputs()]
    return all(now.getpixel(place) == picture.getpixel(place) for place in [*screens, other.place_to_click()])


def cancel_command(desk, report):
    """The cancel command on a French keyboard and on the keypad."""
    for keys, name in ((f"ctrl+shift+{_FRENCH_PERIOD}", "a French keyboard"), (f"ctrl+{_KEYPAD_PERIOD}", "the keypad")):
        desk.begin_break()
        with desk.bed.keyboard_layout("fr"):
            desk.bed.press("Num_Lock")
            desk.bed.press(keys)
            report.promise(f"Ctrl and the period of {name} end the break", comes_true(lambda: not desk.overlays(), 2))
            desk.bed.press("Num_Lock")
        if desk.overlays():
            desk.end_break()


def foreign_grab(desk, report):
    """A program that has grabbed the keyboard."""
    other = desk.other_window("Grabbing", (120, 60, 60), (30, 60, 280, 200), "grab-keyboard")
    desk.begin_break()
    known = len(other.keys())
    desk.bed.press("Escape")
    report.promise("a program that has grabbed the keyboard gets the keys, and the break stays",
                   comes_true(lambda: other.keys()[known:] == ["ff1b"], 2)
                   and stays_true(lambda: len(desk.overlays()) == len(desk.bed.outputs()), 0.3), other.keys()[known:])
    place = desk.parts()[0]["button"].centre
    # The text is a smaller target than the button.
    desk.bed.click(place[0] - 21, place[1] - 11)
    report.promise("Passer ends a break during another program's grab, beside its text as well",
                   comes_true(lambda: not desk.overlays(), 2), desk.overlays())
    desk.rest_pointer()
    if not desk.overlays():
        desk.begin_break()
    other.close()
    desk.bed.press("Escape")
    report.promise("Escape ends the break once the grab is gone", comes_true(lambda: not desk.overlays(), 2))
