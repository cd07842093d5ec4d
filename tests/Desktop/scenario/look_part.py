# SPDX-License-Identifier: GPL-3.0-or-later
import time

from driver.waiting import comes_true, wait_until

from . import layout
from .cover import Cover, watch

_FULL_SCREEN_COLOUR = (150, 0, 150)
_LENGTH = 20
#: The ring is repainted ten times a second.
_WATCHED_SECONDS = 3
#: Where rounding to the toolkit's pixels leaves a column free, reaches into the next screen, or needs nothing.
_FACTORS = ("1.3", "1.5", "1.75", "2")
#: What is drawn of a letter may exceed the box of its clearly visible pixels.
_INK_MARGIN = 3


def cover(desk, report):
    """The coverage of a whole break, and its look."""
    desk.rest_pointer()
    before = desk.settled_picture()
    began = time.monotonic()
    desk.begin_break()
    check_layout(desk, report, desk.parts())
    desk.keep_picture("break")
    watched = watch(desk.bed, Cover(before, outputs=desk.bed.outputs()), _LENGTH + 5)
    lasted = time.monotonic() - began
    has_ended = comes_true(lambda: not desk.overlays(), 1)
    report.promise("covers every pixel of every screen until it ends by itself after 20 s",
                   abs(lasted - _LENGTH) < 2 and has_ended, f"{lasted:.1f} s, {watched}")
    if not has_ended:
        desk.end_break()
    _check_nothing_left(desk, report, before)
    _cover_full_screen(desk, report)


def _cover_full_screen(desk, report):
    covered = desk.bed.outputs()[-1]
    desk.other_window("Full", _FULL_SCREEN_COLOUR, (covered.x, covered.y, covered.width, covered.height), "full-screen")
    # The window manager chooses the monitor.
    wait_until(lambda: _is_any_filled(desk), "another program's full-screen window")
    before = desk.settled_picture()
    desk.begin_break()
    # The task list changes, because the other program is no longer active.
    watched = watch(desk.bed, Cover(before, outputs=desk.bed.outputs(), restless=desk.panel_boxes()), _WATCHED_SECONDS)
    report.promise("covers another program's full-screen window", not watched.bare_parts, watched)
    desk.keep_picture("break-full-screen")
    desk.end_break()
    _check_nothing_left(desk, report, before)


def _check_nothing_left(desk, report, before):
    report.promise("nothing is left on the screen after the break",
                   comes_true(lambda: desk.bed.picture().tobytes() == before.tobytes(), 2))


def _is_any_filled(desk):
    """Whether the other program's colour fills a monitor except for its text field."""
    picture = desk.bed.picture()
    return any(max(picture.crop(output.box).getcolors(output.width * output.height))[1] == _FULL_SCREEN_COLOUR
               for output in desk.bed.outputs())


def check_layout(desk, report, parts, scale=1.0):
    """Checks the positions of ring and texts. `scale` is Qt's, in addition to the monitor's."""
    for output, boxes in zip(desk.bed.outputs(), parts):
        _check_screen(report, output, boxes, scale * output.scale)


def _check_screen(report, output, boxes, scale):
    offset = layout.expected_ring_offset() * scale
    across = {name: round(box.centre[0] - output.centre[0] - layout.expected_ink_offset(name, scale), 1)
              for name, box in boxes.items()}
    report.promise("the ring is centred across each screen (±1 pixel)", abs(across.pop("ring")) <= 1, across)
    # With a fractional scale Qt rounds positions before scaling, and letters to half a pixel after it.
    limit = 1 if scale == int(scale) else scale + 0.5
    report.promise("the texts are centred across each screen (±1 pixel)",
                   all(abs(distance) <= limit for distance in across.values()), across)
    down = boxes["ring"].centre[1] - output.centre[1] - offset
    report.promise("the column is centred down each screen (±1 pixel)", abs(down) <= 1, f"{down:+.1f}")
    # The outermost pixels of the ring's square stay empty.
    width, height = boxes["ring"].size
    wanted = (layout.RING_SIZE - 10) * scale
    report.promise("the ring has its size", abs(width - wanted) <= 2 and abs(height - wanted) <= 2, (width, height))


def scales(desk, report):
    """Scaled screens."""
    for factor in _FACTORS:
        before = desk.settled_picture()
        desk.start_in_break({"QT_SCALE_FACTOR": factor}, float(factor))
        desk.keep_picture(f"scale-{factor}")
        _check_scaled(desk, report, before, float(factor))
        desk.end_break()
        desk.stop_program()
    _check_desktop_scale(desk, report)


def _check_scaled(desk, report, before, scale):
    check_layout(desk, report, desk.parts(scale), scale)
    report.promise(f"scale {scale:g}: ring and texts are there on each screen", True)
    _check_frames(desk, report)
    bare = Cover(before, outputs=desk.bed.outputs(), scale=scale).bare_parts(desk.bed.picture())
    report.promise("every pixel of every screen is covered once at every scale", not bare, (scale, *map(str, bare)))


def _check_frames(desk, report):
    """Checks that every break window is exactly as large as its monitor."""
    frames = {(window["x"], window["y"], window["width"], window["height"]) for window in desk.overlays()}
    wanted = {(output.x, output.y, output.width, output.height) for output in desk.bed.outputs()}
    report.promise("the break windows have exactly the frames of the screens", frames == wanted, frames)


def _check_desktop_scale(desk, report):
    """The same scale from the desktop's settings instead of the environment."""
    desk.bed.set_text_resolution(168)
    before = desk.settled_picture()
    desk.start_in_break(scale=1.75)
    _check_scaled(desk, report, before, 1.75)
    desk.end_break()
    desk.stop_program()
    desk.bed.set_text_resolution(96)


def small(desk, report):
    """Screens too small for the texts."""
    scale = 3.0
    before = desk.settled_picture()
    desk.start_program({"ORVANE_DEBUG_BREAK": "1", "QT_SCALE_FACTOR": str(scale)})
    desk.wait_for_overlays()
    # The last screen has no panel, and room above and below the column.
    output = desk.bed.outputs()[-1]
    parts = wait_until(lambda: layout.find_parts(desk.bed.picture(), output, scale), "title, ring and texts on the last screen")
    desk.keep_picture("small")
    _check_frames(desk, report)
    boxes = [part.grown(_INK_MARGIN) for part in parts.values()]
    bare = Cover(before, outputs=[output], contents={output: boxes}).bare_parts(desk.bed.picture())
    report.promise("every pixel of a small screen is covered once", not bare, list(map(str, bare)))
    _check_shrunk(report, output, parts, scale)
    desk.end_break()
    desk.stop_program()


def _check_shrunk(report, output, parts, scale):
    """Checks that the whole column is on the screen, as large as possible, centred, and has its proportions."""
    left, top, right, bottom = output.box
    inside = all(left < part.left and part.right < right and top < part.top and part.bottom < bottom
                 for part in parts.values())
    report.promise("the whole column is on a small screen", inside, (output, parts))
    centres = [round(part.centre[0] - output.centre[0], 1) for part in parts.values()]
    report.promise("the column is centred across a small screen", all(abs(centre) <= scale + 1 for centre in centres), centres)
    factor = parts["ring"].size[0] / (scale * (layout.RING_SIZE - 10))
    widths = {part: round(parts[part].size[0] / layout.text_width(part, scale) / factor, 2) for part in layout.TEXT_PARTS}
    report.promise("texts and ring of a small screen shrink by one factor",
                   factor < 1 and all(0.85 <= ratio <= 1.1 for ratio in widths.values()), (round(factor, 2), widths))
