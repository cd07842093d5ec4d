#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Locks the screen and suspends the machine around the running program, and prints which promises it keeps. Status 0: all kept;
1: one is broken."""

import sys

from driver import packages
from driver.stepped_clock import SteppedClock
from driver.tray import Tray
from driver.x11 import X11Bed
from scenario import command_line, presence_part
from scenario.desk import Desk
from scenario.promises import carry_out


def run(arguments, report):
    packages.require("i3lock", "mate-screensaver", "xsecurelock")
    helpers = arguments.helpers.resolve()
    with X11Bed("openbox", compositor=True) as bed:
        desk = Desk(bed, arguments.program.resolve(), helpers)
        desk.tray = Tray(bed)
        clock = SteppedClock(bed, helpers)
        for part in (presence_part.lock_screen_dies, presence_part.due_while_locked, presence_part.screen_lockers,
                     presence_part.suspended):
            desk.clean_up(program_runs=False)
            report.run(part, desk, report, clock)
        desk.clean_up(program_runs=False)
    report.promise("the desktop ends with all its processes", not bed.leftovers(), bed.leftovers())


def main():
    arguments = command_line.read(__doc__, program="the executable")
    return carry_out("x11-presence", lambda report: run(arguments, report), arguments.results)


if __name__ == "__main__":
    sys.exit(main())
