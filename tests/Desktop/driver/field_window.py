# SPDX-License-Identifier: GPL-3.0-or-later
"""Another program's window with a text field, for desktops where only that program knows what input reaches it."""

import pathlib
import subprocess

from .bed import CannotStart
from .other_window import OtherWindow, describe_window


class FieldWindows:
    """Opens windows with the helper program in `folder`."""

    def __init__(self, bed, folder):
        self._bed = bed
        self._program = pathlib.Path(folder) / "field-window"
        if not self._program.exists():
            raise CannotStart(f"no field-window in {folder}: configure and build again")

    def window(self, title, colour, place, *options):
        """Opens a window: place is x, y, width, height in logical pixels; option "full-screen"."""
        process = self._bed.run([self._bed.lend(self._program), *describe_window(title, colour, place), *options],
                                {"QT_QPA_PLATFORM": "wayland"}, stdout=subprocess.PIPE)
        return FieldWindow(self._bed, process)


class FieldWindow(OtherWindow):
    """A window whose program also reports whether it has the focus; clicks into its text field are not counted."""

    def keys(self):
        """The keys that it received: letters as on the key caps, other keys as numbers."""
        codes = [int(code, 16) for code, *_ in self._told("key")]
        return [chr(code).lower() if code < 256 else code for code in codes]

    def has_focus(self):
        return self._told("focus")[-1:] == [["in"]]

    def has_menu(self):
        """Whether its menu, which a right click opens, is on the screen."""
        return self._told("menu")[-1:] == [["open"]]
