# SPDX-License-Identifier: GPL-3.0-or-later
"""Beds on a virtual X server."""

import contextlib
import glob
import os
import re

from PIL import Image, ImageGrab

from . import desktop_files, packages
from .bed import CannotStart, NotPossibleHere, Output
from .session import SessionBed
from .waiting import wait_until

#: Two monitors of different sizes.
SMALL = (Output("LEFT", 0, 0, 1280, 720), Output("RIGHT", 1280, 0, 1024, 768))

#: The arguments of the window managers that are tried only with their own compositor.
_COMPOSITING = {"marco": ["--composite"], "muffin": []}


class X11Bed(SessionBed):
    """Xvfb with two monitors; optionally a window manager (openbox, xfwm4, i3, marco, muffin), a compositor (picom, or with
    "own" the window manager's) and a panel at the bottom of the first monitor. Each monitor has a wallpaper of one colour unless
    a picture is given."""

    #: The panel's first row on the first monitor and the row below its last; negative numbers count from the bottom,
    #: None is the bottom.
    panel_rows = (-30, None)
    panel_colour = (230, 230, 235)
    wallpaper_colours = ((200, 120, 40), (40, 120, 200), (120, 160, 80), (160, 80, 140))

    def __init__(self, window_manager=None, compositor=False, panel=False, monitors=SMALL, wallpaper=None,
                 panel_options=None, theme="Clearlooks"):
        super().__init__()
        self.name = "x11-" + (window_manager or "bare")
        self.window_manager = window_manager
        self.compositor = compositor
        self.panel = panel
        self.server = None
        self.panel_process = None
        self.wallpaper = None
        self._monitors = list(monitors)
        self._wallpaper = wallpaper
        self._panel_options = panel_options or {}
        self._theme = theme
        self._display = None

    # -- start and end

    def start(self):
        packages.require(*self._required_programs())
        self._make_home()
        self._start_server()
        self.start_bus("session-bus")
        if self.panel or self.window_manager == "xfwm4":
            self._start_settings()
        if self.window_manager:
            self._start_window_manager()
        if self.compositor is True:
            self._start_picom()
        self.show_wallpaper()
        if self.panel:
            self.panel_process = self.run(["xfce4-panel", "--disable-wm-check"])
            wait_until(self._panel_is_up, "the panel", 20)

    def version(self):
        return self._version_of(self.window_manager) if self.window_manager else "none"

    def environment(self):
        return {**super().environment(), "DISPLAY": self._display or "", "GSETTINGS_BACKEND": "memory"}

    # -- pictures and input

    def outputs(self):
        return sorted(self._monitors, key=lambda output: output.x)

    def picture(self):
        return ImageGrab.grab(xdisplay=self._display)

    def type(self, text):
        self._call(["xdotool", "type", "--delay", "5", text])

    def windows_titled(self, title):
        """The mapped windows with this title, including those in a window manager's frame."""
        found = self._call(["xdotool", "search", "--onlyvisible", "--name", f"^{title}$"])
        return {int(identifier) for identifier in found.split()}

    def window_box(self, identifier):
        """Left, top, right and bottom of a window in the picture, without the window manager's frame."""
        text = self._call(["xwininfo", "-id", str(identifier)])
        x, y, width, height = (int(re.search(rf"{name}: +(-?\d+)", text)[1]) for name in
                               ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))
        return (x, y, x + width, y + height)

    def window_states(self, identifier):
        """The names of a window's _NET_WM_STATE atoms."""
        return set(re.findall(r"_NET_WM_STATE_\w+", self._call(["xprop", "-id", str(identifier), "_NET_WM_STATE"])))

    def close_window(self, identifier):
        """Asks a window to close, like its frame's close button."""
        self._call(["wmctrl", "-i", "-c", str(identifier)])

    def focus(self, identifier):
        """Sets the input focus to a window, as programs do."""
        self._call(["xdotool", "windowfocus", str(identifier)])

    def press(self, key):
        self._call(["xdotool", "key", key])

    def move_pointer(self, x, y):
        self._call(["xdotool", "mousemove", str(round(x)), str(round(y))])

    def hold(self, key):
        self._call(["xdotool", "keydown", key])
        return lambda: self._call(["xdotool", "keyup", key])

    @contextlib.contextmanager
    def keyboard_layout(self, name):
        """Changes the keyboard's layout for a while; the bed's own is "us"."""
        self._call(["setxkbmap", name])
        try:
            yield
        finally:
            self._call(["setxkbmap", "us"])

    def click(self, x, y, button=1, count=1):
        self._call(["xdotool", "mousemove", str(round(x)), str(round(y)), "click", "--repeat", str(count), "--delay", "80",
                    str(button)])

    def switch_workspace(self, index):
        if self.window_manager is None:
            raise NotPossibleHere("without a window manager there are no workspaces")
        if self.window_manager == "i3":
            socket = self._call(["i3", "--get-socketpath"]).strip()
            self._call(["i3-msg", "-s", socket, "workspace", str(index + 1)])
        else:
            self._call(["xdotool", "set_desktop", str(index)])

    def raise_window(self, identifier):
        """Puts a window above all others, as programs do."""
        self._call(["xdotool", "windowraise", str(identifier)])

    def set_text_resolution(self, dots_per_inch):
        """Sets the resolution from which programs take their scale; 96 is scale 1."""
        self._call(["xrdb", "-nocpp", "-merge", self.write("resolution", f"Xft.dpi: {dots_per_inch}\n")])

    def show_wallpaper(self, is_visible=True):
        """Repaints the wallpaper, as after a change of monitors, and waits until it shows if it is visible."""
        path = self._wallpaper or self._home / "wallpaper.png"
        if not self._wallpaper:
            size = (max(output.box[2] for output in self._monitors), max(output.box[3] for output in self._monitors))
            image = Image.new("RGB", size)
            for output, colour in zip(self.outputs(), self.wallpaper_colours):
                image.paste(colour, output.box)
            image.save(path, compress_level=1)
        self.wallpaper = Image.open(path).convert("RGB")
        self._call(["hsetroot", "-root", "-full", str(path)])
        if is_visible:
            wait_until(lambda: all(self.picture().crop(output.box).tobytes() == self.wallpaper.crop(output.box).tobytes()
                                   for output in self._monitors), "the wallpaper")

    # -- startup

    def _required_programs(self):
        programs = ["Xvfb", "xrandr", "xrdb", "xdotool", "xprop", "dbus-daemon", "hsetroot", "wmctrl"]
        programs += [self.window_manager] if self.window_manager else []
        programs += ["picom"] if self.compositor is True else []
        return programs + (["xfce4-panel"] if self.panel else [])

    def _start_server(self):
        width = max(output.box[2] for output in self._monitors)
        height = max(output.box[3] for output in self._monitors)
        self._run_server(["Xvfb", "-screen", "0", f"{width}x{height}x24", "-dpi", "96", "-noreset", "-nolisten", "tcp",
                          "-ac"])
        for index, output in enumerate(self._monitors):
            millimetres = (round(output.width * 25.4 / 96), round(output.height * 25.4 / 96))
            self._call(["xrandr", "--setmonitor", output.name,
                        f"{output.width}/{millimetres[0]}x{output.height}/{millimetres[1]}+{output.x}+{output.y}",
                        "screen" if index == 0 else "none"])

    def _run_server(self, arguments):
        """Starts the X server on a free display; raises CannotStart with its last log lines if that fails."""
        reading, writing = os.pipe()
        log = self._home / "server.log"
        with open(log, "wb") as output:
            self.server = self.run([*arguments, "-displayfd", writing], {"DISPLAY": None}, pass_fds=[writing],
                                   stdout=output, stderr=output)
        os.close(writing)
        with os.fdopen(reading) as answer:
            number = answer.readline().strip()
        if not number:
            raise CannotStart(f"{arguments[0]} did not start: " + " | ".join(log.read_text("utf-8", "replace")
                                                                              .split("\n")[-12:]))
        self._display = ":" + number

    def _start_settings(self):
        programs = glob.glob("/usr/lib/*/xfce4/xfconf/xfconfd") + glob.glob("/usr/lib*/xfce4/xfconf/xfconfd")
        if not programs:
            raise CannotStart(packages.not_installed("xfconfd"))
        if self.panel:
            # Animated buttons would never match a reference picture.
            self.write("config/gtk-3.0/settings.ini", "[Settings]\ngtk-enable-animations=false\n")
            options = {"output": "Primary", **self._panel_options}
            self.write("config/xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml", desktop_files.panel_file(**options))
        self.run([programs[0]])

        def answers():
            return "org.xfce.Xfconf" in self._call(
                ["dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/org/freedesktop/DBus",
                 "org.freedesktop.DBus.ListNames"])
        wait_until(answers, "the settings service")

    def _start_window_manager(self):
        if self.window_manager == "openbox":
            config = self.write("openbox.xml", desktop_files.OPENBOX.format(theme=self._theme))
            self.run(["openbox", "--sm-disable", "--config-file", config])
        elif self.window_manager == "xfwm4":
            self.run(["xfwm4", "--compositor=on" if self.compositor == "own" else "--compositor=off"])
        elif self.window_manager in _COMPOSITING:
            self.run([self.window_manager, *_COMPOSITING[self.window_manager]],
                     {"LIBGL_ALWAYS_SOFTWARE": "1", "XDG_SESSION_TYPE": "x11"})
        else:
            first, second = self._monitors[0].name, self._monitors[-1].name
            self.run(["i3", "-c", self.write("i3.conf", desktop_files.I3.format(first=first, second=second))])
        wait_until(lambda: "window id" in self._call(["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"]),
                   "the window manager")

    def _start_picom(self):
        """Starts picom with shadows, as most of its configurations have them, and makes it repaint everything at every change.
        Otherwise picom 12.5 and 13 paint the wallpaper over the bounding rectangle of all changes in or below translucent
        windows, and whatever was in between is missing until it changes."""
        config = self.write("picom.conf", desktop_files.PICOM)
        self.run(["picom", "--backend", "xrender", "--no-use-damage", "--config", config])
        wait_until(lambda: self._call(["xdotool", "search", "--name", "^picom$"]), "the compositor")

    def _panel_is_up(self):
        first = self._monitors[0]
        bottom = self._panel_options.get("bottom", True)
        place = (first.x + first.width // 2, first.box[3] - 5 if bottom else first.y + 5)
        background = self._panel_options.get("background", (0.9, 0.9, 0.92, 1.0))
        wanted = [round(part * 255) for part in background[:3]]
        seen = self.picture().getpixel(place)
        return background[3] < 1 or all(abs(a - b) <= 3 for a, b in zip(seen, wanted))
