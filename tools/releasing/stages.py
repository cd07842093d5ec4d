# SPDX-License-Identifier: GPL-3.0-or-later
"""The stages of a release, with their times, and which of them need not be repeated."""

import hashlib
import pathlib
import sys
import time


class Stages:
    """The stages of one commit with one configuration, in a folder that is kept between attempts."""

    def __init__(self, folder, configuration):
        self.folder = pathlib.Path(folder)
        self.folder.mkdir(parents=True, exist_ok=True)
        self._configuration = hashlib.sha256("\n".join(configuration).encode()).hexdigest()

    def run(self, name, action):
        """Runs a stage, reports its beginning and its time, and returns its result."""
        print(f"release: {name}...", file=sys.stderr, flush=True)
        begin = time.monotonic()
        result = action()
        minutes, seconds = divmod(int(time.monotonic() - begin), 60)
        print(f"release: {name}: {minutes} min {seconds:02} s", file=sys.stderr, flush=True)
        return result

    def run_once(self, name, action):
        """As run(), unless the stage succeeded in an earlier attempt with the same configuration."""
        mark = self.folder / f"{name}-passed"
        if mark.exists() and mark.read_text() == self._configuration:
            print(f"release: {name}: passed before", file=sys.stderr, flush=True)
            return
        self.run(name, action)
        mark.write_text(self._configuration)
