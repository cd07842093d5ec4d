# SPDX-License-Identifier: GPL-3.0-or-later
"""The Ed25519 key pair that check-in answers are signed with, by openssl."""

import base64
import contextlib
import os
import stat
import subprocess

from . import Trouble

# The size in bytes of a private key's seed and of a public key.
_LENGTH = 32
# The DER prefix of a private key's seed.
_PREFIX = bytes.fromhex("302e020100300506032b657004220420")


class SigningKey:
    """The key pair of the seed, or a new pair that is not stored."""

    def __init__(self, seed=None):
        self._private = _PREFIX + (seed or os.urandom(_LENGTH))

    @classmethod
    def kept_in(cls, path):
        """The key pair in `path`, stored as the base64 text of its seed. Generates and stores a new pair if the file is
        missing. Refuses a file that is damaged or that others can read."""
        if not os.path.exists(path):
            with open(os.open(path, os.O_WRONLY | os.O_CREAT | os.O_EXCL, 0o600), "wb") as file:
                file.write(base64.b64encode(os.urandom(_LENGTH)) + b"\n")
        return cls(_kept_seed(path))

    def public_key(self):
        """The base64 text of the bytes of the public key."""
        with _in_memory(self._private) as key:
            encoded = _openssl("pkey", "-inform", "DER", "-pubout", "-outform", "DER", "-in", key)
        return base64.b64encode(encoded[-_LENGTH:]).decode()

    def signed(self, claims):
        """The members of a check-in answer: the claims "n", "ts", "mid" and "msg", and "sig" as base64url without padding."""
        text = base64.b64encode(claims["msg"].encode()).decode()
        canonical = f"v2|{claims['n']}|{claims['ts']}|{claims['mid']}|{text}".encode()
        with _in_memory(self._private) as key, _in_memory(canonical) as file:
            signature = _openssl("pkeyutl", "-sign", "-rawin", "-keyform", "DER", "-inkey", key, "-in", file)
        return {**claims, "sig": base64.urlsafe_b64encode(signature).decode().rstrip("=")}


def _kept_seed(path):
    with open(path, "rb") as file:
        if stat.S_IMODE(os.fstat(file.fileno()).st_mode) & 0o066:
            raise Trouble(f"{path}: others may read or write this private key; make it mode 0600")
        text = file.read().strip()
    try:
        seed = base64.b64decode(text, validate=True)
    except ValueError:
        seed = b""
    if len(seed) != _LENGTH:
        raise Trouble(f"{path}: not the base64 text of {_LENGTH} bytes")
    return seed


@contextlib.contextmanager
def _in_memory(content):
    """The descriptor of an in-memory file for openssl."""
    with open(os.memfd_create("content"), "wb", buffering=0) as file:
        file.write(content)
        yield file.fileno()


def _openssl(*words):
    """The output of openssl; numbers among the words are file descriptors."""
    files = [word for word in words if isinstance(word, int)]
    command = ["openssl", *(f"/dev/fd/{word}" if word in files else word for word in words)]
    done = subprocess.run(command, pass_fds=files, stdin=subprocess.DEVNULL, capture_output=True, check=False)
    if done.returncode != 0:
        raise Trouble(f"openssl {words[0]}: {done.stderr.decode(errors='replace').strip()}")
    return done.stdout
