# SPDX-License-Identifier: GPL-3.0-or-later
"""The parts of makers-server."""


class Trouble(Exception):
    """A failure; the text says what cannot be done and why."""
