# SPDX-License-Identifier: GPL-3.0-or-later
"""Real X11 screen lockers, which report to no bus."""

#: Lets any password in.
_PAM_SERVICE = "auth required pam_permit.so\naccount required pam_permit.so\n"
_COMMANDS = {"i3lock": ["i3lock", "--nofork"], "xsecurelock": ["xsecurelock"]}
#: What brings the question for the password up.
_WAKING_KEYS = {"i3lock": [], "xsecurelock": ["space"]}

#: The names of the lockers.
LOCKERS = tuple(_COMMANDS)


def under_any_password(bed, name):
    """The environment in which the locker with this name accepts any password."""
    services = bed.write(f"pam/{name}", _PAM_SERVICE).parent
    return {"LD_PRELOAD": "libpam_wrapper.so", "PAM_WRAPPER": "1", "PAM_WRAPPER_SERVICE_DIR": str(services)}


class ScreenLocker:
    """Locks the screen from construction until the password is typed."""

    def __init__(self, desk, name):
        self._desk = desk
        self._name = name
        self._process = desk.bed.run(_COMMANDS[name], {
            **under_any_password(desk.bed, name), "XSECURELOCK_PAM_SERVICE": name, "XSECURELOCK_SAVER": "saver_blank"})

    def covers(self):
        """Whether its window covers the screen."""
        outputs = self._desk.bed.outputs()
        width = max(output.box[2] for output in outputs)
        own = [window["id"] for window in self._desk.overlays()]
        return any(window["viewable"] and window["overrideRedirect"] and window["width"] >= width - 2
                   and window["id"] not in own for window in self._desk.probe.state()["windows"])

    def type_password(self):
        for key in _WAKING_KEYS[self._name]:
            self._desk.bed.press(key)
        self._desk.bed.type("password")
        self._desk.bed.press("Return")

    def is_unlocked(self):
        return self._process.poll() is not None

    def stop(self):
        self._desk.bed.stop(self._process)
