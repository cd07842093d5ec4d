# SPDX-License-Identifier: GPL-3.0-or-later
import os
import pathlib
import signal

from driver.waiting import comes_true, wait_until

from .desk import QUIT


def signals(desk, report):
    """Signals during a break."""
    other = desk.other_window()
    for number in (signal.SIGTERM, signal.SIGINT, signal.SIGKILL):
        name = number.name
        before = desk.settled_picture()
        desk.start_in_break()
        wait_until(desk.break_has_keyboard, "the break with the keyboard")
        check_end_by_signal(desk, report, number)
        _ends_completely(desk, report, name)
        _focus_returns(desk, report, name, other, before)
        report.promise("silent when a signal ends it", not desk.said(), desk.said())
        desk.bed.stop(desk.process)


def check_end_by_signal(desk, report, number):
    """Sends a signal to the program during a break."""
    os.kill(desk.process.pid, number)
    report.promise(f"{number.name} during a break ends the program",
                   desk.has_ended(-number if number == signal.SIGKILL else 0), desk.process.returncode)


def _ends_completely(desk, report, name):
    report.promise(f"no window and no process is left after {name}",
                   comes_true(lambda: not desk.overlays() and not _processes(desk), 2), _processes(desk))


def _focus_returns(desk, report, name, other, before):
    def is_back():
        return desk.probe.state()["focus"] == other.identifier
    if name != "SIGKILL":
        report.promise(f"the focus is back after {name}", comes_true(is_back, 2), desk.probe.state()["focus"])
    if not is_back():
        # After SIGKILL the program cannot restore the focus; what matters is that the keyboard is not lost.
        desk.bed.click(*other.place_to_click())
    report.promise(f"nothing is left on any screen after {name}",
                   comes_true(lambda: desk.bed.picture().tobytes() == before.tobytes(), 2))
    if name == "SIGKILL":
        known = len(other.keys())
        desk.bed.type("k")
        report.promise("after SIGKILL a click is enough to type into the other program",
                       comes_true(lambda: other.keys()[known:] == ["6b"], 2))
    desk.rest_pointer()


def _processes(desk):
    """The program's processes and their children that still run on this bed."""
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
    """Quitting from the menu during a break."""
    other = desk.other_window()
    desk.begin_break()
    desk.tray.click(QUIT)
    report.promise("the menu's last entry ends the program, also in a break",
                   desk.has_ended(), desk.process.returncode)
    report.promise("the focus is back after leaving by the menu in a break",
                   comes_true(lambda: desk.probe.state()["focus"] == other.identifier, 2))
    report.promise("silent on standard error in ordinary use", not desk.said(), desk.said())
    report.promise("tray icon disappears with the program", comes_true(lambda: not desk.tray.items(), 2))
    desk.bed.stop(desk.process)


def server_killed(desk, report):
    """The X server is killed during a break."""
    desk.start_in_break()
    check_end_with_server(desk, report, "the X server")


def check_end_with_server(desk, report, server):
    """Kills the display server."""
    desk.bed.server.kill()
    report.promise(f"the program ends within 5 s when {server} is killed",
                   comes_true(lambda: desk.process.poll() is not None, 5))
    report.promise(f"at most one line on standard error when {server} is killed", len(desk.said()) <= 1, desk.said())
