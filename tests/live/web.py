"""A web server that knows ranges, and has the faults that a test wants."""

import http.server
import re
import ssl
import subprocess
import threading


class Handler(http.server.BaseHTTPRequestHandler):
    def log_message(self, *_):
        pass

    def do_GET(self):
        server = self.server
        with server.lock:
            server.requests.append((self.path, dict(self.headers)))
            answer = server.answers.pop(0) if server.answers else {}
        self.answer(server.files.get(self.path.partition("?")[0]), **answer)

    def answer(self, data, status=None, headers=(), cut=None, etag='"1"', ranges=True, shift=0):
        """`cut`: bytes of the body after which the connection is closed."""
        wanted = re.fullmatch(r"bytes=(\d+)-(\d*)", self.headers.get("Range", "")) if ranges else None
        begin = min(int(wanted[1]) + shift, len(data or b"")) if wanted else 0
        body = (data or b"")[begin : int(wanted[2]) + 1 if wanted and wanted[2] else None]
        if status is None:
            status = 404 if data is None else 416 if wanted and not body else 206 if wanted else 200
        self.send_response(status)
        for name, value in headers:
            self.send_header(name, value)
        self.send_header("ETag", etag)
        self.send_header("Content-Length", str(len(body)))
        if status == 206:
            self.send_header("Content-Range", f"bytes {begin}-{begin + len(body) - 1}/{len(data)}")
        if status == 416:
            self.send_header("Content-Range", f"bytes */{len(data)}")
        self.end_headers()
        try:
            self.wfile.write(body[:cut])
        except OSError:
            pass  # the program has what it wanted
        self.close_connection = True


class WebServer(http.server.ThreadingHTTPServer):
    daemon_threads = True

    def __init__(self, files, answers=(), certificate=None):
        super().__init__(("127.0.0.1", 0), Handler)
        self.files = files
        self.answers = list(answers)
        self.requests = []
        self.lock = threading.Lock()
        if certificate is not None:
            context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            context.load_cert_chain(certificate)
            self.socket = context.wrap_socket(self.socket, server_side=True)
        self.scheme = "http" if certificate is None else "https"
        threading.Thread(target=self.serve_forever, kwargs={"poll_interval": 0.05}, daemon=True).start()

    def url(self, path="/session.bin"):
        return f"{self.scheme}://127.0.0.1:{self.server_port}{path}"

    def ranges(self):
        return [headers.get("Range") for _, headers in self.requests]

    def close(self):
        self.shutdown()
        self.server_close()

    def handle_error(self, request, client_address):
        pass  # a program that ends early


def make_certificate(directory):
    """A key and a certificate for 127.0.0.1 that signs itself, in one file."""
    file = directory / "server.pem"
    subprocess.run(
        ["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", file, "-out", directory / "only.pem", "-days", "2",
         "-subj", "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1"],
        check=True, stderr=subprocess.DEVNULL)
    file.write_bytes(file.read_bytes() + (directory / "only.pem").read_bytes())
    return file
