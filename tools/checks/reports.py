#!/usr/bin/env python3
"""The reports that the documentation shows are what the command prints.

usage: reports.py ZORB

Each fenced block of README.md and of Doc/ that begins with "FILE.yaml at N s" is compared with what
`ZORB sim FILE.yaml --until N` prints.
"""

import difflib
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BLOCK = re.compile(r"^```\n((\S+\.yaml) at ([0-9.]+) s.*?\n)```$", re.MULTILINE | re.DOTALL)
# A reader meets these first, so that they may not go unnoticed.
SHOWN = {"README.md": {"examples/first-fabric.yaml", "examples/initial-mounts.yaml"}}


def differs(zorb, page, shown, fabric, until):
    """Whether a report differs from the one that is shown; prints how."""
    run = subprocess.run([zorb, "sim", fabric, "--until", until], cwd=ROOT, capture_output=True,
                         text=True, check=False)
    if run.returncode == 2:
        sys.exit(f"{page}: zorb sim {fabric} --until {until}: {run.stderr}")
    lines = list(difflib.unified_diff(shown.splitlines(), run.stdout.splitlines(), str(page),
                                      f"zorb sim {fabric} --until {until}", lineterm=""))
    if lines:
        print("\n".join(lines))
    return bool(lines)


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    zorb = Path(sys.argv[1]).resolve()
    reports = differences = 0
    for page in [ROOT / "README.md", *sorted(ROOT.glob("Doc/*.md"))]:
        name = str(page.relative_to(ROOT))
        blocks = BLOCK.findall(page.read_text(encoding="utf-8"))
        missing = SHOWN.get(name, set()) - {fabric for _, fabric, _ in blocks}
        if missing:
            sys.exit(f"{name} does not show the report of {', '.join(sorted(missing))}")
        reports += len(blocks)
        differences += sum(differs(zorb, name, *block) for block in blocks)
    if differences:
        sys.exit(f"{differences} of {reports} reports are shown otherwise than they are")
    print(f"{reports} reports are shown as they are")


if __name__ == "__main__":
    main()
