# SPDX-License-Identifier: GPL-3.0-or-later
"""An X11 bed whose monitors can be unplugged."""

import os
import re
import shutil

from .bed import CannotStart, Output
from .packages import not_installed
from .waiting import wait_until
from .x11 import X11Bed

_CONFIGURATION = """Section "Device"
  Identifier "Device"
  Driver "dummy"
  VideoRam 256000
EndSection
Section "Monitor"
  Identifier "Monitor"
  HorizSync 5.0-1000.0
  VertRefresh 5.0-200.0
EndSection
Section "Screen"
  Identifier "Screen"
  Device "Device"
  Monitor "Monitor"
  DefaultDepth 24
  SubSection "Display"
    Depth 24
    Modes "1280x720" "1024x768"
    Virtual 3840 2160
  EndSubSection
EndSection
Section "ServerFlags"
  Option "AutoAddDevices" "false"
  Option "AutoAddGPU" "false"
EndSection
"""
_SERVER = "/usr/lib/xorg/Xorg"
_KNOWN_MODES = {(1280, 720): "1280x720", (1024, 768): "1024x768"}


class XorgDummyBed(X11Bed):
    """Xorg with the dummy video driver; needs root. DUMMY0 and DUMMY1 are on at the start."""

    def __init__(self, window_manager=None, compositor=False):
        monitors = [Output("DUMMY0", 0, 0, 1280, 720), Output("DUMMY1", 1280, 0, 1024, 768)]
        super().__init__(window_manager, compositor, monitors=monitors)
        self.name = "x11-hotplug"
        self._all = list(monitors)

    def _start_server(self):
        if os.geteuid() != 0:
            raise CannotStart("Xorg with the dummy driver needs root", is_by_design=True)
        if not shutil.which(_SERVER):
            raise CannotStart(not_installed("Xorg"))
        config = self.write("xorg.conf", _CONFIGURATION)
        self._run_server([_SERVER, "-config", config, "-noreset", "-nolisten", "tcp", "-ac", "-novtswitch",
                          "-sharevts", "-logfile", self.home / "xorg.log"])
        self._call(["xrandr", "--output", "DUMMY0", "--mode", "1280x720", "--primary"])
        self._call(["xrandr", "--addmode", "DUMMY1", "1024x768"])
        self.plug("DUMMY1")

    def plug(self, name):
        self._switch_on(next(output for output in self._all if output.name == name))

    def unplug(self, name):
        """The remaining monitors move to the upper left corner."""
        self._call(["xrandr", "--output", name, "--off"])
        wait_until(lambda: all(output.name != name for output in self._active()), f"{name} switched off")
        self._monitors = self._active()

    def mirror(self, name, size=(1280, 720)):
        """Has DUMMY1 show the upper left part of DUMMY0's picture, or all of it. `outputs` then tells DUMMY0 only."""
        mode = f"{size[0]}x{size[1]}"
        self._call(["xrandr", "--addmode", name, mode])
        self._call(["xrandr", "--output", name, "--mode", mode, "--pos", "0x0"])
        wait_until(lambda: Output(name, 0, 0, *size) in self._active(), "the mirrored monitor")
        self._monitors = [output for output in self._active() if output.name != name]

    def _switch_on(self, output):
        for known in self._all:
            if known is output or any(known.name == monitor.name for monitor in self._active()):
                self._call(["xrandr", "--output", known.name, "--mode", _KNOWN_MODES[known.width, known.height],
                            "--pos", f"{known.x}x{known.y}"])
        wait_until(lambda: output in self._active(), f"{output.name} switched on")
        self._monitors = self._active()

    def _active(self):
        """The active monitors as the X server reports them."""
        pattern = re.compile(r"(\d+)/\d+x(\d+)/\d+\+(\d+)\+(\d+)\s+(\S+)$")
        found = [pattern.search(line) for line in self._call(["xrandr", "--listactivemonitors"]).splitlines()]
        return [Output(match[5], *(int(match[index]) for index in (3, 4, 1, 2))) for match in found if match]
