# SPDX-License-Identifier: GPL-3.0-or-later
"""KWin 6 in full-screen windows of another compositor: without a graphics card it takes no screenshots itself."""

import io

from PIL import Image

from . import desktop_files
from .bed import NotPossibleHere
from .kwin import KWinBed
from .waiting import wait_until
from .wlroots import HEADLESS

_HOST = "wayland-1"
#: Maps KWin's monitors to those of the host.
_HOST_OUTPUTS = {"WL-0": "HEADLESS-1", "WL-1": "HEADLESS-2"}


class HostedKWinBed(KWinBed):
    """WL-0 with the panel at its bottom, and WL-1 right of it. What the host shows is what KWin painted."""

    required_programs = (*KWinBed.required_programs, "sway", "grim")
    #: In software.
    compositing = "Q"

    def _display(self):
        width, height = self.sizes[0]
        windows = "".join(
            desktop_files.HOST_WINDOW.format(inner=inner, outer=outer, width=width, height=height, x=index * width)
            for index, (inner, outer) in enumerate(_HOST_OUTPUTS.items()))
        config = self.write("host.conf", desktop_files.HOST.format(windows=windows))
        self.run(["sway", "-c", config], HEADLESS)
        wait_until((self.home / "runtime" / _HOST).exists, "the compositor that shows the monitors")
        return ["--wayland-display", _HOST]

    def set_scale(self, name, scale):
        raise NotPossibleHere("KWin 6 without a graphics card paints scaled monitors wrongly")

    def mirror(self, name):
        raise NotPossibleHere("mirrors are undone with a scale, which is not possible here")

    def _picture_of(self, output):
        window = _HOST_OUTPUTS[output.name]
        data = self._call(["env", f"WAYLAND_DISPLAY={_HOST}", "grim", "-t", "ppm", "-o", window, "-"], text=False)
        return Image.open(io.BytesIO(data)).convert("RGB")
