# SPDX-License-Identifier: GPL-3.0-or-later
"""A desktop with layer surfaces whose monitors can be unplugged: KWin 5 on Wayland."""

import json
import os
import pathlib
import shutil
import subprocess
import tempfile

import dbus
from PIL import Image

from . import desktop_files
from .bed import NotPossibleHere
from .layer_shell import LayerShellBed
from .session import version_in
from .waiting import comes_true, wait_until

_SCREENSHOT = "org.kde.KWin.ScreenShot2"


def _copy(folder):
    """Copies the program. A copy has no file capabilities, which a container may not grant."""
    program = pathlib.Path(folder) / "kwin_wayland"
    shutil.copyfile(shutil.which("kwin_wayland"), program)
    program.chmod(0o755)
    return program


def kwin_version():
    """The version of the installed KWin; empty without one."""
    if not shutil.which("kwin_wayland"):
        return ""
    with tempfile.TemporaryDirectory() as folder:
        return version_in(subprocess.run([_copy(folder), "--version"], stdout=subprocess.PIPE, text=True, check=False).stdout)


class KWinBed(LayerShellBed):
    """Virtual-0 with the panel at its bottom, and Virtual-1 right of it."""

    name = "wayland-kwin"
    required_programs = ("kwin_wayland", "kscreen-doctor", *LayerShellBed.dress_programs)
    sizes = ((1280, 720), (1280, 720))
    socket = "wayland-kwin"

    def __init__(self, helpers):
        super().__init__(helpers)
        self._bus = None
        self._known = None

    def version(self):
        return f"KWin {kwin_version()}"

    def environment(self):
        return {**super().environment(), "XDG_CURRENT_DESKTOP": "KDE", "QT_LOGGING_RULES": "*=false"}

    def _start_compositor(self):
        self.write("config/kdeglobals", desktop_files.KDE_GLOBALS)
        self.write("config/kwinrc", desktop_files.KWIN)
        program = _copy(self.home)
        width, height = self.sizes[0]
        self._run_compositor(
            [program, *self._display(), "--width", width, "--height", height, "--output-count", len(self.sizes),
             "--no-lockscreen", "--no-global-shortcuts", "--socket", self.socket],
            {"KWIN_COMPOSE": self.compositing, "LIBGL_ALWAYS_SOFTWARE": "1", "KWIN_WAYLAND_NO_PERMISSION_CHECKS": "1",
             "KWIN_SCREENSHOT_NO_PERMISSION_CHECKS": "1"},
            (self.home / "runtime" / self.socket).exists)
        self._bus = dbus.bus.BusConnection(self._bus_address)
        self._bus.set_exit_on_disconnect(False)
        wait_until(lambda: self._bus.name_has_owner("org.kde.KWin"), "the compositor on the bus", 20)

    #: OpenGL.
    compositing = "O2"

    def _display(self):
        """The arguments that say what the monitors are."""
        return ["--virtual"]

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
        if len(self._monitors()) == 1:
            raise NotPossibleHere("KWin keeps its last monitor")
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
        """Retries, because the compositor takes no screenshots while monitors change."""
        taken = []

        def is_taken():
            try:
                taken.append(self._capture(output))
            except dbus.DBusException as problem:
                taken.append(problem)
            return isinstance(taken[-1], Image.Image)
        if not comes_true(is_taken, 5):
            raise taken[-1]
        return taken[-1]

    def _capture(self, output):
        service = dbus.Interface(self._bus.get_object("org.kde.KWin", "/org/kde/KWin/ScreenShot2", introspect=False),
                                 _SCREENSHOT)
        reading, writing = os.pipe()
        with os.fdopen(reading, "rb") as stream:
            try:
                facts = service.CaptureScreen(output.name, dbus.Dictionary({"native-resolution": True}, signature="sv"),
                                              dbus.types.UnixFd(writing), signature="sa{sv}h", timeout=10)
            finally:
                os.close(writing)
            data = stream.read()
        size = (int(facts["width"]), int(facts["height"]))
        return Image.frombytes("RGB", size, data, "raw", "BGRX", int(facts["stride"]))
