# SPDX-License-Identifier: GPL-3.0-or-later
"""The parts of tools/release."""


class Refusal(Exception):
    """Nothing is released; the text gives the reason and the remedy."""
