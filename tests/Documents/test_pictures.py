#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The pictures in the documents match the current windows.

usage: test_pictures.py EXECUTABLE           the windows and the break
       test_pictures.py --desktops FOLDER    the Wayland desktops, from the pictures of their tests in FOLDER"""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

from PIL import Image, ImageChops, ImageDraw, ImageStat

from documents import ROOT

EXECUTABLE = None
DESKTOPS = None
_DISPLAYS = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}
PICTURES = ROOT / "docs" / "pictures"
SHOWN = PICTURES / "pages.png"

# Slightly different rendering of letters stays below this difference per tile; a missing letter exceeds it.
_TILE = 16
_DIFFERENT = 24
_MAX_TILES = 4

# Seconds and clocks change with every run, and desktops draw their panels differently.
_MAX_BREAK_TILES = 60


def stale_tiles(shown, today):
    """The number of tiles that differ noticeably between two pictures; pictures of different sizes differ in all."""
    if shown.size != today.size:
        return shown.width * shown.height
    difference = ImageChops.difference(shown.convert("L"), today.convert("L"))
    tiles = ((left, top, min(left + _TILE, shown.width), min(top + _TILE, shown.height))
             for top in range(0, shown.height, _TILE) for left in range(0, shown.width, _TILE))
    return sum(ImageStat.Stat(difference.crop(tile)).mean[0] > _DIFFERENT for tile in tiles)


class Measure(unittest.TestCase):
    """Checks what counts as stale."""

    def setUp(self):
        self.shown = Image.open(SHOWN).convert("RGB")

    def test_the_same_picture_is_fresh(self):
        self.assertEqual(stale_tiles(self.shown, self.shown.copy()), 0)

    def test_a_trace_is_fresh(self):
        brighter = self.shown.point(lambda value: min(255, value + 3))
        self.assertLessEqual(stale_tiles(self.shown, brighter), _MAX_TILES)

    def test_a_missing_line_is_stale(self):
        erased = self.shown.copy()
        # The third check box of the last card, on the page in light colours.
        place = (560, 366, 880, 386)
        ImageDraw.Draw(erased).rectangle(place, fill=erased.getpixel(place[:2]))
        self.assertGreater(stale_tiles(self.shown, erased), _MAX_TILES)

    def test_another_size_is_stale(self):
        self.assertGreater(stale_tiles(self.shown, self.shown.resize((100, 100))), _MAX_TILES)


class Today(unittest.TestCase):
    """Base class: takes new pictures."""

    def assert_fresh(self, name, today, how, limit=_MAX_TILES):
        shown = Image.open(PICTURES / name)
        tiles = stale_tiles(shown, Image.open(today))
        self.assertLessEqual(tiles, limit, f"docs/pictures/{name} is stale: update it with {how}")

    def make(self, *arguments):
        # As on a machine without a display.
        environment = {name: value for name, value in os.environ.items() if name not in _DISPLAYS}
        done = subprocess.run(arguments, cwd=ROOT, env=environment, capture_output=True, text=True, timeout=200, check=False)
        self.assertEqual(done.returncode, 0, done.stderr)


class Windows(Today):
    def test_windows(self):
        with tempfile.TemporaryDirectory() as folder:
            self.make(ROOT / "tools" / "portraits", "--documents", EXECUTABLE, folder)
            for name in ("first-launch.png", "pages.png", "messages.png"):
                with self.subTest(name):
                    self.assert_fresh(name, pathlib.Path(folder) / name, "tools/portraits")

    def test_break(self):
        self.make("./run")
        self.assert_fresh("break.png", ROOT / "build" / "tour" / "3-break-middle.png", "./run", _MAX_BREAK_TILES)


class Desktops(Today):
    def test_desktops(self):
        breaks = [pathlib.Path(DESKTOPS) / f"wayland-{name}-break.png" for name in ("sway", "kwin", "gnome")]
        if not all(path.exists() for path in breaks):
            self.skipTest("a desktop was not tried")
        with tempfile.TemporaryDirectory() as folder:
            today = pathlib.Path(folder) / "desktops.png"
            self.make(ROOT / "tools" / "side-by-side", today, *breaks)
            self.assert_fresh("desktops.png", today, "tools/side-by-side", _MAX_BREAK_TILES)


if __name__ == "__main__":
    if sys.argv[1] == "--desktops":
        DESKTOPS = sys.argv[2]
        unittest.main(argv=[sys.argv[0], "Desktops"])
    EXECUTABLE = sys.argv[1]
    unittest.main(argv=[sys.argv[0], "Measure", "Windows"])
