# SPDX-License-Identifier: GPL-3.0-or-later
"""The scenery of the tour's desktop: a wallpaper and a document."""

import math

from PIL import Image, ImageChops, ImageDraw, ImageFilter

_SKY = ((0.0, (24, 52, 92)), (0.35, (74, 112, 150)), (0.6, (226, 168, 140)), (0.72, (252, 214, 166)),
        (1.0, (255, 232, 196)))
# From the farthest ridge to the nearest: mean height, amplitude, colours at the top and at the bottom.
_RIDGES = ((0.60, 0.060, (168, 150, 168), (222, 188, 172)), (0.68, 0.075, (112, 118, 146), (168, 158, 170)),
           (0.77, 0.070, (66, 88, 118), (104, 122, 144)), (0.86, 0.065, (34, 60, 84), (58, 86, 106)),
           (0.95, 0.055, (14, 34, 50), (24, 50, 66)))

NOTES = """\x1b[1;36m# Compte rendu du comité de rédaction\x1b[0m

\x1b[1mPrésents :\x1b[0m Aline, Bastien, Chloé, Driss

\x1b[1;33m## Numéro de printemps\x1b[0m

  - Le dossier « Lumière et travail » compte douze pages.
  - Bastien relit l'entretien \x1b[32m(reçu mardi)\x1b[0m.
  - Les photographies arrivent vendredi au plus tard.

\x1b[1;33m## À faire\x1b[0m

  [\x1b[32mx\x1b[0m] sommaire provisoire
  [\x1b[32mx\x1b[0m] devis de l'imprimeur
  [ ] couverture : trois propositions
  [ ] corrections d'auteur

\x1b[1;33m## Prochaine réunion\x1b[0m

  Jeudi à 14 h, salle des cartes.
\x1b[?25l"""


def landscape(size):
    """A picture of hills in the evening."""
    width, height = size
    picture = _gradient(size, _SKY)
    _add_light(picture, (0.66 * width, 0.60 * height), 1.0 * height, (255, 214, 160), 0.7)
    _add_light(picture, (0.66 * width, 0.57 * height), 0.16 * height, (255, 246, 220), 1.0)
    for number, (middle, waves, top, bottom) in enumerate(_RIDGES):
        mask = Image.new("L", (width, height))
        line = [(x, height * (middle - waves * _wave(x / height, number))) for x in range(0, width + 8, 8)]
        ImageDraw.Draw(mask).polygon([*line, (width + 8, height), (0, height)], fill=255)
        mask = mask.filter(ImageFilter.GaussianBlur(0.8))
        start = max(0.0, middle - waves)
        picture.paste(_gradient(size, ((0.0, top), (start, top), (min(1.0, start + 0.22), bottom), (1.0, bottom))),
                      mask=mask)
    return picture


def framed(picture, outputs):
    """The monitors side by side, each with a frame, on a transparent background."""
    frame, gap = 14, 36
    height = max(output.height for output in outputs) + 2 * frame
    width = sum(output.width + 2 * frame for output in outputs) + gap * (len(outputs) - 1)
    result = Image.new("RGBA", (width, height))
    painter = ImageDraw.Draw(result)
    left = 0
    for output in outputs:
        top = height - output.height - 2 * frame
        painter.rounded_rectangle((left, top, left + output.width + 2 * frame - 1, height - 1), 14,
                                  fill=(22, 24, 28, 255))
        result.paste(picture.crop(output.box), (left + frame, top + frame))
        left += output.width + 2 * frame + gap
    return result


def _gradient(size, stops):
    column = Image.new("RGB", (1, size[1]))
    for row in range(size[1]):
        place = row / max(1, size[1] - 1)
        for (start, first), (end, second) in zip(stops, stops[1:]):
            if start <= place <= end:
                part = (place - start) / (end - start) if end > start else 0
                column.putpixel((0, row), tuple(round(a + (b - a) * part) for a, b in zip(first, second)))
                break
    return column.resize(size)


def _add_light(picture, centre, radius, colour, strength):
    """Adds a glow that fades out at `radius`."""
    side = round(2 * radius)
    glow = ImageChops.invert(Image.radial_gradient("L")).resize((side, side), Image.BICUBIC)
    # The gradient ends at the middle of each side; the corners beyond get no light.
    glow = glow.point(lambda value: round(255 * strength * (max(0.0, value - 75) / 180) ** 2))
    mask = Image.new("L", picture.size)
    mask.paste(glow, (round(centre[0] - radius), round(centre[1] - radius)))
    picture.paste(Image.new("RGB", picture.size, colour), mask=mask)


def _wave(x, number):
    """The outline of a ridge, between about -1 and 1."""
    shift = 1.7 * number
    return (0.55 * math.sin(2.1 * x + shift) + 0.3 * math.sin(4.7 * x + 2.3 * shift)
            + 0.12 * math.sin(11.0 * x + 0.7 * shift) + 0.05 * math.sin(23.0 * x + 3.1 * shift))
