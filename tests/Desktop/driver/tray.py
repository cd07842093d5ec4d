# SPDX-License-Identifier: GPL-3.0-or-later
"""A bed's tray host. It is a separate process, so that it can start late and restart."""

from .bus_service import BusService


class TrayError(Exception):
    """The item did not answer like an item with a menu."""


class Tray(BusService):
    """Runs from construction to `stop`."""

    def __init__(self, bed):
        super().__init__(bed, "tray_host.py")

    def items(self):
        return self._ask("items")

    def menu(self):
        return self._ask("menu")

    def labels(self):
        """The labels of the visible entries, with "-" for a separator."""
        return ["-" if entry["separator"] else entry["label"] for entry in self.menu() if entry["visible"]]

    def open(self):
        return self._ask("open")

    def click(self, label):
        """Activates an entry; returns the monotonic time of the click in nanoseconds."""
        return self._ask(f"click {label}")

    def icon(self):
        return self._ask("icon")

    def updates(self):
        return self._ask("updates")

    def arrivals(self):
        """The monotonic times in nanoseconds at which items were registered."""
        return self._ask("arrivals")

    def _ask(self, line):
        answer = super()._ask(line)
        if isinstance(answer, dict) and "error" in answer:
            raise TrayError(answer["error"])
        return answer
