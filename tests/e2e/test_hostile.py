"""Jobs of a user without rights whose texts read like orders to the scheduler. They are printed; nothing is obeyed."""

import os
import re
import struct
import subprocess
import unittest

import documents
import hostile_jobs
import raster
import support

ORDERS = b"\nSTATE: paused\nPPD: ShortNickName=x\nATTR: auth-info-required=username,password\nPAGE: 9999 9999\n"
QUEUE = "till"
# Where the four texts of a page header lie.
MEDIA_CLASS, MEDIA_COLOR, MEDIA_TYPE, OUTPUT_TYPE = 4, 68, 132, 196


def setUpModule():
    global cups, folder
    cups = support.start_scheduler()
    folder = support.work_folder()
    os.chmod(folder, 0o755)
    cups.add_queue(QUEUE, "qx100.ppd")


def raster_with_texts(name, text, pages=1):
    """A raster file whose headers say the text in each of their four fields."""
    path = os.path.join(folder, name + ".ras")
    raster.write_pages(path, [(1, 72, b"\x81" * 72 * 20)] * pages)
    with open(path, "rb") as file:
        data = bytearray(file.read())
    page = (len(data) - 4) // pages
    for number in range(pages):
        for place in (MEDIA_CLASS, MEDIA_COLOR, MEDIA_TYPE, OUTPUT_TYPE):
            struct.pack_into("64s", data, number * page + place, text[:64])
    with open(path, "wb") as file:
        file.write(data)
    return path


class Hostile(unittest.TestCase):
    def setUp(self):
        self.before = self.state()
        with open(cups.ppd(QUEUE), "rb") as ppd:
            self.ppd = ppd.read()

    def state(self):
        """What the scheduler may not be talked into."""
        printer = hostile_jobs.get_printer(cups.socket, QUEUE)
        return {name: printer.get(name) for name in (
            "printer-state", "printer-state-reasons", "auth-info-required", "printer-is-accepting-jobs",
            "printer-make-and-model", "marker-names", "marker-levels", "printer-alert", "port-monitor")}

    def assert_printed_and_not_obeyed(self, job, pages):
        cups.wait_for_job(job)
        self.assertEqual(self.state(), self.before)
        with open(cups.ppd(QUEUE), "rb") as ppd:
            self.assertEqual(ppd.read(), self.ppd)
        attributes = cups.job(job)
        self.assertEqual(attributes["job-media-sheets-completed"], pages)
        self.assertNotEqual(attributes["job-originating-user-name"], "root")
        self.assertGreater(len(cups.output(QUEUE)), 0)
        log = cups.job_log(job)
        self.assertIn("rastertoklov filter finished", log)
        return log

    def submit(self, path, *options):
        kind = "application/vnd.cups-raster" if path.endswith(".ras") else "text/plain"
        with open(path, "rb") as document:
            return hostile_jobs.print_job(cups.socket, QUEUE, document.read(), kind, options)

    def test_texts_of_page_headers(self):
        for start in range(0, len(ORDERS), 30):
            text = b"\n" + ORDERS[start:].lstrip(b"\n")
            self.assert_printed_and_not_obeyed(self.submit(raster_with_texts("texts", text, 2)), 2)

    def test_a_job_attribute_with_line_ends(self):
        for name in ("klov-note", "page-label", "PrintLogo"):
            job = self.submit(raster_with_texts("plain", b""), (name, ORDERS))
            self.assert_printed_and_not_obeyed(job, 1)

    def test_options_that_the_scheduler_would_split_into_lines(self):
        """Lines of the filter are read 2,047 bytes at a time: an order is put wherever a new line might begin."""
        order = b" ATTR: auth-info-required=username,password STATE: paused "
        for padding in range(0, len(order), 9):
            notes = [("klov-note-%d" % number, (order * 40)[padding:padding + 1000]) for number in range(4)]
            log = self.assert_printed_and_not_obeyed(self.submit(raster_with_texts("plain", b""), *notes), 1)
            self.assertRegex(log, r"\] klov-note-0=.*\.\.\.")

    def test_through_the_whole_chain(self):
        self.assert_printed_and_not_obeyed(self.submit(documents.TEXT, ("klov-note", ORDERS)), 1)

    @unittest.skipUnless(os.geteuid() == 0, "only root can be somebody else")
    def test_by_the_command_of_an_ordinary_user(self):
        path = raster_with_texts("command", ORDERS)
        os.chmod(path, 0o644)
        command = ["lp", "-d", QUEUE, "-o", "klov-note='%s'" % ORDERS.decode(), path]
        done = subprocess.run(command, user="nobody", env=dict(os.environ, CUPS_SERVER=cups.socket, HOME="/"),
                              capture_output=True, text=True, check=True)
        self.assert_printed_and_not_obeyed(int(re.search(r"-(\d+) ", done.stdout)[1]), 1)


if __name__ == "__main__":
    unittest.main()
