# SPDX-License-Identifier: GPL-3.0-or-later
from driver.waiting import comes_true, stays_true

_TEXT = "Personne n'a signé cela pour toi"
_MODES = [("truncated",), ("wrong-nonce",), ("wrong-key",), ("old-clock",), ("future-clock",), ("zero-id",),
          ("empty-message",), ("not-json",), ("redirect-loop",), ("garbage-status",), ("endless-head",),
          ("endless-interim",), ("endless-body",), ("endless-chunks",), ("endless-chunk-extension",),
          ("close-before-answer",), ("close-in-answer",), ("truncated-gzip",), ("duplicate-members",), ("trailing-bytes",),
          ("huge-number",), ("boolean-id",), ("float-id",), ("lone-surrogate",), ("invalid-utf8",), ("late",),
          ("slow-drip",)] + \
         [(mode, member) for mode in ("wrong-types", "without") for member in ("n", "ts", "mid", "msg", "sig")]


def misbehaviours(desk, report):
    """A server that misbehaves in every way."""
    desk.server.publish(99, _TEXT)
    for mode in _MODES:
        desk.server.misbehave(*mode)
        known = len(desk.server.received("check-in"))
        desk.start_in_dock()
        desk.wait_for_check_in(known)
        report.promise("no message is shown that the makers did not sign for this request",
                       stays_true(lambda: not desk.has_alert(), 0.4), mode)
        report.promise("whatever the server does, a check-in is sent once",
                       mode == ("redirect-loop",) or len(desk.server.received("check-in")) == known + 1,
                       (mode, len(desk.server.received("check-in")) - known))
        report.promise("a wrong answer stores nothing",
                       not {"OBAckMessage", "OBShownMessages", "OBMessageHistory"} & set(desk.preferences()),
                       (mode, desk.preferences()))
        report.promise("the program stays responsive while the server misbehaves", _ends_at_once(desk), mode)
        report.promise("silent while the server misbehaves", not desk.said(), (mode, desk.said()))
        desk.bed.stop(desk.process)
    desk.server.misbehave("none")


def _ends_at_once(desk):
    desk.bed.press("ctrl+q")
    return comes_true(lambda: desk.process.poll() is not None, 2) and desk.process.returncode == 0


def trusted_certificate(desk, report):
    """A server with a certificate that the user trusts."""
    desk.server.publish(98, "Chiffré")
    desk.start_in_dock({"SSL_CERT_FILE": str(desk.certificate)})
    report.promise("messages come over HTTPS", desk.alert_shows("Chiffré"))
    desk.bed.stop(desk.process)
    desk.server.publish(99, _TEXT)
    desk.server.misbehave("redirect-http")
    known = len(desk.server.received("check-in"))
    desk.start_in_dock({"SSL_CERT_FILE": str(desk.certificate)})
    desk.wait_for_check_in(known)
    report.promise("a redirect from HTTPS to HTTP is not followed",
                   stays_true(lambda: not desk.has_alert() and len(desk.server.received("check-in")) == known + 1, 1))
    desk.finish()


def unknown_certificate(desk, report):
    """A server with an untrusted certificate for another server."""
    desk.server.publish(99, _TEXT)
    desk.start_in_dock()
    report.promise("no request goes to a server with a wrong certificate",
                   stays_true(lambda: not desk.has_alert(), 1.5) and not desk.server.received("check-in"))
    report.promise("silent about a wrong certificate", not desk.said(), desk.said())
    desk.finish()
