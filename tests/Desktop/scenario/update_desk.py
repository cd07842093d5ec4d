# SPDX-License-Identifier: GPL-3.0-or-later
"""A desk with the released program installed in the home directory, and makers who publish updates."""

import contextlib
import dataclasses
import datetime
import functools
import http.server
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tarfile
import threading

from driver.waiting import comes_true, wait_until

from .application_desk import SETTINGS, ApplicationDesk

_PROJECT = pathlib.Path(__file__).resolve().parents[3]
sys.path.insert(0, str(_PROJECT / "tools"))

from releasing import appcast, archive, keys  # noqa: E402
from releasing.source import Source  # noqa: E402

CHECK = "Rechercher des mises à jour…"
INSTALL = "Installer"
RELAUNCH = "Installer et relancer"
LATER = "Plus tard"
OK = "OK"
AUTOMATIC = {"SUEnableAutomaticChecks": True, "SUAutomaticallyUpdate": True}


class Makers:
    """Makers with a key and a web server on this machine."""

    def __init__(self, folder, build_folder):
        self.folder = pathlib.Path(folder)
        self.web = self.folder / "web"
        self.web.mkdir()
        self.key = self.folder / "key"
        self.public_key = keys.generate(self.key, _PROJECT)
        self._model = self._unpack_model(build_folder)
        self._server = http.server.ThreadingHTTPServer(
            ("127.0.0.1", 0), functools.partial(_QuietHandler, directory=str(self.web)))
        threading.Thread(target=self._server.serve_forever, daemon=True).start()
        self.address = f"http://127.0.0.1:{self._server.server_address[1]}"

    def close(self):
        self._server.shutdown()
        self._server.server_close()

    def _unpack_model(self, build_folder):
        packed = archive.build(Source(_PROJECT), self.folder / "model", build_folder=build_folder, compression=1)
        subprocess.run(["tar", "--zstd", "-xf", packed.path, "-C", self.folder / "model"], check=True, timeout=120)
        return next(path for path in (self.folder / "model").iterdir() if path.is_dir())

    def version(self, version, change=None):
        """A folder like an unpacked archive of `version`; `change` may alter it."""
        folder = self.folder / "versions" / f"OrvaneBreak-{version}"
        shutil.rmtree(folder, ignore_errors=True)
        shutil.copytree(self._model, folder, symlinks=True)
        information = folder / "share/OrvaneBreak/Info.json"
        members = json.loads(information.read_text("utf-8"))
        members.update({"CFBundleShortVersionString": version, "SUFeedURL": f"{self.address}/appcast.xml",
                        "SUPublicEDKey": self.public_key})
        information.write_text(json.dumps(members), "utf-8")
        script = folder / "share/OrvaneBreak/installation.sh"
        lines = [f"version='{version}'" if line.startswith("version=") else line
                 for line in script.read_text("utf-8").splitlines()]
        script.write_text("\n".join(lines) + "\n", "utf-8")
        if change:
            change(folder)
        return folder

    def pack(self, folder, extra=()):
        """The archive of a folder with extra entries as (tarfile.TarInfo, bytes)."""
        path = self.web / f"{folder.name}-linux-{os.uname().machine}.tar.zst"
        tar = self.folder / "archive.tar"
        archive.pack(folder, tar, 0)
        with tarfile.open(tar, "a", format=tarfile.PAX_FORMAT) as writer:
            for entry, content in extra:
                writer.addfile(entry, content)
        subprocess.run(["zstd", "-1", "--quiet", "--force", tar, "-o", path], check=True, timeout=120)
        return path

    @staticmethod
    def generate_key(path):
        keys.generate(path, _PROJECT)

    @staticmethod
    def signature(key, path):
        return keys.sign(key, path)

    def announce(self, version, path, key=None, days=60, edit=None, **changes):
        """Publishes a feed with this one archive, signed with `key` and valid for some days; `changes` falsify it, and `edit`
        changes its text before it is signed."""
        feed = appcast.Appcast(self.folder / "unwritten.xml")
        release = appcast.Release(
            version=version, url=f"{self.address}/{path.name}", length=path.stat().st_size,
            signature=keys.sign(self.key, path), architecture=os.uname().machine,
            date=datetime.datetime.now(datetime.timezone.utc), notes="Plus calme, plus sûr.")
        feed.add(dataclasses.replace(release, **changes))
        now = datetime.datetime.now(datetime.timezone.utc)
        if edit:
            original = feed.content
            feed.content = lambda *arguments: edit(original(*arguments))
        feed.save(key or self.key, now, days)
        os.replace(self.folder / "unwritten.xml", self.web / "appcast.xml")


class _QuietHandler(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *_):
        """Logs nothing."""


class UpdateDesk(ApplicationDesk):
    """Version 1.0.0 is installed again for each part."""

    def __init__(self, bed, makers, helpers, pictures=None):
        self.makers = makers
        self.root = bed.home / ".local/opt/OrvaneBreak"
        super().__init__(bed, self.root / "current/bin/orvanebreak", helpers, pictures)
        self._first = makers.version("1.0.0")

    def install(self):
        shutil.rmtree(self.root, ignore_errors=True)
        subprocess.run([self._first / "install"], env=self.bed.environment(), check=True, timeout=60,
                       stdout=subprocess.DEVNULL)

    def start_version(self, settings=None, limit=None):
        """Starts the current version on its settings page. `settings` are the updater's, `limit` is the largest file size."""
        self._folders += 1
        self.config = self.bed.home / f"config-{self._folders}"
        (self.config / "OrvaneBreak").mkdir(parents=True)
        self.preferences_file.write_text('{"OBOnboarded": true}', "utf-8")
        (self.config / "OrvaneBreak/updater.json").write_text(json.dumps(settings or {}), "utf-8")
        program = self.program
        if limit:
            self.program = self.bed.write("limited", f'#!/bin/sh\ntrap "" XFSZ\nexec prlimit --fsize={limit} -- "{program}"\n')
            self.program.chmod(0o755)
        self.start_over({"ORVANE_DEBUG_SETTINGS": "1"})
        self.program = program
        self.wait_for_window()
        wait_until(lambda: self.shows_now(SETTINGS), "the settings page")

    def current(self):
        """The version that starts next; raises AssertionError if it is incomplete."""
        folder = pathlib.Path(os.path.realpath(self.root / "current"))
        if not os.access(folder / "bin/orvanebreak-program", os.X_OK):
            raise AssertionError(f"{folder} is incomplete")
        return folder.name

    def runs(self, version):
        """Whether the window shows this version number."""
        return comes_true(lambda: self.shows_now(f"OrvaneBreak v{version}"), 15)

    def answer_with(self, *titles):
        """Presses buttons in order, each as soon as it appears."""
        for title in titles:
            wait_until(lambda title=title: self.shows_now(title), f"a button {title}", 30)
            self.reader.press(title)

    def quit(self):
        """Ends the program like the end of a session, and waits for it."""
        self.process.terminate()
        return self.process.wait(20)


@contextlib.contextmanager
def makers_of(build_folder, folder):
    makers = Makers(folder, build_folder)
    try:
        yield makers
    finally:
        makers.close()
