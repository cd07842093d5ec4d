# SPDX-License-Identifier: GPL-3.0-or-later
"""The kinds of wrong answers, and the one chosen."""

import os
import re
import typing
import zlib

from . import Trouble, answers
from .signing_key import SigningKey

# Far too deep for a recursive parser.
_BOMB_DEPTH = 100_000
_FILE = "misbehaviour.json"


class Context(typing.NamedTuple):
    """The input of a misbehaviour."""
    #: The given argument, or the standard one.
    argument: str
    path: str
    #: Where the server listens without TLS: "http://127.0.0.1:PORT".
    plain_address: str


class Misbehaviour(typing.NamedTuple):
    """The last three fields each replace one stage of the honest answer, given that stage and the context: the claims before
    they are signed, the members of the JSON object, the answer. None leaves a stage unchanged."""
    name: str
    summary: str
    standard_argument: str = ""
    accepts: typing.Callable = lambda argument: not argument
    claims: typing.Callable = None
    members: typing.Callable = None
    answer: typing.Callable = None


def whole_number(text):
    """The text as a 64-bit integer, or None."""
    return int(text) if re.fullmatch("[+-]?[0-9]{1,20}", text) and -2 ** 63 <= int(text) < 2 ** 63 else None


def _is_whole_seconds(argument):
    return (whole_number(argument) or 0) > 0


def _is_duration(argument):
    try:
        return 0 < float(argument) < 86400
    except ValueError:
        return False


def _is_member(argument):
    return argument in ("n", "ts", "mid", "msg", "sig", "ok")


def _saying(**members):
    return lambda honest, _: {**honest, **members}


def _later(direction):
    return lambda honest, context: {**honest, "ts": honest["ts"] + direction * int(context.argument)}


def _without(name=None):
    return lambda honest, context: {key: value for key, value in honest.items() if key != (name or context.argument)}


def _with_wrong_type(members, context):
    wrong = {"n": 7, "ts": str(members.get("ts")), "mid": str(members.get("mid")), "msg": [members.get("msg")], "sig": None,
             "ok": "true"}
    return {name: wrong[name] if name == context.argument else value for name, value in members.items()}


def _signed_by_somebody_else(members, _):
    return SigningKey().signed(members) if "sig" in members else members


def _body(change):
    return lambda answer, _: answer._replace(body=change(answer.body))


def _with_value(member, literal=None):
    """Replaces the value of a member, which contains neither a comma nor a brace, by the bytes."""
    return lambda answer, context: answer._replace(body=re.sub(
        rb'("%s":)[^,}]*' % member, lambda found: found[1] + (literal or context.argument.encode()), answer.body, count=1))


def _with_members(literal):
    return _body(lambda body: body[:-1] + b"," + literal + b"}")


def _delivered(delivery, **changes):
    return lambda answer, _: answer._replace(delivery=delivery, **changes)


def _paced(delivery):
    return lambda answer, context: answer._replace(delivery=lambda whole: delivery(whole, float(context.argument)))


def _redirected(address):
    # 307 keeps the method and the body: a client that follows gets a valid answer.
    return lambda answer, context: answer._replace(
        status=307, headers=(*answer.headers, f"Location: {address.format(*context)}"))


def _half_of_gzip(answer, _):
    packer = zlib.compressobj(wbits=31)
    packed = packer.compress(answer.body) + packer.flush()
    return answer._replace(body=packed[:len(packed) // 2], headers=(*answer.headers, "Content-Encoding: gzip"))


NONE = Misbehaviour("none", "answers correctly again")

#: All misbehaviours, in the order of the help text.
ALL = (
    Misbehaviour("late", "answers after N seconds of silence", "30", _is_duration, answer=_paced(answers.late)),
    Misbehaviour("truncated", "a whole answer whose JSON ends in the middle", answer=_body(lambda body: body[:len(body) // 2])),
    Misbehaviour("wrong-nonce", "correctly signed for another request",
                 claims=lambda honest, _: {**honest, "n": os.urandom(16).hex().upper()}),
    Misbehaviour("wrong-key", "correctly signed with another key", members=_signed_by_somebody_else),
    Misbehaviour("old-clock", "the clock of the server is N seconds behind", "600", _is_whole_seconds, claims=_later(-1)),
    Misbehaviour("future-clock", "the clock of the server is N seconds ahead", "660", _is_whole_seconds, claims=_later(1)),
    Misbehaviour("wrong-types", "the member named (n, ts, mid, msg, sig or ok) has a value of another type", "mid", _is_member,
                 members=_with_wrong_type),
    Misbehaviour("without", "the member named (n, ts, mid, msg, sig or ok) is missing", "sig", _is_member, members=_without()),
    Misbehaviour("zero-id", "a signed text with the id 0", claims=_saying(mid=0)),
    Misbehaviour("empty-message", "a signed id with an empty text", claims=_saying(msg="")),
    Misbehaviour("500-ok-true", "status 500, everything else correct",
                 answer=lambda answer, _: answer._replace(status=500)),
    Misbehaviour("200-ok-false", 'status 200 with "ok" false', members=_saying(ok=False)),
    Misbehaviour("no-ok", 'status 200 without "ok"', members=_without("ok")),
    Misbehaviour("not-json", "an HTML page", answer=_body(lambda _: b"<!doctype html><title>ok</title>\n")),
    Misbehaviour("redirect-http", "redirects to the same path without TLS, where the answer is honest",
                 answer=_redirected("{2}{1}?redirected")),
    Misbehaviour("redirect-loop", "redirects to the same address forever", answer=_redirected("{1}")),
    Misbehaviour("slow-drip", "an honest answer, one byte every N seconds", "1", _is_duration, answer=_paced(answers.dripping)),
    Misbehaviour("garbage-status", "an honest answer after an invalid status line",
                 answer=_delivered(answers.garbage_status)),
    Misbehaviour("endless-head", "endless header lines", answer=_delivered(answers.endless_head)),
    Misbehaviour("endless-interim", "endless answers with status 100, never another",
                 answer=_delivered(answers.endless_interim)),
    Misbehaviour("endless-body", "an honest answer, then endless spaces", answer=_delivered(answers.endless_body)),
    Misbehaviour("endless-chunks", "the same, each byte in its own chunk", answer=_delivered(answers.endless_chunks)),
    Misbehaviour("endless-chunk-extension", "a first chunk with an endless extension",
                 answer=_delivered(answers.endless_chunk_extension)),
    Misbehaviour("close-before-answer", "reads the request and closes the connection",
                 answer=_delivered(answers.nothing, stays_open=False)),
    Misbehaviour("close-in-answer", "closes the connection after half of the announced body",
                 answer=_delivered(answers.half, stays_open=False)),
    Misbehaviour("truncated-gzip", "a complete answer with only the first half of its gzip data", answer=_half_of_gzip),
    Misbehaviour("duplicate-members", "every member twice, the second with an unsigned value",
                 answer=_with_members('"mid":8,"msg":"Personne n\'a signé ceci","ok":false'.encode())),
    Misbehaviour("trailing-bytes", "a second object after the first", answer=_body(lambda body: body + b'{"mid":8}')),
    Misbehaviour("deep", "one more member, an array 100,000 levels deep",
                 answer=_with_members(b'"deep":' + b"[" * _BOMB_DEPTH + b"]" * _BOMB_DEPTH)),
    Misbehaviour("huge-number", "id 2^64 + 7, signed as its lowest 64 bits",
                 claims=_saying(mid=7), answer=_with_value(b"mid", b"18446744073709551623")),
    Misbehaviour("boolean-id", "id true, signed as 1", claims=_saying(mid=1), answer=_with_value(b"mid", b"true")),
    Misbehaviour("float-id", "the id as written in the argument, signed as 1000", "1000.0", bool,
                 claims=_saying(mid=1000), answer=_with_value(b"mid")),
    Misbehaviour("nul-in-message", "a signed text that contains a NUL", claims=_saying(msg="Avant\0après")),
    Misbehaviour("lone-surrogate", "a lone surrogate in the text, signed as many parsers read it",
                 claims=_saying(msg="\ufffd"), answer=_with_value(b"msg", rb'"\ud800"')),
    Misbehaviour("invalid-utf8", "a text that is not UTF-8, signed as many parsers read it",
                 claims=_saying(msg="\ufffd"), answer=_with_value(b"msg", b'"\xff"')),
)
_BY_NAME = {misbehaviour.name: misbehaviour for misbehaviour in (NONE, *ALL)}


def choose(folder, name, argument=""):
    """Chooses by name. An empty argument selects the standard one."""
    if name not in _BY_NAME:
        raise Trouble(f"unknown misbehaviour: {name}")
    used = argument or _BY_NAME[name].standard_argument
    if not _BY_NAME[name].accepts(used):
        raise Trouble(f"{name} does not take the argument {used}")
    folder.write(_FILE, {"name": name, "argument": used})


def chosen(folder):
    """The chosen misbehaviour and its argument."""
    content = folder.read(_FILE, {})
    return _BY_NAME.get(content.get("name"), NONE), content.get("argument", "")
