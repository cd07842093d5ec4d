# SPDX-License-Identifier: GPL-3.0-or-later
"""Finds the parts of a break screen in a picture."""

import dataclasses
import math
import subprocess

from PIL import Image, ImageChops, ImageDraw, ImageFont

#: From top to bottom.
PARTS = ("title", "subtitle", "ring", "button", "hint")
RING_SIZE = 150
_STRIP_WIDTH = 600
_FONT_SIZES = {"title": 30, "subtitle": 16, "button": 13, "hint": 11}
_TEXTS = {"title": "Regarde au loin, à 6 mètres", "subtitle": "Laisse tes yeux se reposer un instant.",
          "button": "Passer", "hint": "ou appuie sur Échap"}
#: Ink may exceed the font's metrics and is rounded to whole pixels.
_BOX_MARGIN = 2
TEXT_PARTS = tuple(_TEXTS)
_GAPS = {"title": 10, "subtitle": 28, "ring": 30, "button": 4}


@dataclasses.dataclass(frozen=True)
class Box:
    """The ink box of one part, in pixels of the whole picture; right and bottom are exclusive."""
    left: int
    top: int
    right: int
    bottom: int

    @property
    def centre(self):
        return ((self.left + self.right) / 2, (self.top + self.bottom) / 2)

    @property
    def size(self):
        return (self.right - self.left, self.bottom - self.top)

    def grown(self, margin):
        """The box with a margin, as for PIL's crop()."""
        return (self.left - margin, self.top - margin, self.right + margin, self.bottom + margin)


def find_parts(picture, output, scale=1.0):
    """The parts on one monitor by name, or None if there are not exactly five. The background of the monitor's vertical centre
    strip must have one colour; panels along the upper and lower edges are excluded."""
    half = round(_STRIP_WIDTH * scale / 2)
    centre_x = output.x + output.width // 2
    box = (max(output.x, centre_x - half), output.y + round(output.height * 0.05),
           min(output.x + output.width, centre_x + half), output.y + round(output.height * 0.93))
    strip = picture.crop(box)
    background = Image.new("RGB", strip.size, strip.getpixel((2, strip.size[1] // 2)))
    channels = ImageChops.difference(strip, background).split()
    ink = ImageChops.lighter(ImageChops.lighter(channels[0], channels[1]), channels[2])
    ink = ink.point(lambda value: 255 if value > 8 else 0)
    rows = [ink.crop((0, row, ink.size[0], row + 1)).getbbox() is not None for row in range(ink.size[1])]
    bands = _bands(rows, gap=max(2, round(2 * scale)))
    if len(bands) != len(PARTS):
        return None
    parts = {}
    for name, (top, bottom) in zip(PARTS, bands):
        left, _, right, _ = ink.crop((0, top, ink.size[0], bottom)).getbbox()
        parts[name] = Box(box[0] + left, box[1] + top, box[0] + right, box[1] + bottom)
    return parts


def _bands(rows, gap):
    """Runs of true values; runs closer than `gap` are merged."""
    bands = []
    for row, has_ink in enumerate(rows):
        if not has_ink:
            continue
        if bands and row - bands[-1][1] <= gap:
            bands[-1][1] = row + 1
        else:
            bands.append([row, row + 1])
    return bands


def _heights():
    """The line height of each text and the height of the ring, in unscaled pixels."""
    design = _font("title", 1000).getmetrics()
    lines = {part: sum(round(size * height / 1000) for height in design) for part, size in _FONT_SIZES.items()}
    return {**lines, "ring": RING_SIZE}


def expected_ring_offset():
    """How far the ring's centre is below the monitor's centre, in unscaled pixels: the column is centred as a whole, and there
    is more text above the ring than below it."""
    heights = _heights()
    above = heights["title"] + _GAPS["title"] + heights["subtitle"] + _GAPS["subtitle"]
    below = _GAPS["ring"] + heights["button"] + _GAPS["button"] + heights["hint"]
    return (above - below) / 2


def content_boxes(output, scale=1.0):
    """The boxes of a break's texts and ring on one monitor, as for PIL's crop()."""
    heights = _heights()
    column = sum(heights.values()) + sum(_GAPS.values())
    top, boxes = output.centre[1] - column * scale / 2, []
    for part in PARTS:
        width = RING_SIZE * scale if part == "ring" else text_width(part, scale)
        half = math.ceil(width / 2 + _BOX_MARGIN * scale)
        bottom = top + heights[part] * scale
        boxes.append((math.floor(output.centre[0]) - half, math.floor(top - scale), math.ceil(output.centre[0]) + half,
                      math.ceil(bottom + scale)))
        top = bottom + _GAPS.get(part, 0) * scale
    return boxes


def text_width(part, scale):
    """The width of a text in pixels."""
    return _font(part, round(_FONT_SIZES[part] * scale)).getlength(_TEXTS[part])


def expected_ink_offset(part, scale):
    """How far a text's ink is right of its centre, because of the side bearings of its letters."""
    if part not in _TEXTS:
        return 0
    font = _font(part, round(_FONT_SIZES[part] * scale))
    advance = font.getlength(_TEXTS[part])
    margin = 20
    drawing = Image.new("L", (round(advance) + 2 * margin, round(3 * _FONT_SIZES[part] * scale)))
    ImageDraw.Draw(drawing).text((margin, 0), _TEXTS[part], fill=255, font=font)
    left, _, right, _ = drawing.point(lambda value: 255 if value > 8 else 0).getbbox()
    return (left + right) / 2 - margin - advance / 2


def _font(part, size):
    """The font of a part: the desktop's default sans-serif font."""
    pattern = "sans-serif:bold" if part == "title" else "sans-serif"
    name = subprocess.run(["fc-match", "--format=%{file}", pattern], stdout=subprocess.PIPE, text=True,
                          check=True).stdout
    return ImageFont.truetype(name, size)
