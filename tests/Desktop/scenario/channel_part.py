# SPDX-License-Identifier: GPL-3.0-or-later
from driver.waiting import comes_true, stays_true, wait_until

from .application_desk import BACK, SETTINGS
from .channel_desk import MESSAGE, UNDERSTOOD, LauncherWatch
from .desk import REPORT, SWITCH_ON

_REPLY_FAILED = "Envoi impossible"


def visible(desk, report):
    """A message while the window is visible."""
    launcher = LauncherWatch(desk.bed)
    desk.server.publish(7, "Bonjour à toi")
    desk.start_in_dock()
    report.promise("a message is shown while the window can be seen", desk.alert_shows("Bonjour à toi"))
    report.promise("it comes under the makers' name", desk.alert_shows(MESSAGE))
    report.promise("the launcher shows a number", comes_true(lambda: launcher.counts()[-1:] == [1], 3),
                   launcher.counts())
    desk.keep_picture("message")
    desk.reader.press(UNDERSTOOD)
    report.promise("the alert closes when it is answered", comes_true(lambda: not desk.has_alert(), 3))
    report.promise("the launcher's number disappears", comes_true(lambda: launcher.counts()[-1:] == [0], 3),
                   launcher.counts())
    report.promise("what was shown is stored", comes_true(lambda: desk.preferences().get("OBAckMessage") == 7
                                                          and desk.preferences().get("OBShownMessages") == [7], 3))
    desk.finish()
    known = len(desk.server.received("check-in"))
    desk.start_over()
    desk.wait_for_check_in(known)
    # The server notes the check-in before it notes what that acknowledges.
    report.promise("the next check-in acknowledges it", comes_true(lambda: desk.server.received("acknowledgement"), 3)
                   and '"m":7' in str(desk.server.received("check-in")[-1]).replace(" ", "").replace("'", '"'),
                   desk.server.received("check-in")[-1])
    report.promise("a message is shown once", stays_true(lambda: not desk.has_alert(), 0.7))
    report.promise("silent while messages come", not desk.said(), desk.said())
    desk.finish()
    launcher.stop()


def hidden(desk, report):
    """A message in menu-bar mode without a window."""
    desk.server.publish(8, "Bonsoir <b>à toi</b>")
    desk.start_in_menu_bar()
    report.promise("in the menu bar a message appears in the menu", comes_true(lambda: MESSAGE in desk.tray.labels(), 5),
                   desk.tray.labels())
    report.promise("in the menu bar no message opens by itself", stays_true(lambda: not desk.windows(), 0.7))
    desk.tray.click(MESSAGE)
    wait_until(desk.messages_window, "the messages window")
    report.promise("the messages window shows it as plain text",
                   comes_true(lambda: desk.conversation() == ["Bonsoir <b>à toi</b>"], 3), desk.conversation())
    report.promise("the menu entry disappears when the message was read",
                   comes_true(lambda: MESSAGE not in desk.tray.labels(), 3))
    desk.keep_picture("messages")
    desk.bed.press("ctrl+w")
    report.promise("Ctrl+W closes the messages window, and the program goes on",
                   comes_true(lambda: not desk.messages_window(), 3) and desk.process.poll() is None)
    desk.finish()


def in_a_break(desk, report):
    """A message during a break."""
    desk.server.publish(9, "Après la pause")
    known = len(desk.server.received("check-in"))
    desk.start({"OBOnboarded": True}, {"ORVANE_DEBUG_BREAK": "1"})
    desk.wait_for_overlays()
    desk.wait_for_check_in(known)
    report.promise("no alert covers a break", stays_true(lambda: not desk.has_alert(), 1))
    desk.bed.press("Escape")
    desk.wait_for_end()
    report.promise("the badge shows it after the break", comes_true(lambda: any(
        control.name == "Messages" and control.description == MESSAGE for control in desk.reader.controls()), 3))
    desk.finish()


def over_an_alert(desk, report):
    """A break that begins while an alert is open."""
    desk.start_in_dock()
    desk.reader.control(UNDERSTOOD)
    desk.begin_break_by_second_start()
    wait_until(desk.break_has_keyboard, "the break with the keyboard")
    desk.bed.press("Escape")
    report.promise("Escape ends a break that began over an alert", comes_true(lambda: not desk.overlays(), 2))
    report.promise("the alert is still there after the break", desk.has_alert())
    desk.reader.press(UNDERSTOOD)
    report.promise("the alert can be answered after the break", comes_true(lambda: not desk.has_alert(), 3))
    desk.finish()


def replies(desk, report):
    """Replies with and without a reachable server."""
    for identifier in (7, 8, 9):
        desk.server.command("withdraw", identifier)
    desk.start_in_dock()
    desk.reader.control(SWITCH_ON)
    desk.click_control("Messages")
    wait_until(lambda: desk.messages_window() and desk.probe.state()["focus"] in desk.messages_window(),
               "the messages window with the keyboard")
    known = len(desk.server.received("report"))
    desk.bed.type("merci beaucoup")
    desk.bed.press("Return")
    report.promise("a reply appears in the conversation at once",
                   comes_true(lambda: desk.conversation()[:1] == ["merci beaucoup"], 3), desk.conversation())
    report.promise("a reply reaches the server", comes_true(lambda: len(desk.server.received("report")) == known + 1, 5)
                   and "merci beaucoup" in str(desk.server.received("report")[-1]))
    desk.server.misbehave("500-ok-true")
    desk.bed.type("encore")
    desk.bed.press("Return")
    report.promise("the user is told when a reply could not be sent", desk.alert_shows(_REPLY_FAILED))
    desk.bed.press("Return")
    report.promise("an alert is not answered by what is being typed", stays_true(desk.has_alert, 0.3))
    desk.dismiss_alert()
    report.promise("an alert is answered by the keyboard", comes_true(lambda: not desk.has_alert(), 3))
    report.promise("a reply that could not be sent stays in the conversation",
                   comes_true(lambda: desk.conversation()[:2] == ["encore", "merci beaucoup"], 3), desk.conversation())
    desk.server.misbehave("none")
    desk.finish()


def reports(desk, report):
    """Problem reports with and without a mail address."""
    desk.start_in_dock()
    desk.click_control(SETTINGS)
    desk.reader.control(BACK)
    for address in ("", "moi@exemple.ch"):
        known = len(desk.server.received("report"))
        desk.click_control(REPORT)
        desk.reader.control("Envoyer")
        wait_until(desk.has_keyboard, "the form with the keyboard")
        desk.bed.type("en panne")
        desk.bed.press("Tab")
        desk.bed.type(address)
        desk.keep_picture("report")
        desk.reader.press("Envoyer")
        what = "with an address" if address else "without an address"
        report.promise(f"a report {what} reaches the server",
                       comes_true(lambda: len(desk.server.received("report")) == known + 1, 5)
                       and "en panne" in str(desk.server.received("report")[-1])
                       and ("email" in str(desk.server.received("report")[-1])) == bool(address),
                       desk.server.received("report")[-1:])
        report.promise("the user is told that the report was sent", desk.alert_shows("Merci !"))
        desk.dismiss_alert()
        wait_until(lambda: not desk.has_alert(), "the end of the alert")
    report.promise("silent while reports go", not desk.said(), desk.said())
    desk.finish()
