"""The binary interface since 0.1.0: nothing went, nothing changed, and what came is in the list of symbols."""

import gzip
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

SOURCE = pathlib.Path(os.environ["KLOV_SOURCE"])
FIRST = pathlib.Path(__file__).with_name("libklov-0.1.0.abi.gz")
LIBRARY = os.environ["KLOV_DESCRIBED"]


def compare(description):
    with tempfile.NamedTemporaryFile(suffix=".abi") as first:
        first.write(description)
        first.flush()
        return subprocess.run(
            [os.environ["KLOV_ABIDIFF"], "--headers-dir2", SOURCE / "include" / "klov", first.name, LIBRARY],
            capture_output=True, text=True, timeout=100, check=False)


def counts(report, what):
    """Removed, changed and added functions or variables, without what libabigail filters out as harmless."""
    line = re.search(what + r" changes summary: (\d+) Removed, (\d+) Changed(?: \(.*?\))?, (\d+) Added", report)
    return tuple(map(int, line.groups()))


class BinaryInterface(unittest.TestCase):
    def test_only_additions_since_the_first_release(self):
        result = compare(gzip.decompress(FIRST.read_bytes()))
        self.assertEqual(result.returncode & ~4, 0, result.stdout + result.stderr)
        listed = (SOURCE / "packaging" / "libklov.symbols").read_text(encoding="ascii")
        later = re.findall(r"^(\w+) (?!0\.1\.0$)", listed, re.M)
        self.assertEqual(counts(result.stdout, "Functions"), (0, 0, len(later)), result.stdout)
        self.assertEqual(counts(result.stdout, "Variables"), (0, 0, 0), result.stdout)
        for name in later:
            self.assertIn(name, result.stdout)

    def test_the_comparison_sees_a_change(self):
        changed = gzip.decompress(FIRST.read_bytes()).replace(b"klov_cmd_select_page_mode", b"klov_cmd_select_old_mode")
        result = compare(changed)
        self.assertEqual(result.returncode & 8, 8, result.stdout)
        self.assertEqual(counts(result.stdout, "Functions")[0], 1, result.stdout)


if __name__ == "__main__":
    unittest.main()
