"""The n-th request for memory fails, for every n: each of the filter's own six buffers has its own last word, the two
silent ones lose what they are known to lose, and nothing of ours crashes. What libcups does without memory is its own;
where it crashes, nothing has been printed yet."""

import os
import unittest
from collections import Counter

import faults
import harness
import oracle
from cases import JobTest, blank, inked, job, page, roll

MOST_REQUESTS = 2000
OPTIONS_TEXT = [b"Cannot allocate options buffer"]
DEVICE_TEXTS = [b"Cannot allocate devOptions buffer", b"Cannot allocate rending buffer", b"Cannot allocate dev buffer",
                b"Cannot allocate rending data buffer", b"Cannot allocate data buffer"]


class Report:
    """What the preloaded library tells about a run."""

    def __init__(self, path):
        self.requests, self.failed, self.crashed = 0, [], []
        with open(path, encoding="utf-8") as file:
            for line in file:
                word, *rest = line.split()
                if word == "requests":
                    self.requests = int(rest[0])
                else:
                    setattr(self, word, [tuple(frame.split(":", 1)) for frame in rest])

    def failed_by(self):
        return self.failed[0][0]


def through_cups(chain, program):
    """Whether the innermost part of the way is libcups and what it calls, not the filter."""
    files = [file for file, _ in chain]
    return bool(files) and files[0] != program and any("libcups" in file for file in files[:_first(files, program)])


def _first(files, program):
    return files.index(program) if program in files else len(files)


@unittest.skipIf("KLOV_FAILING_MEMORY" not in os.environ or faults.is_prefixed(), "needs failing_memory")
class FailingMemory(JobTest):
    def setUp(self):
        self.program = os.path.basename(os.environ["KLOV_FILTER"])
        self.report_path = harness.path("report")

    def run_with(self, work, n, size=None):
        harness.place_ppd(work)
        environment = {"LD_PRELOAD": os.environ["KLOV_FAILING_MEMORY"], "FAULT_N": str(n),
                       "FAULT_REPORT": self.report_path}
        if size is not None:
            environment["FAULT_SIZE"] = str(size)
        return faults.run(work, environment=environment), Report(self.report_path)

    def test_every_request_fails_once(self):
        work = faults.small_job()
        sound, _ = self.run_with(work, 0)
        skipped = oracle.run(faults.small_job()).stdout
        self.assertEqual((sound.status, sound.stdout), (0, skipped))
        texts, libcups = [], Counter()
        for n in range(1, MOST_REQUESTS):
            run, report = self.run_with(work, n)
            if report.requests < n:
                break
            with self.subTest(request=n, way=report.failed[:4]):
                if through_cups(report.failed, self.program):
                    libcups[self.outcome_of_libcups(run, report, sound)] += 1
                else:
                    texts += self.text_of_ours(run, report, sound)
        else:
            self.fail("the job never made fewer than %d requests" % MOST_REQUESTS)
        self.assertEqual(texts, OPTIONS_TEXT + DEVICE_TEXTS[:3] + [b"wrong ppd modelname!"] + DEVICE_TEXTS[3:]
                         + [b"page skipped"])
        print("libcups without memory: %s" % dict(libcups))

    def outcome_of_libcups(self, run, report, sound):
        if run.status < 0:
            self.assertTrue(through_cups(report.crashed, self.program), report.crashed)
            self.assertEqual(run.stdout, b"")
            return "crash in libcups or in the C library below it, nothing printed"
        self.assertTrue(run.ended_in_order(), run.stderr[-200:])
        if run.status == 1:
            return "fatal error"
        return "same bytes" if run.stdout == sound.stdout else "an option or choice dropped without a word"

    def text_of_ours(self, run, report, sound):
        """The last word of a run in which the filter itself got no memory."""
        self.assertTrue(run.ended_in_order(), (run.status, run.stderr[-200:]))
        if run.status == 1:
            self.assertEqual(run.stdout, b"")
            return [run.stderr.split(b"ERROR:Raster(")[1].split(b",")[0]]
        if run.stdout == sound.stdout:
            functions = [function for _, function in report.failed]
            self.assertIn("fopencookie", functions, "only the trace can be done without")
            return []
        return [b"page skipped"]

    def test_a_page_that_is_not_to_be_had_for_its_copies_is_skipped(self):
        pages = [page(*inked(9, 3)), page(*([b"\2" * 9] * 20), copies=2), page(*([b"\3" * 9] * 3))]
        rest = oracle.run(job(pages[0], pages[2], ppd=roll())).stdout
        run, _ = self.run_with(job(*pages, ppd=roll()), 1, size=9 * 20)
        self.assertEqual(run.status, 0)
        # The rows of the page stay in the stream and are taken for the next header: nothing sound follows.
        self.assertTrue(rest.startswith(run.stdout) and len(run.stdout) > 0)

    def test_a_band_that_is_not_to_be_had_compressed_is_not_printed(self):
        pages = [page(*(inked(9, 4) + blank(9, 2) + inked(9, 4)))]
        whole = job(*pages, ppd=roll(), options="BitmapCompression=1 CutMode=1")
        sound, _ = self.run_with(whole, 0)
        run, report = self.run_with(whole, 1, size=(14 * 9 + 4) * 2)
        self.assertEqual((run.status, report.requests), (0, 2), "the next band asks again")
        band = sound.stdout[:sound.stdout.index(b"\x1d\x76\x30\x00")]
        self.assertEqual(run.stdout, sound.stdout[len(band):])
        self.assertGreater(len(band), 0)


if __name__ == "__main__":
    unittest.main()
