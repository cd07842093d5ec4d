#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The pictures in the documents show the windows as they are today.

usage: test_pictures.py EXECUTABLE"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

from PIL import Image, ImageChops, ImageDraw, ImageStat

from documents import ROOT

EXECUTABLE = None
SHOWN = ROOT / "docs" / "pictures" / "pages.png"

# Letters that are drawn a little differently change no tile by this much, a letter that is missing does.
_TILE = 16
_DIFFERENT = 24
_MOST_TILES = 4


def stale_tiles(shown, today):
    """How many pieces of two pictures differ so much that a reader would notice; all of another size."""
    if shown.size != today.size:
        return shown.width * shown.height
    difference = ImageChops.difference(shown.convert("L"), today.convert("L"))
    tiles = ((left, top, min(left + _TILE, shown.width), min(top + _TILE, shown.height))
             for top in range(0, shown.height, _TILE) for left in range(0, shown.width, _TILE))
    return sum(ImageStat.Stat(difference.crop(tile)).mean[0] > _DIFFERENT for tile in tiles)


class Measure(unittest.TestCase):
    """What counts as stale."""

    def setUp(self):
        self.shown = Image.open(SHOWN).convert("RGB")

    def test_the_same_picture_is_fresh(self):
        self.assertEqual(stale_tiles(self.shown, self.shown.copy()), 0)

    def test_a_trace_is_fresh(self):
        brighter = self.shown.point(lambda value: min(255, value + 3))
        self.assertLessEqual(stale_tiles(self.shown, brighter), _MOST_TILES)

    def test_a_missing_line_is_stale(self):
        erased = self.shown.copy()
        # The second check box of the last card, on the page in light colours.
        place = (560, 335, 880, 355)
        ImageDraw.Draw(erased).rectangle(place, fill=erased.getpixel(place[:2]))
        self.assertGreater(stale_tiles(self.shown, erased), _MOST_TILES)

    def test_another_size_is_stale(self):
        self.assertGreater(stale_tiles(self.shown, self.shown.resize((100, 100))), _MOST_TILES)


class Today(unittest.TestCase):
    def test_pages(self):
        with tempfile.TemporaryDirectory() as folder:
            done = subprocess.run([ROOT / "tools" / "portraits", "--pages-only", EXECUTABLE, folder],
                                  capture_output=True, text=True, timeout=200, check=False)
            self.assertEqual(done.returncode, 0, done.stderr)
            tiles = stale_tiles(Image.open(SHOWN), Image.open(pathlib.Path(folder) / "pages.png"))
        self.assertLessEqual(tiles, _MOST_TILES, "docs/pictures/pages.png is stale: make it anew with tools/portraits")


if __name__ == "__main__":
    EXECUTABLE = sys.argv[1]
    unittest.main(argv=sys.argv[:1])
