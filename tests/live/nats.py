"""A NATS server for tests: on a free port of the loopback, with a directory of its own."""

import contextlib
import json
import os
import random
import shutil
import socket
import subprocess
import time

import harness

SERVER = shutil.which("nats-server", path=os.environ.get("PATH", "") + ":/usr/sbin")


def steady_port():
    """A free port below those that the system gives to outgoing connections: one of these could take it while the server
    is away."""
    while True:
        port = random.randrange(15_000, 32_000)
        with socket.socket() as made, contextlib.suppress(OSError):
            made.bind(("127.0.0.1", port))
            return port


class Server:
    def __init__(self, where, *options, jetstream=True, tls=False):
        where.mkdir(parents=True, exist_ok=True)
        self.where, self.port, self.process = where, steady_port(), None
        self.command = [SERVER, "-a", "127.0.0.1", "-p", str(self.port), "-l", where / "log", *options]
        if jetstream:
            self.command += ["-js", "-sd", where / "store"]
        self.is_tls = tls
        self.start()

    def start(self):
        self.process = subprocess.Popen(self.command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        harness.wait_until(self.answers, what=f"{self.command} does not begin to listen")

    def answers(self):
        try:
            with socket.create_connection(("127.0.0.1", self.port), 5) as made:
                made.settimeout(5)
                return b"INFO" in made.recv(4096)
        except OSError:
            return False

    def kill(self):
        self.process.kill()
        self.process.wait()

    def address(self, rest="gnss", account=""):
        return f"nats{'s' * self.is_tls}://{account}127.0.0.1:{self.port}/{rest}"

    def request(self, subject, content=None):
        """The answer of JetStream to a request."""
        with socket.create_connection(("127.0.0.1", self.port), 10) as made, made.makefile("rb") as lines:
            data = json.dumps(content).encode() if content else b""
            made.settimeout(10)
            made.sendall(b'CONNECT {"verbose":false,"headers":true}\r\nSUB answer 1\r\nPUB $JS.API.%s answer %d\r\n%s\r\n'
                         % (subject.encode(), len(data), data))
            for line in lines:
                if line.startswith(b"MSG"):
                    return json.loads(lines.read(int(line.split()[-1])))

    def publish(self, subject, data):
        with socket.create_connection(("127.0.0.1", self.port), 10) as made, made.makefile("rb") as lines:
            made.sendall(b'CONNECT {"verbose":false}\r\nPUB %s %d\r\n%s\r\nPING\r\n' % (subject.encode(), len(data), data))
            while lines.readline() != b"PONG\r\n":
                pass

    def configure(self, action, name="gnss", **settings):
        """Creates or updates a stream."""
        answer = self.request(f"STREAM.{action}.{name}", {
            "name": name, "subjects": [f"{name}.>"], "retention": "limits", "storage": "file", "num_replicas": 1,
            "discard": "old", "max_consumers": -1, "max_msgs": -1, "max_bytes": -1, "max_age": 0, "max_msg_size": -1,
            "max_msgs_per_subject": -1, "duplicate_window": 120_000_000_000, **settings})
        assert "error" not in answer, answer

    def count(self, name="gnss"):
        """Messages in the stream; 0 when there is none."""
        return self.request(f"STREAM.INFO.{name}").get("state", {}).get("messages", 0)

    def stations(self, name="gnss"):
        """The data of all messages, by station, in one pass."""
        count, found, seen = self.count(name), {}, 0
        with socket.create_connection(("127.0.0.1", self.port), 10) as made, made.makefile("rb", 1 << 20) as lines:
            request = json.dumps({"stream_name": name, "config": {
                "deliver_subject": "here", "ack_policy": "none", "deliver_policy": "all", "flow_control": True,
                "idle_heartbeat": 5_000_000_000}}).encode()
            made.sendall(b'CONNECT {"verbose":false,"headers":true}\r\nSUB here 1\r\nPUB $JS.API.CONSUMER.CREATE.%s x %d\r\n'
                         b"%s\r\n" % (name.encode(), len(request), request))
            while seen < count:
                words = lines.readline().split()
                if words[:1] == [b"PING"]:
                    made.sendall(b"PONG\r\n")
                if words[:1] != [b"HMSG"]:
                    continue
                head, size = int(words[-2]), int(words[-1])
                data = lines.read(size + 2)
                if data.startswith(b"NATS/1.0 100"):  # the server asks how far we are
                    if len(words) == 6:
                        made.sendall(b"PUB %s 0\r\n\r\n" % words[3])
                    continue
                found.setdefault(words[1].split(b".")[1].decode(), []).append(data[head:size])
                seen += 1
        return {station: b"".join(parts) for station, parts in found.items()}


def wait_for_messages(server, count, seconds=60):
    end = time.monotonic() + seconds
    while (there := server.count()) < count:
        assert time.monotonic() < end, f"{there} messages of {count}"
        time.sleep(0.05)
