# SPDX-License-Identifier: GPL-3.0-or-later
"""The program on a Wayland desktop. Tests cannot query other programs' windows there, so they check the monitors' pictures."""

from driver.field_window import FieldWindows
from driver.waiting import wait_until

from . import layout
from .desk import Desk


class WaylandDesk(Desk):
    """A desk that finds the break in the picture."""

    def _make_probe(self, helpers):
        return FieldWindows(self.bed, helpers)

    def overlays(self, state=None):
        """The monitors that show the parts of a break."""
        outputs = self.bed.outputs()
        return [output for output, parts in zip(outputs, self.parts()) if parts]

    def wait_for_break(self, scale=1.0):
        wait_until(lambda: all(self.parts()), "title, ring and texts on every screen")

    def parts(self, scale=1.0):
        picture = self.bed.picture()
        return [layout.find_parts(picture, output, output.scale) for output in self.bed.outputs()]

    def other_window(self, title="Other", colour=(0, 160, 80), place=(30, 60, 280, 200), *options):
        window = self.probe.window(title, colour, place, *options)
        self._windows.append(window)
        wait_until(window.has_focus, f"the focus in the window {title}")
        return window
