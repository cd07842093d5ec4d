#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A stand-in for the desktop's settings portal with one setting, the colour scheme.

usage: settings_portal.py SCHEME
SCHEME is "none", "dark" or "light"; every line of standard input is a new one. "foreign" announces a text under the same
key of another name space, as some desktops do. One line of output tells that the change is made."""

import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

SERVICE = "org.freedesktop.portal.Desktop"
PATH = "/org/freedesktop/portal/desktop"
SETTINGS = "org.freedesktop.portal.Settings"
APPEARANCE = "org.freedesktop.appearance"
KEY = "color-scheme"
VALUES = {"none": 0, "dark": 1, "light": 2}


class Portal(dbus.service.Object):
    """Answers Read and announces changes."""

    def __init__(self, bus, scheme):
        self._ownership = dbus.service.BusName(SERVICE, bus)
        super().__init__(bus, PATH)
        self._value = VALUES[scheme]

    @dbus.service.method(SETTINGS, in_signature="ss", out_signature="v")
    def Read(self, name_space, key):
        if (name_space, key) != (APPEARANCE, KEY):
            raise dbus.DBusException("no such setting", name="org.freedesktop.portal.Error.NotFound")
        return dbus.UInt32(self._value, variant_level=1)

    @dbus.service.signal(SETTINGS, signature="ssv")
    def SettingChanged(self, name_space, key, value):
        pass

    def change(self, scheme):
        if scheme == "foreign":
            self.SettingChanged("org.gnome.desktop.interface", KEY, "prefer-dark")
        else:
            self._value = VALUES[scheme]
            self.SettingChanged(APPEARANCE, KEY, dbus.UInt32(self._value))


def main():
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    loop = GLib.MainLoop()
    portal = Portal(dbus.SessionBus(), sys.argv[1])

    def read_scheme(stream, _condition):
        line = stream.readline()
        if not line:
            loop.quit()
            return False
        portal.change(line.strip())
        print("done", flush=True)
        return True

    GLib.io_add_watch(sys.stdin, GLib.PRIORITY_DEFAULT, GLib.IO_IN | GLib.IO_HUP, read_scheme)
    print("ready", flush=True)
    loop.run()


if __name__ == "__main__":
    main()
