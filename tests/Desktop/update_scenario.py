#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Installs the released program in a home directory, lets it update itself from a web server, and prints which promises it
keeps. Status 0: all kept; 1: one is broken."""

import sys
import tempfile

from driver.x11 import X11Bed
from scenario import command_line, update_feed_part, update_part, update_trial_part
from scenario.promises import carry_out
from scenario.update_desk import UpdateDesk, makers_of


def run(arguments, report):
    with tempfile.TemporaryDirectory() as folder, makers_of(arguments.build_folder.resolve(), folder) as makers, \
            X11Bed("openbox", compositor=True) as bed:
        desk = UpdateDesk(bed, makers, arguments.helpers.resolve(), arguments.results and arguments.results.parent)
        for part in (update_part.by_hand, update_part.silently, update_part.newer_by_hand, update_part.relaunch,
                     update_trial_part.no_verdict, update_trial_part.bad_start, update_trial_part.hanging_start,
                     update_part.lies, update_feed_part.feeds, update_part.full_disk, update_part.killed):
            desk.clean_up(program_runs=False)
            report.run(part, desk, report)
        desk.clean_up(program_runs=False)
    report.promise("the desktop ends with all its processes", not bed.leftovers(), bed.leftovers())


def main():
    arguments = command_line.read(__doc__, build_folder="folder of the release build")
    return carry_out("x11-updates", lambda report: run(arguments, report), arguments.results)


if __name__ == "__main__":
    sys.exit(main())
