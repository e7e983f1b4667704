"""Times the command on a large fabric: everything admitted, a mount of each path from each switch."""

import os
import tempfile
import time
from pathlib import Path

LIMIT = 2 << 30  # bytes
SERVICES = 10


def document(switches, entries):
    """Switches that appear at 1 s and connect at 2 s: what comes before is reading and building."""
    lines = [
        "controller: {leader: gen-1}",
        "switches:",
        f'  "02:00:00:00:00:01": {{count: {switches}, name: "leaf{{n}}", services: {{',
        "    " + ", ".join(f"Service{number}: 1" for number in range(SERVICES)) + "}}",
        "services:",
    ]
    for service in range(SERVICES):
        lines += [f"  Service{service}:", "    mount:", "      generation: gen-1",
                  "      groups:", "        default:", "          paths:"]  # fmt: skip
        lines += [
            f'            "service{service}/item/{number:05}": {{type: "Item", flags: r}}'
            for number in range(entries // SERVICES)
        ]
    lines += [
        "events:",
        '  - {at: 2, apply: {switches: {"leaf*": {connected: true}}}}',
        "",
    ]
    return "\n".join(lines)


def _run(command):
    """Seconds, and the most resident bytes, of a run whose output goes nowhere."""
    with open(os.devnull, "wb") as nowhere:
        begin = time.monotonic()
        actions = [(os.POSIX_SPAWN_DUP2, nowhere.fileno(), 1)]
        child = os.posix_spawn(command[0], command, os.environ, file_actions=actions)
        _, status, usage = os.wait4(child, 0)
    if status:
        raise RuntimeError(f"{' '.join(command)}: exit status {os.waitstatus_to_exitcode(status)}")
    return time.monotonic() - begin, usage.ru_maxrss * 1024


def measure(program, quick, note):
    switches, entries = (400, 1000) if quick else (4000, 1000)
    with tempfile.TemporaryDirectory() as folder:
        file = Path(folder) / "fabric.yaml"
        file.write_text(document(switches, entries), encoding="utf-8")
        command = [str(program), "sim", str(file), "--until"]
        note("sim: until nothing is connected yet")
        parsed, _ = _run([*command, "1", "--quiet"])
        note("sim: converged, no report")
        quiet, _ = _run([*command, "20", "--quiet"])
        note("sim: converged, with the report")
        reported, resident = _run([*command, "20"])
    report = max(0.0, reported - quiet)
    converged = quiet - parsed
    beside = "less" if parsed + report < converged else "more"
    within = "holds" if resident <= LIMIT else "misses"
    return (
        f"\nzorb sim, {switches:,} switches x {entries:,} entries, {switches * entries:,} mounts:\n"
        f"  reading {parsed:.2f} s, convergence {converged:.2f} s, report {report:.2f} s: "
        f"reading and report take {beside} than the convergence\n"
        f"  {resident / 2**20:,.0f} MiB resident at most, goal 2,048: {within}"
    )
