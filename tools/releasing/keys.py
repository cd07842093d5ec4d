# SPDX-License-Identifier: GPL-3.0-or-later
"""The makers' Ed25519 key for signing updates, in a file."""

import base64
import os
import pathlib
import stat
import subprocess

from . import Refusal

_PUBLIC_LENGTH = 32
_SIGNATURE_LENGTH = 64


def generate(path, project):
    """Writes a new private key to `path`, readable by its owner alone, and returns the base64 of its public key. Refuses a path
    inside the project and an existing file."""
    path = pathlib.Path(path)
    _refuse_inside(path, project)
    key = _openssl("genpkey", "-algorithm", "ed25519")
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
    encoded = _openssl("pkey", "-in", path, "-pubout", "-outform", "DER")
    return base64.b64encode(encoded[-_PUBLIC_LENGTH:]).decode()


def sign(path, file):
    """The base64 of the signature over the whole content of `file`."""
    signature = _openssl("pkeyutl", "-sign", "-rawin", "-inkey", path, "-in", file)
    if len(signature) != _SIGNATURE_LENGTH:
        raise Refusal(f"not an Ed25519 key: {path}")
    return base64.b64encode(signature).decode()


def _refuse_inside(path, project):
    if path.resolve().is_relative_to(pathlib.Path(project).resolve()):
        raise Refusal(f"the private key must not be in the source tree: {path}")


def _openssl(*arguments):
    result = subprocess.run(["openssl", *map(str, arguments)], stdin=subprocess.DEVNULL, capture_output=True)
    if result.returncode != 0:
        raise Refusal("openssl: " + result.stderr.decode("utf-8", "replace").strip())
    return result.stdout
