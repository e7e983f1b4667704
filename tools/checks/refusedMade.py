#!/usr/bin/env python3
"""Documents that must be refused and that are made here, because no repository can hold them.

usage: refusedMade.py ZORB SECONDS

Each must be refused as refused.py says, with a message that begins `FILE:LINE:COLUMN: `.
"""

import re
import resource
import sys
import tempfile
from pathlib import Path

from refused import refusal

HUGE = 100_000_000  # bytes


def alias_bomb():
    """Nine lists, each of nine times the one before: 9^9 nodes when they are expanded."""
    lines = ["a0: &a0 [x, x, x, x, x, x, x, x, x]"]
    for level in range(1, 9):
        lines.append(f"a{level}: &a{level} [" + ", ".join([f"*a{level - 1}"] * 9) + "]")
    return ("\n".join(lines) + "\nswitches: *a8\n").encode()


DOCUMENTS = {
    "empty": lambda: b"",
    "blanks": lambda: b"\n  \n\n",
    "zero-byte": lambda: b"controller:\n  leader: \"gen\x00\"\n",
    "not-utf-8": lambda: b"controller: {leader: \"\xff\xfe\xc0\"}\n",
    "brackets": lambda: b"[" * HUGE,
    "braces": lambda: b"{a: " * (HUGE // 4),
    "dashes": lambda: b"- " * (HUGE // 2),
    "deep-events": lambda: b"events: " + b"[" * 100_000 + b"]" * 100_000,
    "alias-bomb": alias_bomb,
    "two-documents": lambda: b"controller: {}\n---\ncontroller: {}\n",
}


def processor_time():
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    zorb, seconds = sys.argv[1], float(sys.argv[2])
    with tempfile.TemporaryDirectory() as place:
        files = []
        for name, content in DOCUMENTS.items():
            file = Path(place) / f"{name}.yaml"
            file.write_bytes(content())
            files.append(file)
        files += [Path(place) / "missing.yaml", Path(place)]
        for file in files:
            before = processor_time()
            errors = refusal(zorb, before + seconds, str(file))
            print(f"{processor_time() - before:6.2f} s  {errors[:200].rstrip()}")
            if not re.match(re.escape(str(file)) + r":\d+:\d+: .", errors):
                sys.exit(f"{file}: expected FILE:LINE:COLUMN: and a message")


if __name__ == "__main__":
    main()
