#!/usr/bin/env python3
"""The test caster itself: a plain client finds what each fault promises."""

import socket
import ssl
import time
import unittest

import caster
import harness


def ask(running, mount, *lines, method="GET", version="HTTP/1.0", body=b""):
    client = socket.create_connection((running.host, int(running.port)), 10)
    client.sendall(caster.text_of(f"{method} /{mount} {version}", "User-Agent: NTRIP test/1", *lines) + body)
    return client


def read_all(client, limit=100_000, seconds=3.0):
    """(bytes, how it ended)"""
    got, end = b"", time.monotonic() + seconds
    try:
        while len(got) < limit:
            client.settimeout(max(0.01, end - time.monotonic()))
            part = client.recv(65536)
            if not part:
                return got, "closed"
            got += part
        return got, "more"
    except TimeoutError:
        return got, "silent"
    except ConnectionResetError:
        return got, "reset"
    finally:
        client.close()


def unchunk(data):
    """(bytes, whether the last chunk has come)"""
    out = b""
    while data:
        size, _, rest = data.partition(b"\r\n")
        count = int(size.split(b";")[0], 16)
        if count == 0:
            return out, True
        out, data = out + rest[:count], rest[count + 2:]
    return out, False


class CasterTest(harness.Case):
    DATA = bytes(range(256)) * 40

    def test_streams_in_both_versions(self):
        running = self.run_caster("--at-end", "close", data=self.DATA)
        for lines, mount, head in ((), "BASE", caster.ICY), (("Ntrip-Version: Ntrip/2.0",), "BASE", caster.CHUNKED), \
                (("Ntrip-Version: Ntrip/2.0",), "odd-chunks", caster.CHUNKED), ((), "icy-at-once", b"ICY 200 OK\r\n"), \
                ((), "split", caster.ICY):
            with self.subTest(mount=mount, lines=lines):
                got, end = read_all(ask(running, mount, *lines))
                self.assertEqual(end, "closed")
                self.assertTrue(got.startswith(head))
                body = got[len(head):]
                self.assertEqual(unchunk(body) if head == caster.CHUNKED else (body, True), (self.DATA, True))

    def test_faults_end_as_they_say(self):
        running = self.run_caster("--after", "1000", "--heal", "1", data=self.DATA)
        for mount, end, start in (("401", "closed", b"HTTP/1.0 401"), ("table", "closed", b"SOURCETABLE 200 OK\r\n"),
                                  ("bad-password", "closed", b"ERROR - Bad"), ("no-reply", "closed", b""),
                                  ("garbage", "closed", b""), ("silent", "silent", b""), ("no-data", "silent", caster.ICY),
                                  ("stall", "silent", caster.ICY), ("half-close", "closed", caster.ICY),
                                  ("close", "closed", caster.ICY), ("reset", "reset", caster.ICY),
                                  ("chunk-cut", "closed", caster.CHUNKED), ("chunk-last", "silent", caster.CHUNKED)):
            with self.subTest(mount=mount):
                got, how = read_all(ask(running, mount), seconds=1.0)
                self.assertEqual(how, end)
                self.assertTrue(got.startswith(start), got[:100])
                self.assertLess(len(got), 4000)
        self.assertEqual(read_all(ask(running, "close"))[1], "more", "a healed mount streams on")

    def test_reader_continues_where_the_last_ended(self):
        running = self.run_caster("--after", "1000", "--heal", "1", "--resume", "--at-end", "close", data=self.DATA)
        parts = [read_all(ask(running, "close"))[0][len(caster.ICY):] for _ in range(2)]
        self.assertEqual(b"".join(parts), self.DATA)
        running.wait_for_event("served", 2)
        self.assertEqual([len(part) for part in parts], [event["sent"] for event in running.events("served")])

    def test_positions_and_departures_are_reported(self):
        running = self.run_caster(data=self.DATA)
        client = ask(running, "needs-position")
        client.sendall(b"$GPGGA,1*00\r\n")
        client.settimeout(5)
        self.assertTrue(client.recv(1))
        self.assertEqual(running.wait_for_event("position")["text"], "$GPGGA,1*00")
        client.close()
        running.wait_for_event("served")

    def test_pushes_reach_readers(self):
        kept = self.where / "kept"
        kept.mkdir()
        running = self.run_caster("--push-account", "base:secret", "--push-dir", kept, data=self.DATA)
        for number, (head, body, bad) in enumerate((
                (b"SOURCE secret M0\r\nSource-Agent: NTRIP test\r\n\r\n", b"%b", b"SOURCE wrong M0\r\n\r\n"),
                (b"POST /M1 HTTP/1.1\r\nNtrip-Version: Ntrip/2.0\r\nAuthorization: Basic YmFzZTpzZWNyZXQ=\r\n"
                 b"Transfer-Encoding: chunked\r\n\r\n", b"5\r\n%b\r\n0\r\n\r\n", b"POST /M1 HTTP/1.1\r\n\r\n"))):
            address = (running.host, int(running.port))
            refused = socket.create_connection(address)
            refused.sendall(bad)
            self.assertIn(read_all(refused)[0].split(b"\r\n")[0], (b"ERROR - Bad Password", b"HTTP/1.1 401 Unauthorized"))
            pusher = socket.create_connection(address)
            pusher.sendall(head)
            self.assertIn(b"200 OK", pusher.recv(1000))
            reader = ask(running, f"M{number}")
            self.assertEqual(reader.recv(len(caster.ICY)), caster.ICY)
            pusher.sendall(body % b"12345")
            pusher.shutdown(socket.SHUT_WR)
            self.assertEqual(read_all(reader), (b"12345", "closed"))
            self.assertEqual(running.wait_for_event("pushed", mount=f"M{number}")["bytes"], 5)
            self.assertEqual((kept / f"M{number}").read_bytes(), b"12345")
            pusher.close()

    def test_speaks_tls(self):
        running = self.run_caster("--tls", self.where, "--at-end", "close", data=self.DATA)
        context = ssl.create_default_context(cafile=self.where / "cert.pem")
        with context.wrap_socket(socket.create_connection((running.host, int(running.port))),
                                 server_hostname="localhost") as client:
            client.sendall(b"GET /BASE HTTP/1.0\r\n\r\n")
            self.assertEqual(client.recv(len(caster.ICY)), caster.ICY)


if __name__ == "__main__":
    unittest.main()
