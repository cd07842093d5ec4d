# SPDX-License-Identifier: GPL-3.0-or-later
"""The makers' Ed25519 key for signing updates, in a file, which can be encrypted with a passphrase."""

import base64
import functools
import getpass
import os
import pathlib
import stat
import subprocess
import tempfile

from . import Refusal

_PUBLIC_LENGTH = 32
_SIGNATURE_LENGTH = 64
_DER_PREFIX = bytes.fromhex("302a300506032b6570032100")


# Answers the question for the passphrase where nobody can.
_PASSPHRASE = "ORVANE_KEY_PASSPHRASE"
_ENCRYPTED = b"BEGIN ENCRYPTED"


def generate(path, project, is_encrypted=False):
    """Writes a new private key to `path`, readable by its owner alone, and returns the base64 of its public key. Refuses a path
    inside the project and an existing file."""
    path = pathlib.Path(path)
    _refuse_inside(path, project)
    options = ("-aes-256-cbc", "-pass", f"env:{_PASSPHRASE}") if is_encrypted else ()
    key = _openssl("genpkey", "-algorithm", "ed25519", *options, passphrase=_passphrase(str(path)) if is_encrypted else "")
    try:
        descriptor = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_EXCL | os.O_NOFOLLOW, 0o600)
    except OSError as error:
        raise Refusal(f"the private key cannot be written: {path}: {error.strerror}") from error
    with os.fdopen(descriptor, "wb") as file:
        os.fchmod(file.fileno(), 0o600)
        file.write(key)
        file.flush()
        os.fsync(file.fileno())
    return public_key(path)


def check(path, project):
    """Refuses a private key that is inside the project, missing, or readable by others."""
    path = pathlib.Path(path)
    _refuse_inside(path, project)
    try:
        mode = stat.S_IMODE(path.stat().st_mode)
    except OSError as error:
        raise Refusal(f"the private key cannot be read: {path}: {error.strerror}") from error
    if mode & 0o077:
        raise Refusal(f"others can read the private key: chmod 600 {path}")
    public_key(path)


def public_key(path):
    """The base64 of the 32-byte public key, the value for ORVANE_UPDATE_PUBLIC_KEY_B64."""
    encoded = _with_key(path, "pkey", "-in", path, "-pubout", "-outform", "DER")
    return base64.b64encode(encoded[-_PUBLIC_LENGTH:]).decode()


def public_pem(path):
    """The public key as a file for openssl."""
    return _with_key(path, "pkey", "-in", path, "-pubout")


def sign(path, file):
    """The base64 of the signature over the whole content of `file`."""
    signature = _with_key(path, "pkeyutl", "-sign", "-rawin", "-inkey", path, "-in", file)
    if len(signature) != _SIGNATURE_LENGTH:
        raise Refusal(f"not an Ed25519 key: {path}")
    return base64.b64encode(signature).decode()


def sign_bytes(path, content):
    """As sign(), over `content`."""
    with tempfile.NamedTemporaryFile() as file:
        file.write(content)
        file.flush()
        return sign(path, file.name)


def is_signed(content, signature, public_key):
    """Whether `signature` is one of `content` by the owner of `public_key`, both in base64."""
    with tempfile.TemporaryDirectory() as scratch:
        parts = {"content": content, "signature": base64.b64decode(signature),
                 "key": _DER_PREFIX + base64.b64decode(public_key)}
        for name, part in parts.items():
            pathlib.Path(scratch, name).write_bytes(part)
        return subprocess.run(
            ["openssl", "pkeyutl", "-verify", "-rawin", "-pubin", "-keyform", "DER", "-inkey", f"{scratch}/key", "-sigfile",
             f"{scratch}/signature", "-in", f"{scratch}/content"], stdin=subprocess.DEVNULL, capture_output=True).returncode == 0


def _refuse_inside(path, project):
    if path.resolve().is_relative_to(pathlib.Path(project).resolve()):
        raise Refusal(f"the private key must not be in the source tree: {path}")


@functools.cache
def _passphrase(path):
    return os.environ.get(_PASSPHRASE) or getpass.getpass(f"Passphrase of {path}: ")


def _with_key(path, *arguments):
    if _ENCRYPTED not in pathlib.Path(path).read_bytes():
        return _openssl(*arguments)
    return _openssl(*arguments, "-passin", f"env:{_PASSPHRASE}", passphrase=_passphrase(str(path)))


def _openssl(*arguments, passphrase=""):
    result = subprocess.run(["openssl", *map(str, arguments)], stdin=subprocess.DEVNULL, capture_output=True,
                            env={**os.environ, _PASSPHRASE: passphrase})
    if result.returncode != 0:
        raise Refusal("openssl: " + result.stderr.decode("utf-8", "replace").strip())
    return result.stdout
