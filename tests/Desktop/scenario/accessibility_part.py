# SPDX-License-Identifier: GPL-3.0-or-later
from driver.orca import Orca
from driver.waiting import comes_true, wait_until

from .application_desk import BACK, LOGIN_BOX, MENU_BAR_BOX, SETTINGS
from .desk import BREAK_NOW, REPORT, SWITCH_OFF, SWITCH_ON, UPDATES

_MAIN = {("push button", SWITCH_ON), ("push button", "Messages"), ("push button", SETTINGS), ("menu item", "Édition"),
         ("label", "Rappels désactivés"), ("image", "OrvaneBreak"), ("frame", "OrvaneBreak")}
_SETTINGS = {("push button", BACK), ("label", SETTINGS), ("label", "Intervalle entre les pauses"),
             ("combo box", "20 minutes"), ("label", "Durée d'une pause"), ("combo box", "20 secondes"),
             ("check box", "Jouer un son doux au début de la pause"),
             ("check box", "Installer les mises à jour automatiquement"), ("check box", MENU_BAR_BOX),
             ("check box", LOGIN_BOX), ("push button", UPDATES), ("push button", REPORT)}
_MAIN_ORDER = [SWITCH_ON, "Messages", SETTINGS]
_SETTINGS_ORDER = [BACK, "20 minutes", "20 secondes", "Jouer un son doux au début de la pause",
                   "Installer les mises à jour automatiquement", MENU_BAR_BOX, LOGIN_BOX, UPDATES, REPORT]
_BREAK, _INSTRUCTION = "Pause de 20\u00a0secondes", "Regarde au loin, à 6 mètres"
#: Containers need no name.
_CONTAINERS = ("filler", "menu bar", "separator")


def tree(desk, report):
    """The accessibility tree and its actions."""
    desk.start_in_dock()
    desk.reader.control(SWITCH_ON)
    _has_all(desk, report, "main", _MAIN)
    report.promise("the button says that it has the keyboard",
                   {"focused", "focusable", "enabled"} <= desk.reader.control(SWITCH_ON).states)
    desk.reader.press(SWITCH_ON)
    report.promise("a screen reader presses the button: the reminders are on", desk.shows(SWITCH_OFF)
                   and not desk.shows_now("Rappels désactivés"))
    desk.reader.press(SETTINGS)
    desk.reader.control(BACK)
    _has_all(desk, report, "settings", _SETTINGS)
    box = "Jouer un son doux au début de la pause"
    desk.reader.press(box)
    report.promise("a check box tells its state", comes_true(lambda: desk.is_checked(box), 3))
    report.promise("a pressed check box is stored", desk.preferences().get("OBSoundEnabled") is True)
    report.promise("silent when it is read", not desk.said(), desk.said())
    desk.finish()


def _has_all(desk, report, page, wanted):
    controls = desk.reader.controls()
    found = {(control.role, control.name) for control in controls}
    report.promise(f"every control of the {page} page has its role and name", wanted <= found, wanted - found)
    nameless = [control for control in controls if not control.name and control.role not in _CONTAINERS]
    report.promise("no control is without a name", not nameless, nameless)


def break_aloud(desk, report):
    """A break under a screen reader."""
    orca = Orca(desk.bed)
    desk.start_in_menu_bar()
    desk.tray.click(BREAK_NOW)
    desk.wait_for_overlays()
    dialog, *_ = wait_until(lambda: desk.reader.controls(_BREAK), "the break's controls")
    report.promise("a break is the active window, a dialog that tells its length and how to end it", dialog.role == "dialog"
                   and "active" in dialog.states and "Échap" in dialog.description, dialog)
    report.promise("a break's controls tell what they do", {("progress bar", "Secondes restantes"), ("push button", "Passer")}
                   <= {(control.role, control.name) for control in desk.reader.controls(_BREAK)})
    report.promise("the ring tells the seconds left", comes_true(lambda: _ring(desk) == (17, 20), 6), _ring(desk))
    desk.end_break()
    said = orca.stop()
    report.promise("Orca announces a break with its length and instruction",
                   any(_BREAK in sentence and _INSTRUCTION in sentence for sentence in said), said)
    report.figures["Orca says"] = " / ".join(said)
    desk.finish()


def _ring(desk):
    return next((control.value for control in desk.reader.controls(_BREAK) if control.role == "progress bar"), None)


def keyboard_only(desk, report):
    """Both pages without a mouse."""
    desk.start_in_dock()
    desk.reader.control(SWITCH_ON)
    report.promise("Tab goes through the main page from top to bottom", _walk(desk, _MAIN_ORDER), _focused(desk))
    desk.bed.press("space")
    desk.reader.control(BACK)
    report.promise("Tab goes through the settings page from top to bottom",
                   _walk(desk, _SETTINGS_ORDER, is_first_focused=_focused(desk) == BACK), _focused(desk))
    desk.bed.press("alt+Left")
    report.promise("Alt+Left leaves the settings page", desk.shows(SWITCH_ON))
    desk.finish()


def _walk(desk, names, is_first_focused=True):
    """Presses Tab repeatedly; returns whether the controls got the focus in this order."""
    if not is_first_focused:
        desk.bed.press("Tab")
    for index, name in enumerate(names):
        if index:
            desk.bed.press("Tab")
        if not comes_true(lambda wanted=name: _focused(desk) == wanted, 2):
            return False
    return True


def _focused(desk):
    """Newer toolkits tell the current entry of every closed list as well, and say that it has the keyboard."""
    return next((control.name for control in desk.reader.controls()
                 if "focused" in control.states and control.role != "list item"), None)


def scales(desk, report):
    """Both pages at common scales."""
    for scale in ("1", "1.25", "1.5", "2"):
        desk.start_in_dock({"QT_SCALE_FACTOR": scale})
        desk.reader.control(SWITCH_ON)
        is_low = scale in ("1.5", "2")
        if is_low:
            _is_reached(desk, report, f"the main page at scale {scale}", _MAIN_ORDER)
        else:
            _fits(desk, report, f"the main page at scale {scale}")
        desk.reader.press(SETTINGS)
        desk.reader.control(BACK)
        if is_low:
            _is_reached(desk, report, f"the settings page at scale {scale}", _SETTINGS_ORDER)
        else:
            _fits(desk, report, f"the settings page at scale {scale}")
        desk.finish()


def _is_reached(desk, report, what, order):
    """On a screen that is too low for the page, Tab scrolls it to each control."""
    box = desk.bed.window_box(min(desk.windows()))
    report.promise("the window fits a low screen", box[3] <= desk.bed.outputs()[0].box[3], (what, box))
    unreached = []
    for name in order:
        def is_visible(name=name):
            controls = desk.reader.controls()
            # The reader has coordinates of its own where the scale is not a whole number.
            frame = next((control.box for control in controls if control.role == "frame"), None)
            return frame and any("focused" in control.states and control.name == name and _contains(frame, control.box)
                                 for control in controls)
        if not comes_true(is_visible, 2):
            unreached.append(name)
        desk.bed.press("Tab")
    report.promise("where the screen is too low for a page, every control can be reached", not unreached, (what, unreached))


def _contains(outer, inner):
    return (outer[0] <= inner[0] and inner[0] + inner[2] <= outer[0] + outer[2]
            and outer[1] <= inner[1] and inner[1] + inner[3] <= outer[1] + outer[3])


def _fits(desk, report, what):
    controls = [control for control in desk.reader.controls() if control.name and control.role in
                ("label", "push button", "check box", "combo box", "image")]
    page = wait_until(lambda: next((control for control in desk.reader.controls() if control.role == "frame"), None),
                      "the window")
    left, top, width, height = page.box
    outside = [control.name for control in controls if control.box[0] < left or control.box[1] < top
               or control.box[0] + control.box[2] > left + width or control.box[1] + control.box[3] > top + height]
    crossing = [(first.name, second.name) for index, first in enumerate(controls) for second in controls[index + 1:]
                if _overlap(first.box, second.box)]
    report.promise("no control leaves the window or covers another, at any scale", not outside and not crossing,
                   (what, outside, crossing))


def _overlap(first, second):
    return (first[0] < second[0] + second[2] and second[0] < first[0] + first[2]
            and first[1] < second[1] + second[3] and second[1] < first[1] + first[3])
