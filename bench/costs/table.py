# SPDX-License-Identifier: GPL-3.0-or-later
"""The table of figures: the program's, the reference's, and whether a goal was met."""

import dataclasses
import statistics


@dataclasses.dataclass
class Row:
    """One figure. The goal is a limit for the figure, or with `ratio` a limit for its ratio to the reference's figure."""
    name: str
    figure: float
    unit: str
    reference: float | None = None
    ratio: float | None = None
    limit: float | None = None
    digits: int = 1
    note: str = ""

    @property
    def is_met(self):
        """None if there is no goal."""
        if self.ratio is not None:
            return self.figure <= self.ratio * self.reference
        return None if self.limit is None else self.figure <= self.limit

    def cells(self):
        def number(value):
            return "" if value is None else f"{value:.{self.digits}f} {self.unit}".strip()
        goal = verdict = ""
        if self.ratio is not None:
            goal = f"{self.ratio:g} × reference"
            verdict = f" ({self.figure / self.reference:.2f} ×)" if self.reference else ""
        elif self.limit is not None:
            goal = number(self.limit)
        verdict = {None: "", True: "met", False: "**missed**"}[self.is_met] + verdict
        return [self.name, number(self.figure), number(self.reference), goal, verdict + self.note]


def markdown(rows):
    """The rows as a Markdown table."""
    lines = [["", "OrvaneBreak", "reference", "goal: at most", ""], ["---", "--:", "--:", "--:", "---"]]
    return "\n".join("| " + " | ".join(cells) + " |" for cells in lines + [row.cells() for row in rows])


def median(samples):
    return statistics.median(samples)
