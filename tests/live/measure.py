#!/usr/bin/env python3
"""Measures the program under load; for people, not for ctest. Prints tables.

  VELAGNSS_PROGRAM=.../velagnss measure.py sources|relay|monitor|nats|stations [SECONDS]
  VELAGNSS_PROGRAM=.../velagnss measure.py tasks [MEGABYTES [json|frames]]

sources: decode reads 20 sources of 100 kB/s each and a probe, from which a sentence comes 20 times a second: how long it
         takes from its sending to its line of output.
relay:   relay hands 10 kB/s on to 200 clients, of which every tenth reads nothing: what the others get, and when.
monitor: the monitor shows a source of 100 kB/s, each page for an equal time, on a terminal of 80x24 and one of 200x50.
nats:    500 stations of 1 kB/s each, which send their stream from its beginning to whoever connects, go through 4 processes
         into a stream; publishers and the server are killed at random times. Then the stream must have each frame of each
         station once, in order.
stations: 10, 100 and 500 such stations through one process: what it and the server use.
tasks:   64 files of so many megabytes, and one that has changed since it was submitted, are decoded by 1, 2 and 4 workers,
         which are killed at random times, and the server once in each run. The results, one after the other, must be those
         of one run over the files. Four of the files are distinct, the others are links to them.
"""

import asyncio
import contextlib
import hashlib
import json
import multiprocessing
import os
import pathlib
import random
import selectors
import shutil
import socket
import subprocess
import sys
import tempfile
import time

import harness
import nats

SOURCES, SOURCE_RATE = 20, 100_000
CLIENTS, CLIENT_RATE = 200, 10_000
STATIONS, STATION_RATE, PUBLISHERS = 500, 1_000, 4
TASKS, DISTINCT, WORKERS, TASK_OPTIONS = 64, 4, (1, 2, 4), ("--msg", "ROT,HDT")
PROBE = b"$GNZDA,%02d%02d%02d.%02d,18,05,2024,00,00"
STEP = 0.01  # seconds between pieces


def sentence(number):
    body = PROBE % (number // 360000 % 24, number // 6000 % 60, number // 100 % 60, number % 100)
    check = 0
    for byte in body[1:]:
        check ^= byte
    return b"%b*%02X\r\n" % (body, check)


async def feed(writer, rate):
    """The session, again and again, in small pieces."""
    data, at, sent, begin = harness.SESSION.read_bytes(), 0, 0, time.monotonic()
    while True:
        piece = data[at:at + int(rate * STEP)]
        at = (at + len(piece)) % len(data)
        sent += len(piece)
        writer.write(piece)
        await writer.drain()
        await asyncio.sleep(begin + sent / rate - time.monotonic())


async def probe(writer, times):
    for number in range(1 << 30):
        data = sentence(number)
        times.append(time.time())
        writer.write(data)
        await asyncio.sleep(0.05)


def feeders(rates, pipe):
    """In a process of its own: a listener per rate, and one for the probe; then, when asked, the times of sending."""
    async def run():
        times, servers = [], []
        for rate in (*rates, None):
            async def serve(reader, writer, rate=rate):
                with contextlib.suppress(ConnectionError, asyncio.CancelledError):
                    await (feed(writer, rate) if rate else probe(writer, times))
            servers.append(await asyncio.start_server(serve, "127.0.0.1", 0))
        pipe.send([server.sockets[0].getsockname()[1] for server in servers])
        while not pipe.poll():
            await asyncio.sleep(0.2)
        pipe.send(times)
    asyncio.run(run())


class Feeders:
    def __init__(self, rates):
        self.pipe, other = multiprocessing.Pipe()
        self.process = multiprocessing.Process(target=feeders, args=(rates, other), daemon=True)
        self.process.start()
        self.addresses = [f"tcp://127.0.0.1:{port}" for port in self.pipe.recv()]

    def times(self):
        self.pipe.send("end")
        return self.pipe.recv()


def percentiles(name, seconds):
    ordered = sorted(seconds)
    if not ordered:
        return print(f"{name}: none")
    at = {share: ordered[min(len(ordered) - 1, int(len(ordered) * share / 100))] for share in (50, 90, 99, 99.9)}
    print(f"{name}, {len(ordered)}: " + ", ".join(f"{share} % {value * 1000:.2f} ms" for share, value in at.items())
          + f", longest {ordered[-1] * 1000:.2f} ms")


class Watch:
    """Processor share and memory of the program over time."""

    def __init__(self, program):
        self.program, self.rows = program, []
        self.begin, self.used = time.monotonic(), program.processor_time()

    def note(self):
        self.rows.append((time.monotonic() - self.begin, self.program.memory(), self.program.descriptors()))

    def print(self):
        share = (self.program.processor_time() - self.used) / (time.monotonic() - self.begin)
        print(f"processor share: {share:.1%} of a core")
        print("   seconds  memory KiB  descriptors")
        for row in self.rows[::max(1, len(self.rows) // 10)]:
            print("%10.0f %11d %12d" % row)


class Output:
    """A program whose standard output is read here, because keeping all of it would take too long."""

    def __init__(self, *arguments):
        read, write = os.pipe()
        self.program = harness.Running([harness.PROGRAM, *arguments], stdout=write)
        os.close(write)
        self.file = os.fdopen(read, "rb", 1 << 20)


def measure_sources(seconds):
    fed = Feeders([SOURCE_RATE] * SOURCES)
    out = Output("decode", *fed.addresses)
    watch, probe_name = None, b'"input":"%b"' % fed.addresses[-1].encode()
    came, count, size = [], 0, 0
    end, next_note = time.monotonic() + seconds + 2, time.monotonic() + 2
    for line in out.file:
        count, size = count + 1, size + len(line)
        if probe_name in line[:120]:
            came.append(time.time())
        now = time.monotonic()
        if now >= next_note:
            watch = watch or Watch(out.program)
            watch.note()
            next_note = now + 1
        if now > end:
            break
    watch.print()
    print(f"{count / seconds:.0f} lines/s, {size / seconds / 1e6:.1f} MB/s of output")
    percentiles("latency of probes", [b - a for a, b in zip(fed.times(), came)])
    out.program.kill()


def read_clients(port, seconds, pipe):
    """In a process of its own: connects the clients and reads all but every tenth."""
    chooser, clients = selectors.DefaultSelector(), []
    for number in range(CLIENTS):
        client = socket.socket()
        if number % 10 == 0:
            client.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)  # soon full
        client.connect(("127.0.0.1", port))
        clients.append(client)
        if number % 10:
            client.setblocking(False)
            chooser.register(client, selectors.EVENT_READ, number)
    got, closed, longest, last = [0] * CLIENTS, 0, [0.0] * CLIENTS, [time.monotonic()] * CLIENTS
    end = time.monotonic() + seconds
    while (now := time.monotonic()) < end:
        for key, _ in chooser.select(0.2):
            part = key.fileobj.recv(65536)
            now = time.monotonic()
            if not part:
                closed += 1
                chooser.unregister(key.fileobj)
            longest[key.data] = max(longest[key.data], now - last[key.data])
            last[key.data] = now
            got[key.data] += len(part)
    reading = [number for number in range(CLIENTS) if number % 10]
    pipe.send(([got[n] for n in reading], closed, [longest[n] for n in reading]))


def measure_relay(seconds):
    fed = Feeders([CLIENT_RATE])
    port = harness.free_port()
    program = harness.Running([harness.PROGRAM, "relay", fed.addresses[0], "--to", f"tcp-listen://127.0.0.1:{port}"])
    harness.wait_until(lambda: f":{port:04X} " in pathlib.Path("/proc/net/tcp").read_text())
    mine, other = multiprocessing.Pipe()
    reader = multiprocessing.Process(target=read_clients, args=(port, seconds, other), daemon=True)
    reader.start()
    time.sleep(1)
    watch = Watch(program)
    while not mine.poll(1):
        watch.note()
    got, closed, longest = mine.recv()
    watch.print()
    print(program.summary().rpartition("err, ")[2])
    print(f"bytes of the clients that read: {min(got)} to {max(got)}, due {CLIENT_RATE * seconds:.0f}; closed: {closed}")
    percentiles("longest silence of each", longest)
    program.kill()


def measure_monitor(seconds):
    fed = Feeders([SOURCE_RATE])
    for columns, rows in ((80, 24), (200, 50)):
        program = harness.OnTerminal([harness.PROGRAM, "monitor", fed.addresses[0]], columns, rows)
        program.wait_for_output(b"receiving")
        print(f"{columns}x{rows}")
        for page in "12345":
            program.type(page)
            watch, drawn = Watch(program), program.drawn
            for _ in range(5):
                time.sleep(seconds / 50)
                watch.note()
            print(f"page {page}: {(program.drawn - drawn) / seconds * 10 / 1000:.1f} kB/s to the terminal")
            watch.print()
        program.kill()


def station_bytes(data, number, seconds):
    """A stream of its own: the session from another place on, ended within a second of a frame's end."""
    size, at = int(STATION_RATE * seconds), number * 7919 % len(data)
    return (data[at:] + data * (size // len(data) + 1))[:size]


def stations(count, seconds, pipe):
    """In a process of its own: a listener for each station. What is over already is sent at once, then a piece each second,
    which ends anywhere in a frame."""
    async def run():
        data, servers, begin = harness.SESSION.read_bytes(), [], time.monotonic()
        for number in range(count):
            async def serve(_, writer, mine=station_bytes(data, number, seconds)):
                sent = 0
                with contextlib.suppress(ConnectionError, asyncio.CancelledError):
                    while True:
                        due = min(len(mine), int((time.monotonic() - begin) * STATION_RATE))
                        writer.write(mine[sent:due])
                        sent = due
                        await writer.drain()
                        await asyncio.sleep(0.9 + random.random() / 5)
            servers.append(await asyncio.start_server(serve, "127.0.0.1", 0))
        pipe.send([server.sockets[0].getsockname()[1] for server in servers])
        while not pipe.poll():
            await asyncio.sleep(0.2)
    asyncio.run(run())


@contextlib.contextmanager
def fed_server(count, seconds):
    """A server, the ports of so many stations, their table of names, and a directory."""
    where = pathlib.Path(tempfile.mkdtemp(prefix="velagnss-nats-"))
    mine, other = multiprocessing.Pipe()
    feeding = multiprocessing.Process(target=stations, args=(count, seconds, other), daemon=True)
    feeding.start()
    server = nats.Server(where / "server")
    try:
        ports, table = mine.recv(), where / "stations"
        table.write_text("".join(f"tcp://127.0.0.1:{port} S{number}\n" for number, port in enumerate(ports)))
        yield server, ports, table, where
    finally:
        server.kill()
        feeding.kill()
        shutil.rmtree(where)


def publisher(number, ports, server, table, publishers=PUBLISHERS):
    mine = [f"tcp://127.0.0.1:{port}" for port in ports[number::publishers]]
    to = server.address(f"gnss?session=measured&stations={table}")
    return harness.Running([harness.PROGRAM, "-q", "relay", "--quiet-time", "never", *mine, "--to", to])


def measure_nats(seconds):
    with fed_server(STATIONS, seconds) as (server, ports, table, where):
        programs = [publisher(number, ports, server, table) for number in range(PUBLISHERS)]
        try:
            kills = kill_at_random(seconds, random.Random(23), programs,
                                   lambda number: publisher(number, ports, server, table), server)
            print(f"{kills['publisher']} publishers and {kills['server']} times the server killed in {seconds:.0f} s")
            wait_until_still(server)
            for number, program in enumerate(programs):
                print(f"publisher {number}: {program.processor_time():.1f} s of a core, {program.memory() // 1024} MiB")
                program.end()
        finally:
            for program in programs:
                program.kill()
        print(f"{server.count()} messages, {nats_size(where) >> 20} MiB on disk")
        found, data = server.stations(), harness.SESSION.read_bytes()
        bad = [number for number in range(STATIONS)
               if found.get(f"S{number}") != frames_of(where, station_bytes(data, number, seconds))]
        print(f"stations whose frames are all there once and in order: {STATIONS - len(bad)} of {STATIONS}; not: {bad}")


def measure_stations(seconds):
    for count in (10, 100, 500):
        with fed_server(count, seconds + 60) as (server, ports, table, _):
            program = publisher(0, ports, server, table, 1)
            try:
                harness.wait_until(server.count, what="nothing is published")
                time.sleep(10)
                processes = (program.process, server.process)
                begin, before, stored = time.monotonic(), [harness.processor_time(p) for p in processes], server.count()
                time.sleep(seconds)
                took = time.monotonic() - begin
                mine, servers = ((harness.processor_time(p) - used) / took for p, used in zip(processes, before))
                print(f"{count} stations: {(server.count() - stored) / took:.0f} messages/s; "
                      f"publisher {mine:.1%} of a core, {program.memory() // 1024} MiB; server {servers:.1%} of a core")
            finally:
                program.kill()


def kill_at_random(seconds, chance, programs, begin_again, server):
    """Every 10 s or so a publisher or, in turn, the server is killed with SIGKILL, and begun again after up to 3 s."""
    kills, end = {"publisher": 0, "server": 0}, time.monotonic() + seconds
    while (left := end - time.monotonic()) > 0:
        time.sleep(min(left, 5 + 10 * chance.random()))
        what = ("publisher", "server")[sum(kills.values()) % 2]
        kills[what] += 1
        victim = chance.randrange(PUBLISHERS)
        programs[victim].kill() if what == "publisher" else server.kill()
        time.sleep(3 * chance.random())
        if what == "publisher":
            programs[victim] = begin_again(victim)
        else:
            server.start()
    return kills


def wait_until_still(server):
    """Until nothing was stored for 20 s: longer than publishers wait before they connect again."""
    count, since = -1, time.monotonic()
    while time.monotonic() - since < 20:
        time.sleep(1)
        if (now := server.count()) != count:
            count, since = now, time.monotonic()


def nats_size(where):
    return sum(file.stat().st_size for file in where.rglob("*") if file.is_file())


def frames_of(where, data):
    file = where / "station.bin"
    file.write_bytes(data)
    return subprocess.run([harness.PROGRAM, "-q", "extract", file], stdout=subprocess.PIPE, check=True).stdout


def digest(pieces):
    made = hashlib.sha256()
    for piece in pieces:
        made.update(piece)
    return made.hexdigest()


def task_files(where, megabytes):
    """Four that differ in their first bytes, by many names."""
    data = harness.SESSION.read_bytes()
    data *= max(1, int(megabytes * 1e6 / len(data)))
    files = [where / f"{number:02}.bin" for number in range(TASKS)]
    for number, file in enumerate(files):
        if number < DISTINCT:
            file.write_bytes(b"%d\n" % number + data)
        else:
            os.link(files[number % DISTINCT], file)
    return files


def work_with_kills(count, server, queue, to, chance):
    """How often a worker was killed until the queue was empty; the server is killed with the third."""
    def begin():
        return subprocess.Popen([harness.PROGRAM, "-q", "work", "--queue", queue, "--to", to, "--until-empty", "--lease", "2"])
    workers, kills = [begin() for _ in range(count)], 0
    while any(worker.poll() is None for worker in workers):
        time.sleep(chance.uniform(1, 10))
        victim = chance.randrange(count)
        if workers[victim].poll() is None and kills < 5:
            workers[victim].kill()
            workers[victim].wait()
            kills += 1
            if kills == 3:
                server.kill()
                server.start()
            workers[victim] = begin()
    return kills


def measure_tasks(megabytes, form="json"):
    where, chance = pathlib.Path(tempfile.mkdtemp(prefix="velagnss-tasks-")), random.Random(5)
    server = nats.Server(where / "server")
    try:
        files, results = task_files(where, megabytes), where / "results"
        size = sum(file.stat().st_size for file in files)
        begin = time.monotonic()
        command = {"json": ("decode", "-j", "1"), "frames": ("extract",)}[form]
        with subprocess.Popen([harness.PROGRAM, "-q", *command, *TASK_OPTIONS, *files], stdout=subprocess.PIPE) as whole:
            expected = digest(iter(lambda: whole.stdout.read(1 << 20), b""))
        seconds = time.monotonic() - begin
        print(f"{' '.join(command)}: {seconds:.1f} s, {size / seconds / 1e6:.0f} MB/s")
        for count in WORKERS:
            results.mkdir()
            poisoned = where / f"poisoned{count}.bin"
            poisoned.write_bytes(b"as submitted")
            queue = server.address(f"tasks{count}")
            command = [harness.PROGRAM, "-q", "submit", "--queue", queue, "--tries", "20", *TASK_OPTIONS]
            subprocess.run([*command, *files, poisoned], check=True)
            poisoned.write_bytes(b"something else")
            begin = time.monotonic()
            kills = work_with_kills(count, server, queue, f"{form}:{results}/", chance)
            seconds = time.monotonic() - begin
            found = digest(file.read_bytes() for file in sorted(results.iterdir()))
            jobs = json.loads(subprocess.run([harness.PROGRAM, "jobs", "--json", "--queue", queue], check=True,
                                             stdout=subprocess.PIPE).stdout)
            print(f"{count} workers, {kills} killed{' and the server' * (kills >= 3)}: {seconds:.1f} s, "
                  f"{size / seconds / 1e6:.0f} MB/s, {jobs['done']} done, "
                  f"given up: {[task['error'] for task in jobs['failed']]}, "
                  f"results {'equal' if found == expected else 'DIFFER'}")
            shutil.rmtree(results)
    finally:
        server.kill()
        shutil.rmtree(where)


def main():
    what, seconds = sys.argv[1], float(sys.argv[2]) if len(sys.argv) > 2 else 60
    {"sources": measure_sources, "relay": measure_relay, "monitor": measure_monitor,
     "nats": measure_nats, "stations": measure_stations, "tasks": measure_tasks}[what](seconds, *sys.argv[3:])


if __name__ == "__main__":
    main()
