# SPDX-License-Identifier: GPL-3.0-or-later
from driver.tray import Tray
from driver.waiting import comes_true, stays_true, wait_until

from .application_desk import BACK, MENU_BAR_BOX, SETTINGS, TO_DOCK, TO_MENU_BAR
from .desk import BREAK_NOW, OPEN, SWITCH_OFF, SWITCH_ON

_NOTE = "Ce bureau n'affiche pas l'œil\u00a0: cette fenêtre le remplace."

#: The colour of the eye in the tray while reminders are on.
_TEAL = "ff14b8a6"


def closing(desk, report):
    """Closing the window in each mode, and during a break."""
    for how, close in (("Ctrl+W", lambda: desk.bed.press("ctrl+w")), ("Ctrl+Q", lambda: desk.bed.press("ctrl+q")),
                       ("its close button", desk.close_by_window_manager)):
        desk.start_in_dock()
        close()
        report.promise(f"{how} ends the program in the Dock", desk.has_ended(), desk.process.returncode)
        desk.bed.stop(desk.process)

    desk.start_in_dock()
    desk.begin_break_by_second_start()
    desk.close_by_window_manager()
    report.promise("closing the window in a break ends the break and the program in the Dock",
                   desk.has_ended() and comes_true(lambda: not desk.overlays(), 2), desk.process.returncode)
    desk.bed.stop(desk.process)

    desk.start_in_menu_bar()
    desk.tray.click(OPEN)
    desk.wait_for_window()
    desk.click_control(SETTINGS)
    desk.reader.control(BACK)
    desk.tray.click(BREAK_NOW)
    desk.wait_for_overlays()
    desk.close_by_window_manager()
    report.promise("closing the window in a break leaves the break in the menu bar",
                   comes_true(lambda: not desk.windows(), 3) and stays_true(lambda: len(desk.overlays()) == 2, 0.5))
    desk.end_break()
    desk.tray.click(OPEN)
    report.promise("the window returns on the page that it was left on", desk.shows(BACK))
    report.promise("silent while windows open and close", not desk.said(), desk.said())
    desk.finish()


def switching(desk, report):
    """Switching between Dock and menu bar while reminders are on."""
    desk.start_in_dock()
    desk.bed.press("Return")
    report.promise("Return switches the reminders on", desk.shows(SWITCH_OFF))
    desk.click_control(SETTINGS)
    desk.click_control(MENU_BAR_BOX)
    report.promise("the eye appears when the program moves to the menu bar", comes_true(desk.tray.items, 3))
    report.promise("the eye is filled and teal at once while reminders are on",
                   comes_true(lambda: any(_TEAL in picture["argb"] for picture in desk.tray.icon()), 2),
                   [list(picture["argb"])[:6] for picture in desk.tray.icon()][:1])
    report.promise("the task-bar entry disappears, and the window stays",
                   comes_true(lambda: desk.windows() and not desk.is_listed(), 3))
    report.promise("the menu knows that reminders are on", desk.tray.labels()[0] == SWITCH_OFF)
    report.promise("the mode is stored", desk.preferences().get("OBMenuBarMode") is True, desk.preferences())

    desk.click_control(MENU_BAR_BOX)
    report.promise("the eye disappears when the program moves to the Dock", comes_true(lambda: not desk.tray.items(), 3))
    report.promise("the entry in the task bar comes back, with the keyboard in the window",
                   comes_true(lambda: desk.is_listed() and desk.has_keyboard(), 3))
    report.promise("the settings page stays in front when the mode changes", desk.shows(BACK))
    desk.bed.press("Escape")
    report.promise("Escape leaves the settings page, and reminders are still on", desk.shows(SWITCH_OFF))
    desk.bed.press("Return")
    report.promise("Return switches the reminders off", desk.shows(SWITCH_ON))
    report.promise("silent when the mode changes", not desk.said(), desk.said())
    desk.finish()


def without_tray(desk, report):
    """Menu-bar mode on a desktop without a tray."""
    desk.start({"OBOnboarded": True, "OBMenuBarMode": True})
    other = desk.other_window()
    report.promise("without a tray the window opens by itself", comes_true(desk.windows, 10))
    report.promise("it leaves the keyboard to the program that has it",
                   stays_true(lambda: desk.probe.state()["focus"] == other.identifier, 1))
    report.promise("it has an entry in the task bar, and says why", comes_true(desk.is_listed, 2) and desk.shows(_NOTE))
    desk.keep_picture("without-tray")
    desk.close_by_window_manager()
    report.promise("closing it leaves its entry in the task bar",
                   comes_true(lambda: not desk.windows(), 3) and desk.process.poll() is None)
    second = desk.start_again()
    report.promise("a second start shows it again", comes_true(desk.windows, 3))
    desk.bed.stop(second)
    desk.finish()

    desk.start({"OBOnboarded": True, "OBMenuBarMode": True})
    wait_until(desk.windows, "the window that stands in", 10)
    tray = Tray(desk.bed)
    report.promise("a late tray takes over, and the window that nobody has used is gone",
                   comes_true(tray.items, 5) and comes_true(lambda: not desk.windows(), 3))
    tray.stop()
    report.promise("without the tray that showed the eye the window is there again",
                   comes_true(lambda: desk.windows() and desk.is_listed(), 10))
    desk.finish()

    desk.start()
    desk.reader.control(TO_DOCK)
    desk.click_control(TO_MENU_BAR)
    wait_until(lambda: len(desk.windows()) == 1, "the end of the question")
    desk.close_by_window_manager()
    report.promise("without a tray the answer “Dans la barre de menus” leaves a window", comes_true(lambda: not desk.windows(), 3)
                   and comes_true(lambda: desk.windows() and desk.is_listed(), 10))
    report.promise("silent without a tray", not desk.said(), desk.said())
    desk.finish()
