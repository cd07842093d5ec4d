# SPDX-License-Identifier: GPL-3.0-or-later
"""The three endpoints."""

import sys
import threading
import time

from . import Trouble, misbehaviours, request_form
from .answers import Answer
from .files import Outbox, ReceivedLog, compact_json

_ACKNOWLEDGEMENTS = "acknowledgements.json"


class Endpoints:
    """Keeps everything in `folder`. `plain_address` is where the server listens without TLS, "http://127.0.0.1:PORT"."""

    def __init__(self, folder, key):
        self.plain_address = None
        self._folder = folder
        self._key = key
        self._received = ReceivedLog(folder)
        self._lock = threading.Lock()

    def answer(self, request):
        """Records the request and answers it, incorrectly if a misbehaviour is chosen. A check-in gets the message published
        last unless its device has acknowledged that message. Unknown paths get status 404, methods other than POST 405,
        malformed requests 400, and errors of the server, which are printed on standard error, 500; all of them with "ok" false.
        Callable from any thread."""
        with self._lock:
            try:
                return self._respond(request)
            except (Trouble, OSError) as trouble:
                print(f"makers-server: {trouble}", file=sys.stderr, flush=True)
                return Answer(500, compact_json(_refusal("internal error")))

    def _respond(self, request):
        mode, argument = misbehaviours.chosen(self._folder)
        if request.query == "redirected":
            # Requests to this address have followed the redirect; an honest answer ends it.
            mode = misbehaviours.NONE
        context = misbehaviours.Context(argument, request.path, self.plain_address)
        status, members = self._draft(request, lambda claims: _changed(claims, mode.claims, context))
        answer = Answer(status, compact_json(_changed(members, mode.members, context)))
        return _changed(answer, mode.answer, context)

    def _draft(self, request, change_claims):
        """The status and the members of the answer's JSON object."""
        kind, *_ = request_form.ENDPOINTS.get(request.path, ["other"])
        members, problem = {}, ""
        if kind == "other":
            status, problem = 404, "unknown path"
        elif request.method != "POST":
            status, problem = 405, "not POST"
        else:
            members, problem = request_form.read(request.path, request.body)
            status = 400 if problem else 200
        self._received.add_request(kind, request, problem)
        if problem:
            return status, _refusal(problem)
        return status, self._key.signed(change_claims(self._claims(members))) if kind == "check-in" else {"ok": True}

    def _claims(self, members):
        device, devices = members["d"], self._folder.read(_ACKNOWLEDGEMENTS, {})
        acknowledged = devices.setdefault(device, [])
        if "m" in members and members["m"] not in acknowledged:
            acknowledged.append(int(members["m"]))
            self._folder.write(_ACKNOWLEDGEMENTS, devices)
            self._received.add({"kind": "acknowledgement", "device": device, "message": int(members["m"])})
        newest = Outbox(self._folder).newest()
        if newest["id"] in acknowledged:
            newest = {"id": 0, "text": ""}
        return {"n": members["n"], "ts": int(time.time()), "mid": newest["id"], "msg": newest["text"]}


def _changed(stage, change, context):
    return change(stage, context) if change else stage


def _refusal(problem):
    return {"ok": False, "problem": problem}
