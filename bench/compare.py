#!/usr/bin/env python3
"""Compares whole processes: rastertoklov beside CUPS's stock filters, a floor program and an empty program.

    compare.py BUILD OUT [--quick] [--no-instructions] [--output pipe|null] [--trace-in FOLDER]

The trace goes to a file system in memory unless --trace-in names a folder on a disk.

Every program of a set runs in turn with all others, round after round; what counts is the least of each one's runs.
BUILD is a build folder with KLOV_BENCH; the table and the picture land in OUT. Needs ppdc, and strace and valgrind for
the counts; the stock filters that are not installed are left out.
"""

import argparse
import os
import sys

import harness
import pages
import svg

# Which stock filters run, with which command set of CUPS's sample drivers (by its cupsModelNumber):
#  - rastertolabel 0 sends each row as it is, 18 run-length codes rows in hexadecimal, 32 compresses rows and skips
#    equal ones: the fastest of its six on short jobs, on black pages and on text;
#  - rastertoepson 0 and 1 are the heads with 9 and 24 pins; they work on bands, so their header gives the rows in one;
#  - rastertoescpx takes its PPD from the 24-pin printer, as no sample has one of its own. On one-bit pages it runs its
#    whole colour path and reads past the row's end: its figures are for completeness, it is never near the fastest.
STOCK = (("label-0", "rastertolabel", "rastertolabel", 0), ("label-18", "rastertolabel", "rastertolabel", 18),
         ("label-32", "rastertolabel", "rastertolabel", 32), ("epson-0", "rastertoepson", "rastertoepson", 0),
         ("epson-1", "rastertoepson", "rastertoepson", 1), ("escpx", "rastertoescpx", "rastertoepson", 1))
SLOW = ("escpx",)
BANDED = ("rastertoepson",)

TRACED, UNTRACED, COMPRESSED = "klov", "klov, no trace", "klov, compressed"
# Into /dev/null: a pipe's reader falls asleep whenever it has caught up, and to wake it costs the writer.
UNREAD = ", unread"


class Job:
    """A set: the same pages through every program."""

    def __init__(self, title, kind, page_count=1, copies=1, version=3):
        self.title, self.kind, self.pages, self.copies, self.version = title, kind, page_count, copies, version

    def stream(self, workshop, **extra):
        path = workshop.path("stream-%d" % len(os.listdir(workshop.folder)))
        pages.write_stream(path, self.kind, pages=self.pages, copies=self.copies, version=self.version, **extra)
        return path


def cases_of(job, workshop, output, trace):
    stream, ppd = job.stream(workshop), workshop.own_ppd()
    traced = harness.make_case(TRACED, workshop.filter, stream, ppd, trace=trace, output=output)
    compressed = traced._replace(name=COMPRESSED, options="BitmapCompression=1")
    cases = [traced, traced._replace(name=UNTRACED, trace="off"), compressed, workshop.floor_case(traced)]
    banded = None
    for name, program, sample, number in STOCK:
        path = harness.stock_filter(program)
        if path is None:
            continue
        if program in BANDED and banded is None:
            banded = job.stream(workshop, resolution=180, row_count=24)
        cases.append(harness.make_case(name, path, banded if program in BANDED else stream,
                                       workshop.stock_ppd(sample, number), output=output))
    cases.append(harness.make_case("empty", workshop.empty, stream, ppd, output=output))
    return cases


def measure(job, workshop, rounds, output, trace):
    cases = cases_of(job, workshop, output, trace)
    runs = workshop.run([case for case in cases if case.name not in SLOW], rounds)
    runs.update(workshop.run([case for case in cases if case.name in SLOW], max(2, rounds // 10)))
    # What the limits compare goes on in pairs, side by side.
    for pair in ((TRACED, fastest_stock(runs)), (UNTRACED, "floor")):
        for name, more in workshop.run([case for case in cases if case.name in pair], 2 * rounds).items():
            runs[name] += more
    unread = [case._replace(name=case.name + UNREAD, output="null")
              for case in cases if case.name in (UNTRACED, "floor")]
    runs.update(workshop.run(unread, 2 * rounds))
    for case in cases:
        failed = [run.status for run in runs[case.name] if run.status != 0]
        if failed:
            raise RuntimeError("%s ended with status %d" % (case.name, failed[0]))
    return cases, runs


def fastest_stock(runs):
    names = [name for name, *_ in STOCK if name in runs]
    return min(names, key=lambda name: harness.best(runs[name])) if names else None


def describe(cases, runs, calls, instructions):
    stock, floor = fastest_stock(runs), harness.best(runs["floor"])
    rows = []
    for case in cases:
        own = runs[case.name]
        least = harness.best(own)
        rows.append([
            case.name, "%.2f" % (least / 1e3), "%.2f" % (harness.middle(own) / 1e3),
            "%.2f" % (least / harness.best(runs[stock])) if stock else "-", "%.2f" % (least / floor),
            "%.2f" % (harness.best(own, lambda run: run.wall) / 1e3), harness.best(own, lambda run: run.memory),
            own[0].faults, own[0].bytes or "-", sum(calls[case.name].values()) if case.name in calls else "-",
            "%.2f" % (instructions[case.name].everything / 1e6) if case.name in instructions else "-"])
    head = ["", "CPU ms", "median", "x stock", "x floor", "wall ms", "peak KiB", "faults", "bytes", "calls", "M instr"]
    return harness.table(head, rows)


# The most CPU time with trace, beside the fastest stock filter: of one page, and of 50.
MOST_OF_ONE = 0.8
MOST_OF_FIFTY = {"text": 0.5, "photo": 0.6, "sparse": 0.5, "black": 0.85}


def verdicts(job, runs):
    """The limits that the filter is held to, for one set. Compressed streams have none: no CUPS filter writes any."""
    if job.version == 2:
        return []
    stock = fastest_stock(runs)
    traced = harness.best(runs[TRACED])
    lines = []
    if stock:
        lines.append(("%s: CPU with trace / fastest stock (%s)" % (job.title, stock),
                      traced / harness.best(runs[stock]), MOST_OF_ONE if job.pages == 1 else MOST_OF_FIFTY[job.kind]))
    for how, note in (("", ""), (UNREAD, ", output unread")):
        ratio = harness.best(runs[UNTRACED + how]) / harness.best(runs["floor" + how])
        lines.append(("%s: CPU without trace / floor%s" % (job.title, note), ratio, 1.15))
    memory = [harness.best(runs[name], lambda run: run.memory) for name in (TRACED, COMPRESSED)]
    if job.copies == 1:
        lines.append(("%s: peak memory above the floor, MiB" % job.title,
                      (max(memory) - harness.best(runs["floor"], lambda run: run.memory)) / 1024, 1.0))
    return lines


def start_up(workshop, rounds):
    """What it costs to get to main(), and to turn away a job without arguments: its messages need CUPS set up."""
    stream = workshop.path("nothing")
    with open(stream, "wb"):
        pass
    empty = harness.make_case("empty", workshop.empty, stream, output="null")
    started = harness.make_case("started", workshop.start, stream, output="null")
    refused = harness.make_case("refused", workshop.filter, stream, output="null", trace="off", options="")
    runs = workshop.run([empty, started, refused], rounds)
    least = harness.lower_quarter(runs["empty"])
    return [("start-up to main(): CPU / empty program", harness.lower_quarter(runs["started"]) / least, 1.05),
            ("start-up to the refusal of a job: CPU / empty program",
             harness.lower_quarter(runs["refused"]) / least, 1.05)]


def jobs_of(quick):
    jobs = [Job("%s, %d page%s" % (kind, count, "s" if count > 1 else ""), kind, count)
            for count in (1, 50) for kind in ("text", "photo", "sparse", "black")]
    if quick:
        return [job for job in jobs if job.kind in ("text", "black")]
    jobs.append(Job("text, 1 page, 3 copies", "text", copies=3))
    return jobs + [Job("text, 50 pages, raster version %d" % version, "text", 50, version=version)
                   for version in (1, 2, 3)]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build")
    parser.add_argument("out")
    parser.add_argument("--quick", action="store_true", help="fewer sets and rounds")
    parser.add_argument("--no-instructions", action="store_true", help="leave out callgrind")
    parser.add_argument("--output", choices=("pipe", "null"), default="pipe", help="where standard output goes")
    parser.add_argument("--trace-in", metavar="FOLDER", help="write the trace there, by a symbolic link")
    words = parser.parse_args()
    os.makedirs(words.out, exist_ok=True)
    trace = os.path.join(os.path.abspath(words.trace_in), "klov-bench-trace") if words.trace_in else "on"
    workshop = harness.Workshop(words.build)
    text, groups, limits = [], [], []
    try:
        for job in jobs_of(words.quick):
            rounds = (10 if words.quick else 25) if job.pages == 1 else (3 if words.quick else 9)
            cases, runs = measure(job, workshop, rounds, words.output, trace)
            calls, instructions = {}, {}
            if job.pages == 1 and job.copies == 1:
                calls = {case.name: harness.count_calls(case, workshop) for case in cases}
                if job.kind == "text" and not words.no_instructions and not words.quick:
                    instructions = {case.name: harness.count_instructions(case, workshop) for case in cases}
            part = "%s (%d rounds, standard output to %s)\n%s" % (
                job.title, rounds, words.output, describe(cases, runs, calls, instructions))
            print(part, flush=True)
            text.append(part)
            groups.append((job.title, [(case.name, harness.best(runs[case.name]) / 1e3) for case in cases]))
            limits += verdicts(job, runs)
        limits += start_up(workshop, 60 if words.quick else 300)
    finally:
        workshop.close()
        if words.trace_in and os.path.exists(trace):
            os.unlink(trace)
    part = "Limits\n" + harness.table(["", "is", "limit", ""], [
        [name, "%.2f" % value, "%.2f" % limit, "kept" if value <= limit else "MISSED"]
        for name, value, limit in limits])
    print(part)
    text.append(part)
    listing, picture = os.path.join(words.out, "compare.txt"), os.path.join(words.out, "compare.svg")
    with open(listing, "w", encoding="utf-8") as file:
        file.write("\n".join(text))
    svg.bars(picture, "User and system time, least of all runs", groups, "ms")
    print(listing + "\n" + picture)


if __name__ == "__main__":
    sys.exit(main())
