# SPDX-License-Identifier: GPL-3.0-or-later
"""Beds: virtual desktops that the program is tested on. A with statement starts and ends a `Bed`."""
