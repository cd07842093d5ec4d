# SPDX-License-Identifier: GPL-3.0-or-later
"""What bench/run measures, one module per subject."""
