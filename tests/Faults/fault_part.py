# SPDX-License-Identifier: GPL-3.0-or-later
"""Faults of the session around a running program."""

import json
import time

from driver.bed import NotPossibleHere
from driver.tray import Tray
from driver.waiting import comes_true, stays_true, wait_until
from scenario.application_desk import MENU_BAR_BOX, SETTINGS
from scenario.desk import BREAK_NOW, OPEN, QUIT, SWITCH_OFF, SWITCH_ON
from scenario.ending_part import check_end_with_server
from scenario.service_part import answer_first_question
from shortages import Descriptors, FileSizeLimit, SmallDisk, processor_seconds, wait_until_idle

_SOUND = "Jouer un son doux au début de la pause"
#: Not even root can create a file there.
_READ_ONLY = "/sys/kernel"
_STORED = {"OBOnboarded": True, "OBIntervalMinutes": 45, "unknown": {"kept": 1}}
_WATCHED_SECONDS = 2
_MAX_PROCESSOR_SECONDS = 0.1


def _has_break(desk, report, text):
    """Checks a break from the tray's menu that Escape ends."""
    desk.tray.click(BREAK_NOW)
    shown = comes_true(lambda: len(desk.overlays()) == len(desk.bed.outputs()) and desk.break_has_keyboard(), 5)
    desk.bed.press("Escape")
    report.promise(text, shown and comes_true(lambda: not desk.overlays(), 3) and desk.process.poll() is None)


def read_only_home(desk, report):
    """A read-only home directory."""
    folders = ("HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME")
    for text in ("asks its first question", "asks its first question again"):
        desk.start_program(dict.fromkeys(folders, _READ_ONLY))
        answer_first_question(desk)
        report.promise(f"read-only home: every start {text}", desk.shows(SWITCH_ON))
        desk.reader.press(SETTINGS)
        desk.reader.press(MENU_BAR_BOX)
        report.promise("read-only home: a setting holds until the end", comes_true(desk.tray.items, 5)
                       and desk.is_checked(MENU_BAR_BOX))
        _has_break(desk, report, "read-only home: breaks come")
        desk.close_by_window_manager()
        report.promise("read-only home: in menu-bar mode the program continues without its window",
                       comes_true(lambda: not desk.windows(), 3) and stays_true(lambda: desk.process.poll() is None, 0.5))
        desk.tray.click(QUIT)
        report.promise("read-only home: it exits normally", desk.has_ended(), desk.process.returncode)
        report.promise("read-only home: silent", not desk.said(), desk.said())
        desk.bed.stop(desk.process)


def full_disk(desk, report):
    """A disk that becomes full, and a file size limit."""
    _run_out_of_room(desk, report, "limited files", lambda folder: FileSizeLimit())
    try:
        _run_out_of_room(desk, report, "full disk", SmallDisk)
    except NotPossibleHere as reason:
        report.not_possible("full disk: stored data stays intact", reason)


def _run_out_of_room(desk, report, where, make_shortage):
    desk.config = desk.bed.home / where.replace(" ", "-")
    desk.config.mkdir()
    with make_shortage(desk.config) as shortage:
        desk.preferences_file.parent.mkdir()
        desk.preferences_file.write_text(json.dumps(_STORED))
        desk.start_over({"ORVANE_DEBUG_SETTINGS": "1", "XDG_DATA_HOME": str(desk.config)})
        desk.reader.control(_SOUND)
        stored = desk.preferences()
        shortage.exhaust(desk.process)
        desk.reader.press(_SOUND)
        report.promise(f"{where}: a setting holds until the end", comes_true(lambda: desk.is_checked(_SOUND), 3))
        report.promise(f"{where}: stored data stays intact", desk.preferences() == stored, desk.preferences())
        report.promise(f"{where}: no partial file remains",
                       not list(desk.preferences_file.parent.glob(".preferences*")))
        desk.reader.press(MENU_BAR_BOX)
        wait_until(desk.tray.items, "the icon in the tray")
        _has_break(desk, report, f"{where}: breaks come")
        shortage.restore(desk.process)
        desk.reader.press(MENU_BAR_BOX)
        wanted = {**stored, "OBSoundEnabled": True, "OBMenuBarMode": False}
        report.promise(f"{where}: with room again, all settings are stored",
                       comes_true(lambda: desk.preferences() == wanted, 3), desk.preferences())
        report.promise(f"{where}: silent", not desk.said(), desk.said())
        desk.finish()


def no_descriptors(desk, report):
    """A program without free file descriptors."""
    desk.start({"OBOnboarded": True, "OBMenuBarMode": True, "OBSoundEnabled": True})
    wait_until(desk.tray.items, "the icon in the tray")
    # Everything that runs at startup has opened its descriptors by then.
    wait_until_idle(desk.process)
    Descriptors.exhaust(desk.process)
    desk.tray.click(SWITCH_ON)
    report.promise("no descriptors: reminders are turned on", comes_true(lambda: desk.tray.labels()[0] == SWITCH_OFF, 3))
    _has_break(desk, report, "no descriptors: breaks come")
    desk.tray.click(OPEN)
    report.promise("no descriptors: the window opens", comes_true(desk.windows, 3))
    desk.reader.press(SETTINGS)
    desk.reader.press(_SOUND)
    report.promise("no descriptors: a setting holds until the end",
                   comes_true(lambda: not desk.is_checked(_SOUND), 3))
    spent = processor_seconds(desk.process)
    began = time.monotonic()
    comes_true(lambda: time.monotonic() - began > _WATCHED_SECONDS, _WATCHED_SECONDS + 1)
    spent = processor_seconds(desk.process) - spent
    report.promise("no descriptors: waiting costs almost nothing", spent <= _MAX_PROCESSOR_SECONDS, f"{spent:.2f} s")
    Descriptors.restore(desk.process)
    desk.reader.press(_SOUND)
    wait_until(lambda: desk.is_checked(_SOUND), "the box with its mark")
    desk.reader.press(_SOUND)
    _has_break(desk, report, "with descriptors again, breaks come")
    report.promise("with descriptors again, settings are stored",
                   comes_true(lambda: desk.preferences().get("OBSoundEnabled") is False, 3), desk.preferences())
    report.promise("no descriptors: silent", not desk.said(), desk.said())
    desk.tray.click(QUIT)
    report.promise("no descriptors: it exits normally", desk.has_ended(), desk.process.returncode)
    desk.bed.stop(desk.process)


def bus_restarts(desk, report):
    """The session bus dies during a break, and another one replaces it."""
    desk.start_in_menu_bar()
    desk.tray.click(SWITCH_ON)
    desk.tray.click(BREAK_NOW)
    desk.wait_for_overlays()
    wait_until(desk.break_has_keyboard, "the break with the keyboard")
    desk.bed.stop(desk.bed.bus)
    report.promise("a break stays when the session bus dies", stays_true(desk.overlays, 0.5))
    desk.bed.press("Escape")
    report.promise("Escape ends the break after the session bus has died", comes_true(lambda: not desk.overlays(), 3))
    report.promise("without a tray the window opens by itself after the session bus has died",
                   comes_true(desk.windows, 8))
    desk.tray.stop()
    desk.bed.start_bus("session-bus")
    desk.tray = Tray(desk.bed)
    report.promise("the eye does not return with another session bus", stays_true(lambda: not desk.tray.items(), 1))
    second = desk.start_again()
    report.promise("another start in another session bus does not find the first program",
                   comes_true(desk.tray.items, 5) and second.poll() is None)
    desk.bed.stop(second)
    report.promise("silent when the session bus restarts", not desk.said(), desk.said())
    desk.bed.stop(desk.process)
    report.promise("it exits normally after the session bus has restarted", desk.process.returncode == 0,
                   desk.process.returncode)
    desk.start_over()
    report.promise("the next start has the eye in the new session bus", comes_true(desk.tray.items, 5))
    desk.finish()


def display_dies(desk, report):
    """The X server dies during a break."""
    desk.start(_STORED, {"ORVANE_DEBUG_BREAK": "1"})
    desk.wait_for_overlays()
    check_end_with_server(desk, report, "the X server")
    report.promise("no crash is reported when the X server is killed",
                   not (desk.bed.home / "data/OrvaneBreak/pending-crash.txt").exists())
    report.promise("stored data is intact when the X server is killed", desk.preferences() == _STORED,
                   desk.preferences())
    desk.bed.stop(desk.process)
