"""Runs a program under callgrind and reads what it counted."""

import collections
import os
import re
import subprocess
import tempfile
from pathlib import Path

NAME = re.compile(r"\((\d+)\)(?: (.*))?")


class Profile:
    """Instructions by function: its own, with all that it called, and how often it was called."""

    def __init__(self, text):
        self.own = collections.Counter()
        self.inclusive = collections.Counter()
        self.calls = collections.Counter()
        self.callers = collections.defaultdict(collections.Counter)
        self._names = {}
        self._read(text)

    def _name(self, text):
        match = NAME.fullmatch(text)
        if not match:
            return text
        if match[2] is not None:
            self._names[match[1]] = match[2]
        return self._names[match[1]]

    def _read(self, text):
        function = callee = ""
        count = None  # of a call, whose cost is on the next line
        for line in text.splitlines():
            if line.startswith("fn="):
                function = self._name(line[3:])
            elif line.startswith("cfn="):
                callee = self._name(line[4:])
            elif line.startswith("calls="):
                count = int(line[6:].split()[0])
            elif line[:1].isdigit() or line[:1] in "+-*":
                fields = line.split()
                cost = int(fields[1]) if len(fields) > 1 else 0
                if count is None:
                    self.own[function] += cost
                    self.inclusive[function] += cost
                    continue
                self.calls[callee] += count
                self.callers[callee][function] += count
                if function != callee:
                    self.inclusive[function] += cost
                count = None

    def total(self):
        return sum(self.own.values())


def run(program, arguments, within=None, timeout=1800):
    """The profile of a run, and what it printed. `within`: only what a function does."""
    with tempfile.TemporaryDirectory() as folder:
        out = Path(folder) / "callgrind.out"
        command = ["valgrind", "--tool=callgrind", f"--callgrind-out-file={out}"]
        if within:
            command += ["--collect-atstart=no", f"--toggle-collect={within}"]
        result = subprocess.run(
            [*command, str(program), *arguments],
            capture_output=True,
            text=True,
            timeout=timeout,
            check=False,
            env={**os.environ, "LC_ALL": "C"},
        )
        if result.returncode:
            raise RuntimeError(f"{program} under callgrind: {result.stdout}{result.stderr}")
        return Profile(out.read_text(encoding="utf-8", errors="replace")), result.stdout
