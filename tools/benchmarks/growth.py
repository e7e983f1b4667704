"""Measures the whole at growing sizes and keeps the figures, from which the chart is drawn."""

import datetime
import json
import platform
from pathlib import Path

import converge

SWITCHES = (100, 1000, 4000)
# Services and groups; the same switches, entries and mounts, but groups of 10, 100, 1,000 paths.
PATHS = {10: (10, 20), 100: (10, 2), 1000: (2, 1)}
SERVICES = (1, 3, 10, 30, 100)
EVENTS = (100, 300, 1000)


def machine():
    model = platform.processor() or platform.machine()
    for line in Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines():
        if line.startswith("model name"):
            model = line.split(":", 1)[1].strip()
            break
    processors = Path("/proc/cpuinfo").read_text(encoding="utf-8").count("processor\t")
    return f"{model}, {processors} processors, Linux {platform.release()}"


def _least(program, cases, repeat, note, what):
    """By size the line whose every figure is the least of the repetitions."""
    least = {}
    for number in range(repeat):
        for size, arguments in cases.items():
            note(f"growth: {what} {size}, pass {number + 1} of {repeat}")
            converge.touch(1 << 30)
            line = converge.run([str(program), *arguments])
            known = least.setdefault(size, line)
            for name, value in line.items():
                if isinstance(value, float):
                    known[name] = min(known[name], value)
    return least


def _series(lines, metric, scale=1.0):
    return [[size, round(line[metric] * scale, 3)] for size, line in lines.items()]


def measure(program, file, quick, note):
    """Writes the figures to the file; the least of some repetitions, instructions of one run."""
    repeat = 1 if quick else 5
    switches = {
        size: ["--switches", str(size), "--reconnects", "5"] for size in SWITCHES
    }
    paths = {
        size: ["--switches", "100", "--entries", "2000", "--services", str(services), "--groups",
               str(groups), "--reconnects", "5"]
        for size, (services, groups) in PATHS.items()
    }  # fmt: skip
    services = {
        size: ["--services", str(size), "--groups", "1", "--reconnects", "5"] for size in SERVICES
    }
    events = {
        size: ["--switches", str(size), "--events", "on", "--warm", "off", "--reconnects", "0"]
        for size in EVENTS
    }
    by_switches = _least(program, switches, repeat, note, "switches")
    by_paths = _least(program, paths, repeat, note, "paths a group")
    by_services = _least(program, services, repeat, note, "services")
    by_events = _least(program, events, 1 if quick else 2, note, "events, switches")
    counted = {"switches": {}, "paths": {}, "services": {}}
    for size in SWITCHES[: 1 if quick else None]:
        note(f"growth: instructions, switches {size}")
        counted["switches"][size] = converge.instructions(program, ["--switches", str(size)])
    for size, (of_services, groups) in PATHS.items():
        note(f"growth: instructions, paths {size}")
        arguments = ["--switches", "20", "--entries", "2000", "--services", str(of_services),
                     "--groups", str(groups)]  # fmt: skip
        counted["paths"][size] = converge.instructions(program, arguments)
    for size in SERVICES:
        note(f"growth: instructions, services {size}")
        arguments = ["--switches", "100", "--services", str(size), "--groups", "1"]
        counted["services"][size] = converge.instructions(program, arguments)

    def instructions(what):
        return [[size, round(each["converge"])] for size, each in counted[what].items()]

    whole_fleet = [
        [size, round(line["unmount_ns_per_mount"] + line["warm_ns_per_mount"], 1)]
        for size, line in by_switches.items()
    ]
    per_switch = [[size, line["filter_edit_us"] / size] for size, line in by_events.items()]
    per_mount = [
        [size, line["leader_change_us"] * 1e3 / line["mounts"]] for size, line in by_events.items()
    ]
    panels = [
        _panel("Converge", "switches", "ns a mount", {
            "into fresh memory": _series(by_switches, "ns_per_mount"),
            "again": _series(by_switches, "warm_ns_per_mount"),
        }),
        _panel("Converge", "switches", "instructions a mount", {"": instructions("switches")}),
        _panel("Memory", "switches", "bytes a mount", {
            "": _series(by_switches, "bytes_per_mount"),
        }),
        _panel("The whole fleet goes and comes back", "switches", "ns a mount", {"": whole_fleet}),
        _panel("One switch goes and comes back", "switches", "us", {
            "": _series(by_switches, "reconnect_us_median"),
        }),
        _panel("Groups", "paths a group", "instructions a mount", {"": instructions("paths")}),
        _panel("Groups", "paths a group", "ns a mount", {"": _series(by_paths, "ns_per_mount")}),
        _panel("Services", "services", "instructions a mount", {"": instructions("services")}),
        _panel("Services", "services", "ns a mount", {
            "": _series(by_services, "ns_per_mount"),
        }),
        _panel("A filter is emptied and filled again", "switches", "us a switch", {
            "": per_switch,
        }),
        _panel("The leader changes, and back", "switches", "ns a mount", {"": per_mount}),
    ]  # fmt: skip
    today = datetime.date.today().isoformat()
    document = {"machine": machine(), "date": today, "panels": panels}
    file.write_text(json.dumps(document, indent=1) + "\n", encoding="utf-8")


def _panel(title, across, up, series):
    return {"title": title, "across": across, "up": up, "series": series}
