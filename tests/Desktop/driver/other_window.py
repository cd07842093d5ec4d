# SPDX-License-Identifier: GPL-3.0-or-later
"""Another program's window. The program prints a line for every event."""

import os

from .waiting import wait_until


def describe_window(title, colour, place):
    """The arguments for the window program: place is x, y, width, height."""
    return [title, "%02x%02x%02x" % colour, ",".join(str(number) for number in place)]


class OtherWindow:
    """Another program; records the events that it prints."""

    def __init__(self, bed, process):
        self._bed = bed
        self._process = process
        self._text = ""
        os.set_blocking(process.stdout.fileno(), False)
        wait_until(lambda: self._told("window"), "the window of another program")

    def _told(self, what):
        """The rest of every complete line so far that begins with the word `what`."""
        try:
            self._text += os.read(self._process.stdout.fileno(), 65536).decode()
        except BlockingIOError:
            pass
        lines = [line.split() for line in self._text.split("\n")[:-1]]
        return [words[1:] for words in lines if words[:1] == [what]]

    def clicks(self):
        """The number of clicks that it received."""
        return len(self._told("click"))

    def close(self):
        """Ends the other program; may be called twice."""
        self._bed.stop(self._process)
