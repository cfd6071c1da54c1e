"""Three programs, written from the documents alone: the same receipt, dot for dot."""

import os
import pathlib
import subprocess
import sys
import unittest

from klov import printers

SOURCE = pathlib.Path(os.environ["KLOV_SOURCE"])
TOOL = os.environ["KLOV_PREVIEW"]


def output(*command):
    return subprocess.run(command, capture_output=True, check=True, timeout=60).stdout


class Tills(unittest.TestCase):
    def test_all_three_print_the_same_receipt(self):
        jobs = [output(os.environ["KLOV_TILL_C"]), output(os.environ["KLOV_TILL_CPP"]),
                output(sys.executable, "-B", SOURCE / "examples" / "till" / "till.py")]
        pictures = [printers.paint(job, tool=TOOL) for job in jobs]
        self.assertGreater(len(pictures[0]), 2000)
        self.assertEqual(pictures[0], pictures[1])
        self.assertEqual(pictures[0], pictures[2])
        other = printers.paint(jobs[0].replace(b"Coffee", b"Toffee"), tool=TOOL)
        self.assertNotEqual(pictures[0], other)

    def test_they_are_as_short_as_the_page_says(self):
        for name, most in (("till.c", 75), ("till.cpp", 50), ("till.py", 25)):
            text = (SOURCE / "examples" / "till" / name).read_text(encoding="ascii")
            self.assertLessEqual(len(text.splitlines()), most, name)


if __name__ == "__main__":
    unittest.main()
