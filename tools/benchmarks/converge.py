"""Runs of the converge workload: interleaved, beside the peers, and counted by callgrind."""

import json
import mmap
import re
import statistics
import subprocess

import callgrind

DEFAULT = {"switches": 1000, "entries": 200, "services": 10, "groups": 2}
PHASES = ("connect", "announce", "progress")


def touch(size):
    """Has the host back `size` bytes of free memory, so that no run pays for it alone."""
    area = mmap.mmap(-1, size)
    for at in range(0, size, mmap.PAGESIZE):
        area[at] = 1
    area.close()


def arguments_of(sizes):
    return [each for name, value in sizes.items() for each in (f"--{name}", str(value))]


def run(command):
    """The line of one run. Raises when its outcome is not right."""
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    if result.returncode:
        raise RuntimeError(f"{' '.join(command)}: {result.stdout}{result.stderr}")
    return json.loads(result.stdout)


def interleaved(cases, repeat, progress):
    """Lines by the name of the case. `cases`: commands by name; one pass over all a repetition."""
    lines = {name: [] for name in cases}
    for number in range(repeat):
        progress(f"converge: pass {number + 1} of {repeat}")
        for name, command in cases.items():
            touch(512 << 20)
            lines[name].append(run(command))
    digests = {line["digest"] for of_case in lines.values() for line in of_case}
    if len(digests) != 1:
        raise RuntimeError(f"the outcomes differ: {digests}")
    return lines


def spread(lines, metric):
    values = [line[metric] for line in lines]
    return min(values), statistics.median(values), max(values)


def instructions(program, arguments):
    """Instructions of a mount by phase, the first round alone; `converge` is their sum."""
    profile, out = callgrind.run(program, [*arguments, "--reconnects", "0", "--warm", "off"])
    mounts = json.loads(out)["mounts"]
    counted = {phase: _phase(profile, phase) / mounts for phase in PHASES}
    counted["converge"] = sum(counted.values())
    return counted


def instructions_of_peer(program, implementation):
    """The same of a peer, which always has a second round; both count half."""
    profile, out = callgrind.run(
        program, ["--impl", implementation, "--switches", "100", "--reconnects", "0"]
    )
    both = sum(_phase(profile, phase) for phase in PHASES)
    return both / json.loads(out)["mounts"] / 2


def _phase(profile, phase):
    function = re.compile(rf"::{phase}\(unsigned int(, \w+::State)?\)$")
    return sum(cost for name, cost in profile.inclusive.items() if function.search(name))
