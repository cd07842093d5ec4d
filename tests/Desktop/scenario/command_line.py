# SPDX-License-Identifier: GPL-3.0-or-later
"""The command-line arguments shared by all scenarios."""

import argparse
import pathlib


def read(documentation, **wanted):
    """Parses the command line of a scenario. `wanted` maps its additional, required paths to their help texts."""
    parser = argparse.ArgumentParser(description=documentation)
    for name, meaning in wanted.items():
        parser.add_argument(f"--{name.replace('_', '-')}", type=pathlib.Path, required=True, help=meaning)
    parser.add_argument("--helpers", type=pathlib.Path, required=True, help="folder of the helper programs")
    parser.add_argument("--results", type=pathlib.Path, help="file for the results, as JSON")
    return parser.parse_args()
