#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A silent screen reader: reads the windows of OrvaneBreak over AT-SPI.

usage: screen_reader.py COMMAND
  announce          tells the session's programs that a screen reader is active
  tree TITLE        prints the visible controls of the windows with that title as one line of JSON: role, name,
                    description, text, value, states, box
  press NAME        does the first action of the control with that name"""

import json
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, Gio, GLib  # noqa: E402

APPLICATION = "OrvaneBreak"


def announce():
    """Tells the session's programs that a screen reader is active."""
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    bus.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties", "Set",
                  GLib.Variant("(ssv)", ("org.a11y.Status", "IsEnabled", GLib.Variant("b", True))), None,
                  Gio.DBusCallFlags.NONE, 10000)


def children(item):
    for index in range(item.get_child_count()):
        child = item.get_child_at_index(index)
        if child is not None:
            yield child


def windows():
    for application in children(Atspi.get_desktop(0)):
        if application.get_name() == APPLICATION:
            yield from children(application)


def descendants(item):
    yield item
    for child in children(item):
        yield from descendants(child)


def visible_controls(title=None):
    for window in windows():
        if title in (None, window.get_name()):
            yield from (control for control in descendants(window)
                        if control.get_state_set().contains(Atspi.StateType.SHOWING))


def role_of(control):
    """The role under the name that the first of these libraries gave it."""
    return {"button": "push button"}.get(control.get_role_name(), control.get_role_name())


def described(control):
    box = control.get_extents(Atspi.CoordType.SCREEN)
    states = [state.value_nick for state in control.get_state_set().get_states()]
    return {"role": role_of(control), "name": control.get_name(), "description": control.get_description(),
            "text": text_of(control), "value": value_of(control), "states": states, "box": [box.x, box.y, box.width, box.height]}


def text_of(control):
    """The content of a text field or a text view."""
    if control.get_text_iface() is None or control.get_role_name() == "label":
        return ""
    # In newer versions of the library another method of the same name hides this one.
    return Atspi.Text.get_text(control, 0, Atspi.Text.get_character_count(control))


def value_of(control):
    """The current and the largest value of a progress bar, or None."""
    if control.get_value_iface() is None:
        return None
    return [Atspi.Value.get_current_value(control), Atspi.Value.get_maximum_value(control)]


def press(name):
    for control in visible_controls():
        if control.get_name() == name and control.get_n_actions() > 0:
            control.do_action(0)
            return
    sys.exit(1)


def main():
    command, *arguments = sys.argv[1:]
    if command == "announce":
        announce()
        return
    Atspi.init()
    if command == "tree":
        print(json.dumps([described(control) for control in visible_controls(*arguments)]))
    elif command == "press":
        press(*arguments)


if __name__ == "__main__":
    main()
