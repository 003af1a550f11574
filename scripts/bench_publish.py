"""Writes docs/performance.md and docs/performance.svg."""
import os

from bench_chart import draw
from bench_machine import allocations, describe_machine, peer_versions, weights

HEAD = """# Performance

Measured by `scripts/bench.sh --publish`, which writes this page and its chart anew on your machine. This
one was {machine}.

Every case runs beside its peers in one process and against the shared library, both as a distribution or
a user builds them. A figure is the median of 7 repetitions, and the repetitions of all cases are
interleaved at random, so that a disturbance meets both sides. Of a peer with several interfaces the faster
one counts. `bench/` holds the cases, `bench/expected.tsv` the bounds they are held to;
`scripts/bench.sh FILTER` runs some of them.

Peers: {peers}.

![Speed of libzt_base over its peers](performance.svg)

## Against peers and floors

Times are of one operation. A ratio above 1 means that libzt_base is faster. A floor is the work that the
operation cannot do without (its locks, system calls and copies): there the figure is our time over the
floor's. *Bound* is what the ratio is held to.
"""

SECTION = """
### {group}

| case | size | libzt_base | peer | peer's time | ratio | bound | others |
|---|--:|--:|---|--:|--:|---|---|
"""

GROWTH = """
## Bounds that stay out of reach

- **MD5, 64 bytes.** Two blocks of 64 steps, each waiting for the one before: 4 or 5 cycles a step, 288 a block
  at least, 157 ns at this clock. That is 1.16 of OpenSSL's time without anything around it.
- **Keep-alive.** The full barrier behind the store alone costs 4.6 ns; two calls that applications can
  replace, the clock and its conversion to milliseconds make up the rest.
- **Ring buffer.** Boost's is compiled into its caller. Ours makes five calls a round that can be replaced (put,
  get, the threshold, two copies), about 1 ns each.
- **Red-black tree, 1,000 records.** All in the first cache: what counts is the way of one key to the next
  comparison, which is the same in both. The distance grows with the tree, as children are fetched ahead.
- **Sine.** An empty function called through the shared library takes 2.5 ns in this loop.
- **CRC-16 at 64 and 256 bytes.** One byte shuffle a vector more than CRC-32 has, and no loop to hide it.
- **Against `floor` instead of `floor-exported`** a PTZ command's locks and copies are the C library's, without
  the replaceable operations in between.

## Growth

Time of one operation in nanoseconds, with random keys. The second cache ends at about 30,000 elements, the
third at a million: from there each step of a search waits for memory, and the operations with logarithmic
cost take that long for each of their last levels. The id pool's curve is flat in instructions; its lookups
meet memory from 100,000 ids on. A timer that is put off, and a sample in a full window, move a few places
only, whatever the number. Notifications pay two searches of a tree whose nodes are allocated one by one.

| operation | 10 | 1,000 | 100,000 | 1,000,000 | expected |
|---|--:|--:|--:|--:|---|
"""
GROWTH_SIZES = ("10", "1000", "100000", "1000000")

WEIGHT = """
## Weight

The load time is that of an empty program linked with the library, less that of one without: the median of
1,000 starts of each.

| library | stripped size | relocations | needs | time to load |
|---|--:|--:|---|--:|
"""

ALLOCATIONS = """
## Allocations

Calls of the allocator by one operation in a steady state.

| operation | calls |
|---|--:|
"""


def duration(value):
    for unit, factor in (("ns", 1), ("µs", 1e3), ("ms", 1e6)):
        if value < 999.5 * factor or unit == "ms":
            return f"{value / factor:.3g} {unit}"
    return ""


def size_text(size, unit):
    number, _, offset = size.partition("@")
    text = f"{int(number):,} {unit if int(number) != 1 else ''}".strip()
    return text + (f" at offset {offset}" if offset else "")


def figure(row):
    if row["kind"] in ("ns", "plus"):
        return f"{row['value']:.2g} ns" + (" more" if row["kind"] == "plus" else "")
    return f"{row['value']:.3g}"


def bound(row):
    if row["bound"] is None:
        return ""
    text = f"{'≥' if row['kind'] == 'peer' else '≤'} {row['bound']:g}"
    return text if row["reached"] else text + " **not reached**"


def ratio_line(title, size, rows):
    """The line of one case and size: the row that has a bound, and the rest in the last column."""
    first, *rest = sorted(rows, key=lambda row: row["bound"] is None)
    others = [f"{row['peer']} {figure(row)}" + ("" if row["who"] == "zt" else f" ({row['who']})")
              for row in rest if row["peer"] != first["peer"] or row["who"] != first["who"]]
    theirs = "" if first["peer_ns"] is None else duration(first["peer_ns"])
    return (f"| {title} | {size} | {duration(first['ns'])} | {first['peer'] or ''} "
            f"| {theirs} | {figure(first)} | {bound(first)} | {', '.join(others)} |\n")


def ratio_lines(cases, rows):
    lines, last = {}, None
    for row in rows:
        lines.setdefault((row["case"], row["size"]), []).append(row)
    for (case, size), group_rows in lines.items():
        group, title, unit, _ = cases[case]
        if group != last:
            yield SECTION.format(group=group)
        last = group
        yield ratio_line(title, size_text(size, unit), group_rows)


def growth_figure(time):
    return f"{time:.3g}" if time < 1000 else f"{time:,.0f}"


def growth_lines(cases, results):
    for case, (_, title, _, expected) in cases.items():
        if expected != "-":
            times = [results.get((case, size), {}).get("zt") for size in GROWTH_SIZES]
            cells = " | ".join("" if time is None else growth_figure(time) for time in times)
            yield f"| {title} | {cells} | {expected} |\n"


def weight_lines(build):
    for name, size, relocations, needed, load in weights(build):
        yield (f"| {name} | {size / 1024:.0f} KiB | {relocations:,} | {', '.join(needed)} "
               f"| {load:.0f} µs |\n")


FEW_SIZES = ("crc32", "fpga_crc32", "crc16_ccitt", "sha256", "md5", "base64_encode", "base64_decode",
             "base64_decode_lines")


def chart_rows(cases, rows):
    """The bounds on peers and floors; of the digests, which have eight sizes, three."""
    for row in rows:
        group, title, unit, _ = cases[row["case"]]
        if row["kind"] not in ("peer", "floor") or row["bound"] is None:
            continue
        if row["case"] in FEW_SIZES and row["size"] not in ("64", "1024", "65536"):
            continue
        yield {**row, "group": group, "label": f"{title}, {size_text(row['size'], unit)}"}


def publish(root, build, cases, results, rows):
    machine = describe_machine()
    docs = os.path.join(root, "docs")
    with open(os.path.join(docs, "performance.svg"), "w", encoding="utf-8") as file:
        file.write(draw(list(chart_rows(cases, rows)), machine))
    with open(os.path.join(docs, "performance.md"), "w", encoding="utf-8") as file:
        file.write(HEAD.format(machine=machine, peers=peer_versions()))
        file.writelines(ratio_lines(cases, rows))
        file.write(GROWTH)
        file.writelines(growth_lines(cases, results))
        file.write(ALLOCATIONS)
        file.writelines(f"| {name} | {calls} |\n" for name, calls in allocations(build))
        file.write(WEIGHT)
        file.writelines(weight_lines(build))
