# SPDX-License-Identifier: GPL-3.0-or-later
"""The tray host of a bed: a process of its own, so that it can come late, die and come back."""

import json
import pathlib
import subprocess

_PROGRAM = pathlib.Path(__file__).resolve().parent.parent / "tray_host.py"


class TrayError(Exception):
    """The item did not answer as an item with a menu does."""


class Tray:
    """Runs from construction to `stop`."""

    def __init__(self, bed):
        self._bed = bed
        self._process = bed.run(["/usr/bin/python3", "-B", bed.lend(_PROGRAM)], stdin=subprocess.PIPE,
                                stdout=subprocess.PIPE, text=True)
        self._read()

    def stop(self):
        self._bed.stop(self._process)

    def items(self):
        return self._ask("items")

    def menu(self):
        return self._ask("menu")

    def labels(self):
        """The texts of the visible entries, "-" for a separator."""
        return ["-" if entry["separator"] else entry["label"] for entry in self.menu() if entry["visible"]]

    def open(self):
        return self._ask("open")

    def click(self, label):
        """Chooses an entry; returns the monotonic time in nanoseconds."""
        return self._ask(f"click {label}")

    def icon(self):
        return self._ask("icon")

    def updates(self):
        return self._ask("updates")

    def _ask(self, command):
        self._process.stdin.write(command + "\n")
        self._process.stdin.flush()
        answer = self._read()
        if isinstance(answer, dict) and "error" in answer:
            raise TrayError(answer["error"])
        return answer

    def _read(self):
        line = self._process.stdout.readline()
        if not line:
            raise TrayError("the tray host has ended")
        return json.loads(line)
