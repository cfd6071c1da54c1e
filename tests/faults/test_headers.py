"""Page headers with absurd numbers in every field: the job ends in order, soon, and within its memory."""

import struct
import unittest

import faults
import harness
import raster
from cases import JobTest, inked, job, page, roll
from session import Session

ABSURD = (0, 1, 1 << 31, 0xFFFFFFFF)
LONG_ROWS = (1009, 1 << 20, 1 << 30, 0x7FFFFFFF)
TOO_LONG = b"ERROR:Raster(Raster line does not fit the strip buffer, cups:successful-ok)\n"
MOST_MEMORY = 32 << 20
BASE = page(*inked(9, 4))


def streams(version, number):
    """Name, value and stream of every forged field, in the first or the second page."""
    order = raster.ORDERS[version % 2]
    sound = raster.page_bytes(*BASE, version, order)
    rows = sound[len(raster.header_bytes(BASE[0], version, order)):]
    word = struct.pack(order + "I", raster.SYNC[version])
    for name, places in raster.NUMBERS:
        for place in range(places):
            for value in ABSURD + (LONG_ROWS if name == "cupsBytesPerLine" else ()):
                fields = dict(BASE[0])
                if places > 1:
                    values = list(fields.get(name, [0] * places))
                    values[place] = value
                    fields[name] = values
                else:
                    fields[name] = value
                forged = raster.header_bytes(fields, version, order) + rows
                yield name, value, word + sound * (number - 1) + forged + sound


class AbsurdHeaders(JobTest):
    def check_version(self, version):
        limit = None if faults.is_sanitized() or faults.is_prefixed() else faults.ADDRESS_SPACE
        work = job(ppd=roll(), options="CutMode=1")
        harness.place_ppd(work)
        peak = 0
        for number in (1, 2):
            for name, value, stream in streams(version, number):
                if name == "NumCopies" and value > 1:
                    continue  # obeyed: see below
                work.raster = stream
                run = faults.run(work, address_space=limit)
                with self.subTest(page=number, field=name, value=value):
                    self.assertTrue(run.ended_in_order(), (run.status, run.stderr[-200:]))
                    if name == "cupsBytesPerLine" and value > 1:
                        self.assertEqual(run.status, 1)
                        self.assertTrue(run.stderr.endswith(TOO_LONG), run.stderr[-200:])
                peak = max(peak, run.peak)
        if limit is not None:
            self.assertLess(peak, MOST_MEMORY)

    def test_version_1(self):
        self.check_version(1)

    def test_version_2(self):
        self.check_version(2)

    def test_version_3(self):
        self.check_version(3)


class ForgedCopies(JobTest):
    """A count of copies is obeyed, whatever it is; it ends with the printer that takes them."""

    def test_the_job_ends_when_the_printer_goes_away(self):
        for copies in (1 << 31, 0xFFFFFFFF):
            work = job(page(*inked(9, 4), copies=copies), ppd=roll())
            with Session(work) as session:
                session.send(work.raster)
                session.process.stdin.close()
                session.read_printed(100000)
                session.process.stdout.close()
                session.process.stderr.read()
                self.assertEqual(session.process.wait(timeout=faults.TIME_LIMIT), 1)


if __name__ == "__main__":
    unittest.main()
