#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The Flatpak manifest matches the program. It is read but not built.

usage: test_flatpak_manifest.py BUILD-FOLDER"""

import re
import unittest

import yaml

from built import PROJECT

#: Used by Qt and not in the program's sources.
_OF_THE_TOOLKIT = {"com.canonical.AppMenu.Registrar"}
#: Names that every sandbox may talk to, and names that are not services, such as interfaces.
_FREE = re.compile(r"org\.freedesktop\.(portal\..*|DBus.*|Application|appearance|login1\..*)|com\.canonical\.Unity\.LauncherEntry|"
                   r"org\.(gnome\.(Shell|desktop\.interface)|kde\.(plasmashell|StatusNotifierItem|kdeglobals\.General))")


class FlatpakManifest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.path, = (PROJECT / "packaging/flatpak").glob("*.yml")
        cls.text = cls.path.read_text("utf-8")
        cls.manifest = yaml.safe_load(cls.text)
        cls.options = (PROJECT / "cmake/Configuration.cmake").read_text("utf-8")

    def test_names(self):
        application = re.search(r'set\(ORVANE_APP_ID "(.*?)"', self.options)[1]
        self.assertEqual(self.manifest["id"], application)
        self.assertEqual(self.path.stem, application)
        self.assertEqual(self.manifest["command"], "orvanebreak")
        self.assertTrue((PROJECT / f"assets/icon/{self.manifest['rename-icon']}.svg").is_file())

    def test_says_that_it_is_not_built(self):
        self.assertIn("NOT BUILT BY OUR TESTS", self.text)

    def test_allows_exactly_the_bus_names_of_the_program(self):
        allowed = {option.partition("=")[2] for option in self.manifest["finish-args"] if "talk-name=" in option}
        used = set()
        for module in ("OrvaneBreak", "OrvaneBreakCore"):
            for source in [*(PROJECT / module).rglob("*.cpp"), *(PROJECT / module).rglob("*.h")]:
                used |= set(re.findall(r'"((?:org|com)\.[A-Za-z0-9.]+)"', source.read_text("utf-8")))
        self.assertEqual(allowed - _OF_THE_TOOLKIT, {name for name in used if not _FREE.fullmatch(name)})

    def test_nothing_else_is_opened(self):
        others = [option for option in self.manifest["finish-args"] if "talk-name=" not in option]
        self.assertEqual(set(others), {"--socket=wayland", "--socket=x11", "--share=ipc", "--share=network",
                                       "--socket=pulseaudio", "--filesystem=xdg-config/autostart:ro"})

    def test_sources_skip_what_git_ignores(self):
        skipped = self.manifest["modules"][-1]["sources"][0]["skip"]
        presets = re.findall(r"\$\{sourceDir\}/([a-z-]+)", (PROJECT / "CMakePresets.json").read_text("utf-8"))
        self.assertEqual(set(presets) - set(skipped), set())


if __name__ == "__main__":
    unittest.main()
