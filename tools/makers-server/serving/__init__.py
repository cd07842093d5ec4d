# SPDX-License-Identifier: GPL-3.0-or-later
"""The parts of makers-server."""


class Trouble(Exception):
    """Something cannot be done; the text says what and why."""
