# SPDX-License-Identifier: GPL-3.0-or-later
"""A bed's lock screen: reports the lock state to the session, but shows nothing."""

import dbus
import dbus.lowlevel

_SERVICE = "org.freedesktop.ScreenSaver"


class LockScreen:
    """Runs from construction to `stop`."""

    def __init__(self, bed):
        self._bus = dbus.bus.BusConnection(bed.environment()["DBUS_SESSION_BUS_ADDRESS"])
        self._bus.set_exit_on_disconnect(False)
        self._bus.request_name(_SERVICE)

    def set_locked(self, is_locked):
        message = dbus.lowlevel.SignalMessage("/org/freedesktop/ScreenSaver", _SERVICE, "ActiveChanged")
        message.append(bool(is_locked), signature="b")
        self._bus.send_message(message)
        self._bus.flush()

    def stop(self):
        self._bus.close()
