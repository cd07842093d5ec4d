# SPDX-License-Identifier: GPL-3.0-or-later
"""A desktop with layer surfaces: KWin on Wayland, in full-screen windows of another compositor."""

import io
import json
import shutil

import dbus
from PIL import Image

from . import desktop_files
from .layer_shell import LayerShellBed
from .waiting import comes_true, wait_until
from .wlroots import HEADLESS

#: The socket of the compositor that shows KWin's monitors.
_HOST = "wayland-1"
_HOST_OUTPUTS = {"WL-0": "HEADLESS-1", "WL-1": "HEADLESS-2"}


class KWinBed(LayerShellBed):
    """WL-0 with the panel at its bottom, and WL-1 right of it."""

    name = "wayland-kwin"
    required_programs = ("kwin_wayland", "kscreen-doctor", "sway", "grim", *LayerShellBed.dress_programs)
    sizes = ((1280, 720), (1280, 720))
    socket = "wayland-kwin"

    def __init__(self, helpers):
        super().__init__(helpers)
        self._bus = None
        self._known = None

    def environment(self):
        return {**super().environment(), "XDG_CURRENT_DESKTOP": "KDE", "QT_LOGGING_RULES": "*=false"}

    def _start_compositor(self):
        self.write("config/kdeglobals", desktop_files.KDE_GLOBALS)
        self.write("config/kwinrc", desktop_files.KWIN)
        # A copy has no file capabilities, which a container may not grant.
        program = self.home / "kwin_wayland"
        shutil.copyfile(shutil.which("kwin_wayland"), program)
        program.chmod(0o755)
        width, height = self.sizes[0]
        self._start_host(width, height)
        self._run_compositor(
            [program, "--wayland-display", _HOST, "--width", width, "--height", height, "--output-count", len(self.sizes),
             "--no-lockscreen", "--no-global-shortcuts", "--socket", self.socket],
            {"KWIN_COMPOSE": "Q", "KWIN_WAYLAND_NO_PERMISSION_CHECKS": "1"},
            (self.home / "runtime" / self.socket).exists)
        self._bus = dbus.bus.BusConnection(self._bus_address)
        self._bus.set_exit_on_disconnect(False)
        wait_until(lambda: self._bus.name_has_owner("org.kde.KWin"), "the compositor on the bus", 20)

    def _start_host(self, width, height):
        windows = "".join(desktop_files.HOST_WINDOW.format(inner=inner, outer=outer, width=width, height=height, x=index * width)
                          for index, (inner, outer) in enumerate(_HOST_OUTPUTS.items()))
        config = self.write("host.conf", desktop_files.HOST.format(windows=windows))
        self.run(["sway", "-c", config], HEADLESS)
        wait_until((self.home / "runtime" / _HOST).exists, "the compositor that shows the monitors")

    def end(self):
        if self._bus:
            self._bus.close()
        super().end()

    def _monitors(self):
        """The query is slow, so its answer is cached until something changes."""
        if self._known is None:
            self._known = sorted(self._asked_monitors(), key=lambda monitor: monitor["corner"])
        return self._known

    def _asked_monitors(self):
        answer = self._call(["kscreen-doctor", "-j"])
        known = json.loads(answer[answer.index("{"):])["outputs"]
        modes = {entry["name"]: {mode["id"]: mode["size"] for mode in entry["modes"]} for entry in known}
        return [{"name": entry["name"], "scale": entry["scale"], "corner": (entry["pos"]["x"], entry["pos"]["y"]),
                 "size": tuple(modes[entry["name"]][entry["currentModeId"]][side] for side in ("width", "height"))}
                for entry in known if entry["enabled"]]

    def _configure(self, *settings):
        self._call(["kscreen-doctor", *settings])
        self._known = None

    def plug(self, name):
        self._configure(f"output.{name}.enable")
        comes_true(lambda: self._has(name), 5)

    def unplug(self, name):
        self._configure(f"output.{name}.disable")
        wait_until(lambda: not self._has(name), f"{name} switched off")

    def _has(self, name):
        self._known = None
        return any(monitor["name"] == name for monitor in self._monitors())

    def set_scale(self, name, scale):
        """Keeps the other monitor adjacent to this one."""
        first, second = self._monitors()
        scales = {first["name"]: first["scale"], second["name"]: second["scale"], name: scale}
        left = round(first["size"][0] / scales[first["name"]])
        self._configure(f"output.{name}.scale.{scale:g}", f"output.{second['name']}.position.{left},0")

        def is_so():
            self._known = None
            return {monitor["name"]: monitor["scale"] for monitor in self._monitors()} == scales
        wait_until(is_so, f"the scale {scale} on {name}")

    def mirror(self, name):
        """Undone by `set_scale`."""
        self._configure(f"output.{name}.position.0,0")

        def is_so():
            self._known = None
            return all(monitor["corner"] == (0, 0) for monitor in self._monitors())
        wait_until(is_so, f"{name} as a mirror")

    def _picture_of(self, output):
        """The host's picture, because the compositor takes screenshots only with a graphics card."""
        window = _HOST_OUTPUTS[output.name]
        data = self._call(["env", f"WAYLAND_DISPLAY={_HOST}", "grim", "-t", "ppm", "-o", window, "-"], text=False)
        return Image.open(io.BytesIO(data)).convert("RGB")
