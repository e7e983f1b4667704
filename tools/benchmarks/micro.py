"""Runs the micro suites and tells the least cost of one item of each case."""

import json
import statistics
import subprocess
import tempfile
from pathlib import Path

SUITES = ("Notification", "Ptr", "String", "Collections", "Kobble", "Traces", "Clock")


class Case:
    def __init__(self):
        self.nanoseconds = []
        self.bytes = None


def _names(program):
    """Of all cases, in the order in which the suite has them."""
    listed = subprocess.run(
        [program, "--benchmark_list_tests=true"], capture_output=True, text=True, check=True
    )
    return [line.replace("/manual_time", "") for line in listed.stdout.split()]


def run(folder, suite, repeat, seconds):
    """Cases of a suite by name. They run interleaved, in an order that differs from run to run."""
    program = str(folder / f"Bench{suite}")
    cases = {name: Case() for name in _names(program)}
    with tempfile.TemporaryDirectory() as out:
        file = Path(out) / "out.json"
        subprocess.run(
            [
                program,
                f"--benchmark_repetitions={repeat}",
                f"--benchmark_min_time={seconds}",
                "--benchmark_enable_random_interleaving=true",
                f"--benchmark_out={file}",
                "--benchmark_out_format=json",
            ],
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
            check=True,
        )
        report = json.loads(file.read_text(encoding="utf-8"))
    for line in report["benchmarks"]:
        if line["run_type"] != "iteration":
            continue
        if line.get("error_occurred"):
            raise RuntimeError(f"{suite}: {line['name']}: {line['error_message']}")
        case = cases[line["run_name"].replace("/manual_time", "")]
        case.nanoseconds.append(1e9 / line["items_per_second"])
        case.bytes = line.get("bytes")
    return cases


def spread(case):
    values = case.nanoseconds
    return min(values), statistics.median(values), max(values)


def least(cases):
    """The least nanoseconds of an item by case."""
    return {name: min(case.nanoseconds) for name, case in cases.items()}
