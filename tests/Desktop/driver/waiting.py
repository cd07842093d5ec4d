# SPDX-License-Identifier: GPL-3.0-or-later
"""Waiting for conditions instead of fixed times."""

import time


_timeout_factor = 1.0


def scale_timeouts(factor):
    """Multiplies all timeouts from now on, for programs that run slower than usual."""
    global _timeout_factor
    _timeout_factor = factor


class TimedOut(Exception):
    """A condition did not become true in time; the text says which."""


def wait_until(condition, what, timeout=10.0, interval=0.01):
    """Returns the first true value of condition(); raises TimedOut with `what` after `timeout` seconds."""
    timeout *= _timeout_factor
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
    """True if condition() is true at every check during `seconds`."""
    return not comes_true(lambda: not condition(), seconds)
