# SPDX-License-Identifier: GPL-3.0-or-later
"""A tiling desktop with layer surfaces: sway, with its own panel."""

import io
import json

from PIL import Image

from . import desktop_files
from .waiting import wait_until
from .wayland import ProtocolHands, WaylandBed

_PANEL_HEIGHT = 30


def _size(entry):
    """The size of a monitor in pixels, rotation included."""
    mode = entry["current_mode"]
    size = (mode["width"], mode["height"])
    return size[::-1] if entry["transform"].endswith(("90", "270")) else size


class SwayBed(WaylandBed):
    """HEADLESS-1 with the panel at its bottom, and HEADLESS-2 right of it."""

    name = "wayland-sway"
    required_programs = ("sway", "swaymsg", "swaybar", "swaybg", "grim")

    def environment(self):
        return {**super().environment(), "SWAYSOCK": f"{self.home}/runtime/sway.sock", "XDG_CURRENT_DESKTOP": "sway"}

    def _start_compositor(self):
        names = [f"HEADLESS-{index}" for index in range(1, len(self.sizes) + 1)]
        lines, x = [], 0
        for index, (name, size) in enumerate(zip(names, self.sizes)):
            lines.append(desktop_files.SWAY_OUTPUT.format(
                name=name, number=index + 1, width=size[0], height=size[1], x=x, y=0,
                colour="#%02x%02x%02x" % self.wallpaper_colours[index]))
            x += size[0]
        config = self.write("sway.conf", desktop_files.SWAY.format(outputs="".join(lines), panel=names[0],
                                                                    height=_PANEL_HEIGHT))
        self._run_compositor(["sway", "-c", config],
                             {"WLR_BACKENDS": "headless", "WLR_RENDERER": "pixman", "WLR_LIBINPUT_NO_DEVICES": "1",
                              "WLR_HEADLESS_OUTPUTS": str(len(names))},
                             lambda: len(self._monitors()) == len(names))

    def _start_hands(self):
        self._hands = ProtocolHands(self, self._helpers / "wayland-hands")

    def _dress(self):
        places = [(output.x + 5, output.y + 5) for output in self.outputs()]
        wait_until(lambda: [self.picture().getpixel(place) for place in places] == list(self.wallpaper_colours),
                   "the wallpapers")
        first = self.outputs()[0]
        place = (first.x + first.width // 2, first.box[3] - 5)
        wait_until(lambda: self.picture().getpixel(place) == self.panel_colour, "the panel")

    def _monitors(self):
        try:
            known = json.loads(self._call(["swaymsg", "-r", "-t", "get_outputs"]))
        except ValueError:
            return []
        found = [{"name": entry["name"], "scale": entry["scale"], "corner": (entry["rect"]["x"], entry["rect"]["y"]),
                  "size": _size(entry),
                  "extent": (entry["rect"]["width"], entry["rect"]["height"])} for entry in known if entry["active"]]
        return sorted(found, key=lambda monitor: monitor["corner"])

    def _picture_of(self, output):
        data = self._call(["grim", "-t", "ppm", "-o", output.name, "-"], text=False)
        return Image.open(io.BytesIO(data)).convert("RGB")

    def set_scale(self, name, scale):
        """Keeps the monitors adjacent."""
        x = 0
        for monitor in self._monitors():
            factor = scale if monitor["name"] == name else monitor["scale"]
            self._call(["swaymsg", "output", monitor["name"], "scale", factor, "position", x, 0])
            x += int(monitor["size"][0] / factor)
        wait_until(lambda: any(monitor["name"] == name and monitor["scale"] == scale for monitor in self._monitors()),
                   f"the scale {scale} on {name}")

    def turn(self, name):
        """Moves the monitor left of the others, to negative positions."""
        size = next(monitor["size"] for monitor in self._monitors() if monitor["name"] == name)
        self._call(["swaymsg", "--", "output", name, "transform", "90", "position", -size[1], 0])
        wait_until(lambda: self._monitors()[0]["name"] == name, f"{name} on the left")

    def turn_back(self, name):
        self._call(["swaymsg", "output", name, "transform", "normal", "position", self.sizes[0][0], 0])
        wait_until(lambda: self._monitors()[-1]["name"] == name, f"{name} on the right")

    def _move(self, x, y):
        monitors = self._monitors()
        width = max(monitor["corner"][0] + monitor["extent"][0] for monitor in monitors)
        height = max(monitor["corner"][1] + monitor["extent"][1] for monitor in monitors)
        self._hands.do("move", x, y, width, height)

    def _button(self, code, is_down):
        self._hands.do("button", code, int(is_down))

    def _key(self, code, is_down):
        self._hands.do("key", code, int(is_down))
