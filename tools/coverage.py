"""Judges a coverage report: the shares of lines and branches, the reasons for what was not reached, and the branches
that must be reached.

usage: coverage.py REPORT ROOM...     REPORT is gcovr's JSON; run in the project's root

Fails when a share is below its bound, when an uncovered line has no row in docs/coverage.md, when such a row names a
line that does not exist, or when a branch of tools/branches.txt was not reached. The last line of the output reads
"lines NN.N % branches NN.N %".
"""

import collections
import json
import pathlib
import re
import sys

LINES_AT_LEAST = 97.0
BRANCHES_AT_LEAST = 92.0
REASONS = pathlib.Path("docs/coverage.md")
BRANCHES = pathlib.Path("tools/branches.txt")

REASON_ROW = re.compile(r"^\| `(?P<file>[^`]+)` \| `(?P<text>.+?)` \| (?P<reason>.*\S) \|$")


class Count:
    """How many there are, and how many were reached."""

    def __init__(self):
        self.reached = 0
        self.all = 0

    def add(self, other):
        self.reached += other.reached
        self.all += other.all

    def note(self, count):
        self.all += 1
        self.reached += count > 0

    def share(self):
        return 100.0 * self.reached / self.all if self.all else 100.0


class Source:
    """One file: its text and how often each line ran."""

    def __init__(self, name, record):
        self.name = name
        self.text = [line.strip() for line in pathlib.Path(name).read_text(encoding="utf-8").splitlines()]
        self.runs = {}
        self.ways = {}
        self.lines, self.branches = Count(), Count()
        for line in record["lines"]:
            if line.get("gcovr/noncode"):
                continue
            number = line["line_number"]
            self.runs[number] = self.runs.get(number, 0) + line["count"]
            for branch in line["branches"]:
                self.branches.note(branch["count"])
                self.ways.setdefault(number, []).append(branch["count"])
        for count in self.runs.values():
            self.lines.note(count)

    def uncovered(self):
        return [(number, self.text[number - 1]) for number, count in sorted(self.runs.items()) if count == 0]


def read_report(path, rooms):
    report = json.loads(pathlib.Path(path).read_text(encoding="utf-8"))
    return {record["file"]: Source(record["file"], record) for record in report["files"]
            if record["file"].split("/")[0] in rooms}


def print_shares(sources, rooms):
    lines, branches = Count(), Count()
    print("%-12s %16s %20s" % ("folder", "lines", "branches"))
    for room in rooms:
        room_lines, room_branches = Count(), Count()
        for source in sources.values():
            if source.name.startswith(room + "/"):
                room_lines.add(source.lines)
                room_branches.add(source.branches)
        print("%-12s %5d of %5d %5.1f %% %5d of %5d %5.1f %%" % (
            room, room_lines.reached, room_lines.all, room_lines.share(),
            room_branches.reached, room_branches.all, room_branches.share()))
        lines.add(room_lines)
        branches.add(room_branches)
    return lines, branches


def read_reasons():
    """(file, text of the line): how many rows of docs/coverage.md say so; a bar in the text is written \\|."""
    reasons = collections.Counter()
    for line in REASONS.read_text(encoding="utf-8").splitlines():
        row = REASON_ROW.match(line)
        if row:
            reasons[row["file"], row["text"].replace("\\|", "|")] += 1
    return reasons


def check_reasons(sources, reasons):
    """A row speaks for one line, also where several lines have the same text."""
    faults = []
    left = reasons.copy()
    for source in sources.values():
        for number, text in source.uncovered():
            left[source.name, text] -= 1
            if left[source.name, text] < 0:
                faults.append("not covered, and no reason in %s: %s:%d: %s" % (REASONS, source.name, number, text))
    for name, text in sorted(reasons):
        if name not in sources or text not in sources[name].text:
            faults.append("%s names a line that is not there: %s: %s" % (REASONS, name, text))
        elif all(text != line for _, line in sources[name].uncovered()):
            print("note: covered by now, its row in %s can go: %s: %s" % (REASONS, name, text))
    return faults


def check_branches(sources):
    """Rows "name | file | text": each line of the file that is exactly this text must have run, and gone every way."""
    faults = []
    for row in BRANCHES.read_text(encoding="utf-8").splitlines():
        if not row or row.startswith("#"):
            continue
        name, file, text = (part.strip() for part in row.split(" | ", 2))
        source = sources.get(file)
        found = [number for number, line in enumerate(source.text, 1) if line == text] if source else []
        runs = [min([source.runs.get(number, 0)] + source.ways.get(number, [])) for number in found]
        if not found:
            faults.append("%s: no such line in %s: %s" % (name, file, text))
            continue
        print("%-60s reached %d times" % (name, min(runs)))
        if min(runs) == 0:
            faults.append("%s: never reached: %s:%d: %s" % (name, file, found[runs.index(0)], text))
    return faults


def main():
    sources = read_report(sys.argv[1], sys.argv[2:])
    faults = check_branches(sources)
    faults += check_reasons(sources, read_reasons())
    lines, branches = print_shares(sources, sys.argv[2:])
    if lines.all == 0 or branches.all == 0:
        faults.append("the report has no lines or no branches: nothing was measured")
    if lines.share() < LINES_AT_LEAST:
        faults.append("fewer than %.0f %% of the lines are covered" % LINES_AT_LEAST)
    if branches.share() < BRANCHES_AT_LEAST:
        faults.append("fewer than %.0f %% of the branches are covered" % BRANCHES_AT_LEAST)
    for fault in faults:
        print("coverage: " + fault)
    print("lines %.1f %% branches %.1f %%" % (lines.share(), branches.share()))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
