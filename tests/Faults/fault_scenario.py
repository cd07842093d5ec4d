#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Takes resources and services away from the running program, and prints which promises it keeps. Status 0: all kept; 1: one
is broken."""

import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "Desktop"))

import fault_part  # noqa: E402
from driver.tray import Tray  # noqa: E402
from driver.x11 import X11Bed  # noqa: E402
from scenario import command_line  # noqa: E402
from scenario.application_desk import ApplicationDesk  # noqa: E402
from scenario.promises import carry_out  # noqa: E402


def run(arguments, report):
    with X11Bed("openbox", compositor=True) as bed:
        desk = ApplicationDesk(bed, arguments.program.resolve(), arguments.helpers.resolve())
        desk.tray = Tray(bed)
        for part in (fault_part.read_only_home, fault_part.full_disk, fault_part.no_descriptors,
                     fault_part.bus_restarts, fault_part.display_dies):
            desk.clean_up(program_runs=False)
            report.run(part, desk, report)
    report.promise("the desktop ends with all its processes", not bed.leftovers(), bed.leftovers())


def main():
    arguments = command_line.read(__doc__, program="the executable")
    return carry_out("x11-faults", lambda report: run(arguments, report), arguments.results)


if __name__ == "__main__":
    sys.exit(main())
