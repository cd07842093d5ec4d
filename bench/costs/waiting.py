# SPDX-License-Identifier: GPL-3.0-or-later
"""The cost of waiting with reminders on."""

import contextlib
import math
import time

from driver.tray import Tray
from driver.waiting import wait_until
from scenario.desk import SWITCH_ON

from . import counters, subjects
from .table import Row, median

_MEMORY_GOAL = 1.35
_WAKEUPS_GOAL = 2
_CPU_GOAL = 0.5
_MOVES_PER_SECOND = 25
_OTHERS_TIMEOUT = 20


def _subjects(kit):
    return (kit.reference, kit.in_dock, kit.in_menu_bar)


def _switch_on(bed, tray, subject, kit):
    """Turns reminders on."""
    wait_until(tray.items if subject is not kit.in_dock else lambda: True, "the icon")
    if subject is kit.in_menu_bar:
        tray.click(SWITCH_ON)
    elif subject is kit.in_dock:
        subjects.wait_for_window(bed, subject)
        bed.press("Return")


def settled(kit):
    """The rows for the first 30 seconds: each program alone on a desktop."""
    work, sizes, alone = {}, {}, True
    for _ in range(kit.choose(2, 1)):
        for subject in _subjects(kit):
            with subjects.plain_bed() as bed:
                tray = Tray(bed)
                process, _ = subject.start(bed)
                time.sleep(10)
                work.setdefault(subject, []).append(counters.cpu_milliseconds(process.pid))
                _switch_on(bed, tray, subject, kit)
                time.sleep(kit.choose(20, 5))
                alone &= counters.wait_until_alone(process.pid, _OTHERS_TIMEOUT)
                sizes.setdefault(subject, []).append(counters.memory(process.pid))
    rows = []
    note = "" if alone else ", other programs shared pages"
    for subject in (kit.in_dock, kit.in_menu_bar):
        rows.append(Row(f"processor time of the first 10 s, {subject.name}", median(work[subject]), "ms",
                        median(work[kit.reference])))
        for kind in ("PSS", "USS"):
            rows.append(Row(f"memory after 30 s, {subject.name}, {kind}",
                            median([size[kind] for size in sizes[subject]]), "MiB",
                            median([size[kind] for size in sizes[kit.reference]]), ratio=_MEMORY_GOAL, note=note))
    return rows


class _Watch:
    """Reads a process's counters from now on."""

    def __init__(self, pid):
        self._pid = pid
        self._start = self._counts()

    def per_minute(self):
        began, cpu, wakeups = self._start
        now, cpu_now, wakeups_now = self._counts()
        minutes = (now - began) / 60
        return (wakeups_now - wakeups) / minutes, (cpu_now - cpu) / minutes

    def _counts(self):
        return time.monotonic(), counters.cpu_milliseconds(self._pid), counters.wakeups(self._pid)


def _watch_all(processes, seconds):
    watches = {subject: _Watch(process.pid) for subject, process in processes.items()}
    time.sleep(seconds)
    return {subject: watch.per_minute() for subject, watch in watches.items()}


def _move_pointer(bed, seconds):
    """Moves the pointer around the screen for these seconds, also over the windows."""
    words = []
    for step in range(seconds * _MOVES_PER_SECOND):
        angle = step / _MOVES_PER_SECOND
        words += ["mousemove", round(960 + 900 * math.sin(angle)), round(540 + 500 * math.sin(1.37 * angle)),
                  "sleep", 1 / _MOVES_PER_SECOND]
    bed.run(["xdotool", *words])


def idle(kit):
    """The rows for waiting: all programs at the same time, each on its own desktop."""
    with contextlib.ExitStack() as stack:
        beds, processes = {}, {}
        for subject in _subjects(kit):
            bed = beds[subject] = stack.enter_context(subjects.plain_bed())
            tray = Tray(bed)
            processes[subject], _ = subject.start(bed)
            _switch_on(bed, tray, subject, kit)
        time.sleep(40)  # the threads that painted the icon live for 30 seconds
        quiet = _watch_all(processes, kit.choose(180, 60))
        for bed in beds.values():
            _move_pointer(bed, 62)
        time.sleep(1)
        busy = _watch_all(processes, 60)
    rows = []
    for subject in (kit.in_dock, kit.in_menu_bar):
        wakeups, cpu = quiet[subject]
        rows += [Row(f"wake-ups a minute, {subject.name}, no input", wakeups, "", quiet[kit.reference][0],
                     limit=_WAKEUPS_GOAL, digits=2),
                 Row(f"processor time a minute, {subject.name}, no input", cpu, "ms", quiet[kit.reference][1],
                     limit=_CPU_GOAL, digits=2),
                 Row(f"wake-ups a minute, {subject.name}, pointer moving", busy[subject][0], "", busy[kit.reference][0],
                     ratio=1, digits=0),
                 Row(f"processor time a minute, {subject.name}, pointer moving", busy[subject][1], "ms",
                     busy[kit.reference][1], digits=1)]
    return rows
