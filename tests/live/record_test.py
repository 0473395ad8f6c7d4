#!/usr/bin/env python3
"""Recordings and replays: live, recorded and file decode to the same, also where the recorder was killed."""

import random
import signal
import socket
import threading
import unittest

import harness
from harness import Pieces


class RecordTest(harness.Case):
    def setUp(self):
        super().setUp()
        self.server = harness.listener()
        self.addCleanup(self.server.close)
        self.source = "tcp://127.0.0.1:%d" % self.server.getsockname()[1]
        self.kept = self.where / "kept"
        self.kept.mkdir()

    def send(self, pieces):
        """To the program that connects next, until it is gone; how many bytes were sent."""
        connection, _ = self.server.accept()
        sent = 0
        with connection:
            try:
                for piece in pieces:
                    connection.sendall(piece)
                    sent += len(piece)
                connection.shutdown(socket.SHUT_WR)
                connection.settimeout(harness.PATIENCE)
                connection.recv(1)
            except OSError:
                pass
        return sent

    def recordings(self):
        return sorted(file for file in self.kept.iterdir() if not file.name.endswith(".idx"))

    def test_what_was_decoded_is_what_was_recorded(self):
        file = self.kept / "copy.bin"
        program = self.run_program("decode", "--tee", file, self.source)
        self.send(Pieces(self.session, 1))
        expected = self.decode(self.session)
        program.wait_for_lines(len(expected))
        program.end()
        self.assertEqual(file.read_bytes(), self.session)
        self.assert_objects(program.objects(), expected)

    def test_files_by_size_hold_whole_frames(self):
        program = self.run_program("record", "-o", self.kept / "%n_%H%M%S.bin", "--max-size", "50k", self.source)
        self.send(Pieces(self.session, 2))
        harness.wait_until(lambda: sum(file.stat().st_size for file in self.recordings()) == len(self.session))
        program.end()
        files = sorted(self.recordings(), key=lambda file: self.session.find(file.read_bytes()[:2000]))
        self.assertGreater(len(files), 5)
        self.assertEqual(b"".join(file.read_bytes() for file in files), self.session)
        self.assertEqual(sum(len(harness.decode_file(file)) for file in files), len(self.decode(self.session)))

    def test_kills_lose_nothing_that_was_written(self):
        chance = random.Random(3)
        for number in range(8):
            program = self.run_program("record", "-o", self.kept / f"{number}.bin", self.source)
            sending = threading.Thread(target=self.send, args=(Pieces(self.session, number, 5e5),))
            sending.start()
            program.wait(lambda _: any(file.name.startswith(f"{number}.bin") for file in self.recordings()))
            program.wait(lambda _, until=chance.randrange(200_000): self.size(number) > until)
            program.end(signal.SIGKILL)
            sending.join()
        real = {repr(harness.without_live(frame)) for frame in self.decode(self.session)}
        for file in self.recordings():
            with self.subTest(file=file.name):
                data = file.read_bytes()
                self.assertEqual(data, self.session[:len(data)])
                frames = {repr(harness.without_live(frame)) for frame in self.decode(data)}
                self.assertLessEqual(len(frames - real), 1)  # a sentence may end before its line end
                done = self.run_program("replay", "--speed", "max", file, "-o", self.where / "replayed")
                self.assertEqual(done.process.wait(20), 0)
                self.assertEqual((self.where / "replayed").read_bytes(), data)

    def size(self, number):
        return max(file.stat().st_size for file in self.recordings() if file.name.startswith(f"{number}.bin"))

    def test_replay_gives_the_recorded_rhythm(self):
        program = self.run_program("record", "-o", self.kept / "rhythm.bin", self.source)
        self.send(Pieces(self.session[:60_000], 4, 3e4))
        program.wait_for("closed")
        program.end()
        port = harness.free_port()
        decode = self.run_program("decode", f"tcp-listen://127.0.0.1:{port}")
        harness.wait_until_listening(port)
        replay = self.run_program("replay", "--speed", "2", "--to", f"tcp://127.0.0.1:{port}", self.kept / "rhythm.bin")
        expected = self.decode(self.session[:60_000])
        decode.wait_for_lines(len(expected))
        spent = decode.times["out"][-1] - decode.times["out"][0]
        self.assertEqual(replay.process.wait(20), 0)
        decode.end()
        self.assert_objects(decode.objects(), expected)
        self.assertGreater(spent, 0.7)
        self.assertLess(spent, 1.5)


if __name__ == "__main__":
    unittest.main()
