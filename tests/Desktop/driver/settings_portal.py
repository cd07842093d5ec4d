# SPDX-License-Identifier: GPL-3.0-or-later
"""The settings portal of a bed: says whether the person wants it dark or light."""

import pathlib
import subprocess

_PROGRAM = pathlib.Path(__file__).resolve().parent.parent / "settings_portal.py"


class SettingsPortal:
    """Runs from construction to `stop`; programs that ask are told the latest scheme: "none", "dark" or "light"."""

    def __init__(self, bed, scheme="none"):
        self._bed = bed
        self._process = bed.run(["/usr/bin/python3", "-B", _PROGRAM, scheme], stdin=subprocess.PIPE,
                                stdout=subprocess.PIPE, text=True)
        self._process.stdout.readline()

    def set_scheme(self, scheme):
        """Changes it, and announces the change; "foreign" announces another setting of the same name."""
        self._process.stdin.write(scheme + "\n")
        self._process.stdin.flush()
        self._process.stdout.readline()

    def stop(self):
        self._bed.stop(self._process)
