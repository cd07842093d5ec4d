# SPDX-License-Identifier: GPL-3.0-or-later
"""The helper programs for X11: one samples the screen at a high rate, the other shows another program's window."""

import collections
import json
import pathlib
import subprocess

from .bed import CannotStart
from .other_window import OtherWindow, describe_window

Change = collections.namedtuple("Change", "time area value")
Damage = collections.namedtuple("Damage", "time window x y width height")


class Watch:
    """A running screen-probe; `results` waits for its end."""

    def __init__(self, process, convert):
        self._process = process
        self._convert = convert
        self._lines = []
        for line in process.stdout:
            if line == "ready\n":
                break
            self._lines.append(line)

    def results(self):
        self._lines += self._process.stdout.readlines()
        return [self._convert(line.split()) for line in self._lines if line != "ready\n"]


class Probe:
    """Starts the helper programs in `folder`."""

    def __init__(self, bed, folder):
        self._bed = bed
        self._folder = pathlib.Path(folder)
        if not (self._folder / "screen-probe").exists():
            raise CannotStart(f"no screen-probe in {folder}: install libxcb-damage0-dev, configure and build again")

    def state(self):
        """Focus, active window, client list, workspace, compositor and all windows of the X server."""
        process = self._run("screen-probe", "state")
        text = process.stdout.read()
        self._bed.stop(process)
        return json.loads(text)

    def sample(self, areas, milliseconds, interval=3):
        """Samples points (x, y) and areas (x, y, width, height). The results are `Change`s, times in nanoseconds; the value is
        the colour as a tuple for a point and a hash for an area."""
        def convert(words):
            is_point = len(areas[int(words[1])]) == 2
            value = tuple(bytes.fromhex(words[2])) if is_point else words[2]
            return Change(int(words[0]), int(words[1]), value)
        places = [",".join(str(number) for number in area) for area in areas]
        return Watch(self._run("screen-probe", "sample", milliseconds, interval, *places), convert)

    def damage(self, windows, milliseconds):
        """Records what is painted into windows; the results are `Damage`s."""
        return Watch(self._run("screen-probe", "damage", milliseconds, *windows),
                     lambda words: Damage(*(int(word) for word in words)))

    def window(self, title, colour, place, *options):
        """Opens another program's window: place is x, y, width, height; options "full-screen", "take-focus", "grab-keyboard",
        "unmanaged" (override-redirect) and "stay-on-top" (raises itself whenever another window comes above it)."""
        return TestWindow(self._bed, self._run("test-window", *describe_window(title, colour, place), *options))

    def _run(self, program, *arguments):
        return self._bed.run([self._folder / program, *arguments], stdout=subprocess.PIPE, text=True)


class TestWindow(OtherWindow):
    """A window whose program also reports its window id and position."""

    def __init__(self, bed, process):
        super().__init__(bed, process)
        self.identifier = int(self._told("window")[0][0])

    def place_to_click(self):
        """A position in the picture in the upper left part of the window."""
        left, top = self._told("at")[-1]
        return (int(left) + 60, int(top) + 60)

    def raises(self):
        """How often it has raised itself."""
        return len(self._told("raise"))

    def keys(self):
        """The key symbols that it received, as hexadecimal numbers."""
        return [symbol for symbol, *_ in self._told("key")]

    def key_times(self):
        """When the X server sent each key, in its milliseconds, which count up to 2**32."""
        return [int(moment) for _, moment in self._told("key")]
