# SPDX-License-Identifier: GPL-3.0-or-later
import os
import re
import signal
import subprocess

from driver.settings_portal import SettingsPortal

_LINE = re.compile(r"  (\S(?:.*?\S)?) {2,}(\S.*)")


def desktop(desk, report):
    """--diagnostics on a desktop."""
    portal = SettingsPortal(desk.bed, "dark")
    told = _diagnose(desk, report, "with everything")
    portal.stop()
    _expect(report, "with everything", told,
            {"Overlay": "windows that bypass the window manager", "Session bus": "present", "Tray host": "present",
             "Settings portal": "version 1, color scheme: dark"})
    report.promise("--diagnostics has an idle source here", told.get("Idle time") not in (None, "none", "unknown"), told)
    told = _diagnose(desk, report, "without a portal")
    _expect(report, "without a portal", told, {"Tray host": "present", "Settings portal": "absent"})


def troubles(desk, report):
    """--diagnostics when services are missing or do not answer."""
    empty = desk.bed.home / "no-bus-to-diagnose"
    empty.mkdir(mode=0o700)
    without = _diagnose(desk, report, "without a display and a bus",
                        {"DISPLAY": None, "DBUS_SESSION_BUS_ADDRESS": None, "XDG_RUNTIME_DIR": str(empty)})
    _expect(report, "without a display and a bus", without,
            {"Overlay": "none without a display", "Idle time": "none", "Session bus": "absent",
             "Tray host": "unknown without a session bus"})
    bus, address = desk.bed.start_bus("bus-to-diagnose")
    os.kill(bus.pid, signal.SIGSTOP)
    silent = _diagnose(desk, report, "with a bus that does not answer", {"DBUS_SESSION_BUS_ADDRESS": address})
    _expect(report, "with a bus that does not answer", silent, {"Session bus": "does not answer"})
    os.kill(bus.pid, signal.SIGCONT)
    desk.bed.stop(bus)


def _diagnose(desk, report, where, changes=None):
    """The output lines as a dictionary."""
    process = desk.bed.run([desk.program, "--diagnostics"], changes, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    told, complaints = process.communicate(timeout=20)
    desk.bed.stop(process)
    report.promise(f"--diagnostics succeeds {where}", process.returncode == 0 and not complaints
                   and told.startswith("OrvaneBreak "), (process.returncode, told, complaints))
    return dict(_LINE.fullmatch(line).groups() for line in told.splitlines()[1:])


def _expect(report, where, told, wanted):
    report.promise(f"--diagnostics reports what is there {where}", wanted.items() <= told.items(), told)
