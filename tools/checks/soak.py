#!/usr/bin/env python3
"""Random runs of every profile hold, and come out the same however the command is built and run.

usage: soak.py ZORB

Runs `zorb soak` of ZORB as it is, without slabs, with another order of the hash tables, with all
traces on, and as clang builds it (the preset `clang`, built if it is not there), and compares the
digests of all that came out.
"""

import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
RUNS = {"large": 6}
RUNS_OF_OTHERS = 250


def digest(zorb, profile, arguments):
    """What one series of runs printed of itself."""
    command = [zorb, "soak", "--profile", profile,
               "--runs", str(RUNS.get(profile, RUNS_OF_OTHERS)), *arguments]
    run = subprocess.run(command, capture_output=True, text=True, check=False)
    if run.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))}\n{run.stdout}{run.stderr}")
    return re.search(r"\d+ events, .* digest [0-9a-f]{16}", run.stdout).group()


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    subprocess.run([ROOT / "tools/build", "clang", "zorb"], check=True)
    zorb = sys.argv[1]
    ways = {"as it is": [zorb], "without slabs": [zorb, "--no-slabs"],
            "with another hash": [zorb, "--hash-seed", "12345"], "traced": [zorb, "--traces"],
            "by clang": [ROOT / "build/clang/bin/zorb"]}
    help_text = subprocess.run([zorb, "soak", "--help"], capture_output=True, text=True,
                               check=True).stdout
    profiles = re.findall(r"^  (\S+)", help_text.split("Profiles:")[1].split("\n\n")[0], re.M)
    differences = 0
    for profile in profiles:
        digests = {way: digest(zorb, profile, arguments)
                   for way, (zorb, *arguments) in ways.items()}
        for way, found in digests.items():
            if found != digests["as it is"]:
                print(f"{profile}, {way}: {found}, as it is: {digests['as it is']}")
                differences += 1
    if differences or not profiles:
        sys.exit(f"{differences} differences in {len(profiles)} profiles")
    print(f"{len(profiles)} profiles, the same in {len(ways)} ways")


if __name__ == "__main__":
    main()
