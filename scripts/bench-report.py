#!/usr/bin/env python3
"""Turns the results of the benchmarks into a table of ratios: bench-report.py RESULTS.json"""
import json
import os
import statistics
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def read_results(path):
    """{(case, size): {who: median time in ns, of one item where the case has several}}"""
    with open(path, encoding="utf-8") as file:
        runs = json.load(file)["benchmarks"]
    times = {}
    for run in runs:
        if run["run_type"] != "iteration":
            continue
        case, size, who = run["name"].split("/")[:3]
        items = run.get("items_per_second")
        time = 1e9 / items if items else run["cpu_time"]
        times.setdefault((case, size), {}).setdefault(who, []).append(time)
    return {key: {who: statistics.median(all_of) for who, all_of in row.items()}
            for key, row in times.items()}


def read_expected():
    rows = []
    with open(os.path.join(ROOT, "bench", "expected.tsv"), encoding="utf-8") as file:
        for line in file:
            if line.startswith("#") or not line.strip():
                continue
            case, sizes, who, against, kind, bound = line.rstrip("\n").split("\t")
            low, _, high = sizes.partition("-") if "-" in sizes else (sizes, "", sizes)
            low = int(low) if low not in ("", "*") else 0
            high = int(high) if high not in ("", "*") else 1 << 62
            rows.append((case, low, high, who, against.split(","), kind,
                         None if bound == "-" else float(bound)))
    return rows


def judge(results, expected):
    """One row a ratio; of several rows of the table for one pair, the first counts."""
    rows, seen = [], set()
    for case, low, high, who, against, kind, bound in expected:
        for (its_case, size), times in results.items():
            number = int(size.split("@")[0])
            peers = [peer for peer in against if peer in times]
            key = (case, size, who, tuple(against))
            if its_case != case or not low <= number <= high or who not in times or key in seen:
                continue
            if against != ["-"] and not peers:
                continue
            seen.add(key)
            mine = times[who]
            peer = min(peers, key=times.get) if peers else None
            theirs = times[peer] if peer else None
            if kind == "floor":
                value, unit = mine / theirs, "x floor"
            elif kind == "plus":
                value, unit = mine - theirs, "ns more"
            elif kind == "ns":
                value, unit = mine, "ns"
            else:
                value, unit = theirs / mine, "x"
            reached = bound is None or (value >= bound if kind == "peer" else value <= bound)
            rows.append({"case": case, "size": size, "who": who, "against": peer or "", "ns": mine,
                         "peer_ns": theirs, "kind": kind, "value": value, "unit": unit,
                         "bound": bound, "reached": reached})
    order = list(dict.fromkeys(case for case, *_ in expected))
    rows.sort(key=lambda row: (order.index(row["case"]), int(row["size"].split("@")[0])))
    return rows


def verdict(row):
    if row["bound"] is None:
        return ""
    sign = ">=" if row["kind"] == "peer" else "<="
    return f"{sign} {row['bound']:g} {'reached' if row['reached'] else 'NOT REACHED'}"


def nanoseconds(value):
    return "" if value is None else f"{value:.4g}" if value < 1000 else f"{value:.0f}"


def print_table(rows):
    cells = [("case", "size", "ns", "against", "ns", "ratio", "")]
    for row in rows:
        case = row["case"] if row["who"] == "zt" else f"{row['case']} ({row['who']})"
        cells.append((case, row["size"], nanoseconds(row["ns"]), row["against"],
                      nanoseconds(row["peer_ns"]), f"{row['value']:.2f} {row['unit']}",
                      verdict(row)))
    widths = [max(len(line[i]) for line in cells) for i in range(7)]
    right = (False, True, True, False, True, True, False)
    for line in cells:
        print("  ".join(text.rjust(width) if to_right else text.ljust(width)
                        for text, width, to_right in zip(line, widths, right)).rstrip())
    judged = [row for row in rows if row["bound"] is not None]
    print(f"{sum(row['reached'] for row in judged)} of {len(judged)} bounds reached")


def main():
    results = read_results(sys.argv[1])
    print_table(judge(results, read_expected()))


if __name__ == "__main__":
    main()
