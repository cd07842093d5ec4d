# SPDX-License-Identifier: GPL-3.0-or-later
"""The Debian packages of the programs, modules and libraries that this project uses, as named in tools/packages."""

import shutil

from .bed import CannotStart

#: Maps each program to its package, or to several.
OF_PROGRAM = {
    "Xorg": "xserver-xorg-core xserver-xorg-video-dummy", "Xvfb": "xvfb", "Xwayland": "xwayland", "addr2line": "binutils",
    "appstreamcli": "appstream", "at-spi-bus-launcher": "at-spi2-core", "c++": "g++", "c++filt": "binutils",
    "clang": "clang", "clang++": "clang libclang-rt-dev", "clang-format-19": "clang-format-19",
    "clang-tidy-19": "clang-tidy-19",
    "cmake": "cmake", "cpack": "cmake", "cppcheck": "cppcheck", "ctest": "cmake", "dbus-daemon": "dbus",
    "dbus-monitor": "dbus", "dbus-run-session": "dbus", "dbus-send": "dbus",
    "desktop-file-validate": "desktop-file-utils", "dpkg-shlibdeps": "dpkg-dev", "dunst": "dunst", "dunstctl": "dunst",
    "dunstify": "dunst", "fc-match": "fontconfig", "file": "file", "gcov": "g++", "gcovr": "gcovr",
    "git": "git", "gnome-shell": "gnome-shell", "grim": "grim", "gtklock": "gtklock|swaylock libpam-wrapper",
    "hsetroot": "hsetroot",
    "i3": "i3-wm", "i3-msg": "i3-wm", "i3lock": "i3lock libpam-wrapper", "kscreen-doctor": "libkscreen-bin|libkf5screen-bin",
    "kwin_wayland": "kwin-wayland", "labwc": "labwc|sway",
    "lintian": "lintian", "llvm-symbolizer": "llvm", "man": "man-db", "marco": "marco",
    "mate-screensaver": "mate-screensaver", "mate-screensaver-command": "mate-screensaver", "mmdebstrap": "mmdebstrap",
    "muffin": "muffin", "ninja": "ninja-build", "objcopy": "binutils", "objdump": "binutils",
    "openbox": "openbox", "openssl": "openssl", "orca": "orca", "parec": "pulseaudio-utils", "picom": "picom",
    "pkg-config": "pkg-config", "pulseaudio": "pulseaudio", "python3": "python3", "readelf": "binutils",
    "setxkbmap": "x11-xkb-utils", "strip": "binutils", "sway": "sway", "swaybar": "sway", "swaybg": "swaybg",
    "swaylock": "swaylock libpam-wrapper", "swaymsg": "sway",
    "systemd-journal-remote": "systemd-journal-remote", "tint2": "tint2", "valgrind": "valgrind", "waybar": "waybar",
    "wayfire": "wayfire", "wayland-scanner": "libwayland-bin", "wlr-randr": "wlr-randr",
    "wmctrl": "wmctrl", "xdotool": "xdotool", "xev": "x11-utils",
    "xfce4-panel": "xfce4-panel",
    "xfconfd": "xfconf", "xfwm4": "xfwm4", "xprop": "x11-utils", "xrandr": "x11-xserver-utils", "xrdb": "x11-xserver-utils",
    "xsecurelock": "xsecurelock libpam-wrapper", "xterm": "xterm", "xwininfo": "x11-utils", "zstd": "zstd"}

#: Maps each Python module to its package.
OF_MODULE = {
    "PIL": "python3-pil", "dbus": "python3-dbus", "dbusmock": "python3-dbusmock", "gi": "python3-gi",
    "gi.repository.Atspi": "gir1.2-atspi-2.0", "gi.repository.GLib": "python3-gi", "gi.repository.Gio": "python3-gi",
    "yaml": "python3-yaml"}

#: Maps each library that CMake or pkg-config looks for to its packages.
OF_LIBRARY = {
    "PkgConfig": "pkg-config", "PlasmaWaylandProtocols": "plasma-wayland-protocols", "Qt6Core": "qt6-base-dev",
    "Qt6DBus": "qt6-base-dev", "Qt6Gui": "qt6-base-dev", "Qt6GuiPrivate": "qt6-base-private-dev",
    "Qt6HttpServer": "qt6-httpserver-dev qt6-websockets-dev", "Qt6Network": "qt6-base-dev", "Qt6Svg": "qt6-svg-dev",
    "Qt6Test": "qt6-base-dev", "Qt6Widgets": "qt6-base-dev", "libarchive": "libarchive-dev",
    "libcanberra": "libcanberra-dev", "libcurl": "libcurl4-openssl-dev",
    "libsodium": "libsodium-dev", "libsystemd": "libsystemd-dev",
    "nlohmann_json": "nlohmann-json3-dev", "wayland-client": "libwayland-dev", "wayland-protocols": "wayland-protocols",
    "wayland-server": "libwayland-dev", "xcb": "libxcb1-dev", "xcb-damage": "libxcb-damage0-dev",
    "xcb-screensaver": "libxcb-screensaver0-dev"}


def not_installed(*programs):
    """The message about missing programs."""
    packages = " ".join(OF_PROGRAM.get(program, program) for program in programs)
    return f"not installed: {' '.join(programs)} (Debian packages: {packages})"


def require(*programs):
    """Raises CannotStart if one of the programs is missing."""
    missing = [program for program in programs if not shutil.which(program)]
    if missing:
        raise CannotStart(not_installed(*missing))
