# SPDX-License-Identifier: GPL-3.0-or-later
"""The cost of breaks."""

import math
import time

from driver.bed import Output
from driver.waiting import wait_until
from scenario.desk import BREAK_NOW
from scenario.pace_part import open_and_close

from . import counters, subjects
from .table import Row, median

_RING_GOAL = 1.2
_GROWTH_GOAL = 1.0
_THREADS_LIVE_SECONDS = 32
_WATCHED_MILLISECONDS = 2000


def _screens(count):
    """Screens of the default size, two per row."""
    return [Output(f"SCREEN{index}", 1920 * (index % 2), 1080 * (index // 2), 1920, 1080) for index in range(count)]


def covering(kit):
    """The rows for the time from the menu click until every screen is dark."""
    rows = []
    for count in (1, 2, 4):
        with subjects.composited_bed(_screens(count)) as bed:
            desk = kit.desk(bed)
            points = [(round(output.centre[0]), output.y + output.height // 25) for output in desk.bed.outputs()]
            samples = [_milliseconds_to_cover(desk, points) for _ in range(kit.choose(7, 3))]
            rows.append(Row(f"break covers {count} screen{'s' * (count > 1)} of 1920x1080", median(samples), "ms"))
    return rows


def _milliseconds_to_cover(desk, points):
    moment, changes = open_and_close(desk, points, _WATCHED_MILLISECONDS)
    first = {}
    for change in changes:
        if change.time > moment:
            first.setdefault(change.area, change.time)
    return (max(first.values()) - moment) / 1e6 if len(first) == len(points) else math.inf


def _cpu_percent(pids, seconds):
    """Processor time of each process during these seconds, in percent of a core."""
    before, began = [counters.cpu_milliseconds(pid) for pid in pids], time.monotonic()
    time.sleep(seconds)
    elapsed = 1000 * (time.monotonic() - began)
    return [100 * (counters.cpu_milliseconds(pid) - start) / elapsed for pid, start in zip(pids, before)]


def cost(kit):
    """The rows for the processor time during a break, measured alternately with the reference's ring."""
    rows = []
    for screens in (subjects.SCREENS, subjects.LARGE_SCREENS):
        size = f"{screens[0].width}x{screens[0].height}"
        with subjects.composited_bed(screens) as bed:
            desk = kit.desk(bed)
            ours, bare = [], []
            for _ in range(kit.choose(3, 1)):
                desk.tray.click(BREAK_NOW)
                ours.append(_during(bed, desk.process, kit))
                desk.end_break()
                ring, _ = kit.ring.start(bed)
                bare.append(_during(bed, ring, kit))
                bed.stop(ring)
        for index, (who, ratio) in enumerate((("", _RING_GOAL), (", in the X server", None))):
            rows.append(Row(f"a break at {size}{who}", median([sample[index] for sample in ours]), "% of a core",
                            median([sample[index] for sample in bare]), ratio=ratio, digits=2))
    return rows


def _during(bed, process, kit):
    time.sleep(3)
    return _cpu_percent([process.pid, bed.server.pid], kit.choose(10, 8))


def whole(kit):
    """The row for a whole break of 20 seconds, including its start and end."""
    samples = []
    with subjects.composited_bed(subjects.SCREENS) as bed:
        desk = kit.desk(bed, OBPauseSeconds=20)
        for _ in range(kit.choose(2, 1)):
            before = counters.cpu_milliseconds(desk.process.pid)
            desk.tray.click(BREAK_NOW)
            desk.wait_for_overlays()
            desk.wait_for_end(timeout=30)
            time.sleep(1)
            samples.append(counters.cpu_milliseconds(desk.process.pid) - before)
    return [Row("a whole break of 20 s at 1920x1080", median(samples), "ms")]


def thousand(kit):
    """The rows for the resources held after many breaks."""
    count = kit.choose(1000, 50)
    with subjects.composited_bed(subjects.SCREENS) as bed:
        desk = kit.desk(bed)
        _take_breaks(desk, 10)
        before = _held(desk.process.pid)
        began = time.monotonic()
        _take_breaks(desk, count)
        seconds = time.monotonic() - began
        after = _held(desk.process.pid)
    rows = [Row(f"memory written, after {count} breaks", after["written"], "MiB", digits=2),
            Row(f"growth over {count} breaks", after["written"] - before["written"], "MiB", limit=_GROWTH_GOAL, digits=2,
                note=f", {1000 * seconds / count:.0f} ms a break")]
    return rows + [Row(f"more {what} after {count} breaks", after[what] - before[what], "", limit=0, digits=0,
                       note=f", {after[what]}") for what in ("descriptors", "threads", "timers")]


def _take_breaks(desk, count):
    for _ in range(count):
        desk.tray.click(BREAK_NOW)
        wait_until(desk.break_has_keyboard, "the break with the keyboard")
        desk.end_break()


def _held(pid):
    """The resources of the process once its painting threads have ended."""
    time.sleep(_THREADS_LIVE_SECONDS)
    return {**counters.memory(pid), **counters.resources(pid)}
