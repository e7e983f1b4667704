#!/usr/bin/env python3
"""Folders are link rules: no file includes a header of a floor that it may not see.

usage: includes.py FLOORS

FLOORS is the file that the build writes: a line a floor, "name folder [depends] [packages]". A file
of a floor may include headers of its own floor, of the floors below it, of the packages that the
floor or one below it names, and of the standard library. Headers of this repository are included
with quotes and from its root, all others with angle brackets. Tests and examples are on no floor.
"""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
TOP_FOLDERS = ("Platform", "Controllerdb", "Fabric", "Soak", "Zorb", "Bench", "Fuzz")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
# Headers with a folder that come with the compiler. The library uses nothing else.
COMPILER_HEADERS = ("sanitizer/", "sys/", "cxxabi.h", "unistd.h", "x86intrin.h")


class Floor:
    def __init__(self, line):
        match = re.fullmatch(r"(\S+) (\S+) \[(.*)\] \[(.*)\]", line)
        if not match:
            sys.exit(f"not a floor: {line!r}")
        self.name, self.folder = match[1], match[2]
        self.depends = [name for name in match[3].split(",") if name]
        self.packages = [name for name in match[4].split(",") if name]


def visible(floor, floors):
    """The floor itself and all below it."""
    seen = {}
    waiting = [floor]
    while waiting:
        current = waiting.pop()
        if current.name not in seen:
            seen[current.name] = current
            waiting += [floors[name] for name in current.depends]
    return seen.values()


def floor_of(path, floors):
    for floor in floors.values():
        if path.startswith(floor.folder + "/"):
            return floor
    return None


def problems_of(path, floor, floors):
    seen = visible(floor, floors)
    names = {each.name for each in seen}
    packages = {package for each in seen for package in each.packages}
    text = (ROOT / path).read_text(encoding="utf-8")
    for number, line in enumerate(text.splitlines(), 1):
        match = INCLUDE.match(line)
        if not match:
            continue
        quote, header = match.groups()
        place = f"{path}:{number}: "
        if quote == '"':
            target = floor_of(header, floors)
            if target is None:
                yield place + f'"{header}" is on no floor; include from the root of the repository'
            elif target.name not in names:
                yield place + f'"{header}" is on {target.name}, which {floor.name} may not see'
            elif not (ROOT / header).is_file():
                yield place + f'"{header}" does not exist'
        elif floor_of(header, floors):
            yield place + f"<{header}> is this repository's: include it with quotes"
        elif header.startswith(COMPILER_HEADERS):
            continue
        elif "/" in header or "." in header:
            if header.split("/")[0] not in packages:
                yield place + f"<{header}> is of a package that {floor.name} does not use"


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    lines = Path(sys.argv[1]).read_text(encoding="utf-8").splitlines()
    floors = {floor.name: floor for floor in map(Floor, filter(None, lines))}
    problems = []
    files = 0
    for top in TOP_FOLDERS:
        for file in sorted((ROOT / top).rglob("*")):
            if file.suffix not in (".h", ".cpp"):
                continue
            files += 1
            path = file.relative_to(ROOT).as_posix()
            floor = floor_of(path, floors)
            if floor is None:
                problems.append(f"{path}: in a folder that is no floor of CMakeLists.txt")
            else:
                problems += problems_of(path, floor, floors)
    for problem in problems:
        print(problem)
    if problems or not files:
        sys.exit(f"{len(problems)} wrong in {files} files")
    print(f"{files} files include only what they may see")


if __name__ == "__main__":
    main()
