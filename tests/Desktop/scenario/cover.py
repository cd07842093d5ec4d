# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks that a break darkens every pixel of every screen for its whole length."""

import dataclasses
import time

from PIL import Image, ImageChops

from . import layout

#: The overlay lets a quarter of the brightness through.
LIGHT = 0.25
_TOLERANCE = 2
_REPAINT_SECONDS = 0.1
#: At least this fraction of every row and column through a text or the ring is background.
_BACKGROUND_IN_LINE = 0.15


def dimmed(picture):
    """The picture as it looks under a break."""
    return picture.point(lambda value: round(value * LIGHT))


@dataclasses.dataclass(frozen=True)
class BarePart:
    """The bounding rectangle of the pixels on one screen that are not properly darkened, in pixels of the whole picture.
    `deviation` is the largest difference in a channel."""
    screen: str
    box: tuple
    deviation: int

    def __str__(self):
        left, top, right, bottom = self.box
        return f"screen {self.screen}: {right - left}x{bottom - top}+{left}+{top} (off by up to {self.deviation})"


class Cover:
    """The expected picture during a break: each pixel is a quarter of the pixel in one of the settled pictures. Every pixel is
    checked, also between the texts; in the boxes of the texts and the ring most of them are. In the `restless` boxes, where
    other programs may draw during a break, no pixel may be brighter than darkened white. `scale` is Qt's, in addition to the
    monitors'. `contents` are the boxes of each output's texts and ring if they are not where they usually are."""

    def __init__(self, *pictures, outputs, restless=(), scale=1.0, contents=None):
        self._expected = [dimmed(picture) for picture in pictures]
        self._outputs = list(outputs)
        self._contents = contents or {output: layout.content_boxes(output, output.scale * scale) for output in self._outputs}
        self._restless = list(restless)

    def bare_parts(self, picture):
        """The parts of the picture that are not covered; empty if all is covered."""
        difference, found = None, []
        for expected in self._expected:
            another = ImageChops.difference(picture, expected)
            difference = ImageChops.darker(difference, another) if difference else another
            for box in self._restless:
                difference.paste(_excess(picture.crop(box)), box[:2])
            found = [part for output in self._outputs if (part := self._bare_part(difference, output))]
            if not found:
                break
        return found

    def _bare_part(self, difference, output):
        screen = difference.crop(output.box)
        boxes = [tuple(side - start for side, start in zip(box, (output.x, output.y) * 2))
                 for box in self._contents[output]]
        contents = [(box, _strange(screen.crop(box))) for box in boxes]
        for box in boxes:
            screen.paste((0, 0, 0), box)
        for box, strange in contents:
            if _has_full_line(strange):
                screen.paste((255, 255, 255), box)
        deviation = max(high for _, high in screen.getextrema())
        if deviation <= _TOLERANCE:
            return None
        left, top, right, bottom = _strange(screen).getbbox()
        return BarePart(output.name, (left + output.x, top + output.y, right + output.x, bottom + output.y), deviation)


def _excess(picture):
    """How much each pixel is brighter than darkened white."""
    return picture.point(lambda value: max(0, value - round(255 * LIGHT)))


def _strange(difference):
    """A mask: white where a channel differs by more than the tolerance, else black."""
    channels = difference.split()
    largest = ImageChops.lighter(ImageChops.lighter(channels[0], channels[1]), channels[2])
    return largest.point(lambda value: 255 if value > _TOLERANCE else 0)


def _has_full_line(strange):
    """Whether a row or a column has less background than letters and the ring leave."""
    limit = 255 * (1 - _BACKGROUND_IN_LINE)
    width, height = strange.size
    return any(strange.resize(size, Image.Resampling.BOX).getextrema()[1] > limit for size in ((1, height), (width, 1)))


@dataclasses.dataclass(frozen=True)
class Watched:
    """How long the screens stayed covered, and the bare parts at the last check."""
    seconds: float
    looks: int
    bare_parts: list
    first: Image.Image
    last: Image.Image

    def __str__(self):
        bare = f"; bare: {'; '.join(map(str, self.bare_parts))}" if self.bare_parts else ""
        return f"{self.looks} looks in {self.seconds:.1f} s{bare}"


def watch(bed, cover, seconds):
    """Checks all screens of a bed as often as the ring is repainted, for these seconds or until one of them is not covered."""
    began, looks, first = time.monotonic(), 0, None
    while True:
        time.sleep(max(0, began + looks * _REPAINT_SECONDS - time.monotonic()))
        picture = bed.picture()
        passed = time.monotonic() - began
        first = first or picture
        looks += 1
        bare_parts = cover.bare_parts(picture)
        if bare_parts or passed >= seconds:
            return Watched(passed, looks, bare_parts, first, picture)
