"""Changes one operator of the encoders or of the reading and printing code at a time, and sees whether the unit tests
notice.

usage: tools/mutate.py [--count N] [--seed S] [--jobs J] [--at-least PERCENT] [--only FILE] [--build FOLDER]

Each mutant is a copy of one source file, compiled and linked apart from the tree with the commands of an ordinary
build, and run against the unit programs of its room. A test that fails, a crash or a program that does not end kills
it. The sample is the same for a seed: mutants are ordered by a hash of their text, the kinds taking turns. Fails when
fewer than PERCENT (85) are killed. docs/mutation.md explains the mutants that stay alive.
"""

import argparse
import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import time

PAGE = pathlib.Path("docs/mutation.md")

PRINTING = ["printops_tests", "band_memory_tests"]
# Source file: the objects that it ends up in (a header has several), and the programs that test it.
TARGETS = {
    "cmds/contract.h": (None, ["cmds_tests"]),
    "printops/band.cpp": (["printops/band.cpp"], PRINTING),
    "printops/blank.cpp": (["printops/blank.cpp"], PRINTING),
    "printops/compression.cpp": (["printops/compression.cpp"], PRINTING),
    "printops/rows.h": (["printops/band.cpp", "printops/compression.cpp", "filter/page.cpp"],
                        ["printops_tests", "filter_unit_tests"]),
    "printops/output.cpp": (["printops/output.cpp"], PRINTING),
    "filter/page.cpp": (["filter/page.cpp"], ["filter_unit_tests", "filter_memory_tests"]),
    "filter/raster_guard.cpp": (["filter/raster_guard.cpp"], ["raster_guard_tests"]),
    "filter/raster_input.cpp": (["filter/raster_input.cpp"], ["filter_unit_tests", "raster_guard_tests"]),
    "diag/trace.cpp": (["diag/trace.cpp"], ["trace_tests"]),
}
for path in sorted(pathlib.Path("cmds").glob("*.cpp")):
    TARGETS[str(path)] = ([str(path)], ["cmds_tests"])
TARGETS["cmds/contract.h"] = (sorted(str(path) for path in pathlib.Path("cmds").glob("*.cpp")), ["cmds_tests"])

# clang-format puts spaces around binary operators, and none into types, so that the text tells them apart.
REPLACEMENTS = {
    "relational": [("<", "<="), ("<=", "<"), (">", ">="), (">=", ">"), ("==", "!="), ("!=", "==")],
    "arithmetic": [("+", "-"), ("-", "+"), ("*", "/"), ("/", "*"), ("%", "/"), ("<<", ">>"), (">>", "<<"), ("&", "|"),
                   ("|", "&"), ("^", "&"), ("+=", "-="), ("-=", "+="), ("|=", "&=")],
    "logical": [("&&", "||"), ("||", "&&")],
}
BLANKED = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|^#[^\n]*|static_assert\(.*?\);|template <[^\n]*',
                     re.S | re.M)
# Octal numbers are file modes, which are none of the units' business.
NUMBER = re.compile(r"(?<![\w.'])(0x[0-9A-Fa-f]+|0|[1-9]\d*)([uUlL]*)(?![\w.'])")
RETURN = re.compile(r"\breturn ([^;{}]+);")
STATEMENT = re.compile(r"^[ ]+((?:\*?[\w.>\-\[\]:*]+(?:\+\+)? ?(?:[-+|]?= [^;=][^;{}]*|\([^;{}]*\))"
                       r"|break|continue|return));", re.M)
NEGATION = re.compile(r"!(?=[\w(])")


class Mutant:
    def __init__(self, path, kind, text, start, end, replacement):
        self.path, self.kind = path, kind
        self.mutated = text[:start] + replacement + text[end:]
        self.line = text.count("\n", 0, start) + 1
        first = text.rfind("\n", 0, start) + 1
        last = text.find("\n", end)
        self.before = " ".join(text[first:last].split())
        self.after = " ".join((text[first:start] + replacement + text[end:last]).split())
        self.place = "%s|%s|%s|%d" % (path, self.before, self.after, text[:start].count(self.before))

    def order(self, seed):
        return hashlib.sha256(("%s|%s" % (seed, self.place)).encode()).hexdigest()


def blank(match):
    return re.sub(r"[^\n]", " ", match.group())


def return_value(value):
    known = {"true": "false", "false": "true", "KLOV_OK": "KLOV_E_PARAMETER"}
    if value in known:
        return known[value]
    return "KLOV_OK" if value.startswith("KLOV_E_") else "{}"


def mutants_of(path):
    text = pathlib.Path(path).read_text(encoding="utf-8")
    code = BLANKED.sub(blank, text)
    for kind, pairs in REPLACEMENTS.items():
        for old, new in pairs:
            for match in re.finditer("(?<= )%s(?= )" % re.escape(old), code):
                yield Mutant(path, kind, text, match.start(), match.end(), new)
    for match in NEGATION.finditer(code):
        yield Mutant(path, "logical", text, match.start(), match.end(), "")
    for match in NUMBER.finditer(code):
        value = int(match.group(1), 0)
        yield Mutant(path, "constant", text, match.start(), match.end(), "%d%s" % (value + 1, match.group(2)))
        if value > 0:
            yield Mutant(path, "constant", text, match.start(), match.end(), "%d%s" % (value - 1, match.group(2)))
    for match in RETURN.finditer(code):
        start, end = match.span(1)
        if match.group(1) != "nullptr":
            yield Mutant(path, "return value", text, start, end, return_value(match.group(1)))
    for match in STATEMENT.finditer(code):
        yield Mutant(path, "removed statement", text, match.start(1), match.end(1), "")


def sample(count, seed, only):
    """Every kind takes its turn, until it has none left."""
    kinds = {}
    for path in TARGETS:
        if only and path != only:
            continue
        for mutant in mutants_of(path):
            kinds.setdefault(mutant.kind, []).append(mutant)
    total = sum(len(mutants) for mutants in kinds.values())
    queues = [sorted(mutants, key=lambda m: m.order(seed), reverse=True) for _, mutants in sorted(kinds.items())]
    chosen = []
    while len(chosen) < count and any(queues):
        for queue in queues:
            if queue and len(chosen) < count:
                chosen.append(queue.pop())
    return chosen, total


class Build:
    """An ordinary build of the unit programs, and its commands."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder).resolve()
        programs = sorted({program for _, programs in TARGETS.values() for program in programs})
        if not (self.folder / "build.ninja").exists():
            self.call("cmake", "-S", ".", "-B", str(self.folder), "-G", "Ninja", "-DKLOV_TESTS=ON",
                      "-DKLOV_PREVIEW=OFF", "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS=-O1 -g0")
        self.call("cmake", "--build", str(self.folder), "-j", str(os.cpu_count()), "--target", *programs)
        database = self.call("ninja", "-C", str(self.folder), "-t", "compdb")
        root = pathlib.Path.cwd()
        self.compilations = {os.path.relpath(entry["file"], root): entry for entry in json.loads(database)
                             if entry["file"].endswith(".cpp") and entry["output"].endswith(".o")
                             and "fuzz" not in entry["output"]}
        self.links = {program: self.link_command(program) for program in programs}

    @staticmethod
    def call(*command):
        return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout

    def link_command(self, program):
        """The linker's part of the last build step, which goes on to look for the program's test cases."""
        commands = self.call("ninja", "-C", str(self.folder), "-t", "commands", program).splitlines()
        links = [part.strip() for line in commands for part in line.split("&&")
                 if re.search(r" -o \S*%s( |$)" % program, part)]
        return shlex.split(links[-1])

    def program_of(self, link):
        return link[link.index("-o") + 1]


def run(command, folder, seconds):
    """None when it did not end in time."""
    try:
        return subprocess.run(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, timeout=seconds, check=False).returncode
    except subprocess.TimeoutExpired:
        return None


def compile_mutant(build, mutant, folder):
    """Object file of the build: the mutant's own; None when the mutant is no program."""
    overlay = pathlib.Path(folder) / mutant.path
    overlay.parent.mkdir(parents=True)
    overlay.write_text(mutant.mutated, encoding="utf-8")
    objects = {}
    for number, source in enumerate(TARGETS[mutant.path][0]):
        entry = build.compilations[source]
        command = shlex.split(entry["command"])
        mine = os.path.join(folder, "%d.o" % number)
        command[command.index("-o") + 1] = mine
        command[command.index("-MF") + 1] = mine + ".d"
        if source == mutant.path:
            command[command.index("-c") + 1] = str(overlay)
        command[1:1] = ["-I", folder, "-w"]
        if run(command, entry["directory"], 120) != 0:
            return None
        objects[entry["output"]] = mine
    return objects


def test_mutant(build, mutant, seconds):
    """"killed", "survived" or "invalid"."""
    with tempfile.TemporaryDirectory(prefix="klov-mutant-") as folder:
        objects = compile_mutant(build, mutant, folder)
        if objects is None:
            return "invalid"
        for program in TARGETS[mutant.path][1]:
            link = [objects.get(word, word) for word in build.links[program]]
            mine = os.path.join(folder, program)
            link[link.index("-o") + 1] = mine
            if run(link, build.folder, 120) != 0:
                return "invalid"
            if run([mine, "--gtest_fail_fast", "--gtest_brief=1"], folder, seconds[program]) != 0:
                return "killed"
    return "survived"


def times_of(build):
    """How long each program takes at most: far longer than without a mutant, on a machine with other work."""
    seconds = {}
    for program, link in build.links.items():
        started = time.monotonic()
        if run([str(build.folder / build.program_of(link)), "--gtest_brief=1"], build.folder, 300) != 0:
            sys.exit("mutate: %s fails without any mutant" % program)
        seconds[program] = 5 + 5 * (time.monotonic() - started)
    return seconds


def is_explained(mutant, page):
    row = "| `%s` | `%s` | `%s` |" % (mutant.path, mutant.before.replace("|", "\\|"), mutant.after.replace("|", "\\|"))
    return row in page


def report(mutants, results, total, seed):
    page = PAGE.read_text(encoding="utf-8") if PAGE.exists() else ""
    kinds = sorted({mutant.kind for mutant in mutants})
    print("%-18s %8s %8s %8s" % ("kind", "tried", "killed", "alive"))
    for kind in kinds:
        of_kind = [result for mutant, result in zip(mutants, results) if mutant.kind == kind and result != "invalid"]
        print("%-18s %8d %8d %8d" % (kind, len(of_kind), of_kind.count("killed"), of_kind.count("survived")))
    for mutant, result in zip(mutants, results):
        if result == "survived":
            word = "explained" if is_explained(mutant, page) else "NOT EXPLAINED"
            print("alive, %s: %s:%d\n    %s\n    %s" % (word, mutant.path, mutant.line, mutant.before, mutant.after))
    valid = len(results) - results.count("invalid")
    share = 100.0 * results.count("killed") / max(valid, 1)
    print("seed %s, %d of %d possible mutants, %d of them no programs" % (
        seed, len(mutants), total, results.count("invalid")))
    print("mutants %d killed %d (%.1f %%)" % (valid, results.count("killed"), share))
    return share if valid else 0.0


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--count", type=int, default=180)
    parser.add_argument("--seed", default="1")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--at-least", type=float, default=85.0)
    parser.add_argument("--only", help="one source file")
    parser.add_argument("--build", default="build/mutation")
    arguments = parser.parse_args()
    mutants, total = sample(arguments.count, arguments.seed, arguments.only)
    build = Build(arguments.build)
    seconds = times_of(build)
    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        results = list(pool.map(lambda mutant: test_mutant(build, mutant, seconds), mutants))
    return 0 if report(mutants, results, total, arguments.seed) >= arguments.at_least else 1


if __name__ == "__main__":
    os.chdir(pathlib.Path(__file__).resolve().parent.parent)
    sys.exit(main())
