"""Jobs as they go wrong or meet each other: cancelling, slow printers, two queues, a class of printers, failures."""

import os
import subprocess
import unittest

import documents
import escpos
import preview
import raster
import support
from scheduler import CANCELED, STOPPED, free_port
from support import Listener, PrintTest

# With so many copies a page of half a megabyte is more than the buffers between the filter and a printer that takes
# nothing.
COPIES = 14


def setUpModule():
    global cups, folder
    cups = support.start_scheduler()
    folder = support.work_folder()
    cups.add_queue("file", "qx100.ppd")


def pdf(name, *pages, **size):
    return documents.write_pdf(os.path.join(folder, name + ".pdf"), pages, **size)


class Network(PrintTest):
    def test_a_network_printer_gets_the_bytes_of_a_file(self):
        with Listener() as printer:
            cups.add_queue("net", "qx100.ppd", printer.device)
            cups.wait_for_job(cups.submit("net", documents.TEXT))
            self.assertEqual(printer.wait_for_jobs(1)[0], cups.print("file", documents.TEXT))

    def test_two_queues_at_once(self):
        names = ("left", "right")
        with Listener(held=True) as left, Listener(held=True) as right:
            for name, printer in zip(names, (left, right)):
                cups.add_queue(name, "qx100.ppd", printer.device)
            papers = [pdf(name, *[documents.title(name + " %d" % n) for n in range(3)]) for name in names]
            jobs = [cups.submit(name, paper, "Drawer1=2") for name, paper in zip(names, papers)]
            support.wait_until(lambda: left.open_connections and right.open_connections, "both printers")
            left.released.set()
            right.released.set()
            for job in jobs:
                cups.wait_for_job(job)
            for printer, paper in zip((left, right), papers):
                self.assertEqual(printer.wait_for_jobs(1), [cups.print("file", paper, "Drawer1=2")])
            self.assertNotEqual(left.jobs, right.jobs)

    @unittest.skipUnless(preview.TOOL, "klov-preview is not built")
    def test_the_virtual_printer_on_the_network_draws_the_job(self):
        port = free_port()
        picture = os.path.join(folder, "paper.png")
        printer = subprocess.Popen([preview.TOOL, "--listen", "127.0.0.1:%d" % port, "--jobs", "1", "--bare", "--quiet",
                                    "--output", picture], stderr=subprocess.DEVNULL)
        self.addCleanup(printer.kill)
        cups.add_queue("virtual", "qx100.ppd", "socket://127.0.0.1:%d/?waiteof=false" % port)
        cups.wait_for_job(cups.submit("virtual", documents.TEXT))
        self.assertEqual(printer.wait(support.PATIENCE), 0)
        with open(self.drawn(picture), "rb") as png:
            rows = preview.read_png(png.read())
        expected = escpos.picture(escpos.read_commands(cups.print("file", documents.TEXT)), 72)
        self.assertEqual(escpos.without_blank_end(rows), escpos.without_blank_end(expected))

    def drawn(self, picture):
        """A listening printer may number its pictures."""
        stem = os.path.basename(picture)[:-4]
        found = [name for name in os.listdir(folder) if name.startswith(stem)]
        self.assertEqual(len(found), 1)
        return os.path.join(folder, found[0])


class Cancelling(PrintTest):
    def test_a_cancelled_page_is_completed_with_its_copies_and_nothing_follows(self):
        page = bytes([0x81]) * 72 * 8000
        document = os.path.join(folder, "long.ras")
        raster.write_pages(document, [(COPIES, 72, page), (1, 72, page)])
        with Listener(held=True) as printer:
            cups.add_queue("slow", "qx100.ppd", printer.device)
            job = cups.submit("slow", document, "BeepControl=2")
            support.wait_until(lambda: printer.open_connections, "the printer's connection")
            support.wait_until(lambda: "PAGE: 1 %d" % COPIES in cups.job_log(job), "the first page")
            cups.run("cancel", "slow-%d" % job)
            cups.wait_for_job(job, CANCELED)
            printer.released.set()
            commands = escpos.read_commands(printer.wait_for_jobs(1)[0])
            self.assertEqual(escpos.others(commands), [], "no buzzer and no cut at the end")
            self.assertEqual(b"".join(escpos.picture(commands, 72)), page * COPIES)
            support.wait_until(lambda: "Print job was cancelled" in cups.job_log(job), "the message")

    def test_after_a_cancel_in_the_middle_of_a_drawn_page_the_next_job_is_whole(self):
        """CUPS stops its own filters too, so the page may end early; but never within a command."""
        long_page = documents.block(0, 0, 900, 6300)
        paper = pdf("black", long_page, long_page, width=842.9, height=6236)
        with Listener(held=True) as printer:
            cups.add_queue("wide", "klr9630.ppd", printer.device)
            job = cups.submit("wide", paper, "PageSize=Custom.297x2200mm")
            support.wait_until(lambda: "PAGE: 1 1" in cups.job_log(job), "the first page")
            cups.run("cancel", "wide-%d" % job)
            cups.wait_for_job(job, CANCELED)
            printer.released.set()
            commands = escpos.read_commands(printer.wait_for_jobs(1)[0])
            self.assertEqual(escpos.others(commands), [], "no cut")
            next_job = cups.submit("wide", documents.TEXT)
            cups.wait_for_job(next_job)
            commands = escpos.read_commands(printer.wait_for_jobs(2)[1])
            self.assertEqual(escpos.others(commands), [escpos.Cut(66, 0)])


class ManyPrinters(PrintTest):
    def test_a_class_spreads_jobs_over_four_printers(self):
        printers = [Listener(held=True) for _ in range(4)]
        try:
            for number, printer in enumerate(printers):
                cups.add_queue("till%d" % number, "qx100.ppd", printer.device)
                cups.run("lpadmin", "-p", "till%d" % number, "-c", "tills")
            cups.run("cupsaccept", "tills")
            cups.run("cupsenable", "tills")
            expected = []
            jobs = []
            for number in range(8):
                paper = pdf("till%d" % number, documents.title("Order %d" % number))
                jobs.append(cups.submit("tills", paper))
                expected.append(cups.print("file", paper))
            support.wait_until(lambda: all(printer.open_connections for printer in printers), "all four printers")
            for printer in printers:
                printer.released.set()
            for job in jobs:
                cups.wait_for_job(job)
            support.wait_until(lambda: sum(len(printer.jobs) for printer in printers) == 8, "eight jobs")
            self.assertGreaterEqual(min(len(printer.jobs) for printer in printers), 1)
            printed = [job for printer in printers for job in printer.jobs]
            self.assertEqual(sorted(printed), sorted(expected))
        finally:
            for printer in printers:
                printer.__exit__()

    def test_a_till_without_the_driver_prints_through_the_server(self):
        expected = cups.print("file", documents.TEXT, "CutMode=2")
        os.unlink(cups.output_path("file"))
        cups.run("lpadmin", "-p", "file", "-c", "office")
        cups.run("cupsaccept", "office")
        cups.run("cupsenable", "office")
        for queue in ("file", "office"):
            result = cups.run("lp", "-h", "127.0.0.1:%d" % cups.port, "-d", queue, "-o", "CutMode=2", documents.TEXT)
            cups.wait_for_job(int(result.stdout.split(" (")[0].rsplit("-", 1)[1]))
            self.assertEqual(cups.output("file"), expected)


class Failures(PrintTest):
    def test_a_ppd_of_an_unknown_model_stops_the_job_with_the_reason_in_the_log(self):
        with open(cups.ppd("file"), encoding="utf-8") as ppd:
            text = ppd.read().replace('*ShortNickName: "QX-100"', '*ShortNickName: "QX-999"')
        path = os.path.join(folder, "unknown.ppd")
        with open(path, "w", encoding="utf-8") as ppd:
            ppd.write(text)
        cups.add_queue("unknown", path)
        job = cups.submit("unknown", documents.TEXT)
        cups.wait_for_job(job, STOPPED)
        self.assertIn("wrong ppd modelname!", cups.job_log(job))

    def test_the_log_of_a_good_job_names_start_pages_and_end(self):
        job = cups.submit("file", pdf("two", documents.title("1"), documents.title("2")))
        cups.wait_for_job(job)
        log = cups.job_log(job)
        for line in ("rastertoklov filter started", "PAGE: 1 1", "PAGE: 2 1", "rastertoklov filter finished"):
            self.assertIn(line, log)
        self.assertNotIn("E [", "\n".join(line[:3] for line in log.splitlines()))

    @unittest.skipUnless(os.environ.get("KLOV_PRIVATE_TMP"), "another job's trace could be in the way")
    def test_the_trace_file_shows_the_last_job(self):
        cups.print("file", documents.TEXT)
        with open("/tmp/klov-raster", encoding="latin-1") as trace:
            text = trace.read()
        self.assertIn("+start_doc start.\n", text)
        self.assertIn("+print_cut_page(", text)
        self.assertTrue(text.rstrip().endswith("rastertoklov filter finished (cups:successful-ok)") or
                        "Closing.\n" in text)
