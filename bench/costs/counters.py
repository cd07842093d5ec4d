# SPDX-License-Identifier: GPL-3.0-or-later
"""What the kernel counts of a process. Other load on the machine changes none of it but the shares of memory."""

import pathlib
import time

from driver.waiting import comes_true

_CPU_CLOCK_OF_SCHEDULER = 2
_KIBIBYTE = 1 / 1024


def cpu_milliseconds(pid):
    """Processor time of all threads so far, those that have ended included."""
    return time.clock_gettime_ns((~pid << 3) | _CPU_CLOCK_OF_SCHEDULER) / 1e6


def threads(pid):
    return list(pathlib.Path(f"/proc/{pid}/task").iterdir())


def wakeups(pid):
    """How often the threads that run now have been woken since they began."""
    return sum(int(line.split()[1]) for thread in threads(pid) for line in (thread / "status").read_text().splitlines()
               if line.startswith("voluntary_ctxt_switches"))


def memory(pid):
    """Mebibytes: the proportional share, what the process has for itself, and what it has written."""
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
    """Open descriptors, threads, and timers of the kernel's."""
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
    """Waits until no other process of the machine has the toolkit's libraries; whether that came true. Another one
    would bear a part of the pages that a program alone in its session bears itself."""
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
