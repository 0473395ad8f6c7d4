#!/usr/bin/env python3
"""Streams of casters: every fault of the test caster, and what the program says and does."""

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
    "redirect-loop": (REFUSED, "redirect"),
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
    "half-close": (BACK, "closed"),
    "close": (BACK, "closed"),
    "reset": (BACK, "reset"),
    "chunk-bad": (BACK, "chunk"),
    "chunk-huge": (BACK, "chunk"),
    "chunk-cut": (BACK, "closed"),
    "chunk-last": (BACK, "end"),
}


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
        programs = {name: self.run_program("decode", "--events", "--idle-timeout", "4", "--position", "50.1,8.6,100",
                                           (healing if outcome == BACK else ill).address(name))
                    for name, (outcome, _) in FAULTS.items()}
        for name, (outcome, text) in FAULTS.items():
            with self.subTest(fault=name):
                self.check(programs[name], outcome, text)
        self.assertEqual(ill.wait_for_event("position", mount="needs-position")["text"][:6], "$GPGGA")

    def check(self, program, outcome, text):
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
        self.assertGreaterEqual(changes[0]["retry_in_ms"], 10_000 if outcome == REFUSED else 5_000)


if __name__ == "__main__":
    unittest.main()
