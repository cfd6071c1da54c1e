"""Every way in which a job ends early: its text, status 1, the trace closed before it, nothing more printed."""

import unittest
from pathlib import Path

import catalogue
import harness
import oracle
from cases import JobTest, blank, hexed, inked, job, page, raster_command, roll, white
from ppd import Ppd

DOT = b"\x80"
STARTED = b"INFO: rastertoklov filter started \n" + oracle.COMPILED
DRAWER = hexed("1b 70 00 50 50")


class Fatal(JobTest):
    def assert_ends(self, work, text, printed=b"", last_trace=None):
        """The job ends with this text; the last trace line is the one written before the trace was closed."""
        actual = self.run_job(work)
        self.assertEqual(actual.status, 1)
        line = b"ERROR:Raster(%s, cups:successful-ok)\n" % text.encode()
        self.assertTrue(actual.stderr.endswith(line), actual.stderr[-300:])
        self.assertEqual(actual.stderr.count(b"ERROR:Raster("), 1)
        self.assertEqual(actual.stdout.hex(" "), printed.hex(" "))
        if last_trace is not None:
            self.assertTrue(actual.trace.endswith(last_trace.encode()), actual.trace[-300:])
        return actual

    def test_five_or_eight_arguments(self):
        for count in (1, 2, 5, 8):
            harness.remove_trace()
            with open(harness.TRACE, "wb") as file:
                file.write(b"the trace of an earlier job\n" * 100)
            work = job(page(DOT), arguments=count)
            actual = harness.run(work, keep_trace_place=True)
            self.assertEqual(actual.status, 1)
            self.assertEqual(actual.stdout, b"")
            self.assertEqual(actual.stderr, STARTED + b"ERROR:Raster(ERROR: rastertoklov job-id user title copies "
                             b"options [file]\n, cups:successful-ok)\n")
            self.assertEqual(actual.trace, b"INFO: rastertoklov filter started\n")

    def test_ppd_not_set(self):
        work = job(page(DOT))
        work.ppd_path = None
        self.assert_ends(work, "PPD environment variable not set", last_trace="\tPPD environment variable not set!\n")

    def test_ppd_that_is_not_there(self):
        for path in (b"/no/such.ppd", b"", b"/"):
            work = job(page(DOT))
            work.ppd, work.ppd_path = None, path
            self.assert_ends(work, "ppdOpenFile failed",
                             last_trace="\tget_options PPD:%s.\n\tppdOpenFile failed!\n" % path.decode())

    def test_a_file_that_is_no_ppd(self):
        for text in (b"", b"this is no PPD\n", b"\0" * 5000):
            work = job(page(DOT), ppd=Ppd(damaged=text))
            actual = harness.run(work)
            self.assertEqual(actual.status, 1)
            self.assertTrue(actual.stderr.endswith(b"ERROR:Raster(ppdOpenFile failed, cups:successful-ok)\n"))
            self.assertTrue(actual.trace.endswith(b"\tppdOpenFile failed!\n"))

    def test_a_model_that_is_not_in_the_catalogue(self):
        for name in ("Nobody", "qx-100", "QX-100 ", ""):
            actual = self.assert_ends(job(page(DOT), ppd=Ppd(name)), "wrong ppd modelname!",
                                      last_trace="-wrong ppd modelname!\n")
            self.assertIn(b"DEBUG: error(-8):Unable to identify the printer model. Please correct the printer model. "
                          b"(cups:successful-ok)\n", actual.stderr)

    def test_a_ppd_without_a_model_name(self):
        actual = harness.run(job(page(DOT), ppd=Ppd(None)))
        self.assertEqual((actual.status, actual.stdout), (1, b""))
        self.assertTrue(actual.stderr.endswith(b"ERROR:Raster(wrong ppd modelname!, cups:successful-ok)\n"))
        self.assertTrue(actual.trace.endswith(b"-wrong ppd modelname!\n"))

    def test_the_name_unknown_is_in_the_catalogue(self):
        actual = self.run_job(job(page(DOT), ppd=roll(short_nick_name="unknown"), options="CutMode=1"))
        self.assertEqual(actual.stdout, raster_command(1, 1) + DOT + hexed("1d 56 42 00"))
        self.assertIn(b"DEBUG: type             = 0xffffffff \n", actual.stderr)
        self.assertIn(b"+print_cut_page(printer_class:-1) start.\n", actual.trace)

    def test_a_raster_file_that_is_not_there(self):
        work = job(page(DOT), options="Drawer1=1", arguments=7, file_opens=False)
        self.assert_ends(work, "Unable to open raster file", last_trace="-dump options finished.\n")

    def test_what_is_no_raster_stream(self):
        for data in (b"", b"RaS", b"%PDF-1.4\n", bytes(3000)):
            work = job(options="Drawer1=1")
            work.raster = data
            self.assert_ends(work, "cupsRasterOpen failed", last_trace="-dump options finished.\n")

    def test_a_strip_read_short(self):
        work = job(page(*inked(72, 30)), options="Drawer1=1 CutMode=1")
        strip = raster_command(72, 14) + b"\xff" * 72 * 14
        for missing, strips in ((1, 2), (72 * 2, 2), (72 * 2 + 1, 1), (72 * 30, 0)):
            cut = job(options="Drawer1=1 CutMode=1")
            cut.raster = work.raster[:-missing]
            self.assert_ends(cut, "cupsRasterReadPixels did not read enough data", DRAWER + strip * strips)

    def test_a_compressed_strip_read_short(self):
        work = job(page(*inked(3, 2), b"\1\2\3"), options="Drawer1=1", version=2)
        work.raster = work.raster[:-1]
        self.assert_ends(work, "cupsRasterReadPixels did not read enough data", DRAWER)

    def test_a_row_that_does_not_fit_the_strip_buffer(self):
        for copies in (1, 2):
            work = job(page(DOT), page(*inked(1009, 2), copies=copies), options="CutMode=1 PostPrintAction=3")
            self.assert_ends(work, "Raster line does not fit the strip buffer",
                             raster_command(1, 1) + DOT + hexed("1d 56 42 00"), "DEBUG: process_page start.\n\n")
        self.run_job(job(page(*inked(1008, 2))))

    def test_a_strip_buffer_of_no_bytes(self):
        for size in ("0x5", "2000", "Letter"):
            self.assert_ends(job(page(DOT), options="PageSize=" + size), "Raster line does not fit the strip buffer")

    def test_a_row_that_does_not_fit_at_any_depth(self):
        for bits, width in ((88, 11000), (24, 3000), (240, 30000), (1, 5041)):
            head, _ = page(*inked(width, 1))
            head["cupsBitsPerPixel"] = bits
            for version in (1, 2, 3):
                self.assert_ends(job((head, b""), page(DOT), version=version),
                                 "Raster line does not fit the strip buffer")

    def test_a_row_that_does_not_fit_with_no_copies_is_no_failure(self):
        head, _ = page(*inked(2000, 2), copies=0)
        actual = self.run_job(job((head, b""), options="CutMode=1"))
        self.assertEqual((actual.status, actual.stdout), (0, hexed("1d 56 42 00")))

    def test_a_strip_height_below_one_row(self):
        work = job(page(*inked(2, 2)), options="PageSize=-5")
        self.assert_ends(work, "prt databufsize is too small!/n", last_trace="ERROR: prt databufsize is too small!/n\n")

    def test_printing_on_a_model_without_the_command_set(self):
        name = next(m.name for m in catalogue.models() if not m.dialect & 1)
        text = "error(-3):Printer model type is error. Please use the printer with expected type."
        self.assert_ends(job(page(b"\1\1"), ppd=Ppd(name)), text, last_trace="ERROR: " + text + "\n")
        self.assert_ends(job(page(*blank(1, 9), b"\1"), ppd=Ppd(name)), text, last_trace="ERROR: " + text + "\n")
        self.assert_ends(job(page(b"\1\0"), ppd=Ppd(name)), "Error in print_dotline",
                         last_trace="ERROR: Error in print_dotline\n")

    def test_what_was_printed_before_the_failure_is_sent(self):
        work = job(page(*(blank(1, 3) + [DOT])), page(*inked(72, 30)), options="Drawer1=1")
        work.raster = work.raster[:-1]
        self.assert_ends(work, "cupsRasterReadPixels did not read enough data",
                         DRAWER + white(3) + raster_command(1, 1) + DOT + (raster_command(72, 14) + b"\xff" * 1008) * 2)


class Extremes(JobTest):
    """Headers that no sound program writes: the job must end by itself, in order and without a crash."""

    def test_heights_beyond_31_bits(self):
        for height in (1 << 31, 0xFFFFFFFF):
            head, rows = page(*inked(1, 20))
            head["cupsHeight"] = height
            actual = harness.run(job((head, rows)))
            self.assertIn(actual.status, (0, 1))
            self.assertTrue(actual.stderr.endswith(b"cups:successful-ok)\n"), actual.stderr[-200:])

    def test_a_page_too_large_to_be_held_for_its_copies_is_left_out(self):
        if Path("/proc/sys/vm/overcommit_memory").read_text(encoding="ascii").strip() == "1":
            self.skipTest("this machine promises any amount of memory")
        head, _ = page(*inked(1000, 1), copies=2)
        head["cupsHeight"] = 0xFFFFFFFF
        actual = harness.run(job((head, b""), page(DOT), options="CutMode=1"))
        self.assertEqual(actual.status, 0)
        self.assertEqual(actual.stdout, raster_command(1, 1) + DOT + hexed("1d 56 42 00"))
        self.assertEqual(actual.trace.count(b"+start_page start.\n"), 1)
        self.assertEqual(actual.trace.count(b"-process_page finished(0).\n"), 1)

    def test_a_billion_rows_that_are_not_there(self):
        head, rows = page(*inked(72, 20))
        head["cupsHeight"] = 1 << 30
        actual = self.run_job(job((head, rows)))
        self.assertEqual(actual.status, 1)

    def test_rows_of_two_gigabytes_that_are_not_there(self):
        head, rows = page(*inked(72, 20))
        for width in ((1 << 31) - 1, 1 << 31, 0xFFFFFFFF):
            head["cupsBytesPerLine"] = width
            actual = self.run_job(job((head, rows)))
            self.assertEqual(actual.status, 1)
            self.assertIn(b"ERROR:Raster(Raster line does not fit the strip buffer, ", actual.stderr)

    def test_header_texts_without_an_end(self):
        head, rows = page(DOT, MediaClass=b"c" * 64, MediaColor=b"d" * 64, MediaType=b"e" * 64, OutputType=b"f" * 64)
        actual = harness.run(job((head, rows), options="CutMode=1"))
        self.assertEqual(actual.status, 0)
        self.assertEqual(actual.stdout, raster_command(1, 1) + DOT + hexed("1d 56 42 00"))
        self.assertEqual(actual.stderr.count(b"INFO: cupsHeight:1\n"), 2)

    def test_very_long_options(self):
        work = job(page(DOT), options="CutMode=1 " + " ".join("o%d=%s" % (i, "v" * 90) for i in range(1000)))
        actual = self.run_job(work)
        self.assertEqual(actual.stdout, raster_command(1, 1) + DOT + hexed("1d 56 42 00"))


if __name__ == "__main__":
    unittest.main()
