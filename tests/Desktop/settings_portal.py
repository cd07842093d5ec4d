#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A stand-in for the desktop's settings portal with the colour scheme, the contrast and the font.

usage: settings_portal.py SCHEME
SCHEME is "none", "dark", "light", "dark-contrast" or "light-contrast"; every line of standard input sets a new one. "foreign" announces a string under the same
key in another namespace, as some desktops do. The answer is one line of JSON, printed after the change."""

import sys

import dbus
import dbus.service

from bus_service import serve, session_bus

SERVICE = "org.freedesktop.portal.Desktop"
PATH = "/org/freedesktop/portal/desktop"
SETTINGS = "org.freedesktop.portal.Settings"
APPEARANCE = "org.freedesktop.appearance"
KEY = "color-scheme"
#: The colour scheme and the contrast.
VALUES = {"none": (0, 0), "dark": (1, 0), "light": (2, 0), "dark-contrast": (1, 1), "light-contrast": (2, 1)}
FONT = "DejaVu Sans 11"


class Portal(dbus.service.Object):
    """Implements Read, the version property, and SettingChanged."""

    def __init__(self, bus, scheme):
        self._ownership = dbus.service.BusName(SERVICE, bus)
        super().__init__(bus, PATH)
        self._value = VALUES[scheme]

    @dbus.service.method(SETTINGS, in_signature="ss", out_signature="v")
    def Read(self, name_space, key):
        settings = {(APPEARANCE, KEY): dbus.UInt32(self._value[0], variant_level=1),
                    (APPEARANCE, "contrast"): dbus.UInt32(self._value[1], variant_level=1),
                    ("org.gnome.desktop.interface", "font-name"): dbus.String(FONT, variant_level=1)}
        if (name_space, key) not in settings:
            raise dbus.DBusException("no such setting", name="org.freedesktop.portal.Error.NotFound")
        return settings[name_space, key]

    @dbus.service.method("org.freedesktop.DBus.Properties", in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        if (interface, name) != (SETTINGS, "version"):
            raise dbus.DBusException("no such property", name="org.freedesktop.DBus.Error.UnknownProperty")
        return dbus.UInt32(1, variant_level=1)

    @dbus.service.signal(SETTINGS, signature="ssv")
    def SettingChanged(self, name_space, key, value):
        pass

    def change(self, scheme):
        if scheme == "foreign":
            self.SettingChanged("org.gnome.desktop.interface", KEY, "prefer-dark")
        else:
            self._value = VALUES[scheme]
            self.SettingChanged(APPEARANCE, KEY, dbus.UInt32(self._value[0]))
            self.SettingChanged(APPEARANCE, "contrast", dbus.UInt32(self._value[1]))


if __name__ == "__main__":
    serve(Portal(session_bus(), sys.argv[1]).change)
