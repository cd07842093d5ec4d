# SPDX-License-Identifier: GPL-3.0-or-later
"""A desktop that shows the menu bars of all windows itself."""

import json
import pathlib
import subprocess

_PROGRAM = pathlib.Path(__file__).resolve().parent.parent / "menu_registrar.py"


class MenuRegistrar:
    """Runs from construction to `stop`."""

    def __init__(self, bed):
        self._bed = bed
        self._process = bed.run(["/usr/bin/python3", "-B", _PROGRAM], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                text=True)
        self._process.stdout.readline()

    def menus(self):
        """For every menu bar that was handed over: its menus as (title, [labels of its visible entries])."""
        self._process.stdin.write("menus\n")
        self._process.stdin.flush()
        return json.loads(self._process.stdout.readline())

    def stop(self):
        self._bed.stop(self._process)
