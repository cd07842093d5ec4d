# SPDX-License-Identifier: GPL-3.0-or-later
"""A desktop without layer surfaces: GNOME Shell on Wayland, with XWayland."""

import io
import json
import os
import pathlib
import re

import dbus
from PIL import Image

from . import desktop_files
from .bed import CannotStart, NotPossibleHere
from .waiting import comes_true, wait_until
from .wayland import WaylandBed

_SHELL = "org.gnome.Shell"
_REMOTE = "org.gnome.Mutter.RemoteDesktop"
_DISPLAYS = "org.gnome.Mutter.DisplayConfig"
_TEMPORARY = 1
_X_SOCKETS = pathlib.Path("/tmp/.X11-unix")

#: Hides the overview of a new session, and the clock, which would make pictures differ, once the shell has started.
_TIDY = ("Main.layoutManager._startingUp || "
         "(Main.overview.hide(), Main.panel.statusArea.dateMenu.hide(), Main.overview.visible)")

#: The shell's objects with the methods open and close; the name of the menu changed with GNOME Shell 44.
_OWN = {"overview": "({open: () => Main.overview.show(), close: () => Main.overview.hide()})",
        "menu": "(Main.panel.statusArea.quickSettings || Main.panel.statusArea.aggregateMenu).menu"}


class GnomeBed(WaylandBed):
    """Meta-0 with the panel at its top, and Meta-1 right of it."""

    name = "wayland-gnome"
    required_programs = ("gnome-shell", "Xwayland")
    panel_rows = (0, 32)
    panel_colour = (0, 0, 0)
    wallpaper_colours = ((200, 120, 40), (200, 120, 40))
    #: Wide enough for another program's window next to the texts of a break.
    sizes = ((1600, 900), (1024, 768))
    socket = "wayland-gnome"

    def __init__(self, helpers):
        super().__init__(helpers)
        self._bus = None
        self._system_bus_address = None
        self._x_display = None
        self._known = None
        self._all = None

    def environment(self):
        variables = {**super().environment(), "XDG_CURRENT_DESKTOP": "GNOME", "GSETTINGS_BACKEND": "keyfile"}
        if self._system_bus_address:
            variables["DBUS_SYSTEM_BUS_ADDRESS"] = self._system_bus_address
        if self._x_display:
            variables["DISPLAY"] = self._x_display
            keys = (self.home / "runtime").glob(".mutter-Xwaylandauth.*")
            newest = max(keys, key=lambda path: path.stat().st_mtime, default=None)
            variables["XAUTHORITY"] = str(newest or "")
        return variables

    def _start_compositor(self):
        self.write("config/glib-2.0/settings/keyfile", desktop_files.GNOME_SETTINGS.format(
            colour="#%02x%02x%02x" % self.wallpaper_colours[0]))
        self._start_logins()
        # A minimal system has no service that makes this folder, which XWayland needs.
        if os.geteuid() == 0:
            _X_SOCKETS.mkdir(exist_ok=True)
            _X_SOCKETS.chmod(0o1777)
        monitors = [word for width, height in self.sizes for word in ("--virtual-monitor", f"{width}x{height}")]
        self._run_compositor(["gnome-shell", "--headless", "--wayland", "--unsafe-mode", "--wayland-display",
                              self.socket, *monitors], {"LIBGL_ALWAYS_SOFTWARE": "1"},
                             (self.home / "runtime" / self.socket).exists)
        self._bus = dbus.bus.BusConnection(self._bus_address)
        self._bus.set_exit_on_disconnect(False)
        wait_until(lambda: all(map(self._bus.name_has_owner, (_SHELL, _REMOTE))), "the shell on the bus", 40)
        log = (self.home / "compositor.log").read_text("utf-8", "replace")
        found = re.search(r"public X11 display (:\d+)", log)
        self._x_display = found and found[1]
        answers = []
        if not comes_true(lambda: answers.append(self._evaluate(_TIDY)) or answers[-1] == (True, "false"), 20):
            raise CannotStart(f"the shell does not leave its overview: {answers[-1]}")

    def _start_logins(self):
        """Starts a private system bus with a stand-in for the login service, which the shell queries."""
        _, self._system_bus_address = self.start_bus("system-bus")
        self.run(["/usr/bin/python3", "-B", "-m", "dbusmock", "--system", "--template", "logind"])
        bus = dbus.bus.BusConnection(self._system_bus_address)
        bus.set_exit_on_disconnect(False)
        if not comes_true(lambda: bus.name_has_owner("org.freedesktop.login1"), 10):
            raise CannotStart("no stand-in for the login service (Debian package: python3-dbusmock)")
        bus.close()

    def end(self):
        if self._bus:
            self._bus.close()
        super().end()

    def _start_hands(self):
        service = self._object(_REMOTE, "/org/gnome/Mutter/RemoteDesktop")
        self._hands = dbus.Interface(self._bus.get_object(_REMOTE, service.CreateSession(), introspect=False),
                                     _REMOTE + ".Session")
        self._hands.Start()
        # Programs learn of a keyboard and a pointer at their first use, too late for that first event.
        self.press("shift")
        self._move(self.sizes[0][0] / 2, self.sizes[0][1] / 2)

    def _dress(self):
        places = [(output.x + 5, output.box[3] - 5) for output in self.outputs()]
        wait_until(lambda: [self.picture().getpixel(place) for place in places] == list(self.wallpaper_colours),
                   "the wallpapers", 20)

    def _object(self, name, path, interface=None):
        return dbus.Interface(self._bus.get_object(name, path, introspect=False), interface or name)

    def _evaluate(self, script):
        """Runs a script in the shell; returns whether it succeeded, and its result as the shell prints it."""
        try:
            succeeded, result = self._object(_SHELL, "/org/gnome/Shell").Eval(script)
        except dbus.DBusException as problem:
            return False, str(problem)
        return bool(succeeded), str(result)

    def _monitors(self):
        if self._known is None:
            _, monitors, logical, _ = self._object(_DISPLAYS, "/org/gnome/Mutter/DisplayConfig").GetCurrentState()
            modes = {names[0]: mode for names, known, _ in monitors for mode in known
                     if mode[6].get("is-current", False)}
            found = []
            for x, y, scale, _, _, used, _ in logical:
                name = used[0][0]
                found.append({"name": str(name), "mode": str(modes[name][0]), "scale": float(scale),
                              "size": tuple(int(side) for side in modes[name][1:3]), "corner": (int(x), int(y))})
            self._known = sorted(found, key=lambda monitor: monitor["corner"])
            self._all = self._all or list(self._known)
        return self._known

    def _configure(self, monitors):
        """Turns these monitors on, side by side, and the others off. This shell expects their corners in physical pixels."""
        service = self._object(_DISPLAYS, "/org/gnome/Mutter/DisplayConfig")
        serial, *_ = service.GetCurrentState()
        wanted, x = [], 0
        for monitor in monitors:
            wanted.append((dbus.Int32(x), dbus.Int32(0), dbus.Double(monitor["scale"]), dbus.UInt32(0), x == 0,
                           [(monitor["name"], monitor["mode"], dbus.Dictionary({}, signature="sv"))]))
            x += monitor["size"][0]
        service.ApplyMonitorsConfig(serial, dbus.UInt32(_TEMPORARY), dbus.Array(wanted, signature="(iiduba(ssa{sv}))"),
                                    dbus.Dictionary({}, signature="sv"), signature="uua(iiduba(ssa{sv}))a{sv}")
        self._known = None

    def plug(self, name):
        self._configure(self._all)

    def unplug(self, name):
        left = [monitor for monitor in self._monitors() if monitor["name"] != name]
        if not left:
            raise NotPossibleHere("the shell keeps its last monitor")
        self._configure(left)

    def set_scale(self, name, scale):
        """Not possible: X11 programs learn the scale from a service that does not run here."""
        raise NotPossibleHere("the service that tells X11 programs the scale does not run here")

    def open_own(self, name):
        self._evaluate(f"{_OWN[name]}.open(); 1")

    def close_own(self, name):
        self._evaluate(f"{_OWN[name]}.close(); 1")

    def logical_place(self, x, y):
        return (x, y)

    def picture(self):
        path = self.home / "runtime" / "picture.png"
        succeeded, _ = self._object("org.gnome.Shell.Screenshot", "/org/gnome/Shell/Screenshot").Screenshot(
            False, False, str(path))
        if not succeeded:
            raise RuntimeError("the shell took no screenshot")
        return Image.open(io.BytesIO(path.read_bytes())).convert("RGB")

    def _move(self, x, y):
        """Moves by the distance from the current position, because the session supports only relative motion."""
        x, y = round(x), round(y)
        start = self._pointer()
        self._hands.NotifyPointerMotionRelative(float(x - start[0]), float(y - start[1]))
        wait_until(lambda: self._pointer() == [x, y], f"the pointer at {x}, {y}")

    def _pointer(self):
        return [round(part) for part in json.loads(self._evaluate("global.get_pointer()")[1])[:2]]

    def _button(self, code, is_down):
        self._hands.NotifyPointerButton(dbus.Int32(code), is_down)

    def _key(self, code, is_down):
        self._hands.NotifyKeyboardKeycode(dbus.UInt32(code), is_down)
