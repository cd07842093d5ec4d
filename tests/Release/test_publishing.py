#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""tools/release on a small source tree: its keys, its refusals, and the feed that it writes."""

import base64
import datetime
import email.utils
import json
import os
import pathlib
import shutil
import stat
import subprocess
import tarfile
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

from tree import PROJECT

_NAMESPACE = "{http://www.andymatuschak.org/xml-namespaces/sparkle}"
# The DER prefix of a 32-byte Ed25519 public key.
_KEY_PREFIX = bytes.fromhex("302a300506032b6570032100")
_CMAKE = """cmake_minimum_required(VERSION 3.25)
project(OrvaneBreak VERSION @VERSION@ LANGUAGES NONE)
file(WRITE ${CMAKE_BINARY_DIR}/Info.json
    "{\\"CFBundleShortVersionString\\": \\"${PROJECT_VERSION}\\", \\"SUPublicEDKey\\": \\"${ORVANE_UPDATE_PUBLIC_KEY_B64}\\",
      \\"SUFeedURL\\": \\"https://example.org/feed.xml\\"}")
add_custom_target(orvanebreak-program)
install(FILES ${CMAKE_BINARY_DIR}/Info.json DESTINATION share/OrvaneBreak COMPONENT data)
install(PROGRAMS /usr/bin/true DESTINATION bin RENAME orvanebreak-program COMPONENT archive EXCLUDE_FROM_ALL)
"""
_CHANGES = """# Changelog

## [Unreleased]

- Nobody has this yet.

## [0.3.0] - 2024-06-01

### Added

- L'œil cligne : <b> & "co".

## [0.2.0] - 2024-01-01

- The first one.

## [0.1.0]
"""


_NEWS = """# Les nouveautés

## [0.3.0] - 2024-06-01

### Plus calme

- L'œil **cligne** : <b> & "co",
  [sur deux lignes](https://example.org/).
- Le `reste`.

## [0.2.0] - 2024-01-01

- La première.
"""
_DEFINITIONS = {"ORVANE_FEED_URL": "https://example.org/feed.xml", "ORVANE_SERVER_BASE": "https://example.org",
                "ORVANE_PUBLIC_KEY_B64": "A" * 43 + "=", "ORVANE_SUPPORT_EMAIL": "mail@example.org",
                "ORVANE_WEBSITE_NAME": "example.org", "ORVANE_WEBSITE_URL": "https://example.org/"}


def run(*command, **options):
    return subprocess.run([str(part) for part in command], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          timeout=100, **options)


class ToolCase(unittest.TestCase):
    """The tool in a temporary source tree, with a private key outside it."""

    def setUp(self):
        self.scratch = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.scratch)
        self.project = self.scratch / "source"
        shutil.copytree(PROJECT / "tools/releasing", self.project / "tools/releasing",
                        ignore=shutil.ignore_patterns("__pycache__"))
        shutil.copy(PROJECT / "tools/release", self.project / "tools/release")
        shutil.copy(PROJECT / ".gitignore", self.project / ".gitignore")
        (self.project / "docs").mkdir()
        (self.project / "docs/nouveautes.fr.md").write_text(_NEWS, "utf-8")
        (self.project / "CHANGELOG.md").write_text(_CHANGES, "utf-8")
        self.key = self.scratch / "key"
        self.appcast = self.scratch / "feed/appcast.xml"
        self.output = self.scratch / "output"
        self.git("init", "--quiet")
        self.set_version("0.2.0")

    def git(self, *arguments):
        result = run("git", "-c", "user.name=Zoé", "-c", "user.email=zoe@example.org", "-c", "commit.gpgsign=false",
                     *arguments, cwd=self.project)
        self.assertEqual(result.returncode, 0, result.stderr)

    def set_version(self, version):
        (self.project / "CMakeLists.txt").write_text(_CMAKE.replace("@VERSION@", version))
        self.git("add", "--all")
        self.git("commit", "--quiet", "--allow-empty", "--message", "Make it " + version)

    def tool(self, *arguments):
        return run(self.project / "tools/release", *arguments)

    def make_key(self):
        result = self.tool("keygen", "--private-key", self.key)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout.strip()

    def publish(self, *options, test_command="true", definitions=_DEFINITIONS):
        return self.tool("publish", "--private-key", self.key, "--appcast", self.appcast, "--output", self.output,
                         "--archive-url-base", "https://example.org/téléchargements/", "--test-command", test_command,
                         *(f"-D{name}={value}" for name, value in definitions.items()), *options)

    def publish_well(self, *options):
        result = self.publish(*options)
        self.assertEqual(result.returncode, 0, result.stderr)
        return pathlib.Path(result.stdout.strip())

    def items(self):
        root = ElementTree.parse(self.appcast).getroot()
        self.assertEqual((root.tag, root.get("version")), ("rss", "2.0"))
        return root.findall("channel/item")


class Key(ToolCase):
    def test_new_key(self):
        public_key = self.make_key()
        self.assertEqual(len(base64.b64decode(public_key, validate=True)), 32)
        self.assertEqual(stat.S_IMODE(self.key.stat().st_mode), 0o600)
        self.assertNotIn("PRIVATE", public_key)

    def test_whatever_the_mask(self):
        for mask in (0, 0o777):
            result = run(self.project / "tools/release", "keygen", "--private-key", self.scratch / f"key{mask}", umask=mask)
            self.assertEqual(result.returncode, 0, result.stderr)
            self.assertEqual(stat.S_IMODE((self.scratch / f"key{mask}").stat().st_mode), 0o600)

    def test_not_in_the_source_tree(self):
        (self.scratch / "link").symlink_to(self.project)
        for path in (self.project / "key", self.project / "build" / "key", self.scratch / "link/key",
                     self.scratch / "output/../source/key"):
            result = self.tool("keygen", "--private-key", path)
            self.assertEqual((result.returncode, result.stdout), (1, ""), path)
            self.assertIn("must not be in the source tree", result.stderr)
        self.assertEqual(list(self.project.rglob("key")), [])

    def test_never_overwrites_a_file(self):
        self.make_key()
        content = self.key.read_bytes()
        self.assertEqual(self.tool("keygen", "--private-key", self.key).returncode, 1)
        self.assertEqual(self.key.read_bytes(), content)


class Refusals(ToolCase):
    def setUp(self):
        super().setUp()
        self.make_key()

    def assert_refused(self, text, *options, is_early=True, **changes):
        before = self.appcast.read_bytes() if self.appcast.exists() else None
        result = self.publish(*options, **changes)
        self.assertEqual((result.returncode, result.stdout), (1, ""))
        self.assertTrue(result.stderr.startswith("release: "), result.stderr)
        if is_early:
            self.assertNotIn("release: tests", result.stderr)
        self.assertIn(text, result.stderr)
        self.assertEqual(self.appcast.read_bytes() if self.appcast.exists() else None, before)

    def test_changed_file(self):
        with open(self.project / "CHANGELOG.md", "a") as file:
            file.write("\n")
        self.assert_refused("there are uncommitted changes:\n M CHANGELOG.md")

    def test_new_file(self):
        (self.project / "forgotten.cpp").touch()
        self.assert_refused("?? forgotten.cpp")

    def test_version_that_is_not_new(self):
        self.publish_well()
        for version in ("0.2.0", "0.1.0", "0.2", "0.1.99"):
            with self.subTest(version):
                self.set_version(version)
                self.assert_refused(f"the version is not new: CMakeLists.txt has {version}, the feed already has 0.2.0")

    def test_version_older_than_a_later_item(self):
        self.appcast.parent.mkdir()
        self.appcast.write_text(f"""<rss version="2.0" xmlns:s="{_NAMESPACE[1:-1]}"><channel>
            <item><s:version>0.1</s:version></item><item><enclosure s:version="0.10.0"/></item></channel></rss>""")
        self.assert_refused("the feed already has 0.10.0")

    def test_nothing_in_the_changelog(self):
        for version in ("0.2.1", "0.1.0", "0.3", "0.20.0"):
            with self.subTest(version):
                self.set_version(version)
                self.assert_refused(f"CHANGELOG.md has no section about {version}")

    def test_failing_tests(self):
        self.assert_refused("the tests fail: exit 3", test_command="exit 3", is_early=False)
        self.assertFalse(self.output.exists())

    def test_key_that_others_can_read(self):
        self.key.chmod(0o640)
        self.assert_refused("others can read the private key")

    def test_missing_or_invalid_key(self):
        self.key.write_text("nonsense")
        self.assert_refused("openssl: ")
        self.key.unlink()
        self.assert_refused("the private key cannot be read")

    def test_build_with_another_key(self):
        self.assert_refused("another public key than the signing key's", "-DORVANE_UPDATE_PUBLIC_KEY_B64=" + "A" * 43 + "=")

    def test_nothing_in_the_news(self):
        self.set_version("0.1.0")
        (self.project / "CHANGELOG.md").write_text(_CHANGES + "\n- Something.\n", "utf-8")
        self.git("commit", "--quiet", "--all", "--message", "Change it")
        self.assert_refused("docs/nouveautes.fr.md has no section about 0.1.0")

    def test_incomplete_configuration(self):
        for name in _DEFINITIONS:
            with self.subTest(name):
                rest = {other: value for other, value in _DEFINITIONS.items() if other != name}
                self.assert_refused(f"not configured, see docs/releasing.md: -D{name}=...", definitions=rest)
        self.assert_refused("ends with /api", definitions={**_DEFINITIONS, "ORVANE_SERVER_BASE": "https://example.org/api"})

    def test_minimum_that_is_no_version(self):
        self.assert_refused("not a version of the C library: Debian 12", "--minimum-system-version", "Debian 12")

    def test_feed_of_another_key(self):
        self.publish_well()
        self.set_version("0.3.0")
        self.key.unlink()
        self.make_key()
        self.assert_refused("the feed was changed, or is signed with another key")

    def test_feed_that_programs_would_not_accept(self):
        self.publish_well()
        self.set_version("0.3.0")
        text = self.appcast.read_text("utf-8")
        for more, reason in (("<item/>" * 1_000, "the feed is larger"), (f"<link>{'x' * 1_048_576}</link>", "the feed is larger")):
            self.appcast.write_text(text.replace("<title>OrvaneBreak<", more + "<title>OrvaneBreak<", 1), "utf-8")
            self.tool("sign", "--private-key", self.key, "--appcast", self.appcast)
            result = self.tool("sign", "--private-key", self.key, "--appcast", self.appcast)
            self.assertEqual(result.returncode, 1)
            self.assertIn(reason, result.stderr)
        (self.project / "docs/nouveautes.fr.md").write_text("## 0.3.0\n\n" + "x" * 20_001)
        self.appcast.write_text(text, "utf-8")
        self.git("commit", "--quiet", "--all", "--message", "Write too much")
        self.assert_refused("the notes are longer")

    def test_address_without_https(self):
        for address in ("http://example.org/", "ftp://example.org/", "example.org"):
            self.assert_refused("not an HTTPS address", "--archive-url-base", address)

    def test_file_that_is_not_a_feed(self):
        self.appcast.parent.mkdir()
        for content, text in (("<rss><channel>", "cannot be read"), ("<html/>", "not an update feed"), ("", "cannot be read")):
            self.appcast.write_text(content)
            self.assert_refused(text)


class Feed(ToolCase):
    def setUp(self):
        super().setUp()
        self.public_key = self.make_key()

    def assert_signed(self, archive, signature):
        key = self.scratch / "public.der"
        key.write_bytes(_KEY_PREFIX + base64.b64decode(self.public_key))
        (self.scratch / "signature").write_bytes(base64.b64decode(signature, validate=True))
        self.assertEqual((self.scratch / "signature").stat().st_size, 64)

        def verify(file):
            return run("openssl", "pkeyutl", "-verify", "-rawin", "-pubin", "-keyform", "DER", "-inkey", key,
                       "-sigfile", self.scratch / "signature", "-in", file).returncode
        self.assertEqual(verify(archive), 0)
        changed = self.scratch / "changed"
        changed.write_bytes(archive.read_bytes()[:-1] + b"\0")
        self.assertNotEqual(verify(changed), 0)

    def test_one_release(self):
        self.set_version("0.3.0")
        archive = self.publish_well()
        architecture = os.uname().machine
        self.assertEqual(archive, self.output / f"OrvaneBreak-0.3.0-linux-{architecture}.tar.zst")
        (item,) = self.items()
        self.assertEqual(item.findtext("title"), "OrvaneBreak 0.3.0")
        date = email.utils.parsedate_to_datetime(item.findtext("pubDate"))
        self.assertLess(abs(datetime.datetime.now(datetime.timezone.utc) - date), datetime.timedelta(minutes=5))
        self.assertEqual(item.findtext(_NAMESPACE + "version"), "0.3.0")
        self.assertEqual(item.findtext(_NAMESPACE + "shortVersionString"), "0.3.0")
        self.assertEqual(item.findtext("description"),
                         "Plus calme\n\n• L'œil cligne : <b> & \"co\", sur deux lignes.\n• Le reste.")
        self.assertRegex(item.findtext(_NAMESPACE + "minimumSystemVersion"), r"^2\.[0-9]+$")
        for absent in ("criticalUpdate", "phasedRolloutInterval"):
            self.assertIsNone(item.find(_NAMESPACE + absent))
        enclosure = item.find("enclosure")
        self.assertEqual(enclosure.get("url"), "https://example.org/t%C3%A9l%C3%A9chargements/" + archive.name)
        self.assertEqual(enclosure.get("length"), str(archive.stat().st_size))
        self.assertEqual(enclosure.get("type"), "application/zstd")
        self.assertEqual(enclosure.get(_NAMESPACE + "os"), "linux")
        self.assertEqual(enclosure.get(_NAMESPACE + "arch"), architecture)
        self.assert_signed(archive, enclosure.get(_NAMESPACE + "edSignature"))
        self.assertIn("xmlns:sparkle=", self.appcast.read_text("utf-8"))
        self.assertEqual(os.listdir(self.appcast.parent), ["appcast.xml"])

    def test_options(self):
        self.publish_well("--critical", "--minimum-system-version", "2.36", "--rollout-days", "3.5")
        (item,) = self.items()
        self.assertEqual(item.findtext(_NAMESPACE + "phasedRolloutInterval"), "43200")
        self.assertIsNotNone(item.find(_NAMESPACE + "criticalUpdate"))
        self.assertEqual(item.findtext(_NAMESPACE + "minimumSystemVersion"), "2.36")

    def test_grows_and_keeps_what_is_there(self):
        self.publish_well()
        text = self.appcast.read_text("utf-8").replace(
            "<item>", '<link>https://example.org/</link><!-- by hand --><x:odd xmlns:x="urn:x" x:a="1">é</x:odd><item>')
        text = text[:text.index("<lastBuildDate>")] + "<lastBuildDate>old" + text[text.index("</lastBuildDate>"):]
        self.appcast.write_text(text, "utf-8")
        self.sign()
        older = ElementTree.tostring(self.items()[0])
        self.set_version("0.3.0")
        self.publish_well()
        self.assertEqual([item.findtext(_NAMESPACE + "version") for item in self.items()], ["0.3.0", "0.2.0"])
        self.assertEqual(ElementTree.tostring(self.items()[1]).split(), older.split())
        channel = ElementTree.parse(self.appcast).getroot().find("channel")
        self.assertEqual(channel.findtext("link"), "https://example.org/")
        self.assertEqual(channel.find("{urn:x}odd").get("{urn:x}a"), "1")
        self.assertEqual(len(channel.findall("lastBuildDate")), 1)
        self.assertEqual(channel.findtext("lastBuildDate"), channel.findtext("item/pubDate"))
        self.assertIn("<!-- by hand -->", self.appcast.read_text("utf-8"))

    def sign(self, *options):
        result = self.tool("sign", "--private-key", self.key, "--appcast", self.appcast, *options)
        self.assertEqual(result.returncode, 0, result.stderr)

    def feed_words(self):
        """What the feed's signature covers, and the words of its last line."""
        content, _, line = self.appcast.read_bytes().rpartition(b"<!-- edSignature: ")
        return content, line.decode().split()

    def own(self, name):
        return ElementTree.parse(self.appcast).getroot().findtext(f"channel/{{urn:orvanebreak:feed}}{name}")

    def assert_feed_is_signed(self):
        content, words = self.feed_words()
        path = self.scratch / "content"
        path.write_bytes(content)
        self.assert_signed(path, words[0])
        self.assertEqual(words[-1], "-->")

    def test_the_feed_is_signed_and_expires(self):
        self.publish_well()
        self.assert_feed_is_signed()
        expires = email.utils.parsedate_to_datetime(self.own("expires")) - datetime.datetime.now(datetime.timezone.utc)
        self.assertAlmostEqual(expires.total_seconds() / 86_400, 60, delta=1)
        serial = int(self.own("serial"))
        self.sign("--valid-days", "5")
        self.assert_feed_is_signed()
        self.assertGreater(int(self.own("serial")), serial)
        self.assertEqual(len(self.items()), 1)
        # A feed that was lost and is written anew has a higher number nevertheless.
        self.appcast.unlink()
        self.publish_well()
        self.assertGreaterEqual(int(self.own("serial")), serial)

    def test_a_key_follows_another(self):
        self.publish_well()
        next_key = self.scratch / "next"
        next_public = self.tool("keygen", "--private-key", next_key).stdout.strip()
        self.sign("--next-private-key", next_key)
        first = self.public_key
        _, words = self.feed_words()
        self.assertEqual(words[1:4:2], ["key:", "certificate:"])
        self.assertEqual(words[2], next_public)
        statement = self.scratch / "statement"
        statement.write_text("OrvaneBreak update key " + next_public)
        self.assert_signed(statement, words[4])
        self.public_key = next_public
        self.assert_feed_is_signed()
        # The next release needs the new key, and keeps the certificate.
        self.set_version("0.3.0")
        self.assertIn("is signed with another key", self.publish().stderr)
        self.key = next_key
        self.publish_well()
        self.assert_feed_is_signed()
        self.assertEqual(self.feed_words()[1][1:5], words[1:5])
        self.assertNotEqual(first, next_public)

    def test_key_with_a_passphrase(self):
        os.environ["ORVANE_KEY_PASSPHRASE"] = "très secret"
        self.addCleanup(os.environ.pop, "ORVANE_KEY_PASSPHRASE", None)
        self.key = self.scratch / "encrypted"
        self.public_key = self.tool("keygen", "--encrypted", "--private-key", self.key).stdout.strip()
        self.assertIn("ENCRYPTED", self.key.read_text())
        self.publish_well()
        self.assert_feed_is_signed()
        os.environ["ORVANE_KEY_PASSPHRASE"] = "falsch"
        self.assertIn("openssl: ", self.tool("sign", "--private-key", self.key, "--appcast", self.appcast).stderr)

    def test_proofs_for_the_first_download(self):
        archive = self.publish_well()
        check = ("openssl", "pkeyutl", "-verify", "-rawin", "-pubin", "-inkey", "orvanebreak-update-key.pem",
                 "-sigfile", archive.name + ".sig", "-in", archive.name)
        self.assertEqual(run("sha256sum", "-c", archive.name + ".sha256", cwd=self.output).returncode, 0)
        self.assertEqual(run(*check, cwd=self.output).returncode, 0)
        archive.write_bytes(archive.read_bytes() + b"x")
        self.assertNotEqual(run("sha256sum", "-c", archive.name + ".sha256", cwd=self.output).returncode, 0)
        self.assertNotEqual(run(*check, cwd=self.output).returncode, 0)

    def test_a_second_attempt_continues(self):
        self.set_version("0.3.0")
        (self.project / "build").mkdir()
        (self.project / "build/ignored").touch()
        tests = 'test ! -e build/ignored && test -e .git && echo run >>"' + str(self.scratch / "runs") + '"'
        first = self.publish("--output", self.key / "impossible", test_command=tests)
        self.assertEqual(first.returncode, 1)
        second = self.publish(test_command=tests)
        self.assertEqual(second.returncode, 0, second.stderr)
        self.assertEqual((self.scratch / "runs").read_text(), "run\n")
        self.assertIn("release: tests: passed before", second.stderr)
        self.assertRegex(second.stderr, r"release: building and packing: 0 min [0-9]+ s")

    def test_the_build_contains_the_key(self):
        archive = self.publish_well()
        run("zstd", "-dq", archive, "-o", self.scratch / "archive.tar")
        with tarfile.open(self.scratch / "archive.tar") as reader:
            information = json.load(reader.extractfile("OrvaneBreak-0.2.0/share/OrvaneBreak/Info.json"))
        self.assertEqual(information["SUPublicEDKey"], self.public_key)


if __name__ == "__main__":
    unittest.main()
