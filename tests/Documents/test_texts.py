#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The documents contain no dead links and nothing unfinished."""

import re
import unittest
import urllib.parse

from documents import ROOT, Document, documents, name

_UNFINISHED = re.compile(r"\b(TODO|FIXME|XXX|TBD|WIP)\b|lorem ipsum|coming soon|à compléter", re.IGNORECASE)
_KINDS = {"Added", "Changed", "Deprecated", "Removed", "Fixed", "Security"}


class Links(unittest.TestCase):
    def test_link_targets_exist(self):
        for path in documents():
            for link in Document(path).links():
                with self.subTest(document=name(path), link=link):
                    self.assertTrue(self._leads_somewhere(path, link))

    def _leads_somewhere(self, path, link):
        address = urllib.parse.urlsplit(link)
        if address.scheme:
            return address.scheme == "https" and bool(address.netloc)
        target = (path.parent / urllib.parse.unquote(address.path)).resolve() if address.path else path
        if not target.exists() or not target.is_relative_to(ROOT):
            return False
        return not address.fragment or address.fragment in Document(target).headings()

    def test_every_picture_is_shown(self):
        shown = {(path.parent / link).resolve() for path in documents() for link in Document(path).links()
                 if not urllib.parse.urlsplit(link).scheme}
        for picture in (ROOT / "docs" / "pictures").iterdir():
            with self.subTest(picture=picture.name):
                self.assertIn(picture, shown)


class Words(unittest.TestCase):
    def test_nothing_is_unfinished(self):
        for path in documents():
            with self.subTest(document=name(path)):
                self.assertNotRegex(path.read_text("utf-8"), _UNFINISHED)

    def test_lines_fit_on_a_screen(self):
        for path in documents():
            for line in Document(path).prose:
                if not line.startswith("|"):
                    with self.subTest(document=name(path), line=line):
                        self.assertLessEqual(len(line), 140)


class French(unittest.TestCase):
    """Signs that French keeps apart from their word stay on its line, and "de" is shortened before the program's name."""

    _FILES = ("docs/guide.fr.md", "docs/confidentialite.fr.md", "packaging/man/orvanebreak.fr.1.in", "packaging/metainfo.xml.in")

    def test_spaces_and_elisions(self):
        for file in self._FILES:
            # Code has its own rules.
            text = re.sub(r"`[^`]*`", "code", (ROOT / file).read_text("utf-8"))
            for line in text.splitlines():
                with self.subTest(file=file, line=line):
                    self.assertNotRegex(line, r"(?<!\\) [:;!?»](\W|$)|« |«$|\b[Dd]e Orvane(Break)")


class Changelog(unittest.TestCase):
    def setUp(self):
        self.text = (ROOT / "CHANGELOG.md").read_text("utf-8")

    def test_begins_with_what_is_unreleased_or_this_version(self):
        version = re.search(r"^project\(\w+ VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text("utf-8"), re.MULTILINE)[1]
        first = re.search(r"^## \[(.+?)\]", self.text, re.MULTILINE)[1]
        self.assertIn(first, ("Unreleased", version))

    def test_sections_are_of_the_known_kinds_and_say_something(self):
        sections = re.split(r"^### ", self.text, flags=re.MULTILINE)[1:]
        self.assertTrue(sections)
        for section in sections:
            title, _, content = section.partition("\n")
            with self.subTest(section=title):
                self.assertIn(title, _KINDS)
                self.assertRegex(content, r"(?m)^- \S")

    def test_released_versions_have_dates(self):
        for version, rest in re.findall(r"^## \[(\d.+?)\](.*)$", self.text, re.MULTILINE):
            with self.subTest(version=version):
                self.assertRegex(rest, r"^ - \d{4}-\d\d-\d\d$")


class Languages(unittest.TestCase):
    """Texts agree across languages and with the program."""

    def _code(self, file):
        """The inline code in the first column of the tables."""
        lines = (ROOT / "docs" / file).read_text("utf-8").splitlines()
        return [re.findall(r"`[^`]+`", line.split("|")[1]) for line in lines if line.startswith("| `")]

    def test_privacy_statements_name_the_same_in_the_same_order(self):
        self.assertTrue(self._code("privacy.md"))
        self.assertEqual(self._code("privacy.md"), self._code("confidentialite.fr.md"))

    def test_guide_gives_the_settings_their_names_in_the_program(self):
        sources = "".join(path.read_text("utf-8") for path in ROOT.glob("OrvaneBreak*/**/*.cpp"))
        # C++ sources split long texts into several literals.
        sources = re.sub(r'"\s*\n\s*"', "", sources)
        guide = (ROOT / "docs" / "guide.fr.md").read_text("utf-8")
        rows = guide.split("## Les réglages")[1].split("\n## ")[0].splitlines()
        names = [line.split("|")[1].strip() for line in rows if line.startswith("|")][2:]
        quoted = [" ".join(text.split()) for text in re.findall(r"«\s([^»]+)\s»", guide)]
        self.assertTrue(names and quoted)
        for text in names + quoted:
            if text not in _NOT_OURS:
                with self.subTest(text=text):
                    self.assertTrue(text in sources)


# Texts of other programs that the guide quotes.
_NOT_OURS = {"AppIndicator and KStatusNotifierItem Support", "Status Tray"}

if __name__ == "__main__":
    unittest.main()
