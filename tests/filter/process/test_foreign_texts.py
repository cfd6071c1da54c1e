"""What a job says in its texts: shown for support, never obeyed. The scheduler takes standard error for orders."""

import os
import re
import unittest

import harness
from cases import JobTest, job, page, roll
from ppd import Ppd

DOT = b"\x80"
ORDERS = b"\nSTATE: paused\nPPD: ShortNickName=x\n"
SPELT_OUT = b"\\x0aSTATE: paused\\x0aPPD: ShortNickName=x\\x0a"
SHOWN = 1000  # bytes of one text

OURS = re.compile(rb"INFO: |DEBUG: |PAGE: \d+ -?\d+\Z|ERROR:Raster\(")
# Two texts of the filter's own have a line end within them.
CONTINUATIONS = (b" (cups:successful-ok)", b", cups:successful-ok)")


class ForeignTexts(JobTest):
    def run_hostile(self, work):
        """Runs a job, and looks for lines that are not the filter's own."""
        actual = self.run_job(work)
        lines = actual.stderr.split(b"\n")
        self.assertEqual(lines.pop(), b"", "the last line has no end")
        pages = 0
        for line in lines:
            self.assertLess(len(line) + 1, 2000)
            self.assertTrue(OURS.match(line) or line in CONTINUATIONS, line)
            pages += line.startswith(b"PAGE:")
        self.assertEqual(pages, actual.trace.count(b"+start_page"))
        return actual

    def options_line(self, options):
        """How log and trace show the job's options."""
        work = job(page(DOT), ppd=roll())
        work.options = options
        actual = self.run_hostile(work)
        begin, end = b"DEBUG: ", b" \nDEBUG: CUPS printing options \n"
        log = actual.stderr[:actual.stderr.index(end)]
        logged = log[log.rindex(b"\n" + begin) + 1 + len(begin):]
        self.assertIn(b"\n" + begin + logged + b"\n-get options finished.\n", actual.trace)
        return logged

    def test_the_four_texts_of_a_header(self):
        names = ("MediaClass", "MediaColor", "MediaType", "OutputType")
        for version in (1, 2, 3):
            for name in names:
                actual = self.run_hostile(job(page(DOT, **{name: ORDERS}), version=version))
                self.assertIn(b"\nINFO: %s:%s\n" % (name.encode(), SPELT_OUT), actual.stderr)
            self.run_hostile(job(page(DOT, **{name: b"\n" * 63 for name in names}), version=version))

    def test_every_byte_in_a_header_text(self):
        for first in range(1, 256, 63):
            text = bytes(range(first, min(first + 63, 256)))
            expected = b"".join(b"\\x%02x" % c if c < 32 or c == 127 else bytes((c,)) for c in text)
            actual = self.run_hostile(job(page(DOT, MediaType=text)))
            self.assertIn(b"\nINFO: MediaType:%s\n" % expected, actual.stderr)

    def test_ordinary_texts_stay_as_they_are(self):
        text = "Größe 漢字 ~!\\x41%s%n".encode()
        actual = self.run_hostile(job(page(DOT, MediaClass=text)))
        self.assertIn(b"\nINFO: MediaClass:%s\n" % text, actual.stderr)
        self.assertEqual(self.options_line(text), text)

    def test_line_ends_in_the_options(self):
        self.assertEqual(self.options_line(b"note='%s'" % ORDERS), b"note='%s'" % SPELT_OUT)
        self.assertEqual(self.options_line(b"\t\x1b[1m\r\x7f"), b"\\x09\\x1b[1m\\x0d\\x7f")

    def test_options_that_the_scheduler_would_split(self):
        order = b"ATTR: auth-info-required=username,password"
        for padding in range(2047 - 100, 2049, 7):
            options = b"x" * padding + order
            self.assertEqual(self.options_line(options), options[:SHOWN] + b"...")
        self.assertEqual(self.options_line((b"STATE: paused " * 300)[:4096])[SHOWN:], b"...")

    def test_as_much_as_fits_and_no_part_of_an_escape(self):
        for text, expected in ((b"a" * 1000, b"a" * 1000), (b"a" * 1001, b"a" * 1000 + b"..."),
                               (b"a" * 996 + b"\n", b"a" * 996 + b"\\x0a"),
                               (b"a" * 996 + b"\nb", b"a" * 996 + b"\\x0a..."),
                               (b"a" * 997 + b"\n", b"a" * 997 + b"..."), (b"a" * 1000 + b"\n", b"a" * 1000 + b"..."),
                               (b"a" + b"\n" * 250, b"a" + b"\\x0a" * 249 + b"..."),
                               (b"a" * 999 + "é".encode(), b"a" * 999 + b"\xc3...")):
            self.assertEqual(self.options_line(text), expected)

    def test_the_path_of_the_ppd(self):
        for name in (b"ppd" + ORDERS.replace(b"/", b""), b"p" * 250):
            work = job(page(DOT), ppd=Ppd())
            work.ppd_path = os.fsencode(harness.path("")) + b"/".join((name, b"test.ppd")) if len(name) > 200 else \
                os.fsencode(harness.path("")) + name
            os.makedirs(os.path.dirname(work.ppd_path), exist_ok=True)
            with open(work.ppd_path, "wb") as file:
                file.write(work.ppd.text())
            actual = self.run_hostile(work)
            self.assertIn(b"\tget_options PPD:", actual.trace)
            self.assertNotIn(b"\nSTATE", actual.trace)
        work.ppd, work.ppd_path = None, b"/no/such" + ORDERS + b"p" * 2000
        actual = self.run_hostile(work)
        self.assertIn(b"\tget_options PPD:/no/such%s" % SPELT_OUT, actual.trace)
        self.assertIn(b"p...." + b"\n\tppdOpenFile failed!\n", actual.trace)

    def test_the_model_name_in_the_ppd(self):
        for name in ("x\x1b[2Jy", "x\ty", "n" * 70):
            actual = self.run_hostile(job(page(DOT), ppd=Ppd(name)))
            self.assertEqual(actual.status, 1)
            self.assertTrue(actual.stderr.endswith(b"ERROR:Raster(wrong ppd modelname!, cups:successful-ok)\n"))

    def test_names_on_the_command_line_are_not_shown_at_all(self):
        work = job(page(DOT), arguments=7, file_opens=False)
        self.run_hostile(work)


if __name__ == "__main__":
    unittest.main()
