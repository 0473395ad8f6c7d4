#!/usr/bin/env python3
"""Live sources against the other ends of their lines: what arrives is decoded as a file is, whatever happens to the line."""

import datetime
import functools
import json
import operator
import pathlib
import signal
import socket
import threading
import time
import unittest

import harness
from harness import PATIENCE, Pieces, wait_until

SHORT = 60_000  # bytes of the session for what only needs some frames


def sentence_of_now():
    now = datetime.datetime.now(datetime.timezone.utc)
    body = now.strftime("GPZDA,%H%M%S.%f,%d,%m,%Y,00,00").encode()
    return b"$%s*%02X\r\n" % (body, functools.reduce(operator.xor, body))


class Line:
    """The end of a line to which the program connects, or that it waits for."""

    def __init__(self, case):
        self.case = case

    def open(self):
        """Before the program starts; returns its source."""

    def send(self, pieces):
        """Once the program runs."""


class StreamLine(Line):
    """The program connects to a listener."""

    def listen(self, family, address):
        self.server = harness.listener(family, address)
        self.case.addCleanup(self.server.close)

    def accept(self):
        self.connection, _ = self.server.accept()
        self.case.addCleanup(self.connection.close)
        if self.server.family == socket.AF_INET:
            self.connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)

    def send(self, pieces):
        self.accept()
        for piece in pieces:
            self.connection.sendall(piece)

    def cut(self):
        self.connection.close()


class TcpLine(StreamLine):
    def open(self):
        self.listen(socket.AF_INET, ("127.0.0.1", 0))
        return "tcp://127.0.0.1:%d" % self.server.getsockname()[1]


class ResetLine(TcpLine):
    def cut(self):
        harness.wait_until_read(self.connection)
        harness.reset(self.connection)


class UnixLine(StreamLine):
    def open(self):
        path = str(self.case.where / "line")
        self.listen(socket.AF_UNIX, path)
        return "unix://" + path


class ListenLine(Line):
    """The program waits for the other side to connect."""

    def open(self):
        self.port = harness.free_port()
        return f"tcp-listen://127.0.0.1:{self.port}"

    def send(self, pieces):
        self.connection = self.connect()
        for piece in pieces:
            self.connection.sendall(piece)

    def connect(self):
        end = time.monotonic() + PATIENCE
        while True:
            try:
                connection = socket.create_connection(("127.0.0.1", self.port))
                self.case.addCleanup(connection.close)
                return connection
            except ConnectionRefusedError:
                if time.monotonic() > end:
                    raise
                time.sleep(0.05)

    def cut(self):
        self.connection.close()


class SerialLine(Line):
    def open(self):
        self.terminal = self.case.terminal()
        return f"serial://{self.terminal.name}?baud=115200"

    def send(self, pieces):
        if self.terminal.master is None:
            self.terminal.plug()
        self.terminal.wait_until_open()
        for piece in pieces:
            self.terminal.write(piece)

    def cut(self):
        time.sleep(0.5)  # what has not been read is lost with the port
        self.terminal.unplug()


class UdpLine(Line):
    def open(self):
        self.port = harness.free_port(socket.SOCK_DGRAM)
        return f"udp://127.0.0.1:{self.port}"

    def send(self, pieces):
        wait_until(lambda: f":{self.port:04X} " in pathlib.Path("/proc/net/udp").read_text(), what="the port is not bound")
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as sender:
            sender.sendto(b"", ("127.0.0.1", self.port))  # an empty datagram is legal, and no end
            for piece in pieces:
                sender.sendto(piece, ("127.0.0.1", self.port))


class LiveTest(harness.Case):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        frames = harness.decode_file(harness.SESSION)
        cls.borders = [frame["offset"] for frame in frames]

    def border_after(self, offset):
        return next(border for border in self.borders if border >= offset)

    def test_live_decodes_as_the_file_does(self):
        for seed, (kind, rate) in enumerate(((TcpLine, 2e6), (ListenLine, 2e6), (UnixLine, 2e6), (SerialLine, 1e6),
                                             (UdpLine, 3e5))):
            with self.subTest(kind=kind.__name__):
                line = kind(self)
                program = self.run_program("decode", line.open())
                sending = threading.Thread(target=line.send, args=(Pieces(self.session, seed, rate, 1400),))
                sending.start()
                expected = self.decode(self.session)
                sending.join()
                program.wait_for_lines(len(expected))
                self.assertEqual(program.end(), 128 + signal.SIGTERM)
                self.assert_objects(program.objects(), expected)
                arrivals = [frame["arrival"] for frame in program.objects()]
                self.assertEqual(arrivals, sorted(arrivals))

    def test_nothing_is_lost_where_a_line_is_cut_between_frames(self):
        end = self.border_after(SHORT)
        cuts = [0, self.border_after(SHORT // 3), self.border_after(SHORT // 2), end]
        expected = self.decode(self.session[:end])
        for kind in (TcpLine, ResetLine, UnixLine, ListenLine, SerialLine):
            with self.subTest(kind=kind.__name__):
                line = kind(self)
                program = self.run_program("decode", "--events", "--retry-pause", "0.1", line.open())
                for number, (begin, end) in enumerate(zip(cuts, cuts[1:]), 1):
                    line.send(Pieces(self.session[begin:end], begin))
                    line.cut()
                    program.wait_for_state("lost", number)
                program.wait_for_frames(len(expected))
                program.end()
                self.assert_objects(program.frames(), expected)
                self.assertEqual([c["state"] for c in program.changes() if c["state"] != "connecting"][:6], ["connected", "lost"] * 3)

    def test_only_the_cut_frame_is_lost(self):
        for seed in range(3):
            cut = self.borders[200 + seed] + 20
            parts = self.session[:cut], self.session[cut:SHORT]
            line = TcpLine(self)
            program = self.run_program("decode", line.open())
            for part in parts:
                line.send(Pieces(part, seed))
                line.cut()
            whole = [frame for frame in self.decode(self.session[:SHORT])
                     if not frame["offset"] < cut < frame["offset"] + frame["length"]]
            program.wait_for_lines(len(whole))
            time.sleep(1)
            program.end()
            self.assert_objects(program.objects(), whole)

    def test_waits_for_who_is_not_there_yet(self):
        port = harness.free_port()
        program = self.run_program("decode", "--events", f"tcp://127.0.0.1:{port}")
        program.wait_for_state("lost", 2)
        server = harness.listener(address=("127.0.0.1", port))
        self.addCleanup(server.close)
        connection, _ = server.accept()
        connection.sendall(self.session[:SHORT])
        program.wait_for_frames(1)
        self.assertIn("refused", program.changes("lost")[0]["text"])
        connection.close()

    def test_unknown_name_is_tried_again(self):
        program = self.run_program("decode", "--events", "tcp://name.invalid:2101")
        program.wait_for_state("lost", 2)
        self.assertIn("name.invalid", program.lines["err"][0])
        begin = time.monotonic()
        self.assertEqual(program.end(), 128 + signal.SIGTERM)
        self.assertLess(time.monotonic() - begin, 2.5)

    def test_silence_opens_the_line_anew(self):
        line = TcpLine(self)
        program = self.run_program("decode", "--events", "--idle-timeout", "1", line.open())
        for _ in range(2):
            line.send([self.session[:SHORT]])
        program.wait_for_state("lost", 2)
        self.assertIn("no data for 1 s", program.changes("lost")[0]["text"])

    def test_peer_that_vanishes(self):
        network = harness.Network()
        self.addCleanup(network.close)
        caster = self.run_caster("--resume", "--rate", "20000", "--mount", "BASE", inside=network.inside)
        program = self.run_program("decode", "--events", "--idle-timeout", "1.5", caster.address(), inside=network.inside)
        program.wait_for_frames(50)
        network.set_loopback("down")
        program.wait_for_state("lost")
        network.set_loopback("up")
        count = len(program.frames())
        program.wait_for_frames(count + 50, 40)
        program.end()
        real = {repr(harness.without_live(frame)) for frame in self.decode(self.session)}
        self.assertLessEqual({repr(harness.without_live(frame)) for frame in program.frames()}, real)

    def test_unplugged_port_costs_nothing(self):
        line = SerialLine(self)
        program = self.run_program("decode", "--events", line.open())
        line.send([self.session[:SHORT]])
        line.cut()
        program.wait_for_state("lost")
        before = program.processor_time()
        time.sleep(2)
        self.assertLess(program.processor_time() - before, 0.1)

    def test_several_sources_at_once(self):
        lines = [TcpLine(self), UnixLine(self), SerialLine(self)]
        names = [line.open() for line in lines]
        program = self.run_program("decode", *names)
        senders = [threading.Thread(target=line.send, args=(Pieces(self.session[:SHORT], seed),))
                   for seed, line in enumerate(lines)]
        for sender in senders:
            sender.start()
        expected = self.decode(self.session[:SHORT])
        program.wait_for_lines(len(expected) * len(lines))
        program.end()
        for name in names:
            self.assert_objects([frame for frame in program.objects() if frame["input"] == name.split("?")[0]], expected)

    def test_report_is_written_at_the_end(self):
        lines = [TcpLine(self), UnixLine(self)]
        program = self.run_program("report", "--json", "-o", self.where / "report", *[line.open() for line in lines])
        for line in lines:
            line.send([sentence_of_now() for _ in range(3)])
            harness.wait_until_read(line.connection)
        self.assertFalse((self.where / "report").exists())
        self.assertEqual(program.end(signal.SIGINT), 128 + signal.SIGINT)
        inputs = json.loads((self.where / "report").read_text())["inputs"]
        self.assertEqual([each["latency"]["count"] for each in inputs], [3, 3])
        for each in inputs:
            self.assertTrue(0 <= each["latency"]["min_s"] <= each["latency"]["max_s"] < harness.PATIENCE, each["latency"])

    def test_false_start_gives_way_when_the_line_pauses(self):
        sentence = b"$GNZDA,235700.00,18,05,2024,00,00*73\r\n"
        false_start = b"\xd3\x03\xff"  # announces 1023 bytes
        line = TcpLine(self)
        program = self.run_program("decode", "--quiet-time", "0.5", line.open())
        line.send([false_start + sentence])
        program.wait_for_lines(1)
        line.connection.sendall(sentence)
        program.wait_for_lines(2)
        program.end()
        self.assertEqual([frame["message"] for frame in program.objects()], ["ZDA"] * 2)

    def test_ends_at_once_in_every_state(self):
        server, full = harness.listener(), harness.listener(backlog=0)
        waiting = [socket.socket() for _ in range(3)]  # more than it takes: further connections get no answer
        for client in waiting:
            client.setblocking(False)
            client.connect_ex(full.getsockname())
        for opened in (server, full, *waiting):
            self.addCleanup(opened.close)
        refused, listens = harness.free_port(), harness.free_port()
        for source in (f"tcp://127.0.0.1:{refused}", f"tcp-listen://127.0.0.1:{listens}", "tcp://127.0.0.1:%d" % full.getsockname()[1],
                       "tcp://127.0.0.1:%d" % server.getsockname()[1], "/dev/ttyUSB97"):
            for how in (signal.SIGTERM, signal.SIGINT):
                with self.subTest(source=source, how=how):
                    program = self.run_program("decode", source)
                    program.wait_until_it_handles(how)
                    time.sleep(0.3)  # it begins to connect
                    begin = time.monotonic()
                    self.assertEqual(program.end(how), 128 + how)
                    self.assertLess(time.monotonic() - begin, 2)


if __name__ == "__main__":
    unittest.main()
