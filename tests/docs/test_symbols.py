"""libklov.so exports what its headers declare, and nothing else; it needs libc, and nothing else."""

import os
import re
import subprocess
import unittest

import headers

LIBRARY = os.environ["KLOV_LIBRARY"]


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, timeout=60, check=True).stdout


class Symbols(unittest.TestCase):
    def test_exported_names_are_the_declared_names(self):
        lines = run("nm", "-D", "--defined-only", LIBRARY).splitlines()
        exported = sorted(line.split()[-1].split("@")[0] for line in lines)
        if os.environ["KLOV_SANITIZE"]:
            exported = [name for name in exported if not name.startswith("__odr_asan")]
        declared = sorted(headers.exported_names())
        self.assertGreater(len(declared), 150)
        self.assertEqual(exported, declared)

    def test_no_name_is_declared_twice(self):
        names = headers.exported_names()
        self.assertEqual(sorted(names), sorted(set(names)))

    @unittest.skipIf(os.environ["KLOV_SANITIZE"], "sanitizers bring their own libraries")
    def test_needs_libc_alone(self):
        needed = re.findall(r"\(NEEDED\).*\[(.*)\]", run("readelf", "-d", LIBRARY))
        self.assertEqual([name for name in needed if not name.startswith("ld-linux")], ["libc.so.6"])

    @unittest.skipIf(os.environ["KLOV_SANITIZE"], "sanitizers bring their own libraries")
    def test_loads_libc_alone(self):
        loaded = [line.split()[0] for line in run("ldd", LIBRARY).splitlines()]
        rest = [name for name in loaded if not re.search(r"linux-vdso|linux-gate|/ld-linux", name)]
        self.assertEqual(rest, ["libc.so.6"])


if __name__ == "__main__":
    unittest.main()
