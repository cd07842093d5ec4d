#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The archive of the build: reproducible, complete, and independent of the system's Qt.

usage: test_archive.py BUILD-FOLDER"""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tarfile
import tempfile
import unittest

from tree import PROJECT

sys.path += [str(PROJECT / "tests/Desktop"), str(PROJECT / "tools")]

from driver.waiting import wait_until
from driver.x11 import X11Bed
from releasing.source import Source

# Libraries that every desktop has; all others have to be in the archive.
_SYSTEM = re.compile(r"(ld-linux.*|lib(c|m|dl|rt|pthread|resolv|util|stdc\+\+|gcc_s|GL|EGL|GLX|GLdispatch|X11|X11-xcb|xcb|Xau|"
                     r"Xdmcp|wayland-client|fontconfig|freetype|harfbuzz|png16|glib-2\.0|dbus-1|z))\.so\.[0-9]+")
_PLUGINS = {"platforms/libqxcb.so", "platforms/libqwayland.so", "wayland-shell-integration/libxdg-shell.so",
            "wayland-decoration-client/libbradient.so", "iconengines/libqsvgicon.so",
            "imageformats/libqsvg.so", "platforminputcontexts/libcomposeplatforminputcontextplugin.so",
            "platforminputcontexts/libibusplatforminputcontextplugin.so"}
_MODULES = {"archive.so", "network.so", "sound.so"}
_BUILD_FOLDER = pathlib.Path(sys.argv.pop(1)) if len(sys.argv) > 1 else None


def output_of(*command):
    return subprocess.run([str(part) for part in command], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True,
                          check=True).stdout


def dynamic_section(path):
    """The libraries that a file needs, and its search paths."""
    text = output_of("readelf", "--dynamic", "--wide", path)
    return re.findall(r"\(NEEDED\).*\[(.*)\]", text), re.findall(r"\((?:RPATH|RUNPATH)\).*\[(.*)\]", text)


class Archive(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.scratch)
        cls.archives = [pathlib.Path(output_of(
            PROJECT / "tools/release", "archive", "--build-folder", _BUILD_FOLDER, "--compression", "1",
            "--output", cls.scratch / name).strip()) for name in ("first", "second place")]
        tar = cls.scratch / "archive.tar"
        output_of("zstd", "-dq", cls.archives[0], "-o", tar)
        with tarfile.open(tar) as reader:
            cls.entries = reader.getmembers()
            reader.extractall(cls.scratch)
        cls.folder = cls.scratch / cls.entries[0].name
        cls.program = cls.folder / "bin/orvanebreak-program"
        cls.modules = cls.folder / "lib/orvanebreak/modules"
        cls.version = output_of(_BUILD_FOLDER / "bin/orvanebreak", "--version").split()[1]

    def test_same_bytes_each_time(self):
        first, second = ({path.name: path.read_bytes() for path in archive.parent.iterdir()} for archive in self.archives)
        self.assertEqual(first, second)

    def test_names(self):
        machine = os.uname().machine
        self.assertEqual(self.archives[0].name, f"OrvaneBreak-{self.version}-linux-{machine}.tar.zst")
        self.assertEqual(self.folder.name, f"OrvaneBreak-{self.version}")
        names = [entry.name for entry in self.entries]
        self.assertEqual(names, sorted(names))
        self.assertEqual(len(names), len(set(names)))
        self.assertTrue(all(name == self.folder.name or name.startswith(self.folder.name + "/") for name in names))

    def test_entries_reveal_nothing_about_the_build(self):
        time = Source(PROJECT).commit_time()
        for entry in self.entries:
            self.assertTrue(entry.isfile() or entry.isdir(), entry.name)
            self.assertEqual((entry.uid, entry.gid, entry.uname, entry.gname, entry.mtime), (0, 0, "", "", time), entry.name)
            self.assertIn(entry.mode, (0o755,) if entry.isdir() else (0o755, 0o644), entry.name)

    def test_program_reveals_nothing_about_the_build(self):
        for path in (path for pair in self.symbols().items() for path in pair):
            self.assertNotIn(os.fsencode(PROJECT), path.read_bytes(), path)

    def test_layout(self):
        for name in ("bin/orvanebreak", "bin/orvanebreak-program", "install", "uninstall"):
            self.assertTrue(os.access(self.folder / name, os.X_OK), name)
        for name in ("bin/qt.conf", "share/OrvaneBreak/sounds/Glass.wav", "share/OrvaneBreak/installation.sh", "LICENSE"):
            self.assertTrue((self.folder / name).is_file(), name)
        information = json.loads((self.folder / "share/OrvaneBreak/Info.json").read_text("utf-8"))
        self.assertEqual(information["CFBundleShortVersionString"], self.version)
        self.assertEqual({path.name for path in self.modules.iterdir()}, _MODULES)
        plugins = self.folder / "lib/qt6/plugins"
        found = {path.relative_to(plugins).as_posix() for path in plugins.rglob("*.so")}
        # Before Qt 6.10 the Wayland plug-in without OpenGL has a name of its own.
        self.assertEqual({name.replace("libqwayland-generic", "libqwayland") for name in found}, _PLUGINS)

    def symbols(self):
        """The program and its modules, each with its debug file."""
        stem = self.archives[0].name.removesuffix("tar.zst")
        return {self.program: self.archives[0].with_name(stem + "debug"),
                **{self.modules / name: self.archives[0].with_name(f"{stem}{name}.debug") for name in _MODULES}}

    def test_symbols_are_beside_it(self):
        for program, debug in self.symbols().items():
            identifiers = {re.search(r"Build ID: ([0-9a-f]+)", output_of("readelf", "--notes", path))[1]
                           for path in (program, debug)}
            self.assertEqual(len(identifiers), 1, program)
            self.assertNotIn(".debug_info", output_of("readelf", "--sections", "--wide", program))
            self.assertIn(".debug_info", output_of("readelf", "--sections", "--wide", debug))

    def test_every_library_is_there(self):
        own = {path.name for path in (*self.folder.glob("lib/*.so*"), *self.folder.glob("lib/fallback/*.so*"))}
        for path in (self.program, *(self.folder / "lib").rglob("*.so*")):
            needed, places = dynamic_section(path)
            missing = [name for name in needed if name not in own and not _SYSTEM.fullmatch(name)]
            self.assertEqual(missing, [], path.name)
            if path != self.program:
                self.assertEqual(places, [], f"{path.name} has its own search path")
        self.assertEqual({name for name in own if _SYSTEM.fullmatch(name)}, set())

    def test_installs_and_starts_with_its_own_toolkit(self):
        with X11Bed() as bed:
            home = bed.environment()["HOME"]
            installing = bed.run([self.folder / "install"], stdout=subprocess.PIPE)
            self.assertIn("est installé", installing.communicate()[0].decode())
            self.assertEqual(installing.returncode, 0)
            root = pathlib.Path(home) / ".local/opt/OrvaneBreak"
            process = bed.run([root / "current/bin/orvanebreak"])
            wait_until(lambda: bed.windows_titled("OrvaneBreak"), "the window", 30)
            maps = pathlib.Path(f"/proc/{process.pid}/maps").read_text("utf-8").splitlines()
            mapped = {line.split(maxsplit=5)[5] for line in maps if len(line.split(maxsplit=5)) == 6}
            toolkit = {path for path in mapped if "libQt" in path or "/plugins/" in path}
            self.assertTrue(any(path.endswith("platforms/libqxcb.so") for path in toolkit), toolkit)
            inside = str(root.resolve() / "versions" / self.version) + "/"
            self.assertEqual([path for path in toolkit if not path.startswith(inside)], [])
            self.assertEqual([path for path in mapped if "/lib/orvanebreak/modules/" in path or "libcurl" in path], [],
                             "loaded unnecessarily")
            bed.stop(process)
            self.assertEqual(process.returncode, 0)


if __name__ == "__main__":
    unittest.main()
