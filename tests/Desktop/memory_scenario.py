#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs the program from its first start to its exit under valgrind's memcheck on a virtual desktop, against a makers' server,
and prints memory leaks and invalid accesses. Status 0: none; 1: some."""

import pathlib
import shutil
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "MakersServer"))

from driver import waiting  # noqa: E402
from driver.packages import not_installed  # noqa: E402
from driver.tray import Tray  # noqa: E402
from driver.x11 import X11Bed  # noqa: E402
from makers_server import MakersServer  # noqa: E402
from scenario import command_line, memory_part  # noqa: E402
from scenario.channel_desk import ChannelDesk  # noqa: E402
from scenario.promises import carry_out  # noqa: E402

#: How many times slower a program may run under memcheck.
_SLOWER = 12

_SUPPRESSIONS = pathlib.Path(__file__).resolve().parent / "valgrind-suppressions"

_MEMCHECK = """#!/bin/sh
exec valgrind --quiet --error-exitcode={status} --leak-check=full --show-leak-kinds=definite \\
    --errors-for-leak-kinds=definite --num-callers=40 --suppressions='{suppressions}' --gen-suppressions=all \\
    --log-file='{logs}/memcheck-%p.txt' '{program}' "$@"
"""


def checked(program, folder):
    """A program that runs `program` under memcheck and writes the findings into `folder`, one file per process."""
    path = folder / "checked"
    path.write_text(_MEMCHECK.format(status=memory_part.FOUND, suppressions=_SUPPRESSIONS, logs=folder,
                                     program=program), "utf-8")
    path.chmod(0o755)
    return path


def run(arguments, report):
    waiting.scale_timeouts(_SLOWER)
    with X11Bed("openbox") as bed, tempfile.TemporaryDirectory() as folder:
        logs = pathlib.Path(folder, "logs")
        logs.mkdir()
        desk = ChannelDesk(bed, checked(arguments.program.resolve(), logs), arguments.helpers.resolve())
        desk.tray = Tray(bed)
        with MakersServer(arguments.makers_server.resolve(), pathlib.Path(folder, "server")) as desk.server:
            report.run(memory_part.whole_run, desk, report)
            desk.clean_up(program_runs=False)
        found = "".join(path.read_text("utf-8", "replace") for path in sorted(logs.iterdir()) if path.suffix == ".txt")
    print(found)
    report.promise("no memory leaks and no invalid accesses", not found, "see above")


def main():
    arguments = command_line.read(
        __doc__, program="the executable that takes a test server", makers_server="the server's executable")
    if not shutil.which("valgrind"):
        print(not_installed("valgrind"))
        return 1
    return carry_out("x11-memory", lambda report: run(arguments, report), arguments.results)


if __name__ == "__main__":
    sys.exit(main())
