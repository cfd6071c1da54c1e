"""commandtoklov: command files, alone and in a queue with the port monitor."""

import os
import subprocess
import tempfile
import time
import unittest

from queues import TalkingScheduler, wait_until
from scheduler import STOPPED
from till import Till

COMMANDS = os.environ["KLOV_COMMANDS"]
PREVIEW = os.environ.get("KLOV_PREVIEW")


def setUpModule():
    global cups, folder
    cups = TalkingScheduler()
    cups.__enter__()
    unittest.addModuleCleanup(cups.__exit__)
    work = tempfile.TemporaryDirectory()
    unittest.addModuleCleanup(work.cleanup)
    folder = work.name
    cups.add_queue("plain", "qx100.ppd")
    cups.add_queue("mobile", "klb5725.ppd")
    cups.add_queue("open", "qx100.ppd", None, "DrawerCommand=1")


def command_file(*lines):
    path = os.path.join(folder, "commands")
    with open(path, "w", encoding="utf-8") as file:
        file.write("#CUPS-COMMAND\n" + "\n".join(lines) + "\n")
    return path


class Alone(unittest.TestCase):
    def run_filter(self, *lines, queue="plain", options="", status=0):
        environment = {"PPD": cups.ppd(queue), "DEVICE_URI": "file:/dev/null", "LANG": "C"}
        result = subprocess.run([COMMANDS, "1", "user", "title", "1", options, command_file(*lines)], env=environment,
                                capture_output=True, check=False)
        self.assertEqual(result.returncode, status, result.stderr)
        self.log = result.stderr.decode()
        return result.stdout

    def test_the_bytes_of_each_command(self):
        for line, expected in {"org.klov.cut": b"\x1dVB\0", "org.klov.cut full": b"\x1dVA\0",
                               "org.klov.feed 10": b"\x1bJ\x4f", "ORG.KLOV.FEED": b"\x1bJ\x4f",
                               "org.klov.feed 40": b"\x1bJ\xff\x1bJ\x40", "org.klov.beep": b"\x1b(A\5\0ad\1\1\1",
                               "org.klov.beep 3": b"\x1b(A\5\0ad\3\1\1", "# nothing": b""}.items():
            self.assertEqual(self.run_filter(line), expected, line)
            self.assertEqual(self.log, "")

    def test_what_is_wrong_is_said_and_nothing_sent(self):
        for line in ("Clean all", "org.klov.feed 0", "org.klov.feed 1001", "org.klov.feed x", "org.klov.feed -1",
                     "org.klov.beep 10", "org.klov.cut half", "org.klov.unheard", "org.klov.feed 99999999999999999999"):
            self.assertEqual(self.run_filter(line, status=1), b"", line)
            self.assertTrue(self.log.startswith("ERROR: commandtoklov: "), line)

    def test_texts_of_a_file_make_no_lines_in_the_log(self):
        self.assertEqual(self.run_filter("bad\x01\x1b[2Jname" + "x" * 1000, status=1), b"")
        self.assertEqual(self.log.count("\n"), 1)
        self.assertNotIn("\x1b", self.log)
        self.assertLess(len(self.log), 200)

    def test_a_drawer_opens_only_where_the_administrator_allows_it(self):
        self.assertEqual(self.run_filter("org.klov.drawer", options="DrawerCommand=1", status=1), b"")
        self.assertIn("does not let commands open a drawer", self.log)
        self.assertEqual(self.run_filter("org.klov.drawer", queue="open", options="DrawerCommand=0"),
                         b"\x1bp\0\x50\x50")
        self.assertEqual(self.run_filter("org.klov.drawer 2", queue="open"), b"\x1bp\1\x50\x50")
        self.assertEqual(self.run_filter("org.klov.drawer 3", queue="open", status=1), b"")

    def test_one_wrong_line_does_not_stop_the_others(self):
        self.assertEqual(self.run_filter("org.klov.cut", "nonsense", "org.klov.cut", status=1), b"\x1dVB\0" * 2)

    def test_a_file_without_end_is_refused(self):
        self.assertEqual(self.run_filter(*["org.klov.beep"] * 10000, status=1), b"")

    def test_a_printer_without_a_cutter_does_not_cut_its_test_page(self):
        self.assertTrue(self.run_filter("PrintSelfTestPage").endswith(b"\x1dVB\0"))
        self.assertNotIn(b"\x1dV", self.run_filter("PrintSelfTestPage", queue="mobile"))

    def test_the_test_page(self):
        data = self.run_filter("PrintSelfTestPage")
        self.assertTrue(data.startswith(b"\x1d(A\2\0\0\2"), "the printer's own first")
        for part in (b"QX-100", b"576 dots, 72 mm", b"\x1dv0\0\x48\0", b"{BKLOV-0123", b"klov test page"):
            self.assertIn(part, data)
        if PREVIEW:
            picture = os.path.join(os.environ.get("KLOV_KEEP", folder), "test-page.png")
            result = subprocess.run([PREVIEW, "--width", "576", "-o", picture, "-"], input=data, capture_output=True,
                                    check=False)
            self.assertEqual(result.returncode, 0, result.stderr)

    def test_wrong_use_and_no_ppd(self):
        self.assertEqual(subprocess.run([COMMANDS], capture_output=True, check=False).returncode, 1)
        result = subprocess.run([COMMANDS, "1", "u", "t", "1", "", command_file("org.klov.cut")], capture_output=True,
                                env={"PPD": "/nowhere"}, check=False)
        self.assertEqual((result.returncode, result.stdout), (1, b""))


class Queue(unittest.TestCase):
    def queue(self, **settings):
        self.till = Till(**settings).listen()
        self.addCleanup(self.till.close)
        self.name = self.id().split(".")[-1]
        cups.add_talking_queue(self.name, self.till.device)

    def send(self, *lines):
        job = cups.submit(self.name, command_file(*lines))
        cups.wait_for_job(job)
        return job

    def test_report_status_shows_and_withdraws_reasons(self):
        self.queue()
        self.till.set(paper_out=True, cover_open=True)
        self.send("ReportStatus")
        self.assertEqual(set(cups.reasons(self.name)), {"media-empty-error", "cover-open-error"})
        self.till.set(paper_out=False, cover_open=False, paper_low=True)
        self.send("ReportStatus")
        self.assertEqual(cups.reasons(self.name), ["media-low-warning"])
        self.till.set(paper_low=False)
        self.send("ReportStatus")
        self.assertEqual(cups.reasons(self.name), ["none"])
        self.assertEqual(bytes(self.till.printed), b"")

    def test_a_mute_printer_does_not_hold_up_the_report(self):
        self.queue(mute=True)
        began = time.monotonic()
        job = self.send("ReportStatus")
        self.assertIn("No answer", cups.job_log(job))
        self.assertLess(time.monotonic() - began, 10)

    def test_commands_reach_the_printer_through_the_monitor(self):
        self.queue()
        self.send("org.klov.feed 10", "org.klov.cut")
        wait_until(lambda: len(self.till.printed) >= 7, "the commands")
        self.assertEqual(bytes(self.till.received), b"\x1bJ\x4f\x1dVB\0")

    def test_a_refused_drawer_is_a_failed_job(self):
        self.queue()
        job = cups.submit(self.name, command_file("org.klov.drawer"), "DrawerCommand=1")
        cups.wait_for_job(job, STOPPED)
        self.assertEqual(bytes(self.till.printed), b"")

    def test_cups_offers_the_commands(self):
        self.queue()
        self.assertEqual(cups.printer(self.name)["printer-commands"],
                         ["ReportStatus", "PrintSelfTestPage", "org.klov.cut", "org.klov.feed", "org.klov.beep",
                          "org.klov.drawer"])


if __name__ == "__main__":
    unittest.main()
