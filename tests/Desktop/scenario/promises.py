# SPDX-License-Identifier: GPL-3.0-or-later
"""Reports of kept and broken promises."""

import json
import signal
import sys
import time
import traceback

KEPT, BROKEN, NOT_POSSIBLE = "yes", "no", "not possible there"


class Report:
    """The promises of one desktop, in the order in which they were checked."""

    def __init__(self, desktop):
        self.desktop = desktop
        #: The name and version of the desktop, once it has started.
        self.version = ""
        self.results = {}
        self.figures = {}

    def promise(self, text, kept, detail=""):
        """Records a promise. A promise that is checked several times is broken if any check failed."""
        if self.results.get(text, {}).get("result") != BROKEN:
            self.results[text] = {"result": KEPT if kept else BROKEN, "detail": str(detail)}
        return kept

    def not_possible(self, text, reason):
        self.results.setdefault(text, {"result": NOT_POSSIBLE, "detail": str(reason)})

    def run(self, part, *arguments):
        """Runs one part of a scenario. An exception counts as a broken promise, and the next part still runs."""
        title = part.__doc__.split("\n")[0].rstrip(".")
        began = time.monotonic()
        try:
            part(*arguments)
        except Exception as problem:  # noqa: BLE001 - any error belongs in the report
            line = traceback.extract_tb(problem.__traceback__)[-1]
            where = traceback.extract_tb(problem.__traceback__)[1:2] or [line]
            self.promise(f"no trouble with: {title}", False,
                         f"{type(problem).__name__}: {problem} ({where[0].name}, line {where[0].lineno})")
            _keep_picture(arguments[0], f"trouble-{part.__name__}")
        print(f"{self.desktop}: {title}: {time.monotonic() - began:.1f} s", flush=True)

    @property
    def broken(self):
        return [text for text, entry in self.results.items() if entry["result"] == BROKEN]


def _keep_picture(desk, name):
    """Saves what the monitors show, if the desktop still takes pictures."""
    try:
        desk.keep_picture(name)
    except Exception as problem:  # noqa: BLE001 - the trouble itself is reported already
        print(f"no picture {name}: {problem}", flush=True)


def table(reports):
    """A table with one line per promise and one column per desktop, followed by the summary of each."""
    texts = []
    for report in reports:
        texts += [text for text in report.results if text not in texts]
    width = max(map(len, texts), default=0)
    columns = [max(12, len(report.desktop), len(report.version)) for report in reports]
    lines = [" " * width + "".join(f"  {getattr(report, name):>{column}}" for report, column in zip(reports, columns))
             for name in ("desktop", "version")]
    for text in texts:
        cells = [report.results.get(text, {"result": ""})["result"] for report in reports]
        short = {NOT_POSSIBLE: "-", BROKEN: "NO"}
        lines.append(text.ljust(width) + "".join(f"  {short.get(cell, cell):>{column}}" for cell, column in zip(cells, columns)))
    return "\n".join(lines + list(map(summary, reports)))


def summary(report):
    """The figures and the broken promises of one desktop, and how many were kept."""
    results = [entry["result"] for entry in report.results.values()]
    lines = [f"{report.desktop}: {text}: {figure}" for text, figure in report.figures.items()]
    lines += [f"BROKEN on {report.desktop}: {text}: {report.results[text]['detail']}" for text in report.broken]
    return "\n".join([*lines, f"{report.desktop}: {results.count(KEPT)} of {len(results)} promises kept"])


def write_json(reports, path):
    path.parent.mkdir(parents=True, exist_ok=True)
    content = {report.desktop: {"version": report.version, "promises": report.results, "figures": report.figures}
               for report in reports}
    path.write_text(json.dumps(content, indent=1, ensure_ascii=False) + "\n", "utf-8")


def read_json(path):
    """The reports that `write_json` stored."""
    reports = []
    for desktop, content in json.loads(path.read_text("utf-8")).items():
        report = Report(desktop)
        report.version, report.results, report.figures = content["version"], content["promises"], content["figures"]
        reports.append(report)
    return reports


def carry_out(name, run, results=None):
    """Runs one scenario with a report of this name, prints its summary and stores it in the file `results`. Returns the exit
    status: 0 if every promise was kept. A scenario that is terminated cleans up."""
    signal.signal(signal.SIGTERM, lambda number, _: sys.exit(128 + number))
    report = Report(name)
    run(report)
    print(summary(report))
    if results:
        write_json([report], results)
    return 1 if report.broken else 0
