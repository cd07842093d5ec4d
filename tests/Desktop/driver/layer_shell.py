# SPDX-License-Identifier: GPL-3.0-or-later
"""The common part of the Wayland beds with layer surfaces: swaybg as wallpaper, waybar as panel, and hands by protocol."""

import json

from PIL import Image

from . import desktop_files
from .waiting import wait_until
from .wayland import ProtocolHands, WaylandBed


class LayerShellBed(WaylandBed):
    """The panel is at the bottom of the first monitor; the second one is right of it."""

    #: Programs of the wallpaper and the panel.
    dress_programs = ("swaybg", "waybar")

    def _start_hands(self):
        self._hands = ProtocolHands(self, self._helpers / "wayland-hands")

    def _dress(self):
        outputs = self.outputs()
        words = []
        for output, colour in zip(outputs, self.wallpaper_colours):
            # With a colour instead of a picture swaybg has one pixel enlarged, which wlroots 0.18 cannot do in software.
            picture = self.write(f"{output.name}.png", "")
            Image.new("RGB", (output.width, output.height), colour).save(picture)
            words += ["-o", output.name, "-i", picture]
        self.run(["swaybg", "-m", "stretch", *words])
        config = self.write("waybar.json", json.dumps({**desktop_files.WAYBAR, "output": [outputs[0].name]}))
        self.run(["waybar", "-c", config, "-s", self.write("waybar.css", desktop_files.WAYBAR_STYLE)])
        places = [(output.x + 5, output.y + 5) for output in outputs]
        wait_until(lambda: [self.picture().getpixel(place) for place in places] == list(self.wallpaper_colours),
                   "the wallpapers", 20)
        place = (outputs[0].width // 2, outputs[0].box[3] - 5)
        wait_until(lambda: self.picture().getpixel(place) == self.panel_colour, "the panel", 20)

    def _move(self, x, y):
        self._hands.do("move", x, y, 0, 0)

    def _button(self, code, is_down):
        self._hands.do("button", code, int(is_down))

    def _key(self, code, is_down):
        self._hands.do("key", code, int(is_down))
