"""The raster writer, the PPD writer and the models of what CUPS reads, held to the real libcups."""

import random
import unittest

import libcups
import raster
from cups_stream import Stream
from ppd import Option, Ppd, Size


def rows_of(rng, width, height):
    kinds = []
    for _ in range(height):
        kind = rng.randrange(4)
        if kind == 0 and kinds:
            kinds.append(kinds[-1])
        elif kind == 1:
            kinds.append(bytes(width))
        elif kind == 2:
            kinds.append(bytes([rng.randrange(256)]) * width)
        else:
            kinds.append(bytes(rng.choice((0, 0, 255, rng.randrange(256))) for _ in range(width)))
    return b"".join(kinds)


def model_pages(data, rows_at_once):
    stream = Stream(data, guarded=False)
    if stream.version is None:
        return None
    pages = []
    while (fields := stream.read_header()) is not None:
        height, width = fields["cupsHeight"], fields["cupsBytesPerLine"]
        reported, rows, done = [], b"", 0
        while done < height:
            count = min(rows_at_once or height, height - done)
            size, piece = stream.read_rows(count)
            reported.append(size)
            rows += piece.ljust(count * width, b"\0")
            done += count
            if rows_at_once and size != count * width:
                break
        pages.append((raster.header_bytes(fields, 1, "<"), reported, rows))
    return pages


@unittest.skipUnless(libcups.available(), "libcups.so.2 is not here")
class Raster(unittest.TestCase):
    def check(self, data, note):
        for rows_at_once in (0, 1, 7):
            self.assertEqual(model_pages(data, rows_at_once), libcups.read_stream(data, rows_at_once),
                             "%s, rows at once %d" % (note, rows_at_once))

    def test_every_version_and_byte_order_reads_back(self):
        rng = random.Random(1)
        for version in (1, 2, 3):
            for order in raster.ORDERS:
                pages = []
                for _ in range(3):
                    width, height = rng.randint(1, 40), rng.randint(1, 60)
                    rows = rows_of(rng, width, height)
                    pages.append((raster.header(width, height, MediaClass=b"Roll", CutMedia=4), rows))
                data = raster.stream(pages, version, order, rng)
                read = libcups.read_stream(data, 0)
                self.assertEqual([page[2] for page in read], [rows for _, rows in pages])
                self.check(data, "version %d order %s" % (version, order))

    def test_streams_cut_anywhere(self):
        rng = random.Random(2)
        for version in (1, 2, 3):
            rows = rows_of(rng, 5, 9)
            data = raster.stream([(raster.header(5, 9), rows), (raster.header(3, 4), rows_of(rng, 3, 4)),
                                  (raster.header(3, 1), b"\1\2\3")], version, "<", rng)
            body = range(len(data)) if version == 1 else [
                n for n in range(len(data)) if n % 97 == 0 or rng.random() < 0.05]
            for size in body:
                self.check(data[:size], "version %d cut at %d" % (version, size))

    def test_single_rows_cut_anywhere(self):
        rng = random.Random(3)
        for _ in range(40):
            width = rng.randint(1, 30)
            data = raster.stream([(raster.header(width, 1), rows_of(rng, width, 1))], 2, "<", rng)
            for size in range(len(data) - width - 3, len(data)):
                self.check(data[:size], "cut at %d" % size)

    def test_forged_fields(self):
        rng = random.Random(4)
        forged = ({"cupsBytesPerLine": 0}, {"cupsHeight": 0}, {"cupsBitsPerPixel": 24}, {"cupsBitsPerPixel": 0},
                  {"cupsBitsPerPixel": 8}, {"cupsColorSpace": 0}, {"cupsColorSpace": 18}, {"cupsColorOrder": 1},
                  {"cupsColorOrder": 2}, {"cupsBitsPerPixel": 32}, {"cupsHeight": 12}, {"cupsHeight": 3},
                  {"cupsBytesPerLine": 3}, {"cupsBytesPerLine": 9}, {"cupsWidth": 0},
                  {"cupsBitsPerColor": 0}, {"cupsBitsPerColor": 17}, {"cupsBitsPerPixel": 33},
                  {"cupsBitsPerPixel": 240},
                  {"cupsBitsPerPixel": 241},
                  {"cupsBytesPerLine": 1 << 31}, {"cupsColorSpace": 300}, {"cupsColorSpace": 21, "cupsNumColors": 0},
                  {"cupsColorSpace": 62, "cupsNumColors": 0}, {"cupsColorSpace": 47, "cupsNumColors": 0},
                  {"cupsBitsPerPixel": 0xFFFFFFFF})
        for version in (1, 2, 3):
            for order in raster.ORDERS:
                for fields in forged:
                    head = raster.header(8, 6)
                    rows = rows_of(rng, 8, 6)
                    body = raster.packed_rows(rows, 8, rng) if version == 2 else rows
                    sound = raster.stream([(raster.header(2, 2), b"\1\2\3\4")], version, order)
                    data = sound + raster.header_bytes(dict(head, **fields), version, order) + body + sound[4:]
                    self.check(data, "version %d order %s %s" % (version, order, fields))

    def test_what_is_no_raster_stream_does_not_open(self):
        for data in (b"", b"R", b"RaS", b"RaSx" + bytes(2000), b"%PDF-1.4\n", bytes(4)):
            self.assertIsNone(libcups.read_stream(data, 0))
            self.assertIsNone(Stream(data, guarded=False).version)

    def test_a_job_without_a_cups_error_reads_successful_ok(self):
        self.assertEqual(libcups.last_error_text(), b"successful-ok")


@unittest.skipUnless(libcups.available(), "libcups.so.2 is not here")
class Ppds(unittest.TestCase):
    SIZES = [Size("72x200", (0, 0, 204.31, 567), (204.31, 567)), Size("8w", None, (160, 300)),
             Size("A", (0, 0, -5.5, 9))]
    OPTIONS = [Option("CutMode", ("0None", "1Cut"), "1Cut"), Option("Drawer1", ("0", "1")),
               Option("Drawer2", ("0", "1"), "7"), Option("LogoIndex", ("a", "B"), "b")]

    def check(self, ppd, sizes):
        real = libcups.OpenPpd(ppd.text())
        self.assertTrue(real.opened)
        for keyword in ("CutMode", "Drawer1", "Drawer2", "LogoIndex", "PageSize", "Nothing"):
            self.assertEqual(ppd.marked(keyword), real.marked(keyword), keyword)
        for name in sizes:
            self.assertEqual(ppd.right_edge(name), real.right_edge(name), name)
        real.close()

    def test_defaults_and_sizes(self):
        names = [b"72x200", b"72X200", b"8w", b"A", b"a", b"99x1", b"", b"Custom", b"Custom.72x10mm"]
        for default in (None, "72x200", "8W", "none-of-them", "Custom.80x120mm", "Custom.80.5x9cm"):
            for variable in (False, True):
                if not variable and default and default.startswith("Custom"):
                    continue
                self.check(Ppd(options=self.OPTIONS, sizes=self.SIZES, default_size=default, variable=variable),
                           names if variable else names[:7])
        self.check(Ppd(options=self.OPTIONS), [b"72x200"])

    def test_custom_sizes(self):
        rng = random.Random(5)
        ppd = Ppd(sizes=self.SIZES, default_size="72x200", variable=True, margins=(1, 2, 3.3, 4))
        names = [b"Custom.80x120", b"Custom.80", b"custom.80x120", b"Custom.8.5x11in"]
        for _ in range(300):
            names.append(b"Custom.%sx%d%s" % (rng.choice((b"%d" % rng.randint(1, 900), b"%.2f" % rng.uniform(1, 900))),
                                              rng.randint(1, 900),
                                              rng.choice((b"", b"mm", b"cm", b"in", b"ft", b"m", b"pt"))))
        self.check(ppd, names)

    def test_what_is_no_ppd_does_not_open(self):
        for text in (b"", b"no ppd\n"):
            self.assertFalse(libcups.OpenPpd(text).opened)


if __name__ == "__main__":
    unittest.main()
