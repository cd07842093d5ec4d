# SPDX-License-Identifier: GPL-3.0-or-later
"""The program and its session: launcher, menu bar, colours."""

import pathlib
import subprocess
import time

from PIL import ImageStat

from driver.menu_registrar import MenuRegistrar
from driver.settings_portal import SettingsPortal
from driver.waiting import comes_true, stays_true, wait_until

from .application_desk import BACK, SETTINGS
from .desk import BREAK_NOW, QUIT, REPORT, SWITCH_ON, UPDATES

_SOURCES = pathlib.Path(__file__).resolve().parents[3]
_APPLICATION_ID = "ch.orvanelabs.OrvaneBreak"
_LAUNCH = """
import sys
from gi.repository import Gio, GLib
entry = Gio.DesktopAppInfo.new_from_filename(sys.argv[1])
entry.launch_action(sys.argv[2], None) if len(sys.argv) > 2 else entry.launch([], None)
loop = GLib.MainLoop()
GLib.timeout_add(1500, loop.quit)
loop.run()
"""


def global_menu(desk, report):
    """A desktop with a global menu."""
    registrar = MenuRegistrar(desk.bed)
    desk.start_in_dock()
    wanted = [["OrvaneBreak", [UPDATES, REPORT, "-", QUIT]],
              ["Édition", ["Annuler", "Rétablir", "-", "Couper", "Copier", "Coller", "Tout sélectionner"]]]
    report.promise("a desktop with a global menu gets the menu bar", comes_true(lambda: wanted in registrar.menus(), 5),
                   registrar.menus())
    height = next(control.box[3] for control in desk.reader.controls() if control.role == "frame")
    report.promise("the content keeps its size when the menu bar is elsewhere", height == 500, height)
    report.promise("silent when the menu bar is elsewhere", not desk.said(), desk.said())
    desk.finish()
    registrar.stop()


def appearance(desk, report):
    """The desktop's colour scheme and its changes."""
    portal = SettingsPortal(desk.bed, "dark")
    desk.start_in_dock()

    def lightness():
        left, top, width, height = next(control.box for control in desk.reader.controls() if control.role == "frame")
        window = desk.bed.picture().crop((left, top, left + width, top + height))
        return ImageStat.Stat(window.convert("L")).median[0]
    report.promise("dark from the start where the desktop is dark", lightness() < 70, lightness())
    portal.set_scheme("light")
    report.promise("it becomes light with the desktop", comes_true(lambda: lightness() > 200, 3), lightness())
    portal.set_scheme("foreign")
    report.promise("another setting of the same name changes nothing", stays_true(lambda: lightness() > 200, 0.3))
    portal.set_scheme("dark")
    report.promise("it becomes dark with the desktop", comes_true(lambda: lightness() < 70, 3), lightness())
    portal.set_scheme("light-contrast")
    report.promise("it is white in high contrast", comes_true(lambda: lightness() == 255, 3), lightness())
    portal.set_scheme("none")
    report.promise("a desktop without a preference gets the default colours", comes_true(lambda: lightness() > 200, 3))
    report.promise("silent when the colours change", not desk.said(), desk.said())
    desk.finish()
    portal.stop()


def desktop_theme(desk, report):
    """Qt's theme plugin, which loads GTK."""
    def is_loaded(environment):
        desk.start_in_dock(environment)
        maps = pathlib.Path(f"/proc/{desk.process.pid}/maps").read_text()
        desk.finish()
        return "/platformthemes/" in maps
    report.promise("the desktop's theme is loaded on request", is_loaded({"QT_QPA_PLATFORMTHEME": "gtk3"}),
                   "Debian package: qt6-gtk-platformtheme")
    report.promise("no theme plugin is loaded on GNOME", not is_loaded({"XDG_CURRENT_DESKTOP": "GNOME"}))


def launcher(desk, report):
    """A launcher starts the program through the session bus."""
    entry = _install(desk)
    desk.process = _launch(desk, entry)
    desk.wait_for_window()
    described = desk.bed.run(["xprop", "-id", str(min(desk.windows())), "WM_CLASS"], stdout=subprocess.PIPE, text=True)
    window_class = described.stdout.read().rpartition('"')[0].rpartition('"')[2]
    desk.bed.stop(described)
    report.promise("the window belongs to the desktop entry",
                   f"\nStartupWMClass={window_class}\n" in entry.read_text("utf-8"), window_class)
    report.promise("a launcher starts the program and shows its window", desk.shows(SWITCH_ON))
    desk.click_control(SETTINGS)
    desk.reader.control(BACK)
    other = desk.other_window()
    _launch(desk, entry).wait()
    report.promise("a second launch brings the same window to the front",
                   comes_true(desk.has_keyboard, 5) and len(desk.windows()) == 1 and desk.shows(BACK))
    other.close()
    _ends_startup(desk, report, "a second start", [desk.program], {"DESKTOP_STARTUP_ID": "start-1_TIME1"})
    _ends_startup(desk, report, "an activation over the bus", [
        "gdbus", "call", "--session", "--dest", _APPLICATION_ID, "--object-path", "/" + _APPLICATION_ID.replace(".", "/"),
        "--method", "org.freedesktop.Application.Activate", "{'desktop-startup-id': <'start-2_TIME2'>}"], {})
    action = _launch(desk, entry, "break-now")
    report.promise(f"the entry's action “{BREAK_NOW}” begins a break", comes_true(
        lambda: len([window for window in desk.probe.state()["windows"]
                     if window["viewable"] and window["overrideRedirect"] and window["width"] >= 1024]) == 2, 5))
    desk.bed.press("Escape")
    desk.bed.stop(action)
    wait_until(desk.has_keyboard, "the keyboard in the window after the break")
    desk.bed.press("ctrl+q")
    report.promise("it ends by its menu's key when the bus has started it", comes_true(lambda: not desk.windows(), 5))
    desk.bed.stop(desk.process)
    (desk.bed.home / "config-launcher/OrvaneBreak/preferences.json").write_text(
        '{"OBOnboarded": true, "OBMenuBarMode": true}')
    desk.process = _launch(desk, entry)
    wait_until(desk.tray.items, "the icon in the tray", 10)
    report.promise("a launch in menu-bar mode shows no window", stays_true(lambda: not desk.windows(), 1.5))
    _launch(desk, entry).wait()
    report.promise("the next launch shows it", comes_true(desk.windows, 5))
    desk.tray.click(QUIT)
    report.promise("it ends when the bus has started it in menu-bar mode", comes_true(lambda: not desk.tray.items(), 5))
    desk.bed.stop(desk.process)


def _ends_startup(desk, report, what, command, environment):
    """Whether the desktop is told that a start is over, in a message to its root window."""
    told = desk.bed.home / "told.txt"
    with open(told, "wb") as output:
        watch = desk.bed.run(["xev", "-root", "-event", "property"], stdout=output)
        # It prints nothing before the first event.
        time.sleep(0.5)
        desk.bed.run(command, environment).wait()
        report.promise(f"the desktop is told that {what} is over",
                       comes_true(lambda: "_NET_STARTUP_INFO_BEGIN" in told.read_text("utf-8", "replace"), 3))
        desk.bed.stop(watch)


def _install(desk):
    """Installs the desktop entry and the D-Bus service; returns the entry."""
    data = desk.bed.home / "data"
    services, entries = data / "dbus-1" / "services", data / "applications"
    for folder in (services, entries):
        folder.mkdir(parents=True, exist_ok=True)
    script = desk.bed.home / "orvanebreak"
    script.write_text(f'#!/bin/sh\nXDG_CONFIG_HOME="{desk.bed.home}/config-launcher" exec "{desk.program}" "$@"\n')
    script.chmod(0o700)
    preferences = desk.bed.home / "config-launcher" / "OrvaneBreak"
    preferences.mkdir(parents=True)
    (preferences / "preferences.json").write_text('{"OBOnboarded": true}')
    (services / f"{_APPLICATION_ID}.service").write_text(f"[D-BUS Service]\nName={_APPLICATION_ID}\nExec={script}\n")
    entry = entries / f"{_APPLICATION_ID}.desktop"
    template = _SOURCES / "packaging" / "application.desktop.in"
    entry.write_text(template.read_text("utf-8").replace("Exec=orvanebreak", f"Exec={script}"), "utf-8")
    subprocess.run(["dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/org/freedesktop/DBus",
                    "org.freedesktop.DBus.ReloadConfig"], env=desk.bed.environment(), check=True, capture_output=True)
    return entry


def _launch(desk, entry, *action):
    return desk.bed.run(["/usr/bin/python3", "-c", _LAUNCH, entry, *action])
