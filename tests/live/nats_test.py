#!/usr/bin/env python3
"""Streams of a NATS server: what they hold is what was relayed, once and in order, whatever is killed meanwhile."""

import random
import signal
import subprocess
import time
import unittest

import harness
import nats

SHORT = 60_000  # bytes of the session
ALL = "from=start&until=end"


class NatsTest(harness.Case):
    def server(self, *options, **how):
        made = nats.Server(self.where / f"server{len(list(self.where.iterdir()))}", *options, **how)
        self.addCleanup(made.kill)
        return made

    def run_to_end(self, *arguments, code=0, environment=None):
        """Its messages."""
        program = harness.Running([harness.PROGRAM, *arguments], env=environment)
        self.addCleanup(program.kill)
        program.process.wait(60)
        self.assertEqual(program.end(), code, program.summary())
        return "\n".join(program.lines["err"])

    def frames_of(self, source, *options):
        return subprocess.run([harness.PROGRAM, "-q", "extract", *options, source], stdout=subprocess.PIPE, check=True,
                              timeout=60).stdout

    def check(self, server, name, file):
        """The stream has the frames of the file for the station: all of them, once, in order."""
        self.assertEqual(self.frames_of(server.address(f"gnss?subject=gnss.{name}.>&{ALL}")), self.frames_of(file))

    def test_frames_come_back(self):
        server = self.server()
        said = self.run_to_end("-v", "relay", harness.SESSION, "--to", server.address("gnss?station=BASE"))
        count = len(harness.decode_file(harness.SESSION))
        self.assertIn(f"{count} units and ", said)
        self.check(server, "BASE", harness.SESSION)
        self.assertEqual(self.frames_of(server.address(f"gnss?subject=gnss.*.nmea.GGA&{ALL}")),
                         self.frames_of(harness.SESSION, "--msg", "GGA"))
        place = self.frames_of(harness.SESSION)
        late = self.frames_of(server.address(f"gnss?from={count // 2}&until=end"))
        self.assertTrue(place.endswith(late) and 0 < len(late) < len(place))
        self.assertEqual(self.frames_of(server.address("gnss?from=2024-05-18T00:00:00&until=end")), place)

    def test_nothing_is_stored_twice(self):
        server = self.server()
        self.run_to_end("relay", harness.SESSION, "--to", server.address("gnss?station=BASE"))
        count = server.count()
        for how in ("", "&resume=no"):  # by the last message, and by the ids
            said = self.run_to_end("relay", harness.SESSION, "--to", server.address("gnss?station=BASE" + how))
            self.assertIn(f"{count} units not stored again", said)
            self.assertEqual(server.count(), count)
        self.run_to_end("relay", harness.SESSION, "--to", server.address("gnss?station=OTHER"))
        self.assertEqual(server.count(), 2 * count)

    def test_stations_may_send_the_same_bytes(self):
        server, files = self.server(), [self.where / name for name in ("one.bin", "two.bin")]
        for file in files:
            file.write_bytes(self.session[:SHORT])
        self.run_to_end("relay", *files, "--to", server.address())
        for name in ("one_bin", "two_bin"):
            self.check(server, name, files[0])

    def test_a_server_forgets_ids_while_it_is_away(self):
        """What it had stored but not acknowledged when it was killed is not stored again."""
        server, file = self.server(), self.where / "rx.bin"
        file.write_bytes(self.session * 8)
        program = self.run_program("relay", file, "--to", server.address("gnss?station=BASE&duplicates=1"))
        harness.wait_until(lambda: server.count() > 0)
        server.kill()
        time.sleep(1.5)
        server.start()
        program.process.wait(60)
        self.assertEqual(program.end(), 0, program.summary())
        self.check(server, "BASE", file)

    def test_a_stream_is_made_anew_while_it_is_read(self):
        server, file = self.server(), self.where / "rx.bin"
        server.configure("CREATE")
        program = self.run_program("decode", "--retry-pause", "0.1", server.address("gnss?from=start"))
        program.wait_for("connected")
        for size in (SHORT // 2, SHORT):  # the new stream goes beyond the place in the old one
            server.request("STREAM.DELETE.gnss")
            file.write_bytes(self.session[:size])
            self.run_to_end("relay", file, "--to", server.address())
            before = len(program.frames())
            server.kill()
            server.start()
            program.wait_for_frames(before + len(harness.decode_file(file)))
        self.assertTrue(any("made anew" in line for line in program.lines["err"]))
        program.end()

    def test_lines_of_json(self):
        server = self.server()
        self.run_to_end("relay", harness.SESSION, "--to", "json:" + server.address("lines?prefix=lines"), "--to",
                        "epochs:" + server.address("epochs?prefix=epochs"))
        lines = len(harness.decode_file(harness.SESSION))
        epochs = subprocess.check_output([harness.PROGRAM, "decode", "--epochs-only", harness.SESSION]).count(b"\n")
        self.assertEqual((server.count("lines"), server.count("epochs")), (lines, epochs))
        said = self.run_to_end("decode", server.address(f"lines?{ALL}"), code=3)
        self.assertIn("holds JSON", said)

    def test_mistakes_are_told(self):
        certificate, key, secret, open_file = [self.where / name for name in ("c.pem", "k.pem", "token", "open")]
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", key, "-out", certificate,
                        "-days", "2", "-subj", "/CN=other", "-addext", "subjectAltName=DNS:localhost"], check=True,
                       stderr=subprocess.DEVNULL)
        for file, mode in ((secret, 0o600), (open_file, 0o644)):
            file.write_text("s3cret\n")
            file.chmod(mode)
        plain, no_stream, locked = self.server(), self.server(jetstream=False), self.server("--auth", "s3cret")
        tls = self.server("--tls", "--tlscert", certificate, "--tlskey", key, tls=True)
        plain.configure("CREATE", "taken", subjects=["gnss.>"])
        plain.configure("CREATE", "silent", subjects=["silent.>"], no_ack=True)
        named = f"natss://localhost:{tls.port}/gnss?ca={certificate}"
        for to, code, text in (
                (no_stream.address(), 4, "JetStream does not answer"),
                (locked.address(), 4, "rejects the account"),
                (locked.address(account="me:wrong@"), 4, "rejects the account"),
                (locked.address(f"gnss?token={open_file}"), 4, "other users may read it"),
                (locked.address(f"gnss?token={secret}"), 0, "connected"),
                (plain.address(), 4, "another stream already takes these subjects"),
                (plain.address("taken?prefix=x"), 4, "the stream takes gnss.>, not x.>"),
                (plain.address("none?create=no"), 4, "there is no stream of this name"),
                (plain.address("silent?prefix=silent"), 4, "no_ack"),
                (plain.address("a.b"), 2, "cannot be the name of a stream"),
                ("raw:" + plain.address(), 2, "write frames or json"),
                (tls.address(), 4, "self-signed certificate"),
                (tls.address(f"gnss?ca={certificate}"), 4, "mismatch"),
                (named, 0, "connected"),
                (plain.address("gnss?ca=x"), 2, "write natss://")):
            with self.subTest(to=to):
                said = self.run_to_end("relay", harness.SESSION, "--to", to, code=code)
                self.assertIn(text, said)
                self.assertNotIn("wrong", said)

    def test_a_full_stream_loses_nothing(self):
        """At the limit of bytes a long frame is refused, and a short one after it would still fit."""
        server, file = self.server(), self.where / "rx.bin"
        file.write_bytes(self.session[:SHORT])
        server.configure("CREATE", discard="new", max_bytes=SHORT)
        program = self.run_program("relay", file, "--to", server.address("gnss?station=BASE"))
        program.wait_for("exceeded; trying again")
        self.assertIsNone(program.process.poll())
        server.configure("UPDATE", discard="new")
        program.process.wait(60)
        self.assertEqual(program.end(), 0)
        self.check(server, "BASE", file)

    def test_frames_that_are_too_long(self):
        server = self.server()
        server.configure("CREATE", max_msg_size=200)
        said = self.run_to_end("relay", harness.SESSION, "--to", server.address(), code=4)
        self.assertIn("longer than the server or the stream accepts", said)
        longer = [frame for frame in harness.decode_file(harness.SESSION) if frame["length"] > 200]
        self.assertGreater(len(longer), 0)
        self.assertLess(server.count(), len(harness.decode_file(harness.SESSION)))

    def test_kills_of_publisher_and_server(self):
        """Files of two stations are published by processes that are killed, to a server that is killed."""
        chance = random.Random(17)
        files = []
        for number in range(2):
            files.append(self.where / f"rx{number}.bin")
            files[-1].write_bytes(self.session[number * 1000:] * 8)
        server = self.server()
        to = server.address("gnss?window=500")
        for victim in ("publisher", "server", "publisher", "both"):
            program = self.run_program("relay", *files, "--to", to)
            before = server.count()
            harness.wait_until(lambda: server.count() > before or program.process.poll() is not None)
            time.sleep(chance.random() * 0.2)
            if victim != "server":
                program.kill()
            if victim != "publisher":
                server.kill()
                server.start()
            if victim == "server":
                program.process.wait(60)
                self.assertEqual(program.end(), 0, program.summary())
        self.run_to_end("relay", *files, "--to", to)
        for file in files:
            self.check(server, file.stem + "_bin", file)

    def test_a_live_source_while_the_server_is_away(self):
        server, line = self.server(), harness.listener()
        self.addCleanup(line.close)
        source = "tcp://127.0.0.1:%d" % line.getsockname()[1]
        program = self.run_program("relay", "--quiet-time", "never", source, "--to", server.address("gnss?station=BASE"))
        connection, _ = line.accept()
        with connection:
            half = len(self.session) // 2
            connection.sendall(self.session[:half])
            harness.wait_until(lambda: server.count() > 100)
            server.kill()
            connection.sendall(self.session[half:])
            program.wait_for("trying again")
            server.start()
        nats.wait_for_messages(server, len(harness.decode_file(harness.SESSION)))
        program.end()
        self.check(server, "BASE", harness.SESSION)

    def test_a_source_goes_on_where_it_was(self):
        server = self.server()
        server.configure("CREATE")
        program = self.run_program("decode", "--retry-pause", "0.1", server.address("gnss?from=start"))
        program.wait_for("connected")
        files = [self.where / f"rx{number}.bin" for number in range(2)]
        for file in files:
            file.write_bytes(self.session[:SHORT] if file == files[0] else self.session[SHORT:2 * SHORT])
            self.run_to_end("relay", file, "--to", server.address())
            expected = sum(len(harness.decode_file(done)) for done in files if done.exists())
            program.wait_for_frames(expected)
            server.kill()
            server.start()
            program.wait_for("connected", count=2 + files.index(file))
        program.end()
        self.assertEqual(len(program.frames()), expected)


if __name__ == "__main__":
    unittest.main()
