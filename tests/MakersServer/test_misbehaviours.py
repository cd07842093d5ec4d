#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Every misbehaviour of the makers' server does exactly what its name says.

usage: test_misbehaviours.py EXECUTABLE"""

import http.client
import json
import pathlib
import ssl
import tempfile
import time
import unittest

import makers_server
from makers_server import MakersServer, MessageCase, check_in_members, is_signed, report_members


class MisbehaviourCase(MessageCase):
    def misbehave(self, mode, *argument):
        """Selects the mode and returns the status and the body of a check-in."""
        self.server.misbehave(mode, *argument)
        return self.server.post("/api/check.php", check_in_members())

    def members(self, mode, *argument):
        return json.loads(self.misbehave(mode, *argument)[1])

    def report(self, mode, *argument):
        self.server.misbehave(mode, *argument)
        status, body = self.server.post("/api/report.php", report_members())
        return status, json.loads(body)


class Choice(MisbehaviourCase):
    def test_none_is_honest_again(self):
        self.misbehave("not-json")
        self.assert_honest(self.members("none"))

    def test_unknown_modes_and_arguments_are_refused(self):
        for words in (("nonsense",), ("late", "soon"), ("late", "0"), ("truncated", "3"), ("wrong-types", "x"),
                      ("old-clock", "1.5")):
            self.assertEqual(self.server.command("misbehave", *words, check=False).returncode, 1, words)
        self.assert_honest(self.members("none"))

    def test_every_mode_is_tried_here(self):
        listed = self.server.command("--help").stdout.partition("Modes of misbehave:\n")[2].partition("\n\n")[0]
        modes = {line.split()[0] for line in listed.splitlines() if line.startswith("  ")}
        text = "".join(path.read_text("utf-8") for path in pathlib.Path(__file__).parent.glob("test_*.py"))
        self.assertGreater(len(modes), 30)
        self.assertEqual([mode for mode in sorted(modes) if f'"{mode}"' not in text], [])


class Claims(MisbehaviourCase):
    def test_wrong_nonce(self):
        answer = self.members("wrong-nonce")
        self.assertRegex(answer["n"], r"\A[0-9A-F]{32}\Z")
        self.assertNotEqual(answer["n"], makers_server.NONCE)
        self.assertTrue(is_signed(answer, self.server.public_key))

    def test_wrong_key(self):
        answer = self.members("wrong-key")
        self.assertEqual((answer["n"], answer["mid"], answer["msg"]), (makers_server.NONCE, 7, "Bonjour"))
        self.assertFalse(is_signed(answer, self.server.public_key))

    def test_clocks(self):
        for mode, argument, offset in (("old-clock", (), -600), ("future-clock", (), 660), ("old-clock", ("599",), -599),
                                       ("future-clock", ("3600",), 3600)):
            answer = self.members(mode, *argument)
            self.assertAlmostEqual(answer["ts"] - offset, time.time(), delta=5)
            self.assertTrue(is_signed(answer, self.server.public_key), mode)

    def test_no_message_in_two_ways(self):
        for mode, expected in (("zero-id", (0, "Bonjour")), ("empty-message", (7, ""))):
            answer = self.members(mode)
            self.assertEqual((answer["mid"], answer["msg"]), expected)
            self.assertTrue(is_signed(answer, self.server.public_key), mode)


class Members(MisbehaviourCase):
    def test_wrong_types(self):
        for member, kind in (("n", int), ("ts", str), ("mid", str), ("msg", list), ("sig", type(None))):
            answer = self.members("wrong-types", member)
            self.assertIs(type(answer[member]), kind)
            self.assertEqual(len(answer), 5)
        self.assertEqual(self.report("wrong-types", "ok"), (200, {"ok": "true"}))

    def test_missing_members(self):
        for member in ("n", "ts", "mid", "msg", "sig"):
            self.assertEqual(set(self.members("without", member)), {"n", "ts", "mid", "msg", "sig"} - {member})
        self.assertEqual(self.report("no-ok"), (200, {}))

    def test_success_and_its_status(self):
        self.assertEqual(self.report("500-ok-true"), (500, {"ok": True}))
        self.assertEqual(self.report("200-ok-false"), (200, {"ok": False}))
        status, body = self.misbehave("500-ok-true")
        self.assertEqual(status, 500)
        self.assert_honest(json.loads(body))


class Bytes(MisbehaviourCase):
    def test_not_json(self):
        for mode in ("not-json", "truncated", "trailing-bytes"):
            status, body = self.misbehave(mode)
            self.assertEqual(status, 200)
            with self.assertRaises(json.JSONDecodeError, msg=mode):
                json.loads(body)
        self.assert_honest(json.JSONDecoder().raw_decode(body.decode())[0])

    def test_duplicate_members(self):
        body = self.misbehave("duplicate-members")[1]
        pairs = json.loads(body, object_pairs_hook=list)
        self.assertEqual([value for name, value in pairs if name == "mid"], [7, 8])
        self.assert_honest(dict(reversed(pairs)))

    def test_deep(self):
        body = self.misbehave("deep")[1]
        self.assertEqual((body.count(b"["), body.count(b"]")), (100_000, 100_000))

    def test_invalid_ids_that_are_signed(self):
        cases = (("huge-number", (), b'"mid":18446744073709551623,', 7), ("boolean-id", (), b'"mid":true,', 1),
                 ("float-id", (), b'"mid":1000.0,', 1000), ("float-id", ("1e3",), b'"mid":1e3,', 1000))
        for mode, argument, literal, signed in cases:
            body = self.misbehave(mode, *argument)[1]
            self.assertIn(literal, body)
            self.assertTrue(is_signed(json.loads(body) | {"mid": signed}, self.server.public_key), mode)

    def test_invalid_texts_that_are_signed(self):
        cases = (("nul-in-message", rb"Avant\u0000apr", "Avant\0après"), ("lone-surrogate", rb'"msg":"\ud800"', "\ufffd"),
                 ("invalid-utf8", b'"msg":"\xff"', "\ufffd"))
        for mode, literal, signed in cases:
            body = self.misbehave(mode)[1]
            self.assertIn(literal, body)
            answer = json.loads(body.decode(errors="replace")) | {"msg": signed}
            self.assertTrue(is_signed(answer, self.server.public_key), mode)


class Delivery(MisbehaviourCase):
    def response(self, timeout=10):
        connection = self.server.connection(timeout=timeout)
        self.addCleanup(connection.close)
        connection.request("POST", "/api/check.php", json.dumps(check_in_members()))
        return connection.getresponse()

    def test_late(self):
        self.server.misbehave("late", "0.4")
        began = time.monotonic()
        self.assert_honest(self.server.check_in())
        self.assertGreater(time.monotonic() - began, 0.39)

    def test_slow_drip(self):
        self.server.misbehave("slow-drip", "0.005")
        response = self.response()
        began = time.monotonic()
        body = response.read()
        self.assertGreater(time.monotonic() - began, 0.004 * len(body))
        self.assert_honest(json.loads(body))

    def test_others_are_answered_while_one_waits(self):
        self.server.misbehave("slow-drip", "60")
        response = self.response()
        self.assertEqual(response.read(1), b"{")
        self.assert_honest(self.members("none"))

    def test_survives_a_client_that_goes_away(self):
        for mode in (("late", "0.1"), ("slow-drip", "0.01"), ("endless-body",)):
            self.server.misbehave(*mode)
            connection = self.server.connection()
            connection.request("POST", "/api/check.php", json.dumps(check_in_members()))
            connection.close()
        self.server.misbehave("late", "0.3")
        self.assert_honest(self.server.check_in())

    def test_endless_body(self):
        self.server.misbehave("endless-body")
        response = self.response()
        self.assertIsNone(response.getheader("Content-Length"))
        body = response.read(4 << 20)
        self.assertEqual(len(body), 4 << 20)
        self.assert_honest(json.loads(body))

    def test_close_in_answer(self):
        self.server.misbehave("close-in-answer")
        with self.assertRaises(http.client.IncompleteRead) as caught:
            self.response().read()
        self.assertGreater(len(caught.exception.partial), 20)

    def test_redirect_loop(self):
        self.server.misbehave("redirect-loop")
        response = self.response()
        self.assertEqual((response.status, response.getheader("Location")), (307, "/api/check.php"))

    def test_redirect_http(self):
        self.server.misbehave("redirect-http")
        response = self.response()
        target = self.server.address + "/api/check.php?redirected"
        self.assertEqual((response.status, response.getheader("Location")), (307, target))
        status, body = self.server.post("/api/check.php?redirected", check_in_members())
        self.assertEqual(status, 200)
        self.assert_honest(json.loads(body))
        self.assertEqual(self.server.received()[-1]["query"], "redirected")


class SecureDelivery(unittest.TestCase):
    def test_redirect_away_from_tls(self):
        with tempfile.TemporaryDirectory() as folder:
            certificate, key = makers_server.make_certificate(folder, "IP:127.0.0.1")
            options = ("--certificate", certificate, "--private-key", key)
            with MakersServer(self.executable, folder + "/state", *options) as server:
                server.misbehave("redirect-http")
                connection = server.connection(ssl.create_default_context(cafile=certificate))
                self.addCleanup(connection.close)
                connection.request("POST", "/api/check.php", json.dumps(check_in_members()))
                response = connection.getresponse()
                self.assertTrue(server.plain_address.startswith("http://127.0.0.1:"))
                self.assertEqual(response.getheader("Location"), server.plain_address + "/api/check.php?redirected")
                server.address = server.plain_address
                status, body = server.post("/api/check.php?redirected", check_in_members())
                self.assertEqual((status, json.loads(body)["n"]), (200, makers_server.NONCE))


if __name__ == "__main__":
    makers_server.run_tests()
