# SPDX-License-Identifier: GPL-3.0-or-later
"""Validates requests: JSON objects with certain members and no others."""

import json
import re


def _is_text(value):
    return isinstance(value, str)


def _is_nonce(value):
    return isinstance(value, str) and re.fullmatch("[0-9A-F]{32}", value) is not None


def _is_message_id(value):
    """An integer in any spelling, such as 7.0."""
    return type(value) in (int, float) and value == value // 1 and 1 <= value < 2 ** 63


_CLIENT = {"d": _is_text, "v": _is_text, "os": _is_text}

#: Per path: the kind of request, a check for each member, and the member that may be missing.
ENDPOINTS = {
    "/api/check.php": ("check-in", {"n": _is_nonce, **_CLIENT, "c": lambda value: value == "direct", "m": _is_message_id}, "m"),
    "/api/report.php": ("report", {**_CLIENT, "text": _is_text, "email": lambda value: _is_text(value) and value}, "email"),
    "/api/crash.php": ("crash", {**_CLIENT, "kind": lambda value: value in ("crash", "error"), "message": _is_text,
                                 "stack": _is_text}, None),
}


def read(path, body):
    """The members of a request to an endpoint, and its first problem or an empty text."""
    try:
        members = json.loads(body.decode(), parse_constant=_refuse)
    except (ValueError, RecursionError) as error:
        return {}, f"not JSON: {error}"
    if not isinstance(members, dict):
        return {}, "not a JSON object"
    return members, _problem(members, *ENDPOINTS[path][1:])


def _refuse(constant):
    raise ValueError(f"{constant} is not a number")


def _problem(members, form, optional):
    for name, is_right in form.items():
        if name not in members and name != optional:
            return f'member "{name}" is missing'
        if name in members and not is_right(members[name]):
            return f'member "{name}" has a wrong value'
    unknown = sorted(members.keys() - form.keys())
    return f'member "{unknown[0]}" is unknown' if unknown else ""
