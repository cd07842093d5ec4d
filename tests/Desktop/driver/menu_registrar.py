# SPDX-License-Identifier: GPL-3.0-or-later
"""A desktop that shows the menu bars of all windows itself."""

from .bus_service import BusService


class MenuRegistrar(BusService):
    """Runs from construction to `stop`."""

    def __init__(self, bed):
        super().__init__(bed, "menu_registrar.py")

    def menus(self):
        """For every menu bar that was handed over: its menus as (title, [labels of its visible entries])."""
        return self._ask("menus")
