# SPDX-License-Identifier: GPL-3.0-or-later
"""A screen reader of the bed: sees the program as a blind person's desktop does."""

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
    """What one control says of itself; `box` is left, top, width, height on the screen."""
    role: str
    name: str
    description: str
    text: str
    states: frozenset
    box: tuple

    @property
    def middle(self):
        left, top, width, height = self.box
        return (left + width / 2, top + height / 2)


class ScreenReader:
    """Runs from construction to `stop`; programs that start meanwhile are told that they are read."""

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
        """The visible controls of all windows with this title, from outside to inside; empty where there is none."""
        return [Control(entry["role"], entry["name"], entry["description"], entry["text"], frozenset(entry["states"]),
                        tuple(entry["box"])) for entry in json.loads(self._run("tree", title) or "[]")]

    def control(self, name):
        """Waits for the control with this name."""
        return wait_until(lambda: next((control for control in self.controls() if control.name == name), None),
                          f"a control named {name}")

    def press(self, name):
        """Waits for a control with this name, and does what it does when it is pressed."""
        # A button that is pressed this way stays down for a while before it acts: what it shows comes later.
        wait_until(lambda: self._run("press", name) is not None, f"a control named {name} that can be pressed")

    def _run(self, *arguments):
        """What the reader printed; None when it failed."""
        # A process of its own each time: the library remembers for good which programs it saw first.
        process = self._bed.run(["/usr/bin/python3", "-B", _PROGRAM, *arguments], stdout=subprocess.PIPE, text=True)
        text = process.stdout.read()
        status = process.wait()
        self._bed.stop(process)
        return text if status == 0 else None
