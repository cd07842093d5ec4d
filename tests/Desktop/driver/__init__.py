# SPDX-License-Identifier: GPL-3.0-or-later
"""Virtual desktops to try the program on: each one a `Bed`, started and ended by a with statement."""
