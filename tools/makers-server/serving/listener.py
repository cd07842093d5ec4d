# SPDX-License-Identifier: GPL-3.0-or-later
"""Accepts requests on the loopback interface, over HTTP or HTTPS, and sends the answers."""

import select
import socket
import threading
import typing

from . import Trouble

_MAX_LINE_LENGTH = 65536


class Request(typing.NamedTuple):
    method: str
    path: str
    #: Without the question mark; empty if there is none.
    query: str
    #: By their names in lower case.
    headers: dict
    body: bytes


class Listener:
    """Listens on 127.0.0.1, on any free port if `port` is 0. `answer` turns a request into an answer, on any thread. With
    `tls`, an SSLContext, it speaks only HTTPS. `address` has no trailing slash."""

    def __init__(self, port, answer, tls=None):
        try:
            self._socket = socket.create_server(("127.0.0.1", port))
        except OSError as error:
            raise Trouble(f"port {port} is not available") from error
        self._answer = answer
        self._tls = tls
        self.address = f"{'https' if tls else 'http'}://127.0.0.1:{self._socket.getsockname()[1]}"

    def serve(self):
        """Never returns. Each connection has its own thread, which ends with the connection or the process."""
        while True:
            connection, _ = self._socket.accept()
            threading.Thread(target=self._hold, args=(connection,), daemon=True).start()

    def _hold(self, connection):
        try:
            with connection:
                if self._tls:
                    connection = self._tls.wrap_socket(connection, server_side=True)
                with connection, connection.makefile("rb") as stream:
                    connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
                    while (request := _read(stream)) and _send(connection, self._answer(request)):
                        pass
        except OSError:
            # The client went away, or does not trust the certificate.
            pass


def _read(stream):
    """The next request, or None if there is none or it cannot be parsed."""
    start = stream.readline(_MAX_LINE_LENGTH).decode("latin-1").split()
    headers = {}
    while (line := stream.readline(_MAX_LINE_LENGTH).decode("latin-1")).strip():
        name, _, value = line.partition(":")
        headers[name.strip().lower()] = value.strip()
    if len(start) != 3 or not line:
        return None
    length = headers.get("content-length", "")
    length = int(length) if length.isdecimal() else 0
    body = stream.read(length)
    path, _, query = start[1].partition("?")
    return Request(start[0], path, query, headers, body) if len(body) == length else None


def _send(connection, answer):
    """Returns whether the connection stays open."""
    for piece in answer.delivery(answer):
        if isinstance(piece, bytes):
            connection.sendall(piece)
        else:
            _pause(connection, piece)
    return answer.stays_open


def _pause(connection, seconds):
    poll = select.poll()
    poll.register(connection, select.POLLRDHUP)
    if poll.poll(seconds * 1000):
        raise ConnectionError("the client went away")
