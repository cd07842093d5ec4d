# SPDX-License-Identifier: GPL-3.0-or-later
"""One bed with the program on it, and what the parts of the scenario have in common."""

import json
import pathlib

from driver.probe import Probe
from driver.tray import Tray
from driver.waiting import comes_true, wait_until

from . import layout
from .cover import LIGHT

BREAK_NOW = "Faire une pause maintenant"
SWITCH_ON = "Protéger mes yeux"
SWITCH_OFF = "Arrêter les rappels"
POSTPONE = "Reporter de 10 minutes"
QUIT = "Quitter OrvaneBreak"
OPEN = "Ouvrir OrvaneBreak…"
UPDATES = "Rechercher des mises à jour…"
REPORT = "Signaler un problème…"

#: The preferences of somebody who lives in the menu bar.
IN_MENU_BAR = {"OBMenuBarMode": True, "OBOnboarded": True}

#: A place where the pointer is over nothing that changes when it is pointed at.
RESTING_PLACE = (1200, 40)


class Desk:
    """The program's executable and helpers on a started bed."""

    def __init__(self, bed, program, helpers, pictures=None):
        self.bed = bed
        self._pictures = pictures
        self.probe = self._make_probe(helpers)
        self.process = None
        self.tray = None
        self.program = bed.lend(program)
        self._runs = 0
        self._windows = []

    def _make_probe(self, helpers):
        return Probe(self.bed, helpers)

    # -- the program

    def start_program(self, environment=None, arguments=()):
        """Starts the program; what it says on standard error is kept. Without preferences in the bed's own folder it
        gets those of somebody who lives in the menu bar."""
        self._runs += 1
        file = pathlib.Path(self.bed.environment()["XDG_CONFIG_HOME"]) / "OrvaneBreak" / "preferences.json"
        if not file.exists():
            self.write_preferences(file.parent.parent)
        self._error_file = self.bed.home / f"stderr-{self._runs}"
        with open(self._error_file, "wb") as errors:
            self.process = self.bed.run([self.program, *arguments], environment, stderr=errors)

    def start_again(self, *arguments):
        """Starts the program a second time; returns its process."""
        return self.bed.run([self.program, *arguments])

    def start_with_tray(self):
        """Starts the program beside a running tray, and waits for its icon."""
        self.tray = self.tray or Tray(self.bed)
        self.start_program()
        wait_until(self.tray.items, "the icon in the tray")

    def start_in_break(self, environment=None, scale=1.0):
        """Starts the program with a break at launch, and waits for its picture."""
        self.start_program({"ORVANE_DEBUG_BREAK": "1", **(environment or {})})
        self.wait_for_break(scale)

    def write_preferences(self, config_folder, **changes):
        self.bed.write(config_folder / "OrvaneBreak" / "preferences.json", json.dumps({**IN_MENU_BAR, **changes}))

    def has_ended(self, status=0):
        """Whether the program has ended with this status, at last after a while."""
        return comes_true(lambda: self.process.poll() is not None, 5) and self.process.returncode == status

    def stop_program(self):
        self.bed.stop(self.process)
        wait_until(lambda: not self.overlays(), "no break window after the end of the program")

    def said(self):
        """The lines of the present run on standard error."""
        return self._error_file.read_text("utf-8", "replace").splitlines()

    def tidy_up(self, program_runs):
        """Undoes what a part of the scenario left behind, so that its trouble is not the next one's: other programs'
        windows, a break, and a program that runs or does not run."""
        for window in self._windows:
            window.close()
        self._windows.clear()
        if self.process and self.process.poll() is not None:
            self.bed.stop(self.process)
            self.process = None
        if self.process and not program_runs:
            self.stop_program()
            self.process = None
        if program_runs and not self.process:
            self.start_with_tray()
        if self.process and self.overlays():
            self.stop_program()
            self.start_with_tray()

    # -- a break

    def overlays(self, state=None):
        """The program's break windows that are on the screen, from bottom to top."""
        return [window for window in (state or self.probe.state())["windows"]
                if window["processId"] == self.process.pid and window["viewable"] and window["overrideRedirect"]]

    def begin_break(self):
        """Begins a break from the tray's menu and waits for its picture; returns the moment of the click."""
        moment = self.tray.click(BREAK_NOW)
        self.wait_for_break()
        return moment

    def wait_for_break(self, scale=1.0):
        self.wait_for_overlays()
        wait_until(lambda: all(self.parts(scale)), "title, ring and texts on every screen")

    def wait_for_overlays(self):
        """Waits for the windows of a break, whatever they show yet."""
        outputs = self.bed.outputs()
        wait_until(lambda: len(self.overlays()) == len(outputs), "a break window on every screen")

    def break_has_keyboard(self):
        return self.probe.state()["focus"] in [window["id"] for window in self.overlays()]

    def wait_for_end(self, timeout=3):
        wait_until(lambda: not self.overlays(), "the end of the break", timeout)

    def end_break(self):
        self.bed.press("Escape")
        self.wait_for_end()

    def parts(self, scale=1.0):
        """For every output where its parts are; None where they are not complete."""
        picture = self.bed.picture()
        return [layout.find_parts(picture, output, scale) for output in self.bed.outputs()]

    def settled_picture(self):
        """The picture of a desktop that has finished drawing: it has been the same for a while, but for a blinking cursor."""
        known = []

        def is_settled():
            known.append(self.bed.picture())
            return len(known) > 5 and len({picture.tobytes() for picture in known[-6:]}) <= 2 and known[-1].tobytes() in {
                picture.tobytes() for picture in known[-6:-1]}
        wait_until(is_settled, "a picture that stays", interval=0.03)
        return known[-1]

    def keep_picture(self, name):
        """Saves what the monitors show for people to look at, where a folder for pictures was given."""
        if self._pictures:
            self._pictures.mkdir(parents=True, exist_ok=True)
            self.bed.picture().save(self._pictures / f"{self.bed.name}-{name}.png", compress_level=1)

    def panel_boxes(self):
        """The panel, as a PIL picture is cropped, where there is one."""
        if not self.bed.panel:
            return []
        first, (top, bottom) = self.bed.outputs()[0], self.bed.panel_rows
        top = top if top >= 0 else first.height + top
        return [(first.x, first.y + top, first.box[2], first.y + (first.height if bottom is None else bottom))]

    def rest_pointer(self):
        self.bed.move_pointer(*RESTING_PLACE)

    @staticmethod
    def dimmed(colour):
        """What a colour looks like under a break."""
        return tuple(round(part * LIGHT) for part in colour)

    def other_window(self, title="Other", colour=(0, 160, 80), place=(30, 60, 280, 200), *options):
        """Another program's window with the keyboard."""
        # Window managers date their focus requests by the last input that they saw: a person has clicked somewhere.
        self.bed.click(*RESTING_PLACE)
        if self.bed.window_manager is None:
            options += ("take-focus",)
        window = self.probe.window(title, colour, place, *options)
        self._windows.append(window)
        wait_until(lambda: self.probe.state()["focus"] == window.identifier, f"the focus in the window {title}")
        return window


def near(first, second, tolerance=2):
    """True when two colours differ by at most `tolerance` in every part."""
    return all(abs(a - b) <= tolerance for a, b in zip(first, second))


def without_identifier(preferences_file):
    """The preferences in a file, but for the identifier that the first check-in makes."""
    stored = json.loads(preferences_file.read_text("utf-8"))
    stored.pop("OBDeviceId", None)
    return stored
