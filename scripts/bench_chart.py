"""The chart of the ratios: one bar a case, on a logarithmic axis that starts from 1 in both directions."""
import math
from html import escape

LABEL, WIDTH, RIGHT, BAR, STEP, GAP, TOP = 340, 540, 160, 14, 22, 26, 84
FASTER, SLOWER, FLOOR = "#2b7a9b", "#c8553d", "#8a8f98"
STYLE = """
  text { font: 12px system-ui, sans-serif; fill: #24292f }
  .title { font-size: 16px; font-weight: 600 }
  .note, .tick { fill: #6e7781 }
  .group, .value { font-weight: 600 }
  .grid { stroke: #d8dee4 } .one { stroke: #57606a; stroke-width: 1.5 }
"""
TICKS = (0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10, 20, 50, 100)


def number(value):
    if value < 0.1:
        return f"{value:.2g}"
    return f"{value:.0f}" if value >= 20 else f"{value:.1f}" if value >= 10 else f"{value:.2f}"


def axis(rows):
    """The function from a ratio to a place, and the ticks that are drawn."""
    low = min([0.9] + [row["value"] * 0.9 for row in rows])
    high = max([2.2] + [row["value"] * 1.1 for row in rows])
    scale = WIDTH / (math.log(high) - math.log(low))

    def place(value):
        return LABEL + (math.log(value) - math.log(low)) * scale

    return place, [tick for tick in TICKS if low <= tick <= high]


def bar(row, place, y):
    start, end = sorted((place(1), place(row["value"])))
    floor = row["kind"] == "floor"
    colour = FLOOR if floor else FASTER if row["value"] >= 1 else SLOWER
    suffix = "times the floor" if floor else row["peer"]
    label = f"{number(row['value'])}"
    return (f'<text x="{LABEL - 10}" y="{y + 11}" text-anchor="end">{escape(row["label"])}</text>\n'
            f'<rect x="{start:.1f}" y="{y}" width="{max(end - start, 1):.1f}" height="{BAR}" '
            f'rx="2" fill="{colour}"/>\n'
            f'<text x="{end + 6:.1f}" y="{y + 11}"><tspan class="value">{label}</tspan> '
            f'<tspan class="note">{escape(suffix)}</tspan></text>\n')


def bars(rows, place):
    """The bars under the headings of their groups, and where they end."""
    parts, y, group = [], TOP, None
    for row in rows:
        if row["group"] != group:
            group = row["group"]
            parts.append(f'<text class="group" x="20" y="{y + 17}">{escape(group)}</text>\n')
            y += GAP
        parts.append(bar(row, place, y + 2))
        y += STEP
    return parts, y


def draw(rows, machine):
    """rows: dictionaries with group, label, value, kind (peer or floor) and peer, in order."""
    place, ticks = axis(rows)
    drawn, bottom = bars(rows, place)
    width, height = LABEL + WIDTH + RIGHT, bottom + 24
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" '
             f'width="{width}" height="{height}">\n<style>{STYLE}</style>\n'
             f'<rect width="{width}" height="{height}" fill="#ffffff"/>\n'
             f'<text class="title" x="20" y="28">Speed of libzt_base over the fastest of its peers'
             f'</text>\n<text class="note" x="20" y="48">{escape(machine)}</text>\n']
    for tick in ticks:
        x = place(tick)
        parts.append(f'<line class="{"one" if tick == 1 else "grid"}" x1="{x:.1f}" y1="{TOP - 6}" '
                     f'x2="{x:.1f}" y2="{bottom}"/>\n<text class="tick" x="{x:.1f}" y="{TOP - 12}" '
                     f'text-anchor="middle">{tick:g}</text>\n')
    parts += drawn
    parts.append(f'<text class="note" x="20" y="{bottom + 16}">Right of 1: libzt_base is faster. Grey: '
                 f'time over that of the least work possible, where shorter is better.</text>\n</svg>\n')
    return "".join(parts)
