"""SIGTERM at any moment: the page in progress is finished, no byte is lost, the job ends in order with status 0.

The scheduler's side of each pipe is this test, so that a signal is sent at a known point and not after a guess.
"""

import os
import random
import signal
import subprocess
import time
import unittest

import harness
import oracle
import raster
from cases import JobTest, hexed, inked, job, page
from outcome import Outcome, differences
from session import SMALL_PIPE, Session

STORM_RUNS = int(os.environ.get("KLOV_STORM_RUNS", "100"))
STORM_SECONDS = 20.0
DRAWER = hexed("1b 70 00 50 50")


class Cancelling(JobTest):
    def check(self, session, **when):
        actual = session.finish()
        self.assertEqual(differences(oracle.run(session.work, **when).masked(), actual), "")
        self.assertEqual(actual.status, 0)
        self.assertEqual(actual.trace.count(b"+cancel_handler(signum:15) start.\n-cancel_handler finished."), 1)
        return actual

    def three_pages(self, copies=1, version=3):
        pages = [page(*inked(72, 30), copies=copies), page(*([b"\1" * 72] * 30), copies=copies),
                 page(*([b"\2" * 72] * 30), copies=copies)]
        work = job(*pages, options="Drawer1=1 Drawer2=2 CutMode=1", version=version)
        ends = [4]
        for head, rows in pages:
            ends.append(ends[-1] + len(raster.page_bytes(head, rows, version)))
        return work, ends

    def test_before_the_first_header(self):
        for rest in (b"", self.three_pages()[0].raster[4:]):
            work = self.three_pages()[0]
            with Session(work) as session:
                session.send(work.raster[:4])
                session.read_printed(len(DRAWER))
                session.terminate()
                session.send(rest)
                actual = self.check(session, cancelled_before=1)
            self.assertEqual(actual.stdout, DRAWER)
            self.assertNotIn(b"PAGE:", actual.stderr)

    def test_within_the_first_header(self):
        work, _ = self.three_pages()
        with Session(work) as session:
            session.send(work.raster[:1000])
            session.read_printed(len(DRAWER))
            session.terminate()
            session.send(work.raster[1000:])
            self.check(session, cancelled_before=1)

    def test_while_page_2_of_3_prints(self):
        for copies in (1, 2):
            for version in (1, 2, 3):
                work, ends = self.three_pages(copies, version)
                with Session(work) as session:
                    header = raster.HEADER1_SIZE if version == 1 else raster.HEADER2_SIZE
                    so_far = ends[1] + header + 72 if version != 2 else ends[1] + header + 1
                    self.assertLess(so_far, ends[2])
                    session.send(work.raster[:so_far])
                    page1 = oracle.run(work, cancelled_before=2).stdout
                    session.read_printed(len(page1))
                    session.read_messages_until(b"PAGE: 2 %d\n" % copies)
                    session.terminate()
                    session.send(work.raster[so_far:])
                    actual = self.check(session, cancelled_before=3)
                self.assertIn(b"DEBUG: Print job was cancelled (cups:successful-ok)\n", actual.stderr)
                self.assertNotIn(b"PAGE: 3", actual.stderr)
                self.assertNotIn(b"+end_doc", actual.trace)

    def test_during_the_last_page(self):
        work, ends = self.three_pages()
        with Session(work) as session:
            session.send(work.raster[:ends[2] + raster.HEADER2_SIZE + 72])
            session.read_printed(len(oracle.run(work, cancelled_before=3).stdout))
            session.read_messages_until(b"PAGE: 3 1\n")
            session.terminate()
            session.send(work.raster[ends[2] + raster.HEADER2_SIZE + 72:])
            actual = self.check(session, cancelled_before=4)
        self.assertNotIn(b"+end_doc", actual.trace)

    def test_while_the_document_ends(self):
        work = job(page(*inked(72, 30)), options="PostPrintAction=1 FormfeedLength=2000")
        before = len(oracle.run(work, cancelled_before=2).stdout)
        self.assertGreater(len(oracle.run(work).stdout) - before, 3 * SMALL_PIPE)
        with Session(work) as session:
            session.send(work.raster)
            session.process.stdin.close()
            session.read_printed(before + 1)
            session.terminate()
            actual = self.check(session, cancelled_late=True)
        self.assertEqual(actual.stdout, oracle.run(work).stdout)

    def test_while_a_slow_printer_holds_the_page_back(self):
        work = job(page(*inked(72, 600)), page(*inked(72, 600)))
        with Session(work) as session:
            session.send(work.raster[:60000])
            session.read_printed(1)
            session.terminate()
            session.read_printed(30000)
            session.send(work.raster[60000:])
            self.check(session, cancelled_before=2)

    def test_three_signals_during_one_page_are_one_cancellation(self):
        work, ends = self.three_pages()
        with Session(work) as session:
            session.send(work.raster[:ends[0] + raster.HEADER2_SIZE + 72])
            session.read_messages_until(b"PAGE: 1 1\n")
            for _ in range(3):
                session.terminate()
            session.send(work.raster[ends[0] + raster.HEADER2_SIZE + 72:])
            self.check(session, cancelled_before=2)

    def test_before_the_job_has_begun_nothing_is_printed(self):
        work, _ = self.three_pages()
        work.arguments = 7
        path = harness.path("raster.fifo")
        os.mkfifo(path)
        self.addCleanup(os.unlink, path)
        with Session(work, path) as session:
            session.read_messages_until(b"papersavebottom")  # from here on it waits for the FIFO's writer
            session.terminate()
            actual = session.finish()
        self.assertEqual((actual.status, actual.stdout), (-signal.SIGTERM, b""))


class Storm(JobTest):
    """Signals at random moments, one or many in a run: whatever the moment, only whole pages reach the printer."""

    PAGES = 12

    def storm_job(self):
        pages = [page(*[bytes([number + 1]) * 72] * 25) for number in range(self.PAGES)]
        return job(*pages, options="Drawer1=1 Drawer2=2 CutMode=1")

    def possible(self, work):
        ends = [oracle.run(work), oracle.run(work, cancelled_late=True)]
        ends += [oracle.run(work, cancelled_before=number + 1) for number in range(self.PAGES + 1)]
        return [one.masked() for one in ends]

    def storm(self, one_run, check):
        """Runs random jobs until there were enough, or time is up; gives how far each one printed."""
        rng = random.Random(7)
        begun = time.monotonic()
        printed = []
        for number in range(STORM_RUNS // 2):
            if time.monotonic() - begun > STORM_SECONDS:
                break
            actual = one_run(rng)
            with self.subTest(run=number):
                check(actual)
            printed.append(len(actual.stdout))
        return printed

    def test_signals_while_a_slow_printer_takes_its_bytes(self):
        work = self.storm_job()
        expected = self.possible(work)
        self.assertLess(len(work.raster), 65536, "the whole stream must fit the pipe")
        complete = len(expected[0].stdout)

        def one_run(rng):
            with Session(work) as session:
                session.send(work.raster)
                session.process.stdin.close()
                session.read_printed(rng.randrange(1, complete))
                for _ in range(rng.choice((1, 1, 1, 5))):
                    session.terminate()
                return session.finish()

        def check(actual):
            if actual.status == -signal.SIGTERM:  # all was sent, the signal came after the last thing to do
                self.assertEqual(actual.stdout, expected[0].stdout)
                return
            self.assertEqual(actual.status, 0)
            # More signals may have come after the first was handled: at once, or when the job closes.
            while oracle.HANDLER_LINES * 2 in actual.trace:
                actual.trace = actual.trace.replace(oracle.HANDLER_LINES * 2, oracle.HANDLER_LINES)
            if actual.trace.count(oracle.HANDLER_LINES) == 2:
                late = b"Closing.\n" + oracle.HANDLER_LINES
                self.assertIn(late, actual.trace)
                actual.trace = actual.trace.replace(late, b"Closing.\n")
            notes = [differences(one, actual) for one in expected]
            self.assertIn("", notes, notes[0])

        lengths = self.storm(one_run, check)
        self.assertGreater(len(set(lengths)), min(3, len(lengths) // 4), "the signals must meet different pages")

    def test_signals_at_any_time_after_the_start(self):
        work = self.storm_job()
        expected = self.possible(work)
        source = harness.write_file("storm.ras", work.raster)
        begun = time.monotonic()
        harness.run(work)
        usual = time.monotonic() - begun

        def one_run(rng):
            delays = [rng.uniform(0, usual * 1.2)] if rng.random() < 0.7 else [rng.uniform(0, usual / 5)] * 6
            with open(source, "rb") as raster_file, harness.start(
                    work, stdin=raster_file, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
                for delay in delays:
                    time.sleep(delay)
                    if process.poll() is None:
                        process.send_signal(signal.SIGTERM)
                printed, messages = process.communicate(timeout=harness.TIMEOUT)
                return Outcome(printed, messages, harness.read_trace(), process.returncode).masked()

        def check(actual):
            whole = {one.stdout for one in expected}
            if actual.status == -signal.SIGTERM:  # before the job began, or when all of it was sent
                self.assertIn(actual.stdout, whole | {b""})
                return
            self.assertEqual(actual.status, 0)
            told = Outcome(actual.stdout, actual.stderr, None, 0)
            notes = [differences(Outcome(one.stdout, one.stderr, None, 0), told) for one in expected]
            self.assertIn("", notes, notes[0])

        self.storm(one_run, check)


if __name__ == "__main__":
    unittest.main()
