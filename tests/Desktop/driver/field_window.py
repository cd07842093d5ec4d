# SPDX-License-Identifier: GPL-3.0-or-later
"""Another program's window with a text field, where nobody but that program knows what reaches it."""

import os
import pathlib
import subprocess

from .bed import CannotStart
from .waiting import wait_until


class FieldWindows:
    """Opens windows from the folder where the helpers were built."""

    def __init__(self, bed, folder):
        self._bed = bed
        self._program = pathlib.Path(folder) / "field-window"
        if not self._program.exists():
            raise CannotStart(f"no field-window in {folder}: configure and build again")

    def window(self, title, colour, place, *options):
        """Opens one: place is x, y, width, height in the desktop's own units; option "full-screen"."""
        process = self._bed.run([self._bed.lend(self._program), title, "%02x%02x%02x" % colour,
                                 ",".join(str(number) for number in place), *options],
                                {"QT_QPA_PLATFORM": "wayland"}, stdout=subprocess.PIPE)
        return FieldWindow(self._bed, process)


class FieldWindow:
    """Another program; remembers what it was told."""

    def __init__(self, bed, process):
        self._bed = bed
        self._process = process
        self._text = ""
        os.set_blocking(process.stdout.fileno(), False)
        wait_until(lambda: "window" in self.output().split("\n"), "the window of another program")

    def output(self):
        """Everything that it has printed so far."""
        try:
            self._text += os.read(self._process.stdout.fileno(), 65536).decode()
        except BlockingIOError:
            pass
        return self._text

    def keys(self):
        """The keys that reached it: letters as they stand on the keys, other keys as numbers."""
        codes = [int(line.split()[1], 16) for line in self.output().split("\n") if line.startswith("key ")]
        return [chr(code).lower() if code < 256 else code for code in codes]

    def clicks(self):
        """How many clicks reached it beside its text field."""
        return self.output().split("\n").count("click")

    def has_focus(self):
        changes = [line for line in self.output().split("\n") if line.startswith("focus ")]
        return changes[-1:] == ["focus in"]

    def close(self):
        """Ends the other program; does nothing the second time."""
        self._bed.stop(self._process)
