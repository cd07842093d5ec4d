# SPDX-License-Identifier: GPL-3.0-or-later
"""Lock screens that report to the session bus of a bed: a stand-in that shows nothing, and MATE's."""

import subprocess

import dbus
import dbus.lowlevel

from .waiting import wait_until

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


class MateScreensaver:
    """Covers the screen from construction to `kill`."""

    def __init__(self, bed):
        self._bed = bed
        self._process = bed.run(["mate-screensaver", "--no-daemon"])
        wait_until(self._is_active, "MATE's lock screen")

    def _is_active(self):
        self._bed.run(["mate-screensaver-command", "--activate"]).wait()
        asked = self._bed.run(["mate-screensaver-command", "--query"], stdout=subprocess.PIPE, text=True)
        return "is active" in asked.communicate()[0]

    def kill(self):
        self._process.kill()
        self._process.wait()
