"""What the benchmarks share: a private /tmp, PPDs, recordings for the floor program, runs, tables and pictures."""

import collections
import glob
import os
import re
import shutil
import socket
import statistics
import subprocess
import sys
import tempfile

SOURCE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(SOURCE, "tests", "filter", "process"))

import private_tmp  # noqa: E402

TRACE = "/tmp/klov-raster"
STOCK_DIRECTORIES = ("/usr/lib/cups/filter", "/usr/libexec/cups/filter")
SAMPLE_DRV = "/usr/share/cups/drv/sample.drv"

Run = collections.namedtuple("Run", "user system wall memory faults status bytes")
Case = collections.namedtuple("Case", "name program stream ppd options trace output recording")


def make_case(name, program, stream, ppd="-", options="job", trace="on", output="pipe", recording="-"):
    return Case(name, program, stream, ppd, options, trace, output, recording)


class Workshop:
    """A folder for the measurements' files, and the programs that it measures."""

    def __init__(self, build):
        self.filter = os.path.abspath(os.path.join(build, "filter", "rastertoklov"))
        self.floor = os.path.abspath(os.path.join(build, "bench", "bench_floor"))
        self.empty = os.path.abspath(os.path.join(build, "bench", "bench_empty"))
        self.start = os.path.abspath(os.path.join(build, "bench", "bench_start"))
        self.measure = os.path.abspath(os.path.join(build, "bench", "bench_measure"))
        self.drv = os.path.abspath(os.path.join(build, "ppd", "klov.drv"))
        self.private = private_tmp.enter([build, SOURCE, os.getcwd()])
        self.folder = tempfile.mkdtemp(prefix="klov-bench-")

    def path(self, name):
        return os.path.join(self.folder, name)

    def close(self):
        shutil.rmtree(self.folder, ignore_errors=True)
        remove_trace()

    def own_ppd(self, model="KLR-8010"):
        """The PPD of a 576-dot receipt printer, as a queue made from our driver file has it."""
        return self._made_ppd("own", self.drv, r'\*ShortNickName: "%s"' % re.escape(model))

    def stock_ppd(self, program, number):
        """The PPD that CUPS's sample drivers hold for a stock filter's command set."""
        return self._made_ppd("sample", SAMPLE_DRV, r"\*cupsModelNumber: %d\n(?s:.*)%s\"" % (number, program))

    def _made_ppd(self, name, drv, pattern):
        folder = self.path("ppd-" + name)
        if not os.path.isdir(folder):
            subprocess.run(["ppdc", "-d", folder, drv], check=True, stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL)
        for path in sorted(glob.glob(folder + "/*.ppd")):
            with open(path, encoding="latin-1") as file:
                if re.search(pattern, file.read()):
                    return path
        raise RuntimeError("%s has no PPD with %s" % (drv, pattern))

    def record(self, stream, ppd, options="job"):
        """Runs the filter and keeps its flushes for the floor program: each write arrives as a packet of its own."""
        target = self.path("flushes-%d" % len(os.listdir(self.folder)))
        ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        with open(stream, "rb") as source:
            process = subprocess.Popen(command(self.filter, options), env=environment(ppd), stdin=source, stdout=theirs,
                                       stderr=subprocess.DEVNULL)
        theirs.close()
        with ours, open(target, "wb") as file:
            while packet := ours.recv(1 << 20):
                file.write(len(packet).to_bytes(4, sys.byteorder))
                file.write(packet)
        if process.wait() != 0:
            raise RuntimeError("the filter failed on %s" % stream)
        return target

    def floor_case(self, case, name="floor"):
        """The floor program on a case of the filter, held to the same bytes."""
        recording = self.record(case.stream, case.ppd, case.options)
        result = case._replace(name=name, program=self.floor, recording=recording)
        if output_of(case) != output_of(result):
            raise RuntimeError("the floor program does not write the filter's bytes")
        return result

    def run(self, cases, rounds):
        """Runs the cases in turn; returns name -> list of runs."""
        listing = self.path("cases")
        with open(listing, "w", encoding="ascii") as file:
            for case in cases:
                fields = [case.name, case.trace, case.output, case.stream, case.ppd, case.recording]
                file.write("\t".join(fields + command(case.program, case.options)) + "\n")
        done = subprocess.run([self.measure, str(rounds), listing], check=True, stdout=subprocess.PIPE)
        runs = collections.defaultdict(list)
        for line in done.stdout.decode().splitlines():
            name, *numbers = line.split("\t")
            runs[name].append(Run(*map(int, numbers)))
        return runs


def command(program, options="job"):
    return [program, "17", "user", "title", "1", options]


def environment(ppd, recording="-"):
    return {"PATH": "/usr/bin:/bin", "LANG": "en.UTF-8", "PPD": ppd, "FLOOR_BYTES": recording}


def remove_trace():
    if os.path.isdir(TRACE):
        os.rmdir(TRACE)
    elif os.path.lexists(TRACE):
        os.unlink(TRACE)


def output_of(case, prefix=()):
    remove_trace()
    if case.trace == "off":
        os.mkdir(TRACE)
    with open(case.stream, "rb") as source:
        words = [*prefix, *command(case.program, case.options)]
        return subprocess.run(words, env=environment(case.ppd, case.recording), stdin=source, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, check=True).stdout


def stock_filter(name):
    for directory in STOCK_DIRECTORIES:
        path = os.path.join(directory, name)
        if os.access(path, os.X_OK):
            return path
    return None


def cpu(run):
    return run.user + run.system


def best(runs, figure=cpu):
    """The least of many runs: noise of a shared machine only ever adds."""
    return min(map(figure, runs))


def lower_quarter(runs, figure=cpu):
    """Steadier than the least where a run is short and differences are small."""
    return statistics.quantiles(map(figure, runs), n=4)[0]


def middle(runs, figure=cpu):
    return statistics.median(map(figure, runs))


# ---- Counting ----

def count_calls(case, workshop):
    """System calls by name, and in all."""
    listing = workshop.path("strace")
    output_of(case, ["strace", "-f", "-c", "-U", "calls,name", "-o", listing])
    calls = {}
    with open(listing, encoding="ascii") as file:
        for line in file:
            words = line.split()
            if len(words) == 2 and words[0].isdigit():
                calls[words[1]] = int(words[0])
    return calls


Instructions = collections.namedtuple("Instructions", "everything inside own")


def count_instructions(case, workshop):
    """Instructions in all, inside main() with all that it calls, and in the program's own code alone."""
    listing = workshop.path("callgrind")
    output_of(case, ["valgrind", "--tool=callgrind", "--compress-strings=no", "--compress-pos=no",
                     "--callgrind-out-file=" + listing])
    return read_callgrind(listing, os.path.basename(case.program))


def read_callgrind(listing, program):
    """Adds up a profile. A line of costs behind a "calls=" line is the called function's, counted there as its own."""
    everything = inside = own = 0
    thing = function = ""
    called = False
    main_calls = 0
    with open(listing, encoding="utf-8", errors="replace") as file:
        for line in file:
            if line.startswith("ob="):
                thing = os.path.basename(line[3:].strip())
            elif line.startswith("fn="):
                function = line[3:].strip()
            elif line.startswith("calls="):
                called = True
            elif line[:1].isdigit() or line[:1] in "+-*":
                cost = int(line.split()[1])
                in_main = function == "main" and thing == program
                if called:
                    called = False
                    main_calls += cost if in_main else 0
                    continue
                everything += cost
                own += cost if thing == program else 0
                inside += cost if in_main else 0
    return Instructions(everything, inside + main_calls, own)


# ---- Tables ----

def table(head, rows):
    """Text columns; the first is set left, all others right."""
    texts = [list(map(str, row)) for row in [head] + rows]
    widths = [max(len(row[i]) for row in texts) for i in range(len(head))]
    lines = []
    for row in texts:
        cells = [row[0].ljust(widths[0])] + [cell.rjust(width) for cell, width in zip(row[1:], widths[1:])]
        lines.append("  ".join(cells).rstrip())
    lines.insert(1, "  ".join("-" * width for width in widths))
    return "\n".join(lines) + "\n"
