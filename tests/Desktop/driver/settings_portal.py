# SPDX-License-Identifier: GPL-3.0-or-later
"""The settings portal of a bed: says whether the person wants it dark or light."""

from .bus_service import BusService


class SettingsPortal(BusService):
    """Runs from construction to `stop`; programs that ask are told the latest scheme: "none", "dark" or "light"."""

    def __init__(self, bed, scheme="none"):
        super().__init__(bed, "settings_portal.py", scheme)

    def set_scheme(self, scheme):
        """Changes it, and announces the change; "foreign" announces another setting of the same name."""
        self._ask(scheme)
