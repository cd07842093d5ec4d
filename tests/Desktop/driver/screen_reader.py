# SPDX-License-Identifier: GPL-3.0-or-later
"""A bed's screen reader, which reads the program through the accessibility bus."""

import dataclasses
import json
import os
import pathlib
import subprocess

from .bed import CannotStart
from .packages import not_installed
from .waiting import wait_until

_PROGRAM = pathlib.Path(__file__).resolve().parent.parent / "screen_reader.py"
_LAUNCHERS = ("/usr/libexec/at-spi-bus-launcher", "/usr/lib/at-spi2-core/at-spi-bus-launcher")


@dataclasses.dataclass(frozen=True)
class Control:
    """The accessible properties of one control; `value` is the current and the largest value or None, `box` is left, top,
    width, height on the screen."""
    role: str
    name: str
    description: str
    text: str
    value: tuple
    states: frozenset
    box: tuple

    @property
    def middle(self):
        left, top, width, height = self.box
        return (left + width / 2, top + height / 2)


class ScreenReader:
    """Runs from construction to `stop`; programs started meanwhile learn that a screen reader is active."""

    def __init__(self, bed):
        self._bed = bed
        launcher = next((path for path in _LAUNCHERS if os.path.exists(path)), None)
        if not launcher:
            raise CannotStart(not_installed("at-spi-bus-launcher"))
        self._launcher = bed.run([launcher, "--launch-immediately"])
        wait_until(lambda: self._run("announce") is not None, "the accessibility bus")

    def stop(self):
        self._bed.stop(self._launcher)

    def controls(self, title="OrvaneBreak"):
        """The visible controls of all windows with this title, parents before children; empty if there is no window."""
        return [Control(entry["role"], entry["name"], entry["description"], entry["text"],
                        entry["value"] and tuple(entry["value"]), frozenset(entry["states"]), tuple(entry["box"]))
                for entry in json.loads(self._run("tree", title) or "[]")]

    def control(self, name):
        """Waits for the control with this name."""
        return wait_until(lambda: next((control for control in self.controls() if control.name == name), None),
                          f"a control named {name}")

    def press(self, name):
        """Waits for a control with this name and presses it."""
        # A button pressed this way stays down for a moment before it acts, so its effect comes later.
        wait_until(lambda: self._run("press", name) is not None, f"a control named {name} that can be pressed")

    def _run(self, *arguments):
        """The reader's output, or None if it failed."""
        # A new process each time, because the library never updates its list of programs.
        process = self._bed.run(["/usr/bin/python3", "-B", _PROGRAM, *arguments], stdout=subprocess.PIPE, text=True)
        text = process.stdout.read()
        status = process.wait()
        self._bed.stop(process)
        return text if status == 0 else None
