# SPDX-License-Identifier: GPL-3.0-or-later
from driver.bed import Output
from driver.waiting import comes_true, stays_true, wait_until

from . import layout
from .cover import Cover
from .desk import BREAK_NOW


def hotplug(desk, report):
    """Monitors plugged and unplugged during a break."""
    desk.start_with_tray()
    _unplug_in_break(desk, report)
    _plug_in_break(desk, report)
    _unplug_first_in_break(desk, report)
    report.promise("silent on standard error while monitors are plugged and unplugged", not desk.said(), desk.said())
    desk.stop_program()
    report.promise("ends by itself after all that", desk.process.returncode == 0, desk.process.returncode)


def mirrored(desk, report):
    """Monitors that show the same picture, or a part of it."""
    for size in ((1280, 720), (800, 600)):
        desk.bed.mirror("DUMMY1", size)
        desk.bed.show_wallpaper()
        before = desk.settled_picture()
        desk.begin_break()
        desk.keep_picture(f"mirrored-{size[0]}")
        check_mirrored(desk, report, before)
        report.promise("one break window for mirrored monitors", len(desk.overlays()) == 1, desk.overlays())
        desk.end_break()
    _check_overlapping(desk, report)


def _check_overlapping(desk, report):
    """A lower and wider monitor, and a higher and narrower one."""
    desk.bed.mirror("DUMMY1", (1024, 768))
    first = desk.bed.outputs()[0]
    rest = Output("the rest of DUMMY1", 0, first.height, 1024, 768 - first.height)
    before = desk.settled_picture()
    desk.tray.click(BREAK_NOW)
    wait_until(lambda: layout.find_parts(desk.bed.picture(), first), "title, ring and texts")
    desk.keep_picture("overlapping")
    picture = desk.bed.picture()
    bare = (Cover(before, outputs=[first]).bare_parts(picture)
            + Cover(before, outputs=[rest], contents={rest: []}).bare_parts(picture))
    report.promise("overlapping monitors are darkened once", not bare, list(map(str, bare)))
    desk.end_break()


def check_mirrored(desk, report, before):
    """Checks the break on monitors that show the same picture."""
    bare = Cover(before, outputs=desk.bed.outputs()).bare_parts(desk.bed.picture())
    report.promise("mirrored monitors are darkened once and show one column", not bare and all(desk.parts()),
                   list(map(str, bare)))


def _is_covered(desk, output):
    """Whether an output shows a complete break screen, darkened exactly once."""
    picture = desk.bed.picture()
    return not _cover(desk, output).bare_parts(picture) and layout.find_parts(picture, output) is not None


def _cover(desk, output):
    return Cover(desk.bed.wallpaper, outputs=[output])


def _break_covers(desk, report, text):
    """Begins a break on the current monitors and ends it."""
    desk.bed.show_wallpaper()
    desk.begin_break()
    report.promise(text, all(_is_covered(desk, output) for output in desk.bed.outputs())
                   and len(desk.overlays()) == len(desk.bed.outputs()), desk.overlays())
    _escape(desk, report)
    if desk.overlays():
        desk.clean_up(program_runs=True)


def _escape(desk, report):
    desk.bed.press("Escape")
    report.promise("Escape ends the break after monitors were plugged or unplugged", comes_true(lambda: not desk.overlays(), 2))


def _unplug_in_break(desk, report):
    desk.begin_break()
    desk.bed.unplug("DUMMY1")
    left = desk.bed.outputs()[0]
    report.promise("the break continues on the remaining monitor when another is unplugged",
                   comes_true(lambda: _is_covered(desk, left), 2)
                   and stays_true(lambda: _is_covered(desk, left), 1), _describe(desk, left))
    _escape(desk, report)
    desk.clean_up(program_runs=True)
    _break_covers(desk, report, "the next break covers the remaining monitor")


def _plug_in_break(desk, report):
    desk.begin_break()
    desk.bed.plug("DUMMY1")
    desk.bed.show_wallpaper(is_visible=False)
    first, new = desk.bed.outputs()
    report.promise("the break continues when a monitor is plugged in",
                   stays_true(lambda: layout.find_parts(desk.bed.picture(), first), 0.5)
                   and desk.process.poll() is None)
    report.promise("a monitor plugged in during a break stays uncovered",
                   len(desk.overlays()) == 1 and layout.find_parts(desk.bed.picture(), new) is None, desk.overlays())
    _escape(desk, report)
    desk.clean_up(program_runs=True)
    _break_covers(desk, report, "the next break covers the new monitor")


def _unplug_first_in_break(desk, report):
    desk.begin_break()
    desk.bed.unplug("DUMMY0")
    desk.bed.show_wallpaper(is_visible=False)
    left = desk.bed.outputs()[0]
    # The server moves the remaining monitor; the panels keep their positions from the start of the break.
    report.promise("the break continues when the first monitor is unplugged",
                   stays_true(lambda: layout.find_parts(desk.bed.picture(), left), 1) and desk.process.poll() is None,
                   _describe(desk, left))
    _escape(desk, report)
    desk.clean_up(program_runs=True)
    desk.bed.plug("DUMMY0")
    wait_until(lambda: len(desk.bed.outputs()) == 2, "both monitors")
    _break_covers(desk, report, "the next break covers all monitors again")


def _describe(desk, output):
    windows = [tuple(window[key] for key in ("x", "y", "width", "height")) for window in desk.overlays()]
    return f"bare: {_cover(desk, output).bare_parts(desk.bed.picture())}, break windows {windows}"
