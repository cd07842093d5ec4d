# SPDX-License-Identifier: GPL-3.0-or-later
"""A notification daemon."""

import subprocess

from . import packages
from .waiting import wait_until

_SETTINGS = "[global]\nshow_age_threshold = -1\nidle_threshold = 0\norigin = top-right\n"


class Notifications:
    """dunst, whose notifications are override-redirect windows; a click closes one."""

    def __init__(self, bed):
        packages.require("dunst", "dunstctl", "dunstify")
        self._bed = bed
        self._process = bed.run(["dunst", "-conf", bed.write("dunstrc", _SETTINGS)])
        wait_until(lambda: self._run("dunstctl", "is-paused") == "false", "the notification daemon")

    def show(self, title, text):
        """Shows a notification that stays until it is clicked."""
        self._run("dunstify", "--timeout", "0", title, text)

    def shown(self):
        """The number of notifications on the screen."""
        return int(self._run("dunstctl", "count", "displayed"))

    def stop(self):
        self._bed.stop(self._process)

    def _run(self, *arguments):
        process = self._bed.run(arguments, stdout=subprocess.PIPE, text=True)
        output = process.communicate(timeout=20)[0]
        self._bed.stop(process)
        return output.strip()
