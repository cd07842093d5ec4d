# SPDX-License-Identifier: GPL-3.0-or-later
import os
import pathlib
import signal

from driver.waiting import comes_true, wait_until

from .desk import QUIT


def signals(desk, report):
    """Signals in the middle of a break."""
    other = desk.other_window()
    for number in (signal.SIGTERM, signal.SIGINT, signal.SIGKILL):
        name = number.name
        before = desk.settled_picture()
        desk.start_in_break()
        wait_until(desk.break_has_keyboard, "the break with the keyboard")
        check_end_by_signal(desk, report, number)
        _nothing_left(desk, report, name, before)
        _focus_returns(desk, report, name, other)
        report.promise("silent when a signal ends it", not desk.said(), desk.said())
        desk.bed.stop(desk.process)


def check_end_by_signal(desk, report, number):
    """Sends a signal to the program, which has a break on the screen."""
    os.kill(desk.process.pid, number)
    report.promise(f"{number.name} in the middle of a break ends the program",
                   desk.has_ended(-number if number == signal.SIGKILL else 0), desk.process.returncode)


def _nothing_left(desk, report, name, before):
    """The other program's title bar and the task list may show another active window, so they are left out."""
    def has_same_wallpaper():
        now = desk.bed.picture()
        return all(now.getpixel(place) == before.getpixel(place) for output in desk.bed.outputs()
                   for place in (output.centre, (output.box[2] - 5, output.y + 5), (output.x + 5, output.y + 600)))
    report.promise(f"nothing is left after {name}", comes_true(lambda: not desk.overlays(), 2)
                   and comes_true(has_same_wallpaper, 2) and not _processes(desk), _processes(desk))


def _focus_returns(desk, report, name, other):
    def is_back():
        return desk.probe.state()["focus"] == other.identifier
    if name != "SIGKILL":
        report.promise(f"the focus is back after {name}", comes_true(is_back, 2), desk.probe.state()["focus"])
        if not is_back():
            desk.bed.click(*other.place_to_click())
            desk.rest_pointer()
    else:
        # Nobody is left to give the focus back; what matters is that the keyboard is not lost.
        desk.bed.click(*other.place_to_click())
        known = len(other.keys())
        desk.bed.type("k")
        report.promise("after SIGKILL a click is enough to type into the other program",
                       comes_true(lambda: other.keys()[known:] == ["6b"], 2))
        desk.rest_pointer()


def _processes(desk):
    """Processes of the program, its children included, that still run on this bed."""
    found = []
    for identifier in desk.bed.leftovers():
        try:
            command = pathlib.Path(f"/proc/{identifier}/cmdline").read_bytes()
            state = pathlib.Path(f"/proc/{identifier}/stat").read_text().rsplit(")", 1)[1].split()[0]
        except OSError:
            continue
        if b"orvanebreak" in command.split(b"\0")[0] and state != "Z":
            found.append(identifier)
    return found


def leaving(desk, report):
    """Leaving by the menu in the middle of a break."""
    other = desk.other_window()
    desk.begin_break()
    desk.tray.click(QUIT)
    report.promise("the menu's last entry ends the program, also in a break",
                   desk.has_ended(), desk.process.returncode)
    report.promise("the focus is back after leaving by the menu in a break",
                   comes_true(lambda: desk.probe.state()["focus"] == other.identifier, 2))
    report.promise("silent on standard error in ordinary use", not desk.said(), desk.said())
    report.promise("tray icon goes with the program", comes_true(lambda: not desk.tray.items(), 2))
    desk.bed.stop(desk.process)


def server_killed(desk, report):
    """The X server is killed in the middle of a break."""
    desk.start_in_break()
    check_end_with_server(desk, report, "the X server")


def check_end_with_server(desk, report, server):
    """Kills what shows the program's windows."""
    desk.bed.server.kill()
    report.promise(f"the program ends within 5 s when {server} is killed",
                   comes_true(lambda: desk.process.poll() is not None, 5))
    report.promise(f"at most one line on standard error when {server} is killed", len(desk.said()) <= 1, desk.said())
