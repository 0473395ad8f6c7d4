#!/usr/bin/env python3
"""Streams of casters: every fault of the test caster, and what the program says and does."""

import pathlib
import unittest

import caster
import harness

SIZE = 30_000   # bytes of the session that a mount streams
AFTER = 10_000  # and of those, about, the ones before it fails

# What becomes of a source. Good: every frame comes, in one connection. Back: every frame comes, some after the source was
# lost. Lost and refused: this and no frame.
GOOD, BACK, LOST, REFUSED = "good", "back", "lost", "refused"

FAULTS = {
    "401": (REFUSED, "401"),
    "403": (REFUSED, "403"),
    "404": (REFUSED, "404"),
    "409": (REFUSED, "409"),
    "429": (REFUSED, "429"),
    "500": (LOST, "500"),
    "503": (LOST, "503"),
    "503-date": (LOST, "503"),
    "table": (REFUSED, "mount"),
    "table-http": (REFUSED, "mount"),
    "table-plain": (REFUSED, "mount"),
    "table-endless": (REFUSED, "table"),
    "portal": (REFUSED, "Please log in"),
    "hostile": (REFUSED, "control characters"),
    "bad-password": (REFUSED, "Bad Password"),
    "taken": (REFUSED, "Taken"),
    "no-reply": (LOST, "closed"),
    "tls-alert": (REFUSED, "TLS"),
    "garbage": (REFUSED, "."),
    "long-head": (REFUSED, "long"),
    "long-line": (REFUSED, "long"),
    "redirect": (GOOD, ""),
    "redirect-loop": (REFUSED, "moved"),
    "redirect-file": (REFUSED, "scheme"),
    "icy-at-once": (GOOD, ""),
    "icy-then-data": (GOOD, ""),
    "icy-lines": (GOOD, ""),
    "http-1.0": (GOOD, ""),
    "no-chunks": (GOOD, ""),
    "bare-lf": (GOOD, ""),
    "odd-case": (GOOD, ""),
    "split": (GOOD, ""),
    "odd-chunks": (GOOD, ""),
    "slow-head": (LOST, "."),
    "silent": (LOST, "."),
    "no-data": (LOST, "no data"),
    "needs-position": (GOOD, ""),
    "stall": (BACK, "no data"),
    "half-open": (BACK, "no data"),
    "half-close": (BACK, "ended the stream"),
    "close": (BACK, "ended the stream"),
    "reset": (BACK, "reset"),
    "chunk-bad": (BACK, "chunk"),
    "chunk-huge": (BACK, "chunk"),
    "chunk-cut": (BACK, "."),
    "chunk-last": (BACK, "end"),
}
LEAST_PAUSE = {"429": 30_000, "503-date": 15_000}  # ms: what the caster asks for


class NtripTest(harness.Case):
    def setUp(self):
        super().setUp()
        borders = [frame["offset"] for frame in harness.decode_file(harness.SESSION)]
        self.data = self.session[:next(border for border in borders if border >= SIZE)]
        self.after = next(border for border in borders if border >= AFTER)
        self.expected = self.decode(self.data)

    def test_every_fault(self):
        self.assertEqual(set(FAULTS), set(caster.FAULTS))
        options = ("--after", self.after, "--resume", "--at-end", "hold")
        ill = self.run_caster(*options, data=self.data)
        healing = self.run_caster(*options, "--heal", "1", data=self.data)
        position = {"needs-position": ("--position", "50.1,8.6,100")}
        programs = {name: self.run_program("decode", "--events", "--idle-timeout", "4", *position.get(name, ()),
                                           (healing if outcome == BACK else ill).address(name))
                    for name, (outcome, _) in FAULTS.items()}
        for name, (outcome, text) in FAULTS.items():
            with self.subTest(fault=name):
                self.check(programs[name], outcome, text, LEAST_PAUSE.get(name, 10_000 if outcome == REFUSED else 5_000))
        self.assertEqual(ill.wait_for_event("position", mount="needs-position")["text"][:6], "$GPGGA")

    def check(self, program, outcome, text, least_pause):
        if outcome in (GOOD, BACK):
            program.wait_for_frames(len(self.expected), 40)
        else:
            program.wait_for_state(outcome, 1, 40)
        program.end()
        changes = [change for change in program.changes() if change["state"] in (LOST, REFUSED)]
        self.assert_objects(program.frames(), self.expected if outcome in (GOOD, BACK) else [])
        if outcome == GOOD:
            return self.assertIn([change["text"] for change in changes][:1], ([], ["no data for 4 s"]))  # at its end
        self.assertEqual(changes[0]["state"], REFUSED if outcome == REFUSED else LOST)
        self.assertRegex(changes[0]["text"], text)
        self.assertTrue(any(changes[0]["text"] in line for line in program.lines["err"]), program.summary())
        self.assertGreaterEqual(changes[0]["retry_in_ms"], least_pause)

    def test_accounts_stay_secret(self):
        running = self.run_caster("--account", "reader:s3cret", "--at-end", "hold", data=self.data)
        file = self.where / "accounts"
        file.write_text(f"{running.host}:{running.port} reader s3cret\n")
        file.chmod(0o600)
        for source, options, is_let_in in ((running.address(), (), False), (running.address(account="reader:m1staken"), (), False),
                                           (running.address(account="reader:s3cret"), (), True),
                                           (running.address(), ("--credentials", file), True)):
            with self.subTest(source=source):
                program = self.run_program("decode", "-v", "--events", *options, source)
                if is_let_in:
                    program.wait_for_frames(len(self.expected))
                else:
                    self.assertIn("401", program.wait_for_state("refused")["text"])
                said = "\n".join(program.lines["out"] + program.lines["err"])
                shown = pathlib.Path(f"/proc/{program.process.pid}/cmdline").read_text()
                for secret in ("s3cret", "m1staken", "cmVhZGVyOnMzY3JldA"):
                    self.assertNotIn(secret, said)
                self.assertNotRegex(shown, "s3cret|m1staken")
                program.end()

    def test_tls_is_verified(self):
        running = self.run_caster("--tls", self.where, "--at-end", "hold", data=self.data)
        for host, query, text in (("127.0.0.1", "", "certificate"), ("127.0.0.1", f"?ca={self.where}/cert.pem", ""),
                                  ("localhost", f"?ca={self.where}/cert.pem", ""), ("127.0.0.1", "?insecure", "")):
            with self.subTest(host=host, query=query):
                program = self.run_program("decode", "--events", f"ntrips://{host}:{running.port}/BASE{query}")
                if text:
                    program.wait(lambda p: p.changes("refused") or p.changes("lost"))
                    self.assertRegex(program.changes()[-1]["text"], text)
                else:
                    program.wait_for_frames(len(self.expected))
                program.end()
                self.assert_objects(program.frames(), [] if text else self.expected)

    # Also with an interface after the address, which no certificate names.
    def test_name_that_the_certificate_is_not_for(self):
        hosts = [("127.0.0.1", "127.0.0.1")]
        if pathlib.Path("/proc/net/if_inet6").exists():
            hosts.append(("::1", "[::1%1]"))
        for bound, host in hosts:
            running = self.run_caster("--tls", self.where, "--tls-names", "DNS:other.example", "--bind", bound,
                                      data=self.data)
            source = f"ntrips://{host}:{running.port}/BASE?ca={self.where}/cert.pem"
            program = self.run_program("decode", "--events", source)
            program.wait(lambda p: p.changes("refused") or p.changes("lost"))
            self.assertRegex(program.changes()[-1]["text"], "certificate|name")

    def test_plain_and_tls_mistaken(self):
        plain, secured = self.run_caster(), self.run_caster("--tls", self.where)
        for source in (plain.address(scheme="ntrips"), secured.address()):
            program = self.run_program("decode", "--events", source)
            program.wait(lambda p: p.changes("refused") or p.changes("lost"))
            self.assertRegex(program.changes()[-1]["text"], "TLS|closed|reset|ended|answer")

    def test_version_is_as_wished(self):
        running = self.run_caster("--at-end", "hold", data=self.data)
        for version, head in (("1", None), ("2", "Ntrip/2.0")):
            program = self.run_program("decode", running.address(f"BASE?version={version}"))
            program.wait_for_lines(len(self.expected))
            request = running.events("request")[-1]
            self.assertEqual(request["headers"].get("ntrip-version"), head)
            self.assertTrue(request["headers"]["user-agent"].startswith("NTRIP "))
            program.end()


if __name__ == "__main__":
    unittest.main()
