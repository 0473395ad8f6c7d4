#!/usr/bin/env python3
"""The monitor in terminals: what its screens show, what keys, sizes and signals do, and in which state it leaves them."""

import json
import os
import pathlib
import re
import signal
import socket
import subprocess
import threading
import time
import unittest

import harness
import screen
from harness import PATIENCE, wait_until
from screen import LARGE, SMALL

SAMPLE = harness.SESSION.name  # terminals work in its directory, so that no tab is wide
ENDS_WITHIN = 20.0 if harness.IS_SANITIZED else 2.0  # seconds


def gga(number, minutes):
    """The `number`-th of a receiver in Munich that sends ten a second."""
    tenths = 12 * 36000 + number
    body = b"GNGGA,%02d%02d%02d.%d0,48%02d.0000000,N,01134.0000000,E,4,12,0.8,520.0,M,46.0,M,," % (
        tenths // 36000 % 24, tenths // 600 % 60, tenths // 10 % 60, tenths % 10, minutes)
    check = 0
    for byte in body:
        check ^= byte
    return b"$%b*%02X\r\n" % (body, check)


def report(*words):
    done = subprocess.run([harness.PROGRAM, *words, harness.SESSION], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                          check=False)
    return [json.loads(line) for line in done.stdout.splitlines()]


class Feed:
    """A live source that sends `make(number)` again and again, `rate` times a second."""

    def __init__(self, case, make, rate):
        self.server = harness.listener()
        self.address = "tcp://127.0.0.1:%d" % self.server.getsockname()[1]
        self.sent, self.over = 0, threading.Event()
        case.addCleanup(self.close)
        self.thread = threading.Thread(target=self.send, args=(make, rate), daemon=True)
        self.thread.start()

    def send(self, make, rate):
        try:
            connection, _ = self.server.accept()
            with connection:
                begin = time.monotonic()
                for number in range(1 << 30):
                    data = make(number)
                    connection.sendall(data)
                    self.sent += len(data)
                    if self.over.wait(max(0.0, begin + (number + 1) / rate - time.monotonic())):
                        return
        except OSError:
            pass

    def close(self):
        self.over.set()
        self.server.close()


class MonitorCase(harness.Case):
    def tmux(self, size=SMALL, shell="sh"):
        made = screen.Tmux(self.where, size, shell)
        self.addCleanup(made.close)
        return made

    def read(self, file):
        try:
            return file.read_text()
        except OSError:
            return ""

    def status(self, done):
        wait_until(lambda: self.read(done).endswith("\n"), what="the monitor did not end")
        return int(done.read_text())

    def assert_terminal_is_restored(self, tmux, done):
        after = pathlib.Path(f"{done}.after")
        tmux.shell(f"stty -g >{after}")
        wait_until(lambda: self.read(after).endswith("\n"), what="there is no shell")
        self.assertEqual(after.read_text(), pathlib.Path(f"{done}.tty").read_text())
        self.assertEqual(tmux.do("display", "-p", "#{alternate_on} #{cursor_flag}").split(), ["0", "1"])


def satellites(text):
    return set(re.findall(r"^[GRCE]\d\d|(?<= )[GRCE]\d\d(?= )", text, re.MULTILINE))


def messages(text):
    """Names and counts."""
    return re.findall(r"^(?:\w+ +)?([A-Z]{3}|BIN\d+|RTCM\d+) +\d+\.\d+ +(\d+) ", text, re.MULTILINE)


class ScreenTest(MonitorCase):
    def test_pages_show_what_the_other_commands_find(self):
        epoch = next(e for e in reversed(report("decode", "--epochs-only")) if e["latitude_deg"] is not None)
        stat = report("stat", "--json")[0]
        counts = {}
        for message in stat["messages"]:
            counts.setdefault(message["message"], set()).add(message["count"])
        last = [f for f in report("decode") if "protocol" in f][-1]
        tmux = self.tmux()
        for number, size in enumerate((SMALL, LARGE), 1):
            with self.subTest(size=size):
                tmux.resize(*size)
                done = tmux.start("monitor", SAMPLE)
                tmux.wait_for(r"^\[.*session.bin: ended\]$")
                tmux.wait_for(rf"{epoch['latitude_deg']:.7f} N +{epoch['longitude_deg']:.7f} E")
                tmux.wait_for(rf"{epoch['satellites_used']} used")
                tmux.wait_for(rf"Frames +{stat['frames']['good']} good  {stat['frames']['bad']} bad\b")
                tmux.keys("2")
                tmux.wait_for(lambda text, least=10 * number: "[2 Satellites]" in text and len(satellites(text)) > least)
                tmux.keys("3")
                tmux.wait_for(lambda text, least=10 * number: "[3 Messages]" in text and len(messages(text)) > least
                              and all(int(count) in counts.get(name, ()) for name, count in messages(text)))
                tmux.keys("4")
                tmux.wait_for(rf'"offset":{last["offset"]},')
                tmux.keys("q")
                self.assertEqual(self.status(done), 0)
                self.assert_terminal_is_restored(tmux, done)

    def test_live_rates_and_positions(self):
        state = {"minute": 10}
        feed = Feed(self, lambda number: gga(number, state["minute"]), 5)
        tmux = self.tmux()
        tmux.start("monitor", feed.address)
        tmux.wait_for(r"48\.1666667 N +11\.5666667 E")
        tmux.wait_for(r"^nmea +([45]\.\d|6\.[0-5])", seconds=60)  # per second
        state["minute"] = 30
        tmux.wait_for(r"48\.5000000 N")

    def test_resize(self):
        tmux = self.tmux()
        tmux.start("monitor", SAMPLE)
        tmux.wait_for("ended")
        for columns, rows, expected in ((200, 50, "with wrong contents$"), (30, 8, "Too small"), (80, 24, "44 bad$"),
                                        (300, 12, "with wrong contents$"), (80, 24, "44 bad$")):
            tmux.resize(columns, rows)
            tmux.wait_for(expected)
            if columns >= 80:
                tmux.wait_for(lambda text, rows=rows: text.split("\n")[rows - 1].startswith("q quit"))

    def test_looks(self):
        """How it draws, by options and environment: characters beyond ASCII, colors."""
        for environment, options, has_utf8, has_color in (
                ("LC_ALL=C.UTF-8", (), True, True),
                ("LC_ALL=xy_XY.UTF-8", (), True, True),  # not installed
                ("LC_ALL= LC_CTYPE= LANG=C.UTF-8", (), True, True),
                ("LC_ALL=C", (), False, True),
                ("LC_ALL= LC_CTYPE= LANG=", (), False, True),
                ("", ("--plain",), False, True),
                ("NO_COLOR=1", (), True, False),
                ("NO_COLOR=1", ("--color", "always"), True, True),
                ("", ("--color", "never"), True, False),
                ("TERM=vt100", (), True, False)):
            with self.subTest(environment=environment, options=options):
                tmux = self.tmux()
                tmux.start("monitor", *options, SAMPLE, environment=environment)
                tmux.wait_for("ended")
                text = tmux.text("-e")
                self.assertEqual(not text.isascii(), has_utf8)
                self.assertEqual(bool(re.search(r"\x1b\[[\d;]*[39][0-7][;m]", text)), has_color)
                self.assertIn("51.4767879 N", text)
                tmux.close()


class KeyTest(MonitorCase):
    def test_pages_and_scrolling(self):
        tmux = self.tmux()
        tmux.start("monitor", SAMPLE)
        for key, page in (("3", "3 Messages"), ("Right", "4 Raw"), ("Left", "3 Messages"), ("?", r"\? Help"),
                          ("Escape", "3 Messages")):
            tmux.keys(key)
            tmux.wait_for(rf"\[{page}\]")
        for key, line in (("NPage", "RTCM1087"), ("Home", "JROX"), ("End", "BLV"), ("Home", "JROX"), ("Down", "RTCM1005")):
            tmux.keys(key)
            tmux.wait_for(rf"Age\n(.*\n)?.*\b{line} ")  # in one of the first two lines

    def test_filter(self):
        tmux = self.tmux()
        tmux.start("monitor", "--msg", "RMC", SAMPLE)
        tmux.wait_for("ended")
        tmux.keys("4")
        tmux.wait_for(lambda text: '"RMC"' in text and '"GGA"' not in text)
        tmux.keys("/")
        tmux.wait_for("filter.*RMC_")
        tmux.type(":x")
        tmux.keys("Enter")
        tmux.wait_for("^filter: RMC:x_ - 'RMC:x': what follows")
        tmux.keys("BSpace", "BSpace", "Enter")
        tmux.wait_for("^q quit")
        tmux.keys("f", "C-u")
        tmux.type("q?")  # no keys here
        tmux.wait_for("^filter: q[?]_$")
        tmux.keys("Escape")
        tmux.wait_for("^q quit")
        tmux.wait_for("filter: RMC;")

    def test_tabs_and_pause(self):
        feeds = (Feed(self, lambda number: gga(number, number % 30), 10), Feed(self, lambda number: gga(number, 45), 10))
        tmux = self.tmux()
        tmux.start("monitor", *(feed.address for feed in feeds), SAMPLE)
        tmux.wait_for(r"ended\].* tcp://.* tcp://")
        for position in ("51.4767879 N", r"48\.\d+ N", r"48\.7500000 N", "51.4767879 N"):  # files come first
            tmux.wait_for(position)
            tmux.keys("Tab")
        tmux.wait_for(r"48\.\d+ N")
        tmux.keys("p")
        tmux.wait_for("PAUSED")
        held, sent = tmux.settled(), feeds[0].sent
        wait_until(lambda: feeds[0].sent > sent + 30 * 80)
        self.assertEqual(tmux.text(), held)
        tmux.keys("BTab")
        tmux.wait_for("51.4767879 N")
        tmux.keys("Tab")
        tmux.wait_for(lambda text: text == held)
        tmux.keys("Space")
        tmux.wait_for(lambda text: "PAUSED" not in text and text != held)

    def test_messages(self):
        """They are on the screen while there is one, and on standard error afterwards."""
        feed = Feed(self, lambda number: gga(number, 0), 10)
        tmux = self.tmux(LARGE)
        tmux.shell(f"{harness.PROGRAM} monitor {feed.address}")
        tmux.wait_for("connected to 127.0.0.1")
        feed.close()
        tmux.wait_for(r"^\[.*: lost\]")
        tmux.keys("5")
        tmux.wait_for(r"\d\d:\d\d:\d\d +warning: tcp://.*closed")
        tmux.keys("q")
        tmux.wait_for(lambda text: "velagnss: warning: tcp://" in text and "connected to 127.0.0.1" in text)


class EndTest(MonitorCase):
    def test_signals_restore_the_terminal(self):
        feed = Feed(self, lambda number: gga(number, 0) * 10, 100)
        for end in ("q", "C-c", signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(end=end):
                tmux = self.tmux()
                tmux.shell("echo before")
                done = tmux.start("monitor", SAMPLE, feed.address)
                tmux.wait_for(r"^\[.*session.bin: ended\]")
                pid = self.child_of(int(tmux.do("display", "-p", "#{pane_pid}")))
                begin = time.monotonic()
                tmux.keys(end) if isinstance(end, str) else os.kill(pid, end)
                status = self.status(done)
                self.assertLess(time.monotonic() - begin, ENDS_WITHIN)
                self.assertEqual(status, {"q": 0, "C-c": 130}.get(end) if isinstance(end, str) else 128 + end)
                self.assert_terminal_is_restored(tmux, done)
                tmux.wait_for("(^|# )before$")
                tmux.close()

    def child_of(self, shell):
        found = []
        wait_until(lambda: found.extend(
            int(process.name) for process in pathlib.Path("/proc").glob("[0-9]*")
            if f"\nPPid:\t{shell}\n" in self.read(process / "status") and "monitor" in self.read(process / "cmdline")) or found)
        return found[0]

    def test_stop_and_go_on(self):
        tmux = self.tmux(shell="bash --norc --noprofile -i")
        tmux.start("monitor", SAMPLE)
        tmux.wait_for("ended")
        shell = int(tmux.do("display", "-p", "#{pane_pid}"))
        pid = self.child_of(shell)
        for _ in range(2):
            tmux.keys("C-z")
            tmux.wait_for("Stopped")
            tmux.shell("clear; stty -a | grep -o ' icanon\\| echo '")
            tmux.wait_for("^ *icanon\n *echo *$")
            tmux.shell("clear; fg")
            tmux.wait_for(r"\[.*ended\]")
        os.kill(pid, signal.SIGSTOP)
        tmux.wait_for("Stopped")
        os.kill(pid, signal.SIGCONT)  # in the background, where the terminal is not its own
        wait_until(lambda: self.is_stopped(pid), what="it runs in the background")
        tmux.shell("clear; fg")
        tmux.wait_for(r"\[.*ended\]")
        tmux.keys("C-z")
        tmux.wait_for("Stopped")
        tmux.shell("clear; bg")
        wait_until(lambda: self.is_stopped(pid), what="it runs in the background")
        tmux.shell("kill %1")
        wait_until(lambda: not pathlib.Path(f"/proc/{pid}").exists(), what="it does not end in the background")

    def is_stopped(self, pid):
        return self.read(pathlib.Path(f"/proc/{pid}/stat")).rpartition(")")[2].split()[:1] == ["T"]

    def on_terminal(self, *arguments, **how):
        program = harness.OnTerminal([harness.PROGRAM, *arguments], **how)
        self.addCleanup(program.kill)
        return program

    def test_a_stuck_terminal_holds_up_no_source(self):
        """It is not read, or stopped by Ctrl-S: the sender is never held back, and the program ends all the same."""
        for is_read, stop in ((False, ""), (True, "\x13")):
            with self.subTest(is_read=is_read):
                feed = Feed(self, lambda _: self.session[:5000], 20)
                copy = self.where / f"copy{is_read}.bin"
                program = self.on_terminal("monitor", "--tee", copy, feed.address, columns=200, rows=50, is_read=is_read,
                                           env={**os.environ, "TERM": "xterm"})
                program.wait_for("connected")
                program.type(stop)
                wait_until(lambda: self.is_stuck(program), 60, "the terminal takes everything")
                memory, sent = program.memory(), feed.sent
                wait_until(lambda: feed.sent > sent + 500_000, 60, "the source is held back")
                if not harness.IS_SANITIZED:
                    self.assertLess(program.memory(), memory + 4096)
                begin = time.monotonic()
                self.assertEqual(program.end(), 128 + signal.SIGTERM)
                self.assertLess(time.monotonic() - begin, ENDS_WITHIN)
                self.assertTrue(program.is_restored())
                program.read_rest()
                self.assertEqual(program.last.count(b"\x1b[?1049l"), 1)  # the main screen
                feed.close()
                self.assertGreater(copy.stat().st_size, sent + 400_000)

    def is_stuck(self, program):
        """Whether one of its threads waits for the terminal to take something."""
        where = pathlib.Path(f"/proc/{program.process.pid}/task")
        return any(self.read(task / "wchan") in ("wait_woken", "n_tty_write") for task in where.iterdir())

    def test_a_lost_terminal_ends_the_program(self):
        for ignored, status in ((False, 128 + signal.SIGHUP), (True, 4)):
            with self.subTest(ignored=ignored):
                command = ["nohup"] if ignored else []
                program = harness.OnTerminal([*command, harness.PROGRAM, "monitor", harness.SESSION], stdout=subprocess.PIPE)
                self.addCleanup(program.kill)
                program.wait_for_output(b"ended")
                program.lose_terminal()
                self.assertEqual(program.process.wait(PATIENCE), status)

    def test_no_screen(self):
        """Where it cannot draw, it says so before it reads anything."""
        for environment, has_terminal, words in (
                ({"TERM": "dumb"}, True, "'dumb' have no screen"), ({"TERM": "no-such"}, True, "'no-such' are unknown"),
                ({"TERM": ""}, True, "'' are unknown"), ({"TERM": "xterm"}, False, "no terminal")):
            with self.subTest(environment=environment, has_terminal=has_terminal):
                how = {"env": {**os.environ, **environment}}
                command = [harness.PROGRAM, "monitor", str(harness.SESSION)]
                program = (harness.OnTerminal(command, **how) if has_terminal
                           else harness.Running(command, start_new_session=True, **how))
                self.addCleanup(program.kill)
                self.assertIn(words, program.wait_for("error"))
                self.assertEqual(program.process.wait(PATIENCE), 4)

    def test_standard_input_is_not_the_keyboard(self):
        tmux = self.tmux()
        tmux.shell(f"{harness.PROGRAM} monitor")
        tmux.wait_for("standard input is the terminal")
        tmux.shell(f"clear; (cat {harness.SESSION}; sleep 1000) | {{ {harness.PROGRAM} monitor; echo over $?; }}")
        tmux.wait_for(r"51\.47\d+ N")
        tmux.keys("q")
        tmux.wait_for("^over 0")


if __name__ == "__main__":
    unittest.main()
