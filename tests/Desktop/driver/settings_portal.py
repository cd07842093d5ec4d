# SPDX-License-Identifier: GPL-3.0-or-later
"""A bed's settings portal, which provides the colour scheme, the contrast and the font."""

from .bus_service import BusService


class SettingsPortal(BusService):
    """Runs from construction to `stop`. Programs get the latest scheme, see settings_portal.py."""

    def __init__(self, bed, scheme="none"):
        super().__init__(bed, "settings_portal.py", scheme)

    def set_scheme(self, scheme):
        """Changes the scheme and announces the change; "foreign" announces a setting with the same key in another namespace."""
        self._ask(scheme)
