# SPDX-License-Identifier: GPL-3.0-or-later
from driver.tray import Tray
from driver.waiting import comes_true, wait_until

from .desk import BREAK_NOW, OPEN, POSTPONE, QUIT, REPORT, SWITCH_OFF, SWITCH_ON, UPDATES

_ENTRIES = [SWITCH_ON, BREAK_NOW, POSTPONE, "-", OPEN, "-", UPDATES, REPORT, "-", QUIT]


def tray(desk, report):
    """Icon and menu in the tray."""
    desk.start_program()
    wait_until(lambda: "Qt Selection Owner for orvanebreak" in str(desk.probe.state()), "the start of the program")
    report.promise("starts without any window", not desk.bed.windows_titled("OrvaneBreak"))
    desk.tray = Tray(desk.bed)
    report.promise("tray icon appears when the tray starts late", comes_true(desk.tray.items, 5))
    _icon(desk, report)
    _menu(desk, report)
    desk.tray.stop()
    desk.tray = Tray(desk.bed)
    report.promise("tray icon is back after the tray restarted", comes_true(desk.tray.items, 5))
    report.promise("menu is complete after the tray restarted", desk.tray.labels() == _ENTRIES)


def _icon(desk, report):
    pictures = desk.tray.icon()
    has_ink = all(any(not colour.startswith("00") for colour in picture["argb"]) for picture in pictures)
    report.promise("tray icon has a picture of 22 pixels or more", has_ink
                   and any(picture["width"] >= 22 for picture in pictures), [p["width"] for p in pictures])


def _menu(desk, report):
    labels = desk.tray.labels()
    report.promise("menu has its entries", labels == _ENTRIES, labels)
    report.promise("every entry can be chosen", all(entry["enabled"] for entry in desk.tray.menu()))
    desk.tray.open()
    icon_off, entry = desk.tray.icon(), desk.tray.menu()[0]
    updates = desk.tray.updates()
    desk.tray.click(SWITCH_ON)
    report.promise("label changes in the open menu when reminders are turned on",
                   comes_true(lambda: desk.tray.labels()[0] == SWITCH_OFF, 3) and
                   comes_true(lambda: desk.tray.updates() > updates, 3), desk.tray.labels())
    report.promise("the entry keeps its identity when its label changes", desk.tray.menu()[0]["id"] == entry["id"])
    report.promise("tray icon changes when reminders are turned on", comes_true(lambda: desk.tray.icon() != icon_off, 3))
    desk.tray.click(SWITCH_OFF)
    report.promise("label and icon change back when reminders are turned off",
                   comes_true(lambda: desk.tray.labels()[0] == SWITCH_ON and desk.tray.icon() == icon_off, 3))
