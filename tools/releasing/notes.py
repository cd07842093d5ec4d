# SPDX-License-Identifier: GPL-3.0-or-later
"""What users read about a release, from Markdown."""

import re


def plain(markdown):
    """The plain text that the program shows: one line per paragraph or entry, headings and entries marked."""
    lines = []
    for line in markdown.splitlines():
        text = line.strip()
        entry = re.match(r"[-*] +(.*)", text)
        if entry or not text or text.startswith("#") or not lines or not lines[-1]:
            lines.append("• " + entry[1] if entry else text.lstrip("# "))
        else:
            lines[-1] += " " + text
        if text.startswith("#"):
            lines.append("")
    text = re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", "\n".join(lines))
    return re.sub(r"\n{3,}", "\n\n", re.sub(r"\*\*|`", "", text)).strip()
