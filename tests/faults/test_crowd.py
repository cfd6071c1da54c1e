"""Many filters side by side, and one job without an end in sight."""

import os
import subprocess
import unittest
from concurrent.futures import ThreadPoolExecutor

import faults
import harness
import oracle
import raster
from cases import JobTest, blank, inked, job, page, roll

CROWD = 50
PAGES = 10000
FLAT = 1 << 20


class Crowd(JobTest):
    def job_of(self, number):
        ink = bytes((number + 1,))
        pages = [page(*(blank(9, number % 7) + [ink * 9] * (20 + number)), copies=1 + number % 3)] * 4
        return job(*pages, ppd=roll(), version=1 + number % 3, order=raster.ORDERS[number % 2],
                   options="CutMode=%d Drawer1=%d BitmapCompression=%d" % (number % 3, number % 2, number % 2))

    def test_fifty_filters_side_by_side(self):
        """They share the trace's path, and nothing else."""
        jobs = [self.job_of(number) for number in range(CROWD)]
        harness.place_ppd(jobs[0])
        harness.remove_trace()
        processes = []
        for number, work in enumerate(jobs):
            with open(harness.write_file("crowd-%d.ras" % number, work.raster), "rb") as source:
                processes.append(subprocess.Popen(harness.command_line(work), env=harness.environment(work.ppd_path),
                                                  stdin=source, stdout=subprocess.PIPE, stderr=subprocess.PIPE))
        with ThreadPoolExecutor(CROWD) as pool:
            ends = list(pool.map(lambda process: process.communicate(timeout=faults.TIME_LIMIT), processes))
        for number, (work, process, (printed, messages)) in enumerate(zip(jobs, processes, ends)):
            with self.subTest(number=number):
                expected = oracle.run(work)
                self.assertEqual((process.returncode, printed, messages),
                                 (0, expected.stdout, expected.stderr))


class EndlessJob(JobTest):
    def run_pages(self, count):
        """A job of so many pages through pipes; gives its length, its number of pages and the most memory in use."""
        sound = raster.page_bytes(*page(*inked(9, 2)), version=3)
        work = job(ppd=roll(), options="CutMode=1 PostPrintAction=3")
        harness.place_ppd(work)
        printed = harness.path("endless.out")
        with open(printed, "wb") as out, open(harness.path("endless.err"), "wb") as err:
            process = subprocess.Popen(harness.command_line(work), env=harness.environment(work.ppd_path),
                                       stdin=subprocess.PIPE, stdout=out, stderr=err)
            process.stdin.write(work.raster[:4])
            for _ in range(count // 100):
                process.stdin.write(sound * 100)
            process.stdin.close()
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
        self.assertEqual(process.returncode, 0)
        with open(harness.path("endless.err"), "rb") as err:
            pages = sum(line.startswith(b"PAGE: ") for line in err)
        return os.stat(printed).st_size, pages, usage.ru_maxrss * 1024

    def test_ten_thousand_pages_take_no_more_memory_than_a_hundred(self):
        size, pages, memory = self.run_pages(100)
        long_size, long_pages, long_memory = self.run_pages(PAGES)
        self.assertEqual((pages, long_pages), (100, PAGES))
        self.assertEqual(long_size, size * PAGES // 100)
        if not faults.is_sanitized():
            self.assertLess(long_memory, memory + FLAT)


if __name__ == "__main__":
    unittest.main()
