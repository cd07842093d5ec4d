# SPDX-License-Identifier: GPL-3.0-or-later
import time

from driver.waiting import comes_true, wait_until

from .update_desk import CHECK, INSTALL, LATER, OK

_REFUSED = "Liste des versions refusée"
_EXPIRED = "Liste des versions périmée"
_UNUSABLE = "Vérification impossible"


def _change(feed, old, new):
    content = feed.read_bytes()
    feed.write_bytes(content.replace(old, new, 1))
    return _REFUSED


def _flood(makers, archive):
    """A feed that the makers have signed, and that would take a minute to read."""
    attributes = "".join(f" a{number}=''" for number in range(60_000))
    makers.announce("2.0.0", archive, edit=lambda content: content.replace(b"<channel>", f"<x{attributes}/><channel>".encode()))
    return _UNUSABLE


def _announce_lie(makers, lie, archive, old):
    """Publishes what the holder of the server could; returns the message that the program has to show."""
    feed = makers.web / "appcast.xml"
    if lie == "an older feed":
        feed.write_bytes(old)
        return _REFUSED
    if lie == "a flood of attributes":
        return _flood(makers, archive)
    if lie == "an expired feed":
        makers.announce("2.0.0", archive, days=-1)
        return _EXPIRED
    if lie == "another key":
        key = makers.folder / "thief"
        makers.generate_key(key)
        makers.announce("2.0.0", archive, key=key)
        return _REFUSED
    makers.announce("2.0.0", archive)
    if lie == "forged notes":
        return _change(feed, b"Plus calme", b"Plus cher")
    return _change(feed, b"<!-- edSignature:", b"<!-- signature:")


LIES = ("an older feed", "forged notes", "no signature", "another key", "an expired feed", "a flood of attributes")


def feeds(desk, report):
    """Feeds that have to be refused with a reason, and the genuine one after them."""
    desk.install()
    archive = desk.makers.pack(desk.makers.version("2.0.0"))
    feed = desk.makers.web / "appcast.xml"
    desk.makers.announce("2.0.0", archive)
    old = feed.read_bytes()
    time.sleep(1.1)  # The serial number is at least the time in seconds.
    desk.makers.announce("2.0.0", archive)
    desk.start_version()
    desk.reader.press(CHECK)
    desk.answer_with(LATER)
    for lie in LIES:
        message = _announce_lie(desk.makers, lie, archive, old)
        begin = time.monotonic()
        desk.reader.press(CHECK)
        said = comes_true(lambda: desk.shows_now(OK), 20)
        report.promise(f"refused with a reason: {lie}", said and desk.shows_now(message))
        report.promise(f"refused soon: {lie}", time.monotonic() - begin < 15, time.monotonic() - begin)
        desk.answer_with(OK)
    desk.makers.announce("2.0.0", archive)
    desk.reader.press(CHECK)
    wait_until(lambda: desk.shows_now(INSTALL), "the genuine offer after all", 30)
    desk.answer_with(LATER)
    report.promise("no feed changed anything", desk.current() == "1.0.0", desk.current())
    desk.quit()
