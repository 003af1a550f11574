#!/usr/bin/env python3
"""Turns the results of the benchmarks into tables.

  bench-report.py RESULTS.json                  prints the ratios
  bench-report.py RESULTS.json --check          and fails when a row of bench/expected.tsv has no results
  bench-report.py RESULTS.json --publish BUILD  and writes docs/performance.md and docs/performance.svg
"""
import json
import os
import statistics
import sys

from bench_publish import publish

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


def read_tsv(name):
    with open(os.path.join(ROOT, "bench", name), encoding="utf-8") as file:
        for line in file:
            if not line.startswith("#") and line.strip():
                yield line.rstrip("\n").split("\t")


def read_expected():
    rows = []
    for case, sizes, who, against, kind, bound in read_tsv("expected.tsv"):
        low, dash, high = sizes.partition("-")
        rows.append({"case": case, "who": who, "kind": kind,
                     "low": 0 if sizes == "*" or not low else int(low),
                     "high": 1 << 62 if sizes == "*" or (dash and not high) else int(high or low),
                     "against": [] if against == "-" else against.split(","),
                     "bound": None if bound == "-" else float(bound)})
    return rows


def compare(want, case, size, times):
    """The row of the report for one row of expected.tsv and one size; None without a peer's result."""
    peers = [peer for peer in want["against"] if peer in times]
    if want["against"] and not peers:
        return None
    mine, kind, bound = times[want["who"]], want["kind"], want["bound"]
    peer = min(peers, key=times.get) if peers else None
    theirs = times.get(peer)
    if kind == "floor":
        value, unit = mine / theirs, "x floor"
    elif kind == "plus":
        value, unit = mine - theirs, "ns more"
    elif kind == "ns":
        value, unit = mine, "ns"
    else:
        value, unit = theirs / mine, "x"
    reached = bound is None or (value >= bound if kind == "peer" else value <= bound)
    return {"case": case, "size": size, "who": want["who"], "peer": peer, "ns": mine, "kind": kind,
            "peer_ns": theirs, "value": value, "unit": unit, "bound": bound, "reached": reached}


def number_of(size):
    return int(size.split("@")[0])


def judge(results, expected):
    """One row a ratio; where several rows of expected.tsv name one pair, the first counts. Also the
    rows of expected.tsv that nothing was found for."""
    rows, seen, unused = [], set(), []
    for want in expected:
        used = False
        for (case, size), times in results.items():
            if case != want["case"] or not want["low"] <= number_of(size) <= want["high"] or \
                    want["who"] not in times:
                continue
            row = compare(want, case, size, times)
            used = used or row is not None
            key = (case, size, want["who"], tuple(want["against"]))
            if row is not None and key not in seen:
                seen.add(key)
                rows.append(row)
        if not used:
            unused.append(f"{want['case']} {want['who']} {','.join(want['against'])}")
    order = [row[0] for row in read_tsv("cases.tsv")]
    rows.sort(key=lambda row: (order.index(row["case"]), number_of(row["size"])))
    return rows, unused


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
        cells.append((case, row["size"], nanoseconds(row["ns"]), row["peer"] or "",
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
    arguments = sys.argv[1:]
    results = read_results(arguments[0])
    rows, unused = judge(results, read_expected())
    if arguments[1:] == ["--check"]:
        for name in unused:
            print(f"bench-report: no results for {name}")
        sys.exit(1 if unused else 0)
    print_table(rows)
    if arguments[1:2] == ["--publish"]:
        cases = {row[0]: row[1:] for row in read_tsv("cases.tsv")}
        publish(ROOT, arguments[2], cases, results, rows)


if __name__ == "__main__":
    main()
