#!/usr/bin/env python3
"""Each assertion of the library is reached by a test, which names its text.

usage: assertions.py

Those that nothing can reach are named here, with the reason. A text of one word could be part of anything; of such a one a test says "assertion failed: TEXT".
"""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
LITERAL = re.compile(r'"((?:[^"\\]|\\.)*)"')
# What the compiler joins to one text.
LITERALS = re.compile(r'"(?:[^"\\]|\\.)*"(?:\s*"(?:[^"\\]|\\.)*")*')
ASSERTION = re.compile(r"\bassertThat\(")

# Text: why no test can reach it.
UNREACHABLE = {
    "refCount > 1": "states what the two cases above it in the function leave",
}


def unescaped(text):
    return re.sub(r"\\(.)", r"\1", text)


def joined(literals):
    return unescaped("".join(match[1] for match in LITERAL.finditer(literals)))


def arguments(source, at):
    """What stands between the parenthesis before `at` and the one that closes it."""
    depth, begin = 1, at
    while depth:
        literal = LITERAL.match(source, at)
        if literal:
            at = literal.end()
            continue
        depth += {"(": 1, ")": -1}.get(source[at], 0)
        at += 1
    return source[begin:at - 1]


def assertions():
    """Place and text of each assertion."""
    for folder in ("Platform", "Controllerdb"):
        for file in sorted((ROOT / folder).rglob("*")):
            if file.suffix not in (".h", ".cpp") or file.stem == "Assert":
                continue
            source = file.read_text(encoding="utf-8")
            for match in ASSERTION.finditer(source):
                texts = LITERALS.findall(arguments(source, match.end()))
                line = source.count("\n", 0, match.start()) + 1
                place = f"{file.relative_to(ROOT)}:{line}"
                if not texts:
                    sys.exit(f"{place}: an assertion without a text")
                yield place, joined(texts[-1])


def test_texts():
    """All texts of the tests, also as the patterns for which they stand."""
    texts = set()
    for file in (ROOT / "Test").rglob("*.cpp"):
        for match in LITERALS.finditer(file.read_text(encoding="utf-8")):
            text = joined(match[0])
            texts |= {text, unescaped(text)}
    return texts


def is_named(text, texts):
    wanted = text if re.search(r"\W", text) else f"assertion failed: {text}"
    return any(wanted in each for each in texts)


def main():
    texts = test_texts()
    count = 0
    missing = []
    unreachable = set()
    for place, text in assertions():
        count += 1
        if text in UNREACHABLE:
            unreachable.add(text)
        elif not is_named(text, texts):
            missing.append(f"{place}: no test reaches the assertion {text!r}")
    missing += [f"there is no assertion {text!r}" for text in UNREACHABLE.keys() - unreachable]
    for problem in missing:
        print(problem)
    if missing or not count:
        sys.exit(f"{len(missing)} of {count} assertions without a test")
    print(f"{count - len(unreachable)} of {count} assertions have a test, "
          f"{len(unreachable)} cannot have one")


if __name__ == "__main__":
    main()
