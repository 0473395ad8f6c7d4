"""What the tests of live sources share: the program, the caster, and the other ends of its lines.

Programs, sockets and terminals are closed by the test case that opened them. Random numbers come from seeds, so that a
failure can be repeated.
"""

import contextlib
import fcntl
import json
import os
import pathlib
import random
import re
import select
import shutil
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import termios
import threading
import time
import tty
import unittest

HERE = pathlib.Path(__file__).resolve().parent
SESSION = HERE.parent.parent / "samples/session.bin"
PROGRAM = os.environ.get("VELAGNSS_PROGRAM", "velagnss")
IS_SANITIZED = b"__asan_init" in pathlib.Path(shutil.which(PROGRAM) or PROGRAM).read_bytes()  # freed memory is kept
PATIENCE = 20.0  # seconds until a line that must come has not come; long, because the machine may be busy


def processor_time(process):
    """Seconds of a core that it has used."""
    fields = pathlib.Path(f"/proc/{process.pid}/stat").read_text().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


class Running:
    """A program whose lines are kept as they come, with the time of each."""

    def __init__(self, command, stdout=subprocess.PIPE, **how):
        self.process = subprocess.Popen([str(word) for word in command], stdout=stdout, stderr=subprocess.PIPE,
                                        **{"stdin": subprocess.DEVNULL, **how})
        self.changed = threading.Condition()
        self.lines = {"out": [], "err": []}
        self.times = {"out": [], "err": []}
        self.readers = [threading.Thread(target=self._read, args=(name, pipe), daemon=True)
                        for name, pipe in (("out", self.process.stdout), ("err", self.process.stderr)) if pipe]
        for reader in self.readers:
            reader.start()

    def _read(self, name, pipe):
        with pipe:
            for line in pipe:
                with self.changed:
                    self.lines[name].append(line.decode("utf-8", "replace").rstrip("\n"))
                    self.times[name].append(time.time())
                    self.changed.notify_all()

    def wait(self, is_there, seconds=PATIENCE):
        """What `is_there` returns for the program as soon as that is true."""
        end = time.monotonic() + seconds
        with self.changed:
            while not (found := is_there(self)):
                left = end - time.monotonic()
                if left <= 0 or (self.process.poll() is not None and not any(r.is_alive() for r in self.readers)):
                    raise AssertionError(f"waited in vain; {self.summary()}")
                self.changed.wait(min(left, 0.2))
            return found

    def wait_for(self, text, name="err", count=1, seconds=PATIENCE):
        """The line with the text, the `count`-th of them."""
        return self.wait(lambda self: [line for line in self.lines[name] if text in line][count - 1:count], seconds)[0]

    def wait_for_lines(self, count, name="out", seconds=PATIENCE):
        self.wait(lambda self: len(self.lines[name]) >= count, seconds)

    def wait_until_it_handles(self, how):
        """Until a signal no longer ends it as if it had not begun."""
        status = pathlib.Path(f"/proc/{self.process.pid}/status")
        caught = lambda _: int(re.search(r"^SigCgt:\s*(\w+)", status.read_text(), re.M)[1], 16) >> how - 1 & 1
        self.wait(caught)

    def end(self, how=signal.SIGTERM, seconds=10):
        """Its exit status."""
        if self.process.poll() is None:
            self.process.send_signal(how)
        try:
            status = self.process.wait(seconds)
        except subprocess.TimeoutExpired:
            self.process.kill()
            raise AssertionError(f"did not end; {self.summary()}") from None
        for reader in self.readers:
            reader.join(5)
        return status

    def kill(self):
        self.process.kill()
        self.process.wait()
        for reader in self.readers:
            reader.join(5)

    def objects(self):
        return [json.loads(line) for line in self.lines["out"]]

    def frames(self):
        return [made for made in self.objects() if "protocol" in made]

    def changes(self, state=None):
        """Objects about the state of a live source."""
        return [made for made in self.objects() if made.get("event") == "source" and state in (None, made["state"])]

    def wait_for_state(self, state, count=1, seconds=PATIENCE):
        return self.wait(lambda self: self.changes(state)[count - 1:count], seconds)[0]

    def wait_for_frames(self, count, seconds=PATIENCE):
        self.wait(lambda self: len(self.lines["out"]) >= count and len(self.frames()) >= count, seconds)

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.process.pid}/fd"))

    def memory(self):
        """Resident, in KiB."""
        status = pathlib.Path(f"/proc/{self.process.pid}/status").read_text()
        return int(next(line for line in status.splitlines() if line.startswith("VmRSS")).split()[1])

    def processor_time(self):
        return processor_time(self.process)

    def summary(self):
        parts = [f"exit status {self.process.poll()}"]
        parts += [f"{name}, {len(lines)} lines, the last:\n  " + "\n  ".join(line[:300] for line in lines[-8:])
                  for name, lines in self.lines.items()]
        return "\n".join(parts)


class OnTerminal(Running):
    """A program at a terminal of its own, which is read all the time, unless it is to be stuck."""

    def __init__(self, command, columns=80, rows=24, is_read=True, **how):
        self.master, slave = os.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))
        self.before = termios.tcgetattr(slave)
        self.slave = slave
        self.drawn, self.last = 0, b""
        super().__init__(command, start_new_session=True, pass_fds=(slave,),
                         preexec_fn=lambda: fcntl.ioctl(slave, termios.TIOCSCTTY, 0), **how)
        self.is_lost = False
        self.reader = threading.Thread(target=self.read_terminal if is_read else lambda: None, daemon=True)
        self.reader.start()

    def read_terminal(self, may_wait=True):
        while not self.is_lost:
            is_there = select.select([self.master], [], [], 0.1)[0]
            if not is_there and not may_wait:
                break
            if is_there:
                part = os.read(self.master, 65536)
                with self.changed:
                    self.drawn += len(part)
                    self.last = (self.last + part)[-100_000:]
                    self.changed.notify_all()

    def read_rest(self):
        """What an ended program has left in the terminal."""
        self.is_lost = True
        self.reader.join()
        self.is_lost = False
        self.read_terminal(may_wait=False)

    def lose_terminal(self):
        self.is_lost = True
        self.reader.join()
        os.close(self.master)

    def wait_for_output(self, part, seconds=PATIENCE):
        self.wait(lambda self: part in self.last, seconds)

    def type(self, text):
        os.write(self.master, text.encode())

    def is_restored(self):
        return termios.tcgetattr(self.slave) == self.before


class RunningCaster(Running):
    def __init__(self, *options, inside=()):
        super().__init__([*inside, sys.executable, HERE / "caster.py", *options])
        _, self.host, self.port = self.wait(lambda self: self.lines["out"][:1])[0].split()

    def events(self, kind=None, **members):
        found = [json.loads(line) for line in self.lines["out"][1:]]
        return [event for event in found if kind in (None, event["event"])
                and all(event.get(name) == value for name, value in members.items())]

    def wait_for_event(self, kind, count=1, seconds=PATIENCE, **members):
        return self.wait(lambda self: self.events(kind, **members)[count - 1:count], seconds)[0]

    def address(self, mount="BASE", account="", scheme="ntrip"):
        return f"{scheme}://{account + '@' if account else ''}{self.host}:{self.port}/{mount}"


class Pieces:
    """Bytes cut at random places, with random pauses that give about `rate` bytes per second."""

    def __init__(self, data, seed, rate=2e6, largest=3000):
        self.data, self.random, self.rate, self.largest = data, random.Random(seed), rate, largest

    def __iter__(self):
        at = 0
        while at < len(self.data):
            size = self.random.choice((1, 2, self.random.randint(1, 100), self.random.randint(1, self.largest)))
            piece = self.data[at:at + size]
            at += len(piece)
            yield piece
            time.sleep(self.random.random() * 2 * len(piece) / self.rate)


class Terminal:
    """A serial port under a name that stays: a symbolic link to a pseudo-terminal."""

    def __init__(self, name):
        self.name = pathlib.Path(name)
        self.master = None

    def plug(self):
        self.master, slave = os.openpty()
        tty.setraw(self.master)
        target = os.ttyname(slave)
        os.close(slave)
        link = self.name.with_suffix(".new")
        link.symlink_to(target)
        link.rename(self.name)

    def wait_until_open(self, seconds=PATIENCE):
        """Until a program has the port open: before that, what is written would be lost or changed by the terminal."""
        target = os.readlink(self.name)
        wait_until(lambda: target in open_files(), seconds, f"{self.name} is not opened")
        time.sleep(0.05)  # its settings follow

    def write(self, data):
        for at in range(0, len(data), 1024):
            part = data[at:at + 1024]
            while part:
                part = part[os.write(self.master, part):]

    def unplug(self):
        self.name.unlink()
        os.close(self.master)
        self.master = None

    def close(self):
        if self.master is not None:
            self.unplug()


def open_files():
    """The files that other processes have open, where they may be seen."""
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        if process.name != str(os.getpid()):
            with contextlib.suppress(OSError):
                for file in (process / "fd").iterdir():
                    with contextlib.suppress(OSError):
                        yield os.readlink(file)


def wait_until(is_true, seconds=PATIENCE, what="waited in vain"):
    end = time.monotonic() + seconds
    while not is_true():
        if time.monotonic() > end:
            raise AssertionError(what)
        time.sleep(0.02)


def listener(family=socket.AF_INET, address=("127.0.0.1", 0), backlog=16):
    made = socket.socket(family, socket.SOCK_STREAM)
    made.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    made.bind(address)
    made.listen(backlog)
    made.settimeout(PATIENCE)
    return made


def free_port(kind=socket.SOCK_STREAM):
    """A port that was free a moment ago."""
    with socket.socket(socket.AF_INET, kind) as made:
        made.bind(("127.0.0.1", 0))
        return made.getsockname()[1]


def reset(connection):
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
    connection.close()


def wait_until_listening(port):
    wait_until(lambda: f":{port:04X} 00000000:0000 0A" in pathlib.Path("/proc/net/tcp").read_text(), what="nobody listens")


def wait_until_read(connection, seconds=0.3):
    """Until the peer's kernel has all that was sent: a reset would otherwise drop it."""
    wait_until(lambda: struct.unpack("i", fcntl.ioctl(connection, termios.TIOCOUTQ, b"\0" * 4))[0] == 0)
    time.sleep(seconds)  # and the program has taken it from there


class Network:
    """A network namespace with a loopback that can be taken away; only for the superuser."""

    def __init__(self):
        self.keeper = subprocess.Popen(["unshare", "-n", "sh", "-c", "ip link set lo up && echo up && exec sleep 300"],
                                       stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        if not self.keeper.stdout.readline():
            self.close()
            raise unittest.SkipTest("network namespaces cannot be made here")
        self.inside = ("nsenter", "-n", "-t", str(self.keeper.pid))

    def set_loopback(self, state):
        subprocess.run([*self.inside, "ip", "link", "set", "lo", state], check=True)

    def close(self):
        self.keeper.kill()
        self.keeper.wait()
        self.keeper.stdout.close()


def decode_file(file):
    done = subprocess.run([PROGRAM, "decode", file], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
    return [json.loads(line) for line in done.stdout.splitlines()]


class Case(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.session = SESSION.read_bytes()
        cls.maxDiff = 2000

    def setUp(self):
        self.where = pathlib.Path(tempfile.mkdtemp(prefix="velagnss-live-"))
        self.addCleanup(shutil.rmtree, self.where, ignore_errors=True)

    def run_program(self, *arguments, inside=()):
        program = Running([*inside, PROGRAM, *arguments])
        self.addCleanup(program.kill)
        return program

    def run_caster(self, *options, data=None, inside=()):
        file = SESSION
        if data is not None:
            file = self.where / f"stream{len(list(self.where.iterdir()))}.bin"
            file.write_bytes(data)
        caster = RunningCaster("--file", file, *options, inside=inside)
        self.addCleanup(caster.kill)
        return caster

    def terminal(self, name="gnss0"):
        made = Terminal(self.where / name)
        made.plug()
        self.addCleanup(made.close)
        return made

    def decode(self, *parts):
        """The objects of `decode` for files with these bytes, one after the other."""
        objects = []
        for part in parts:
            file = self.where / "part.bin"
            file.write_bytes(part)
            objects += decode_file(file)
        return objects

    def assert_objects(self, found, expected):
        """The objects are those expected but for what only a live source has."""
        found, expected = [[without_live(o) for o in objects] for objects in (found, expected)]
        for number, (one, other) in enumerate(zip(found, expected)):
            self.assertEqual(one, other, f"object {number} of {len(found)}, expected {len(expected)}")
        self.assertEqual(len(found), len(expected))


LIVE_MEMBERS = {"arrival", "input", "offset"}


def without_live(made):
    return {name: value for name, value in made.items() if name not in LIVE_MEMBERS}
