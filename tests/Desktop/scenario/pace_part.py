# SPDX-License-Identifier: GPL-3.0-or-later
import time

from driver.waiting import comes_true, wait_until

from . import layout
from .desk import BREAK_NOW

_MEASURED_SECONDS = 2
_WATCHED_MILLISECONDS = 2000


def repaints(desk, report):
    """The repaints during a break."""
    desk.begin_break()
    rings = {window["id"]: window for window in desk.overlays()}
    # The first second includes late repaints from the opening.
    damages = desk.probe.damage(list(rings), 1000 * (_MEASURED_SECONDS + 1)).results()
    desk.end_break()
    start = damages[0].time + 10**9 if damages else 0
    damages = [damage for damage in damages if start <= damage.time < start + _MEASURED_SECONDS * 10**9]
    rates = [len({damage.time // 20_000_000 for damage in damages if damage.window == window}) / _MEASURED_SECONDS
             for window in rings]
    report.promise("the ring is repainted ten times a second", all(9 <= rate <= 11 for rate in rates), rates)
    sizes = sorted({(damage.width, damage.height) for damage in damages})
    report.promise("nothing but the ring is repainted", bool(sizes) and
                   all(width <= layout.RING_SIZE and height <= layout.RING_SIZE for width, height in sizes), sizes)


def opening(desk, report):
    """Opening and closing a break."""
    areas = _areas_beside_column(desk)
    before = desk.settled_picture()
    _, changes = open_and_close(desk, areas)
    states = [[change.value for change in changes if change.area == index] for index in range(len(areas))]
    wrong = [(area, seen) for area, seen in zip(areas, states) if len(seen) != 3 or seen[0] != seen[2]]
    report.promise("opens and closes in one step, without a flash", not wrong, wrong[:3])
    report.promise("the screens look as before after a break", desk.settled_picture().tobytes() == before.tobytes())


def _areas_beside_column(desk):
    """Everything on each screen that is above, below and beside the column, as x, y, width, height."""
    areas = []
    for output in desk.bed.outputs():
        boxes = layout.content_boxes(output, output.scale)
        left, top, right, bottom = (choose(box[side] for box in boxes) for side, choose in enumerate((min, min, max, max)))
        areas += [(output.x, output.y, output.width, top - output.y),
                  (output.x, bottom, output.width, output.box[3] - bottom),
                  (output.x, top, left - output.x, bottom - top), (right, top, output.box[2] - right, bottom - top)]
    return areas


def open_and_close(desk, areas, milliseconds=_WATCHED_MILLISECONDS):
    """Watches the areas while a break opens and closes; returns the time of the click and the changes."""
    desk.rest_pointer()
    watch = desk.probe.sample(areas, milliseconds, 2)
    moment = desk.tray.click(BREAK_NOW)
    wait_until(desk.overlays, "the break windows")
    comes_true(lambda: time.monotonic_ns() - moment > milliseconds * 1e6 / 4, 2)
    desk.bed.press("Escape")
    changes = watch.results()
    desk.wait_for_end()
    return moment, changes
