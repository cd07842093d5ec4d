# SPDX-License-Identifier: GPL-3.0-or-later
import signal
import subprocess

from driver.bed import NotPossibleHere
from driver.waiting import comes_true, stays_true, wait_until

from .cover import Cover, watch
from .ending_part import check_end_by_signal, check_end_with_server
from .hotplug_part import check_mirrored
from .look_part import check_layout


_SETTLED_SECONDS = 1
_TURNED = "a break is upright on a rotated monitor at a negative position"


def scales(desk, report):
    """Scaled screens."""
    # The last monitor has no panel, which would be where the texts are.
    name = desk.bed.outputs()[-1].name
    for factor in (1.25, 1.5, 2):
        _in_a_changed_layout(desk, report, f"scale {factor:g}: ring and texts are there on each screen",
                             lambda: desk.bed.set_scale(name, factor), lambda: desk.bed.set_scale(name, 1))


def turned(desk, report):
    """A rotated monitor at a negative position."""
    name = desk.bed.outputs()[-1].name
    _in_a_changed_layout(desk, report, _TURNED, lambda: desk.bed.turn(name), lambda: desk.bed.turn_back(name))


def _in_a_changed_layout(desk, report, text, change, change_back):
    """Checks a break, and every pixel of it, after a change of the monitors."""
    cover = f"{text.split(':')[0]}: covers every pixel of every screen"
    try:
        change()
    except NotPossibleHere as reason:
        for promise in (text, cover):
            report.not_possible(promise, reason)
        return
    try:
        before = desk.settled_picture()
        desk.begin_break()
        desk.keep_picture(text.split(":")[0].replace(" ", "-"))
        check_layout(desk, report, desk.parts())
        report.promise(text, True)
        watched = watch(desk.bed, Cover(before, outputs=desk.bed.outputs()), _SETTLED_SECONDS)
        if watched.bare_parts and all(map(_is_fraction, watched.bare_parts)):
            report.not_possible(cover, f"the fraction of a pixel at the edge belongs to no program: {watched}")
        else:
            report.promise(cover, not watched.bare_parts, watched)
        desk.end_break()
    finally:
        change_back()


def _is_fraction(part):
    """Whether the part is one column or one row, as some compositors leave where a scaled monitor has no whole size."""
    left, top, right, bottom = part.box
    return min(right - left, bottom - top) == 1


def mirrored(desk, report):
    """Monitors that show the same picture."""
    name = desk.bed.outputs()[-1].name
    try:
        desk.bed.mirror(name)
    except NotPossibleHere as reason:
        report.not_possible("mirrored monitors are darkened once and show one column", reason)
        return
    try:
        before = desk.settled_picture()
        desk.begin_break()
        desk.keep_picture("mirrored")
        check_mirrored(desk, report, before)
        desk.end_break()
    finally:
        desk.bed.set_scale(name, 1)


def unplugging(desk, report):
    """Monitors plugged and unplugged during a break."""
    texts = ("the break continues on the remaining monitor when another is unplugged",
             "Escape ends the break after a monitor was unplugged", "the next break covers the remaining monitor",
             "Escape ends a break during which a monitor was plugged in", "the next break covers all monitors again")
    first, second = desk.bed.outputs()
    desk.begin_break()
    try:
        desk.bed.unplug(second.name)
    except NotPossibleHere as reason:
        for text in texts:
            report.not_possible(text, reason)
        desk.end_break()
        return
    try:
        _with_one_monitor(desk, report, texts, first)
    finally:
        desk.bed.plug(second.name)
    wait_until(lambda: len(desk.bed.outputs()) == 2, "both monitors")
    desk.bed.press("Escape")
    report.promise(texts[3], comes_true(lambda: not desk.overlays(), 2) and desk.process.poll() is None)
    desk.clean_up(program_runs=True)
    desk.begin_break()
    report.promise(texts[4], len(desk.overlays()) == 2, desk.overlays())
    desk.end_break()


def _with_one_monitor(desk, report, texts, left):
    """Continues the break, ends it, and leaves the next one on the screen."""
    def is_there():
        return desk.overlays() == [left]
    report.promise(texts[0], comes_true(is_there, 3) and stays_true(is_there, 1) and desk.process.poll() is None,
                   desk.overlays())
    desk.bed.press("Escape")
    report.promise(texts[1], comes_true(lambda: not desk.overlays(), 2))
    desk.clean_up(program_runs=True)
    desk.begin_break()
    report.promise(texts[2], is_there(), desk.overlays())


def signals(desk, report):
    """Signals during a break."""
    other = desk.other_window()
    desk.rest_pointer()
    for number in (signal.SIGTERM, signal.SIGKILL):
        before = desk.settled_picture()
        desk.start_in_break()
        check_end_by_signal(desk, report, number)
        report.promise(f"nothing is left after {number.name}",
                       comes_true(lambda: desk.bed.picture().tobytes() == before.tobytes(), 3))
        report.promise(f"the focus is back after {number.name}", comes_true(other.has_focus, 2))
        report.promise("silent when a signal ends it", not desk.said(), desk.said())
        desk.bed.stop(desk.process)


def compositor_killed(desk, report):
    """The compositor is killed during a break."""
    desk.start_in_break()
    check_end_with_server(desk, report, "the display")


def idle(desk, report, helpers):
    """The time since the last input."""
    process = desk.bed.run([desk.bed.lend(helpers / "idle-report")], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                           text=True)
    source = process.stdout.readline().strip()
    report.promise("the desktop tells the idle time", source not in ("none", ""), source)
    report.figures["the source of the idle time"] = source

    def seconds():
        process.stdin.write("\n")
        process.stdin.flush()
        return float(process.stdout.readline())
    desk.rest_pointer()
    desk.bed.press("shift")
    started = seconds()
    report.promise("the idle time grows without input", comes_true(lambda: seconds() >= 3, 8), started)
    desk.bed.press("shift")
    report.promise("a key ends the idle time", comes_true(lambda: seconds() < 1, 1))
    comes_true(lambda: seconds() >= 2, 8)
    desk.bed.move_pointer(600, 300)
    report.promise("the pointer ends the idle time", comes_true(lambda: seconds() < 1, 1))
    desk.bed.stop(process)
