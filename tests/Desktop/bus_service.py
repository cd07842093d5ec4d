# SPDX-License-Identifier: GPL-3.0-or-later
"""What the services of the tests have in common: the session bus, and somebody who talks to them by lines."""

import json
import sys

import dbus
import dbus.mainloop.glib
from gi.repository import GLib


def session_bus():
    """The session bus, for objects that `serve` brings to life."""
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    return dbus.SessionBus()


def serve(answer):
    """Says that it is ready, then answers every line of standard input, until its end: what `answer` makes of the line,
    as one line of JSON."""
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
