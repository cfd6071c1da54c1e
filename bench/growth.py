#!/usr/bin/env python3
"""How time and memory of rastertoklov grow with rows, pages and width.

    growth.py BUILD OUT [--quick]

A straight line is laid through every series, time against amount; printed are what one more unit costs, what the job
costs without any, and how far the points lie off the line. Memory has to stay where it is.
"""

import argparse
import os
import sys

import harness
import pages
import svg

# Rows of 48 bytes keep the longest page's trace below 80 MB.
SERIES = {
    "rows": [dict(rows=rows, width=48) for rows in (1000, 3000, 10000, 30000, 100000, 300000, 1000000)],
    "pages": [dict(pages=count) for count in (1, 3, 10, 30, 100)],
    "width": [dict(width=width, rows=20000) for width in (9, 18, 36, 72)],
}
AMOUNT = {"rows": lambda made: made["rows"], "pages": lambda made: made["pages"], "width": lambda made: made["width"]}


def fit(points):
    """Least squares through points, each weighted by its value, so that small jobs count as much as large ones.
    Returns slope, offset and the largest deviation as a share of the value."""
    weights = [1 / (y * y) for _, y in points]
    total = sum(weights)
    x_mean = sum(w * x for w, (x, _) in zip(weights, points)) / total
    y_mean = sum(w * y for w, (_, y) in zip(weights, points)) / total
    spread = sum(w * (x - x_mean) ** 2 for w, (x, _) in zip(weights, points))
    slope = sum(w * (x - x_mean) * (y - y_mean) for w, (x, y) in zip(weights, points)) / spread
    offset = y_mean - slope * x_mean
    return slope, offset, max(abs(offset + slope * x - y) / y for x, y in points)


def measure(workshop, name, quick):
    ppd = workshop.own_ppd()
    found = {"with trace": [], "without trace": []}
    memory = {"with trace": [], "without trace": []}
    for made in SERIES[name]:
        stream = workshop.path("growth")
        size = pages.write_stream(stream, "text", **made)
        if quick and size > 20e6:
            continue
        traced = harness.make_case("with trace", workshop.filter, stream, ppd, output="null")
        rounds = 40 if size < 2e6 else 12 if size < 20e6 else 3
        runs = workshop.run([traced, traced._replace(name="without trace", trace="off")], rounds // (3 if quick else 1))
        for label, own in runs.items():
            if any(run.status != 0 for run in own):
                raise RuntimeError("a run failed")
            found[label].append((AMOUNT[name](made), harness.best(own) / 1e3))
            memory[label].append((AMOUNT[name](made), harness.best(own, lambda run: run.memory)))
    return found, memory


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build")
    parser.add_argument("out")
    parser.add_argument("--quick", action="store_true", help="no job above 20 MB")
    words = parser.parse_args()
    os.makedirs(words.out, exist_ok=True)
    workshop = harness.Workshop(words.build)
    rows, files, text = [], [], ""
    try:
        for name in SERIES:
            found, memory = measure(workshop, name, words.quick)
            for label, points in found.items():
                slope, offset, worst = fit(points)
                kib = [value for _, value in memory[label]]
                rows.append(["%s, %s" % (name, label), "%d to %d" % (points[0][0], points[-1][0]),
                             "%.2f to %.2f" % (points[0][1], points[-1][1]), "%.3f" % (slope * 1e3), "%.2f" % offset,
                             "%.0f %%" % (worst * 100), "%d to %d" % (min(kib), max(kib))])
            for kind, series, unit in (("time", found, "CPU time, ms"), ("memory", memory, "peak memory, KiB")):
                path = os.path.join(words.out, "growth-%s-%s.svg" % (name, kind))
                svg.lines(path, "rastertoklov: %s against %s" % (kind, name), name, unit, list(series.items()),
                          least_y=1000 if kind == "memory" else None)
                files.append(path)
        text = harness.table(["", "amount", "CPU ms", "us a unit", "rest ms", "off the line", "peak KiB"], rows)
    finally:
        workshop.close()
    print(text)
    listing = os.path.join(words.out, "growth.txt")
    with open(listing, "w", encoding="utf-8") as file:
        file.write(text)
    print("\n".join([listing] + files))


if __name__ == "__main__":
    sys.exit(main())
