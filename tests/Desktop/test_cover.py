#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Tests what the comparison of whole screens accepts and what it finds."""

import unittest

from PIL import Image, ImageDraw

from driver.bed import Output
from scenario import layout
from scenario.cover import Cover, dimmed

_OUTPUTS = (Output("LEFT", 0, 0, 800, 600), Output("RIGHT", 800, 0, 640, 480))
_COLOUR = (200, 120, 40)


def _desktop():
    picture = Image.new("RGB", (1440, 600))
    for output in _OUTPUTS:
        picture.paste(_COLOUR, output.box)
    return picture


def _in_break(desktop):
    """A break with a ring on each screen."""
    picture = dimmed(desktop)
    for output in _OUTPUTS:
        left, top, right, bottom = _ring_box(output)
        ImageDraw.Draw(picture).ellipse((left + 5, top + 5, right - 5, bottom - 5), outline=(45, 212, 191), width=10)
    return picture


def _ring_box(output):
    return layout.content_boxes(output)[layout.PARTS.index("ring")]


class TestCover(unittest.TestCase):
    def setUp(self):
        self.desktop = _desktop()
        self.cover = Cover(self.desktop, outputs=_OUTPUTS)
        self.picture = _in_break(self.desktop)

    def boxes(self):
        return [(part.screen, part.box) for part in self.cover.bare_parts(self.picture)]

    def test_break_covers(self):
        self.assertEqual(self.boxes(), [])

    def test_one_bare_pixel_is_found(self):
        self.picture.putpixel((1439, 479), _COLOUR)
        self.assertEqual(self.boxes(), [("RIGHT", (1439, 479, 1440, 480))])

    def test_darker_pixel_is_found(self):
        self.picture.putpixel((0, 0), (0, 0, 0))
        self.assertEqual(self.boxes(), [("LEFT", (0, 0, 1, 1))])

    def test_bare_desktop_is_found_on_each_screen(self):
        self.picture = self.desktop
        self.assertEqual(self.boxes(), [(output.name, output.box) for output in _OUTPUTS])

    def test_bare_row_and_bare_column_through_the_ring_are_found(self):
        box = _ring_box(_OUTPUTS[0])
        for bare in ((box[0], box[1] + 40, box[2], box[1] + 41), (box[0] + 40, box[1], box[0] + 41, box[3])):
            with self.subTest(bare):
                self.picture = _in_break(self.desktop)
                self.picture.paste(_COLOUR, bare)
                self.assertEqual(self.boxes(), [("LEFT", box)])

    def test_alternative_picture_is_accepted(self):
        active, inactive = (10, 10, 200, 30), (90, 90, 90)
        self.picture.paste(tuple(round(part * 0.25) for part in inactive), active)
        other = self.desktop.copy()
        other.paste(inactive, active)
        self.assertEqual(len(self.boxes()), 1)
        self.cover = Cover(self.desktop, other, outputs=_OUTPUTS)
        self.assertEqual(self.boxes(), [])

    def test_restless_box_must_be_dark_too(self):
        panel = (0, 570, 800, 600)
        self.cover = Cover(self.desktop, outputs=_OUTPUTS, restless=[panel])
        self.picture.paste((64, 60, 64), panel)
        self.assertEqual(self.boxes(), [])
        self.picture.putpixel((5, 580), (80, 60, 64))
        self.assertEqual(self.boxes(), [("LEFT", (5, 580, 6, 581))])


if __name__ == "__main__":
    unittest.main()
