#!/usr/bin/env python3
"""The converge workload comes out as it must: the digest of all status leaves is the stored one.

usage: converge.py PROGRAM

The digests are those of independent implementations of the workload, which share no code with the
library, at the same sizes. With the initial-mount tracking and with traces it must be the same.
"""

import json
import subprocess
import sys

# Switches, entries, services, groups; mounts, and the digest over them.
OUTCOMES = {
    (100, 200, 10, 2): (15200, "37d36b8a91cb0e4a"),
    (64, 333, 7, 3): (16010, "98b8e3bf83baa381"),
    (37, 50, 3, 1): (1414, "964d8369a319969d"),
    (20, 400, 2, 1): (6200, "92f47915312c6436"),
    (16, 60, 30, 2): (900, "0dc7b4511d074711"),
}
VARIANTS = ((), ("--initial", "on"), ("--traces", "fast"), ("--traces", "text"), ("--events", "on"))


def problem(program, sizes, expected, variant):
    switches, entries, services, groups = map(str, sizes)
    command = [program, "--switches", switches, "--entries", entries, "--services", services,
               "--groups", groups, "--reconnects", "3", *variant]  # fmt: skip
    run = subprocess.run(command, capture_output=True, text=True, check=False)
    if run.returncode:
        return f"{' '.join(command)}: exit status {run.returncode}\n{run.stdout}{run.stderr}"
    line = json.loads(run.stdout)
    outcome = (line["mounts"], line["digest"])
    if outcome != expected:
        return f"{' '.join(command)}: {outcome}, expected {expected}"
    return None


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    smallest = min(OUTCOMES)
    problems = []
    for sizes, expected in OUTCOMES.items():
        for variant in VARIANTS if sizes == smallest else VARIANTS[:2]:
            problems.append(problem(sys.argv[1], sizes, expected, variant))
    problems = [each for each in problems if each]
    for each in problems:
        print(each)
    if problems:
        sys.exit(1)
    print(f"{len(OUTCOMES)} sizes come out as they must")


if __name__ == "__main__":
    main()
