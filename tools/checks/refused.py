#!/usr/bin/env python3
"""A document that is wrong must be refused at the right place.

usage: refused.py ZORB SECONDS FILE

The first line of FILE is `# error: LINE:COLUMN: text`. `ZORB sim FILE` must take no more than
SECONDS of the processor's time and end with exit status 2, nothing on standard output, and
`FILE:LINE:COLUMN: ` followed by a message with that text on standard error.
"""

import re
import resource
import subprocess
import sys


def refusal(zorb, seconds, file):
    """What `ZORB sim FILE` says on standard error. Anything but a clean refusal ends the check."""
    try:
        run = subprocess.run([zorb, "sim", file], capture_output=True, timeout=50, check=False)
    except subprocess.TimeoutExpired:
        sys.exit(f"{file}: does not end")
    errors = run.stderr.decode("utf-8", "replace")
    if run.returncode != 2:
        sys.exit(f"{file}: exit status {run.returncode}, expected 2\n{errors}")
    if run.stdout:
        sys.exit(f"{file}: something on standard output")
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    if usage.ru_utime + usage.ru_stime > seconds:
        sys.exit(f"{file}: took {usage.ru_utime + usage.ru_stime:.2f} s, more than {seconds} s")
    return errors


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    zorb, seconds, file = sys.argv[1], float(sys.argv[2]), sys.argv[3]
    with open(file, "rb") as document:
        first = document.readline().decode("utf-8", "replace").rstrip()
    match = re.match(r"# error: (\d+:\d+): (.+)$", first)
    if not match:
        sys.exit(f"{file}: the first line must be `# error: LINE:COLUMN: text`")
    start = f"{file}:{match[1]}: "
    errors = refusal(zorb, seconds, file)
    print(errors, end="")
    if not any(line.startswith(start) and match[2] in line[len(start):]
               for line in errors.splitlines()):
        sys.exit(f"expected {start}...{match[2]}...")


if __name__ == "__main__":
    main()
