"""A small stream of every version, cut at every byte: what was there is printed, and what is missing is never a success
that pretends to have it."""

import unittest
from concurrent.futures import ThreadPoolExecutor

import faults
import harness
import oracle
import raster
from cases import JobTest, inked, job, page, roll

WORKERS = 4


class Truncation(JobTest):
    def check_version(self, version, copies):
        work = job(page(*inked(9, 2), copies=copies), page(*(inked(9, 1) + [b"\1\2\3\4\4\4\4\4\4"])), version=version,
                   order=raster.ORDERS[version % 2], ppd=roll(), options="CutMode=1")
        harness.place_ppd(work)
        whole = work.raster
        command = harness.command_line(work)

        def one(size):
            cut = job(ppd=work.ppd, options="CutMode=1")
            cut.raster = whole[:size]
            expected = oracle.run(cut)
            name = "cut-%d" % size
            run = faults.run_command(command, cut, harness.write_file(name + ".ras", cut.raster), name=name)
            return size, run, expected

        sizes = range(len(whole)) if version == 1 else self.sizes_of(len(whole))
        with ThreadPoolExecutor(WORKERS) as pool:
            for size, run, expected in pool.map(one, sizes):
                with self.subTest(version=version, size=size):
                    self.assertEqual((run.status, run.stdout, run.stderr),
                                     (expected.status, expected.stdout, expected.stderr))

    def sizes_of(self, length):
        """Every byte of the first header and the rows; of the long second header every 16th."""
        dense = raster.HEADER2_SIZE + 64
        second = range(dense, dense + raster.HEADER2_SIZE - 128, 16)
        return [*range(dense), *second, *range(second[-1] + 1, length)]

    def test_version_1(self):
        self.check_version(1, 1)

    def test_version_1_with_copies(self):
        self.check_version(1, 2)

    def test_version_2(self):
        self.check_version(2, 1)

    def test_version_3(self):
        self.check_version(3, 1)


if __name__ == "__main__":
    unittest.main()
