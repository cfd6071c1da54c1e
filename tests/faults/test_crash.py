"""A filter that crashes: the trace holds every step up to there, and the scheduler sees the signal."""

import os
import signal
import unittest

import faults
import harness
import oracle
from cases import JobTest, inked, job, page, roll
from outcome import Outcome
from session import Session

FATAL = (signal.SIGSEGV, signal.SIGBUS, signal.SIGFPE, signal.SIGILL, signal.SIGABRT)
WIDTH, STRIP_ROWS = 9, 1024 // 72
# What compression asks for: the first and only block of this size.
BLOCK = (STRIP_ROWS * WIDTH + 4) * 2


@unittest.skipIf("KLOV_CRASHING_MEMORY" not in os.environ or faults.is_prefixed(), "needs crashing_memory")
class Crashes(JobTest):
    def crash(self, **more):
        """A job that crashes in its second page, and all that a sound one would have traced."""
        pages = [page(*inked(WIDTH, 4)), page(*inked(WIDTH, 4))]
        work = job(*pages, ppd=roll(), options="BitmapCompression=1 Drawer1=1 CutMode=1")
        harness.place_ppd(work)
        run = faults.run(work, environment={"LD_PRELOAD": os.environ["KLOV_CRASHING_MEMORY"],
                                            "FAULT_SIZE": str(BLOCK), **more})
        trace = Outcome(b"", b"", harness.read_trace(), 0).masked().trace
        return run, trace, oracle.run(work).masked().trace

    def test_in_compression(self):
        run, trace, whole = self.crash()
        self.assertEqual(run.status, -signal.SIGSEGV)
        self.assertEqual(trace, whole[:len(trace)])
        # The header of the first band was written, its rows were to follow.
        self.assertTrue(trace.endswith(b"+write_bytes start(data_size:8):\n0x1d 0x76 0x30 0x20 0x9 0x0 0x4 0x0 \n"
                                       b"-write_bytes finished(writed:1).\n"), trace[-300:])
        self.assertEqual(trace.count(b"+print_dotline"), 1)
        self.assertNotIn(b"-print_dotline", trace)

    def test_by_each_fatal_signal(self):
        for number in FATAL:
            with self.subTest(number):
                run, trace, whole = self.crash(FAULT_SIGNAL=str(int(number)))
                self.assertEqual(run.status, -number)
                self.assertEqual(trace, whole[:len(trace)])
                self.assertRegex(trace, rb"\n\+print_dotline\([^\n]*\) start\.\n\Z")

    def test_any_other_signal_is_left_alone(self):
        run, trace, whole = self.crash(FAULT_SIGNAL=str(int(signal.SIGUSR1)))
        self.assertEqual(run.status, -signal.SIGUSR1)
        self.assertNotIn(b"+print_dotline", trace, "only what a flush had sent is there")


class CrashesFromOutside(JobTest):
    def test_while_it_waits(self):
        for number in FATAL:
            work = job(page(*inked(WIDTH, 40)), ppd=roll())
            with Session(work) as running:
                running.send(work.raster[:-1])
                running.read_messages_until(b"process_page start")
                running.process.send_signal(number)
                actual = running.finish()
            self.assertEqual(actual.status, -number)
            self.assertEqual(actual.trace, oracle.run(work).masked().trace[:len(actual.trace)])


if __name__ == "__main__":
    unittest.main()
