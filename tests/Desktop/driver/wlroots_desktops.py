# SPDX-License-Identifier: GPL-3.0-or-later
"""The desktops on compositors with wlroots' protocols: one tiles, the others stack windows."""

import json

from . import desktop_files
from .bed import NotPossibleHere
from .wlroots import WlrootsBed


#: sway's words for the options of wlr-randr.
_WORDS = {"--on": "enable", "--off": "disable", "--custom-mode": "resolution", "--pos": "position", "--scale": "scale",
          "--transform": "transform"}


def _described(entry):
    size = mode = (entry["current_mode"]["width"], entry["current_mode"]["height"])
    size = size[::-1] if entry["transform"].endswith(("90", "270")) else size
    rectangle = entry["rect"]
    return {"name": entry["name"], "scale": entry["scale"], "size": size, "mode": "{}x{}".format(*mode),
            "corner": (rectangle["x"], rectangle["y"]), "extent": (rectangle["width"], rectangle["height"])}


class SwayBed(WlrootsBed):
    """sway 1.7 never withdraws a monitor, and offers no protocol by which a program learns of a lock."""

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

    def require_lock_protocol(self):
        if self.version() == "sway 1.7":
            raise NotPossibleHere("sway 1.7 has no ext-session-lock")

    def _monitors(self):
        try:
            known = json.loads(self._call(["swaymsg", "-r", "-t", "get_outputs"]))
        except ValueError:
            return []
        return sorted((_described(entry) for entry in known if entry["active"]), key=lambda monitor: monitor["corner"])

    def _arrange(self, *settings):
        """sway 1.7 takes and tells no settings through the protocol."""
        for name, *options in settings:
            words = " ".join(_WORDS.get(option, str(option).replace(",", " ")) for option in options).split()
            self._call(["swaymsg", "--", "output", name, *words])


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
