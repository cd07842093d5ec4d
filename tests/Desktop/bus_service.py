# SPDX-License-Identifier: GPL-3.0-or-later
"""Shared by the test services: the session bus, and a line protocol on standard input and output."""

import json
import sys

import dbus
import dbus.mainloop.glib
from gi.repository import GLib


def session_bus():
    """The session bus for the service's objects; call `serve` to run them."""
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    return dbus.SessionBus()


def serve(answer):
    """Prints that it is ready, then answers every line of standard input with the result of `answer(line)` as one line of JSON,
    until standard input ends."""
    loop = GLib.MainLoop()

    def read(stream, _condition):
        line = stream.readline()
        if not line:
            loop.quit()
            return False
        print(json.dumps(answer(line.rstrip("\n"))), flush=True)
        return True

    GLib.io_add_watch(sys.stdin, GLib.PRIORITY_DEFAULT, GLib.IO_IN | GLib.IO_HUP, read)
    print(json.dumps("ready"), flush=True)
    loop.run()
