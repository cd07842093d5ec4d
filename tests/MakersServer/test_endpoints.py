#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The makers' server: its key, its three endpoints, its messages and its log.

usage: test_endpoints.py EXECUTABLE"""

import base64
import json
import ssl
import stat
import tempfile
import time
import unittest

import makers_server
from makers_server import MakersServer, check_in_members, crash_members, is_signed, report_members

_TEXTS = ("Bonjour", "Ça y est : été, œuvre, Noël", "👁️‍🗨️ repose tes yeux 🧑🏽‍💻", "a|b|v2|7|", "un\ndeux\r\ntrois\ttab",
          "مرحبا بالعالم", "e\u0301 n\u0303 Z\u0351\u036b", "\u0001\u001f\u007f", "x" * 50_000, " ")


class ServerCase(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def server(self, *options):
        server = MakersServer(self.executable, self.folder.name + "/state", *options)
        server.start()
        self.addCleanup(server.stop)
        return server


class Key(ServerCase):
    def test_made_once_and_readable_by_its_owner_alone(self):
        with MakersServer(self.executable, self.folder.name + "/state") as first:
            key = first.folder / "signing-key"
            self.assertEqual(stat.S_IMODE(key.stat().st_mode), 0o600)
            self.assertEqual(stat.S_IMODE(first.folder.stat().st_mode), 0o700)
            content = key.read_bytes()
            self.assertEqual(len(base64.b64decode(first.public_key, validate=True)), 32)
        second = self.server()
        self.assertEqual(second.public_key, first.public_key)
        self.assertEqual(key.read_bytes(), content)
        self.assertEqual(second.command("public-key").stdout, first.public_key + "\n")

    def test_refused_when_others_can_read_it(self):
        server = self.server()
        (server.folder / "signing-key").chmod(0o644)
        self.assertEqual(server.command("public-key", check=False).returncode, 1)

    def test_refused_when_damaged(self):
        server = self.server()
        for content in ("", "AAAA", "not base64!"):
            (server.folder / "signing-key").write_text(content)
            self.assertEqual(server.command("public-key", check=False).returncode, 1, content)


class CheckIn(ServerCase):
    def test_without_any_message(self):
        server = self.server()
        answer = server.check_in()
        self.assertEqual(set(answer), {"n", "ts", "mid", "msg", "sig"})
        self.assertEqual((answer["n"], answer["mid"], answer["msg"]), (makers_server.NONCE, 0, ""))
        self.assertAlmostEqual(answer["ts"], time.time(), delta=5)
        self.assertTrue(is_signed(answer, server.public_key))

    def test_signs_every_text(self):
        server = self.server()
        for number, text in enumerate(_TEXTS, 1):
            server.publish(number, text)
            answer = server.check_in()
            self.assertEqual((answer["mid"], answer["msg"]), (number, text))
            self.assertTrue(is_signed(answer, server.public_key), text)
            self.assertFalse(is_signed(answer | {"mid": number + 1}, server.public_key), text)

    def test_keeps_every_digit_of_an_id(self):
        server = self.server()
        for identifier in (9007199254740993, 2 ** 63 - 1):
            server.publish(identifier, "Bonjour")
            self.assertEqual(server.check_in()["mid"], identifier)

    def test_sends_the_latest_message(self):
        server = self.server()
        server.publish(9, "neuf")
        server.publish(7, "sept")
        self.assertEqual(server.check_in()["mid"], 7)
        server.publish(9, "neuf bis")
        self.assertEqual(server.check_in()["msg"], "neuf bis")
        server.command("withdraw", 9)
        self.assertEqual(server.check_in()["mid"], 7)
        self.assertEqual(server.command("withdraw", 9, check=False).returncode, 1)

    def test_sends_nothing_after_an_acknowledgement(self):
        server = self.server()
        server.publish(7, "sept")
        self.assertEqual(server.check_in(m=7)["mid"], 0)
        self.assertEqual(server.check_in()["mid"], 0)
        self.assertEqual(server.check_in(d="DEVICE-2")["mid"], 7)
        server.publish(8, "huit")
        self.assertEqual(server.check_in(m=7)["mid"], 8)
        acknowledgements = server.received("acknowledgement")
        self.assertEqual([(line["device"], line["message"]) for line in acknowledgements], [("DEVICE-1", 7)])

    def test_remembers_acknowledgements_when_it_is_started_again(self):
        with MakersServer(self.executable, self.folder.name + "/state") as first:
            first.publish(7, "sept")
            first.check_in(m=7)
        self.assertEqual(self.server().check_in()["mid"], 0)

    def test_refuses_what_no_client_could_show(self):
        server = self.server()
        for words in ((0, "zéro"), (-1, "moins"), (7, ""), ("sept", "Bonjour"), (7,)):
            self.assertEqual(server.command("publish", "--", *words, check=False).returncode, 1, words)

    def test_refuses_requests_in_a_wrong_form(self):
        server = self.server()
        wrong = ({"n": "short"}, {"n": makers_server.NONCE.lower()}, {"d": 7}, {"c": "store"}, {"m": 0}, {"m": "7"},
                 {"x": 1})
        for members in wrong:
            status, body = server.post("/api/check.php", check_in_members(**members))
            self.assertEqual((status, json.loads(body)["ok"]), (400, False), members)
        self.assertEqual(len([line for line in server.received("check-in") if "problem" in line]), len(wrong))


class Reports(ServerCase):
    def test_taken_and_recorded(self):
        server = self.server()
        for members in (report_members(), report_members(email=" moi@example.org ")):
            self.assertEqual(server.post("/api/report.php", members), (200, b'{"ok":true}'))
        bodies = [json.loads(line["body"]) for line in server.received("report")]
        self.assertEqual(bodies, [report_members(), report_members(email=" moi@example.org ")])

    def test_crashes_taken_and_recorded(self):
        server = self.server()
        self.assertEqual(server.post("/api/crash.php", crash_members())[0], 200)
        self.assertEqual(server.post("/api/crash.php", crash_members(kind="oops"))[0], 400)
        self.assertEqual(json.loads(server.received("crash")[0]["body"]), crash_members())


class Recording(ServerCase):
    def test_headers_method_and_binary_body(self):
        server = self.server()
        connection = server.connection()
        self.addCleanup(connection.close)
        connection.request("POST", "/api/report.php", b"\xff\x00", {"User-Agent": "essai"})
        self.assertEqual(connection.getresponse().status, 400)
        line = server.received()[0]
        self.assertEqual(base64.b64decode(line["bodyBase64"]), b"\xff\x00")
        self.assertEqual((line["method"], line["headers"]["user-agent"]), ("POST", "essai"))
        self.assertNotIn("content-type", line["headers"])
        self.assertEqual(stat.S_IMODE((server.folder / "received.jsonl").stat().st_mode), 0o600)

    def test_other_paths_and_methods(self):
        server = self.server()
        self.assertEqual(server.post("/elsewhere", {})[0], 404)
        connection = server.connection()
        self.addCleanup(connection.close)
        connection.request("GET", "/api/check.php")
        self.assertEqual(connection.getresponse().status, 405)
        self.assertEqual([line["kind"] for line in server.received()], ["other", "check-in"])


class Secure(ServerCase):
    def secure_server(self, subject):
        certificate, key = makers_server.make_certificate(self.folder.name, subject)
        server = self.server("--certificate", certificate, "--private-key", key)
        return server, ssl.create_default_context(cafile=certificate)

    def test_speaks_tls(self):
        server, context = self.secure_server("IP:127.0.0.1")
        self.assertTrue(server.address.startswith("https://127.0.0.1:"))
        connection = server.connection(context)
        self.addCleanup(connection.close)
        connection.request("POST", "/api/report.php", json.dumps(report_members()))
        self.assertEqual(connection.getresponse().status, 200)

    def test_a_mismatched_certificate_is_rejected(self):
        server, context = self.secure_server("DNS:elsewhere.invalid")
        with self.assertRaises(ssl.SSLCertVerificationError):
            server.connection(context).request("POST", "/api/report.php", "{}")

    def test_a_certificate_without_a_key_is_refused(self):
        certificate, _ = makers_server.make_certificate(self.folder.name, "IP:127.0.0.1")
        with self.assertRaises(RuntimeError):
            self.server("--certificate", certificate)


if __name__ == "__main__":
    makers_server.run_tests()
