#!/usr/bin/env python3
# Makes one self-contained page from the report of the camera example:
#   scripts/report.py REPORT.json PAGE.html
# The page refers to nothing outside itself. A malformed report gives one line on the standard error
# output, exit status 1 and no page.
import base64
import json
import struct
import sys
import zlib
from html import escape
from pathlib import Path

sys.dont_write_bytecode = True  # the checkout stays clean
from report_plot import legend, plot

NUMBERS = [int]
CLIENT = {"name": str, "sent": int, "refused": int, "results": int, "notices": int}
SHAPE = {
    "program": {"name": str, "library": str, "ended_by": str, "run_ms": int},
    "configuration": {"source": str, "fourcc": str, "width": int, "height": int, "frame_rate": int,
                      "frame_size": int, "queue_depth": int, "watchdog_ms": int, "encoder_delay_ms": int},
    "frames": {"produced": int, "dropped": int, "encoded": int, "bytes_encoded": int},
    "digests": {"md5": str, "crc32": str},
    "timing": {"delta_us": int, "jitter_us": int, "largest_interval_us": int, "largest_jitter_us": int,
               "discontinuities": int},
    "series": {"frame": NUMBERS, "time_us": NUMBERS, "interval_us": NUMBERS, "jitter_us": NUMBERS,
               "queue_depth": NUMBERS, "largest_interval_us": NUMBERS, "crc32": NUMBERS},
    "ptz": {"sent": int, "refused": int, "results": int, "notices": int, "unanswered": int,
            "clients": [CLIENT],
            "track": {"time_us": NUMBERS, "pan": NUMBERS, "tilt": NUMBERS, "zoom": NUMBERS}},
    "notifications": {"frame": int, "drop": int, "config": int, "polled": int, "called_back": int},
    "watchdog": {"feeds": int, "expired": str},
    "info_frames": dict,
    "thumbnail": {"width": int, "height": int, "format": str, "pixels": str},
}


class Malformed(Exception):
    pass


# ---- reading ---------------------------------------------------------------------------------------

def check_shape(value, shape, path):
    if isinstance(shape, dict):
        check_shape(value, dict, path)
        for key, inner in shape.items():
            if key not in value:
                raise Malformed(f"{path}{key} is missing")
            check_shape(value[key], inner, f"{path}{key}.")
    elif isinstance(shape, list):
        check_shape(value, list, path)
        for i, item in enumerate(value):
            check_shape(item, shape[0], f"{path}{i}.")
    elif type(value) is not shape or (shape is int and abs(value) >= 1 << 64):
        kind = {int: "a whole number of 64 bits", str: "a text", list: "a list", dict: "an object"}[shape]
        raise Malformed(f"{path.rstrip('.') or 'the report'} is not {kind}")


def load(path):
    try:
        report = json.loads(Path(path).read_text(encoding="utf-8"))
    except OSError as error:
        raise Malformed(error.strerror) from error
    except (ValueError, RecursionError) as error:
        raise Malformed(f"no JSON: {error}") from error
    check_shape(report, SHAPE, "")
    for name, table in (("series", report["series"]), ("ptz.track", report["ptz"]["track"])):
        if len({len(column) for column in table.values() if isinstance(column, list)}) > 1:
            raise Malformed(f"the lists of {name} differ in length")
    for name, text in report["info_frames"].items():
        try:
            report["info_frames"][name] = bytes.fromhex(text)
        except (TypeError, ValueError) as error:
            raise Malformed(f"info_frames.{name} is not hexadecimal") from error
    picture = report["thumbnail"]
    try:
        picture["pixels"] = base64.b64decode(picture["pixels"], validate=True)
    except ValueError as error:
        raise Malformed("thumbnail.pixels is not base64") from error
    if min(picture["width"], picture["height"]) < 0 or picture["format"] != "gray8" or \
            len(picture["pixels"]) != picture["width"] * picture["height"]:
        raise Malformed("thumbnail: the pixels do not match the size and format")
    return report


# ---- small pieces ----------------------------------------------------------------------------------

def grouped(number):
    return f"{number:,}".replace(",", "\u202f")


def in_ms(us):
    return f"{us / 1000:.{0 if abs(us) >= 1e6 else 1 if abs(us) >= 1e4 else 2}f} ms"


def in_bytes(number):
    for unit in ("bytes", "KiB", "MiB"):
        if number < 1024:
            break
        number /= 1024
    else:
        unit = "GiB"
    return f"{number:.0f} {unit}" if unit == "bytes" else f"{number:.1f} {unit}"


def card(title, body, note="", kind=""):
    note = f'<p class="note">{escape(note)}</p>' if note else ""
    return f'<section class="card {kind}"><h2>{escape(title)}</h2>{note}{body}</section>'


def pairs(rows):
    return "<dl>" + "".join(f"<div><dt>{escape(str(name))}</dt><dd>{escape(str(value))}</dd></div>"
                            for name, value in rows) + "</dl>"


def table(head, rows, total=None):
    def row(cells, tag="td"):
        return "<tr>" + "".join(f"<{tag}>{escape(str(cell))}</{tag}>" for cell in cells) + "</tr>"
    foot = f"<tfoot>{row(total)}</tfoot>" if total else ""
    if not rows:
        return '<p class="empty">none</p>'
    return (f'<div class="scroll"><table><thead>{row(head, "th")}</thead><tbody>'
            f'{"".join(row(cells) for cells in rows)}</tbody>{foot}</table></div>')


# A PNG of 8-bit grey: signature, header, one stream of rows with filter byte 0, end.
def png(width, height, pixels):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    rows = b"".join(b"\0" + pixels[y * width:(y + 1) * width] for y in range(height))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b""))


# ---- the sections ----------------------------------------------------------------------------------

# What must hold after a run, as (text, holds).
def accounts(report):
    frames, ptz = report["frames"], report["ptz"]
    whole, recorded = frames["produced"] == frames["encoded"] + frames["dropped"], len(report["series"]["frame"])
    answered = ptz["sent"] == ptz["results"] + ptz["refused"] + ptz["unanswered"]
    sums = all(sum(c[k] for c in ptz["clients"]) == ptz[k] for k in ("sent", "refused", "results", "notices"))
    expired = report["watchdog"]["expired"]
    return [
        (f'frames: {grouped(frames["produced"])} produced {"=" if whole else "≠"} {grouped(frames["encoded"])} '
         f'encoded + {grouped(frames["dropped"])} dropped', whole),
        (f'PTZ: {grouped(ptz["sent"])} sent {"=" if answered else "≠"} {grouped(ptz["results"])} results + '
         f'{grouped(ptz["refused"])} refused + {grouped(ptz["unanswered"])} unanswered',
         answered and ptz["unanswered"] == 0),
        (f"recorded one by one: {grouped(recorded)}", recorded == frames["encoded"]),
        (f"the clients' PTZ counts {'' if sums else 'do not '}add up", sums),
        (f'watchdog: "{expired}" stopped keeping alive' if expired else "every thread kept alive", not expired),
    ]


def header(report):
    program, checks = report["program"], accounts(report)
    good = all(holds for _, holds in checks)
    ended = {"timer": "ended by its timer", "signal": "ended by a signal",
             "watchdog": "ended by the watchdog"}.get(program["ended_by"], "ended by " + program["ended_by"])
    word = "not accounted for" if not all(holds for _, holds in checks[:-1]) else "a thread hung"
    word = "all accounted for" if good else word
    items = "".join(f'<li class="{"good" if holds else "bad"}">{escape(text)}</li>' for text, holds in checks)
    return (f'<header><div><h1>{escape(program["name"])}</h1><p class="note">{escape(program["library"])} · ran '
            f'{program["run_ms"] / 1000:g} s · {escape(ended)}</p></div>'
            f'<p class="outcome {"good" if good else "bad"}">{word}</p></header><ul class="checks">{items}</ul>')


def tiles(report):
    frames, timing, ptz = report["frames"], report["timing"], report["ptz"]
    seconds = max(report["program"]["run_ms"], 1) / 1000
    share = 100 * frames["dropped"] / max(frames["produced"], 1)
    rows = [
        ("Frames encoded", grouped(frames["encoded"]), f'{frames["encoded"] / seconds:.1f} a second'),
        ("Frames dropped", grouped(frames["dropped"]), f'{share:.1f} % of {grouped(frames["produced"])}'),
        ("Data encoded", in_bytes(frames["bytes_encoded"]), f'{in_bytes(frames["bytes_encoded"] / seconds)} a second'),
        ("Largest interval", in_ms(timing["largest_interval_us"]), f'configured: {in_ms(frame_interval(report))}'),
        ("Largest jitter", in_ms(timing["largest_jitter_us"]), f'{timing["discontinuities"]} discontinuities'),
        ("PTZ commands", grouped(ptz["sent"]), f'{grouped(ptz["results"])} results, {grouped(ptz["refused"])} refused'),
    ]
    return '<div class="tiles">' + "".join(
        f'<div class="card"><h3>{name}</h3><p class="figure">{value}</p><p class="note">{note}</p></div>'
        for name, value, note in rows) + "</div>"


def frame_interval(report):
    return 1e6 / max(report["configuration"]["frame_rate"], 1)


# The stretches of time in which frames are missing from the sequence, and how many are missing.
def gaps(series):
    found, count = [], 0
    for i in range(1, len(series["frame"])):
        missing = series["frame"][i] - series["frame"][i - 1] - 1
        if missing <= 0:
            continue
        count += missing
        found.append((series["time_us"][i - 1], series["time_us"][i]))
    return found, count


def frame_charts(report):
    series, end = report["series"], report["program"]["run_ms"] * 1000
    depth = report["configuration"]["queue_depth"]

    def tip(column, show, skipped=0):
        def text(first, last):
            first, last = first + skipped, last + skipped
            part = series[column][first:last + 1]
            frame = str(series["frame"][first]) + (f' to {series["frame"][last]}' if last > first else "")
            value = show(min(part)) + (f" to {show(max(part))}" if max(part) > min(part) else "")
            return f'frame {frame}, {series["time_us"][first] / 1e6:.2f} s: {value}'
        return text

    def ms(column):
        return [us / 1000 for us in series[column]]
    times, (holes, missing) = series["time_us"], gaps(series)
    interval, first = frame_interval(report) / 1000, 1 if series["interval_us"][:1] == [0] else 0
    return [
        card("Frame interval", legend(("one", "interval"), ("two", "largest of the last second"),
                                      ("mark", f"configured, {interval:.4g} ms")) +
             plot(times[first:], [("frame interval", "one", ms("interval_us")[first:], False),
                                  ("largest of the last second", "two", ms("largest_interval_us")[first:], True)],
                  " ms", tip("interval_us", in_ms, first), end, marks=[interval], from_zero=False),
             "from one encoded frame to the next"),
        card("Queue depth", legend(("one", "frames waiting"), ("mark", f"configured, {depth}"),
                                   ("band", f"frames missing from the sequence: {grouped(missing)}")) +
             plot(times, [("queue depth", "one", series["queue_depth"], True)], "",
                  tip("queue_depth", str), end, marks=[depth], bands=holes),
             "frames between capture and encoder, when the encoder takes one"),
        card("Jitter", plot(times, [("jitter", "one", ms("jitter_us"), False)], " ms", tip("jitter_us", in_ms), end),
             "how far a frame lies behind the best one of the recent past"),
    ]


def ptz_cards(report):
    ptz, end = report["ptz"], report["program"]["run_ms"] * 1000
    track, axes = ptz["track"], (("pan", "one", "°"), ("tilt", "two", "°"), ("zoom", "three", "×"))

    def tip(axis, unit):
        return lambda _, last: f'{axis} {track[axis][last] / 100:g}{unit} at {track["time_us"][last] / 1e6:.2f} s'
    drawn = "".join(f"<h3>{axis}</h3>" + plot(track["time_us"], [(axis, style, [v / 100 for v in track[axis]], True)],
                                              unit, tip(axis, unit), end, height=92, from_zero=False,
                                              x_labels=axis == "zoom")
                    for axis, style, unit in axes) if track["time_us"] else '<p class="empty">no command was carried out</p>'
    keys = ("sent", "refused", "results", "notices")
    counts = table(("client", *keys), [(c["name"], *(grouped(c[k]) for k in keys)) for c in ptz["clients"]],
                   ("all", *(grouped(ptz[k]) for k in keys)))
    return [card("PTZ track", drawn), card("PTZ commands", counts)]


def info_frames(report):
    out = []
    for name, data in report["info_frames"].items():
        groups = "".join(f'<b class="{"head" if i < 3 else "sum" if i == 3 else ""}">{byte:02x}</b>'
                         for i, byte in enumerate(data))
        note = f"{len(data)} bytes"
        if len(data) > 3 and 0x80 < data[0] <= 0x87:  # these carry a checksum: all bytes add up to 0
            size = min(data[2] + 4, len(data))
            note += f", checksum {'right' if sum(data[:size]) % 256 == 0 else 'WRONG'}"
        out.append(f'<div class="frame"><h3>{escape(name)}</h3><span class="note">{note}</span>'
                   f'<p class="bytes">{groups}</p></div>')
    body = legend(("head", "type, version, length"), ("sum", "checksum")) + "".join(out)
    return card("InfoFrames", body if out else '<p class="empty">none</p>')


def longest(report, count=8):
    series = report["series"]
    order = sorted(range(len(series["frame"])), key=lambda i: -series["interval_us"][i])[:count]
    rows = [(series["frame"][i], f'{series["time_us"][i] / 1e6:.2f} s', in_ms(series["interval_us"][i]),
             in_ms(series["jitter_us"][i]), series["queue_depth"][i], f'{series["crc32"][i]:08x}') for i in order]
    return card("Longest intervals", table(("frame", "time", "interval", "jitter", "queue", "CRC-32"), rows))


def picture(report):
    thumb = report["thumbnail"]
    if not thumb["pixels"]:
        return card("Picture", '<p class="empty">no frame was encoded</p>')
    data = base64.b64encode(png(thumb["width"], thumb["height"], thumb["pixels"])).decode()
    return card("Picture", f'<img alt="a captured frame, grey" src="data:image/png;base64,{data}">',
                f'{thumb["width"]} × {thumb["height"]}, grey')


def details(report):
    return [
        card("Configuration", pairs((k.replace("_", " "), v) for k, v in report["configuration"].items())),
        card("Digests", pairs(report["digests"].items()), "over all encoded frames in order", "digests"),
        card("Notifications", pairs((k.replace("_", " "), grouped(v)) for k, v in report["notifications"].items())),
        card("Timing and watchdog", pairs([(k.removesuffix("_us").replace("_", " "), in_ms(v) if k.endswith("_us") else v)
                                           for k, v in report["timing"].items()] +
                                          [("hardware fed", f'{grouped(report["watchdog"]["feeds"])} times'),
                                           ("expired", report["watchdog"]["expired"] or "nobody")])),
    ]


def page(report):
    track, counts = ptz_cards(report)
    intervals, queue, jitter = frame_charts(report)
    configuration, digests, notifications, timing = details(report)
    columns = [[intervals, jitter, longest(report), info_frames(report), configuration, digests],
               [queue, track, counts, picture(report), timing, notifications]]
    body = '<div class="columns">' + "".join(f'<div>{"".join(cards)}</div>' for cards in columns) + "</div>"
    style = Path(__file__).with_name("report.css").read_text(encoding="utf-8")
    return ('<!doctype html><html lang="en"><head><meta charset="utf-8">'
            '<meta name="viewport" content="width=device-width, initial-scale=1">'
            "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
            "style-src 'unsafe-inline'; img-src data:\">"
            f'<title>{escape(report["program"]["name"])}: report of a run</title><style>{style}</style></head>'
            f"<body><main>{header(report)}{tiles(report)}{body}</main></body></html>\n")


def main():
    if len(sys.argv) != 3:
        sys.exit("usage: scripts/report.py REPORT.json PAGE.html")
    try:
        text = page(load(sys.argv[1]))
        Path(sys.argv[2]).write_text(text, encoding="utf-8", errors="xmlcharrefreplace")
    except Malformed as error:
        sys.exit(f"report: {sys.argv[1]}: {' '.join(str(error).split())}")
    except OSError as error:
        sys.exit(f"report: {sys.argv[2]}: {error.strerror}")


if __name__ == "__main__":
    main()
