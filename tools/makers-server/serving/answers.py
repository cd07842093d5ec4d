# SPDX-License-Identifier: GPL-3.0-or-later
"""Answers and their delivery. Each kind of delivery is a generator that yields bytes to send or a number of seconds to wait.
An endless one is advanced as fast as the client reads."""

import itertools
import typing

_REASONS = {200: "OK", 307: "Temporary Redirect", 400: "Bad Request", 404: "Not Found", 405: "Method Not Allowed",
            500: "Internal Server Error"}
_BLOCK_SIZE = 65536


def at_once(answer):
    yield answer.head() + answer.body


class Answer(typing.NamedTuple):
    status: int
    body: bytes
    headers: tuple = ("Content-Type: application/json",)
    #: One of the functions of this module.
    delivery: typing.Callable = at_once
    #: Whether the connection stays open for another request.
    stays_open: bool = True

    def head(self, framing=None):
        """The status line and the headers, by default with the length of the whole body."""
        lines = (f"HTTP/1.1 {self.status} {_REASONS[self.status]}", *self.headers,
                 framing or f"Content-Length: {len(self.body)}", "", "")
        return "\r\n".join(lines).encode()


def late(answer, seconds):
    yield seconds
    yield from at_once(answer)


def dripping(answer, seconds):
    yield answer.head()
    for byte in answer.body:
        yield bytes([byte])
        yield seconds


def half(answer):
    yield answer.head() + answer.body[:len(answer.body) // 2]


def nothing(_answer):
    yield b""


def garbage_status(answer):
    """Everything after the status line is correct."""
    yield b"HTPP/1,1 \xff\0 twenty\r\n" + answer.head().partition(b"\r\n")[2] + answer.body


def endless_head(answer):
    yield answer.head().removesuffix(b"\r\n")
    yield from itertools.repeat(b"X-Filler: and so on\r\n" * (_BLOCK_SIZE // 21))


def endless_interim(_answer):
    yield from itertools.repeat(b"HTTP/1.1 100 Continue\r\n\r\n" * (_BLOCK_SIZE // 25))


def endless_body(answer):
    """The body, then spaces."""
    yield answer.head("Connection: close") + answer.body
    yield from itertools.repeat(b" " * _BLOCK_SIZE)


def endless_chunks(answer):
    """The same, with each byte in its own chunk."""
    yield answer.head("Transfer-Encoding: chunked") + b"".join(b"1\r\n%c\r\n" % byte for byte in answer.body)
    yield from itertools.repeat(b"1\r\n \r\n" * (_BLOCK_SIZE // 6))


def endless_chunk_extension(answer):
    """The size of the first chunk, followed by an endless chunk extension."""
    yield answer.head("Transfer-Encoding: chunked") + b"%x;extension=" % len(answer.body)
    yield from itertools.repeat(b"x" * _BLOCK_SIZE)
