"""Random jobs against the oracle, byte for byte on every channel.

KLOV_RANDOM_JOBS says how many, KLOV_RANDOM_SEED where the numbers begin; job n of seed s is the same everywhere.
KLOV_RANDOM_ONLY runs the one job of that number.
"""

import os
import re
import sys
import unittest
from pathlib import Path

import bounded
import generator
import harness
import oracle_options
from outcome import differences, listing_difference

JOBS = int(os.environ.get("KLOV_RANDOM_JOBS", "300"))
SEED = os.environ.get("KLOV_RANDOM_SEED", "1")
ONLY = os.environ.get("KLOV_RANDOM_ONLY")
MOST_REPORTED = 5


class RandomJobs(unittest.TestCase):
    failureException = bounded.Failure

    @classmethod
    def setUpClass(cls):
        harness.prepare()

    def test_the_oracle_knows_every_option_of_the_filter(self):
        source = Path(__file__).resolve().parents[3] / "filter" / "options.cpp"
        keywords = set(re.findall(r'\.keyword = "(\w+)"', source.read_text(encoding="utf-8")))
        self.assertEqual(set(oracle_options.KEYWORDS) ^ keywords, set(),
                         "in filter/options.cpp or in tests/filter/process/oracle_options.py alone")

    def test_every_job_leaves_what_the_oracle_says(self):
        numbers = range(JOBS) if ONLY is None else [int(ONLY)]
        print("random jobs: seed %s, %d jobs" % (SEED, len(numbers)), file=sys.stderr)
        failures = []
        printed = 0
        ppd_path = harness.path("test.ppd").encode()
        for number in numbers:
            job, expected, note = generator.make("%s:%d" % (SEED, number), ppd_path)
            actual = harness.run(job)
            printed += len(expected.stdout) > 0
            found = differences(expected.masked(), actual) or listing_difference(expected, actual)
            if found:
                failures.append("seed %s job %d: %s\n%s" % (SEED, number, note, found))
                if len(failures) == MOST_REPORTED:
                    break
        self.assertFalse(failures, "\n\n" + "\n\n".join(failures))
        if ONLY is None and JOBS >= 100:
            self.assertGreater(printed, JOBS // 2, "most jobs must print, or the test says little")


if __name__ == "__main__":
    unittest.main()
