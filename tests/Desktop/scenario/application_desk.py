# SPDX-License-Identifier: GPL-3.0-or-later
"""A desk for the application besides the break: its windows, their controls, and its preferences."""

import json

from driver.screen_reader import ScreenReader
from driver.waiting import comes_true, wait_until

from .desk import Desk, without_identifier

TITLE = "OrvaneBreak"
TO_DOCK = "Dans le Dock"
TO_MENU_BAR = "Dans la barre de menus"
SETTINGS = "Réglages"
BACK = "Retour"
MENU_BAR_BOX = "Icône dans la barre de menus (au lieu du Dock)"
LOGIN_BOX = "Ouvrir à la connexion"
SKIPPED = {"_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER"}


class ApplicationDesk(Desk):
    """Every start has its own configuration folder and runs under a screen reader."""

    def __init__(self, bed, program, helpers, pictures=None):
        super().__init__(bed, program, helpers, pictures)
        self.reader = ScreenReader(bed)
        self.config = None
        self._folders = 0

    def start(self, preferences=None, environment=None, arguments=()):
        """Starts the program with these preferences; None makes it a first launch."""
        self._folders += 1
        self.config = self.bed.home / f"config-{self._folders}"
        self.config.mkdir(mode=0o700)
        if preferences is not None:
            (self.config / "OrvaneBreak").mkdir(mode=0o700)
            self.preferences_file.write_text(json.dumps(preferences), "utf-8")
        self.start_over(environment, arguments)

    def start_over(self, environment=None, arguments=()):
        """Starts the program with the configuration of the last run."""
        self.start_program({"XDG_CONFIG_HOME": str(self.config), **(environment or {})}, arguments)

    def start_in_dock(self, environment=None):
        self.start({"OBOnboarded": True}, environment)
        self.wait_for_window()

    def start_in_menu_bar(self, environment=None):
        """Needs a running tray."""
        self.start({"OBOnboarded": True, "OBMenuBarMode": True}, environment)
        wait_until(self.tray.items, "the icon in the tray")

    def begin_break_by_second_start(self):
        """Starts the program a second time with --break-now, and waits for the break windows."""
        second = self.start_again("--break-now")
        self.wait_for_overlays()
        self.bed.stop(second)

    @property
    def preferences_file(self):
        return self.config / "OrvaneBreak" / "preferences.json"

    def preferences(self):
        """The stored preferences without the identifier that the first check-in generates."""
        return without_identifier(self.preferences_file)

    # -- windows and controls

    def windows(self):
        """The application's windows except break windows, which have the same title."""
        unmanaged = {window["id"] for window in self.probe.state()["windows"] if window["overrideRedirect"]}
        return self.bed.windows_titled(TITLE) - unmanaged

    def wait_for_window(self):
        wait_until(lambda: self.windows() and self.has_keyboard(), "the window with the keyboard")

    def has_keyboard(self):
        return self.probe.state()["focus"] in self.windows()

    def is_listed(self):
        """Whether the desktop lists the window in its task bar."""
        return not SKIPPED & self.bed.window_states(min(self.windows()))

    def shows(self, name):
        """Whether a control with this name becomes visible in time."""
        return comes_true(lambda: self.shows_now(name), 5)

    def shows_now(self, name):
        return any(control.name == name for control in self.reader.controls())

    def is_checked(self, name):
        return "checked" in self.reader.control(name).states

    def click_control(self, name):
        """Clicks the control with the mouse."""
        self.bed.click(*self.reader.control(name).middle)

    def close_by_window_manager(self):
        """Asks the window to close, like its frame's close button."""
        self.bed.close_window(max(self.windows()))

    def finish(self):
        """Ends the program if it is running."""
        self.bed.stop(self.process)
        wait_until(lambda: not self.windows(), "no window after the end of the program")
