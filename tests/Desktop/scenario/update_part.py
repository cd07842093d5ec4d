# SPDX-License-Identifier: GPL-3.0-or-later
import io
import os
import signal
import subprocess
import tarfile
import time

from driver.waiting import comes_true, wait_until

from .update_desk import AUTOMATIC, CHECK, INSTALL, LATER, OK, RELAUNCH

_REFUSED = "Mise à jour refusée"
_BROKEN_OFF = "Téléchargement interrompu"


def by_hand(desk, report):
    """An update that the user requests and that takes effect at the next start."""
    desk.install()
    desk.makers.announce("2.0.0", desk.makers.pack(desk.makers.version("2.0.0")))
    desk.start_version()
    report.promise("version 1 runs", desk.runs("1.0.0"))
    desk.reader.press(CHECK)
    wait_until(lambda: desk.shows_now(INSTALL), "the offer", 30)
    desk.keep_picture("update-offer")
    desk.answer_with(INSTALL)
    wait_until(lambda: desk.shows_now(RELAUNCH), "the update to be ready", 30)
    desk.keep_picture("update-ready")
    report.promise("by hand: version 2 starts next", desk.current() == "2.0.0", desk.current())
    desk.answer_with(LATER)
    report.promise("version 1 runs on", desk.runs("1.0.0"))
    report.promise("the program ends as always", desk.quit() == 0, desk.process.returncode)
    desk.start_version()
    report.promise("version 2 runs", desk.runs("2.0.0"))
    report.promise("its trial ends", comes_true(lambda: not (desk.root / "trial").exists(), 30))
    desk.reader.press(CHECK)
    report.promise("it says that it is up to date", desk.shows("OrvaneBreak est à jour"))
    desk.answer_with(OK)
    report.promise("silent while updating", not desk.said(), desk.said())
    desk.finish()


def silently(desk, report):
    """An automatic update that takes effect at the next start, even if the program is killed."""
    desk.install()
    desk.start_version(AUTOMATIC)
    wait_until(lambda: desk.current() == "2.0.0", "the update beside the running version", 30)
    report.promise("automatically: no dialog comes", not desk.shows_now(INSTALL) and not desk.shows_now(RELAUNCH))
    report.promise("automatically: version 1 runs on", desk.runs("1.0.0"))
    desk.process.send_signal(signal.SIGKILL)
    desk.process.wait(10)
    desk.start_version()
    report.promise("automatically: version 2 runs", desk.runs("2.0.0"))
    desk.finish()


def newer_by_hand(desk, report):
    """A newer version that the user installs while an older one runs."""
    desk.install()
    desk.makers.announce("2.0.0", desk.makers.pack(desk.makers.version("2.0.0")))
    desk.start_version()
    desk.reader.press(CHECK)
    wait_until(lambda: desk.shows_now(INSTALL), "the offer of version 2", 30)
    subprocess.run([desk.makers.version("3.0.0") / "install"], env=desk.bed.environment(), check=True, timeout=60,
                   stdout=subprocess.DEVNULL)
    desk.answer_with(INSTALL, OK)
    report.promise("a newer version that was installed by hand stays", desk.current() == "3.0.0", desk.current())
    desk.reader.press(CHECK)
    report.promise("nothing older is offered then", desk.shows("OrvaneBreak est à jour"))
    desk.answer_with(OK)
    desk.quit()
    report.promise("it starts next", desk.current() == "3.0.0", desk.current())


def relaunch(desk, report):
    """An update that takes effect at once."""
    desk.install()
    desk.start_version()
    desk.reader.press(CHECK)
    desk.answer_with(INSTALL, RELAUNCH)
    report.promise("at once: version 2 runs in the place of version 1", desk.runs("2.0.0"))
    report.promise("at once: it is the same process", desk.process.poll() is None)
    desk.finish()


def _entry(name, kind=tarfile.REGTYPE, target=""):
    entry = tarfile.TarInfo(name)
    entry.type, entry.linkname, entry.mode = kind, target, 0o644
    return entry, io.BytesIO()


def _announce_lie(makers, lie):
    """Publishes what a hostile or careless server would; returns the message that the program has to show."""
    genuine = makers.pack(makers.version("2.0.0"))
    content = genuine.read_bytes()
    if lie == "one flipped byte":
        makers.announce("2.0.0", genuine)
        genuine.write_bytes(content[:5000] + bytes([content[5000] ^ 1]) + content[5001:])
    elif lie == "truncated":
        makers.announce("2.0.0", genuine)
        genuine.write_bytes(content[:-1000])
        return _BROKEN_OFF
    elif lie == "longer than announced":
        makers.announce("2.0.0", genuine)
        genuine.write_bytes(content + b"more")
        return _BROKEN_OFF
    elif lie == "another key's signature":
        key = makers.folder / "other-key"
        if not key.exists():
            makers.generate_key(key)
        makers.announce("2.0.0", genuine, signature=makers.signature(key, genuine))
    elif lie == "another file's signature":
        other = makers.web / "other"
        other.write_bytes(content[1:])
        makers.announce("2.0.0", genuine, signature=makers.signature(makers.key, other))
    elif lie == "an old archive announced as new":
        makers.announce("2.0.0", makers.pack(makers.version("0.9.0")))
    else:
        top = "OrvaneBreak-2.0.0"
        extra = {"a path that leads upwards": [_entry(f"{top}/../../../evil")],
                 "an absolute path": [_entry("/tmp/evil")],
                 "a link out of the tree": [_entry(f"{top}/way", tarfile.SYMTYPE, "../../../..")],
                 "a device": [_entry(f"{top}/device", tarfile.CHRTYPE)]}[lie]
        makers.announce("2.0.0", makers.pack(makers.version("2.0.0"), extra))
    return _REFUSED


LIES = ("one flipped byte", "truncated", "longer than announced", "another key's signature", "another file's signature",
        "an old archive announced as new", "a path that leads upwards", "an absolute path", "a link out of the tree",
        "a device")


def lies(desk, report):
    """Updates that have to be refused with a reason and without any change."""
    desk.install()
    desk.start_version()
    for lie in LIES:
        message = _announce_lie(desk.makers, lie)
        desk.reader.press(CHECK)
        desk.answer_with(INSTALL)
        said = comes_true(lambda: desk.shows_now(OK), 60)
        report.promise(f"refused with a reason: {lie}", said and desk.shows_now(message))
        report.promise(f"nothing changed by it: {lie}", desk.current() == "1.0.0"
                       and os.listdir(desk.root / "versions") == ["1.0.0"], os.listdir(desk.root / "versions"))
        desk.answer_with(OK)
    desk.quit()
    report.promise("version 1 starts next after all of them", desk.current() == "1.0.0", desk.current())


def full_disk(desk, report):
    """A disk too full for the download."""
    desk.install()
    desk.makers.announce("2.0.0", desk.makers.pack(desk.makers.version("2.0.0")))
    desk.start_version(limit=1_000_000)
    desk.reader.press(CHECK)
    desk.answer_with(INSTALL)
    report.promise("a full disk is reported and changes nothing",
                   comes_true(lambda: desk.shows_now(_BROKEN_OFF), 30) and desk.current() == "1.0.0", desk.current())
    desk.quit()


def killed(desk, report):
    """The program is killed at several points of an update."""
    desk.makers.announce("2.0.0", desk.makers.pack(desk.makers.version("2.0.0")))
    versions = []
    for delay in (0.02, 0.1, 0.3, 0.6, 1.0, 1.5):
        desk.install()
        desk.start_version(AUTOMATIC)
        wait_until(lambda: (desk.bed.home / "cache/OrvaneBreak/updates").exists()
                   or len(os.listdir(desk.root / "versions")) > 1, "the update to begin", 30)
        time.sleep(delay)
        desk.process.send_signal(signal.SIGKILL)
        desk.process.wait(10)
        versions.append(desk.current())
    report.promise("killed at any moment, the current version is complete", set(versions) <= {"1.0.0", "2.0.0"}, versions)
    desk.install()
    desk.start_version()
    desk.reader.press(CHECK)
    desk.answer_with(INSTALL)
    wait_until(lambda: desk.shows_now(RELAUNCH), "the update after all", 30)
    desk.quit()
    report.promise("after being killed it still updates", desk.current() == "2.0.0", desk.current())
