# SPDX-License-Identifier: GPL-3.0-or-later
from PIL import ImageChops, ImageDraw

from driver.waiting import comes_true, wait_until

from . import layout
from .desk import near

_FULL_SCREEN_COLOUR = (150, 0, 150)


def cover(desk, report):
    """What the break covers, and how it looks."""
    bed = desk.bed
    desk.rest_pointer()
    before, during, parts = _pictures(desk, report, "break")
    deviations = _deviations(desk, before, during, parts)
    report.promise("covers every screen", max(deviations) <= 2, deviations)
    report.promise("a quarter of what lies below shines through (±2)", max(deviations) <= 2, deviations)
    _compare_panel(desk, report, before, during)
    check_layout(desk, report, parts)

    covered = bed.outputs()[-1]
    desk.other_window("Full", _FULL_SCREEN_COLOUR, (covered.x, covered.y, covered.width, covered.height), "full-screen")
    # The window manager chooses the monitor.
    wait_until(lambda: _covered_output(desk, bed.picture()), "another program's full-screen window")
    before, during, parts = _pictures(desk, report, "break-full-screen")
    index = bed.outputs().index(_covered_output(desk, before))
    deviation = _deviations(desk, before, during, parts)[index]
    report.promise("covers another program's full-screen window", deviation <= 2, deviation)


def _pictures(desk, report, name):
    """Pictures before and during a break, and where the parts are."""
    before = desk.settled_picture()
    desk.begin_break()
    during, parts = desk.bed.picture(), desk.parts()
    desk.keep_picture(name)
    desk.end_break()
    report.promise("nothing is left on the screen after the break",
                   comes_true(lambda: desk.bed.picture().tobytes() == before.tobytes(), 2))
    return before, during, parts


def _covered_output(desk, picture):
    for output in desk.bed.outputs():
        corners = ((output.x + 3, output.y + 3), (output.box[2] - 4, output.box[3] - 4))
        if all(picture.getpixel(corner) == _FULL_SCREEN_COLOUR for corner in corners):
            return output
    return None


def _deviations(desk, before, during, parts):
    """For each output by how much the worst pixel is not what it should be, outside of the texts, the ring and the
    panel."""
    expected = before.point(lambda value: round(value * 0.25))
    difference = ImageChops.difference(during, expected)
    painter = ImageDraw.Draw(difference)
    for boxes in parts:
        for box in boxes.values():
            painter.rectangle((box.left - 1, box.top - 1, box.right, box.bottom), fill=(0, 0, 0))
    if desk.bed.panel:
        painter.rectangle(_panel_box(desk), fill=(0, 0, 0))
    return [max(high for _, high in difference.crop(output.box).getextrema()) for output in desk.bed.outputs()]


def _panel_box(desk):
    first, (top, bottom) = desk.bed.outputs()[0], desk.bed.panel_rows
    top = top if top >= 0 else first.height + top
    return (first.x, first.y + top, first.box[2], first.y + (first.height if bottom is None else bottom))


def _compare_panel(desk, report, before, during):
    """Its task list shows another active window during the break, so it is no darkened copy of itself; but nothing of
    it is brighter than darkened white."""
    if not desk.bed.panel:
        report.not_possible("covers the panel", "there is no panel")
        return
    box = _panel_box(desk)
    free_place = (box[0] + (box[2] - box[0]) * 2 // 5, box[3] - 5)
    colour = before.getpixel(free_place)
    brightest = max(high for _, high in during.crop(box).getextrema())
    report.promise("covers the panel", near(colour, desk.bed.panel_colour, 3)
                   and near(during.getpixel(free_place), desk.dimmed(colour))
                   and brightest <= max(desk.dimmed((255, 255, 255))) + 2, brightest)


def check_layout(desk, report, parts, scale=1.0):
    """Where ring and texts are. `scale` is the toolkit's, in addition to the one that a monitor has."""
    for output, boxes in zip(desk.bed.outputs(), parts):
        _check_screen(report, output, boxes, scale * output.scale)


def _check_screen(report, output, boxes, scale):
    offset = layout.expected_ring_offset() * scale
    across = {name: round(box.centre[0] - output.centre[0] - layout.expected_ink_offset(name, scale), 1)
              for name, box in boxes.items()}
    report.promise("the ring is centred across each screen (±1 pixel)", abs(across.pop("ring")) <= 1, across)
    # With a broken scale the toolkit rounds to a pixel before scaling, and letters to half a pixel after it.
    limit = 1 if scale == int(scale) else scale + 0.5
    report.promise("the texts are centred across each screen (±1 pixel)",
                   all(abs(distance) <= limit for distance in across.values()), across)
    down = boxes["ring"].centre[1] - output.centre[1] - offset
    report.promise("the column is centred down each screen (±1 pixel)", abs(down) <= 1, f"{down:+.1f}")
    # The outermost pixels of the square that the ring is painted in stay free.
    width, height = boxes["ring"].size
    wanted = (layout.RING_SIZE - 10) * scale
    report.promise("the ring has its size", abs(width - wanted) <= 2 and abs(height - wanted) <= 2, (width, height))


def scales(desk, report):
    """Scaled screens."""
    for factor in ("1.5", "2"):
        desk.start_in_break({"QT_SCALE_FACTOR": factor}, float(factor))
        desk.keep_picture(f"scale-{factor}")
        check_layout(desk, report, desk.parts(float(factor)), float(factor))
        report.promise(f"scale {factor}: ring and texts are there on each screen", True)
        desk.end_break()
        desk.stop_program()
