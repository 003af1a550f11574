# The drawings of scripts/report.py: lines over time as SVG that the browser stretches to any width, with
# the texts of the axes as HTML beside it, so that they keep their size.
import math
from html import escape

WIDTH = HEIGHT = 1000  # of every drawing, whatever its size on the page
HIT_COLUMNS = 160      # columns of a drawing that show a tooltip
FEW = 80               # up to so many points each one gets a dot


# Round values from at most low to at least high, about count of them.
def ticks(low, high, count, whole=False):
    raw = max(high - low, 1e-9) / count
    power = 10.0 ** math.floor(math.log10(raw))
    step = next(power * m for m in (1, 2, 5, 10) if power * m >= raw * 0.999)
    if whole:
        step = max(1, math.ceil(step))
    return [step * i for i in range(math.floor(low / step + 1e-9), math.ceil(high / step - 1e-9) + 1)]


class Axis:
    def __init__(self, low, high):
        self.low, self.span = low, (high - low) or 1

    def __call__(self, value):  # 0 to 1000
        return round((value - self.low) / self.span * WIDTH, 1)


# Indices to draw: all, or the smallest and the largest value of each column of the drawing.
def thin(xs, ys, axis):
    if len(xs) <= 2 * WIDTH:
        return range(len(xs))
    columns = {}
    for i, x in enumerate(xs):
        columns.setdefault(int(axis(x)), []).append(i)
    kept = set()
    for column in columns.values():
        kept |= {min(column, key=ys.__getitem__), max(column, key=ys.__getitem__)}
    return sorted(kept | {0, len(xs) - 1})


def line_of(xs, ys, x_axis, y_axis, style, steps=False):
    points = [(x_axis(xs[i]), round(HEIGHT - y_axis(ys[i]), 1)) for i in thin(xs, ys, x_axis)]
    path = f"M{points[0][0]} {points[0][1]}" + "".join(
        f"H{x}V{y}" if steps else f"L{x} {y}" for x, y in points[1:])
    drawn = f'<path class="line {style}" d="{path}{f"H{WIDTH}" if steps else ""}"/>'
    if len(points) <= (2 if steps else FEW):
        drawn += f'<path class="dot {style}" d="{"".join(f"M{x} {y}h0" for x, y in points)}"/>'
    return drawn


# Invisible columns with a tooltip for the samples from first to last.
def hit_columns(xs, axis, tip):
    bins = {}
    for i, x in enumerate(xs):
        bins.setdefault(min(int(axis(x) * HIT_COLUMNS / WIDTH), HIT_COLUMNS - 1), []).append(i)
    width = WIDTH / HIT_COLUMNS
    return "".join(f'<rect class="hit" x="{n * width:g}" y="0" width="{width:g}" height="{HEIGHT}">'
                   f"<title>{escape(tip(found[0], found[-1]))}</title></rect>" for n, found in bins.items())


# Stretches of time as columns of the drawing, those that touch there joined.
def band_rects(bands, axis):
    joined = []
    for start, end in bands:
        left, right = axis(start / 1e6), axis(end / 1e6)
        if joined and left - joined[-1][1] < 1:
            joined[-1][1] = max(right, joined[-1][1])
        else:
            joined.append([left, right])
    return '<g class="bands">' + "".join(
        f'<rect x="{left}" y="0" width="{max(right - left, 1.5):g}" height="{HEIGHT}"/>' for left, right in joined) + "</g>"


# One drawing. lines: (name, style, values, steps); marks: values, horizontal; bands: (from, to) of time.
def plot(xs, lines, unit, tip, end, height=210, marks=(), bands=(), from_zero=True, x_labels=True):
    if not xs:
        return '<p class="empty">nothing was recorded</p>'
    values = [v for _, _, ys, _ in lines for v in ys] + list(marks)
    low, high = min(values), max(values)
    if from_zero or low < 0.4 * high:
        low = min(low, 0)
    if high == low:
        low, high = (low - 1, high + 1) if low else (0, 1)
    y_ticks = ticks(low, high, 4 if height > 150 else 2, whole=not unit)
    x_axis, y_axis = Axis(0, max(end, max(xs)) / 1e6), Axis(y_ticks[0], y_ticks[-1])
    x_ticks = [t for t in ticks(0, x_axis.span, 6) if 0 <= t <= x_axis.span * 1.0001]
    xs = [x / 1e6 for x in xs]
    out = [band_rects(bands, x_axis)]
    out += [f'<path class="grid" d="M0 {HEIGHT - y_axis(t)}H{WIDTH}"/>' for t in y_ticks]
    out += [line_of(xs, ys, x_axis, y_axis, style, steps) for _, style, ys, steps in reversed(lines)]
    out += [f'<path class="mark" d="M0 {HEIGHT - y_axis(v)}H{WIDTH}"/>' for v in marks]
    out.append(hit_columns(xs, x_axis, tip))
    labels = [f'<span class="y" style="top:{100 - y_axis(t) / 10:g}%">{t:.9g}{unit}</span>' for t in y_ticks]
    if x_labels:
        labels += [f'<span class="x" style="left:{x_axis(t) / 10:g}%">{t:.9g} s</span>' for t in x_ticks]
    name = escape(", ".join(name for name, _, _, _ in lines))
    return (f'<div class="plot{"" if x_labels else " bare"}" style="height:{height}px">'
            f'<svg viewBox="0 0 {WIDTH} {HEIGHT}" preserveAspectRatio="none" role="img" aria-label="{name} over time">'
            f'{"".join(out)}</svg>{"".join(labels)}</div>')


def legend(*entries):
    return '<ul class="legend">' + "".join(
        f'<li><i class="{style}"></i>{escape(text)}</li>' for style, text in entries) + "</ul>"
