"""Terminals for programs that draw: one that tmux plays, whose screen can be looked at, and one that need not be read."""

import os
import pathlib
import re
import shlex
import subprocess
import tempfile
import time

import harness

SMALL, LARGE = (80, 24), (200, 50)  # columns, rows


class Tmux:
    """A shell in a terminal that tmux plays, on a server of its own. It works where the sample is."""

    def __init__(self, where, size=SMALL, shell="sh"):
        self.where = pathlib.Path(tempfile.mkdtemp(dir=where))
        self.command = ["tmux", "-u", "-f", "/dev/null", "-S", str(self.where / "tmux")]
        self.count = 0
        environment = dict(os.environ, PS1="$ ", LC_ALL="C.UTF-8", ENV="")
        environment.pop("TMUX", None)
        subprocess.run([*self.command, "new-session", "-d", "-x", str(size[0]), "-y", str(size[1]), shell], check=True,
                       cwd=harness.SESSION.parent, env=environment)

    def do(self, *words):
        return subprocess.run([*self.command, *map(str, words)], check=True, stdout=subprocess.PIPE).stdout.decode()

    def close(self):
        subprocess.run([*self.command, "kill-server"], check=False)

    def text(self, *options):
        return self.do("capture-pane", "-p", *options)

    def keys(self, *names):
        self.do("send-keys", *names)

    def type(self, text):
        self.do("send-keys", "-l", text)

    def resize(self, columns, rows):
        self.do("resize-window", "-x", columns, "-y", rows)

    def wait_for(self, pattern, seconds=harness.PATIENCE):
        """The match as soon as the screen has one."""
        end = time.monotonic() + seconds
        while True:
            text = self.text()
            if (found := pattern(text) if callable(pattern) else re.search(pattern, text, re.MULTILINE)):
                return found
            if time.monotonic() > end:
                raise AssertionError(f"the screen has no {pattern!r}:\n{text}")
            time.sleep(0.05)

    def settled(self):
        """The text when two looks at it agree: a screen comes in parts."""
        text = None
        while text != (text := self.text()):
            time.sleep(0.5)
        return text

    def shell(self, line):
        self.type(line + "\n")

    def start(self, *words, environment=""):
        """A command of the program, in the foreground of the shell: the file that gets its exit status."""
        self.count += 1
        done = self.where / f"done{self.count}"
        self.shell("stty -g >%s; %s %s 2>%s; echo $? >%s" % (
            shlex.quote(f"{done}.tty"), environment, shlex.join([harness.PROGRAM, *map(str, words)]),
            shlex.quote(f"{done}.err"), shlex.quote(str(done))))
        return done
