# SPDX-License-Identifier: GPL-3.0-or-later
"""Real screen lockers for Wayland, which report to no bus."""

import shutil

from .bed import NotPossibleHere
from .packages import not_installed
from .screen_locker import under_any_password

_COLOUR = (51, 102, 153)
_STYLE = "window { background: #%02x%02x%02x; }\n" % _COLOUR

_FOUND = {"swaylock": shutil.which("swaylock"), "gtklock": shutil.which("gtklock")}

#: The names of the lockers.
LOCKERS = tuple(_FOUND)


class WaylandLocker:
    """Locks the screen from construction until the password is typed."""

    def __init__(self, bed, name):
        if not _FOUND[name]:
            raise NotPossibleHere(not_installed(name))
        self._bed = bed
        look = {"swaylock": ["--no-unlock-indicator", "--color", "%02x%02x%02x" % _COLOUR],
                "gtklock": ["--style", bed.write("gtklock.css", _STYLE)]}[name]
        self._process = bed.run([name, *look], under_any_password(bed, name))

    def covers(self):
        """Whether it shows in every corner of every monitor."""
        picture = self._bed.picture()
        return all(picture.getpixel((x, y)) == _COLOUR for output in self._bed.outputs()
                   for x in (output.x + 5, output.box[2] - 5) for y in (output.y + 5, output.box[3] - 5))

    def type_password(self):
        self._bed.type("password")
        self._bed.press("Return")

    def is_unlocked(self):
        return self._process.poll() is not None
