"""The port monitor in queues of a real scheduler, with the stock backend for network printers.

KLOV_PAPER_OUTS says how often the paper runs out at a random place of a job (3 times without it)."""

import os
import random
import re
import shutil
import tempfile
import time
import unittest

import raster
from queues import TalkingScheduler, wait_until
from scheduler import ABORTED, CANCELED, COMPLETED, STOPPED
from till import CLEAR, Till

PAPER_OUTS = int(os.environ.get("KLOV_PAPER_OUTS", "3"))
RECEIPTS = 20
PENDING, PROCESSING = 3, 5
FAILED = "The connection to the printer is lost"


def setUpModule():
    global cups, document, folder
    cups = TalkingScheduler()
    cups.__enter__()
    unittest.addModuleCleanup(cups.__exit__)
    folder = tempfile.mkdtemp(prefix="klov-talk-")
    unittest.addModuleCleanup(shutil.rmtree, folder)
    document = os.path.join(folder, "receipts.ras")
    raster.write_pages(document, [(1, 72, bytes([0x80 | n]) * 72 * 160) for n in range(RECEIPTS)])
    cups.add_queue("file", "qx100.ppd")


class Queue(unittest.TestCase):
    def till(self, **settings):
        till = Till(**settings).listen()
        self.addCleanup(till.close)
        return till

    def queue(self, till, suffix="", policy=None):
        name = re.sub(r"\W", "_", self.id().split(".")[-1])[:100] + suffix
        return cups.add_talking_queue(name, till.device, policy)

    def submit(self, queue):
        return cups.submit(queue, document, "PostPrintAction=3")

    def expected(self):
        """The filter's own bytes."""
        if not hasattr(Queue, "bytes"):
            Queue.bytes = cups.print("file", document, "PostPrintAction=3")
        return Queue.bytes

    def assert_printed(self, till, times=1):
        printed = bytes(till.printed)
        self.assertEqual(len(printed), times * len(self.expected()))
        self.assertTrue(printed == times * self.expected(), "every receipt once, in order")

    def test_the_filters_bytes_reach_the_printer(self):
        till = self.till()
        queue = self.queue(till)
        cups.wait_for_job(self.submit(queue))
        self.assert_printed(till)

    def test_paper_runs_out_at_random_places(self):
        chance = random.Random(13)
        till = self.till(speed=2e6)
        queue = self.queue(till)
        size = len(self.expected())
        late = {"added": [], "removed": []}
        for turn in range(PAPER_OUTS):
            till.printed.clear()
            till.events.clear()
            till.stop_after = chance.randrange(1, size)
            job = self.submit(queue)
            seen = wait_until(lambda: "media-empty-error" in cups.reasons(queue), "no paper")
            late["added"].append(seen - till.events[0][0])
            time.sleep(chance.random() / 2)
            self.assertEqual(cups.state(job), PROCESSING)
            self.assertLess(len(till.printed), size + 1)
            if len(till.printed) < size:
                self.assertNotEqual(cups.state(job), COMPLETED)
            refilled = time.monotonic()
            till.set(paper_out=False)
            seen = wait_until(lambda: "media-empty-error" not in cups.reasons(queue), "paper")
            late["removed"].append(seen - refilled)
            while cups.state(job) == PROCESSING:
                time.sleep(0.02)
            self.assertEqual(cups.state(job), COMPLETED, turn)
            self.assertEqual(bytes(till.printed), self.expected(), "turn %d" % turn)
        print("%d times without paper: seen after %.2f s at most, gone after %.2f s at most" % (
            PAPER_OUTS, max(late["added"]), max(late["removed"])))
        self.assertLess(max(late["added"]), 1)
        self.assertLess(max(late["removed"]), 2)

    def test_the_cover_is_opened(self):
        till = self.till(speed=1e6)
        queue = self.queue(till)
        job = self.submit(queue)
        wait_until(lambda: len(till.printed) > 20000, "paper")
        till.set(cover_open=True)
        wait_until(lambda: "cover-open-error" in cups.reasons(queue), "the reason", 2)
        self.assertIn("Cover is open", cups.printer(queue)["printer-state-message"])
        till.set(cover_open=False)
        cups.wait_for_job(job)
        self.assertNotIn("cover-open-error", cups.reasons(queue))
        self.assert_printed(till)

    def test_no_paper_at_the_start(self):
        till = self.till()
        till.paper_out = True
        queue = self.queue(till)
        job = self.submit(queue)
        wait_until(lambda: "media-empty-error" in cups.reasons(queue), "the reason")
        self.assertEqual(bytes(till.printed), b"")
        till.set(paper_out=False)
        cups.wait_for_job(job)
        self.assert_printed(till)

    def test_a_mute_printer_prints(self):
        till = self.till(mute=True)
        queue = self.queue(till)
        began = time.monotonic()
        cups.wait_for_job(self.submit(queue))
        self.assertLess(time.monotonic() - began, 10)
        wait_until(lambda: len(till.printed) == len(self.expected()), "all of it")
        self.assert_printed(till)

    def test_two_queues_on_a_printer_with_one_connection(self):
        till = self.till(speed=1e6)
        queues = [self.queue(till, suffix) for suffix in ("a", "b")]
        jobs = [self.submit(queue) for queue in queues]
        printed = {}
        while len(printed) < 2:
            for job in jobs:
                if job not in printed and cups.state(job) == COMPLETED:
                    printed[job] = len(till.printed)
            time.sleep(0.01)
        self.assert_printed(till, 2)
        self.assertGreaterEqual(min(printed.values()), len(self.expected()), "completed when it is printed")
        self.assertEqual(max(printed.values()), 2 * len(self.expected()))

    def test_a_cancel_while_the_paper_is_out(self):
        till = self.till()
        till.stop_after = len(self.expected()) // 2
        queue = self.queue(till)
        job = self.submit(queue)
        wait_until(lambda: "media-empty-error" in cups.reasons(queue), "no paper")
        cups.run("cancel", "%s-%d" % (queue, job))
        cancelled = time.monotonic()
        wait_until(lambda: cups.state(job) == CANCELED, "the cancel", 1)
        wait_until(lambda: re.search(r"\(.*/monitor/klovstatus\) exited", cups.job_log(job)), "the monitor's end", 10)
        self.assertLess(time.monotonic() - cancelled, 2)
        # A new roll: what was on its way comes out; the next job clears the rest away and is whole.
        till.set(paper_out=False)
        before = len(till.printed)
        cups.wait_for_job(self.submit(queue))
        self.assertIn(CLEAR, till.received)
        self.assertTrue(bytes(till.printed[before:]).endswith(self.expected()))

    def pull_the_cable(self, policy):
        till = self.till(speed=1e6)
        till.drop_after = len(self.expected()) // 2
        queue = self.queue(till, policy=policy)
        job = self.submit(queue)
        wait_until(lambda: FAILED in cups.job_log(job) or cups.state(job) != PROCESSING, "the failure")
        return till, queue, job

    def test_cable_pulled_abort_job(self):
        _, queue, job = self.pull_the_cable("abort-job")
        wait_until(lambda: cups.state(job) in (ABORTED, STOPPED, PENDING), "the end")
        self.assertEqual((cups.state(job), cups.printer(queue)["printer-state"]), (ABORTED, [3]))

    def test_cable_pulled_stop_printer(self):
        _, queue, job = self.pull_the_cable("stop-printer")
        wait_until(lambda: cups.state(job) != PROCESSING, "the end")
        self.assertEqual((cups.state(job), cups.printer(queue)["printer-state"]), (PENDING, [5]))

    def test_cable_pulled_retry_job(self):
        till, _, job = self.pull_the_cable("retry-job")
        cups.wait_for_job(job)
        self.assertTrue(bytes(till.printed).endswith(self.expected()), "printed anew as a whole")

    @unittest.skipUnless(os.environ.get("KLOV_SLOW"), "waits for more than a minute")
    def test_a_printer_that_falls_silent(self):
        """The monitor fails, not the backend: then CUPS keeps the job, whatever the policy says."""
        jobs, tills = {}, {}
        for policy in ("abort-job", "stop-printer", "retry-job", "retry-current-job"):
            till = self.till(speed=1e6)
            queue = self.queue(till, policy.replace("-", "_"), policy)
            job = self.submit(queue)
            wait_until(lambda: len(till.printed) > 20000, "paper")
            till.set(mute=True)
            tills[policy] = till
            jobs[policy] = (queue, job)
        for policy, (queue, job) in jobs.items():
            wait_until(lambda: cups.state(job) != PROCESSING, "the end", 120)
            self.assertIn("The printer does not answer any more", cups.job_log(job))
            found = (cups.state(job), cups.printer(queue)["printer-state"])
            print(policy, found)
            self.assertEqual(found, (STOPPED, [3]), policy)
        queue, job = jobs["stop-printer"]
        tills["stop-printer"].set(mute=False)
        cups.run("lp", "-i", "%s-%d" % (queue, job), "-H", "restart")
        cups.wait_for_job(job)
        self.assertTrue(bytes(tills["stop-printer"].printed).endswith(self.expected()), "printed again as a whole")

    def test_cable_pulled_retry_current_job(self):
        till, _, job = self.pull_the_cable("retry-current-job")
        cups.wait_for_job(job)
        self.assertTrue(bytes(till.printed).endswith(self.expected()), "printed anew as a whole")


if __name__ == "__main__":
    unittest.main()
