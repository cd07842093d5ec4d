# SPDX-License-Identifier: GPL-3.0-or-later
"""Shared by the packaging tests: the build folder and helpers for running tools."""

import os
import pathlib
import subprocess
import sys

PROJECT = pathlib.Path(__file__).resolve().parent.parent.parent
BUILD_FOLDER = pathlib.Path(sys.argv.pop(1)).resolve() if len(sys.argv) > 1 else PROJECT / "build"
#: A locale with English messages and UTF-8.
ENVIRONMENT = {**os.environ, "LC_ALL": "C.UTF-8"}


def output_of(*command):
    """The output of a command that has to succeed."""
    return subprocess.run([str(part) for part in command], env=ENVIRONMENT, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, text=True, check=True).stdout


def configured(name):
    """A value from the build folder's CMake cache."""
    for line in (BUILD_FOLDER / "CMakeCache.txt").read_text("utf-8").splitlines():
        if line.startswith(name + ":"):
            return line.partition("=")[2]
    raise KeyError(name)


def complaints(*command):
    """The findings of a checker, or an empty text."""
    result = subprocess.run([str(part) for part in command], env=ENVIRONMENT, stdin=subprocess.DEVNULL,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    text = result.stdout.strip()
    return text or (f"status {result.returncode}" if result.returncode else "")
