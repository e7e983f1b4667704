#!/usr/bin/env python3
"""The same fabric gives the same documents, byte for byte, whenever and by whomever it is run.

usage: documents.py ZORB

Runs every fabric of examples/ and Test/fabrics/ twice by ZORB and once by the command as clang
builds it (the preset `clang`, built if it is not there), and compares the state documents and the
event streams.
"""

import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


def documents(zorb, fabric, place):
    """The state document and the events of one run."""
    place.mkdir(exist_ok=True)
    state, events = place / "state.json", place / "events.jsonl"
    run = subprocess.run([zorb, "sim", fabric, "--state", state, "--events", events],
                         capture_output=True, text=True, check=False)
    if run.returncode != 0:
        sys.exit(f"{zorb} sim {fabric}: exit status {run.returncode}\n{run.stdout}{run.stderr}")
    return {"state": state.read_bytes(), "events": events.read_bytes()}


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    subprocess.run([ROOT / "tools/build", "clang", "zorb"], check=True)
    runs = {"first run": sys.argv[1], "second run": sys.argv[1],
            "clang's run": ROOT / "build/clang/bin/zorb"}
    fabrics = sorted([*ROOT.glob("examples/*.yaml"), *ROOT.glob("Test/fabrics/*.yaml")])
    differences = 0
    events = 0
    with tempfile.TemporaryDirectory() as place:
        for fabric in fabrics:
            results = [documents(zorb, fabric, Path(place) / name.replace(" ", "-"))
                       for name, zorb in runs.items()]
            events += len(results[0]["events"])
            for name, result in zip(runs, results):
                if not result["state"]:
                    sys.exit(f"{fabric}: {name}: no state document")
                for kind, content in result.items():
                    if content != results[0][kind]:
                        print(f"{fabric.relative_to(ROOT)}: {kind} of the {name} differs")
                        differences += 1
    if events == 0:
        sys.exit("no run has written an event")
    if differences or not fabrics:
        sys.exit(f"{differences} differences in {len(fabrics)} fabrics")
    print(f"{len(fabrics)} fabrics, the same documents from three runs")


if __name__ == "__main__":
    main()
