"""The goals, and how today's figures stand to them. Most are ratios of one run on one machine."""


class Row:
    def __init__(self, what, today, limit, text):
        self.what = what
        self.today = today  # None: not measured
        self.limit = limit
        self.text = text

    def verdict(self):
        if self.today is None:
            return "-"
        return "holds" if self.today <= self.limit else "misses"

    def figure(self):
        return "-" if self.today is None else f"{self.today:.3g}"


def ratio(cases, one, other):
    if one not in cases or other not in cases:
        return None
    return cases[one] / cases[other]


def difference(cases, one, other):
    if one not in cases or other not in cases:
        return None
    return max(0.0, cases[one] - cases[other])


def micro_rows(ns, memory):
    """Rows of the parts. `ns`: least nanoseconds by suite and case; `memory`: bytes likewise."""
    suite = ns.get
    told = suite("Notification", {})
    tables = suite("Collections", {})
    slabs = suite("Kobble", {})
    traces = suite("Traces", {})
    clock = suite("Clock", {})
    pointers = suite("Ptr", {})
    cycle = told.get("unchanged/cycle")
    unchanged = difference(told, "unchanged/zorb", "unchanged/emptyLoop")
    wide = max((size for (of, _), size in memory.items() if of == "Collections"), default=None)
    resident = [
        size / int(name.split("/")[2])
        for (of, name), size in memory.items()
        if of == "Kobble" and name.startswith("churn/zorb/")
    ]
    churn = [
        cost / slabs[f"churn/mimalloc/{name.split('/')[2]}"]
        for name, cost in slabs.items()
        if name.startswith("churn/zorb/")
    ]
    off = [difference(traces, f"off/{site}", "off/emptyLoop") for site in ("zorbTrace", "zorbMessage")]
    of_wheel = "x a timer wheel"
    rows = [
        Row("notify 1", ratio(told, "notify/zorb/1", "notify/rawVirtual/1"), 1.5,
            "x a raw virtual call"),
        Row("notify 8", ratio(told, "notify/zorb/8", "notify/rawVirtual/8"), 1.35,
            "x raw virtual calls"),
        Row("make, attach, fire, destroy", told.get("life/zorb"), 8, "ns"),
        Row("  of subject and reactor", memory.get(("Notification", "life/zorb")), 64, "bytes"),
        Row("set to the same value",
            unchanged / cycle if unchanged is not None and cycle else None, 1,
            "cycles over an empty loop"),
        Row("  of 40 characters",
            ratio(told, "unchangedText/zorb", "unchangedText/compare"), 1.2, "x the compare"),
        Row("Ptr copy and drop", ratio(pointers, "copyHot/zorb", "copyHot/plainCount"), 1.1,
            "x a plain count"),
        Row("  spread over 50,000", ratio(pointers, "copySpread/zorb", "copySpread/plainCount"),
            1.1, "x a plain count"),
    ]  # fmt: skip
    for count in (10, 1000, 100000):
        pair = (f"findHit/zorbSystemId/{count}", f"findHit/abslInteger/{count}")
        rows.append(Row(f"find SystemId in {count:,}", ratio(tables, *pair), 1.2,
                        "x absl flat on integers"))  # fmt: skip
    rows.append(Row("find text in 1,000",
                    ratio(tables, "findHit/zorbText/1000", "findHit/abslText/1000"), 1.0,
                    "x absl flat"))  # fmt: skip
    for kind, peer in (("Text", "Text"), ("SystemId", "Integer")):
        for what, limit in (("insert", 0.5), ("walk", 1.2)):
            pair = (f"{what}/zorb{kind}/1000", f"{what}/absl{peer}/1000")
            rows.append(Row(f"{what} {kind} 1,000", ratio(tables, *pair), limit, "x absl flat"))
    rows += [
        Row("collections, beyond the member", wide, 16, "bytes a member"),
        Row("Kobble get and put", ratio(slabs, "getPut/zorb/64", "getPut/freeList/64"), 2,
            "x a free list"),
        Row("Kobble churn", max(churn, default=None), 1, "x mimalloc, the worst of three sizes"),
        Row("Kobble resident", max(resident, default=None), 1.02, "x the objects"),
        Row("trace off", max((each for each in off if each is not None), default=None), 0.1,
            "ns a site"),
        Row("trace on, two texts, two integers",
            ratio(traces, "record/zorb", "record/ringCopy"), 1.2,
            "x ring copy and cycle counter"),
        Row("clock: arm", ratio(clock, "arm/zorb", "arm/wheel"), 2, of_wheel),
        Row("clock: any move", ratio(clock, "move/zorb", "move/wheel"), 2, of_wheel),
        Row("clock: later move", clock.get("moveLater/zorb"), 1, "ns"),
        Row("clock: cancel", ratio(clock, "cancel/zorb", "cancel/wheel"), 2, of_wheel),
    ]  # fmt: skip
    return rows


def converge_rows(lines, count):
    """Rows of the whole. `lines`: of all runs by case; `count`: instructions of a mount by case."""

    def least(who, metric):
        return min(line[metric] for line in lines[who]) if who in lines else None

    def beside(peer, metric):
        mine, theirs = least("zorb", metric), least(peer, metric)
        return None if mine is None or not theirs else mine / theirs

    def counted(one, other):
        mine, theirs = count.get(one), count.get(other)
        return None if mine is None or not theirs else mine / theirs

    # On a busy machine some of the 20 are interrupted in almost every run.
    worst = min(
        line["reconnect_us_max"] / line["reconnect_us_median"] for line in lines["zorb"]
    )
    fast, off = least("zorb --traces fast", "ns_per_mount"), least("zorb", "ns_per_mount")
    large, small = least("zorb S=4000", "ns_per_mount"), least("zorb S=1000", "ns_per_mount")
    return [
        Row("converge", beside("signals2", "ns_per_mount"), 1 / 10, "x signals2"),
        Row("", beside("function", "ns_per_mount"), 1 / 5, "x function"),
        Row("", beside("flat", "ns_per_mount"), 8, "x flat"),
        Row("", count.get("zorb"), 1000, "instructions a mount"),
        Row("memory", least("zorb", "bytes_per_mount"), 256, "bytes a mount"),
        Row("  with initial-mount tracking", least("zorb --initial on", "bytes_per_mount"), 256,
            "bytes a mount"),
        Row("groups of 1,000 paths", counted("paths 1000", "paths 10"), 1.05,
            "x the instructions of groups of 10"),
        Row("4,000 switches", counted("S=4000", "S=1000"), 1.02,
            "x the instructions of 1,000"),
        Row("", None if large is None or not small else large / small, 1.3,
            "x the time of 1,000"),
        Row("one switch reconnects", beside("signals2", "reconnect_us_median"), 1 / 9,
            "x signals2"),
        Row("", beside("function", "reconnect_us_median"), 1 / 5.5, "x function"),
        Row("  worst of 20", worst, 3, "x the median, in the calmest run"),
        Row("every switch leaves", beside("signals2", "unmount_ns_per_mount"), 1 / 10,
            "x signals2"),
        Row("", beside("function", "unmount_ns_per_mount"), 1 / 5, "x function"),
        Row("traces off", counted("zorb", "without traces"), 1.01,
            "x the instructions without traces compiled in"),
        Row("every record on", None if fast is None or not off else fast / off, 1.35,
            "x the time with traces off"),
        Row("", counted("zorb --traces fast", "zorb"), 1.35,
            "x the instructions with traces off"),
    ]  # fmt: skip


def table(rows):
    """The rows as lines of text, and how many hold and miss."""
    width = max(len(row.what) for row in rows)
    lines = [
        f"  {row.what:<{width}}  {row.figure():>9}  <= {row.limit:<7.4g} {row.text:<44} "
        f"{row.verdict()}"
        for row in rows
    ]
    verdicts = [row.verdict() for row in rows]
    return lines, verdicts.count("holds"), verdicts.count("misses")
