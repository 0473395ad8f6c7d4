#!/usr/bin/env python3
"""Runs the commands that the documents show.

  DocumentCommands.py SOURCE_DIR PROGRAM_DIR

In a block fenced as `console`, a line that begins with "$ " is a command (a trailing backslash continues it), what follows
up to the next one is its output, standard error included: compared line by line, where "..." alone stands for any
lines and at a line's end for the rest of the line. A command without output shown must succeed. The commands of a document
run in one scratch directory that holds the samples and a capture.bin, and in a network of their own where the system allows
it, so that they can use the ports that the documents name.

A command that ends in " &" runs until the end of its block; the output shown below it is how its output begins, and the
next command waits for that.

Blocks fenced as `sh` are not run: what installs packages, builds the whole, reads a port or takes long. The
scripts, presets and options that they name must exist. So must the tests that robustness.md names, and result-codes.md
has a line for every code.
Blocks fenced as `cpp` are quotations of an example.
"""

import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

LANGUAGES = {"console", "sh", "cpp", "cmake", "json", "text", "ini", "diff"}


def blocks(path):
    """(line number, language, lines) of each fenced block; an indented block counts as one without a language."""
    language, body, start, before = None, [], 0, ""
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        fence = re.match(r"```(\w*)", line)
        if fence and language is None:
            language, body, start = fence.group(1), [], number + 1
        elif fence:
            yield start, language, body
            language = None
        elif language is not None:
            body.append(line)
        elif line.startswith("    ") and not before:
            yield number, "", [line]
        before = line.strip()


def commands(start, lines):
    """(line number, command, lines of output shown) of a console block."""
    found = []
    for number, line in enumerate(lines, start):
        if found and found[-1][1].endswith("\\") and not found[-1][2]:
            found[-1][1] += "\n" + line
        elif line.startswith("$ "):
            found.append([number, line[2:], []])
        elif found:
            found[-1][2].append(line)
    return found


def matches(expected, actual):
    """Whether the lines are those shown."""
    if not expected:
        return not actual
    if expected[0] == "...":
        return any(matches(expected[1:], actual[skip:]) for skip in range(len(actual) + 1))
    if not actual:
        return False
    shown = expected[0]
    same = actual[0].startswith(shown[:-3]) if shown.endswith("...") else actual[0] == shown
    return same and matches(expected[1:], actual[1:])


class Checker:
    def __init__(self, source, program_dir):
        self.source = source
        self.environment = dict(os.environ, PATH=f"{program_dir}:{os.environ['PATH']}")
        self.examples = [file.read_text(encoding="utf-8") for file in (source / "examples").glob("*.cpp")]
        self.faults = []
        self.run_count = 0

    def fault(self, path, line, text):
        self.faults.append(f"{path.relative_to(self.source)}:{line}: {text}")

    def run(self, command, where):
        return subprocess.run(["bash", "-c", command], cwd=where, env=self.environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60, check=False)

    def start(self, command, shown, where):
        """A command in the background: the process, and what it has written when that is as shown or 10 s are over."""
        with tempfile.TemporaryFile() as file:
            process = subprocess.Popen(["bash", "-c", "exec " + command.removesuffix("&")], cwd=where, env=self.environment,
                                       stdin=subprocess.DEVNULL, stdout=file, stderr=subprocess.STDOUT)
            end = time.monotonic() + 10
            while True:
                output = os.pread(file.fileno(), 1 << 20, 0).decode("utf-8", "replace").splitlines()
                if matches([*shown, "..."], output) or time.monotonic() > end:
                    return process, output
                time.sleep(0.05)

    def check_console(self, path, start, lines, where):
        background = []
        for number, command, shown in commands(start, lines):
            self.run_count += 1
            if command.endswith(" &"):
                process, output = self.start(command, shown, where)
                background.append((number, command, process))
                if not matches([*shown, "..."], output):
                    self.fault(path, number, f"{command}: its output begins with\n" + "\n".join(output[:20]))
                continue
            done = self.run(command, where)
            output = done.stdout.decode("utf-8", "replace").splitlines()
            if not shown and done.returncode != 0:
                self.fault(path, number, f"{command}: ended with {done.returncode}: {output[-1:]}")
            elif shown and not matches(shown, output):
                self.fault(path, number, f"{command}: its output is\n" + "\n".join(output[:20]))

        for number, command, process in reversed(background):
            process.send_signal(signal.SIGTERM)
            try:
                # Other programs may call the signal an error, as nats-server does.
                if process.wait(10) not in (0, 128 + signal.SIGTERM) and "velagnss" in command:
                    self.fault(path, number, f"{command}: ended with {process.returncode}")
            except subprocess.TimeoutExpired:
                process.kill()
                self.fault(path, number, f"{command}: did not end")

    def check_sh(self, path, start, lines):
        presets = (self.source / "CMakePresets.json").read_text(encoding="utf-8")
        for number, line in enumerate(lines, start):
            for preset in re.findall(r"--preset[ =](\S+)", line):
                if f'"name": "{preset}"' not in presets:
                    self.fault(path, number, f"no such preset: {preset}")
            for script in re.findall(r"(?<![\w./])(?:scripts|\.ci|bench)/\w+", line):
                if not os.access(self.source / script, os.X_OK):
                    self.fault(path, number, f"no such script: {script}")
            for command, options in re.findall(r"\bvelagnss( [a-z-]+| )([^|;&#]*)", line):
                help_text = self.run(f"velagnss {command} --help; velagnss --help", self.source).stdout.decode()
                for option in re.findall(r"(?<!\S)--?\w[\w-]*", options):
                    if not re.search(rf"(?<![\w-]){option}(?![\w-])", help_text):
                        self.fault(path, number, f"no such option: {option}")

    def check_test_names(self, path):
        """Every `Suite.Test` of a table is a test, every `scripts/...` a script."""
        sources = "\n".join(file.read_text(encoding="utf-8") for file in (self.source / "tests").glob("*.cpp"))
        tests = {".".join(names) for names in re.findall(r"TEST(?:_\w+)?\((\w+), (\w+)[,)]", sources)}
        fuzzers = (self.source / "fuzz/CMakeLists.txt").read_text(encoding="utf-8")
        tests |= {f"fuzz.{name}" for name in re.findall(r"velagnss_fuzzer\((\w+)", fuzzers)}
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            for name in re.findall(r"`(\w+\.\w+|scripts/\w+)`", line) if line.startswith("|") else []:
                if name not in tests and not (self.source / name).exists():
                    self.fault(path, number, f"no such test: {name}")

    def check_codes(self, path):
        """Every code of the two enumerations is explained."""
        text = path.read_text(encoding="utf-8")
        headers = [self.source / header for header in ("records/ResultCodes.h", "framing/FrameRecognizer.h")]
        for header in headers:
            for name, value in re.findall(r"^  (eRe\w+) = (\d+),", header.read_text(encoding="utf-8"), re.MULTILINE):
                if f"| {value} | `{name}` |" not in text:
                    self.fault(path, 1, f"no line for {name}, {value}")

    def check(self, path):
        with tempfile.TemporaryDirectory(prefix="velagnss-documents-") as where:
            shutil.copytree(self.source / "samples", pathlib.Path(where) / "samples")
            shutil.copy(self.source / "samples/session.bin", pathlib.Path(where) / "capture.bin")
            for start, language, lines in blocks(path):
                if language == "console":
                    self.check_console(path, start, lines, where)
                elif language == "sh":
                    self.check_sh(path, start, lines)
                elif language == "cpp" and not any("\n".join(lines) in example for example in self.examples):
                    self.fault(path, start, "not the text of an example")
                elif language not in LANGUAGES:
                    self.fault(path, start, f"a block of language '{language}': fence it as one of {sorted(LANGUAGES)}")


def enter_own_network():
    """Runs this script again where nothing else uses a port; returns where that is impossible."""
    if "VELAGNSS_OWN_NETWORK" not in os.environ and shutil.which("unshare") and shutil.which("ip"):
        inside = ["unshare", "-rn", "sh", "-c", 'ip link set lo up && exec "$@"', "sh"]
        if subprocess.run([*inside, "true"], stderr=subprocess.DEVNULL, check=False).returncode == 0:
            os.environ["VELAGNSS_OWN_NETWORK"] = "1"
            os.execvp("unshare", [*inside, sys.executable, *sys.argv])


def main():
    enter_own_network()
    source, program_dir = pathlib.Path(sys.argv[1]), sys.argv[2]
    checker = Checker(source, program_dir)
    for path in sorted(source.glob("*.md")) + sorted(source.glob("*/*.md")):
        checker.check(path)
    checker.check_test_names(source / "docs/robustness.md")
    checker.check_codes(source / "docs/result-codes.md")
    print(f"{checker.run_count} commands run")
    for fault in checker.faults:
        print(fault)
    return 1 if checker.faults or checker.run_count == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
