#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A tray for the tests: StatusNotifierItem watcher and host on the session bus, without a window.

Reads commands from standard input and answers each with one line of JSON:
  items             names of the registered items
  menu              entries of the first item's menu: id, label, enabled, separator
  open              tells the item that its menu is about to be shown, as trays do
  click LABEL       activates the entry with that label; answers the monotonic time of the click in nanoseconds
  icon              pixmaps of the first item: width, height, and their colours with pixel counts
  updates           number of menu change signals since the start
  arrivals          monotonic times in nanoseconds at which items were registered
"""

import collections
import time

import dbus
import dbus.service

from bus_service import serve, session_bus

WATCHER = "org.kde.StatusNotifierWatcher"
ITEM = "org.kde.StatusNotifierItem"
MENU = "com.canonical.dbusmenu"
PROPERTIES = "org.freedesktop.DBus.Properties"
CALL_TIMEOUT = 5

INTROSPECTION = f"""<node><interface name="{WATCHER}">
<method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
<method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
<property name="RegisteredStatusNotifierItems" type="as" access="read"/>
<property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
<property name="ProtocolVersion" type="i" access="read"/>
<signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
<signal name="StatusNotifierItemUnregistered"><arg type="s"/></signal>
<signal name="StatusNotifierHostRegistered"/>
</interface><interface name="{PROPERTIES}">
<method name="Get"><arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/></method>
<method name="GetAll"><arg type="s" direction="in"/><arg type="a{{sv}}" direction="out"/></method>
</interface></node>"""


class Watcher(dbus.service.Object):
    """Keeps the list of items; an item is removed when its owner leaves the bus."""

    def __init__(self, bus):
        self._bus = bus
        self.items = []
        self.arrivals = []
        self._ownership = dbus.service.BusName(WATCHER, bus)
        super().__init__(bus, "/StatusNotifierWatcher")
        bus.add_signal_receiver(self._owner_changed, "NameOwnerChanged", "org.freedesktop.DBus")

    @dbus.service.method("org.freedesktop.DBus.Introspectable", in_signature="", out_signature="s")
    def Introspect(self):
        return INTROSPECTION

    @dbus.service.method(WATCHER, in_signature="s", sender_keyword="sender")
    def RegisterStatusNotifierItem(self, service, sender=None):
        item = (sender, service) if service.startswith("/") else (service, "/StatusNotifierItem")
        if item not in self.items:
            self.items.append(item)
            self.arrivals.append(time.monotonic_ns())
        self.StatusNotifierItemRegistered("".join(item))

    @dbus.service.method(WATCHER, in_signature="s")
    def RegisterStatusNotifierHost(self, _service):
        self.StatusNotifierHostRegistered()

    @dbus.service.signal(WATCHER, signature="s")
    def StatusNotifierItemRegistered(self, item):
        pass

    @dbus.service.signal(WATCHER, signature="s")
    def StatusNotifierItemUnregistered(self, item):
        pass

    @dbus.service.signal(WATCHER, signature="")
    def StatusNotifierHostRegistered(self):
        pass

    @dbus.service.method(PROPERTIES, in_signature="ss", out_signature="v")
    def Get(self, _interface, name):
        return self._properties()[name]

    @dbus.service.method(PROPERTIES, in_signature="s", out_signature="a{sv}")
    def GetAll(self, _interface):
        return self._properties()

    def _properties(self):
        return {"RegisteredStatusNotifierItems": dbus.Array(["".join(item) for item in self.items], signature="s"),
                "IsStatusNotifierHostRegistered": True, "ProtocolVersion": dbus.Int32(0)}

    def _owner_changed(self, name, _old, new):
        if new:
            return
        for item in [item for item in self.items if item[0] == name]:
            self.items.remove(item)
            self.StatusNotifierItemUnregistered("".join(item))


class TrayHost:
    """Executes the commands."""

    def __init__(self, bus):
        self._bus = bus
        self._updates = 0
        self._watcher = Watcher(bus)
        for signal in ("LayoutUpdated", "ItemsPropertiesUpdated"):
            bus.add_signal_receiver(self._count_update, signal, MENU)
        self._watcher.StatusNotifierHostRegistered()

    def answer(self, line):
        """The answer to one command, as an object for JSON encoding."""
        command, _, argument = line.partition(" ")
        actions = {"items": self._items, "menu": self._menu, "open": self._open, "icon": self._icon,
                   "updates": lambda: self._updates, "arrivals": lambda: self._watcher.arrivals,
                   "click": lambda: self._click(argument)}
        if command not in actions:
            return {"error": f"unknown command: {command}"}
        try:
            return actions[command]()
        except (dbus.DBusException, LookupError) as problem:
            return {"error": str(problem)}

    def _items(self):
        return ["".join(item) for item in self._watcher.items]

    def _item_property(self, name):
        service, path = self._watcher.items[0]
        item = self._bus.get_object(service, path, introspect=False)
        return item.Get(ITEM, name, dbus_interface=PROPERTIES, timeout=CALL_TIMEOUT)

    def _menu_object(self):
        path = self._item_property("Menu")
        return dbus.Interface(self._bus.get_object(self._watcher.items[0][0], path, introspect=False), MENU)

    def _menu(self):
        _revision, (_root, _properties, children) = self._menu_object().GetLayout(
            dbus.Int32(0), dbus.Int32(-1), dbus.Array([], signature="s"), timeout=CALL_TIMEOUT)
        return [{"id": int(identifier), "label": str(values.get("label", "")).replace("_", ""),
                 "enabled": bool(values.get("enabled", True)), "visible": bool(values.get("visible", True)),
                 "separator": values.get("type", "") == "separator"} for identifier, values, _ in children]

    def _open(self):
        menu = self._menu_object()
        menu.AboutToShow(dbus.Int32(0), timeout=CALL_TIMEOUT)
        self._event(menu, 0, "opened")
        return True

    def _click(self, label):
        menu = self._menu_object()
        identifier = next((entry["id"] for entry in self._menu() if entry["label"] == label), None)
        if identifier is None:
            raise LookupError(f"no entry with the label {label}")
        moment = time.monotonic_ns()
        self._event(menu, identifier, "clicked")
        return moment

    @staticmethod
    def _event(menu, identifier, kind):
        menu.Event(dbus.Int32(identifier), kind, dbus.String("", variant_level=1), dbus.UInt32(0),
                   ignore_reply=True)

    def _icon(self):
        pictures = []
        for width, height, data in self._item_property("IconPixmap"):
            pixels = bytes(data)
            colours = collections.Counter(pixels[at:at + 4].hex() for at in range(0, len(pixels), 4))
            pictures.append({"width": int(width), "height": int(height), "argb": colours})
        return pictures

    def _count_update(self, *_):
        self._updates += 1


if __name__ == "__main__":
    serve(TrayHost(session_bus()).answer)
