# SPDX-License-Identifier: GPL-3.0-or-later
from driver.bed import NotPossibleHere
from driver.waiting import comes_true, stays_true, wait_until


def keyboard(desk, report):
    """Keyboard, focus and task bar during a break."""
    bed, other = desk.bed, desk.other_window()
    bed.type("ab")
    wait_until(lambda: other.keys() == ["61", "62"], "keys in another program before the break")
    desk.rest_pointer()
    before = desk.probe.state()
    desk.begin_break()
    identifiers = [window["id"] for window in desk.overlays()]
    report.promise("the break has the keyboard",
                   comes_true(lambda: desk.probe.state()["focus"] in identifiers, 2))
    _typing(desk, report, other)
    _task_bar(desk, report, before, identifiers)
    bed.press("Escape")
    report.promise("Escape ends the break", comes_true(lambda: not desk.overlays(), 2))
    report.promise("the focus is back without a click",
                   comes_true(lambda: desk.probe.state()["focus"] == other.identifier, 2))
    known = len(other.keys())
    bed.type("k")
    report.promise("typing reaches the other program again", comes_true(lambda: other.keys()[known:] == ["6b"], 2),
                   other.keys()[known:])
    _other_workspace(desk, report, other)


def _typing(desk, report, other):
    known = len(other.keys())
    desk.bed.type("xyz 1")
    for key in ("space", "Return", "Tab"):
        desk.bed.press(key)
    desk.bed.click(desk.bed.outputs()[0].x + 100, 200)
    report.promise("typing and clicking beside the button do not end the break",
                   stays_true(lambda: len(desk.overlays()) == len(desk.bed.outputs()), 0.3))
    clicks = other.clicks()
    report.promise("keys and clicks during the break reach no other program",
                   len(other.keys()) == known and clicks == 0, (other.keys()[known:], clicks))
    desk.rest_pointer()


def _task_bar(desk, report, before, identifiers):
    if desk.bed.window_manager is None:
        for text in ("no entry in the task bar", "_NET_ACTIVE_WINDOW never names the break"):
            report.not_possible(text, "there is no window manager")
        return
    state = desk.probe.state()
    report.promise("no entry in the task bar", not set(identifiers) & set(state["clients"])
                   and state["clients"] == before["clients"], state["clients"])
    report.promise("_NET_ACTIVE_WINDOW never names the break", state["active"] in (before["active"], 0),
                   (before["active"], state["active"]))


def _other_workspace(desk, report, other):
    covered = "covers another workspace that is switched to"
    try:
        before = desk.probe.state()["desktop"]
        desk.begin_break()
        desk.bed.switch_workspace(1)
    except NotPossibleHere as reason:
        report.not_possible(covered, reason)
        desk.end_break()
        return
    wait_until(lambda: desk.probe.state()["desktop"] != before, "the other workspace")
    report.promise(covered, stays_true(lambda: len(desk.overlays()) == len(desk.bed.outputs()), 0.3)
                   and all(desk.parts()))
    desk.bed.press("Escape")
    report.promise("Escape ends the break on another workspace", comes_true(lambda: not desk.overlays(), 2))
    # Window managers time-stamp focus requests with the last input that they saw.
    desk.bed.click(*desk.bed.outputs()[0].centre)
    desk.bed.switch_workspace(0)
    report.promise("the focus is right after a break on another workspace",
                   comes_true(lambda: desk.probe.state()["focus"] == other.identifier, 2))
    if desk.overlays():
        desk.end_break()


def button(desk, report):
    """The button that ends the break."""
    other = desk.other_window()
    for index, output in enumerate(desk.bed.outputs()):
        desk.begin_break()
        place = desk.parts()[index]["button"].centre
        desk.bed.click(*place)
        report.promise(f"clicking Passer on screen {index + 1} ends the break",
                       comes_true(lambda: not desk.overlays(), 2), output)
        report.promise("the focus is back after a click on Passer",
                       comes_true(lambda: desk.probe.state()["focus"] == other.identifier, 2))
        desk.rest_pointer()
        if desk.overlays():
            desk.end_break()
    report.promise("the clicks reach no other program", other.clicks() == 0)
