# SPDX-License-Identifier: GPL-3.0-or-later
"""The update feed: an RSS 2.0 file with one item per release, a serial number, a date of expiry, and as its last line the
makers' signature of all bytes before it."""

import dataclasses
import datetime
import email.utils
import io
import os
import pathlib
import tempfile
import xml.etree.ElementTree as ElementTree

from . import Refusal, keys
from .source import version_numbers

NAMESPACE = "http://www.andymatuschak.org/xml-namespaces/sparkle"
_OWN_NAMESPACE = "urn:orvanebreak:feed"
_TYPE = "application/zstd"
_LAST_LINE = b"<!-- edSignature: "
# What the program accepts.
_SIZE_LIMIT = 1_048_576
_ITEM_LIMIT = 1_000
_NOTES_LIMIT = 20_000


@dataclasses.dataclass(frozen=True)
class Release:
    """One release in the feed."""
    version: str
    url: str
    length: int
    signature: str
    architecture: str
    date: datetime.datetime
    #: Plain text.
    notes: str
    minimum_system_version: str | None = None
    is_critical: bool = False
    #: Seconds between two of the seven groups of users.
    rollout_interval: int = 0


class Appcast:
    """A feed in memory."""

    def __init__(self, path):
        """Reads the feed at `path`, or starts an empty one if there is no file."""
        self._path = pathlib.Path(path)
        ElementTree.register_namespace("sparkle", NAMESPACE)
        ElementTree.register_namespace("orvane", _OWN_NAMESPACE)
        #: The words of the last line that name later keys.
        self._later_keys = []
        if not self._path.exists():
            self._root = _empty_feed()
        else:
            self._root = self._read()
        self._channel = self._root.find("channel")
        if self._root.tag != "rss" or self._channel is None:
            raise Refusal(f"not an update feed: {path}")

    def newest_version(self):
        """The highest version in the feed, or None if it is empty."""
        versions = []
        for item in self._channel.findall("item"):
            enclosure = item.find("enclosure")
            in_enclosure = None if enclosure is None else enclosure.get(_extended("version"))
            version = in_enclosure or item.findtext(_extended("version"))
            if version:
                versions.append(version.strip())
        return max(versions, key=version_numbers, default=None)

    def refuse_unless_newer(self, version):
        newest = self.newest_version()
        if newest is not None and version_numbers(version) <= version_numbers(newest):
            raise Refusal(f"the version is not new: CMakeLists.txt has {version}, the feed already has {newest}")

    def refuse_another_key(self, private_key):
        """Refuses a key that this feed is not signed with: no installed program would accept it."""
        if not self._path.exists():
            return
        content, words = _split(self._path.read_bytes())
        if not words or not keys.is_signed(content, words[0], keys.public_key(private_key)):
            raise Refusal(f"the feed was changed, or is signed with another key: {self._path} "
                          "(tools/release sign signs it again)")

    def add(self, release):
        """Inserts a release before the others and updates the feed's date."""
        if len(release.notes) > _NOTES_LIMIT:
            raise Refusal(f"the notes are longer than {_NOTES_LIMIT} characters")
        built = self._channel.find("lastBuildDate")
        items = self._channel.findall("item")
        if built is None:
            built = ElementTree.Element("lastBuildDate")
            place = list(self._channel).index(items[0]) if items else len(self._channel)
            self._channel.insert(place, built)
        built.text = email.utils.format_datetime(release.date)
        place = list(self._channel).index(items[0]) if items else len(self._channel)
        self._channel.insert(place, _item(release))

    def add_key(self, private_key, next_key):
        """Names the key after this one, which can sign from now on."""
        public_key = keys.public_key(next_key)
        certificate = keys.sign_bytes(private_key, f"OrvaneBreak update key {public_key}".encode())
        self._later_keys += ["key:", public_key, "certificate:", certificate]

    def content(self, now, valid_days):
        """The bytes to sign, with the next serial number; refuses what the program would not accept."""
        serial = int(self._channel.findtext(_own("serial")) or 0)
        # The time keeps the number growing if the feed is lost.
        self._set_own("serial", str(max(serial + 1, int(now.timestamp()))))
        self._set_own("expires", email.utils.format_datetime(now + datetime.timedelta(days=valid_days)))
        ElementTree.indent(self._root)
        content = ElementTree.tostring(self._root, encoding="utf-8", xml_declaration=True) + b"\n"
        if len(content) > _SIZE_LIMIT or len(self._channel.findall("item")) > _ITEM_LIMIT:
            raise Refusal(f"the feed is larger than programs accept, remove old items: {self._path}")
        return content

    def save(self, private_key, now, valid_days):
        """Signs the feed and replaces the file atomically."""
        content = self.content(now, valid_days)
        words = [keys.sign_bytes(private_key, content), *self._later_keys]
        content += _LAST_LINE + " ".join(words).encode() + b" -->\n"
        self._path.parent.mkdir(parents=True, exist_ok=True)
        descriptor, name = tempfile.mkstemp(dir=self._path.parent, prefix=self._path.name + ".")
        try:
            with os.fdopen(descriptor, "wb") as file:
                os.fchmod(file.fileno(), 0o644)
                file.write(content)
                file.flush()
                os.fsync(file.fileno())
            os.replace(name, self._path)
        except BaseException:
            pathlib.Path(name).unlink(missing_ok=True)
            raise

    def _read(self):
        try:
            content, words = _split(self._path.read_bytes())
            self._later_keys = words[1:]
            for _, (prefix, address) in ElementTree.iterparse(io.BytesIO(content), ["start-ns"]):
                ElementTree.register_namespace(prefix, address)
            parser = ElementTree.XMLParser(target=ElementTree.TreeBuilder(insert_comments=True))
            return ElementTree.fromstring(content, parser)
        except (OSError, ElementTree.ParseError, ValueError) as error:
            raise Refusal(f"the update feed cannot be read: {self._path}: {error}") from error


    def _set_own(self, name, text):
        element = self._channel.find(_own(name))
        if element is None:
            element = ElementTree.Element(_own(name))
            self._channel.insert(0, element)
        element.text = text


def _split(content):
    """What the signature covers, and the words of the last line: the signature, and later keys."""
    content, found, line = content.rpartition(_LAST_LINE)
    return (content, line.decode().split()[:-1]) if found else (line, [])


def _own(name):
    return f"{{{_OWN_NAMESPACE}}}{name}"


def _extended(name):
    return f"{{{NAMESPACE}}}{name}"


def _empty_feed():
    root = ElementTree.Element("rss", {"version": "2.0"})
    channel = ElementTree.SubElement(root, "channel")
    for name, text in (("title", "OrvaneBreak"), ("description", "Les versions d’OrvaneBreak"), ("language", "fr")):
        ElementTree.SubElement(channel, name).text = text
    return root


def _item(release):
    item = ElementTree.Element("item")

    def add(name, text=None, **attributes):
        ElementTree.SubElement(item, name, attributes).text = text

    add("title", f"OrvaneBreak {release.version}")
    add("pubDate", email.utils.format_datetime(release.date))
    add(_extended("version"), release.version)
    add(_extended("shortVersionString"), release.version)
    if release.minimum_system_version:
        add(_extended("minimumSystemVersion"), release.minimum_system_version)
    if release.is_critical:
        add(_extended("criticalUpdate"))
    if release.rollout_interval:
        add(_extended("phasedRolloutInterval"), str(release.rollout_interval))
    add("description", release.notes, **{_extended("format"): "plain-text"})
    ElementTree.SubElement(item, "enclosure", {
        "url": release.url, "length": str(release.length), "type": _TYPE,
        _extended("edSignature"): release.signature, _extended("os"): "linux", _extended("arch"): release.architecture})
    return item
