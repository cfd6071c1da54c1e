"""klovctl -p: the printer of a queue, and what CUPS says while the queue prints."""

import json
import os
import subprocess
import unittest

from queues import TalkingScheduler, wait_until
from till import Till

import documents

CTL = os.environ["KLOV_CTL"]
READY, CANNOT, SILENT = 0, 1, 2


def setUpModule():
    global cups
    cups = TalkingScheduler()
    cups.__enter__()
    unittest.addModuleCleanup(cups.__exit__)


class Queue(unittest.TestCase):
    def setUp(self):
        self.till = Till().listen()
        self.addCleanup(self.till.close)
        self.name = self.id().split(".")[-1]
        cups.add_talking_queue(self.name, self.till.device)

    def ctl(self, *words):
        return subprocess.run([CTL, *words], capture_output=True, check=False, timeout=60, text=True,
                              env={"CUPS_SERVER": cups.socket, "LANG": "C", "PATH": os.environ["PATH"]})

    def test_the_queues_own_device_is_asked_and_commanded(self):
        result = self.ctl("-p", self.name, "status", "--json")
        self.assertEqual((result.returncode, json.loads(result.stdout)["device"]), (READY, self.till.device))
        self.assertEqual(self.ctl("-p", self.name, "cut").returncode, READY)
        self.assertEqual(bytes(self.till.printed), b"\x1dVB\0")
        self.assertIn("model: Acme QX-100", self.ctl("-p", self.name, "identify").stdout)
        self.till.printed.clear()
        self.assertEqual(self.ctl("-p", self.name, "test").returncode, READY)
        self.assertIn(b"Acme QX-100", self.till.printed)

    def test_while_the_queue_prints_cups_is_asked_and_nothing_sent(self):
        self.till.paper_out = True
        job = cups.submit(self.name, documents.TEXT)
        wait_until(lambda: "media-empty-error" in cups.reasons(self.name), "no paper")
        result = self.ctl("-p", self.name, "status", "--json")
        self.assertEqual((result.returncode, json.loads(result.stdout)["paper"]), (CANNOT, "out"))
        result = self.ctl("-p", self.name, "drawer")
        self.assertEqual(result.returncode, CANNOT)
        self.assertIn("The queue is printing", result.stderr)
        self.assertEqual(self.till.connections, 1)
        self.till.set(paper_out=False)
        cups.wait_for_job(job)
        self.assertNotIn(b"\x1bp", self.till.printed)

    def test_a_queue_that_is_not_there(self):
        result = self.ctl("-p", "nobody", "status")
        self.assertEqual(result.returncode, SILENT)
        self.assertIn("nobody", result.stderr)

    def test_find_lists_queues_and_sends_nothing(self):
        result = self.ctl("--timeout", "1", "find")
        self.assertEqual(result.returncode, READY)
        self.assertIn("queue    %s\t%s\tAcme QX-100\n" % (self.name, self.till.device), result.stdout)
        self.assertEqual(self.till.connections, 0)


if __name__ == "__main__":
    unittest.main()
