#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The desktop entry, the AppStream metadata and the manuals.

usage: test_desktop_files.py BUILD-FOLDER"""

import configparser
import pathlib
import re
import shlex
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

from built import BUILD_FOLDER, ENVIRONMENT, PROJECT, complaints, configured, output_of

_LANGUAGE = "{http://www.w3.org/XML/1998/namespace}lang"


class DesktopFiles(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.application = configured("ORVANE_APP_ID")
        cls.entry = BUILD_FOLDER / f"OrvaneBreak/{cls.application}.desktop"
        cls.metainfo = BUILD_FOLDER / f"desktop-files/{cls.application}.metainfo.xml"
        cls.program = BUILD_FOLDER / "bin/orvanebreak"

    def test_desktop_entry(self):
        # Version 0.26 does not know this key of the current rules.
        found = [line for line in complaints("desktop-file-validate", self.entry).splitlines() if "SingleMainWindow" not in line]
        self.assertEqual(found, [])
        entry = configparser.RawConfigParser(delimiters="=")
        entry.optionxform = str
        entry.read(self.entry, "utf-8")
        for action in entry["Desktop Entry"]["Actions"].strip(";").split(";"):
            command, option = entry[f"Desktop Action {action}"]["Exec"].split()
            self.assertEqual((command, option), ("orvanebreak", f"--{action}"))
            self.assertIn(option, output_of(self.program, "--help"))
        # X11 desktops find the entry of a window by the class that the toolkit takes from the application's name.
        self.assertEqual(entry["Desktop Entry"]["StartupWMClass"], "OrvaneBreak")
        self.assertEqual(entry["Desktop Entry"]["SingleMainWindow"], "true")
        for key in ("GenericName", "Comment", "Keywords"):
            self.assertIn(f"{key}[fr]", entry["Desktop Entry"])

    def test_service_starts_what_is_installed(self):
        with tempfile.TemporaryDirectory() as folder:
            for name in ("plain", "with a space", "with \"quotes\""):
                prefix = pathlib.Path(folder) / name
                output_of("cmake", "--install", BUILD_FOLDER, "--prefix", prefix, "--component", "service")
                service = configparser.RawConfigParser(delimiters="=")
                service.optionxform = str
                service.read(prefix / f"share/dbus-1/services/{self.application}.service", "utf-8")
                self.assertEqual(shlex.split(service["D-BUS Service"]["Exec"]), [str(prefix / "bin/orvanebreak")])

    def test_metainfo_is_valid(self):
        result = subprocess.run(["appstreamcli", "validate", "--no-net", "--no-color", self.metainfo], env=ENVIRONMENT,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True)
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertNotRegex(result.stdout, r"(?m)^[EW]:")

    def test_metainfo_fits(self):
        component = ElementTree.parse(self.metainfo).getroot()
        self.assertEqual(component.findtext("id"), self.application)
        self.assertEqual(component.findtext("launchable"), self.entry.name)
        self.assertEqual(component.findtext("url[@type='homepage']"), configured("ORVANE_WEBSITE_URL"))
        images = [image.text for image in component.iter("image")]
        self.assertGreaterEqual(len(images), 3)
        for image in images:
            folder, _, name = image.rpartition("/")
            self.assertEqual(folder, configured("ORVANE_WEBSITE_URL").rstrip("/") + "/pictures")
            self.assertTrue((PROJECT / "docs/pictures" / name).is_file(), name)

    def test_metainfo_announces_what_is_released(self):
        version = output_of(self.program, "--version").split()[1]
        heading = re.search(rf"(?m)^## \[?{re.escape(version)}\]? - (\S+)$", (PROJECT / "CHANGELOG.md").read_text("utf-8"))
        releases = [dict(release.attrib) for release in ElementTree.parse(self.metainfo).getroot().iter("release")]
        self.assertEqual(releases, [{"version": version, "date": heading[1]}] if heading else [])

    def test_metainfo_is_in_both_languages(self):
        component = ElementTree.parse(self.metainfo).getroot()
        for parent in component.iter():
            texts = [child for child in parent if child.tag in ("summary", "caption", "p", "li")]
            languages = [child.get(_LANGUAGE, "en") for child in texts]
            self.assertEqual(languages, ["en", "fr"] * (len(texts) // 2), parent.tag)

    def test_manual(self):
        options = set(re.findall(r"--[a-z-]+", output_of(self.program, "--help")))
        self.assertGreaterEqual(len(options), 4)
        guide = (PROJECT / "docs/guide.fr.md").read_text("utf-8").split("## Où sont tes données")[1]
        places = re.findall(r"(?m)^\| `([^`]+)/?` \|", guide)
        self.assertGreaterEqual(len(places), 6)
        for name in ("orvanebreak.1", "orvanebreak.fr.1"):
            page = BUILD_FOLDER / "desktop-files" / name
            result = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", page],
                                    env={**ENVIRONMENT, "MANWIDTH": "100", "MAN_KEEP_FORMATTING": "", "MANROFFOPT": "-c"},
                                    stdin=subprocess.DEVNULL, capture_output=True, text=True, check=True)
            self.assertEqual(result.stderr, "", name)
            # Bold letters are printed twice, or between escapes.
            shown = re.sub(".\b|\x1b\\[[0-9;]*m", "", result.stdout)
            self.assertEqual(set(re.findall(r"(?<![\w-])--[a-z-]+", shown)), options, name)
            self.assertIn(f"autostart/{self.application}.desktop", shown)
            for place in places:
                self.assertIn(place.removesuffix("/"), shown, name)


if __name__ == "__main__":
    unittest.main()
