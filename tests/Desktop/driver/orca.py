# SPDX-License-Identifier: GPL-3.0-or-later
"""GNOME's screen reader without a voice."""

import re

from . import packages
from .waiting import wait_until

#: Newer versions write a space after the sentence.
_SPOKEN = re.compile(r"SPEECH OUTPUT: '(.*?)' ?\{")
_LISTENS = "registering listener"


class Orca:
    """Runs from construction to `stop`. Needs the accessibility bus of a `ScreenReader`."""

    def __init__(self, bed):
        packages.require("orca")
        self._bed = bed
        self._log = bed.home / "orca.log"
        self._process = bed.run(["orca", "--debug-file", self._log], {"NO_AT_BRIDGE": None})
        wait_until(lambda: self._log.exists() and _LISTENS in self._text(), "Orca", 60)

    def stop(self):
        """Ends it; returns the sentences that it spoke. Orca writes the last of them only when it ends."""
        self._bed.stop(self._process)
        return _SPOKEN.findall(self._text())

    def _text(self):
        return self._log.read_text("utf-8", "replace")
