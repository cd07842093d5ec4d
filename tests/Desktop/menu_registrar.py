#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A stand-in for a desktop with a global menu: accepts menu bars, and answers every line of standard input with their content
as one line of JSON."""

import dbus
import dbus.service

from bus_service import serve, session_bus

REGISTRAR = "com.canonical.AppMenu.Registrar"
MENU = "com.canonical.dbusmenu"


class Registrar(dbus.service.Object):
    """Records the registered menu bars."""

    def __init__(self, bus):
        self._bus = bus
        self._menus = {}
        self._ownership = dbus.service.BusName(REGISTRAR, bus)
        super().__init__(bus, "/" + REGISTRAR.replace(".", "/"))

    @dbus.service.method(REGISTRAR, in_signature="uo", sender_keyword="sender")
    def RegisterWindow(self, window, path, sender=None):
        self._menus[window] = (sender, path)

    @dbus.service.method(REGISTRAR, in_signature="u")
    def UnregisterWindow(self, window):
        self._menus.pop(window, None)

    def contents(self):
        return [self._menus_of(service, path) for service, path in self._menus.values()]

    def _menus_of(self, service, path):
        menu = dbus.Interface(self._bus.get_object(service, path, introspect=False), MENU)
        menu.AboutToShow(dbus.Int32(0), timeout=5)
        _revision, (_root, _properties, titles) = menu.GetLayout(dbus.Int32(0), dbus.Int32(-1),
                                                                 dbus.Array([], signature="s"), timeout=5)
        return [(_text(values), [_text(entry) for _, entry, _ in children if entry.get("visible", True)])
                for _, values, children in titles]


def _text(values):
    return "-" if values.get("type", "") == "separator" else str(values.get("label", "")).replace("_", "")


if __name__ == "__main__":
    registrar = Registrar(session_bus())
    serve(lambda _: registrar.contents())
