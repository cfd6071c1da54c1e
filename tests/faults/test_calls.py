"""The n-th read or write of a small job goes wrong, for every n: success is only what printed every byte."""

import errno
import os
import unittest

import faults
import harness
import oracle
from cases import JobTest
from outcome import Outcome

LOST = b"ERROR:Raster(Unable to write printer data, cups:successful-ok)\n"
STANDARD_INPUT, STANDARD_OUTPUT = 0, 1
MOST_CALLS = 400


@unittest.skipIf("KLOV_FAILING_CALLS" not in os.environ or faults.is_prefixed(), "needs failing_calls")
class FailingCalls(JobTest):
    def setUp(self):
        self.work = faults.small_job()
        harness.place_ppd(self.work)
        self.report = harness.path("report")
        self.sound = self.run_with("write", 0, "5")[0]
        self.assertEqual(self.sound.status, 0)

    def run_with(self, kind, n, how):
        """A run, how many such calls it made, and the descriptor of the one that went wrong."""
        wrapper = [os.environ["KLOV_FAILING_CALLS"], self.report, kind, str(n), how]
        run = faults.run(self.work, wrapper)
        with open(self.report, encoding="ascii") as file:
            calls, descriptor, _ = map(int, file.read().split())
        return run, calls, descriptor

    def every_call(self, kind, how, check):
        """Lets every call go wrong in turn; gives the number of runs."""
        for n in range(1, MOST_CALLS):
            run, calls, descriptor = self.run_with(kind, n, how)
            if calls < n:
                self.assertEqual(run.stdout, self.sound.stdout)
                return n - 1
            with self.subTest(call=n, how=how, descriptor=descriptor):
                self.assertTrue(run.ended_in_order() or descriptor == 2, (run.status, run.stderr[-200:]))
                self.assertIn(run.status, (0, 1))
                if run.status == 0:
                    self.assertEqual(run.stdout, self.sound.stdout, "a success that lost bytes")
                check(run, descriptor)
        raise AssertionError("the job never made fewer than %d calls" % MOST_CALLS)

    def test_every_write_fails_once(self):
        whole = oracle.run(self.work).masked().trace
        for error in (errno.EINTR, errno.EAGAIN, errno.ENOSPC, errno.EPIPE, errno.EIO):
            def check(run, descriptor, error=error):
                self.assertEqual(run.status, 1 if descriptor == STANDARD_OUTPUT else 0)
                if descriptor == STANDARD_OUTPUT:
                    self.assertTrue(run.stderr.endswith(LOST), run.stderr[-200:])
                elif error == errno.EINTR:
                    trace = Outcome(b"", b"", harness.read_trace(), 0).masked().trace
                    self.assertEqual(trace, whole, "an interrupted trace goes on")

            self.assertGreater(self.every_call("write", str(error), check), 30)

    def test_every_write_fails_and_so_do_all_that_follow_on_its_stream(self):
        def check(run, descriptor):
            self.assertEqual(run.status, 1 if descriptor == STANDARD_OUTPUT else 0)
            self.assertTrue(self.sound.stdout.startswith(run.stdout), "the cut is at the end")

        for error in (errno.ENOSPC, errno.EPIPE):
            self.every_call("write", "+%d" % error, check)

    def test_every_write_is_short(self):
        def check(run, _):
            self.assertEqual((run.status, run.stderr), (0, self.sound.stderr))

        self.every_call("write", "short", check)

    def test_every_read_is_short(self):
        self.every_call("read", "short", lambda run, _: self.assertEqual(run.status, 0))

    def test_every_read_is_interrupted_or_finds_nothing_yet(self):
        for error in (errno.EINTR, errno.EAGAIN):
            self.every_call("read", str(error), lambda run, _: self.assertEqual(run.status, 0))

    def test_every_read_fails(self):
        def check(run, descriptor):
            if descriptor == STANDARD_INPUT:
                self.assertEqual(run.status, 1, "pages that were not read count as lost")

        for error in (errno.EIO, errno.ENOMEM):
            self.every_call("read", str(error), check)


if __name__ == "__main__":
    unittest.main()
