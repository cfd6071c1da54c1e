"""Jobs that would go on and on, and a system that sets narrow limits."""

import os
import resource
import subprocess
import unittest

import harness
import oracle
from cases import JobTest, hexed, inked, job, page, roll
from session import Session

PULSE = hexed("1b 70 00 00 00")
LOST = b"ERROR:Raster(Unable to write printer data, cups:successful-ok)\n"
LONGEST_TRACE = 256 << 20
LAST_LINE = b"trace is full.\n"
# Repeated without an end worth waiting for: pulses at the start, feeds at the start and at the end.
ENDLESS = {
    "pulses": "ExternalBeepControl=1 ExternalBeepRepeat=2147483647",
    "pulses at the end": "ExternalBeepControl=2 ExternalBeepRepeat=2147483647",
    "feed": "PostPrintAction=1 FormfeedLength=200000000",
    "cut feed": "PostPrintAction=2 CutPaperLength=200000000",
}


class Repeated(JobTest):
    def endless(self, options):
        return job(page(*inked(2, 3)), options=options, ppd=roll())

    def test_the_printer_goes_away(self):
        for name, options in ENDLESS.items():
            with self.subTest(name), Session(self.endless(options)) as session:
                session.send(session.work.raster)
                session.process.stdin.close()
                session.read_printed(100000)
                session.process.stdout.close()
                messages = session.process.stderr.read()
                self.assertEqual(session.process.wait(timeout=harness.TIMEOUT), 1)
                self.assertTrue(messages.endswith(LOST), messages[-200:])

    def test_the_job_is_cancelled(self):
        for name, options in ENDLESS.items():
            with self.subTest(name), Session(self.endless(options)) as session:
                session.send(session.work.raster)
                session.process.stdin.close()
                session.read_printed(100000)
                session.terminate()
                actual = session.finish()
                self.assertEqual(actual.status, 0)
                self.assertLess(len(actual.stdout), 100000 + (2 << 17) + 256 * 263, "it ended soon")
                self.assert_whole_commands(actual.stdout, name)

    def assert_whole_commands(self, printed, name):
        if name == "pulses":
            self.assertEqual(printed, PULSE * (len(printed) // 5))
        elif name == "pulses at the end":
            self.assertTrue(printed.endswith(PULSE * 1000), printed[-20:])
        else:
            self.assertTrue(printed.endswith(hexed("1d 76 30 00 01 00 ff 00") + bytes(255)), printed[-20:])

    def test_counts_that_end_are_not_touched(self):
        for options in ("ExternalBeepControl=1 ExternalBeepRepeat=1000", "PostPrintAction=1 FormfeedLength=20000"):
            self.assertEqual(self.run_job(self.endless(options)).status, 0)


class LongTrace(JobTest):
    def test_it_stops_at_its_limit_and_the_job_goes_on(self):
        pulse = (b"+write_bytes start(data_size:5):\n0x1b 0x70 0x0 0x0 0x0 \n"
                 b"-write_bytes finished(writed:1).\n")
        count = LONGEST_TRACE // len(pulse) + 10000
        work = job(page(*inked(2, 3)), options="ExternalBeepControl=1 ExternalBeepRepeat=%d CutMode=1" % count)
        actual = harness.run(work)
        self.assertEqual(actual.status, 0)
        self.assertEqual(len(actual.stdout), 5 * count + 8 + 6 + 4)
        self.assertTrue(actual.stderr.endswith(b"DEBUG: rastertoklov filter finished (cups:successful-ok)\n"))
        self.assertLessEqual(len(actual.trace), LONGEST_TRACE)
        self.assertGreater(len(actual.trace), LONGEST_TRACE - 1000)
        self.assertTrue(actual.trace.endswith(b"\n" + LAST_LINE), actual.trace[-200:])
        self.assertEqual(actual.trace.count(LAST_LINE), 1)
        begin = actual.trace.index(pulse)
        body = actual.trace[begin:-len(LAST_LINE)]
        whole = len(body) // len(pulse)
        self.assertTrue(body[:whole * len(pulse)] == pulse * whole)
        self.assertTrue(pulse.startswith(body[whole * len(pulse):]))

    def test_two_jobs_at_once_leave_no_holes(self):
        work = job(page(*inked(72, 100)), page(*inked(72, 100)), ppd=roll())
        with Session(work) as session:
            session.send(work.raster[:len(work.raster) // 2])
            session.read_printed(len(oracle.run(work).stdout) // 3)
            other = harness.run(job(page(*inked(2, 3))), keep_trace_place=True)
            session.send(work.raster[len(work.raster) // 2:])
            actual = session.finish()
        self.assertEqual((other.status, actual.status), (0, 0))
        self.assertNotIn(b"\0", actual.trace)
        self.assertTrue(actual.trace.startswith(b"INFO: rastertoklov filter started\n"))
        self.assertEqual(actual.trace.count(b"rastertoklov filter finished\n"), 2)


class NarrowSystem(JobTest):
    def run_limited(self, work, limit, value, **streams):
        harness.place_ppd(work)
        harness.remove_trace()
        with open(harness.write_file("limited.ras", work.raster), "rb") as source:
            streams.setdefault("stdout", subprocess.PIPE)
            return subprocess.run(harness.command_line(work), env=harness.environment(work.ppd_path), stdin=source,
                                  stderr=subprocess.PIPE, timeout=harness.TIMEOUT, check=False,
                                  preexec_fn=lambda: resource.setrlimit(limit, (value, value)), **streams)

    def test_a_limit_on_files_costs_the_trace_and_not_the_job(self):
        work = job(page(*inked(72, 300)), options="CutMode=1")
        expected = oracle.run(work)
        for size in (0, 1, 1000, 20000):
            done = self.run_limited(work, resource.RLIMIT_FSIZE, size)
            self.assertEqual((done.returncode, done.stdout, done.stderr), (0, expected.stdout, expected.stderr))
            self.assertEqual(len(harness.read_trace()), size)

    def test_printer_bytes_beyond_the_limit_are_lost_bytes(self):
        work = job(page(*inked(72, 300)), options="CutMode=1")
        with open(harness.path("limited.bin"), "wb") as out:
            done = self.run_limited(work, resource.RLIMIT_FSIZE, 5000, stdout=out)
        self.assertEqual(done.returncode, 1)
        self.assertTrue(done.stderr.endswith(LOST), done.stderr[-200:])

    @unittest.skipIf(os.environ.get("KLOV_EXEC_PREFIX"), "another program's stack")
    def test_a_stack_smaller_than_the_options(self):
        work = job(page(*inked(2, 3)), ppd=roll())
        work.options = b"note=" + b"x" * 100000 + b" CutMode=1"
        expected = oracle.run(work)
        for size in (192 << 10, 256 << 10, 512 << 10):
            done = self.run_limited(work, resource.RLIMIT_STACK, size)
            self.assertEqual((done.returncode, done.stdout, done.stderr), (0, expected.stdout, expected.stderr), size)


if __name__ == "__main__":
    unittest.main()
