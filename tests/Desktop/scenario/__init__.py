# SPDX-License-Identifier: GPL-3.0-or-later
"""What the program promises on a desktop, promise by promise."""
