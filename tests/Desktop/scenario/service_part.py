# SPDX-License-Identifier: GPL-3.0-or-later
from driver.waiting import comes_true, wait_until

from .desk import SWITCH_OFF, SWITCH_ON, without_identifier


def absent_services(desk, report):
    """Missing services."""
    empty = desk.bed.home / "no-bus"
    empty.mkdir(mode=0o700)
    without_bus = {"DBUS_SESSION_BUS_ADDRESS": None, "XDG_RUNTIME_DIR": str(empty)}
    _break_works(desk, report, "without D-Bus", without_bus)
    _break_works(desk, report, "without a tray", {})
    _first_launch_works(desk, report, "with an unwritable folder for its preferences", "/sys/kernel")
    _first_launch_works(desk, report, "with a file instead of its preferences folder", "/dev/null")
    _no_display(desk, report)


def _break_works(desk, report, where, environment):
    text = f"starts and shows a break {where}"
    desk.start_in_break(environment)
    desk.bed.press("Escape")
    report.promise(text, comes_true(lambda: not desk.overlays(), 2) and desk.process.poll() is None)
    report.promise(f"says at most one line {where}", len(desk.said()) <= 1, desk.said())
    desk.stop_program()


def _first_launch_works(desk, report, where, config_folder):
    """If nothing can be stored, every launch is the first, and the question comes before the break."""
    desk.start_program({"XDG_CONFIG_HOME": config_folder, "ORVANE_DEBUG_BREAK": "1"})
    answer_first_question(desk)
    # The main window shows through, so the parts of the break are not searched for in the picture.
    desk.wait_for_overlays()
    wait_until(desk.break_has_keyboard, "the keyboard in the break")
    desk.bed.press("Escape")
    report.promise(f"starts and shows a break {where}",
                   comes_true(lambda: not desk.overlays(), 2) and desk.process.poll() is None)
    report.promise(f"says at most one line {where}", len(desk.said()) <= 1, desk.said())
    desk.stop_program()


def answer_first_question(desk, *keys):
    """Waits for the first-launch question and answers it: the keys, then Return."""
    def windows():
        return desk.bed.windows_titled("OrvaneBreak")
    wait_until(lambda: len(windows()) == 2, "the window and the question over it")
    wait_until(lambda: desk.probe.state()["focus"] in windows(), "the keyboard in the question")
    for key in (*keys, "Return"):
        desk.bed.press(key)
    wait_until(lambda: len(windows()) != 2, "the end of the question")


def _no_display(desk, report):
    for where, environment in (("without a display", {"DISPLAY": None}),
                               ("with a display that does not answer", {"DISPLAY": ":9876"})):
        desk.start_program(environment)
        ended = comes_true(lambda: desk.process.poll() is not None, 5)
        report.promise(f"one line and a status {where}", ended and desk.process.returncode > 0
                       and len(desk.said()) == 1, (desk.process.returncode, desk.said()))
        desk.bed.stop(desk.process)


def preferences(desk, report):
    """Preferences in a folder that does not exist yet."""
    folder = desk.bed.home / "fresh" / "config"
    desk.start_program({"XDG_CONFIG_HOME": str(folder)})
    answer_first_question(desk, "Tab")
    report.promise("the eye appears when the menu bar is chosen at first launch", comes_true(desk.tray.items, 5))
    report.promise("the answer is kept", without_identifier(folder / "OrvaneBreak" / "preferences.json")
                   == {"OBMenuBarMode": True, "OBOnboarded": True})
    desk.tray.click(SWITCH_ON)
    report.promise("reminders turn on with a preferences folder that does not exist yet",
                   comes_true(lambda: desk.tray.labels()[0] == SWITCH_OFF, 3))
    desk.stop_program()

    desk.write_preferences(folder, OBPauseSeconds=60)
    desk.start_in_break({"XDG_CONFIG_HOME": str(folder)})
    wide = desk.parts()[0]["ring"]
    report.promise("a break of 60 s shows the same layout", abs(wide.size[0] - 140) <= 2, wide)
    desk.end_break()
    desk.stop_program()
