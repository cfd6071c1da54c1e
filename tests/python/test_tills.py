"""Three programs, written from the documents alone: the same receipt, dot for dot."""

import os
import pathlib
import re
import subprocess
import sys
import unittest
import unittest.mock

from klov import printers

SOURCE = pathlib.Path(os.environ["KLOV_SOURCE"])
TOOL = os.environ["KLOV_PREVIEW"]


def output(*command):
    return subprocess.run(command, capture_output=True, check=True, timeout=60).stdout


class Page(unittest.TestCase):
    """docs/python.md: its samples run."""

    def test_samples_run_and_the_first_is_the_picture(self):
        page = (SOURCE / "docs" / "python.md").read_text(encoding="utf-8")
        samples = re.findall(r"^```python\n(.*?)^```$", page, re.M | re.S)
        self.assertEqual(len(samples), 2)
        self.assertEqual(len(samples[0].splitlines()), 8)
        path = os.pathsep.join([os.path.dirname(TOOL), os.environ["PATH"]])
        with unittest.mock.patch.dict(os.environ, {"PATH": path}):
            for sample, name in zip(samples, ("picture", "margin")):
                names = {}
                exec(sample, names)  # noqa: S102
                self.assertTrue(names[name])


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
