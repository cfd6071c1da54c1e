"""The printer's description and the job's options, sound, huge, cut and scrambled."""

import random
import unittest

import faults
import harness
from cases import JobTest, choice, inked, job, page, roll
from ppd import Ppd

KEYWORDS = {"Resolution": "203dpi", "PaperType": "1", "PrintLogo": "1", "LogoIndex": "2", "LogoAlign": "2",
            "BeepControl": "1", "BeepDuration": "3", "BeepInterval": "2", "BeepRepeat": "2", "ExternalBeepControl": "2",
            "ExternalBeepDuration": "2", "ExternalBeepInterval": "1", "ExternalBeepRepeat": "2", "Drawer1": "1",
            "Drawer2": "2", "BitmapCompression": "1", "PaperSaveMode": "2", "PaperSaveBottom": "0",
            "PostPrintAction": "3", "FormfeedLength": "20", "CutMode": "1", "CutPaperLength": "10"}
MOST_MEMORY = 64 << 20


def full_ppd(without=None):
    return roll(options=[choice(name, value, "0", "9") for name, value in KEYWORDS.items() if name != without])


class Descriptions(JobTest):
    def pages(self):
        return [page(*inked(9, 20))]

    def test_every_option_absent_from_the_ppd(self):
        self.run_job(job(*self.pages(), ppd=full_ppd()))
        for keyword in KEYWORDS:
            with self.subTest(without=keyword):
                self.run_job(job(*self.pages(), ppd=full_ppd(without=keyword)))
        self.run_job(job(*self.pages(), ppd=Ppd()))

    def assert_ends(self, text, limit=MOST_MEMORY):
        work = job(*self.pages(), ppd=Ppd(damaged=text), options="CutMode=1")
        harness.place_ppd(work)
        run = faults.run(work)
        self.assertTrue(run.ended_in_order(), (run.status, run.stderr[-200:]))
        if not faults.is_sanitized() and not faults.is_prefixed():
            self.assertLess(run.peak, limit)
        return run

    def test_a_ppd_cut_anywhere(self):
        text = full_ppd().text()
        for size in range(0, len(text), 37):
            with self.subTest(size=size):
                self.assert_ends(text[:size])

    def test_a_scrambled_ppd(self):
        rng = random.Random(11)
        text = full_ppd().text()
        for number in range(150):
            scrambled = bytearray(text)
            for _ in range(rng.randrange(1, 20)):
                at = rng.randrange(len(scrambled))
                scrambled[at:at + rng.randrange(3)] = rng.randbytes(rng.randrange(4))
            with self.subTest(number=number):
                self.assert_ends(bytes(scrambled))

    def test_a_binary_ppd(self):
        rng = random.Random(12)
        for size in (1, 100, 70000):
            self.assertEqual(self.assert_ends(rng.randbytes(size)).status, 1)

    def test_a_huge_ppd(self):
        options = [choice("Option%d" % number, "a", *("c%d" % n for n in range(20))) for number in range(2000)]
        text = roll(options=options).text()
        self.assertGreater(len(text), 1 << 20)
        self.assertEqual(self.assert_ends(text, limit=128 << 20).status, 0)

    def test_an_endless_line_in_a_ppd(self):
        text = roll().text()
        self.assert_ends(text + b"*Note: " + b"x" * (4 << 20) + b"\n")
        self.assert_ends(text + b'*Note: "' + b"x\n" * (1 << 20))

    def test_custom_sizes_of_any_width(self):
        """CUPS holds nobody to the PPD's widest size; the strip is as wide as what was asked for, or not to be had."""
        work = job(*self.pages(), ppd=roll(variable=True))
        harness.place_ppd(work)
        limit = None if faults.is_sanitized() or faults.is_prefixed() else faults.ADDRESS_SPACE
        for width in ("2000", "99999999", "999999999999", "1e30", "-5", "0", "nan"):
            for unit in ("", "mm", "in"):
                work.options = b"PageSize=Custom.%sx10%s" % (width.encode(), unit.encode())
                with self.subTest(options=work.options):
                    run = faults.run(work, address_space=limit)
                    self.assertTrue(run.ended_in_order(), (run.status, run.stderr[-200:]))

    def test_scrambled_options(self):
        rng = random.Random(13)
        work = job(*self.pages(), ppd=full_ppd())
        harness.place_ppd(work)
        letters = b"CutMode PageSize=Custom.1x2mm {}'\"\\,:=-9999999999 \t\xff\x01"
        for number in range(200):
            work.options = bytes(rng.choice(letters) for _ in range(rng.randrange(200)))
            with self.subTest(number=number):
                run = faults.run(work)
                self.assertTrue(run.ended_in_order(), (run.status, work.options, run.stderr[-200:]))


if __name__ == "__main__":
    unittest.main()
