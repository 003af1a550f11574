#!/usr/bin/env python3
"""Checks a report of the camera example without the library: scripts/check-camera-report.py REPORT [--frames CLIP]

Recomputes what can be recomputed: the sums, the intervals and their window, the checksums of the
InfoFrames and, from the clip, the CRC-32 of every frame, the digests and the thumbnail.
"""
import argparse
import base64
import hashlib
import json
import reprlib
import sys
import zlib

BITS = {12: "NV12 NV21 I420 IYUV YV12", 16: "NV16 NV61 I422 YV16 YUYV YUY2 YVYU UYVY VYUY",
        24: "NV24 NV42 P010 RGB BGR", 32: "P210 RGBA BGRA ARGB ABGR", 8: "GREY Y8 Y800"}
LUMA_FIRST = "NV12 NV21 I420 IYUV YV12 NV16 NV61 I422 YV16 NV24 NV42 GREY Y8 Y800".split()

failures = []


def same(what, actual, expected):
    if actual != expected:
        failures.append(f"{what}: {reprlib.repr(actual)}, not {reprlib.repr(expected)}")


def check_frames(report):
    frames, series, setup = report["frames"], report["series"], report["configuration"]
    same("produced", frames["produced"], frames["dropped"] + frames["encoded"])
    bits = next((b for b, names in BITS.items() if setup["fourcc"].strip() in names.split()), None)
    same("frame size", setup["frame_size"], setup["width"] * setup["height"] * bits // 8)
    same("bytes encoded", frames["bytes_encoded"], frames["encoded"] * setup["frame_size"])
    for name, column in series.items():
        same(f"length of {name}", len(column), frames["encoded"])
        same(f"integers in {name}", all(type(value) is int for value in column), True)
    same("order of the frames", series["frame"], sorted(set(series["frame"])))
    same("frames below produced", all(f < frames["produced"] for f in series["frame"]), True)


def check_timing(report):
    series, timing, rate = report["series"], report["timing"], report["configuration"]["frame_rate"]
    times, intervals = series["time_us"], series["interval_us"]
    same("intervals", intervals, [0] * bool(times) + [b - a for a, b in zip(times, times[1:])])
    largest = []
    for i, now in enumerate(times):  # the last second, and no more samples than the window has slots
        recent = [intervals[j] for j in range(max(1, i + 1 - 2 * rate), i + 1) if now - times[j] <= 1_000_000]
        largest.append(max(recent, default=0))
    same("largest intervals", series["largest_interval_us"], largest)
    same("largest interval", timing["largest_interval_us"], max(intervals, default=0))
    same("largest jitter", timing["largest_jitter_us"], max(series["jitter_us"], default=0))
    same("jitter below 0", min(series["jitter_us"], default=0) < 0, False)


def check_ptz(report):
    ptz = report["ptz"]
    same("unanswered commands", ptz["unanswered"], 0)
    for who in [ptz] + ptz["clients"]:
        same(f"commands of {who.get('name', 'all')}", who["sent"], who["refused"] + who["results"])
    for key in ("sent", "refused", "results", "notices"):
        same(f"PTZ {key}", ptz[key], sum(client[key] for client in ptz["clients"]))
    track = ptz["track"]
    same("lengths of the track", {len(column) for column in track.values()}, {len(track["time_us"])})
    same("order of the track", track["time_us"], sorted(track["time_us"]))


def check_services(report):
    told, frames = report["notifications"], report["frames"]
    same("frame notices", told["frame"], frames["encoded"])
    same("drop notices", told["drop"], frames["dropped"])
    same("notices called back", told["called_back"], told["frame"] + told["drop"] + told["config"])
    same("more polled than published", told["polled"] > told["called_back"], False)
    same("who ended the run", report["program"]["ended_by"] == "watchdog", report["watchdog"]["expired"] != "")
    for name, text in report["info_frames"].items():
        data = bytes.fromhex(text)
        same(f"size of the {name} frame", len(data), 4 + (data[2] & 0x1F))
        same(f"sum of the {name} frame", sum(data) % 256, 0)
    same("an AVI frame", "avi" in report["info_frames"], True)


def check_thumbnail(report, last_frame):
    small, setup = report["thumbnail"], report["configuration"]
    pixels = base64.b64decode(small["pixels"], validate=True)
    same("size of the thumbnail", len(pixels), small["width"] * small["height"])
    if last_frame is None or setup["fourcc"].strip() not in LUMA_FIRST:
        return
    rows = [r * setup["height"] // small["height"] for r in range(small["height"])]
    columns = [c * setup["width"] // small["width"] for c in range(small["width"])]
    same("thumbnail", pixels, bytes(last_frame[y * setup["width"] + x] for y in rows for x in columns))


def check_clip(report, path):
    """Recomputes the digests; returns the last frame that was encoded."""
    size = report["configuration"]["frame_size"]
    with open(path, "rb") as file:
        clip = file.read()
    same("rest of the clip", len(clip) % size, 0)
    count, md5, crc, frame = len(clip) // size, hashlib.md5(), 0, None
    for sequence, recorded in zip(report["series"]["frame"], report["series"]["crc32"]):
        frame = clip[sequence % count * size:][:size]
        same(f"CRC-32 of frame {sequence}", recorded, zlib.crc32(frame))
        md5.update(frame)
        crc = zlib.crc32(frame, crc)
    same("MD5", report["digests"]["md5"], md5.hexdigest())
    same("CRC-32", report["digests"]["crc32"], f"{crc:08x}")
    return frame


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("report")
    parser.add_argument("--frames", metavar="CLIP", help="the clip that was played")
    arguments = parser.parse_args()
    with open(arguments.report, encoding="utf-8") as file:
        report = json.load(file)
    check_frames(report)
    check_timing(report)
    check_ptz(report)
    check_services(report)
    last_frame = check_clip(report, arguments.frames) if arguments.frames else None
    check_thumbnail(report, last_frame)
    for failure in failures:
        print(f"check-camera-report: {failure}")
    if not failures:
        frames, ptz = report["frames"], report["ptz"]
        digests = ", digests and CRCs as zlib and hashlib have them" if arguments.frames else ""
        print(f"report: {frames['produced']} frames = {frames['dropped']} dropped + {frames['encoded']} encoded, "
              f"{ptz['sent']} commands = {ptz['refused']} refused + {ptz['results']} answered{digests}")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
