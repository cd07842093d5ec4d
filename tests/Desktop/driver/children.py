# SPDX-License-Identifier: GPL-3.0-or-later
"""The processes that a bed starts. They end with the bed, even if it crashes."""

import ctypes
import os
import signal
import subprocess
import uuid

from .waiting import comes_true

_libc = ctypes.CDLL(None, use_errno=True)
_PR_SET_PDEATHSIG = 1
_MARK = "ORVANE_BED"


def _end_with_parent():
    _libc.prctl(_PR_SET_PDEATHSIG, signal.SIGKILL)


class Children:
    """Starts processes, each in its own process group, and ends them in reverse order."""

    def __init__(self):
        self.mark = f"{os.getpid()}-{uuid.uuid4().hex[:8]}"
        self._started = []

    def start(self, arguments, environment, **options):
        """Starts a program; options as for subprocess.Popen. Output is discarded unless the options redirect it."""
        options.setdefault("stdin", subprocess.DEVNULL)
        options.setdefault("stdout", subprocess.DEVNULL)
        options.setdefault("stderr", subprocess.DEVNULL)
        process = subprocess.Popen([str(argument) for argument in arguments], env={**environment, _MARK: self.mark},
                                   start_new_session=True, preexec_fn=_end_with_parent, **options)
        self._started.append(process)
        return process

    def end(self, process):
        """Ends one process and its group with SIGTERM, then SIGKILL. Does nothing if it has already ended."""
        if process in self._started:
            self._started.remove(process)
        if process.poll() is None:
            _signal_group(process.pid, signal.SIGTERM)
            if not comes_true(lambda: process.poll() is not None, 3):
                _signal_group(process.pid, signal.SIGKILL)
        process.wait()
        for stream in (process.stdin, process.stdout, process.stderr):
            if stream:
                stream.close()

    def end_all(self):
        """Ends every process started here and all their descendants."""
        for process in reversed(list(self._started)):
            self.end(process)
        for left_over in self.descendants():
            try:
                os.kill(left_over, signal.SIGKILL)
            except ProcessLookupError:
                pass

    def descendants(self):
        """The ids of processes with this bed's marker in their environment."""
        wanted = f"{_MARK}={self.mark}".encode()
        found = []
        for entry in os.listdir("/proc"):
            if not entry.isdigit():
                continue
            try:
                with open(f"/proc/{entry}/environ", "rb") as environment:
                    if wanted in environment.read().split(b"\0"):
                        found.append(int(entry))
            except OSError:
                continue
        return found


def _signal_group(group, number):
    try:
        os.killpg(group, number)
    except ProcessLookupError:
        pass
