# SPDX-License-Identifier: GPL-3.0-or-later
"""Waiting for a condition, never for a fixed time."""

import time


_patience = 1.0


def be_patient(factor):
    """From now on everything may take this many times as long: for programs that are slowed down."""
    global _patience
    _patience = factor


class TimedOut(Exception):
    """A condition did not come true in time; the text says which."""


def wait_until(condition, what, timeout=10.0, interval=0.01):
    """Returns the first true value of condition(); raises TimedOut with `what` after `timeout` seconds."""
    timeout *= _patience
    deadline = time.monotonic() + timeout
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise TimedOut(f"{what}: not within {timeout:g} s")
        time.sleep(interval)


def comes_true(condition, timeout=10.0):
    """True as soon as condition() is true; False after `timeout` seconds."""
    try:
        wait_until(condition, "condition", timeout)
    except TimedOut:
        return False
    return True


def stays_true(condition, seconds):
    """True when condition() is true at every look during `seconds`."""
    return not comes_true(lambda: not condition(), seconds)
