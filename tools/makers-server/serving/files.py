# SPDX-License-Identifier: GPL-3.0-or-later
"""The folder with a server's state. Commands write the messages and the misbehaviour, the running server writes the rest, so
they never write the same file. Files are read again at every use."""

import base64
import datetime
import json
import os

from . import Trouble


def standard_folder():
    """$XDG_STATE_HOME/orvanebreak-makers-server, or below ~/.local/state if the variable is not an absolute path."""
    states = os.environ.get("XDG_STATE_HOME", "")
    return os.path.join(states if os.path.isabs(states) else os.path.expanduser("~/.local/state"), "orvanebreak-makers-server")


def json_bytes(content, **form):
    """JSON in UTF-8 with its members in order; lone surrogates are escaped."""
    return json.dumps(content, ensure_ascii=False, sort_keys=True, **form).encode("utf-8", "backslashreplace")


def compact_json(content):
    return json_bytes(content, separators=(",", ":"))


class StateFolder:
    """Creates the folder, readable by its owner alone, if it is missing."""

    def __init__(self, path):
        self._path = path
        if not os.path.isdir(path):
            os.makedirs(path)
            os.chmod(path, 0o700)

    def file(self, name):
        return os.path.join(self._path, name)

    def read(self, name, otherwise):
        """The content of a JSON file, or `otherwise` if there is none."""
        try:
            with open(self.file(name), encoding="utf-8") as file:
                return json.load(file)
        except FileNotFoundError:
            return otherwise
        except ValueError as error:
            raise Trouble(f"{self.file(name)}: {error}") from error

    def write(self, name, content):
        """Replaces a JSON file atomically."""
        new = self.file(f"{name}.{os.getpid()}")
        with open(new, "wb") as file:
            file.write(json_bytes(content, indent=4) + b"\n")
        os.replace(new, self.file(name))


class Outbox:
    """The published messages, oldest first."""

    def __init__(self, folder):
        self._folder = folder
        self._messages = folder.read("messages.json", [])

    def publish(self, identifier, text):
        """Makes this the newest message, replacing an earlier one with the same id. Refuses what no client would show."""
        if identifier < 1:
            raise Trouble("the id of a message is an integer of at least 1")
        if not text:
            raise Trouble("the text of a message must not be empty")
        self._folder.write("messages.json", self._others(identifier) + [{"id": identifier, "text": text}])

    def withdraw(self, identifier):
        if self._others(identifier) == self._messages:
            raise Trouble("there is no message with this id")
        self._folder.write("messages.json", self._others(identifier))

    def newest(self):
        """The message published last, or one with the id 0 and no text if there is none."""
        return self._messages[-1] if self._messages else {"id": 0, "text": ""}

    def _others(self, identifier):
        return [message for message in self._messages if message["id"] != identifier]


class ReceivedLog:
    """Everything that clients sent, one JSON object per line, oldest first. It holds users' texts and is readable by its owner
    alone."""

    def __init__(self, folder):
        self._path = folder.file("received.jsonl")

    def add_request(self, kind, request, problem):
        """Adds a request with "kind", "time", "method", "path", "headers" (names in lower case), and "body", or "bodyBase64" if
        the body is not UTF-8; "query" and "problem" are added if there are any."""
        line = {"kind": kind, "method": request.method, "path": request.path, "headers": request.headers}
        try:
            line["body"] = request.body.decode()
        except UnicodeDecodeError:
            line["bodyBase64"] = base64.b64encode(request.body).decode()
        self.add(line | {name: value for name, value in (("query", request.query), ("problem", problem)) if value})

    def add(self, line):
        now = datetime.datetime.now(datetime.timezone.utc).isoformat(timespec="milliseconds").replace("+00:00", "Z")
        descriptor = os.open(self._path, os.O_WRONLY | os.O_APPEND | os.O_CREAT, 0o600)
        # In a single write, because others may be reading.
        with open(descriptor, "wb", buffering=0) as file:
            file.write(compact_json({"time": now, **line}) + b"\n")

    def lines(self, kinds):
        """The file's lines of these kinds, or all lines."""
        try:
            with open(self._path, "rb") as file:
                return [line for line in file if line.endswith(b"\n") and (not kinds or json.loads(line)["kind"] in kinds)]
        except FileNotFoundError:
            return []
