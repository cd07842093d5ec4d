# SPDX-License-Identifier: GPL-3.0-or-later
"""The desktops on compositors with wlroots' protocols: one tiles, the others stack windows."""

from . import desktop_files
from .wlroots import WlrootsBed


class SwayBed(WlrootsBed):
    """sway 1.7 never withdraws a monitor."""

    name = "wayland-sway"
    desktop = "sway"
    required_programs = ("sway", "swaymsg", *WlrootsBed.required_programs)

    def environment(self):
        return {**super().environment(), "SWAYSOCK": f"{self.home}/runtime/sway.sock"}

    def _arguments(self):
        return ["-c", self.write("sway.conf", desktop_files.SWAY)]

    @property
    def withdraws_monitors(self):
        return self.version() != "sway 1.7"


class LabwcBed(WlrootsBed):
    name = "wayland-labwc"
    desktop = "labwc:wlroots"
    required_programs = ("labwc", *WlrootsBed.required_programs)

    def _arguments(self):
        return ["-C", self.write("labwc/rc.xml", desktop_files.LABWC).parent]


class WayfireBed(WlrootsBed):
    name = "wayland-wayfire"
    desktop = "wayfire:wlroots"
    required_programs = ("wayfire", *WlrootsBed.required_programs)

    def _arguments(self):
        return ["-c", self.write("wayfire.ini", desktop_files.WAYFIRE)]
