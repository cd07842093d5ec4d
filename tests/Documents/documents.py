# SPDX-License-Identifier: GPL-3.0-or-later
"""The project's documents and their content."""

import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
_FENCE = re.compile(r"^\s*(```|~~~)")


def documents():
    """Every Markdown file in the source tree outside build folders."""
    return sorted(path for path in ROOT.rglob("*.md")
                  if not path.relative_to(ROOT).parts[0].startswith(("build", ".")))


def name(path):
    return str(path.relative_to(ROOT))


class Document:
    """One document, split into prose and code blocks."""

    def __init__(self, path):
        self.path = path
        self.text = path.read_text("utf-8")
        self.prose = []
        self.code = []
        is_fenced = is_indented = False
        before = ""
        for line in self.text.splitlines():
            if _FENCE.match(line):
                is_fenced = not is_fenced
            elif is_fenced:
                self.code.append(line)
            else:
                is_indented = line.startswith("    ") and (is_indented or not before.strip())
                (self.code if is_indented else self.prose).append(line)
            before = line

    def headings(self):
        """The valid anchors of this document."""
        titles = (line.lstrip("#").strip().lower() for line in self.prose if re.match(r"#+ ", line))
        return {re.sub(r"[^\w\- ]", "", title).replace(" ", "-") for title in titles}

    def links(self):
        """The targets of links and pictures."""
        prose = re.sub(r"`[^`]*`", "", "\n".join(self.prose))
        return re.findall(r"\]\(([^)\s]+)\)", prose) + re.findall(r"""(?:src|href)=["']([^"']+)["']""", prose)

    def inline_code(self):
        return re.findall(r"`([^`\n]+)`", "\n".join(self.prose))

    def code_lines(self):
        """The lines of the code blocks without comments, with continuation lines joined."""
        joined = "\n".join(self.code).replace("\\\n", " ")
        return [line for line in (re.sub(r"\s+#.*", "", line).strip() for line in joined.splitlines()) if line]
