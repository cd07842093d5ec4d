# SPDX-License-Identifier: GPL-3.0-or-later
"""The kernel's counters for a process. Other load on the machine affects only the memory shares."""

import pathlib
import time

from driver.waiting import comes_true

_CPU_CLOCK_OF_SCHEDULER = 2
_KIBIBYTE = 1 / 1024


def cpu_milliseconds(pid):
    """Processor time of all threads so far, including ended ones."""
    return time.clock_gettime_ns((~pid << 3) | _CPU_CLOCK_OF_SCHEDULER) / 1e6


def threads(pid):
    return list(pathlib.Path(f"/proc/{pid}/task").iterdir())


def wakeups(pid):
    """How often the current threads have been woken since they started."""
    return sum(int(line.split()[1]) for thread in threads(pid) for line in (thread / "status").read_text().splitlines()
               if line.startswith("voluntary_ctxt_switches"))


def memory(pid):
    """Memory in MiB: the proportional share, the unique part, and the written part."""
    sizes = {}
    for line in pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines()[1:]:
        name, value, *_ = line.split()
        sizes[name.rstrip(":")] = int(value) * _KIBIBYTE
    return {"PSS": sizes["Pss"], "USS": sizes["Private_Clean"] + sizes["Private_Dirty"],
            "written": sizes["Anonymous"] + _resident_shared(pid)}


def _resident_shared(pid):
    lines = pathlib.Path(f"/proc/{pid}/status").read_text().splitlines()
    return next(int(line.split()[1]) for line in lines if line.startswith("RssShmem")) * _KIBIBYTE


def resources(pid):
    """Open descriptors, threads, and kernel timers."""
    descriptors = []
    for entry in pathlib.Path(f"/proc/{pid}/fd").iterdir():
        try:
            descriptors.append(str(entry.readlink()))
        except FileNotFoundError:
            continue
    posix_timers = pathlib.Path(f"/proc/{pid}/timers").read_text().count("ID:")
    return {"descriptors": len(descriptors), "threads": len(threads(pid)),
            "timers": posix_timers + descriptors.count("anon_inode:[timerfd]")}


def wait_until_alone(pid, seconds):
    """Waits until no other process on the machine has loaded Qt, and returns whether that happened. Other processes would share
    pages that count fully for a program alone in its session."""
    return comes_true(lambda: not _others_with_toolkit(pid), seconds)


def _others_with_toolkit(pid):
    for folder in pathlib.Path("/proc").iterdir():
        if not folder.name.isdigit() or int(folder.name) == pid:
            continue
        try:
            if "libQt6Core" in (folder / "maps").read_text():
                return True
        except OSError:
            continue
    return False
