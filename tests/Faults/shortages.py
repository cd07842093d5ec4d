# SPDX-License-Identifier: GPL-3.0-or-later
"""Shortages for a running program: disk space and file descriptors."""

import os
import resource
import subprocess

from driver.bed import NotPossibleHere
from driver.waiting import stays_true, wait_until

_IDLE_SECONDS = 0.5


class SmallDisk:
    """A context manager that mounts a file system of 256 KiB on a folder. Raises NotPossibleHere if this process may not
    mount."""

    def __init__(self, folder):
        self._folder = folder
        self._ballast = folder / "ballast"

    def __enter__(self):
        mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=256k", "tmpfs", self._folder], check=False,
                                 capture_output=True, text=True)
        if mounted.returncode != 0:
            raise NotPossibleHere(mounted.stderr.strip())
        return self

    def __exit__(self, *_):
        subprocess.run(["umount", "--lazy", self._folder], check=True)

    def exhaust(self, _process):
        """Fills the disk."""
        with open(self._ballast, "wb", buffering=0) as ballast:
            try:
                while True:
                    ballast.write(bytes(4096))
            except OSError:
                pass

    def restore(self, _process):
        self._ballast.unlink()


class FileSizeLimit:
    """The same shortage from a file size limit: files can be created but stay empty."""

    def __enter__(self):
        return self

    def __exit__(self, *_):
        """Does nothing: the limit ends with the process."""

    @staticmethod
    def exhaust(process):
        _limit(process, resource.RLIMIT_FSIZE, 0)

    @staticmethod
    def restore(process):
        _limit(process, resource.RLIMIT_FSIZE, None)


class Descriptors:
    """The file descriptors of a process."""

    @staticmethod
    def exhaust(process):
        """Lowers the limit so that no further descriptor can be opened."""
        used = {int(name) for name in os.listdir(f"/proc/{process.pid}/fd")}
        _limit(process, resource.RLIMIT_NOFILE, next(number for number in range(len(used) + 1) if number not in used))

    @staticmethod
    def restore(process):
        _limit(process, resource.RLIMIT_NOFILE, None)


def _limit(process, kind, value):
    """Sets the soft limit; None raises it to the hard limit."""
    _, hard = resource.prlimit(process.pid, kind)
    resource.prlimit(process.pid, kind, (hard if value is None else value, hard))


def processor_seconds(process):
    """The processor time of a process so far."""
    with open(f"/proc/{process.pid}/stat", encoding="ascii") as file:
        words = file.read().rsplit(")", 1)[1].split()
    return (int(words[11]) + int(words[12])) / os.sysconf("SC_CLK_TCK")


def wait_until_idle(process):
    """Waits until a process has been idle for a while."""
    def is_idle():
        spent = processor_seconds(process)
        return stays_true(lambda: processor_seconds(process) == spent, _IDLE_SECONDS)
    wait_until(is_idle, "an idle process")
