# SPDX-License-Identifier: GPL-3.0-or-later
"""Builds releases reproducibly: the same commit gives the same bytes on the same system."""

import os
import shutil
import subprocess

from . import Refusal


def environment_for(source):
    """The environment for the build tools."""
    # A compiler cache may put its own paths into the debug information.
    return {**os.environ, "SOURCE_DATE_EPOCH": str(source.commit_time()), "CCACHE_DISABLE": "1", "LC_ALL": "C", "TZ": "UTC"}


def build_anew(source, name, target, definitions, environment):
    """Builds one target from scratch, with CMake definitions as for -D, in the folder `name` of the source tree, and returns
    that folder."""
    folder = source.folder / name
    shutil.rmtree(folder, ignore_errors=True)
    run(["cmake", "-S", source.folder, "-B", folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=RelWithDebInfo", "-DBUILD_TESTING=OFF",
         *(f"-D{definition}" for definition in definitions)], environment)
    run(["cmake", "--build", folder, "--target", target], environment)
    return folder


def run(command, environment):
    """Runs a step of the build and reports its output only if it fails."""
    try:
        result = subprocess.run([str(part) for part in command], env=environment, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    except FileNotFoundError as error:
        raise Refusal(f"not installed: {command[0]} (tools/install-packages build release)") from error
    if result.returncode != 0:
        text = result.stdout.decode("utf-8", "replace")
        raise Refusal(f"command failed: {' '.join(map(str, command))}\n{text[-4000:].rstrip()}")
