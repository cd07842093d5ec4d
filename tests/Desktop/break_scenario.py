#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs the program on virtual desktops and prints which promises it keeps on each. Status 0: all kept; 1: one is broken;
77: none of the desktops can run here, and the reason is printed."""

import argparse
import os
import pathlib
import signal
import sys
import time

from driver.bed import CannotStart
from driver.gnome import GnomeBed
from driver.hosted_kwin import HostedKWinBed
from driver.kwin import KWinBed, kwin_version
from driver.wlroots_desktops import LabwcBed, SwayBed, WayfireBed
from driver.x11 import X11Bed
from driver.xorg_dummy import XorgDummyBed
from driver.tray import Tray
from scenario import (accessibility_part, diagnostics_part, ending_part, first_launch_part, hotplug_part,
                      input_part, keyboard_part, look_part, modes_part, pace_part, panel_part, pause_part, service_part,
                      session_part, shell_part, sound_part, stacking_part, switches_part, tray_part, trouble_part,
                       wayland_break_part, wayland_change_part, wayland_keyboard_part, wayland_lock_part,
                       wayland_others_part)
from scenario.application_desk import ApplicationDesk
from scenario.desk import Desk
from scenario.promises import Report, read_json, summary, table, write_json
from scenario.wayland_desk import WaylandDesk

NOT_RUN = 77


def managed(window_manager):
    return lambda: X11Bed(window_manager, compositor=True, panel=True)



def kwin(helpers):
    """KWin 5 has virtual monitors with OpenGL, KWin 6 only where there is a graphics card."""
    return (KWinBed if kwin_version().startswith("5.") else HostedKWinBed)(helpers)


WAYLAND_BEDS = {SwayBed.name: SwayBed, LabwcBed.name: LabwcBed, WayfireBed.name: WayfireBed, KWinBed.name: kwin,
                GnomeBed.name: GnomeBed}


def everyday(desk, report):
    """The main scenario for one desktop."""
    report.run(tray_part.tray, desk, report)
    for part in (shell_part.shell, look_part.cover, keyboard_part.keyboard, keyboard_part.button, input_part.menus,
                 input_part.first_keys, input_part.rest_of_press, input_part.cancel_command, input_part.foreign_grab,
                 pace_part.repaints, pace_part.opening, stacking_part.notification, stacking_part.unmanaged_windows,
                 stacking_part.contest, pause_part.locked, pause_part.stopped, ending_part.leaving):
        desk.clean_up(program_runs=True)
        report.run(part, desk, report)
    desk.clean_up(program_runs=False)
    report.run(service_part.preferences, desk, report)
    desk.tray.stop()
    desk.tray = None
    for part in (ending_part.signals, service_part.absent_services, look_part.scales, look_part.small,
                 ending_part.server_killed):
        desk.clean_up(program_runs=False)
        report.run(part, desk, report)


def application(desk, report):
    """The windows, the menus and the desktop integration."""
    desk.tray = Tray(desk.bed)
    for part in (first_launch_part.answers, first_launch_part.interrupted, first_launch_part.watched, modes_part.closing,
                 modes_part.switching, switches_part.debug_switches, switches_part.log_switch, switches_part.break_at_launch,
                 switches_part.command_line, switches_part.saved_session, accessibility_part.tree, accessibility_part.break_aloud,
                 accessibility_part.keyboard_only, accessibility_part.scales, session_part.appearance,
                 session_part.desktop_theme, session_part.global_menu, session_part.launcher, sound_part.chime,
                 diagnostics_part.desktop, diagnostics_part.troubles, trouble_part.starts_at_once, trouble_part.bus_dies,
                 trouble_part.login_item, trouble_part.edited_preferences):
        desk.clean_up(program_runs=False)
        report.run(part, desk, report)
    desk.clean_up(program_runs=False)
    desk.tray.stop()
    report.run(modes_part.without_tray, desk, report)


def trays(desk, report):
    """The eye in real trays."""
    report.run(panel_part.clicks, desk, report)
    desk.clean_up(program_runs=True)
    report.run(panel_part.calls, desk, report)
    desk.clean_up(program_runs=False)
    desk.bed.stop(desk.bed.panel_process)
    report.run(panel_part.embedded, desk, report)


def hotplug(desk, report):
    """Monitor hotplug, with xfwm4's own compositor."""
    desk.clean_up(program_runs=True)
    report.run(look_part.cover, desk, report)
    desk.clean_up(program_runs=False)
    report.run(hotplug_part.hotplug, desk, report)
    desk.clean_up(program_runs=True)
    report.run(hotplug_part.mirrored, desk, report)


BEDS = {"x11-openbox": (managed("openbox"), Desk, everyday), "x11-xfwm4": (managed("xfwm4"), Desk, everyday),
        "x11-i3": (managed("i3"), Desk, everyday), "x11-bare": (X11Bed, Desk, everyday),
        "x11-marco": (lambda: X11Bed("marco", compositor="own", panel=True), Desk, everyday),
        "x11-muffin": (lambda: X11Bed("muffin", compositor="own", panel=True), Desk, everyday),
        "x11-hotplug": (lambda: XorgDummyBed("xfwm4", compositor="own"), Desk, hotplug),
        "x11-trays": (lambda: X11Bed("openbox", panel=True, panel_options={"tray": True}), Desk, trays),
        "x11-application": (managed("openbox"), ApplicationDesk, application)}


def everyday_on_wayland(desk, report, helpers):
    """The main scenario for a Wayland desktop."""
    report.run(wayland_break_part.starting, desk, report)
    for part in (look_part.cover, wayland_break_part.keyboard, wayland_break_part.held_escape, wayland_break_part.pointer,
                 wayland_break_part.button, wayland_break_part.lasting, wayland_keyboard_part.late_window,
                 wayland_keyboard_part.overview, wayland_keyboard_part.menu, wayland_change_part.scales, wayland_change_part.turned,
                 wayland_change_part.mirrored, wayland_change_part.unplugging, wayland_others_part.open_menu,
                 wayland_lock_part.lockers, wayland_others_part.sudden_unplugging):
        _run_on_wayland(desk, report, True, part)
    _run_on_wayland(desk, report, False, wayland_change_part.idle, helpers)
    for part in (wayland_change_part.signals, wayland_change_part.compositor_killed):
        _run_on_wayland(desk, report, False, part)


def _run_on_wayland(desk, report, program_runs, part, *more):
    """Runs one part after a clean-up, unless the compositor has died."""
    if report.promise("the compositor runs on", desk.bed.server.poll() is None, f"dead before: {part.__doc__}"):
        report.run(_clean_up, desk, program_runs)
        report.run(part, desk, report, *more)


def _clean_up(desk, program_runs):
    """Getting ready for the next part."""
    desk.clean_up(program_runs=program_runs)


def try_on_wayland(name, program, helpers, pictures):
    """Runs the scenario on one Wayland desktop; returns the report."""
    report = Report(name)
    began = time.monotonic()
    with WAYLAND_BEDS[name](helpers) as bed:
        report.version = bed.version()
        print(f"{name}: {report.version}, startup: {time.monotonic() - began:.1f} s", flush=True)
        everyday_on_wayland(WaylandDesk(bed, program, helpers, pictures), report, helpers)
    report.promise("the desktop ends with all its processes", not bed.leftovers(), bed.leftovers())
    return report


def try_on(name, program, helpers, pictures):
    """Runs the scenario on one desktop; returns the report. `pictures` is a folder, or None."""
    report = Report(name)
    make_bed, make_desk, scenario = BEDS[name]
    with make_bed() as bed:
        report.version = bed.version()
        scenario(make_desk(bed, program, helpers, pictures), report)
    report.promise("the desktop ends with all its processes", not bed.leftovers(), bed.leftovers())
    return report


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--bed", choices=[*BEDS, *WAYLAND_BEDS, "all"], default="all", help="all: all X11 desktops")
    parser.add_argument("--program", type=pathlib.Path, help="the executable")
    parser.add_argument("--helpers", type=pathlib.Path, help="folder of the helper programs")
    parser.add_argument("--results", type=pathlib.Path, help="file for the results, as JSON")
    parser.add_argument("--pictures", type=pathlib.Path, help="folder for pictures; by default the folder of the results")
    parser.add_argument("--table", type=pathlib.Path, nargs="+", metavar="RESULTS",
                        help="only print the table of stored results")
    arguments = parser.parse_args()
    if arguments.table:
        print(table([report for path in arguments.table if path.exists() for report in read_json(path)]))
        return 0
    if not arguments.program or not arguments.helpers:
        parser.error("--program and --helpers are needed")
    signal.signal(signal.SIGTERM, lambda number, _: sys.exit(128 + number))
    reports = []
    pictures = arguments.pictures or (arguments.results and arguments.results.parent)
    for name in BEDS if arguments.bed == "all" else [arguments.bed]:
        run = try_on_wayland if name in WAYLAND_BEDS else try_on
        try:
            reports.append(run(name, arguments.program.resolve(), arguments.helpers.resolve(), pictures))
        except CannotStart as reason:
            print(f"{name} did not start: {reason}")
            # A developer may not have all desktops installed; with CI=true everything is installed, and they must run.
            is_allowed = name in WAYLAND_BEDS and os.environ.get("CI") != "true"
            if not (reason.is_by_design or is_allowed):
                return 1
    if not reports:
        return NOT_RUN
    print(table(reports) if len(reports) > 1 else summary(reports[0]))
    if arguments.results:
        write_json(reports, arguments.results)
    return 1 if any(report.broken for report in reports) else 0


if __name__ == "__main__":
    sys.exit(main())
