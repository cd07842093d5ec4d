# SPDX-License-Identifier: GPL-3.0-or-later
from driver.waiting import comes_true, wait_until

from .application_desk import BACK, LOGIN_BOX, SETTINGS
from .desk import BREAK_NOW, QUIT, SWITCH_OFF, SWITCH_ON, UPDATES
from .service_part import answer_first_question

#: The exit status of a program with memcheck findings.
FOUND = 86


def whole_run(desk, report):
    """A whole run: start, first question, message, reply, settings, breaks, end."""
    desk.server.publish(7, "Bonjour à toi")
    desk.start({"OBSoundEnabled": True, "OBIntervalMinutes": 10})
    answer_first_question(desk, "Tab")
    report.promise("the eye appears", comes_true(desk.tray.items))

    wait_until(lambda: len(desk.windows()) == 2 and desk.has_keyboard(), "the message over the window")
    desk.dismiss_alert()
    report.promise("a message is shown and answered",
                   comes_true(lambda: desk.preferences().get("OBShownMessages") == [7]), desk.preferences())

    _reply(desk, report)
    _look_through_settings(desk, report)

    desk.tray.click(SWITCH_ON)
    report.promise("reminders are turned on", comes_true(lambda: desk.tray.labels()[0] == SWITCH_OFF))
    desk.tray.click(BREAK_NOW)
    _see_break(desk)
    second = desk.start_again("--break-now")
    _see_break(desk)
    report.promise("a second start ends at once", comes_true(lambda: second.poll() is not None)
                   and second.returncode == 0, second.returncode)
    desk.bed.stop(second)

    desk.tray.click(QUIT)
    report.promise("the program ends when it is asked to", comes_true(lambda: desk.process.poll() is not None)
                   and desk.process.returncode in (0, FOUND), desk.process.returncode)
    report.promise("silent", not desk.said(), desk.said())


def _reply(desk, report):
    desk.click_control("Messages")
    wait_until(lambda: desk.messages_window() and desk.probe.state()["focus"] in desk.messages_window(),
               "the messages window with the keyboard")
    desk.bed.type("merci")
    desk.bed.press("Return")
    report.promise("a reply reaches the server", comes_true(lambda: desk.server.received("report")))
    desk.bed.press("ctrl+w")
    wait_until(lambda: not desk.messages_window(), "the end of the messages window")


def _look_through_settings(desk, report):
    desk.click_control(SETTINGS)
    desk.reader.control(BACK)
    desk.click_control(LOGIN_BOX)
    report.promise("it opens at login", comes_true(lambda: list(desk.config.glob("autostart/*.desktop"))))
    desk.click_control(BACK)
    desk.tray.click(UPDATES)
    wait_until(lambda: len(desk.windows()) == 2 and desk.has_keyboard(), "the answer about updates")
    desk.bed.press("Return")
    wait_until(lambda: len(desk.windows()) == 1, "the end of the answer")


def _see_break(desk):
    desk.wait_for_overlays()
    wait_until(desk.break_has_keyboard, "the keyboard in the break")
    desk.end_break()
