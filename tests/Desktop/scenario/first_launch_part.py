# SPDX-License-Identifier: GPL-3.0-or-later
import os
import signal
import time

from PIL import Image, ImageChops

from driver.waiting import comes_true, stays_true, wait_until

from .application_desk import TO_DOCK, TO_MENU_BAR

_QUESTION = "Bienvenue dans OrvaneBreak 👁"


def answers(desk, report):
    """The first-launch question with each of its answers."""
    def click(name):
        return lambda: desk.click_control(name)
    _answer(desk, report, "a click on the Dock", click(TO_DOCK), False)
    _answer(desk, report, "Return", lambda: desk.bed.press("Return"), False)
    _answer(desk, report, "Escape", lambda: desk.bed.press("Escape"), False)
    _answer(desk, report, "the close button of the question", desk.close_by_window_manager, False)
    _answer(desk, report, "a click on the menu bar", click(TO_MENU_BAR), True)


def _answer(desk, report, how, give_answer, in_menu_bar):
    _ask(desk)
    if desk.config.name.endswith("-1"):
        report.promise("the question names the application and lies over its window",
                       desk.shows(_QUESTION) and len(desk.windows()) == 2)
        desk.keep_picture("question")
    report.promise("the first launch is noted before it is answered", desk.preferences() == {"OBOnboarded": True},
                   desk.preferences())
    give_answer()
    report.promise(f"{how} ends the question, and the window stays", comes_true(lambda: len(desk.windows()) == 1, 3))
    report.promise(f"{how} is stored", comes_true(lambda: desk.preferences() == {
        "OBOnboarded": True, "OBMenuBarMode": in_menu_bar}, 3), desk.preferences())
    report.promise(f"{how}: an eye in the tray only in the menu bar",
                   comes_true(desk.tray.items, 3) if in_menu_bar else stays_true(lambda: not desk.tray.items(), 0.3))
    report.promise(f"{how}: an entry in the task bar only in the Dock",
                   comes_true(lambda: desk.is_listed() != in_menu_bar, 3))
    report.promise("silent at its first launch", not desk.said(), desk.said())
    desk.finish()


def _ask(desk):
    desk.start()
    wait_until(lambda: len(desk.windows()) == 2 and desk.has_keyboard(), "the question over the window")
    desk.reader.control(TO_DOCK)


def interrupted(desk, report):
    """The program is ended while it asks."""
    for number in (signal.SIGKILL, signal.SIGTERM):
        _ask(desk)
        os.kill(desk.process.pid, number)
        report.promise(f"{number.name} ends it while it asks",
                       desk.has_ended(-number if number == signal.SIGKILL else 0), desk.process.returncode)
        report.promise("silent when it is ended while it asks", not desk.said(), desk.said())
        report.promise("ended while it asks, it stores no answer", desk.preferences() == {"OBOnboarded": True},
                       desk.preferences())
        desk.bed.stop(desk.process)
        desk.start_over()
        desk.wait_for_window()
        report.promise("it asks once only, also when it was ended while it asked",
                       stays_true(lambda: len(desk.windows()) == 1, 0.5))
        report.promise("it lives in the Dock until it is answered", desk.is_listed() and not desk.tray.items())
        desk.finish()


def _is_last_or_empty(window, last):
    """Whether every pixel of a window is as in its last picture or still has the window's background colour."""
    background = max(last.getcolors(last.width * last.height))[1]
    to_last, to_background = (ImageChops.difference(window, other).convert("L") for other in
                              (last, Image.new("RGB", last.size, background)))
    return ImageChops.darker(to_last, to_background).getextrema()[1] == 0


_WATCHED = 3.0  # Seconds from the start of the program.


def watched(desk, report):
    """What is visible on the screen while the program starts."""
    before = desk.settled_picture()
    began = time.monotonic()
    desk.start({"OBOnboarded": True})
    seen = []
    while time.monotonic() - began < _WATCHED:
        seen.append((time.monotonic() - began, desk.bed.picture()))
    desk.wait_for_window()
    last = desk.settled_picture()
    box = desk.bed.window_box(min(desk.windows()))
    shown = [(when, picture) for when, picture in seen if picture.crop(box).tobytes() != before.crop(box).tobytes()]
    report.promise("the window has its colour from the moment it is on the screen", shown and all(
        _is_last_or_empty(picture.crop(box), last.crop(box)) for _, picture in shown))
    finished = [when for when, picture in shown if picture.tobytes() == last.tobytes()]
    report.promise("nothing changes, moves or flickers once the window is there", finished and all(
        picture.tobytes() == last.tobytes() for when, picture in shown if when > finished[0]))
    print(f"the window is on the screen after {1000 * shown[0][0]:.0f} ms and finished after {1000 * finished[0]:.0f} ms")
    desk.finish()
