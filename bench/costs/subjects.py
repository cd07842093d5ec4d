# SPDX-License-Identifier: GPL-3.0-or-later
"""The measured programs and their desktops."""

import dataclasses
import json
import pathlib
import time

from driver.bed import Output
from driver.waiting import wait_until
from driver.x11 import X11Bed
from scenario.desk import Desk

#: The default size.
SCREENS = [Output("ONLY", 0, 0, 1920, 1080)]
LARGE_SCREENS = [Output("ONLY", 0, 0, 3840, 2160)]

_PREFERENCES = {"OBOnboarded": True, "OBIntervalMinutes": 45, "OBPauseSeconds": 60}


@dataclasses.dataclass(frozen=True, eq=False)
class Subject:
    """One way to run a program."""
    name: str
    arguments: tuple
    title: str
    preferences: dict | None = None

    def start(self, bed):
        """Starts it; returns its process and its start time on the monotonic clock in nanoseconds."""
        if self.preferences is not None:
            bed.write("config/OrvaneBreak/preferences.json", json.dumps(self.preferences))
        process = bed.run(self.arguments)
        return process, time.monotonic_ns()


class Kit:
    """The build and its subjects. `is_quick`: shorter measurements with rougher figures."""

    def __init__(self, build_folder, is_quick):
        self.program = pathlib.Path(build_folder) / "bin" / "orvanebreak"
        self.helpers = pathlib.Path(build_folder) / "tests" / "Desktop"
        self.is_quick = is_quick
        reference = pathlib.Path(build_folder) / "bench" / "reference" / "reference-window"
        self.reference = Subject("reference", (reference,), "Reference")
        self.ring = Subject("bare ring", (reference, "--ring"), "Reference")
        self.in_dock = Subject("in the Dock", (self.program,), "OrvaneBreak", {**_PREFERENCES, "OBMenuBarMode": False})
        self.in_menu_bar = Subject("in the menu bar", (self.program,), "OrvaneBreak",
                                   {**_PREFERENCES, "OBMenuBarMode": True})

    def choose(self, usual, quick):
        return quick if self.is_quick else usual

    def desk(self, bed, **preferences):
        """A desk of the desktop tests, with the program waiting in the menu bar."""
        desk = Desk(bed, self.program, self.helpers)
        desk.write_preferences(pathlib.Path(bed.environment()["XDG_CONFIG_HOME"]), **{**_PREFERENCES, **preferences})
        desk.start_with_tray()
        return desk


def plain_bed():
    """A screen with a window manager."""
    return X11Bed("openbox", monitors=SCREENS)


def composited_bed(monitors):
    """Screens with a window manager and a compositor, so that windows can be translucent."""
    return X11Bed("openbox", compositor=True, monitors=monitors)


def wait_for_window(bed, subject):
    """Returns the subject's window once it is on the screen."""
    return wait_until(lambda: bed.windows_titled(subject.title), f"the window {subject.name}").pop()
