# SPDX-License-Identifier: GPL-3.0-or-later
"""The common part of the Wayland beds."""

import os
import pathlib
import pwd
import shutil
import subprocess

from PIL import Image

from . import packages
from .bed import CannotStart, Output
from .session import SessionBed
from .waiting import comes_true

#: The account that the desktops run as when the tests run as root: compositors refuse root.
ACCOUNT = "orvanebreak-bed"

LEFT_BUTTON = 0x110
_BUTTONS = {1: LEFT_BUTTON, 2: 0x112, 3: 0x111}
_KEYS = {"Escape": 1, "BackSpace": 14, "Tab": 15, "Return": 28, "ctrl": 29, "shift": 42, "space": 57, " ": 57,
         **{letter: code for first, row in ((2, "1234567890"), (16, "qwertyuiop"), (30, "asdfghjkl"), (44, "zxcvbnm"))
            for code, letter in enumerate(row, first)}}


class WaylandBed(SessionBed):
    """A headless compositor with two virtual monitors, each with a wallpaper of one colour. A picture shows the monitors side
    by side, each in its physical pixels. Its hands, a virtual pointer and keyboard, inject input."""

    account = ACCOUNT
    compositor = True
    panel = True
    #: The panel's first row on the first monitor and the row below its last; negative numbers count from the bottom,
    #: None is the bottom.
    panel_rows = (-30, None)
    panel_colour = (230, 230, 235)
    wallpaper_colours = ((200, 120, 40), (40, 120, 200))
    sizes = ((1280, 720), (1024, 768))
    socket = "wayland-1"

    def __init__(self, helpers):
        super().__init__()
        self.window_manager = self.name.removeprefix("wayland-")
        self.server = None
        self._helpers = pathlib.Path(helpers)
        self._has_display = False

    # -- start and end

    def start(self):
        packages.require("dbus-daemon", *self.required_programs)
        self._require_account()
        self._make_home()
        self.start_bus("session-bus")
        try:
            self._start_compositor()
            self._has_display = True
            self._start_hands()
            self._dress()
        except CannotStart:
            raise
        except Exception as problem:  # noqa: BLE001 - any error means that the desktop is not usable
            reason = f"{type(problem).__name__}: {problem}; the compositor said: {self._last_log_lines()}"
            raise CannotStart(reason) from problem

    #: Programs without which the desktop cannot start, the compositor first.
    required_programs = ()

    def version(self):
        return self._version_of(self.required_programs[0])

    def _start_compositor(self):
        """Starts the compositor as `server` and returns when programs can connect to it."""
        raise NotImplementedError

    def _start_hands(self):
        """Creates the pointer and the keyboard."""
        raise NotImplementedError

    def _dress(self):
        """Starts the wallpaper and the panel."""

    def environment(self):
        variables = {**super().environment(), "XDG_SESSION_TYPE": "wayland"}
        if self._has_display:
            variables["WAYLAND_DISPLAY"] = self.socket
        return variables

    def lend(self, path):
        """Copies the file, and a program's share folder with it, because the folder of tests that run as root may be closed to
        other users."""
        path = pathlib.Path(path)
        if not self._as_account():
            return path
        copy = self.home / "lent" / "bin" / path.name
        if not copy.exists():
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(path, copy)
            share = path.parent.parent / "share" / "OrvaneBreak"
            if path.parent.name == "bin" and share.is_dir():
                shutil.copytree(share, copy.parent.parent / "share" / "OrvaneBreak", dirs_exist_ok=True)
        return copy

    # -- pictures and input

    def logical_place(self, x, y):
        """Converts a position in the picture to the compositor's logical coordinates."""
        for output, (left, top) in zip(self.outputs(), self._logical_corners()):
            if output.x <= x < output.box[2]:
                return (left + (x - output.x) / output.scale, top + (y - output.y) / output.scale)
        raise LookupError(f"{x}, {y} is on no monitor")

    def outputs(self):
        return _side_by_side(self._monitors())

    def _logical_corners(self):
        return [monitor["corner"] for monitor in self._monitors()]

    def _monitors(self):
        """The compositor's description of each monitor, from left to right: name, size, scale, corner."""
        raise NotImplementedError

    def picture(self):
        outputs = self.outputs()
        whole = Image.new("RGB", (outputs[-1].box[2], max(output.height for output in outputs)))
        for output in outputs:
            whole.paste(self._picture_of(output), (output.x, output.y))
        return whole

    def _picture_of(self, output):
        """A picture of one monitor."""
        raise NotImplementedError

    def type(self, text):
        for letter in text:
            self.press(letter)

    def press(self, key):
        codes = [_KEYS[part] for part in (key.split("+") if len(key) > 1 else [key])]
        for code in codes:
            self._key(code, True)
        for code in reversed(codes):
            self._key(code, False)

    def hold(self, key):
        self._key(_KEYS[key], True)
        return lambda: self._key(_KEYS[key], False)

    def move_pointer(self, x, y):
        self._move(*self.logical_place(x, y))

    def click(self, x, y, button=1):
        self.move_pointer(x, y)
        self._button(_BUTTONS[button], True)
        self._button(_BUTTONS[button], False)

    def _move(self, x, y):
        raise NotImplementedError

    def _button(self, code, is_down):
        raise NotImplementedError

    def _key(self, code, is_down):
        raise NotImplementedError

    # -- startup

    def _require_account(self):
        if os.geteuid() != 0:
            return
        try:
            pwd.getpwnam(ACCOUNT)
        except KeyError:
            made = subprocess.run(["useradd", "--system", "--user-group", "--no-create-home", "--shell",
                                   "/usr/sbin/nologin", ACCOUNT], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                                  text=True, check=False)
            if made.returncode != 0:
                raise CannotStart(f"cannot create an account to run it as: {made.stderr.strip()}") from None

    def _run_compositor(self, arguments, environment, is_up):
        """Starts the compositor; raises CannotStart with its last log lines if it ends or is not ready in time."""
        log = self.home / "compositor.log"
        with open(log, "wb") as output:
            self.server = self.run(arguments, environment, stdout=output, stderr=output)
        is_started = comes_true(lambda: self.server.poll() is not None or is_up(), 40) and self.server.poll() is None
        if not is_started:
            raise CannotStart(f"{arguments[0]} did not start: {self._last_log_lines()}")

    def _last_log_lines(self):
        log = self.home / "compositor.log"
        return " | ".join(log.read_text("utf-8", "replace").split("\n")[-12:]) if log.exists() else ""


class ProtocolHands:
    """Hands for compositors with protocols for a virtual pointer and keyboard, held by a helper process."""

    def __init__(self, bed, program):
        self._process = bed.run([bed.lend(program)], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        greeting = self._process.stdout.readline().strip()
        if greeting != "ready":
            raise CannotStart(f"no pointer and keyboard: {greeting}")

    def do(self, *words):
        """Executes one command and waits until the compositor has processed it."""
        self._process.stdin.write(" ".join(str(word) for word in words) + "\n")
        self._process.stdin.flush()
        if self._process.stdout.readline() != "done\n":
            raise RuntimeError(f"the hands failed to execute: {words}")


def _side_by_side(monitors):
    """The outputs of a picture with the monitors side by side."""
    outputs, x = [], 0
    for monitor in monitors:
        outputs.append(Output(monitor["name"], x, 0, *monitor["size"], monitor["scale"]))
        x += monitor["size"][0]
    return outputs
