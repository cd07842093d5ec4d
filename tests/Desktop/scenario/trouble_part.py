# SPDX-License-Identifier: GPL-3.0-or-later
import json
import shutil

from driver.waiting import comes_true, stays_true, wait_until

from .application_desk import LOGIN_BOX, SETTINGS
from .desk import SWITCH_OFF, SWITCH_ON, near

_STARTS = 6
_STATUS_TEAL = (13, 148, 136)
_PUT_ASIDE_LINE = "OrvaneBreak: préférences: fichier illisible mis de côté sous "
_LOGIN_LINE = "OrvaneBreak: ouverture à la connexion: "


def starts_at_once(desk, report):
    """Several starts at the same time."""
    desk.start({"OBOnboarded": True})
    processes = [desk.process] + [desk.start_again() for _ in range(_STARTS - 1)]

    def living():
        return [process for process in processes if process.poll() is None]
    report.promise("of several simultaneous starts exactly one survives", comes_true(lambda: len(living()) == 1, 8)
                   and stays_true(lambda: len(living()) == 1, 0.5), len(living()))
    report.promise("the others succeed", all(process.returncode == 0 for process in processes if process.returncode
                                              is not None), [process.returncode for process in processes])
    report.promise("there is one window", comes_true(lambda: len(desk.windows()) == 1, 3), desk.windows())
    for process in processes:
        desk.bed.stop(process)


def bus_dies(desk, report):
    """The session bus dies."""
    bus, address = desk.bed.start_bus("second-bus")
    desk.start_in_dock({"DBUS_SESSION_BUS_ADDRESS": address})
    desk.bed.stop(bus)
    desk.bed.press("Return")
    report.promise("reminders go on after the session bus has died",
                   comes_true(lambda: _shows_teal_status(desk), 3) and desk.process.poll() is None)
    desk.bed.press("ctrl+w")
    report.promise("it exits normally after the session bus has died", desk.has_ended(), desk.process.returncode)
    report.promise("silent when the session bus dies", not desk.said(), desk.said())
    desk.bed.stop(desk.process)


def _shows_teal_status(desk):
    """Whether the status line has its colour for active reminders, because without a bus there is no screen reader."""
    return any(near(colour, _STATUS_TEAL) for _, colour in desk.bed.picture().getcolors(1 << 24))


def login_item(desk, report):
    """Opening at login, also if its folder is a file."""
    desk.start_in_dock()
    desk.click_control(SETTINGS)
    desk.click_control(LOGIN_BOX)
    entries = desk.config / "autostart"
    report.promise("the box creates the login entry",
                   comes_true(lambda: entries.is_dir() and len(list(entries.iterdir())) == 1, 3))
    text = next(entries.iterdir()).read_text("utf-8")
    report.promise("the entry starts the program", f'Exec="{desk.program}"\n' in text, text)
    desk.click_control(LOGIN_BOX)
    report.promise("the box removes the entry", comes_true(lambda: not list(entries.iterdir()), 3))
    report.promise("silent when the login box works", not desk.said(), desk.said())

    entries.rmdir()
    entries.write_text("a file", "utf-8")
    desk.click_control(LOGIN_BOX)
    report.promise("a folder that cannot be written gives one line in the log", comes_true(
        lambda: len(desk.said()) == 1 and desk.said()[0].startswith(_LOGIN_LINE)
        and len(desk.said()[0]) > len(_LOGIN_LINE), 3), desk.said())
    report.promise("the box shows the actual state", comes_true(lambda: not desk.is_checked(LOGIN_BOX), 3))
    report.promise("the existing file is untouched", entries.read_text("utf-8") == "a file")
    desk.finish()


def edited_preferences(desk, report):
    """Preferences edited to anything while the program runs."""
    desk.start_in_dock()
    everything = [b"", b"{", b"[]", b"null", b"\xff\xfe\x00", b"{" * 100_000, b'{"OBIntervalMinutes": 1e999}',
                  json.dumps({"OBIntervalMinutes": -3, "OBPauseSeconds": "long", "OBMenuBarMode": [], "OBOnboarded": 7,
                              "OBSoundEnabled": {"a": None}}).encode()]
    for content in everything:
        _replace(desk.preferences_file, content)
        desk.bed.press("Return")
        expected = SWITCH_OFF if everything.index(content) % 2 == 0 else SWITCH_ON
        report.promise("it continues whatever is written into its preferences", desk.shows(expected)
                       and desk.shows("Toutes les 20 min : regarde à 6 mètres pendant 20 s"), content[:40])
    _replace(desk.preferences_file, json.dumps({"OBIntervalMinutes": 45, "OBPauseSeconds": 60, "OBOnboarded": True,
                                                "unknown": {"kept": 1}}).encode())
    desk.bed.press("Return")
    report.promise("valid values written by hand take effect",
                   desk.shows("Toutes les 45 min : regarde à 6 mètres pendant 60 s"))
    desk.click_control(SETTINGS)
    desk.click_control("Jouer un son doux au début de la pause")
    report.promise("what others wrote is kept when a setting is stored", comes_true(lambda: desk.preferences() == {
        "OBIntervalMinutes": 45, "OBPauseSeconds": 60, "OBOnboarded": True, "unknown": {"kept": 1},
        "OBSoundEnabled": True}, 3), desk.preferences())
    shutil.rmtree(desk.preferences_file.parent)
    desk.click_control("Jouer un son doux au début de la pause")
    report.promise("a deleted folder is created again", comes_true(desk.preferences_file.exists, 3))
    report.promise("silent about what is written into its preferences, but for damaged files that it put aside",
                   all(line.startswith(_PUT_ASIDE_LINE) for line in desk.said()), desk.said())
    desk.finish()


def _replace(path, content):
    """Replaces the file like a text editor."""
    temporary = path.with_name("edited")
    temporary.write_bytes(content)
    temporary.replace(path)
    wait_until(lambda: path.read_bytes() == content, "the written file")
