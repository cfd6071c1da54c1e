"""The port monitor and klovctl with the virtual printer as their partner: moods through its health file, paper by its
--save."""

import os
import re
import shutil
import socket
import subprocess
import tempfile
import time
import unittest

import raster
from queues import TalkingScheduler, wait_until
from scheduler import CANCELED, free_port

PREVIEW = os.environ["KLOV_PREVIEW"]
CTL = os.environ["KLOV_CTL"]
RECEIPTS = 20
PROCESSING = 5


def setUpModule():
    global cups, folder, document, expected
    cups = TalkingScheduler()
    cups.__enter__()
    unittest.addModuleCleanup(cups.__exit__)
    folder = tempfile.mkdtemp(prefix="klov-virtual-")
    unittest.addModuleCleanup(shutil.rmtree, folder)
    document = os.path.join(folder, "receipts.ras")
    raster.write_pages(document, [(1, 72, bytes([0x80 | n]) * 72 * 160) for n in range(RECEIPTS)])
    cups.add_queue("file", "qx100.ppd")
    expected = cups.print("file", document, "PostPrintAction=3")


class Printer:
    def __init__(self, test, *options):
        self.folder = tempfile.mkdtemp(dir=folder)
        self.port = free_port()
        self.log_path, self.health = (os.path.join(self.folder, name) for name in ("log", "health"))
        self.process = subprocess.Popen(
            [PREVIEW, "--listen", "127.0.0.1:%d" % self.port, "--quiet", "--health", self.health,
             "--log", self.log_path, "--save", os.path.join(self.folder, "job.bin"), *options],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, cwd=self.folder)
        test.addCleanup(self.process.wait)
        test.addCleanup(self.process.kill)
        wait_until(lambda: "listening" in self.log() or self.listens(), "the virtual printer")
        self.device = "socket://127.0.0.1:%d" % self.port

    def listens(self):
        with socket.socket() as probe:
            return probe.connect_ex(("127.0.0.1", self.port)) == 0

    def log(self):
        if not os.path.exists(self.log_path):
            return ""
        with open(self.log_path, encoding="utf-8") as log:
            return log.read()

    def set(self, words=""):
        """In one step, so that no half of it is read."""
        with open(self.health + ".new", "w", encoding="utf-8") as file:
            file.write(words + "\n")
        os.replace(self.health + ".new", self.health)

    def cuts(self):
        return self.log().count(" cut ")

    def saved(self):
        """What was printed, without the monitor's own commands."""
        data = b""
        for name in sorted(os.listdir(self.folder)):
            if name.startswith("job") and name.endswith(".bin"):
                with open(os.path.join(self.folder, name), "rb") as file:
                    data += file.read()
        for own in (b"\x1d\x61\x0e", b"\x1d\x61\x00", b"\x1d\x72\x01"):
            data = data.replace(own, b"")
        return data


class Virtual(unittest.TestCase):
    def begin(self, *options, speed="400"):
        self.printer = Printer(self, "--speed", speed, *options)
        self.queue = self.id().split(".")[-1][:60]
        cups.add_talking_queue(self.queue, self.printer.device)

    def submit(self):
        return cups.submit(self.queue, document, "PostPrintAction=3")

    def assert_printed_once(self):
        wait_until(lambda: len(self.printer.saved()) >= len(expected), "the saved job", 20)
        self.assertTrue(self.printer.saved() == expected, "every receipt once, in order")
        self.assertEqual(self.printer.cuts(), RECEIPTS)

    def test_paper_runs_out_and_comes_back(self):
        self.begin("--buffer", "4096")
        job = self.submit()
        for cuts in (3, 11):
            wait_until(lambda: self.printer.cuts() >= cuts, "some receipts")
            self.printer.set("paper-out")
            out = time.monotonic()
            seen = wait_until(lambda: "media-empty-error" in cups.reasons(self.queue), "no paper")
            self.assertLess(seen - out, 1)
            self.assertEqual(cups.state(job), PROCESSING)
            self.printer.set()
            rolled = time.monotonic()
            seen = wait_until(lambda: "media-empty-error" not in cups.reasons(self.queue), "paper")
            self.assertLess(seen - rolled, 2)
        cups.wait_for_job(job)
        self.assertEqual(self.printer.cuts(), RECEIPTS, "completed when the last receipt is cut")
        self.assert_printed_once()

    def test_each_mood_is_shown_and_waited_for(self):
        self.begin()
        for words, reason in (("cover-open", "cover-open-error"), ("cutter-error", "other-error"),
                              ("unrecoverable-error", "other-error")):
            self.printer.set(words)
            job = self.submit()
            wait_until(lambda: reason in cups.reasons(self.queue), words)
            self.assertEqual(cups.state(job), PROCESSING)
            self.printer.set()
            cups.wait_for_job(job)
            self.assertEqual(cups.reasons(self.queue), ["none"])

    def test_an_offline_printer_is_waited_for(self):
        self.begin()
        self.printer.set("offline")
        job = self.submit()
        time.sleep(2)
        self.assertEqual(cups.state(job), PROCESSING)
        self.printer.set()
        cups.wait_for_job(job)
        self.assert_printed_once()

    def test_mute_and_half_mute(self):
        for words in ("mute", "half-mute", "no-asb"):
            self.begin()
            self.printer.set(words)
            time.sleep(0.1)
            cups.wait_for_job(self.submit())
            self.assert_printed_once()
            self.queue += "x"

    def test_after_a_cancel_within_a_command_the_next_job_is_whole(self):
        self.begin("--buffer", "4096")
        job = self.submit()
        wait_until(lambda: self.printer.cuts() >= 5, "some receipts")
        self.printer.set("paper-out")
        wait_until(lambda: "media-empty-error" in cups.reasons(self.queue), "no paper")
        cups.run("cancel", "%s-%d" % (self.queue, job))
        cups.wait_for_job(job, CANCELED)
        wait_until(lambda: re.search(r"/monitor/klovstatus\) exited", cups.job_log(job)), "the monitor's end", 3)
        self.printer.set()
        cups.wait_for_job(self.submit())
        self.assertIn(" clear ", self.printer.log())
        wait_until(lambda: self.printer.saved().endswith(expected), "the next job whole", 20)

    def test_klovctl_asks_it(self):
        self.begin()
        for words, status in (("", 0), ("paper-low", 0), ("paper-out", 1), ("cover-open", 1), ("cutter-error", 1),
                              ("mute", 2)):
            self.printer.set(words)
            time.sleep(0.1)
            result = subprocess.run([CTL, "-d", self.printer.device, "--timeout", "0.5", "status"], capture_output=True,
                                    check=False, env={"LANG": "C"})
            self.assertEqual(result.returncode, status, (words, result.stdout))


if __name__ == "__main__":
    unittest.main()
