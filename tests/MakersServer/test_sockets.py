#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The makers' server on the socket level, byte for byte, and its log of requests.

usage: test_sockets.py EXECUTABLE"""

import concurrent.futures
import json
import os
import pathlib
import re
import socket
import subprocess
import time
import unittest
import urllib.parse
import zlib

import makers_server
from makers_server import MessageCase, check_in_members

_ENDLESS = ("endless-head", "endless-interim", "endless-body", "endless-chunks", "endless-chunk-extension")
#: More than fits into the buffers between client and server.
_MUCH = 16 << 20


def request(path="/api/check.php"):
    body = json.dumps(check_in_members()).encode()
    return b"POST %s HTTP/1.1\r\nHost: here\r\nContent-Length: %d\r\n\r\n%s" % (path.encode(), len(body), body)


def read_answer(stream):
    """The head of an answer, and its body of the announced length."""
    head = b""
    while (line := stream.readline()) not in (b"\r\n", b""):
        head += line
    return head, stream.read(int(re.search(rb"Content-Length: (\d+)\r\n", head)[1]))


class SocketCase(MessageCase):
    def connect(self, data=b""):
        address = urllib.parse.urlsplit(self.server.address)
        connection = socket.create_connection((address.hostname, address.port), timeout=10)
        self.addCleanup(connection.close)
        connection.sendall(data)
        return connection

    def received(self, mode, length):
        """The first bytes of the answer to a check-in; fewer if the server closes the connection."""
        self.server.misbehave(mode)
        with self.connect(request()) as connection, connection.makefile("rb") as stream:
            return stream.read(length)

    def answer(self, mode):
        self.server.misbehave(mode)
        with self.connect(request()) as connection, connection.makefile("rb") as stream:
            return read_answer(stream)

    def status(self, name):
        """A number from the server's /proc status."""
        text = pathlib.Path(f"/proc/{self.server.process_id}/status").read_text("ascii")
        return int(re.search(rf"^{name}:\s+(\d+)", text, re.MULTILINE)[1])


class Answers(SocketCase):
    def test_close_before_answer(self):
        self.assertEqual(self.received("close-before-answer", 1), b"")
        self.assertEqual(json.loads(self.server.received()[0]["body"]), check_in_members())

    def test_garbage_status(self):
        head, body = self.answer("garbage-status")
        self.assertEqual(head.splitlines(keepends=True)[0], b"HTPP/1,1 \xff\0 twenty\r\n")
        self.assert_honest(json.loads(body))

    def test_truncated_gzip(self):
        head, body = self.answer("truncated-gzip")
        self.assertTrue(head.startswith(b"HTTP/1.1 200 OK\r\n"))
        self.assertIn(b"\r\nContent-Encoding: gzip\r\n", head)
        unpacker = zlib.decompressobj(wbits=31)
        self.assertTrue(unpacker.decompress(body).startswith(b'{"mid":7,'))
        self.assertFalse(unpacker.eof)

    def test_redirect_loop(self):
        for _ in range(3):
            head, _ = self.answer("redirect-loop")
            self.assertTrue(head.startswith(b"HTTP/1.1 307 "))
            self.assertIn(b"\r\nLocation: /api/check.php\r\n", head)
        self.assertEqual(len(self.server.received("check-in")), 3)


class Endless(SocketCase):
    def test_head(self):
        first, *lines, _ = self.received("endless-head", _MUCH).split(b"\r\n")
        self.assertEqual(first, b"HTTP/1.1 200 OK")
        self.assertEqual([line for line in set(lines) if not re.fullmatch(rb"[\w-]+: \S.*", line)], [])

    def test_interim(self):
        line = b"HTTP/1.1 100 Continue\r\n\r\n"
        self.assertEqual(self.received("endless-interim", 10_000 * len(line)), 10_000 * line)

    def test_body(self):
        head, _, body = self.received("endless-body", _MUCH).partition(b"\r\n\r\n")
        self.assertNotIn(b"Content-Length", head)
        self.assert_honest(json.loads(body))

    def test_chunks(self):
        head, _, chunks = self.received("endless-chunks", 1 << 20).partition(b"\r\n\r\n")
        self.assertIn(b"\r\nTransfer-Encoding: chunked", head)
        found = re.findall(rb"1\r\n(.)\r\n", chunks)
        self.assertEqual(len(found), len(chunks) // 6)
        self.assert_honest(json.loads(b"".join(found)))

    def test_chunk_extension(self):
        head, _, chunk = self.received("endless-chunk-extension", _MUCH).partition(b"\r\n\r\n")
        self.assertIn(b"\r\nTransfer-Encoding: chunked", head)
        self.assertRegex(chunk, rb"\A[0-9a-f]+;extension=x+\Z")

    def test_bounded_by_the_connection_and_not_by_memory(self):
        for mode in _ENDLESS:
            with self.subTest(mode=mode):
                self.received(mode, 1)
                before = self.status("VmHWM")
                self.assertEqual(len(self.received(mode, _MUCH)), _MUCH)
                self.assertLess(self.status("VmHWM") - before, _MUCH // 4 // 1024)
                self.wait_for_threads(1)

    def test_silence_ends_with_the_connection(self):
        for mode in ("late", "slow-drip"):
            self.server.misbehave(mode, "80000")
            with self.connect(request()):
                self.wait_for_threads(2)
                time.sleep(0.2)
                self.wait_for_threads(2)
            self.wait_for_threads(1)

    def wait_for_threads(self, count):
        """Waits for one thread per connection plus the listening thread."""
        end = time.monotonic() + 5
        while self.status("Threads") != count and time.monotonic() < end:
            time.sleep(0.02)
        self.assertEqual(self.status("Threads"), count)

    def test_others_are_answered_and_the_server_ends_at_once(self):
        connections = []
        for mode in _ENDLESS:
            self.server.misbehave(mode)
            connections.append(self.connect(request()))
            self.assertTrue(connections[-1].recv(1))
        self.assert_honest(json.loads(self.answer("none")[1]))
        for connection in connections:
            self.assertEqual(len(connection.recv(100, socket.MSG_WAITALL)), 100)
        began = time.monotonic()
        self.server.stop()
        self.assertLess(time.monotonic() - began, 1)
        self.server.start()


class Records(SocketCase):
    def test_every_request_of_many_clients_once(self):
        with concurrent.futures.ThreadPoolExecutor(8) as pool:
            bodies = list(pool.map(lambda number: self.server.check_in(d=f"DEVICE-{number}", m=3), range(40)))
        self.assertEqual({body["mid"] for body in bodies}, {7})
        devices = [f"DEVICE-{number}" for number in range(40)]
        self.assertCountEqual([json.loads(line["body"])["d"] for line in self.server.received("check-in")], devices)
        self.assertCountEqual([line["device"] for line in self.server.received("acknowledgement")], devices)
        self.assertCountEqual(json.loads((self.server.folder / "acknowledgements.json").read_text("utf-8")), devices)

    def test_every_request_of_one_connection_once(self):
        with self.connect(request() + request("/elsewhere")) as connection, connection.makefile("rb") as stream:
            for status in (b"200", b"404", b"200"):
                self.assertEqual(read_answer(stream)[0].split()[1], status)
                if status == b"404":
                    connection.sendall(request())
        self.assertEqual([line["kind"] for line in self.server.received()], ["check-in", "other", "check-in"])

    def test_a_request_that_comes_in_pieces(self):
        connection = self.connect()
        for piece in (request()[:20], request()[20:-40], request()[-40:-5], request()[-5:]):
            connection.sendall(piece)
            time.sleep(0.1)
        self.assertEqual(connection.recv(15), b"HTTP/1.1 200 OK")
        self.assertEqual(len(self.server.received()), 1)

    def test_partial_request_is_not_recorded(self):
        for data in (request()[:-1], request()[:40], b"\0\xff\r\n\r\n", b"\r\n"):
            connection = self.connect(data)
            connection.shutdown(socket.SHUT_WR)
            self.assertEqual(connection.recv(1), b"", data)
        self.assertEqual(self.server.received(), [])


class Tree(unittest.TestCase):
    def test_nothing_is_written_beside_the_executable(self):
        environment = {name: value for name, value in os.environ.items() if name != "PYTHONDONTWRITEBYTECODE"}
        subprocess.run([self.executable, "--help"], env=environment, stdout=subprocess.DEVNULL, timeout=20, check=True)
        self.assertEqual(list(pathlib.Path(self.executable).parent.rglob("*.pyc")), [])


if __name__ == "__main__":
    makers_server.run_tests()
