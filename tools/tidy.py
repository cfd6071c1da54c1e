"""Runs clang-tidy over the files that are named, several at once. A file that passed is not read again until itself, a
header of ours that it includes, the checks, its compiler flags or an installed package has changed.

tidy.py BUILD FILE...; BUILD holds compile_commands.json. Files that no target compiles get plain flags.
"""

import concurrent.futures
import hashlib
import json
import os
import re
import shlex
import subprocess
import sys
from pathlib import Path

INCLUDE = re.compile(rb'^\s*#\s*include\s+["<]([^">]+)[">]', re.M)


class Tree:
    def __init__(self, build):
        self.build = build
        self.root = Path.cwd()
        with open(build / "compile_commands.json", encoding="utf-8") as database:
            self.commands = {entry["file"]: entry["command"] for entry in json.load(database)}
        packages = subprocess.run(["dpkg-query", "-W"], capture_output=True, check=True).stdout
        version = subprocess.run(["clang-tidy", "--version"], capture_output=True, check=True).stdout
        self.machine = packages + version

    def flags(self, source):
        command = self.commands.get(str(source))
        if command is not None:
            return shlex.split(command)
        language = ["-std=c11"] if source.suffix == ".c" else ["-std=c++20"]
        return [*language, "-I" + str(self.root), "-I" + str(self.root / "include")]

    def folders(self, flags):
        return [Path(flag[2:]) for flag in flags if flag.startswith("-I" + str(self.root))]

    def included(self, source, folders):
        """The source and all files of ours that it includes, whatever the conditions around the includes say."""
        found, waiting = {}, [source]
        while waiting:
            path = waiting.pop()
            if path in found:
                continue
            found[path] = path.read_bytes()
            for name in INCLUDE.findall(found[path]):
                for folder in (path.parent, *folders):
                    header = Path(os.path.normpath(folder / name.decode()))
                    if header.is_file() and self.root in header.parents:
                        waiting.append(header)
                        break
        return found

    def key(self, source):
        flags = self.flags(source)
        digest = hashlib.sha256(self.machine + repr(flags).encode())
        for path, text in sorted(self.included(source, self.folders(flags)).items()):
            digest.update(b"%s\0%d\0" % (str(path).encode(), len(text)) + text)
        for folder in source.parents:
            if (folder / ".clang-tidy").exists():
                digest.update((folder / ".clang-tidy").read_bytes())
            if folder == self.root:
                break
        return digest.hexdigest()

    def check(self, source):
        """What clang-tidy has to say about a file; nothing when it passed before."""
        stamp = self.build / "tidy" / self.key(source)
        if stamp.exists():
            return ""
        words = ["clang-tidy", "--quiet", "--extra-arg=-Wno-unknown-warning-option"]
        if str(source) in self.commands:
            words += ["-p", str(self.build), str(source)]
        else:
            words += [str(source), "--", *self.flags(source)]
        result = subprocess.run(words, capture_output=True, text=True, check=False)
        if result.returncode == 0:
            stamp.touch()
            return ""
        return "%s:\n%s%s" % (source, result.stdout, result.stderr)


def main(build, *files):
    tree = Tree(Path(build).resolve())
    (tree.build / "tidy").mkdir(exist_ok=True)
    failed = False
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for said in pool.map(tree.check, [Path(file).resolve() for file in files]):
            if said:
                failed = True
                print(said, flush=True)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
