# SPDX-License-Identifier: GPL-3.0-or-later
"""The common part of the beds on compositors with wlroots' protocols: outputs, pictures, pointer and keyboard."""

import io
import re
import struct

from PIL import Image

from .bed import NotPossibleHere
from .layer_shell import LayerShellBed
from .waiting import comes_true, wait_until

#: The environment in which these compositors have two monitors and no devices.
HEADLESS = {"WLR_BACKENDS": "headless", "WLR_HEADLESS_OUTPUTS": "2", "WLR_LIBINPUT_NO_DEVICES": "1",
             "WLR_RENDERER": "pixman"}
#: A file for the pointer theme "default", with one transparent image.
_POINTER_SIDE = 24
_INVISIBLE_POINTER = b"Xcur" + struct.pack(
    "<15I", 16, 0x10000, 1, 0xfffd0002, _POINTER_SIDE, 28,
    36, 0xfffd0002, _POINTER_SIDE, 1, _POINTER_SIDE, _POINTER_SIDE, 0, 0, 0) + bytes(4 * _POINTER_SIDE ** 2)
_NAMES = ("HEADLESS-1", "HEADLESS-2")
_FIELDS = {"enabled": r"Enabled: (\w+)", "size": r"(\d+)x(\d+) px.*\bcurrent\b", "corner": r"Position: (-?\d+),(-?\d+)",
           "turn": r"Transform: (\w+)", "scale": r"Scale: ([\d.]+)"}


def _described(text):
    """One monitor, from its lines in wlr-randr's answer; None if it is switched off."""
    found = {name: re.search(pattern, text) for name, pattern in _FIELDS.items()}
    if not all(found.values()) or found["enabled"][1] != "yes":
        return None
    size = mode = tuple(map(int, found["size"].groups()))
    size = size[::-1] if found["turn"][1].endswith(("90", "270")) else size
    scale = float(found["scale"][1])
    return {"name": text.split()[0], "scale": scale, "size": size, "mode": "{}x{}".format(*mode),
            "corner": tuple(map(int, found["corner"].groups())), "extent": tuple(int(side / scale) for side in size)}


class WlrootsBed(LayerShellBed):
    """HEADLESS-1 and HEADLESS-2. A subclass has a configuration in which a window with the title "Other" floats at 30, 60."""

    #: After the compositor and its own tools.
    required_programs = (*LayerShellBed.dress_programs, "grim", "wlr-randr")
    #: The desktop's name for other programs.
    desktop = ""
    #: Additions to the compositor's environment.
    own_environment = {}
    #: Whether programs are told of a monitor that is switched off.
    withdraws_monitors = True

    def __init__(self, helpers):
        super().__init__(helpers)
        self._unplugged = {}

    def environment(self):
        return {**super().environment(), "XDG_CURRENT_DESKTOP": self.desktop, "XCURSOR_PATH": f"{self.home}/icons"}

    def _start_compositor(self):
        # These compositors may paint the pointer into pictures.
        self.write("icons/default/cursors/default", "").write_bytes(_INVISIBLE_POINTER)
        self._run_compositor([self.required_programs[0], *self._arguments()], {**HEADLESS, **self.own_environment},
                             self._finds_socket)
        # A compositor may offer its monitors after its socket, and may leave them off.
        wait_until(lambda: all(name in self._call(["wlr-randr"]) for name in _NAMES), "the monitors")
        self._arrange(*((name, "--on", "--custom-mode", f"{width}x{height}", "--pos", f"{x},0")
                        for name, (width, height), x in zip(_NAMES, self.sizes, (0, self.sizes[0][0]))))
        wait_until(lambda: tuple(monitor["size"] for monitor in self._monitors()) == self.sizes, "the monitors' sizes")

    def _arguments(self):
        """The compositor's arguments; writes its configuration."""
        raise NotImplementedError

    def _finds_socket(self):
        found = sorted(path.name for path in (self.home / "runtime").glob("wayland-*") if path.suffix != ".lock")
        if found:
            self.socket = found[0]
            self._has_display = True
        return bool(found)

    # -- monitors

    def _monitors(self):
        blocks = re.split(r"\n(?=\S)", self._call(["wlr-randr"]))
        found = [monitor for monitor in map(_described, filter(None, blocks)) if monitor]
        return sorted(found, key=lambda monitor: monitor["corner"])

    def _monitor(self, name):
        return next((monitor for monitor in self._monitors() if monitor["name"] == name), None)

    def _arrange(self, *settings):
        """Applies wlr-randr's settings to several monitors at once, each a name followed by its options."""
        self._call(["wlr-randr", *(word for name, *options in settings for word in ("--output", name, *options))])

    def set_scale(self, name, scale):
        """Keeps the monitors adjacent."""
        x, settings = 0, []
        for monitor in self._monitors():
            factor = scale if monitor["name"] == name else monitor["scale"]
            settings.append((monitor["name"], "--scale", factor, "--pos", f"{x},0"))
            x += int(monitor["size"][0] / factor)
        self._arrange(*settings)
        wait_until(lambda: self._monitor(name)["scale"] == scale, f"the scale {scale} on {name}")

    def turn(self, name):
        """Moves the monitor left of the others, to negative positions."""
        height = self._monitor(name)["size"][1]
        self._arrange((name, "--transform", "90", "--pos", f"-{height},0"))
        wait_until(lambda: self._monitors()[0]["name"] == name, f"{name} on the left")

    def turn_back(self, name):
        self._arrange((name, "--transform", "normal", "--pos", f"{self.sizes[0][0]},0"))
        wait_until(lambda: self._monitors()[-1]["name"] == name, f"{name} on the right")

    def unplug(self, name):
        if not self.withdraws_monitors:
            raise NotPossibleHere(f"{self.version()} goes on offering a monitor that is off")
        self._unplugged[name] = self._monitor(name)
        self._arrange((name, "--off"))
        wait_until(lambda: not self._monitor(name), f"{name} switched off")

    def plug(self, name):
        """Puts the monitor where it was."""
        was = self._unplugged.pop(name)
        self._arrange((name, "--on", "--custom-mode", was["mode"], "--pos", "{},{}".format(*was["corner"])))
        comes_true(lambda: self._monitor(name) == was, 5)

    def require_lock_protocol(self):
        pass

    def _picture_of(self, output):
        data = self._call(["grim", "-t", "ppm", "-o", output.name, "-"], text=False)
        return Image.open(io.BytesIO(data)).convert("RGB")

    def _move(self, x, y):
        """The protocol divides the rectangle around all monitors."""
        monitors = self._monitors()
        left, top = (min(monitor["corner"][axis] for monitor in monitors) for axis in (0, 1))
        right, bottom = (max(monitor["corner"][axis] + monitor["extent"][axis] for monitor in monitors) for axis in (0, 1))
        self._hands.do("move", x - left, y - top, right - left, bottom - top)
