# SPDX-License-Identifier: GPL-3.0-or-later
"""What the tests of packages share: the build folder that they are told, and the tools that they ask."""

import os
import pathlib
import subprocess
import sys

PROJECT = pathlib.Path(__file__).resolve().parent.parent.parent
BUILD_FOLDER = pathlib.Path(sys.argv.pop(1)).resolve() if len(sys.argv) > 1 else PROJECT / "build"
#: In which the tools speak English and read accents.
ENVIRONMENT = {**os.environ, "LC_ALL": "C.UTF-8"}


def output_of(*command):
    """What a command prints, which has to succeed."""
    return subprocess.run([str(part) for part in command], env=ENVIRONMENT, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, text=True, check=True).stdout


def configured(name):
    """A value that the build folder was configured with."""
    for line in (BUILD_FOLDER / "CMakeCache.txt").read_text("utf-8").splitlines():
        if line.startswith(name + ":"):
            return line.partition("=")[2]
    raise KeyError(name)


def complaints(*command):
    """What a checker prints, nothing when it found nothing."""
    result = subprocess.run([str(part) for part in command], env=ENVIRONMENT, stdin=subprocess.DEVNULL,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    text = result.stdout.strip()
    return text or (f"status {result.returncode}" if result.returncode else "")
