# SPDX-License-Identifier: GPL-3.0-or-later
"""The scenarios: each checks promises, single statements about the program's behaviour on a desktop."""
