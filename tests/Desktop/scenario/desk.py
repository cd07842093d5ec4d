# SPDX-License-Identifier: GPL-3.0-or-later
"""A desk: the program on one bed, with the operations that the parts of a scenario share."""

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

#: Preferences for menu-bar mode after the first launch.
IN_MENU_BAR = {"OBMenuBarMode": True, "OBOnboarded": True}

#: A position where the pointer hovers over nothing that reacts.
RESTING_PLACE = (1200, 40)

#: Longer than a keyboard waits before it repeats a key.
HELD_SECONDS = 1.5


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
        """Starts the program and records its standard error. If the bed has no preferences yet, it writes those for menu-bar
        mode."""
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
        """Starts a tray and the program, and waits for its icon."""
        self.tray = self.tray or Tray(self.bed)
        self.start_program()
        wait_until(self.tray.items, "the icon in the tray")

    def start_in_break(self, environment=None, scale=1.0):
        """Starts the program with a break at launch, and waits until the break is painted."""
        self.start_program({"ORVANE_DEBUG_BREAK": "1", **(environment or {})})
        self.wait_for_break(scale)

    def write_preferences(self, config_folder, **changes):
        self.bed.write(config_folder / "OrvaneBreak" / "preferences.json", json.dumps({**IN_MENU_BAR, **changes}))

    def has_ended(self, status=0):
        """Whether the program ends with this status in time."""
        return comes_true(lambda: self.process.poll() is not None, 5) and self.process.returncode == status

    def stop_program(self):
        self.bed.stop(self.process)
        wait_until(lambda: not self.overlays(), "no break window after the end of the program")

    def said(self):
        """The lines of the current run on standard error."""
        return self._error_file.read_text("utf-8", "replace").splitlines()

    def clean_up(self, program_runs):
        """Cleans up after a part of the scenario, so that its failure does not affect the next: closes other programs' windows,
        ends a break, and starts or stops the program."""
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
        """The program's mapped break windows, from bottom to top."""
        return [window for window in (state or self.probe.state())["windows"]
                if window["processId"] == self.process.pid and window["viewable"] and window["overrideRedirect"]]

    def begin_break(self):
        """Begins a break from the tray's menu and waits until it is painted; returns the time of the click."""
        moment = self.tray.click(BREAK_NOW)
        self.wait_for_break()
        return moment

    def wait_for_break(self, scale=1.0):
        self.wait_for_overlays()
        wait_until(lambda: all(self.parts(scale)), "title, ring and texts on every screen")

    def wait_for_overlays(self):
        """Waits for the break windows, painted or not."""
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
        """The break's parts on each output; None where they are incomplete."""
        picture = self.bed.picture()
        return [layout.find_parts(picture, output, scale) for output in self.bed.outputs()]

    def settled_picture(self):
        """A picture of the desktop once it has finished drawing: unchanged for a while except for a blinking cursor."""
        known = []

        def is_settled():
            known.append(self.bed.picture())
            return len(known) > 5 and len({picture.tobytes() for picture in known[-6:]}) <= 2 and known[-1].tobytes() in {
                picture.tobytes() for picture in known[-6:-1]}
        wait_until(is_settled, "a stable picture", interval=0.03)
        return known[-1]

    def keep_picture(self, name):
        """Saves a picture of the monitors for inspection if a folder for pictures was given."""
        if self._pictures:
            self._pictures.mkdir(parents=True, exist_ok=True)
            self.bed.picture().save(self._pictures / f"{self.bed.name}-{name}.png", compress_level=1)

    def panel_boxes(self):
        """The panel's box as for PIL's crop(), if there is a panel."""
        if not self.bed.panel:
            return []
        first, (top, bottom) = self.bed.outputs()[0], self.bed.panel_rows
        top = top if top >= 0 else first.height + top
        return [(first.x, first.y + top, first.box[2], first.y + (first.height if bottom is None else bottom))]

    def rest_pointer(self):
        self.bed.move_pointer(*RESTING_PLACE)

    @staticmethod
    def dimmed(colour):
        """The colour as it looks under a break."""
        return tuple(round(part * LIGHT) for part in colour)

    def other_window(self, title="Other", colour=(0, 160, 80), place=(30, 60, 280, 200), *options):
        """Opens another program's window and gives it the focus."""
        # Window managers time-stamp focus requests with the last input that they saw, so there has to be a click first.
        self.bed.click(*RESTING_PLACE)
        if self.bed.window_manager is None:
            options += ("take-focus",)
        window = self.probe.window(title, colour, place, *options)
        self._windows.append(window)
        wait_until(lambda: self.probe.state()["focus"] == window.identifier, f"the focus in the window {title}")
        return window


def near(first, second, tolerance=2):
    """Whether two colours differ by at most `tolerance` in every channel."""
    return all(abs(a - b) <= tolerance for a, b in zip(first, second))


def without_identifier(preferences_file):
    """The preferences in a file without the identifier that the first check-in generates."""
    stored = json.loads(preferences_file.read_text("utf-8"))
    stored.pop("OBDeviceId", None)
    return stored
