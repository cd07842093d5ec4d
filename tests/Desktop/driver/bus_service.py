# SPDX-License-Identifier: GPL-3.0-or-later
"""Test services on a bed's session bus, each in its own process."""

import json
import pathlib
import subprocess

_FOLDER = pathlib.Path(__file__).resolve().parent.parent


class ServiceEnded(Exception):
    """The service has ended and no longer answers."""


class BusService:
    """A service that answers lines. Runs from construction to `stop`."""

    def __init__(self, bed, program, *arguments):
        self._bed = bed
        # A bed may lend copies of programs, and then their imports have to be beside them.
        bed.lend(_FOLDER / "bus_service.py")
        self._process = bed.run(["/usr/bin/python3", "-B", bed.lend(_FOLDER / program), *arguments],
                                stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self._read()

    def stop(self):
        self._bed.stop(self._process)

    def _ask(self, line):
        """Sends one line and returns the answer to it."""
        self._process.stdin.write(line + "\n")
        self._process.stdin.flush()
        return self._read()

    def _read(self):
        line = self._process.stdout.readline()
        if not line:
            raise ServiceEnded(f"{type(self).__name__} has ended")
        return json.loads(line)
