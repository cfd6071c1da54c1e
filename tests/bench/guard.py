#!/usr/bin/env python3
"""Guards what the filter costs, without a clock: instructions, system calls and peak memory of three fixed jobs.

    guard.py BUILD COMPILER [--bless]

Counts that do not depend on the machine are held exactly: writes to the printer, to the trace and to the scheduler's
log, and reads of the stream. Instructions are held to 3 % in the program's own code; with all that libc and libcups do
for it inside main() to 10 %, as their routines differ with the processor and the release. They are known for one
compiler and kind of processor each, which COMPILER names ("none" leaves them out).

A change that has to cost more raises the bounds: guard.py ... --bless, and bounds.json goes into the same commit.
Exit status 77: nothing could be counted here.
"""

import json
import os
import re
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(HERE, "..", "..", "bench"))

import harness  # noqa: E402
import pages  # noqa: E402

BOUNDS = os.path.join(HERE, "bounds.json")
CHUNK = 65536
OWN_SLACK, INSIDE_SLACK = 1.03, 1.10

JOBS = {
    "text": (dict(kind="text", pages=2), "job"),
    "photo, compressed": (dict(kind="photo", rows=1000), "BitmapCompression=1"),
    "sparse, 3 copies, cut after each": (dict(kind="sparse", copies=3, version=1), "PostPrintAction=3"),
}


def count_transfers(case, workshop):
    """Writes and reads of the streams that matter, by strace."""
    listing = workshop.path("transfers")
    output = harness.output_of(case, ["strace", "-y", "-e", "trace=read,write", "-e", "signal=none", "-o", listing])
    counts = {"printer writes": 0, "trace writes": 0, "log writes": 0, "stream reads": 0}
    with open(listing, encoding="utf-8", errors="replace") as file:
        for line in file:
            call = re.match(r"(read|write)\((\d+)<([^>]*)>", line)
            if call is None:
                continue
            kind, descriptor, path = call.groups()
            if kind == "read" and descriptor == "0":
                counts["stream reads"] += 1
            elif kind == "write" and descriptor == "1":
                counts["printer writes"] += 1
            elif kind == "write" and descriptor == "2":
                counts["log writes"] += 1
            elif kind == "write" and path == harness.TRACE:
                counts["trace writes"] += 1
    with open(harness.TRACE, "rb") as file:
        lines = file.read().count(b"\n")
    return counts, lines, len(output)


def usable(tool, *arguments):
    try:
        return subprocess.run([tool, *arguments, "true"], stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, check=False).returncode == 0
    except FileNotFoundError:
        return False


class Guard:
    def __init__(self, workshop, compiler, bless):
        self.workshop, self.compiler, self.bless = workshop, compiler, bless
        self.failures = 0
        with open(BOUNDS, encoding="ascii") as file:
            self.bounds = json.load(file)

    def hold(self, what, value, bound, slack=1.0):
        kept = value <= bound * slack
        self.failures += not kept
        note = "ok" if kept else "ABOVE ITS BOUND"
        if kept and slack > 1 and value < bound / slack:
            note = "ok, far below: --bless would tighten it"
        print("  %-28s %12s  bound %12s  %s" % (what, format(value, ","), format(int(bound * slack), ","), note))

    def hold_transfers(self, job, case):
        counts, lines, printed = count_transfers(case, self.workshop)
        if printed == 0 or counts["printer writes"] == 0 or counts["trace writes"] == 0:
            raise RuntimeError("nothing was printed or traced: the counts would mean nothing")
        self.hold("trace writes a trace line", counts["trace writes"], lines)
        # One more finds the end of the stream.
        self.hold("stream reads a 64 KiB", counts["stream reads"], -(-os.path.getsize(case.stream) // CHUNK) + 1)
        known = self.bounds["transfers"]
        if self.bless:
            known[job] = counts
        for name, value in counts.items():
            self.hold(name, value, known[job][name])

    def hold_instructions(self, job, case):
        known = self.bounds["instructions"]
        if self.compiler == "none" or not usable("valgrind", "-q"):
            print("  instructions: not counted in this build")
            return
        if self.compiler not in known and not self.bless:
            print("  instructions: no bounds for %s" % self.compiler)
            return
        counted = harness.count_instructions(case, self.workshop)
        if not 0 < counted.own < counted.inside < counted.everything:
            raise RuntimeError("callgrind's profile was not understood: %s" % (counted,))
        if self.bless:
            known.setdefault(self.compiler, {})[job] = {"own": counted.own, "inside main": counted.inside}
        bounds = known[self.compiler][job]
        self.hold("instructions, own code", counted.own, bounds["own"], OWN_SLACK)
        self.hold("instructions inside main()", counted.inside, bounds["inside main"], INSIDE_SLACK)

    def hold_memory(self, case):
        floor = self.workshop.floor_case(case)
        runs = self.workshop.run([case, floor], 5)
        least = {name: harness.best(own, lambda run: run.memory) for name, own in runs.items()}
        self.hold("peak memory, KiB", least["filter"], least["floor"] + 1024)

    def run(self):
        for job, (made, options) in JOBS.items():
            print(job)
            stream = self.workshop.path("guard.ras")
            pages.write_stream(stream, **made)
            case = harness.make_case("filter", self.workshop.filter, stream, os.path.join(HERE, "guard.ppd"), options)
            self.hold_transfers(job, case)
            self.hold_instructions(job, case)
            # A job with copies holds its page, which the floor does not.
            if made.get("copies", 1) == 1:
                self.hold_memory(case)
        if self.bless:
            with open(BOUNDS, "w", encoding="ascii") as file:
                json.dump(self.bounds, file, indent=2, sort_keys=True)
                file.write("\n")
            print("%s is written" % BOUNDS)
        return 1 if self.failures else 0


def main():
    words = [word for word in sys.argv[1:] if word != "--bless"]
    if len(words) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    if not usable("strace", "-o", "/dev/null"):
        print("strace is not there or may not trace")
        return 77
    workshop = harness.Workshop(words[0])
    try:
        return Guard(workshop, words[1], "--bless" in sys.argv).run()
    finally:
        workshop.close()


if __name__ == "__main__":
    sys.exit(main())
