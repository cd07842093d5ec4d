#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""tools/install-packages on different systems, each simulated by a folder of mostly fake programs."""

import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
_BASE = ("bash", "awk", "cat", "env", "grep", "mktemp", "rm", "sed", "tail", "tr", "xargs")
_SYSTEMS = {"Fedora": "ID=fedora\n", "Arch": "ID=arch\n",
            "openSUSE": 'ID="opensuse-tumbleweed"\nID_LIKE="opensuse suse"\n'}
_TOUR = {
    "Fedora": "sudo dnf install xorg-x11-server-Xvfb xrandr xprop xwininfo setxkbmap xdotool wmctrl hsetroot openbox picom "
              "xfce4-panel xfconf xterm dbus-daemon dbus-tools fontconfig python3 python3-pillow",
    "Arch": "sudo pacman -S --needed xorg-server-xvfb xorg-xrandr xorg-xprop xorg-xwininfo xorg-setxkbmap xdotool wmctrl hsetroot "
            "openbox picom xfce4-panel xfconf xterm dbus fontconfig python python-pillow",
    "openSUSE": "sudo zypper install xorg-x11-server-Xvfb xrandr xprop xwininfo setxkbmap xdotool wmctrl hsetroot openbox picom "
                "xfce4-panel xfconf xterm dbus-1 fontconfig python3 python3-Pillow"}
_TOOLS = ("cmake", "ninja", "c++", "pkg-config")


class System(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        (self.folder / "bin").mkdir()
        for program in _BASE:
            (self.folder / "bin" / program).symlink_to(shutil.which(program))

    def pretend(self, program, script="exit 0"):
        path = self.folder / "bin" / program
        path.write_text(f"#!/bin/sh\n{script}\n")
        path.chmod(0o755)

    def install(self, release, *groups):
        (self.folder / "os-release").write_text(release)
        return subprocess.run([ROOT / "tools" / "install-packages", *groups], capture_output=True, text=True, check=False, env={
            "PATH": str(self.folder / "bin"), "ORVANE_OS_RELEASE": str(self.folder / "os-release"), "TMPDIR": str(self.folder)})

    def command(self, release, *groups):
        return re.search(r"(?m)^sudo .*$", self.install(release, *groups).stdout)[0]


class OtherDistributions(System):
    def test_readme_has_the_commands_for_building(self):
        readme = (ROOT / "README.md").read_text("utf-8")
        for name, release in _SYSTEMS.items():
            with self.subTest(name):
                self.assertIn(f"\n    {self.command(release, 'build')}   # {name}\n", readme)

    def test_commands_for_the_tour(self):
        for name, release in _SYSTEMS.items():
            with self.subTest(name):
                self.assertEqual(self.command(release, "tour"), _TOUR[name])
                both = [*self.command(release, "build").split(), *_TOUR[name].split()]
                self.assertEqual(set(self.command(release, "build", "tour").split()), set(both))

    def test_systems_like_these(self):
        self.assertEqual(self.command("ID=endeavouros\nID_LIKE=arch\n", "tour"), _TOUR["Arch"])
        self.assertEqual(self.command('ID=nobara\nID_LIKE="rhel centos fedora"\n', "tour"), _TOUR["Fedora"])
        self.assertEqual(self.command('ID="opensuse-leap"\nID_LIKE="suse opensuse"\n', "tour"), _TOUR["openSUSE"])

    def test_unknown_packages_are_listed_by_their_debian_names(self):
        said = self.install(_SYSTEMS["Fedora"], "coverage").stdout.splitlines()[-1]
        self.assertEqual(said, "These packages, by their Debian names, have other names here: gcovr")

    def test_their_own_package_manager_comes_before_apt(self):
        self.pretend("apt-get", "exit 1")
        self.pretend("dpkg-query")
        self.assertEqual(self.command(_SYSTEMS["Fedora"], "tour"), _TOUR["Fedora"])

    def test_succeeds_with_installed_dependencies(self):
        result = self.install(_SYSTEMS["Arch"], "build")
        self.assertEqual(result.returncode, 1)
        for program in _TOOLS:
            self.assertIn(f" {program} ", result.stderr)
            self.pretend(program)
        self.assertEqual(self.install(_SYSTEMS["Arch"], "build").returncode, 0)
        self.pretend("pkg-config", '[ "$2" != libsodium ]')
        result = self.install(_SYSTEMS["Arch"], "build")
        self.assertEqual((result.returncode, result.stderr), (1, "install-packages: not found: libsodium\n"))

    def test_unknown_systems(self):
        result = self.install("ID=unheard-of\n", "tour")
        self.assertIn("On Debian the project needs these packages: xvfb x11-xserver-utils x11-utils x11-xkb-utils xdotool wmctrl",
                      result.stdout)
        self.assertEqual((result.returncode, result.stderr),
                         (1, "install-packages: not found: cmake ninja c++ pkg-config\n"))
        for program in _TOOLS:
            self.pretend(program)
        self.pretend("pkg-config", "exit 1")
        self.assertEqual(self.install("ID=unheard-of\n", "tour").returncode, 0)


class Debian(System):
    def setUp(self):
        super().setUp()
        self.pretend("id", "echo 0")
        self.pretend("dpkg-query", "echo installed dbus; echo config-files xterm; echo installed python3")
        self.pretend("apt-get", f'echo "$@" >>{self.folder}/asked; [ ! -e {self.folder}/broken ] || {{ echo broken; exit 1; }}')

    def asked(self, known, *groups):
        """The apt commands on a system whose apt knows these packages."""
        self.pretend("apt-cache", f'for name; do case " {known} " in *" $name "*) echo "Package: $name" ;; esac; done')
        result = self.install("ID=debian\n", *groups)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return (self.folder / "asked").read_text().splitlines()

    def test_installs_what_is_missing(self):
        update, install = self.asked("", "tour")
        self.assertEqual(update, "update")
        wanted = install.split()
        self.assertEqual(wanted[:3], ["install", "--yes", "--no-install-recommends"])
        self.assertIn("xterm", wanted)
        self.assertFalse({"dbus", "python3"} & set(wanted))

    def test_takes_the_first_available_alternative(self):
        for known, chosen in (("libkscreen-bin", "libkscreen-bin"), ("libkf5screen-bin", "libkf5screen-bin"),
                              ("libkf5screen-bin libkscreen-bin", "libkscreen-bin")):
            with self.subTest(known=known):
                wanted = self.asked(known, "desktops")[-1].split()
                self.assertEqual([name for name in wanted if "screen-bin" in name], [chosen])

    def test_skips_installed_packages(self):
        self.pretend("dpkg-query", "echo installed gcovr")
        self.assertEqual(self.install("ID=debian\n", "coverage").returncode, 0)
        self.assertFalse((self.folder / "asked").exists())

    def test_prints_the_output_of_apt_when_it_fails(self):
        (self.folder / "broken").touch()
        self.pretend("apt-cache")
        result = self.install("ID=debian\n", "coverage")
        self.assertEqual((result.returncode, result.stderr), (1, "broken\n"))

    def test_unknown_groups(self):
        result = self.install("ID=debian\n", "tuor")
        self.assertEqual((result.returncode, result.stderr), (2, "install-packages: unknown group: tuor\n"))


if __name__ == "__main__":
    unittest.main()
