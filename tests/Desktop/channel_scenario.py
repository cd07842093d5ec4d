#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs the program against a real makers' server on a virtual desktop and prints which promises it keeps. Status 0: all kept;
1: one is broken."""

import pathlib
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "MakersServer"))

from driver.tray import Tray  # noqa: E402
from driver.x11 import X11Bed  # noqa: E402
from makers_server import MakersServer, make_certificate  # noqa: E402
from scenario import channel_hostile_part, channel_part, command_line  # noqa: E402
from scenario.channel_desk import ChannelDesk  # noqa: E402
from scenario.promises import carry_out  # noqa: E402


def run(arguments, report):
    with X11Bed("openbox", compositor=True, panel=True) as bed, tempfile.TemporaryDirectory() as folder:
        desk = ChannelDesk(bed, arguments.program.resolve(), arguments.helpers.resolve(),
                           arguments.results and arguments.results.parent)
        desk.tray = Tray(bed)
        with MakersServer(arguments.makers_server.resolve(), pathlib.Path(folder, "usual")) as server:
            desk.server = server
            for part in (channel_part.visible, channel_part.hidden, channel_part.in_a_break, channel_part.over_an_alert,
                         channel_part.replies, channel_part.reports, channel_hostile_part.misbehaviours):
                desk.clean_up(program_runs=False)
                report.run(part, desk, report)
        for name, part in (("IP:127.0.0.1", channel_hostile_part.trusted_certificate),
                           ("DNS:makers.invalid", channel_hostile_part.unknown_certificate)):
            certificate, key = make_certificate(folder, name)
            with MakersServer(arguments.makers_server.resolve(), pathlib.Path(folder, part.__name__), "--certificate",
                              certificate, "--private-key", key) as server:
                desk.server, desk.certificate = server, certificate
                desk.clean_up(program_runs=False)
                report.run(part, desk, report)
        desk.clean_up(program_runs=False)
    report.promise("the desktop ends with all its processes", not bed.leftovers(), bed.leftovers())


def main():
    arguments = command_line.read(
        __doc__, program="the executable that takes a test server", makers_server="the server's executable")
    return carry_out("x11-channel", lambda report: run(arguments, report), arguments.results)


if __name__ == "__main__":
    sys.exit(main())
