# SPDX-License-Identifier: GPL-3.0-or-later
"""A desk for the makers' channel: the application and their server."""

import re
import time

from driver.waiting import comes_true, wait_until

from .application_desk import ApplicationDesk

MESSAGE = "Message de Orvane Labs"
MESSAGES_TITLE = "Messages de Orvane Labs"
UNDERSTOOD = "Compris"


class ChannelDesk(ApplicationDesk):
    """Starts the program against `server`."""

    def __init__(self, bed, program, helpers, pictures=None):
        super().__init__(bed, program, helpers, pictures)
        self.server = None
        #: That of the server, when it has one.
        self.certificate = None

    def start_over(self, environment=None, arguments=()):
        server = {"ORVANE_TEST_SERVER": self.server.address, "ORVANE_TEST_PUBLIC_KEY": self.server.public_key}
        super().start_over({**server, **(environment or {})}, arguments)

    def wait_for_check_in(self, known):
        """Waits until the server has received more than `known` check-ins."""
        wait_until(lambda: len(self.server.received("check-in")) > known, "a check-in")

    def alert_shows(self, text):
        """Whether an open alert shows this text in time."""
        return comes_true(lambda: self.alert_shows_now(text), 5)

    def alert_shows_now(self, text):
        return any(text in (control.name, control.text) for control in self.reader.controls())

    def has_alert(self):
        return any(control.role in ("dialog", "alert") for control in self.reader.controls())

    def dismiss_alert(self):
        """Presses Return once the open alert takes keys, which it does not in its first second."""
        time.sleep(1.2)
        self.bed.press("Return")

    def messages_window(self):
        return self.bed.windows_titled(MESSAGES_TITLE)

    def conversation(self):
        """The texts in the messages window, newest first."""
        return [control.text for control in self.reader.controls(MESSAGES_TITLE)
                if control.role == "text" and " · " in control.name]


class LauncherWatch:
    """Records the launcher signals on the session bus."""

    def __init__(self, bed):
        self._bed = bed
        self._path = bed.home / "launcher.txt"
        with open(self._path, "wb") as output:
            self._process = bed.run(["dbus-monitor", "--session", "interface='com.canonical.Unity.LauncherEntry'"],
                                    stdout=output)
        wait_until(lambda: b"NameAcquired" in self._path.read_bytes() or self._path.stat().st_size, "the monitor")

    def counts(self):
        """The badge numbers so far; 0 means hidden."""
        text = self._path.read_text("utf-8", "replace")
        return [int(count) if shown == "true" else 0 for count, shown in re.findall(
            r'"count"\s+variant\s+int64 (\d+)\s+\)\s+dict entry\(\s+string "count-visible"\s+variant\s+boolean (\w+)',
            text)]

    def stop(self):
        self._bed.stop(self._process)
