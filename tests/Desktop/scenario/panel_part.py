# SPDX-License-Identifier: GPL-3.0-or-later
"""The eye in real trays: xfce4-panel's, and tint2, which knows the XEmbed protocol only."""

import subprocess

from PIL import ImageChops

from driver.waiting import comes_true, stays_true, wait_until

_TEAL = (20, 184, 166)
_PLACE = (400, 300)
_TINT2 = """panel_items = S
panel_position = center left horizontal
panel_size = 100 40
systray_icon_size = 32
"""
_ITEM = "org.kde.StatusNotifierItem"
_WATCHER = "org.kde.StatusNotifierWatcher"


def clicks(desk, report):
    """The mouse on the eye in xfce4-panel."""
    eye = _Eye(desk)
    report.promise("the eye appears in a real panel", eye.box is not None)
    for button, name in ((1, "primary"), (3, "secondary")):
        desk.bed.click(*eye.centre, button)
        report.promise(f"the {name} button on the eye opens its menu", comes_true(lambda: _menus(desk), 3))
        desk.bed.press("Escape")
        wait_until(lambda: not _menus(desk), "the end of the menu")
    desk.bed.click(*eye.centre, 4)
    report.promise("the wheel on the eye opens nothing", stays_true(lambda: not _menus(desk), 0.5))
    desk.bed.click(*eye.centre)
    wait_until(lambda: _menus(desk), "the menu")
    for key in ("Down", "Return"):
        desk.bed.press(key)
    report.promise("the first entry of the menu turns reminders on", comes_true(eye.is_teal, 3))
    desk.keep_picture("panel")
    report.promise("silent in a real panel", not desk.said(), desk.said())


def calls(desk, report):
    """A panel that leaves it to the program to open the menu."""
    answer = _call_method(desk, _WATCHER, "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties.Get",
                          f"string:{_WATCHER}", "string:RegisteredStatusNotifierItems")
    service = answer.split('"')[1].partition("/")[0]
    for method in ("Activate", "SecondaryActivate", "ContextMenu"):
        _call_method(desk, service, "/StatusNotifierItem", f"{_ITEM}.{method}", *(f"int32:{part}" for part in _PLACE))
        report.promise(f"{method} opens the menu at the place given",
                       comes_true(lambda: [menu["x"] for menu in _own_menus(desk)] == [_PLACE[0]], 3), _own_menus(desk))
        desk.bed.press("Escape")
        report.promise("Escape closes the menu", comes_true(lambda: not _own_menus(desk), 3))


def embedded(desk, report):
    """A tray without D-Bus."""
    tray = desk.bed.run(["tint2", "-c", desk.bed.write("tint2rc", _TINT2)])
    wait_until(lambda: desk.bed.windows_titled("tint2"), "the tray")
    before = desk.bed.picture()
    desk.start_program()
    report.promise("the eye appears in a tray of the XEmbed kind",
                   comes_true(lambda: ImageChops.difference(before, desk.bed.picture()).getbbox(), 10))
    box = ImageChops.difference(before, desk.bed.picture()).getbbox() or (0, 0, 0, 0)
    desk.bed.click((box[0] + box[2]) // 2, (box[1] + box[3]) // 2)
    report.promise("a click opens its menu", comes_true(lambda: _own_menus(desk), 3))
    desk.bed.press("Escape")
    desk.stop_program()
    desk.bed.stop(tray)


class _Eye:
    """The icon of the started program: what its start changes in the panel."""

    def __init__(self, desk):
        self._desk = desk
        before = self._panel()
        desk.start_program()
        wait_until(lambda: ImageChops.difference(before, self._panel()).getbbox(), "a change of the panel", 10)
        # The panel asks for the menu after it has painted the icon.
        wait_until(lambda: stays_true(lambda shown=self._panel(): self._panel().tobytes() == shown.tobytes(), 1),
                   "a panel at rest", 10)
        self.box = ImageChops.difference(before, self._panel()).getbbox()

    def _panel(self):
        output = self._desk.bed.outputs()[0]
        return self._desk.bed.picture().crop((output.box[0], output.box[3] - 30, output.box[2], output.box[3]))

    @property
    def centre(self):
        top = self._desk.bed.outputs()[0].box[3] - 30
        return (self.box[0] + self.box[2]) // 2, top + (self.box[1] + self.box[3]) // 2

    def is_teal(self):
        return any(max(abs(part - wanted) for part, wanted in zip(colour, _TEAL)) < 12
                   for _, colour in self._panel().crop(self.box).convert("RGB").getcolors(100_000))


def _menus(desk):
    """The menus of other programs that can be seen."""
    return [window for window in desk.probe.state()["windows"]
            if window["processId"] != desk.process.pid and window["viewable"] and window["overrideRedirect"]
            and window["height"] > 100]


def _own_menus(desk):
    return desk.overlays()


def _call_method(desk, service, path, method, *arguments):
    return subprocess.run(["dbus-send", "--session", "--print-reply", f"--dest={service}", path, method, *arguments],
                          env=desk.bed.environment(), stdout=subprocess.PIPE, text=True, check=True, timeout=10).stdout
