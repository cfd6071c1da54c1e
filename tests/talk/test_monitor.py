"""klovstatus as a process between pipes, with a printer at the other end."""

import fcntl
import os
import select
import signal
import subprocess
import tempfile
import threading
import time
import unittest

import cost
from till import CLEAR, Till

MONITOR = os.environ["KLOV_STATUS"]
GREETING = bytes([0x1D, 0x61, 0x0E, 0x1D, 0x72, 1])
END = bytes([0x1D, 0x72, 1, 0x1D, 0x61, 0])
ASK = [bytes([0x10, 4, n]) for n in (4, 2, 3)]
PATIENCE = 20


def receipt(number, rows=200):
    """A picture whose rows tell which receipt they belong to, and a cut."""
    return b"\x1dv0\0" + bytes([72, 0, rows & 255, rows >> 8]) + bytes([0x80 | number]) * 72 * rows + b"\x1dVB\0"


JOB = b"".join(receipt(n) for n in range(20))


def prepare_descriptors(back_channel):
    """Of the program to be started: none but the standard ones, and the back channel as 3."""
    if back_channel is None:
        os.closerange(3, 64)
        return
    os.dup2(back_channel, 3)
    os.closerange(4, 64)


class Job:
    """One run of the monitor."""

    def __init__(self, till=None, back_channel=True, uri="socket://192.0.2.7", cache=None, reasons=None, lang="C"):
        job_read, self.job = os.pipe()
        printer_read, out = os.pipe()
        reply_read, reply_write = os.pipe()
        environment = {"DEVICE_URI": uri, "LANG": lang, "PATH": os.environ["PATH"]}
        if cache:
            environment["CUPS_CACHEDIR"] = cache
        if reasons:
            environment["PRINTER_STATE_REASONS"] = reasons

        self.began = time.monotonic()
        # Out of the way of descriptor 3.
        job_read, out, reply_read = [self.move_up(fd) for fd in (job_read, out, reply_read)]
        self.process = subprocess.Popen([MONITOR, "1", "user", "title", "1", ""], stdin=job_read, stdout=out,
                                        stderr=subprocess.PIPE, env=environment, close_fds=False,
                                        preexec_fn=lambda: prepare_descriptors(reply_read if back_channel else None))
        for fd in (job_read, out, reply_read):
            os.close(fd)
        self.log = ""
        self.lines = []
        threading.Thread(target=self.read_log, daemon=True).start()
        self.printer_read, self.reply_write = printer_read, reply_write
        self.till = till
        if till:
            self.thread = threading.Thread(target=self.serve, daemon=True)
            self.thread.start()

    @staticmethod
    def move_up(fd):
        higher = fcntl.fcntl(fd, fcntl.F_DUPFD, 10)
        os.close(fd)
        os.set_inheritable(higher, False)
        return higher

    def serve(self):
        self.till.serve(self.printer_read, self.reply_write)
        os.close(self.printer_read)
        os.close(self.reply_write)

    def read_log(self):
        with self.process.stderr as log:
            for line in log:
                self.lines.append((time.monotonic(), line.decode().rstrip("\n")))

    def texts(self):
        return [text for _, text in self.lines]

    def when(self, text):
        return next(at for at, line in self.lines if line == text)

    def send(self, data, close=True):
        def write():
            at = 0
            try:
                while at < len(data):
                    at += os.write(self.job, data[at:at + 65536])
            except OSError:
                pass
            if close:
                os.close(self.job)
        threading.Thread(target=write, daemon=True).start()

    def wait(self, patience=PATIENCE):
        status = self.process.wait(patience)
        if self.till:
            self.thread.join(patience)
        time.sleep(0.05)
        return status


def wait_until(condition, what, patience=PATIENCE):
    end = time.monotonic() + patience
    while not condition():
        if time.monotonic() > end:
            raise AssertionError("waited in vain for " + what)
        time.sleep(0.005)


class Monitor(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.cache = folder.name

    def run_job(self, till, data=JOB, **settings):
        job = Job(till, cache=self.cache, **settings)
        self.addCleanup(job.process.kill)
        job.send(data)
        return job

    def test_a_good_printer_gets_the_job_whole_and_the_job_ends_behind_it(self):
        till = Till()
        job = self.run_job(till)
        self.assertEqual(job.wait(), 0)
        self.assertEqual(bytes(till.printed), JOB)
        self.assertEqual(job.texts(), [])
        start = b"".join(ASK) + GREETING
        self.assertEqual(bytes(till.received[:len(start)]), start)
        self.assertEqual(bytes(till.received[len(start):len(start) + len(JOB)]), JOB, "nothing of ours among the job's")
        self.assertTrue(bytes(till.received[len(start) + len(JOB):]).startswith(END))

    def test_the_job_ends_only_when_the_printer_is_through_with_it(self):
        till = Till(speed=len(JOB) / 1.5, buffer=65536)
        job = self.run_job(till)
        self.assertEqual(job.wait(), 0)
        self.assertEqual(bytes(till.printed), JOB)
        self.assertGreater(time.monotonic() - job.began, 1.4)

    def test_paper_out_in_mid_job(self):
        till = Till()
        till.stop_after = len(JOB) // 2
        job = self.run_job(till)
        wait_until(lambda: "STATE: +media-empty-error" in job.texts(), "the state")
        self.assertIn("INFO: Out of paper", job.texts())
        time.sleep(0.3)
        self.assertIsNone(job.process.poll())
        till.set(paper_out=False)
        self.assertEqual(job.wait(), 0)
        self.assertEqual(bytes(till.printed), JOB)
        self.assertIn("STATE: -media-empty-error", job.texts())
        self.assertLess(abs(job.when("STATE: +media-empty-error") - till.events[0][0]), 1)
        self.assertLess(abs(job.when("STATE: -media-empty-error") - till.events[1][0]), 1)

    def test_a_printer_without_paper_at_the_start_executes_only_real_time_requests(self):
        till = Till()
        till.paper_out = True
        job = self.run_job(till)
        wait_until(lambda: "INFO: Out of paper" in job.texts(), "the words")
        time.sleep(1.2)
        with till.lock:
            early = bytes(till.received)
        self.assertEqual(early.replace(b"\x10\x04\x02", b"").replace(b"\x10\x04\x03", b"")
                         .replace(b"\x10\x04\x04", b""), b"")
        changed = time.monotonic()
        till.set(paper_out=False)
        self.assertEqual(job.wait(), 0)
        self.assertEqual(bytes(till.printed), JOB)
        self.assertLess(job.when("STATE: -media-empty-error") - changed, 2)

    def test_cover_and_cutter(self):
        till = Till()
        till.cover_open = True
        job = self.run_job(till)
        wait_until(lambda: "STATE: +cover-open-error" in job.texts(), "the cover")
        till.set(cover_open=False, cutter=True)
        wait_until(lambda: "STATE: +other-error" in job.texts(), "the cutter")
        till.set(cutter=False)
        self.assertEqual(job.wait(), 0)
        self.assertEqual(job.texts(), ["STATE: +cover-open-error", "INFO: Cover is open", "STATE: -cover-open-error",
                                       "STATE: +other-error", "INFO: The cutter is jammed", "STATE: -other-error",
                                       "INFO: Printing"])

    def test_low_paper_stays_shown_and_is_taken_back_by_the_next_job(self):
        till = Till()
        till.paper_low = True
        job = self.run_job(till)
        self.assertEqual(job.wait(), 0)
        self.assertEqual(job.texts(), ["STATE: +media-low-warning"])
        till = Till()
        job = self.run_job(till, reasons="media-low-warning")
        self.assertEqual(job.wait(), 0)
        self.assertEqual(job.texts(), ["STATE: -media-low-warning"])

    def test_a_mute_printer_costs_300_milliseconds_and_no_wait(self):
        till = Till(mute=True)
        job = self.run_job(till, receipt(1, 20))
        self.assertEqual(job.wait(), 0)
        self.assertLess(time.monotonic() - job.began, 1)
        self.assertEqual(bytes(till.printed), receipt(1, 20))
        self.assertEqual(job.texts(),
                         ["DEBUG: klovstatus: the printer does not answer; nobody knows when the job is printed"])

    def test_without_a_back_channel_only_the_job_goes_out_and_at_once(self):
        for settings in ({"back_channel": False}, {"uri": "file:/dev/null"}):
            till = Till()
            job = self.run_job(till, **settings)
            self.assertEqual(job.wait(), 0)
            self.assertEqual(bytes(till.received), JOB, settings)
            self.assertEqual(len(job.texts()), 1)

    def test_a_printer_that_answers_only_in_real_time_is_done_after_two_seconds_of_readiness(self):
        till = Till(half_mute=True, no_automatic=True)
        job = self.run_job(till)
        self.assertEqual(job.wait(), 0)
        self.assertEqual(bytes(till.printed), JOB)
        self.assertGreater(time.monotonic() - job.began, 2)
        self.assertLess(time.monotonic() - job.began, 5)

    def test_bytes_that_look_like_requests_stay_the_jobs(self):
        data = receipt(1) + b"\x1dv0\0\x48\0\x01\0" + (b"\x10\x04\x01" * 24) + receipt(2)
        job = Job(cache=self.cache)
        self.addCleanup(job.process.kill)
        job.send(data)
        received = b""
        while select.select([job.printer_read], [], [], 1)[0]:
            block = os.read(job.printer_read, 65536)
            if not block:
                break
            received += block
        self.assertIn(data, received)
        self.assertEqual(job.wait(), 0)

    def test_an_empty_job_sends_nothing(self):
        till = Till()
        job = self.run_job(till, b"")
        self.assertEqual(job.wait(), 0)
        self.assertEqual(bytes(till.received), b"")
        self.assertEqual(job.texts(), [])

    def test_a_backend_that_dies_is_a_failure(self):
        till = Till()
        till.drop_after = len(JOB) // 2
        job = self.run_job(till)
        self.assertEqual(job.wait(), 1)
        self.assertEqual(job.texts(), ["ERROR: The connection to the printer is lost"])

    def test_after_a_job_that_broke_off_the_next_one_clears_the_printers_buffer_first(self):
        till = Till()
        till.drop_after = len(receipt(0)) // 2
        self.assertEqual(self.run_job(till).wait(), 1)
        self.assertGreater(len(till.pending), 0, "it waits for the rest of a picture")
        job = self.run_job(till)
        self.assertEqual(job.wait(), 0)
        self.assertEqual(till.events[-1][1].split()[0], "cleared")
        self.assertEqual(bytes(till.printed), JOB)
        before = len(till.received)
        self.assertEqual(self.run_job(till).wait(), 0)
        self.assertNotIn(CLEAR, till.received[before:], "cleared once")

    def test_a_killed_monitor_counts_as_broken_off(self):
        till = Till(speed=1e5)
        job = self.run_job(till)
        wait_until(lambda: len(till.printed) > 20000, "some paper")
        job.process.kill()
        job.wait()
        till.speed = 4e6
        before = len(till.received)
        self.assertEqual(self.run_job(till).wait(), 0)
        self.assertTrue(bytes(till.received[before:]).startswith(CLEAR))

    def test_two_jobs_on_one_printer_take_turns(self):
        till = Till(speed=len(JOB) / 0.7)
        first = self.run_job(till)
        wait_until(lambda: len(till.printed) > 0, "the first job")
        other = Till()
        second = self.run_job(other)
        wait_until(lambda: "INFO: Waiting for another job on this printer" in second.texts(), "the words")
        self.assertEqual(bytes(other.received), b"")
        self.assertEqual(first.wait(), 0)
        self.assertEqual(second.wait(), 0)
        self.assertEqual(bytes(other.printed), JOB)

    def test_a_cancel_while_the_paper_is_out_ends_it_at_once(self):
        for at_start in (True, False):
            till = Till()
            if at_start:
                till.paper_out = True
            else:
                till.stop_after = len(JOB) // 2
            job = self.run_job(till)
            wait_until(lambda: "INFO: Out of paper" in job.texts(), "the words")
            time.sleep(0.1)
            job.process.send_signal(signal.SIGTERM)
            cancelled = time.monotonic()
            self.assertEqual(job.process.wait(PATIENCE), 0)
            self.assertLess(time.monotonic() - cancelled, 1)
            till.closing = True

    def test_a_cancelled_page_is_completed(self):
        till = Till(speed=len(JOB) / 1.5)
        job = Job(till, cache=self.cache)
        self.addCleanup(job.process.kill)
        job.send(JOB[:len(JOB) // 2], close=False)
        wait_until(lambda: len(till.printed) > 0, "the job")
        job.process.send_signal(signal.SIGTERM)
        job.send(JOB[len(JOB) // 2:])
        self.assertEqual(job.wait(), 0)
        self.assertEqual(bytes(till.printed), JOB)
        self.assertNotIn(CLEAR, till.received)
        before = len(till.received)
        self.assertEqual(self.run_job(till).wait(), 0)
        self.assertNotIn(CLEAR, till.received[before:], "all was printed: nothing to clear")

    def test_chinese(self):
        till = Till()
        till.paper_out = True
        job = self.run_job(till, lang="zh_CN.UTF-8")
        wait_until(lambda: "INFO: 缺纸" in job.texts(), "the words")
        till.set(paper_out=False)
        self.assertEqual(job.wait(), 0)

    def test_garbage_without_end_does_not_hold_it_up(self):
        for noise in (b"\xff" * 4096, b"\x10" * 4096, bytes(range(256)) * 16):
            job = Job(cache=self.cache)
            self.addCleanup(job.process.kill)
            stop = threading.Event()

            def chatter(job=job, noise=noise, stop=stop):
                os.set_blocking(job.reply_write, False)
                while not stop.is_set():
                    try:
                        os.write(job.reply_write, noise)
                    except BlockingIOError:
                        time.sleep(0.001)
                    except OSError:
                        return
            threading.Thread(target=chatter, daemon=True).start()
            job.send(receipt(1, 20), close=True)
            time.sleep(1)
            stop.set()
            os.close(job.printer_read)
            self.assertIn(job.wait(), (0, 1))

    def test_wrong_use(self):
        result = subprocess.run([MONITOR, "1"], capture_output=True, check=False)
        self.assertEqual(result.returncode, 1)
        self.assertTrue(result.stderr.startswith(b"ERROR: "))

    def test_a_good_job_costs_less_than_two_milliseconds(self):
        if os.environ.get("KLOV_SANITIZE"):
            self.skipTest("sanitizers take their time")
        costs = []
        for _ in range(20):
            milliseconds, printed = cost.one_job()
            self.assertEqual(printed, cost.JOB)
            costs.append(milliseconds)
        self.assertLess(min(costs), 2, costs)


if __name__ == "__main__":
    unittest.main()
