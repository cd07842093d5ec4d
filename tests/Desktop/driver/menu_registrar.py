# SPDX-License-Identifier: GPL-3.0-or-later
"""A bed's registrar for global menu bars."""

from .bus_service import BusService


class MenuRegistrar(BusService):
    """Runs from construction to `stop`."""

    def __init__(self, bed):
        super().__init__(bed, "menu_registrar.py")

    def menus(self):
        """For every registered menu bar: its menus as (title, [labels of the visible entries])."""
        return self._ask("menus")
