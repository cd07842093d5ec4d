# SPDX-License-Identifier: GPL-3.0-or-later
"""The makers' server as a real process on loopback, and helpers for its clients."""

import base64
import http.client
import json
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.parse

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent.parent / "tools" / "makers-server"))

from serving.files import ReceivedLog, StateFolder  # noqa: E402

NONCE = "0123456789ABCDEF0123456789ABCDEF"
# The DER prefix of a 32-byte Ed25519 public key.
_KEY_PREFIX = bytes.fromhex("302a300506032b6570032100")


class MakersServer:
    """A server and its folder; a context manager that ends the process."""

    def __init__(self, executable, folder, *options):
        self._executable = executable
        self.folder = pathlib.Path(folder)
        self._options = options
        self._process = None
        self.public_key = None
        self.address = None
        self.plain_address = None

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *_):
        self.stop()

    def start(self):
        """Starts the server and returns when it listens; `address` has no trailing slash."""
        self._process = subprocess.Popen([self._executable, "--folder", self.folder, *self._options],
                                         stdout=subprocess.PIPE, text=True)
        for line in self._process.stdout:
            words = line.split()
            if words[:2] == ["public", "key"]:
                self.public_key = words[2]
            elif words[:3] == ["without", "TLS", "on"]:
                self.plain_address = words[3]
            elif words[:2] == ["listening", "on"]:
                self.address = words[2]
                return
        self._process.stdout.close()
        raise RuntimeError(f"the makers' server ended with status {self._process.wait(10)}")

    @property
    def process_id(self):
        return self._process.pid

    def stop(self):
        """Ends the server; raises RuntimeError if it had already ended."""
        self._process.terminate()
        status = self._process.wait(10)
        self._process.stdout.close()
        if status != -signal.SIGTERM:
            raise RuntimeError(f"the makers' server ended by itself with status {status}")

    def command(self, *words, check=True):
        """Runs one command on the folder and returns the finished process."""
        return subprocess.run([self._executable, "--folder", self.folder, *map(str, words)], check=check,
                              capture_output=True, text=True, timeout=20)

    def publish(self, identifier, text):
        self.command("publish", "--", identifier, text)

    def misbehave(self, mode, *argument):
        self.command("misbehave", mode, *argument)

    def received(self, *kinds):
        """The requests received so far of these kinds, or all, oldest first. Reads the file behind the command "list" directly,
        because tests poll often."""
        return [json.loads(line) for line in ReceivedLog(StateFolder(self.folder)).lines(kinds)]

    def connection(self, context=None, timeout=10):
        """A connection that does not follow redirects; with TLS for an HTTPS address."""
        address = urllib.parse.urlsplit(self.address)
        if address.scheme == "https":
            return http.client.HTTPSConnection(address.hostname, address.port, timeout=timeout, context=context)
        return http.client.HTTPConnection(address.hostname, address.port, timeout=timeout)

    def post(self, path, members):
        """Sends the members as JSON; returns the status and the body as bytes."""
        connection = self.connection()
        try:
            connection.request("POST", path, json.dumps(members))
            response = connection.getresponse()
            return response.status, response.read()
        finally:
            connection.close()

    def check_in(self, **members):
        """Sends a valid check-in with the given members replaced; returns the members of the answer."""
        return json.loads(self.post("/api/check.php", check_in_members(**members))[1])


def check_in_members(**members):
    return {"n": NONCE, "d": "DEVICE-1", "v": "0.1.0", "os": "macOS 6.1", "c": "direct"} | members


def report_members(**members):
    return {"d": "DEVICE-1", "v": "0.1.0", "os": "macOS 6.1", "text": "Ça ne marche pas"} | members


def crash_members(**members):
    return {"d": "DEVICE-1", "kind": "crash", "message": "SIGSEGV", "stack": "a\nb", "v": "0.1.0",
            "os": "macOS 6.1"} | members


def canonical_text(answer):
    """The signed bytes of a check-in answer."""
    text = base64.b64encode(answer["msg"].encode()).decode()
    return f"v2|{answer['n']}|{answer['ts']}|{answer['mid']}|{text}".encode()


def is_signed(answer, public_key):
    """Whether openssl verifies the signature of a check-in answer."""
    signature = base64.urlsafe_b64decode(answer["sig"] + "=" * (-len(answer["sig"]) % 4))
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        (folder / "key").write_bytes(_KEY_PREFIX + base64.b64decode(public_key))
        (folder / "text").write_bytes(canonical_text(answer))
        (folder / "signature").write_bytes(signature)
        result = subprocess.run(["openssl", "pkeyutl", "-verify", "-pubin", "-keyform", "DER", "-rawin", "-inkey",
                                 folder / "key", "-in", folder / "text", "-sigfile", folder / "signature"],
                                capture_output=True, timeout=20, check=False)
    return result.returncode == 0


def make_certificate(folder, subject):
    """A self-signed certificate for `subject` ("IP:127.0.0.1" matches the server), and its key."""
    certificate, key = pathlib.Path(folder, "certificate.pem"), pathlib.Path(folder, "certificate-key.pem")
    subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                    "-keyout", key, "-out", certificate, "-days", "2", "-subj", "/CN=makers-server",
                    "-addext", f"subjectAltName={subject}"], check=True, capture_output=True, timeout=60)
    return certificate, key


class MessageCase(unittest.TestCase):
    """Base class: `server` runs and has published a message."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.server = MakersServer(self.executable, folder.name)
        self.server.start()
        self.addCleanup(self.server.stop)
        self.server.publish(7, "Bonjour")

    def assert_honest(self, answer):
        self.assertEqual((answer["n"], answer["mid"], answer["msg"]), (NONCE, 7, "Bonjour"))
        self.assertAlmostEqual(answer["ts"], time.time(), delta=5)
        self.assertTrue(is_signed(answer, self.server.public_key))


def run_tests():
    """The main function of a test program, whose first argument is the path of the server."""
    unittest.TestCase.executable = sys.argv.pop(1)
    unittest.main()
