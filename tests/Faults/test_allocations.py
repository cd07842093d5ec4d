#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Failing allocations: the whole program runs a script of user actions while allocations fail at chosen points. It may end at
once with a crash report, but it must not hang, leave a break on the screen, or lose stored data."""

import argparse
import collections
import concurrent.futures
import json
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile
import unittest

TESTS = pathlib.Path(__file__).resolve().parent.parent
sys.path.append(str(TESTS / "MakersServer"))

from makers_server import MakersServer  # noqa: E402

OPTIONS = None

#: Parallel runs, because a run mostly waits.
_AT_ONCE = 3
_TIMEOUT = 30
#: The size from which the C library allocates with mmap.
_LARGE = 128 * 1024
#: Some libraries retry until they get memory, so allocations have to succeed again eventually.
_MANY = 10_000
_MILLION = 1_000_000
_MESSAGE = 99
_REPORT = re.compile(r"(Signal \d+|Exception: [^\n]*)\n---\n(\d+ \S+ 0x[0-9a-f]+[^\n]*\n?)+")
_HISTORY = [{"id": number, "body": f"Message {number} " + "é" * 400, "date": "2026-01-01T00:00:00.000Z", "mine": False}
            for number in range(1, 21)]
#: The preferences of a user who has used the program for a while.
_STORED = {"OBOnboarded": True, "OBPauseSeconds": 30, "unknown": {"kept": 1},
           "OBShownMessages": [1, 2, 3], "OBMessageHistory": _HISTORY}
_CHANGING = {"OBShownMessages", "OBMessageHistory", "OBAckMessage", "OBSoundEnabled"}

#: Which allocations fail: how many succeed first, the maximum number of failures, the rate per million, the minimum size.
Plan = collections.namedtuple("Plan", "seed first maximum rate size")


class User:
    """A user with a home directory for one run."""

    def __init__(self, folder, server):
        home = tempfile.mkdtemp(dir=folder)
        self.pending = pathlib.Path(home, "data/OrvaneBreak/pending-crash.txt")
        self.preferences = pathlib.Path(home, "config/OrvaneBreak/preferences.json")
        self.preferences.parent.mkdir(parents=True)
        # A new device id, because the server sends a message only until the device has acknowledged it.
        self.preferences.write_text(json.dumps({**_STORED, "OBDeviceId": pathlib.Path(home).name}))
        self._environment = {
            **os.environ, "HOME": home, "XDG_DATA_HOME": f"{home}/data", "XDG_CONFIG_HOME": f"{home}/config",
            "XDG_STATE_HOME": f"{home}/state", "XDG_CACHE_HOME": f"{home}/cache", "ORVANE_TEST_RUN": "1",
            "ORVANE_TEST_SERVER": server.address, "ORVANE_TEST_PUBLIC_KEY": server.public_key}

    def use(self, plan=None, **variables):
        """Runs the program's script of user actions to its end; returns the exit status."""
        if plan:
            variables.update(LD_PRELOAD=OPTIONS.allocator, ORVANE_TEST_ALLOCATIONS=" ".join(map(str, plan)))
        done = subprocess.run([OPTIONS.program], env={**self._environment, **variables}, timeout=_TIMEOUT, check=False,
                              stderr=subprocess.DEVNULL)
        return done.returncode

    def stored(self):
        return json.loads(self.preferences.read_text("utf-8"))

    def has_everything(self):
        """Whether the program has stored everything that a run without failures stores."""
        stored = self.stored()
        return stored.get("OBSoundEnabled") and stored.get("OBAckMessage") == _MESSAGE \
            and [entry["id"] for entry in stored["OBMessageHistory"]] == [entry["id"] for entry in _HISTORY] + [_MESSAGE]


class Shortages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = folder.name
        cls.server = MakersServer(OPTIONS.makers_server, folder.name + "/server")
        cls.server.start()
        cls.addClassCleanup(cls.server.stop)
        cls.server.publish(_MESSAGE, "Bonjour à toi")

    def test_any_allocation(self):
        total = self._allocations(0)
        plans = [self._plan(seed, total) for seed in range(OPTIONS.first_seed, OPTIONS.first_seed + OPTIONS.runs)]
        reported = sum(self._carry_out(plans, self._endure))
        self.assertEqual(len(self.server.received("crash")), reported)

    def test_large_allocations_are_survived(self):
        total = self._allocations(_LARGE)
        plans = [Plan(0, first, _MANY, _MILLION, _LARGE) for first in range(total)]
        plans += [Plan(seed, 0, _MANY, _MILLION // 2, _LARGE) for seed in range(4)]
        self._carry_out(plans, self._survive)

    def _allocations(self, size):
        """The number of allocations of at least this size in a run without failures."""
        user, file = User(self.folder, self.server), pathlib.Path(self.folder, "count")
        status = user.use(Plan(0, 0, 0, 0, size), ORVANE_TEST_ALLOCATIONS_FILE=str(file))
        self.assertEqual((status, user.has_everything()), (0, True))
        return int(file.read_text("ascii"))

    @staticmethod
    def _plan(seed, total):
        """A plan in which one allocation, a few, or all for a while fail, from a random point of the run on."""
        chance = random.Random(seed)
        maximum, rate = chance.choice([(1, _MILLION), (_MANY, 1_000), (_MANY, _MILLION)])
        return Plan(seed, chance.randrange(total), maximum, rate, 0)

    def _carry_out(self, plans, run):
        """The results of all runs; a failure message names the plan."""
        with concurrent.futures.ThreadPoolExecutor(_AT_ONCE) as pool:
            runs = [(plan, pool.submit(run, plan)) for plan in plans]
        results = []
        for plan, future in runs:
            with self.subTest(plan=plan):
                results.append(future.result())
        return results

    def _endure(self, plan):
        """Runs once with failures and once without; returns the number of crash reports."""
        user = User(self.folder, self.server)
        status = user.use(plan)
        # The ways in which the program itself may end; the script exits with other statuses if a break stays.
        self.assertLessEqual(status, 0)
        stored = user.stored()
        self.assertEqual({key: stored.get(key) for key in _STORED if key not in _CHANGING},
                         {key: value for key, value in _STORED.items() if key not in _CHANGING})
        self.assertEqual(stored["OBMessageHistory"][:len(_HISTORY)], _HISTORY)
        is_reported = user.pending.exists()
        if is_reported:
            self.assertRegex(user.pending.read_text("utf-8"), re.compile(rf"\A{_REPORT.pattern}\Z"))
        self.assertEqual((user.use(), user.has_everything(), user.pending.exists()), (0, True, False))
        return int(is_reported)

    def _survive(self, plan):
        user = User(self.folder, self.server)
        self.assertEqual((user.use(plan), user.has_everything(), user.pending.exists()), (0, True, False))


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", help="the executable with the scripted user")
    parser.add_argument("makers_server")
    parser.add_argument("allocator", help="the library that makes allocations fail")
    parser.add_argument("--runs", type=int, default=24, help="number of runs with arbitrary failing allocations")
    parser.add_argument("--first-seed", type=int, default=1)
    OPTIONS, rest = parser.parse_known_args()
    unittest.main(argv=sys.argv[:1] + rest)
