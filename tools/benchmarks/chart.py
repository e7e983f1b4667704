"""Draws the panels of a growth document as one SVG."""

import json
import math
from xml.sax.saxutils import escape

COLUMNS = 3
WIDTH, HEIGHT = 300, 220  # of a panel
LEFT, RIGHT, TOP, BOTTOM = 52, 16, 44, 40  # around its plot
COLOURS = ("#0b6fb8", "#c4570a", "#3a7d34")


def _nice(value):
    """The least of 1, 2, 2.5, 5 times a power of ten that is not less."""
    power = 10 ** math.floor(math.log10(value))
    for factor in (1, 2, 2.5, 5, 10):
        if factor * power >= value:
            return factor * power
    return 10 * power


def _text(x, y, content, size=11, anchor="middle", weight="normal"):
    return (
        f'<text x="{x:.1f}" y="{y:.1f}" font-size="{size}" text-anchor="{anchor}" '
        f'font-weight="{weight}">{escape(content)}</text>'
    )


def _short(value):
    return f"{value:,.0f}" if value >= 10 or value == 0 else f"{value:g}"


def _panel(panel, x, y):
    """A plot from 0 upwards over sizes on a logarithmic axis."""
    sizes = sorted({size for points in panel["series"].values() for size, _ in points})
    top = _nice(max(value for points in panel["series"].values() for _, value in points))
    left, right = x + LEFT, x + WIDTH - RIGHT
    low, high = y + HEIGHT - BOTTOM, y + TOP
    span = math.log(sizes[-1] / sizes[0]) or 1

    def across(size):
        return left + (right - left) * math.log(size / sizes[0]) / span

    def up(value):
        return low + (high - low) * value / top

    out = [_text(x + WIDTH / 2, y + 16, panel["title"], 12, weight="bold")]
    out.append(_text(left - 40, y + 34, panel["up"], 10, "start"))
    for step in range(5):
        value = top * step / 4
        out.append(
            f'<line x1="{left}" x2="{right}" y1="{up(value):.1f}" y2="{up(value):.1f}" '
            f'stroke="{"#888" if step == 0 else "#ddd"}"/>'
        )
        out.append(_text(left - 5, up(value) + 3.5, _short(value), 9, "end"))
    for size in sizes:
        out.append(_text(across(size), low + 14, f"{size:,}", 9))
    out.append(_text((left + right) / 2, low + 30, panel["across"], 10))
    for number, ((name, points), colour) in enumerate(zip(panel["series"].items(), COLOURS)):
        line = " ".join(f"{across(size):.1f},{up(value):.1f}" for size, value in points)
        out.append(f'<polyline points="{line}" fill="none" stroke="{colour}" stroke-width="2"/>')
        for size, value in points:
            out.append(
                f'<circle cx="{across(size):.1f}" cy="{up(value):.1f}" r="3" fill="{colour}"/>'
            )
        if name:
            label = _text(right, low - 8 - 13 * number, name, 10, "end")
            out.append(f'<g fill="{colour}">{label}</g>')
    return out


def draw(source, target):
    document = json.loads(source.read_text(encoding="utf-8"))
    panels = document["panels"]
    rows = -(-len(panels) // COLUMNS)
    width, height = COLUMNS * WIDTH, rows * HEIGHT + 34
    out = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
        f'viewBox="0 0 {width} {height}" font-family="sans-serif" fill="#222">',
        f'<rect width="{width}" height="{height}" fill="#fff"/>',
    ]
    for number, panel in enumerate(panels):
        out += _panel(panel, number % COLUMNS * WIDTH, number // COLUMNS * HEIGHT)
    caption = f"tools/bench growth, {document['date']}, on {document['machine']}"
    out.append(_text(width / 2, height - 12, caption, 11))
    out.append("</svg>")
    target.write_text("\n".join(out) + "\n", encoding="utf-8")
