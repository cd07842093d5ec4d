# SPDX-License-Identifier: GPL-3.0-or-later
"""The clocks of one program on a bed, which a preloaded library steps."""

import os
import signal


class SteppedClock:
    """The clocks of a program that was started with `environment`."""

    def __init__(self, bed, helpers):
        self._library = bed.lend(helpers / "stepped-clock.so")
        self._bed = bed
        self._set_forward = self._asleep = 0
        self._write()

    def environment(self):
        return {"LD_PRELOAD": str(self._library), "ORVANE_TEST_CLOCK": str(self._file)}

    def reset(self):
        """Before the program starts."""
        self._set_forward = self._asleep = 0
        self._write()

    def set_forward(self, process, seconds):
        """Sets the wall clock forward, while the machine is awake."""
        self._set_forward += seconds
        self._step(process)

    def sleep(self, process, seconds):
        """Suspends the machine, as far as the program can tell, and resumes it after these seconds."""
        self._asleep += seconds
        self._step(process)

    def _write(self):
        self._file = self._bed.write("clock", f"{self._set_forward} {self._asleep}\n")

    def _step(self, process):
        self._write()
        os.kill(process.pid, signal.SIGUSR2)
