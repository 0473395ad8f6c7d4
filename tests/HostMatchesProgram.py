#!/usr/bin/env python3
"""The program of the README finds exactly the positions that `velagnss decode` finds.

  HostMatchesProgram.py SOURCE_DIR HOST PROGRAM

On the sample session as it is, with false starts put between its frames, cut off, and through a slow pipe.
"""

import json
import pathlib
import random
import subprocess
import sys

FALSE_STARTS = [b"\xd3\x03\xe8\x3e\xd0", b"\xd3\x03\xff\x3e", b"$", b"$BIN\x5f\x00\x80\x00\x00", b"$PKVN,RAW,9,", b"$>JI,"]


def positions_by_program(program, stream):
    lines = subprocess.run([program, "-q", "decode", "--msg", "GGA", "-"], input=stream, capture_output=True).stdout
    fields = [json.loads(line)["fields"] for line in lines.splitlines()]
    return ["%.7f %.7f" % (f["latitude_deg"], f["longitude_deg"]) for f in fields if f.get("latitude_deg") is not None]


def positions_by_host(host, stream, piece):
    with subprocess.Popen([host], stdin=subprocess.PIPE, stdout=subprocess.PIPE) as process:
        if piece == 0:
            return process.communicate(stream)[0].decode().splitlines()
        for at in range(0, len(stream), piece):
            process.stdin.write(stream[at : at + piece])
            process.stdin.flush()
        process.stdin.close()
        return process.stdout.read().decode().splitlines()


def main():
    source, host, program = sys.argv[1:]
    session = pathlib.Path(source, "samples/session.bin").read_bytes()
    manifest = json.loads(pathlib.Path(source, "samples/session.json").read_text())
    chance = random.Random(5)
    streams = [(session, 0)]
    for _ in range(6):
        parts, at = [], 0
        for frame in manifest["frameList"]:
            parts.append(session[at : frame[0]])
            at = frame[0]
            if chance.random() < 0.05:
                parts.append(chance.choice(FALSE_STARTS))
        stream = b"".join(parts)
        streams.append((stream[: chance.randrange(len(stream) // 2, len(stream))], chance.choice([0, 0, 4099])))
    failed = 0
    for number, (stream, piece) in enumerate(streams):
        expected, found = positions_by_program(program, stream), positions_by_host(host, stream, piece)
        if expected != found or len(found) < 100:
            print("stream %d: the program finds %d positions, the host %d" % (number, len(expected), len(found)))
            failed = 1
    return failed


if __name__ == "__main__":
    sys.exit(main())
