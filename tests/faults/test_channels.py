"""Slow, impatient and crowded channels, and a trace path that somebody else got hold of first."""

import fcntl
import os
import socket
import subprocess
import threading
import time
import unittest

import faults
import harness
import oracle
import private_tmp
from cases import JobTest, inked, job, page, roll
from session import SMALL_PIPE

LOST = b"ERROR:Raster(Unable to write printer data, cups:successful-ok)\n"
UNREADABLE = b"ERROR:Raster(Unable to read raster data, cups:successful-ok)\n"
NOBODY = 65534
CLOSING = b"DEBUG: rastertoklov filter finished\n"


def long_job():
    return job(page(*inked(72, 600)), page(*inked(72, 600)), ppd=roll(), options="CutMode=1")


def non_blocking(descriptor):
    fcntl.fcntl(descriptor, fcntl.F_SETFL, fcntl.fcntl(descriptor, fcntl.F_GETFL) | os.O_NONBLOCK)


class Channels(JobTest):
    def start(self, work, **streams):
        source = open(harness.write_file("channel.ras", work.raster), "rb")
        self.addCleanup(source.close)
        return harness.start(work, stdin=source, stderr=subprocess.PIPE, **streams)

    def drain(self, descriptor, pause):
        """All that comes, a little at a time."""
        printed = b""
        while piece := os.read(descriptor, 3000):
            printed += piece
            time.sleep(pause)
        os.close(descriptor)
        return printed

    def run_into_pipe(self, work, prepare):
        reading, writing = os.pipe()
        fcntl.fcntl(writing, fcntl.F_SETPIPE_SZ, SMALL_PIPE)
        prepare(writing)
        with self.start(work, stdout=writing) as process:
            os.close(writing)
            messages = []
            reader = threading.Thread(target=lambda: messages.append(process.stderr.read()))
            reader.start()
            printed = self.drain(reading, 0.005)
            reader.join(faults.TIME_LIMIT)
            process.wait(faults.TIME_LIMIT)
        return process.returncode, printed, messages[0]

    def test_a_slow_printer_gets_every_byte(self):
        expected = oracle.run(long_job())
        status, printed, messages = self.run_into_pipe(long_job(), lambda _: None)
        self.assertEqual((status, printed, messages), (0, expected.stdout, expected.stderr))

    def test_a_printer_that_makes_nobody_wait_is_no_silent_loss(self):
        status, printed, messages = self.run_into_pipe(long_job(), non_blocking)
        self.assertEqual(status, 1)
        self.assertTrue(messages.endswith(LOST), messages[-200:])
        self.assertLess(len(printed), len(oracle.run(long_job()).stdout))

    def test_a_patient_file_that_is_non_blocking_gets_every_byte(self):
        path = harness.path("printed")
        descriptor = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC | os.O_NONBLOCK)
        with self.start(long_job(), stdout=descriptor) as process:
            os.close(descriptor)
            process.stderr.read()
        with open(path, "rb") as file:
            self.assertEqual((process.returncode, file.read()), (0, oracle.run(long_job()).stdout))

    def test_raster_that_breaks_off_with_an_error_is_no_success(self):
        """A socket whose far end went away with words unread ends in an error; this one does so after page one."""
        work = long_job()
        near, far = socket.socketpair()
        with near, far:
            far.sendall(work.raster[:4 + (len(work.raster) - 4) // 2])
            near.sendall(b"unread")
            far.close()
            with harness.start(work, stdin=near, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
                printed, messages = process.communicate(timeout=faults.TIME_LIMIT)
        self.assertEqual(process.returncode, 1)
        self.assertTrue(messages.endswith(UNREADABLE), messages[-200:])
        self.assertEqual(messages.count(b"PAGE: "), 1)
        self.assertGreater(len(printed), 72 * 600)
        self.assertTrue(oracle.run(work).stdout.startswith(printed))

    def test_raster_that_comes_slowly_over_a_non_blocking_pipe(self):
        work = faults.small_job()
        expected = oracle.run(work)
        reading, writing = os.pipe()
        non_blocking(reading)
        with harness.start(work, stdin=reading, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            os.close(reading)
            for at in range(0, len(work.raster), 97):
                os.write(writing, work.raster[at:at + 97])
                time.sleep(0.001)
            os.close(writing)
            printed, messages = process.communicate(timeout=faults.TIME_LIMIT)
        self.assertEqual((process.returncode, printed, messages), (0, expected.stdout, expected.stderr))


class TracePath(JobTest):
    """What somebody else put at the trace's path. The kernel's rules for sticky folders protect the victim."""

    def setUp(self):
        if not harness.has_private_tmp() or os.geteuid() != 0:
            self.skipTest("needs a /tmp of its own and the right to give files away")

    def tearDown(self):
        harness.remove_trace()

    def protected(self, kind):
        with open("/proc/sys/fs/protected_" + kind, encoding="ascii") as file:
            if int(file.read()) == 0:
                self.skipTest("this kernel does not protect " + kind)

    def assert_untraced(self):
        work = long_job()
        expected = oracle.run(work)
        actual = harness.run(work, keep_trace_place=True)
        self.assertEqual((actual.status, actual.stdout, actual.stderr), (0, expected.stdout, expected.stderr))

    def test_a_link_that_somebody_else_planted(self):
        self.protected("symlinks")
        victim = harness.write_file("victim", b"precious")
        harness.remove_trace()
        os.symlink(victim, harness.TRACE)
        os.lchown(harness.TRACE, NOBODY, NOBODY)
        self.assert_untraced()
        with open(victim, "rb") as file:
            self.assertEqual(file.read(), b"precious")

    def test_a_fifo_that_somebody_else_planted_and_reads(self):
        self.protected("fifos")
        harness.remove_trace()
        os.mkfifo(harness.TRACE)
        os.chown(harness.TRACE, NOBODY, NOBODY)
        reader = os.open(harness.TRACE, os.O_RDONLY | os.O_NONBLOCK)
        self.assert_untraced()
        self.assertEqual(os.read(reader, 10), b"", "the trace did not go there")
        os.close(reader)

    def test_a_file_that_somebody_else_planted(self):
        self.protected("regular")
        harness.remove_trace()
        with open(harness.TRACE, "wb") as file:
            file.write(b"mine")
        os.chown(harness.TRACE, NOBODY, NOBODY)
        self.assert_untraced()
        with open(harness.TRACE, "rb") as file:
            self.assertEqual(file.read(), b"mine")

    def test_a_disk_that_fills_up_below_the_trace(self):
        folder = harness.path("disk")
        os.makedirs(folder, exist_ok=True)
        private_tmp.mount("tmpfs", folder, "tmpfs", data="size=64k")
        try:
            harness.remove_trace()
            os.symlink(os.path.join(folder, "trace"), harness.TRACE)
            self.assert_untraced()
            self.assertLess(os.stat(os.path.join(folder, "trace")).st_size, 1 << 17)
        finally:
            private_tmp.unmount(folder, lazily=True)


if __name__ == "__main__":
    unittest.main()
