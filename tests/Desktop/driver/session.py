# SPDX-License-Identifier: GPL-3.0-or-later
"""The part of a bed that does not depend on its display: a home directory, a session bus and processes."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile

from . import desktop_files
from .bed import Bed, CannotStart
from .children import Children

_KEPT_VARIABLES = ("PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS")


def version_in(text):
    """The first version number in a text, or a question mark."""
    found = re.search(r"\d+(\.\d+)+", text)
    return found[0] if found else "?"


class SessionBed(Bed):
    """A bed with the folders, the bus and the processes of one user. When the tests run as root, everything runs as the user
    `account`, or as root if that is None."""

    account = None

    def __init__(self):
        self._children = Children()
        self._home = None
        self._bus_address = None
        #: The process of the session bus.
        self.bus = None

    def end(self):
        self._children.end_all()
        if self._home:
            shutil.rmtree(self._home, ignore_errors=True)

    def leftovers(self):
        """The bed's processes that still run."""
        return self._children.descendants()

    @property
    def home(self):
        return self._home

    def environment(self):
        kept = {name: os.environ[name] for name in _KEPT_VARIABLES if name in os.environ}
        home = self._home
        return {**kept, "HOME": str(home), "XDG_CONFIG_HOME": f"{home}/config", "XDG_DATA_HOME": f"{home}/data",
                "XDG_CACHE_HOME": f"{home}/cache", "XDG_STATE_HOME": f"{home}/state",
                "XDG_RUNTIME_DIR": f"{home}/runtime", "DBUS_SESSION_BUS_ADDRESS": self._bus_address or "",
                "LANG": "C.UTF-8", "TZ": "UTC", "NO_AT_BRIDGE": "1", "GIO_USE_VFS": "local"}

    def run(self, arguments, environment=None, **options):
        variables = self.environment()
        variables.update(environment or {})
        return self._children.start(arguments, {name: value for name, value in variables.items() if value is not None},
                                    **self._as_account(), **options)

    def stop(self, process):
        self._children.end(process)

    def write(self, path, text):
        path = self._home / path
        for folder in reversed(path.relative_to(self._home).parents):
            if not (self._home / folder).exists():
                (self._home / folder).mkdir()
                self._give(self._home / folder)
        path.write_text(text, "utf-8")
        self._give(path)
        return path

    # -- startup

    def _make_home(self):
        self._home = pathlib.Path(tempfile.mkdtemp(prefix="orvanebreak-bed-"))
        self._give(self._home)
        for folder in ("config", "data", "data/dbus-1", "data/dbus-1/services", "cache", "state", "runtime"):
            (self._home / folder).mkdir(mode=0o700)
            self._give(self._home / folder)

    def start_bus(self, name):
        """Starts a bus; returns its process and its address. "session-bus" becomes the session bus of the bed."""
        address = f"unix:path={self._home}/runtime/{name}"
        config = self.write(f"{name}.conf", desktop_files.SESSION_BUS.format(
            socket=address.split("=")[1], services=self._home / "data" / "dbus-1" / "services"))
        reading, writing = os.pipe()
        process = self.run(["dbus-daemon", f"--config-file={config}", "--nofork", f"--print-address={writing}"],
                           {"DBUS_SESSION_BUS_ADDRESS": address}, pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as answer:
            if not answer.readline():
                raise CannotStart("dbus-daemon did not start")
        if name == "session-bus":
            self.bus, self._bus_address = process, address
        return process, address

    # -- small helpers

    def _as_account(self):
        """The subprocess options for running as the bed's user."""
        if self.account is None or os.geteuid() != 0:
            return {}
        return {"user": self.account, "group": self.account, "extra_groups": []}

    def _give(self, path):
        """Gives a file or a folder to the bed's user."""
        if self._as_account():
            shutil.chown(path, self.account, self.account)

    def _version_of(self, program):
        """The program's name and the version that it prints."""
        return f"{pathlib.Path(program).name} {version_in(self._call([program, '--version']))}"

    def _call(self, arguments, timeout=20, **options):
        """Runs a short command on the desktop; returns its output, even if it failed."""
        options.setdefault("text", True)
        done = subprocess.run([str(argument) for argument in arguments], env=self.environment(),
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                              timeout=timeout, check=False, **self._as_account(), **options)
        return done.stdout
