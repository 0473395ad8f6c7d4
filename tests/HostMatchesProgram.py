#!/usr/bin/env python3
"""The program of the README finds exactly the positions that `velagnss decode` finds.

  HostMatchesProgram.py SOURCE_DIR HOST PROGRAM

In the sample session as it is, and cut off with false starts put between its frames, also shortly before the end.
"""

import json
import pathlib
import random
import subprocess
import sys

FALSE_STARTS = [b"\xd3\x03\xe8\x3e\xd0", b"\xd3\x03\xff\x3e", b"$", b"$BIN\x5f\x00\x80\x00\x00", b"$PKVN,RAW,9,", b"$>JI,"]


def output(command, stream):
    return subprocess.run(command, input=stream, stdout=subprocess.PIPE, check=False).stdout.decode().splitlines()


def main():
    source, host, program = sys.argv[1:]
    session = pathlib.Path(source, "samples/session.bin").read_bytes()
    starts = [frame[0] for frame in json.loads(pathlib.Path(source, "samples/session.json").read_text())["frameList"]]
    chance = random.Random(5)
    for number in range(7):
        stream = session
        if number > 0:
            end = chance.randrange(len(starts) // 2, len(starts))
            stream = session[: starts[end - 12]] + FALSE_STARTS[0] + session[starts[end - 12] : starts[end]]
            for at in sorted(chance.sample(starts[: end - 12], end // 20), reverse=True):
                stream = stream[:at] + chance.choice(FALSE_STARTS) + stream[at:]
        fields = [json.loads(line)["fields"] for line in output([program, "-q", "decode", "--msg", "GGA", "-"], stream)]
        expected = ["%.7f %.7f" % (f["latitude_deg"], f["longitude_deg"]) for f in fields if f.get("latitude_deg") is not None]
        found = output([host], stream)
        if expected != found or len(found) < 100:
            sys.exit("stream %d: the program finds %d positions, the host %d" % (number, len(expected), len(found)))


if __name__ == "__main__":
    main()
