# SPDX-License-Identifier: GPL-3.0-or-later
import os
import signal
import subprocess

from driver.waiting import comes_true, wait_until

from .update_desk import AUTOMATIC, CHECK, INSTALL, RELAUNCH

_FAILED = "Mise à jour annulée"


def no_verdict(desk, report):
    """What the user does with a version on trial says nothing about it."""
    desk.install()
    desk.start_version(AUTOMATIC)
    wait_until(lambda: desk.current() == "2.0.0", "the update beside the running version", 30)
    environment = desk.bed.environment()
    results = [subprocess.run([desk.program, "--break-now"], env={**environment, **change}, timeout=30,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode
               for change in ({"DISPLAY": ":99", "WAYLAND_DISPLAY": ""},) * 3]
    results += [subprocess.run([desk.program, "--nonsense"], env=environment, timeout=30,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode for _ in range(3)]
    report.promise("starts without a display and with a wrong option fail", 0 not in results, results)
    again = [subprocess.run([desk.program], env=environment, timeout=30).returncode for _ in range(3)]
    report.promise("starts beside the running version show its window", again == [0, 0, 0], again)
    report.promise("they are no verdict", desk.current() == "2.0.0", desk.current())
    desk.quit()
    desk.start_version()
    report.promise("the version works afterwards", desk.runs("2.0.0"))
    desk.finish()


def bad_start(desk, report):
    """A new version that dies at every start."""
    def die(folder):
        (folder / "bin/orvanebreak-program").write_text("#!/bin/sh\nexit 3\n")

    desk.install()
    desk.makers.announce("3.0.0", desk.makers.pack(desk.makers.version("3.0.0", die)))
    desk.start_version()
    desk.reader.press(CHECK)
    desk.answer_with(INSTALL, RELAUNCH)
    wait_until(lambda: not (desk.root / "trial").exists() and desk.current() == "1.0.0", "the way back", 30)
    report.promise("a version that dies at every start is given up", desk.runs("1.0.0"))
    report.promise("the user is told", comes_true(lambda: desk.shows_now(_FAILED), 20))
    desk.keep_picture("update-failed")
    report.promise("its folder is removed", not (desk.root / "versions/3.0.0").exists())
    desk.finish()


def hanging_start(desk, report):
    """A new version that hangs at every start until the user kills it."""
    def hang(folder):
        (folder / "bin/orvanebreak-program").write_text("#!/bin/sh\nexec sleep 600\n")

    desk.install()
    desk.makers.announce("3.0.0", desk.makers.pack(desk.makers.version("3.0.0", hang)))
    desk.start_version(AUTOMATIC)
    wait_until(lambda: desk.current() == "3.0.0", "the update beside the running version", 30)
    desk.quit()
    for starts in ("1", "2"):
        process = subprocess.Popen([desk.program], env=desk.bed.environment(), start_new_session=True)
        wait_until(lambda starts=starts: (desk.root / "trial").read_text("utf-8").splitlines()[1] == starts, "a counted start", 10)
        os.killpg(process.pid, signal.SIGKILL)
        process.wait(10)
    desk.start_version()
    report.promise("a version that hangs twice is given up", desk.current() == "1.0.0" and desk.runs("1.0.0"), desk.current())
    report.promise("the user is told of the hanging version", comes_true(lambda: desk.shows_now(_FAILED), 20))
    desk.finish()
