# SPDX-License-Identifier: GPL-3.0-or-later
import subprocess

from driver.waiting import comes_true, stays_true

from .application_desk import BACK
from .desk import SWITCH_ON


def debug_switches(desk, report):
    """The two switches for debugging."""
    for value in ("1", "true", ""):
        is_on = value == "1"
        desk.start_in_dock({"ORVANE_DEBUG_SETTINGS": value})
        report.promise(f"ORVANE_DEBUG_SETTINGS={value} {'shows' if is_on else 'does not show'} the settings page",
                       desk.shows(BACK if is_on else SWITCH_ON))
        desk.finish()
        desk.start({"OBOnboarded": True}, {"ORVANE_DEBUG_BREAK": value})
        shown = comes_true(lambda: len(desk.overlays()) == 2, 5) if is_on else \
            not (desk.wait_for_window() or stays_true(lambda: not desk.overlays(), 0.7))
        report.promise(f"ORVANE_DEBUG_BREAK={value} {'begins' if is_on else 'does not begin'} a break", shown == is_on)
        report.promise("the break of the switch leaves reminders off", desk.shows(SWITCH_ON))
        desk.finish()
    desk.start({"OBOnboarded": True}, {"ORVANE_DEBUG_BREAK": "1", "ORVANE_DEBUG_SETTINGS": "1"})
    report.promise("both switches together", comes_true(lambda: len(desk.overlays()) == 2, 5) and desk.shows(BACK))
    desk.finish()


def log_switch(desk, report):
    """The libraries' messages, which are printed only on request."""
    for value in ("0", "1"):
        desk.start_in_dock({"QT_DEBUG_PLUGINS": "1", "ORVANE_DEBUG_LOG": value})
        report.promise(f"ORVANE_DEBUG_LOG={value} {'shows' if value == '1' else 'hides'} Qt's messages",
                       any("platforms" in line for line in desk.said()) == (value == "1"), len(desk.said()))
        desk.finish()


def break_at_launch(desk, report):
    """A first start with --break-now."""
    desk.start({"OBOnboarded": True}, arguments=["--break-now"])
    report.promise("--break-now begins a break where the program does not run yet",
                   comes_true(lambda: len(desk.overlays()) == 2, 5))
    report.promise("the break of --break-now has the keyboard", comes_true(desk.break_has_keyboard, 3))
    desk.bed.press("Escape")
    report.promise("the break of --break-now ends with Escape, and the program stays",
                   comes_true(lambda: not desk.overlays(), 3) and desk.process.poll() is None)
    desk.finish()


def saved_session(desk, report):
    """A session manager starts the program again, beside the login item."""
    desk.start({"OBOnboarded": True}, arguments=["-session", "10b1c1d-1"])
    desk.wait_for_window()
    other = desk.other_window()
    second = desk.start_again("-session", "10b1c1d-1")
    report.promise("a saved session and the login item start one program",
                   comes_true(lambda: second.poll() is not None, 5) and second.returncode == 0)
    report.promise("the second of them leaves the keyboard where it is",
                   stays_true(lambda: desk.probe.state()["focus"] == other.identifier, 0.5))
    report.promise("silent in a restored session", not desk.said(), desk.said())
    desk.bed.stop(second)
    desk.finish()


def command_line(desk, report):
    """The command line without a display or a session bus."""
    def run(*arguments, language="C.UTF-8"):
        environment = {**desk.bed.environment(), "DISPLAY": "", "DBUS_SESSION_BUS_ADDRESS": "", "LC_ALL": language}
        return subprocess.run([desk.program, *arguments], env=environment, capture_output=True, text=True, timeout=10,
                              check=False)
    version, usage = run("--version"), run("--help")
    report.promise("--version is one line", version.returncode == 0 and version.stdout.startswith("OrvaneBreak ")
                   and version.stdout.count("\n") == 1 and not version.stderr, version)
    report.promise("--help fits one screen", usage.returncode == 0 and not usage.stderr
                   and "--break-now" in usage.stdout and usage.stdout.count("\n") <= 24, usage)
    nonsense = subprocess.run([desk.program], env={**desk.bed.environment(), "QT_QPA_PLATFORM": "nonsense"},
                              capture_output=True, text=True, timeout=10, check=False)
    report.promise("an unknown platform ends it with one line and status 1", nonsense.returncode == 1
                   and nonsense.stderr.count("\n") == 1 and "nonsense" in nonsense.stderr, nonsense)
    report.promise("--help and errors are French for a French user",
                   "reposer tes yeux" in run("--help", language="fr_CH.UTF-8").stdout
                   and "inconnue" in run("--frobnicate", language="fr_CH.UTF-8").stderr)
    for arguments in (["--frobnicate"], ["file.txt"], ["--break-now", "-x"], [""]):
        refused = run(*arguments)
        report.promise("an unknown argument is refused with one line and status 2", refused.returncode == 2
                       and not refused.stdout and refused.stderr.count("\n") == 1, refused)
