#!/usr/bin/env python3
"""Every canary is found: a slip that is planted in the library makes random runs fail.

usage: canaries.py BUILD [NAME...]

Copies the sources to BUILD/canaries, plants every slip of Test/canaries/ in the copy, each switched
on by its name in the environment variable ZORB_CANARY, builds the command there, and runs `zorb
soak` with one of them after the other until it fails. Without a canary it has to pass. Prints how
many runs each took. The sources themselves have no canaries, and so no release has.

A canary is a file: a line that says what slipped, then `profile:`, `file:`, and the text before and
after. The text before has to be there exactly once; PLANTED stands for "the canary is on".
"""

import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
SOURCES = ["CMakeLists.txt", "cmake", "Platform", "Controllerdb", "Fabric", "Soak", "Zorb"]
MOST_RUNS = 5000
UNPLANTED_RUNS = 200

HEADER = """#pragma once

#include <cstdlib>
#include <string_view>

inline bool canaryPlanted(std::string_view name) {
  static const char* const planted = std::getenv("ZORB_CANARY");
  return planted && name == planted;
}
"""


class Canary:
    """One slip."""

    def __init__(self, path):
        self.name = path.stem
        head, rest = path.read_text().split("\n--- before\n")
        self.before, self.after = rest.rstrip("\n").split("\n--- after\n")
        self.what, *members = head.splitlines()
        members = dict(member.split(": ", 1) for member in members)
        self.profile, self.file = members["profile"], members["file"]

    def plant(self, tree):
        """Changes the copied source."""
        path = tree / self.file
        text = path.read_text()
        if text.count(self.before) != 1:
            sys.exit(f"{self.name}: its text is in {self.file} {text.count(self.before)} times, "
                     "expected once")
        text = text.replace(self.before, self.after.replace("PLANTED",
                                                            f'canaryPlanted("{self.name}")'))
        include = '#include "Platform/Canary.h"\n'
        if include not in text:
            text = re.sub(r'^#include "', include + '#include "', text, count=1, flags=re.M)
        path.write_text(text)


def refresh(source, target):
    """Copies what differs, so that the next build compiles only that."""
    if not target.exists() or source.read_bytes() != target.read_bytes():
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(source, target)


def plant_all(canaries, place):
    """The planted copy of the sources below `place`."""
    fresh, tree = place / "fresh", place / "tree"
    shutil.rmtree(fresh, ignore_errors=True)
    for name in SOURCES:
        source = ROOT / name
        if source.is_dir():
            shutil.copytree(source, fresh / name)
        else:
            fresh.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(source, fresh / name)
    (fresh / "Platform/Canary.h").write_text(HEADER)
    for canary in canaries:
        canary.plant(fresh)
    kept = set()
    for source in fresh.rglob("*"):
        if source.is_file():
            kept.add(tree / source.relative_to(fresh))
            refresh(source, tree / source.relative_to(fresh))
    for old in list(tree.rglob("*")):
        if old.is_file() and old not in kept:
            old.unlink()
    return tree


def build(tree, place):
    """The planted command."""
    for command in (["cmake", "-S", tree, "-B", place / "build", "-G", "Ninja",
                     "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_COMPILER=g++",
                     "-DZORB_TESTS=OFF", "-DZORB_WERROR=OFF", "-DZORB_AUDIT=ON"],
                    ["cmake", "--build", place / "build", "--target", "zorb"]):
        run = subprocess.run(command, capture_output=True, text=True, check=False)
        if run.returncode != 0:
            sys.exit(run.stdout + run.stderr)
    return place / "build/bin/zorb"


def soak(zorb, canary, profile, runs):
    """The exit status, and in how many runs."""
    run = subprocess.run([zorb, "soak", "--profile", profile, "--runs", str(runs), "--jobs", "1",
                          "--seed", "1"],
                         env={**os.environ, "ZORB_CANARY": canary}, capture_output=True, text=True,
                         check=False)
    failed = re.search(r"seed (\d+), event \d+, at \S+ s, does not hold: (.*)", run.stderr)
    return run.returncode, int(failed[1]) if failed else runs, failed[2] if failed else ""


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    canaries = [Canary(path) for path in sorted((ROOT / "Test/canaries").glob("*.canary"))]
    place = Path(sys.argv[1]).resolve() / "canaries"
    zorb = build(plant_all(canaries, place), place)

    for profile in sorted({canary.profile for canary in canaries}):
        status, _, what = soak(zorb, "", profile, UNPLANTED_RUNS)
        if status != 0:
            sys.exit(f"without a canary, {profile}: {what}")
    missed = 0
    chosen = [canary for canary in canaries if not sys.argv[2:] or canary.name in sys.argv[2:]]
    for canary in chosen:
        status, runs, what = soak(zorb, canary.name, canary.profile, MOST_RUNS)
        if status != 1:
            missed += 1
            what = f"NOT FOUND, exit status {status}"
        print(f"{runs:5}  {canary.name:32} {canary.profile:14} {what[:100]}", flush=True)
    if missed or not chosen:
        sys.exit(f"{missed} of {len(chosen)} canaries were not found in {MOST_RUNS} runs")
    print(f"all {len(chosen)} canaries were found")


if __name__ == "__main__":
    main()
