"""What happens when a channel fails: a job that lost printer bytes never reports success; the trace stops nobody."""

import os
import signal
import subprocess
import time
import unittest

import harness
import oracle
import private_tmp
from cases import JobTest, blank, inked, job, page
from outcome import Outcome, differences
from session import Session

LOST = b"ERROR:Raster(Unable to write printer data, cups:successful-ok)\n"


def small_job():
    return job(page(*(blank(2, 3) + inked(2, 5))), options="CutMode=1 Drawer1=1")


def large_job():
    return job(page(*inked(72, 4000)), page(*inked(72, 20)), options="CutMode=1")


class PrinterBytes(JobTest):
    def run_into(self, work, stdout):
        return harness.run(work, stdout=stdout)

    def test_a_full_disk(self):
        for work in (small_job(), large_job(), job(options="CutMode=1"), job(page(b"\1"), options="CutMode=1")):
            with open("/dev/full", "wb") as full:
                actual = self.run_into(work, full)
            self.assertEqual(actual.status, 1)
            self.assertTrue(actual.stderr.endswith(LOST), actual.stderr[-200:])

    def test_a_full_disk_and_nothing_to_print(self):
        with open("/dev/full", "wb") as full:
            self.assertEqual(self.run_into(job(), full).status, 0)

    def test_a_backend_that_is_gone(self):
        for work in (small_job(), large_job()):
            reading, writing = os.pipe()
            os.close(reading)
            try:
                actual = self.run_into(work, writing)
            finally:
                os.close(writing)
            self.assertEqual(actual.status, 1)
            self.assertTrue(actual.stderr.endswith(LOST), actual.stderr[-200:])

    def test_a_backend_that_goes_away_in_mid_job(self):
        work = large_job()
        source = open(harness.write_file("large.ras", work.raster), "rb")
        reading, writing = os.pipe()
        with source, harness.start(work, stdin=source, stdout=writing, stderr=subprocess.PIPE) as process:
            os.close(writing)
            os.read(reading, 1000)
            os.close(reading)
            _, messages = process.communicate(timeout=harness.TIMEOUT)
        self.assertEqual(process.returncode, 1)
        self.assertTrue(messages.endswith(LOST), messages[-200:])

    def test_standard_output_is_closed(self):
        for work in (small_job(), large_job()):
            source = open(harness.write_file("closed.ras", work.raster), "rb")
            with source, harness.start(work, closed=("stdout",), stdin=source, stderr=subprocess.PIPE) as process:
                messages = process.stderr.read()
                process.wait(timeout=harness.TIMEOUT)
            self.assertEqual(process.returncode, 1)
            self.assertTrue(messages.endswith(LOST), messages[-200:])
            self.assertNotIn(b"\x1d\x76\x30", harness.read_trace() or b"", "printer bytes went into the trace")


class Messages(JobTest):
    def assert_same_print(self, work, **how):
        expected = oracle.run(work)
        actual = harness.run(work, **how)
        self.assertEqual(differences(Outcome(expected.stdout, b"", expected.masked().trace, 0),
                                     Outcome(actual.stdout, b"", actual.trace, actual.status)), "")

    def test_a_full_log_changes_nothing(self):
        with open("/dev/full", "wb") as full:
            self.assert_same_print(large_job(), stderr=full)

    def test_a_scheduler_that_is_gone_changes_nothing(self):
        reading, writing = os.pipe()
        os.close(reading)
        try:
            self.assert_same_print(small_job(), stderr=writing)
        finally:
            os.close(writing)

    def test_standard_error_is_closed(self):
        work = small_job()
        expected = oracle.run(work).masked()
        source = open(harness.write_file("closed.ras", work.raster), "rb")
        with source, harness.start(work, closed=("stderr",), stdin=source, stdout=subprocess.PIPE) as process:
            printed = process.stdout.read()
            process.wait(timeout=harness.TIMEOUT)
        self.assertEqual((process.returncode, printed), (0, expected.stdout))
        self.assertNotIn(b"DEBUG: CUPS printing options \n", harness.read_trace(), "messages went into the trace")

    def test_standard_input_is_closed_and_a_file_is_named(self):
        work = small_job()
        work.arguments = 7
        expected = oracle.run(work).masked()
        path = harness.write_file("named.ras", work.raster)
        with harness.start(work, path, closed=("stdin",), stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            printed, messages = process.communicate(timeout=harness.TIMEOUT)
        self.assertEqual(differences(Outcome(expected.stdout, expected.stderr, None, 0),
                                     Outcome(printed, messages, None, process.returncode)), "")

    def test_standard_input_is_closed_and_no_file_is_named(self):
        work = small_job()
        with harness.start(work, closed=("stdin",), stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            printed, messages = process.communicate(timeout=harness.TIMEOUT)
        self.assertEqual((process.returncode, printed), (1, b""))
        self.assertTrue(messages.endswith(b"ERROR:Raster(cupsRasterOpen failed, cups:successful-ok)\n"))


class TraceFirst(JobTest):
    def test_what_the_printer_has_got_is_already_in_the_trace(self):
        work = job(*[page(*inked(72, 100))] * 2, options="CutMode=1")
        complete = oracle.run(work).stdout
        self.assertLess(len(work.raster), 65536, "the whole stream must fit the pipe")
        with Session(work) as session:
            session.send(work.raster)
            session.process.stdin.close()
            for got in range(1, len(complete) + 1, 997):
                session.read_printed(got)
                dumped = bytes(int(word, 16) for line in harness.read_trace().split(b"\n")
                               if line.startswith(b"0x") for word in line.split())
                self.assertGreaterEqual(len(dumped), got)
                self.assertEqual(dumped[:got], session.printed)
            self.assertEqual(session.finish().stdout, complete)


class KilledWhileWaiting(JobTest):
    """Lines gather only while the filter works within memory: whenever it waits, the trace holds all of them."""

    STRIP_ROWS = 1024 // 72

    def killed_trace(self, session):
        session.process.kill()
        session.process.wait()
        return Outcome(b"", b"", harness.read_trace(), 0).masked().trace

    def test_for_raster(self):
        strips = {b"-print_dotline finished(0) success.\n": inked(72, self.STRIP_ROWS),
                  b"-print_blank finished(0) success.\n": blank(72, self.STRIP_ROWS)}
        for ending, rows in strips.items():
            for strips_sent in (1, 2, 3):  # more would fill the small pipe to the printer
                work = job(page(*rows * 10), options="PaperSaveBottom=0")
                complete = oracle.run(work).masked().trace
                head = len(work.raster) - 72 * len(rows) * 10
                with Session(work) as session:
                    session.send(work.raster[:head + 72 * len(rows) * strips_sent])
                    session.read_messages_until(b"process_page start")
                    while harness.read_trace().count(ending) < strips_sent:
                        self.assertLess(time.monotonic(), session.deadline, harness.read_trace()[-300:])
                        time.sleep(0.002)
                    trace = self.killed_trace(session)
                self.assertTrue(trace.endswith(ending), trace[-300:])
                self.assertEqual(trace, complete[:len(trace)])

    def test_for_a_slow_printer(self):
        work = job(page(*inked(72, 600)))
        complete = oracle.run(work).masked()
        with Session(work) as session:
            session.send(work.raster)
            session.read_messages_until(b"process_page start")
            before, after = None, harness.read_trace()
            while before != after:
                time.sleep(0.1)
                before, after = after, harness.read_trace()
            trace = self.killed_trace(session)
            printed = session.process.stdout.read()
        self.assertEqual(trace, complete.trace[:len(trace)])
        self.assertTrue(trace.endswith(b"-write_bytes finished(writed:1).\n"), trace[-300:])
        self.assertEqual(trace.count(b"+print_dotline"), trace.count(b"-print_dotline") + 1)
        self.assertEqual(printed, complete.stdout[:len(printed)])
        self.assertGreater(len(printed), 0)


class NoTrace(JobTest):
    """A trace that cannot be had is no concern of the job."""

    def tearDown(self):
        harness.remove_trace()

    def assert_untraced(self):
        for work in (small_job(), job(options="BitmapCompression=1")):
            expected = oracle.run(work)
            actual = harness.run(work, keep_trace_place=True)
            expected.trace = actual.trace
            self.assertEqual(differences(expected, actual), "")

    def test_a_directory_in_its_place(self):
        harness.remove_trace()
        os.mkdir(harness.TRACE)
        self.assert_untraced()
        self.assertEqual(os.listdir(harness.TRACE), [])

    def test_a_fifo_that_nobody_reads(self):
        harness.remove_trace()
        os.mkfifo(harness.TRACE)
        self.assert_untraced()

    def test_a_link_to_a_full_disk(self):
        harness.remove_trace()
        os.symlink("/dev/full", harness.TRACE)
        self.assert_untraced()

    def test_a_link_into_nowhere(self):
        harness.remove_trace()
        os.symlink("/no/such/folder/trace", harness.TRACE)
        self.assert_untraced()

    def test_a_read_only_tmp(self):
        if not harness.has_private_tmp():
            self.skipTest("needs a /tmp of its own")
        work = small_job()
        expected = oracle.run(work)
        harness.place_ppd(work)
        harness.remove_trace()
        source = harness.write_file("stdin.ras", work.raster)
        flags = private_tmp.MS_REMOUNT | private_tmp.MS_BIND
        private_tmp.mount("/tmp", "/tmp", None, private_tmp.MS_BIND | private_tmp.MS_REC)
        try:
            private_tmp.mount(None, "/tmp", None, flags | private_tmp.MS_RDONLY)
            with open(source, "rb") as standard_input:
                done = subprocess.run(harness.command_line(work), env=harness.environment(work.ppd_path),
                                      stdin=standard_input, capture_output=True, timeout=harness.TIMEOUT, check=False)
            self.assertIsNone(harness.read_trace())
        finally:
            private_tmp.unmount("/tmp", lazily=True)
        self.assertEqual(differences(Outcome(expected.stdout, expected.stderr, None, 0),
                                     Outcome(done.stdout, done.stderr, None, done.returncode)), "")

    def test_a_fifo_that_somebody_reads_gets_the_whole_trace(self):
        harness.remove_trace()
        os.mkfifo(harness.TRACE)
        work = small_job()
        expected = oracle.run(work).masked()
        reader = subprocess.Popen(["cat", harness.TRACE], stdout=subprocess.PIPE)
        # A writer of our own tells that the reader has opened its end, and keeps the FIFO alive till the filter runs.
        keeper = os.open(harness.TRACE, os.O_WRONLY)
        actual = harness.run(work, keep_trace_place=True)
        os.close(keeper)
        trace, _ = reader.communicate(timeout=harness.TIMEOUT)
        actual.trace = trace
        self.assertEqual(differences(expected, actual.masked()), "")


class Hold(JobTest):
    def test_the_filter_waits_while_the_hold_file_is_there(self):
        if not harness.has_private_tmp() or os.path.exists(os.path.dirname(harness.HOLD_FILE)):
            self.skipTest("needs a /home of its own")
        os.mkdir(os.path.dirname(harness.HOLD_FILE))
        self.addCleanup(os.rmdir, os.path.dirname(harness.HOLD_FILE))
        open(harness.HOLD_FILE, "wb").close()
        work = small_job()
        source = open(harness.write_file("hold.ras", work.raster), "rb")
        with source, harness.start(work, stdin=source, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            try:
                self.wait_until_busy(process)
                self.assertEqual(harness.read_trace(), b"", "the trace is opened before the wait, and nothing is in it")
                self.assertIsNone(process.poll())
            finally:
                os.unlink(harness.HOLD_FILE)
            printed, messages = process.communicate(timeout=harness.TIMEOUT)
        expected = oracle.run(work)
        self.assertEqual(differences(Outcome(expected.stdout, expected.stderr, None, 0),
                                     Outcome(printed, messages, None, process.returncode)), "")

    def wait_until_busy(self, process):
        """Until the process has used up a fifth of a second: far more than a job of this size takes."""
        while process.poll() is None:
            with open("/proc/%d/stat" % process.pid, encoding="ascii") as file:
                fields = file.read().rsplit(")", 1)[1].split()
            if int(fields[11]) + int(fields[12]) >= os.sysconf("SC_CLK_TCK") // 5:
                return
            signal.sigtimedwait([signal.SIGCHLD], 0.01)


if __name__ == "__main__":
    unittest.main()
