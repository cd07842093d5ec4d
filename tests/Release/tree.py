# SPDX-License-Identifier: GPL-3.0-or-later
"""Shared by the release tests: a home directory with an odd name, small versions of the program to install there, and a user
for whom read-only folders are effective."""

import json
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import unittest

PROJECT = pathlib.Path(__file__).resolve().parent.parent.parent
APPLICATION = "ch.example.Essai"
_ARCHIVE_PARTS = PROJECT / "packaging/archive"
_NOBODY = 65534
# Logs how it was started, then runs the script in the file "plan-<version>" beside the log.
_PROGRAM = """#!/bin/sh
version=@VERSION@
{ printf '%s' "$version"; for argument in "$@"; do printf '|%s' "$argument"; done; printf '\\n'; } >>"$HOME/log"
plan=$(cat "$HOME/plan-$version" 2>/dev/null)
eval "$plan"
"""


class HomeCase(unittest.TestCase):
    """A home directory whose name has spaces, accents, quotes and other characters special to shells and desktop entries."""

    def setUp(self):
        folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, folder, ignore_errors=True)
        folder.chmod(0o755)
        self.scratch = folder
        self.home = folder / "Zoé d'été $HOME `x` \"100 %\" \\ & fils"
        self.home.mkdir()
        self.root = self.home / ".local/opt/OrvaneBreak"
        self.data = self.home / ".local/share"

    def unpacked(self, version):
        """An unpacked archive with a script instead of the program."""
        folder = self.scratch / f"téléchargé {version}" / f"OrvaneBreak-{version}"
        for name in ("bin", "lib", "share/OrvaneBreak", "share/applications", "share/dbus-1/services"):
            (folder / name).mkdir(parents=True)
        for name in ("install", "uninstall"):
            shutil.copy(_ARCHIVE_PARTS / name, folder / name)
        shutil.copy(_ARCHIVE_PARTS / "orvanebreak", folder / "bin/orvanebreak")
        values = {"PROJECT_VERSION": version, "ORVANE_APP_ID": APPLICATION, "VERSION": version,
                  "CMAKE_INSTALL_FULL_BINDIR": "/usr/local/bin", "quote": ""}

        def write(path, text):
            for name, value in values.items():
                text = text.replace(f"@{name}@", value)
            (folder / path).write_text(text, "utf-8")

        write("share/OrvaneBreak/installation.sh", (_ARCHIVE_PARTS / "installation.sh.in").read_text("utf-8"))
        write("share/OrvaneBreak/Info.json", json.dumps({"CFBundleShortVersionString": version}))
        for source, path in (("desktop", f"applications/{APPLICATION}.desktop"),
                             ("service", f"dbus-1/services/{APPLICATION}.service")):
            write(f"share/{path}", (PROJECT / f"packaging/application.{source}.in").read_text("utf-8"))
        for kind, name in (("scalable", "orvanebreak.svg"), ("symbolic", "orvanebreak-symbolic.svg")):
            icons = folder / "share/icons/hicolor" / kind / "apps"
            icons.mkdir(parents=True)
            shutil.copy(PROJECT / "assets/icon" / name, icons / name)
        write("bin/orvanebreak-program", _PROGRAM)
        (folder / "bin/orvanebreak-program").chmod(0o755)
        return folder

    def environment(self, **changes):
        kept = {name: value for name, value in os.environ.items() if not name.startswith(("XDG_", "DBUS_", "QT_"))}
        return {**kept, "HOME": str(self.home), "LC_ALL": "C.UTF-8", **changes}

    def run_in_home(self, *command, is_stopped_by_modes=False, **changes):
        """Runs a command in this home directory; `is_stopped_by_modes` makes read-only folders effective for root too."""
        options = {}
        if is_stopped_by_modes and os.geteuid() == 0:
            options = {"user": _NOBODY, "group": _NOBODY, "extra_groups": []}
        return subprocess.run([str(part) for part in command], env=self.environment(**changes), cwd=self.scratch,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60, **options)

    def install(self, version, *options, **changes):
        """Installs a version and asserts success."""
        result = self.run_in_home(self.unpacked(version) / "install", *options, **changes)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        return result

    def give_home_to_nobody(self):
        if os.geteuid() == 0:
            for path in (self.home, *self.home.rglob("*")):
                os.chown(path, _NOBODY, _NOBODY, follow_symlinks=False)

    def plan(self, version, text):
        """Sets what this version's program does, as shell script."""
        (self.home / f"plan-{version}").write_text(text, "utf-8")

    def log(self):
        """The logged starts: the version and the arguments of each."""
        path = self.home / "log"
        return [tuple(line.split("|")) for line in path.read_text("utf-8").splitlines()] if path.exists() else []

    def below_home(self):
        """Every file and link in the home directory with its content or target."""
        return {path.relative_to(self.home).as_posix(): os.readlink(path) if path.is_symlink() else path.read_bytes()
                for path in self.home.rglob("*") if path.is_symlink() or path.is_file()}


def end(process):
    """Ends a process that is still running, and waits for it."""
    if process.poll() is None:
        process.send_signal(signal.SIGKILL)
    process.wait(10)
