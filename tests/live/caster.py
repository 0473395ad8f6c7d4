#!/usr/bin/env python3
"""A caster on the loopback for tests: NTRIP 1 and 2, with and without TLS, and with faults to order.

Prints "listening HOST PORT", then one JSON object per event: request, position, line, left, fault, served, pushed, error.
Each fault is a mount (GET /stall); --fault applies one to the normal mount. The program ends by itself after --seconds.
"""

import argparse
import asyncio
import base64
import binascii
import collections
import contextlib
import dataclasses
import itertools
import json
import os
import pathlib
import random
import socket
import ssl
import struct
import subprocess
import time
from typing import Callable

HEAD_LIMIT = 65536
CRLF = "\r\n"


def text_of(*lines):
    return CRLF.join(lines + ("", "")).encode("latin-1")


def page(status, *more, body="", kind="text/html"):
    """An answer that is not a stream."""
    return text_of(f"HTTP/1.1 {status}", "Server: NTRIP test/1", *more, f"Content-Type: {kind}",
                   f"Content-Length: {len(body)}", "Connection: close") + body.encode("latin-1")


ICY = text_of("ICY 200 OK")
STREAM = ("HTTP/1.1 200 OK", "Ntrip-Version: Ntrip/2.0", "Server: NTRIP test/2", "Content-Type: gnss/data",
          "Cache-Control: no-store, no-cache, max-age=0", "Connection: close")
CHUNKED = text_of(*STREAM, "Transfer-Encoding: chunked")


# How a piece of the stream is written; `number` counts the pieces.
def as_is(piece, number):
    return piece


def as_chunk(piece, number):
    return b"%x\r\n%b\r\n" % (len(piece), piece)


def as_odd_chunk(piece, number):
    size = f"{len(piece):X}"
    forms = ("00000" + size, size + ";name=value", size.lower() + ' ; name="a;b"', size)
    return forms[number % len(forms)].encode() + b"\r\n" + piece + b"\r\n"


# What happens after the first --after bytes of a stream.
async def stop_sending(link, piece):
    await link.rest()


async def stop_reading_too(link, piece):
    link.writer.transport.pause_reading()
    await link.rest()


async def half_close(link, piece):
    link.writer.write_eof()
    await link.rest()


async def close(link, piece):
    pass


async def reset(link, piece):
    await asyncio.sleep(0.3)  # what the reader has not taken yet would be lost
    link.reset()


def send_and(then, make):
    async def ending(link, piece):
        await link.send(make(piece))
        await then(link, piece)
    return ending


@dataclasses.dataclass(frozen=True)
class Fault:
    what: str
    reply: bytes | Callable | None = None    # in place of a stream
    head: bytes | None = None                # in place of the head that the version asks for
    write: Callable | None = None            # in place of how the version writes pieces
    joined: bool = False                     # the head and the first piece in one segment
    pause: float = 0.0                       # after each byte of the head
    delay: float = 0.0                       # after the head
    after: int | None = None                 # in place of --after
    ending: Callable | None = None           # after so many bytes
    needs_position: bool = False
    push: bytes | None = None                # the answer to a push, when it is not `reply`


NO_REALM = 'WWW-Authenticate: Basic realm="test"'
PORTAL = "<html><head><title>Please log in</title></head><body>Welcome</body></html>"
LONG_HEAD = b"HTTP/1.1 200 OK\r\n"
FAULTS = {
    # Refusals and answers that are not streams.
    "401": Fault("wrong account", page("401 Unauthorized", NO_REALM), push=b"ERROR - Bad Password\r\n"),
    "403": Fault("no right to the mount", page("403 Forbidden")),
    "404": Fault("mount unknown", page("404 Not Found")),
    "409": Fault("mount taken", page("409 Conflict"), push=b"ERROR - Mount Point Taken or Invalid\r\n"),
    "429": Fault("too many requests, Retry-After in seconds", page("429 Too Many Requests", "Retry-After: 30")),
    "500": Fault("trouble, with a page", page("500 Internal Server Error", body="<html><body>broken</body></html>")),
    "503": Fault("overload, Retry-After in seconds", page("503 Service Unavailable", "Retry-After: 5")),
    "503-date": Fault("overload, Retry-After as a date", lambda caster: page("503 Service Unavailable", time.strftime(
        "Retry-After: %a, %d %b %Y %H:%M:%S GMT", time.gmtime(time.time() + 20)))),
    "table": Fault("the table of version 1 in place of the stream", lambda caster: caster.table(1)),
    "table-http": Fault("the table of version 2 in place of the stream", lambda caster: caster.table(2)),
    "table-plain": Fault("a table declared as plain text", page("200 OK", kind="text/plain", body="STR;OTHER;Other;RAW" + CRLF)),
    "table-endless": Fault("8 MiB of table", text_of("SOURCETABLE 200 OK") + b"STR;OTHER;Other;RTCM 3.3\r\n" * 330_000),
    "portal": Fault("a page in place of the stream", page("200 OK", body=PORTAL)),
    "hostile": Fault("control characters in the answer", page("403 \x1b[31mNo\x07\x9b2J", body="<title>\x1b]0;x\x07</title>")),
    "bad-password": Fault("ERROR - Bad Password", b"ERROR - Bad Password\r\n"),
    "taken": Fault("ERROR - Mount Point Taken", b"ERROR - Mount Point Taken or Invalid\r\n"),
    "no-reply": Fault("closed without an answer", b""),
    "tls-alert": Fault("a TLS alert in place of the answer", b"\x15\x03\x01\x00\x02\x02\x46"),
    "garbage": Fault("random bytes in place of the answer", lambda caster: random.Random(1).randbytes(3000)),
    "long-head": Fault("16 MiB of header lines", LONG_HEAD + (b"X-Filler: " + b"x" * 1012 + b"\r\n") * 16384),
    "long-line": Fault("a header line of 16 MiB", LONG_HEAD + b"X-Filler: " + b"x" * (16 << 20)),
    "redirect": Fault("moved to the normal mount", lambda caster: page(
        "301 Moved Permanently", f"Location: http://127.0.0.1:{caster.port}/{caster.options.mount}")),
    "redirect-loop": Fault("moved to itself", page("302 Found", "Location: /redirect-loop")),
    "redirect-file": Fault("moved to another scheme", page("302 Found", "Location: file:///etc/passwd")),
    # Heads that are unusual and right.
    "icy-at-once": Fault("data after the first line end", head=b"ICY 200 OK\r\n", write=as_is, joined=True),
    "icy-then-data": Fault("the same, the data in a segment of its own", head=b"ICY 200 OK\r\n", write=as_is, delay=0.3),
    "icy-lines": Fault("header lines after ICY", head=text_of("ICY 200 OK", "Server: test", "Date: now"), write=as_is),
    "http-1.0": Fault("HTTP/1.0 and no length", head=text_of("HTTP/1.0 200 OK", "Content-Type: gnss/data"), write=as_is),
    "no-chunks": Fault("HTTP/1.1 without length and chunks", head=text_of(*STREAM), write=as_is),
    "bare-lf": Fault("lines end with LF", head=CHUNKED.replace(b"\r", b""), write=as_chunk),
    "odd-case": Fault("odd case, no blanks", write=as_chunk, head=text_of(
        "HTTP/1.1 200 OK", "TRANSFER-encoding:chunked", "content-TYPE:gnss/data")),
    "split": Fault("a byte of the head per segment", pause=0.002),
    "odd-chunks": Fault("extensions, zeros and upper case in sizes", head=CHUNKED, write=as_odd_chunk),
    # Waits.
    "slow-head": Fault("a byte of the head every 0.3 s", pause=0.3),
    "silent": Fault("never an answer", lambda caster: None),
    "no-data": Fault("a good head, then nothing", after=0, ending=stop_sending),
    "needs-position": Fault("nothing before a position has come", needs_position=True),
    # Streams that end.
    "stall": Fault("nothing more comes", ending=stop_sending),
    "half-open": Fault("nothing more comes, nothing is read", ending=stop_reading_too),
    "half-close": Fault("closed for sending only", ending=half_close),
    "close": Fault("closed", ending=close),
    "reset": Fault("reset", ending=reset),
    "chunk-bad": Fault("a size that is not a number", head=CHUNKED, write=as_chunk,
                       ending=send_and(stop_sending, lambda piece: b"zz\r\n" + piece + b"\r\n")),
    "chunk-huge": Fault("a size of 4 GiB", head=CHUNKED, write=as_chunk,
                        ending=send_and(stop_sending, lambda piece: b"fffffff0\r\n" + piece)),
    "chunk-cut": Fault("closed inside a chunk", head=CHUNKED, write=as_chunk,
                       ending=send_and(close, lambda piece: b"64\r\n" + b"#" * 20)),
    "chunk-last": Fault("the last chunk, and not closed", head=CHUNKED, write=as_chunk,
                        ending=send_and(stop_sending, lambda piece: b"0\r\n\r\n")),
}
GOOD = Fault("")
PUSH_STOPS = (stop_reading_too, close, reset)


def report(event, **more):
    print(json.dumps({"time": round(time.time(), 3), "event": event, **more}), flush=True)


class Request:
    def __init__(self, head):
        first, *lines = head.decode("latin-1").splitlines() or [""]
        self.line = first
        self.words = first.split(" ")
        pairs = (line.partition(":") for line in lines)
        self.headers = {name.strip().lower(): value.strip() for name, colon, value in pairs if colon}
        self.version = 2 if "2" in self.headers.get("ntrip-version", "") else 1

    def mount(self, place):
        return self.words[place].lstrip("/").split("?")[0] if len(self.words) > place else ""

    def account(self):
        kind, _, coded = self.headers.get("authorization", "").partition(" ")
        with contextlib.suppress(binascii.Error):
            return base64.b64decode(coded).decode("utf-8", "replace") if kind.lower() == "basic" else ""
        return "?"


class Link:
    """One connection."""

    def __init__(self, caster, reader, writer):
        self.caster, self.reader, self.writer = caster, reader, writer
        self.has_position = asyncio.Event()
        self.is_reset = False
        if not caster.options.tls:  # where drain would wait for ever
            writer.transport.set_write_buffer_limits(high=0)  # sent means: handed to the kernel

    async def send(self, data):
        self.writer.write(data)
        await self.writer.drain()

    async def rest(self):
        await asyncio.sleep(self.caster.options.seconds)

    def reset(self):
        linger = struct.pack("ii", 1, 0)
        self.writer.get_extra_info("socket").setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, linger)
        self.writer.transport.abort()
        self.is_reset = True

    async def read_head(self):
        head = b""
        while not head.endswith((b"\r\n\r\n", b"\n\n")) and len(head) < HEAD_LIMIT:
            # Some pushers never send the empty line.
            patience = 0.5 if head.startswith(b"SOURCE ") and head.endswith(b"\n") else 10
            try:
                line = await asyncio.wait_for(self.reader.readline(), patience)
            except asyncio.TimeoutError:
                break
            if not line:
                break
            head += line
        return head

    async def watch(self, mount):
        """Reports the lines that a reader of a stream sends."""
        with contextlib.suppress(OSError):
            while line := await self.reader.readline():
                text = line.decode("latin-1").strip()
                if text:
                    is_position = text.startswith("$") and text[3:6] == "GGA"
                    report("position" if is_position else "line", mount=mount, text=text[:200])
                    self.has_position.set()
            report("left", mount=mount)


class Caster:
    def __init__(self, options):
        self.options = options
        self.port = 0
        self.data = pathlib.Path(options.file).read_bytes()
        self.requests = collections.Counter()  # by mount
        self.places = collections.Counter()    # by mount, how far in the file its readers are
        self.pushed = {}                       # mount -> queues of its readers

    async def run(self):
        context = certificate(self.options) if self.options.tls else None
        server = await asyncio.start_server(self.serve, self.options.bind, self.options.port, ssl=context, backlog=512,
                                            limit=HEAD_LIMIT)
        self.port = server.sockets[0].getsockname()[1]
        print("listening", self.options.bind, self.port, flush=True)
        await asyncio.sleep(self.options.seconds)

    async def serve(self, reader, writer):
        link = Link(self, reader, writer)
        try:
            head = await link.read_head()
            if head:
                request = Request(head)
                report("request", line=request.line[:300], headers=request.headers)
                await self.METHODS.get(request.words[0], Caster.refuse_method)(self, link, request)
        except (OSError, ValueError, asyncio.IncompleteReadError) as error:
            report("error", what=repr(error))
        finally:
            if not link.is_reset:
                writer.close()

    def fault_of(self, mount):
        self.requests[mount] += 1
        is_ill = self.options.heal == 0 or self.requests[mount] <= self.options.heal
        name = mount if mount in FAULTS else self.options.fault if mount == self.options.mount else ""
        return name, FAULTS[name] if name and is_ill else GOOD

    def may(self, request, account):
        return not account or request.account() == account

    def table(self, version):
        names = [self.options.mount, *(FAULTS if self.options.list_faults else []), *sorted(self.pushed)]
        protection = "B" if self.options.account else "N"
        rows = [f"CAS;127.0.0.1;{self.port};test;none;1;ZZZ;0.00;0.00;0.0.0.0;0;none", "NET;TEST;none;B;N;none;none;none;none"]
        rows += [f"STR;{name};{name};RTCM 3.3;1005(10),1077(1);2;GPS+GLO+GAL;TEST;ZZZ;50.09;8.66;"
                 f"{int(name == 'needs-position')};0;test;none;{protection};N;9600;" for name in names]
        body = pathlib.Path(self.options.table).read_bytes() if self.options.table else text_of(*rows, "ENDSOURCETABLE")[:-2]
        if version == 2:
            return page("200 OK", kind="gnss/sourcetable", body=body.decode("latin-1"))
        return text_of("SOURCETABLE 200 OK", "Content-Type: text/plain", f"Content-Length: {len(body)}") + body

    async def reply(self, link, version, what):
        data = what(self) if callable(what) else what
        if data is None:
            return await link.rest()
        await link.send(data if version == 2 else data.replace(b"HTTP/1.1 ", b"HTTP/1.0 ", 1))

    async def refuse_method(self, link, request):
        await link.send(page("501 Not Implemented"))

    # Readers.

    async def get(self, link, request):
        mount = request.mount(1)
        version = self.options.version or request.version
        name, fault = self.fault_of(mount)
        if fault.reply is not None:
            await self.reply(link, version, fault.reply)
        elif mount == "":
            await link.send(self.table(version))
        elif not self.may(request, self.options.account):
            await self.reply(link, version, FAULTS["401"].reply)
        elif name or mount == self.options.mount:
            await self.stream(link, request, version, mount, fault, self.from_file(mount))
        elif mount in self.pushed:
            await self.stream(link, request, version, mount, fault, self.from_push(mount))
        else:
            await self.reply(link, version, self.table(1) if version == 1 else FAULTS["404"].reply)

    async def from_file(self, mount):
        at = self.places[mount]
        sizes, sent, begin = self.options.pieces, 0, time.monotonic()
        for number in itertools.count():
            if at >= len(self.data):
                if self.options.at_end == "hold":
                    await asyncio.sleep(self.options.seconds)
                if self.options.at_end != "loop":
                    return
                at %= len(self.data)
            piece = self.data[at:at + sizes[number % len(sizes)]]
            at += len(piece)
            sent += len(piece)
            if self.options.rate:
                await asyncio.sleep(begin + sent / self.options.rate - time.monotonic())
            yield piece

    async def from_push(self, mount):
        queue = asyncio.Queue()
        self.pushed[mount].append(queue)
        while (piece := await queue.get()) is not None:
            yield piece

    async def stream(self, link, request, version, mount, fault, pieces):
        head = fault.head or (CHUNKED if version == 2 else ICY)
        write = fault.write or (as_chunk if version == 2 else as_is)
        after = self.options.after if fault.after is None else fault.after
        if "ntrip-gga" in request.headers:
            report("position", mount=mount, text=request.headers["ntrip-gga"][:200], inHead=True)
            link.has_position.set()
        watch = asyncio.create_task(link.watch(mount))
        sent = 0
        try:
            await self.send_head(link, head, fault)
            if fault.needs_position:
                await link.has_position.wait()
            number = 0
            async for piece in pieces:
                is_last = fault.ending and sent + len(piece) >= after
                now = piece[:after - sent] if is_last else piece
                if now:
                    data = write(now, number)
                    cut = number * 7 % len(data)  # segments do not end where chunks do
                    lead = head if fault.joined and number == 0 else b""
                    for part in (lead + data[:cut], data[cut:]):
                        await link.send(part)
                    sent += len(now)
                    number += 1
                if self.options.resume:
                    self.places[mount] += len(now)
                if is_last:
                    report("fault", mount=mount, sent=sent)
                    await fault.ending(link, piece)
                    return
            if write is not as_is:
                await link.send(b"0\r\n\r\n")
        finally:
            watch.cancel()
            report("served", mount=mount, sent=sent)

    async def send_head(self, link, head, fault):
        if fault.pause:
            for byte in head:
                await link.send(bytes([byte]))
                await asyncio.sleep(fault.pause)
        elif not fault.joined:
            await link.send(head)
        await asyncio.sleep(fault.delay)

    # Pushers.

    async def source(self, link, request):
        mount, account = request.mount(-1), self.options.push_account
        _, fault = self.fault_of(mount)
        password = request.words[1] if len(request.words) > 2 else ""
        if fault.push or fault.reply is not None:
            await self.reply(link, 1, fault.push or fault.reply)
        elif mount in self.pushed:
            await link.send(FAULTS["409"].push)
        elif account and password != account.partition(":")[2]:
            await link.send(FAULTS["401"].push)
        else:
            await link.send(ICY)
            await self.take(link, mount, fault, self.raw_body(link))

    async def post(self, link, request):
        mount = request.mount(1)
        _, fault = self.fault_of(mount)
        if fault.reply is not None:
            return await self.reply(link, 2, fault.reply)
        if mount in self.pushed or not self.may(request, self.options.push_account):
            return await link.send(FAULTS["409" if mount in self.pushed else "401"].reply)
        is_chunked = "chunked" in request.headers.get("transfer-encoding", "").lower()
        answer = text_of(*STREAM[:3])
        if not self.options.late_answer:
            await link.send(answer)
        await self.take(link, mount, fault, self.chunked_body(link) if is_chunked else self.raw_body(link))
        if self.options.late_answer and not link.is_reset:
            await link.send(answer)

    async def raw_body(self, link):
        while data := await link.reader.read(16384):
            yield data

    async def chunked_body(self, link):
        while size := int((await link.reader.readuntil(b"\r\n")).split(b";")[0], 16):
            yield (await link.reader.readexactly(size + 2))[:-2]

    async def take(self, link, mount, fault, body):
        readers = self.pushed.setdefault(mount, [])
        total, why = 0, "ended"
        keep = open(pathlib.Path(self.options.push_dir, mount.replace("/", "_")), "ab") if self.options.push_dir else None
        try:
            while (data := await asyncio.wait_for(anext(body, b""), self.options.push_idle)):
                total += len(data)
                if keep:
                    keep.write(data)
                    keep.flush()
                for queue in readers:
                    queue.put_nowait(data)
                if fault.ending in PUSH_STOPS and total >= self.options.after:
                    why = "fault"
                    await fault.ending(link, data)
                    break
        except (asyncio.TimeoutError, asyncio.IncompleteReadError, OSError, ValueError) as error:
            why = type(error).__name__
        finally:
            self.pushed.pop(mount)
            for queue in readers:
                queue.put_nowait(None)
            report("pushed", mount=mount, bytes=total, why=why)

    METHODS = {"GET": get, "POST": post, "SOURCE": source}


def certificate(options):
    """A self-signed certificate, kept as cert.pem and key.pem in the directory."""
    where = pathlib.Path(options.tls)
    if not (where / "cert.pem").exists():
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                        "-days", "2", "-keyout", where / "key.pem", "-out", where / "cert.pem", "-subj", "/CN=test",
                        "-addext", f"subjectAltName={options.tls_names}"], check=True, capture_output=True)
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(where / "cert.pem", where / "key.pem")
    return context


def read_options():
    faults = "".join(f"  {name:15} {fault.what}\n" for name, fault in FAULTS.items())
    parser = argparse.ArgumentParser(description=__doc__, epilog="faults:\n" + faults,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    add = parser.add_argument
    add("--file", required=True, help="the bytes that are streamed")
    add("--rate", type=float, default=0, help="bytes per second; 0 for as fast as possible")
    add("--pieces", default="1,7,113,2,509,31", help="sizes of pieces or chunks, in turn",
        type=lambda text: [int(size) for size in text.split(",")])
    add("--at-end", choices=("loop", "close", "hold"), default="loop", help="of the file: again, close, or silence")
    add("--resume", action="store_true", help="a reader continues where the one before it ended")
    add("--mount", default="BASE", help="the mount without a fault")
    add("--version", type=int, choices=(0, 1, 2), default=0, help="of NTRIP; 0 for what the reader asks for")
    add("--account", default="", help="USER:PASSWORD that readers need")
    add("--push-account", default="", help="USER:PASSWORD that pushers need; version 1 only the password")
    add("--push-dir", default="", help="where each push is appended to a file")
    add("--push-idle", type=float, default=30, help="seconds of silence that end a push")
    add("--late-answer", action="store_true", help="answer a push of version 2 only at its end")
    add("--fault", choices=list(FAULTS), default="", metavar="FAULT", help="of the normal mount")
    add("--after", type=int, default=5000, help="bytes before a stream stalls, is reset, ...")
    add("--heal", type=int, default=0, help="only the first so many requests of a mount meet its fault; 0 for all")
    add("--list-faults", action="store_true", help="name the faults in the table")
    add("--table", default="", help="a file to send as the table")
    add("--tls", default="", metavar="DIRECTORY", help="speak TLS; the certificate is made there")
    add("--tls-names", default="IP:127.0.0.1,DNS:localhost", help="for which the certificate is valid")
    add("--bind", default="127.0.0.1", help="an address of the loopback")
    add("--port", type=int, default=0, help="0 for any")
    add("--seconds", type=float, default=60, help="life of this program")
    return parser.parse_args()


def main():
    with contextlib.suppress(KeyboardInterrupt):
        asyncio.run(Caster(read_options()).run())
    os._exit(0)  # connections may still wait


if __name__ == "__main__":
    main()
