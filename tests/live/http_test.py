#!/usr/bin/env python3
"""Files on a web server decode as files of this machine do, whatever happens to the transfer, or fail with a reason."""

import base64
import gzip
import os
import subprocess
import time
import unittest

import harness
from harness import PROGRAM, SESSION
from web import WebServer, make_certificate

FILE = "/session.bin"
SHORT = 60_000  # bytes of the session for what only needs some frames


class HttpTest(harness.Case):
    def serve(self, *answers, files=None, certificate=None):
        server = WebServer(files or {FILE: self.session}, answers, certificate)
        self.addCleanup(server.close)
        return server

    def program(self, *arguments, **environment):
        env = {**os.environ, "no_proxy": "*", **environment}
        return subprocess.run([PROGRAM, *arguments], capture_output=True, env=env, timeout=60, check=False)

    def decoded(self, *arguments, **environment):
        done = self.program("decode", "--retry-pause", "0.01", *arguments, **environment)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        return done.stdout

    def expected(self):
        return self.program("decode", SESSION).stdout

    def test_whole(self):
        for data in self.session, gzip.compress(self.session):
            server = self.serve(files={FILE: data})
            self.assertEqual(self.decoded(server.url()), self.expected())
            self.assertEqual(server.ranges(), [None])

    def test_breaks_are_continued(self):
        size = len(self.session)
        broken = [{"cut": 1000}, {"cut": 70_001}, {"status": 503}, {"cut": 0}, {"status": 500, "headers": [("Retry-After", "0")]}]
        ignoring = [{"cut": 5000}, {"ranges": False, "cut": 4000}, {"ranges": False}]
        for name, answers, ranges in (
            ("a server that knows ranges", broken, [None, "bytes=1000-"] + ["bytes=71001-"] * 4),
            ("a server that knows none", ignoring, [None, "bytes=5000-", "bytes=5000-"]),
            ("cut off at the end", [{"cut": size - 1}], [None, f"bytes={size - 1}-"]),
        ):
            with self.subTest(name):
                server = self.serve(*answers)
                done = self.program("-q", "decode", "--retry-pause", "0.01", server.url())
                self.assertEqual((done.returncode, done.stderr), (0, b""))
                self.assertEqual(done.stdout, self.expected())
                self.assertEqual(server.ranges(), ranges)

    def test_faults(self):
        elsewhere = [("Location", "ftp://127.0.0.1/session.bin")]
        early, late = ([("Last-Modified", f"Sat, 18 May 2024 00:00:0{second} GMT")] for second in (1, 2))
        for name, answers, text, tries in (
            ("missing", [{"status": 404}], b"there is no such file", 1),
            ("forbidden", [{"status": 403}], b"does not allow it", 1),
            ("account wanted", [{"status": 401}], b"give them with --credentials", 1),
            ("changed", [{"cut": 1000}, {"etag": '"2"'}], b"has changed on the server", 2),
            ("changed, without ranges", [{"cut": 1000}, {"etag": '"2"', "ranges": False}], b"has changed on the server", 2),
            ("changed, by its date", [{"cut": 1000, "headers": early}, {"etag": "", "headers": late}], b"has changed on the server", 2),
            ("shorter now", [{"cut": 1000}, {"status": 416}], b"has changed", 2),
            ("another range", [{"cut": 1000}, {"shift": 5}], b"sends another range", 2),
            ("another scheme", [{"status": 302, "headers": elsewhere}], b"redirects to another scheme", 1),
            ("never ready", [{"status": 503}] * 9, b"being maintained; given up after 3 failures", 3),
        ):
            with self.subTest(name):
                server = self.serve(*answers)
                done = self.program("decode", "--retry-pause", "0.01", "--tries", "3", server.url())
                self.assertIn(text, done.stderr)
                self.assertEqual(done.returncode, 3)
                self.assertEqual(len(server.requests), tries)
                self.assertTrue(self.expected().startswith(done.stdout))

    def test_redirection(self):
        server = self.serve({"status": 302, "headers": [("Location", "/elsewhere.bin")]}, files={"/elsewhere.bin": self.session})
        self.assertEqual(self.decoded(server.url()), self.expected())

    def test_silence_is_a_break(self):
        listener = harness.listener()
        self.addCleanup(listener.close)
        address = "http://127.0.0.1:%d/x" % listener.getsockname()[1]
        done = self.program("decode", "--idle-timeout", "0.2", "--tries", "1", address)
        self.assertIn(b"no data for 1 s", done.stderr)
        self.assertEqual(done.returncode, 3)

    def test_signal_ends_a_wait(self):
        listener = harness.listener()
        self.addCleanup(listener.close)
        program = self.run_program("decode", "http://127.0.0.1:%d/x" % listener.getsockname()[1])
        connection, _ = listener.accept()
        self.addCleanup(connection.close)
        begin = time.monotonic()
        self.assertEqual(program.end(), 128 + 15)
        self.assertLess(time.monotonic() - begin, 5)

    def test_accounts(self):
        server = self.serve(files={FILE: self.session[:SHORT]})
        credentials = self.where / "accounts"
        credentials.write_text("127.0.0.1 someone a secret\n")
        credentials.chmod(0o600)
        address = server.url() + "?token=hidden"
        with_account = address.replace("//", "//someone:a%20secret@")
        for arguments, environment in (
            ([with_account], {}),
            (["--credentials", credentials, address], {}),
            ([address], {"VELAGNSS_HTTP_USER": "someone", "VELAGNSS_HTTP_PASSWORD": "a secret"}),
        ):
            done = self.program("-v", "decode", *arguments, **environment)
            path, headers = server.requests[-1]
            self.assertEqual(headers.get("Authorization"), "Basic " + base64.b64encode(b"someone:a secret").decode())
            self.assertEqual(path, FILE + "?token=hidden")
            self.assertNotIn(b"secret", done.stdout + done.stderr)
            self.assertNotIn(b"hidden", done.stdout + done.stderr)
        self.program("decode", address, VELAGNSS_NTRIP_USER="someone", VELAGNSS_NTRIP_PASSWORD="a secret")
        self.assertNotIn("Authorization", server.requests[-1][1], "the account of casters is none of a web server's business")

    def test_tls(self):
        certificate = make_certificate(self.where)
        server = self.serve(certificate=certificate)
        self.assertEqual(self.decoded(server.url(), SSL_CERT_FILE=str(certificate)), self.expected())
        done = self.program("decode", server.url())
        self.assertEqual(done.returncode, 3)
        self.assertIn(b"certificate", done.stderr)
        self.assertEqual(done.stdout, b"")


if __name__ == "__main__":
    unittest.main()
