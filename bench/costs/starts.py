# SPDX-License-Identifier: GPL-3.0-or-later
"""The time from the start of the process to the window and to the icon."""

import math
import time

from driver.probe import Probe
from driver.tray import Tray
from driver.waiting import wait_until

from . import subjects
from .table import Row, median

_WATCHED_MILLISECONDS = 1500
_LOOK_EVERY_MILLISECONDS = 1
_WINDOW_GOAL = 1.3


def measure(kit):
    """The rows for the start. The subjects alternate, so that other load on the machine affects all alike."""
    windows = {kit.reference: [], kit.in_dock: []}
    icons = {kit.reference: [], kit.in_menu_bar: []}
    with subjects.plain_bed() as bed:
        tray, probe = Tray(bed), Probe(bed, kit.helpers)
        places = {subject: _mark(bed, subject) for subject in windows}
        for _ in range(kit.choose(15, 5)):
            for subject, samples in windows.items():
                samples.append(_first_window(bed, probe, subject, *places[subject]))
            for subject, samples in icons.items():
                samples.append(_first_icon(bed, tray, subject))
    return [Row("first window, painted", median(windows[kit.in_dock]), "ms", median(windows[kit.reference]),
                ratio=_WINDOW_GOAL),
            Row("icon in the tray", median(icons[kit.in_menu_bar]), "ms", median(icons[kit.reference]))]


def _mark(bed, subject):
    """A position in the window with foreground content, and its colour. This start also creates the files of a first start."""
    process, _ = subject.start(bed)
    box = bed.window_box(subjects.wait_for_window(bed, subject))
    time.sleep(2)
    picture = bed.picture().crop(box)
    background = picture.getpixel((3, picture.height // 2))
    bed.move_pointer(5, 5)

    def difference(place):
        return sum(abs(a - b) for a, b in zip(picture.getpixel(place), background))
    place = max(((x, y) for y in range(40, picture.height - 5) for x in range(5, picture.width - 5)), key=difference)
    _stop(bed, subject, process)
    return (box[0] + place[0], box[1] + place[1]), picture.getpixel(place)


def _first_window(bed, probe, subject, place, colour):
    """Milliseconds until the window shows its content; infinite if that took longer than the observation."""
    watch = probe.sample([place], _WATCHED_MILLISECONDS, _LOOK_EVERY_MILLISECONDS)
    process, began = subject.start(bed)
    last = watch.results()[-1]
    _stop(bed, subject, process)
    return (last.time - began) / 1e6 if last.value == colour and last.time > began else math.inf


def _first_icon(bed, tray, subject):
    """Milliseconds until the tray has the icon."""
    known = len(tray.arrivals())
    process, began = subject.start(bed)
    arrival = wait_until(lambda: tray.arrivals()[known:], "the icon")[0]
    time.sleep(0.5)
    _stop(bed, subject, process)
    return (arrival - began) / 1e6


def _stop(bed, subject, process):
    bed.stop(process)
    wait_until(lambda: not bed.windows_titled(subject.title), "no window after the end")
