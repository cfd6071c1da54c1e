"""No input of 1 MB takes klov-preview more than 5 s or 512 MB, whatever it asks for."""

import os
import subprocess
import tempfile
import unittest

TOOL = os.environ["KLOV_PREVIEW"]
SIZE = 1 << 20
MOST_SECONDS = 5
MOST_BYTES = 512 << 20
PAGE = b"\x1bL"
TOP_OF_PAGE = b"\x1d$\0\0"
LONGEST_UNITS = b"\x1dP\x01\x01"


def fill(unit, start=b""):
    return (start + unit * (SIZE // len(unit) + 1))[:SIZE]


def little(number, size):
    return number.to_bytes(size, "little")


def stored_logo(x, y):
    data = b"\xff" * (y * ((x + 7) // 8))
    count = len(data) + 11
    return (b"\x1d(L" + little(count, 2 if count < 65536 else 4) + b"0C0AB\x01" + little(x, 2) + little(y, 2) + b"1" +
            data)


def qr_data(data):
    return b"\x1d(k" + little(len(data) + 3, 2) + b"1P0" + data


def pdf417_data(data):
    return b"\x1d(k" + little(len(data) + 3, 2) + b"0P0" + data


WORST = {
    "feeds": fill(b"\x1bJ\xff"),
    "bar codes on paper": fill(b"\x1dk\x00" + b"1" * 11 + b"\x00"),
    "rectangles in page mode": fill(b"\x1d(Q\x0e\x001" + b"\0\0\0\0\xff\xff\xff\xff" + b"\0" * 6, PAGE),
    "diagonals in page mode": fill(b"\x1d(Q\x0c\x000" + b"\0\0\0\0\xff\xff\xff\xff" + b"\0" * 4, PAGE),
    "coded rows without bytes, fed back": fill(b"\x1dv0\x20\x01\x00\xff\xff\x1bK\xff", LONGEST_UNITS),
    "coded rows without bytes, in page mode": fill(b"\x1dv0\x20\x01\x00\xff\xff" + TOP_OF_PAGE, PAGE),
    "largest characters": fill(b"\x1b \xff\x1d!\x77A\x1b$\0\0"),
    "largest characters, turned": fill(b"A\x1b$\0\0", b"\x1bV\x01\x1b \xff\x1d!\x77"),
    "page of large text": fill(b"A" * 64 + TOP_OF_PAGE, PAGE + b"\x1d!\x77"),
    "page of large text, upside down": fill(b"A" * 64 + TOP_OF_PAGE, PAGE + b"\x1b{\x01\x1d!\x77"),
    "stored logo in page mode": fill(b"\x1d(L\x06\x000EAB\x02\x02" + TOP_OF_PAGE, stored_logo(8192, 256) + PAGE),
    "stored logo, fed back": fill(b"\x1d(L\x06\x000EAB\x02\x02\x1bK\xff", LONGEST_UNITS + stored_logo(576, 2000)),
    "tall image without width": fill(b"\x1cp\x01\x03" + TOP_OF_PAGE, b"\x1cq\x01\0\0\xff\xff" + PAGE),
    "images without width defined": fill(b"\x1cq\x01\0\0\xff\xff"),
    "QR code again and again": fill(b"\x1d(k\x03\0001E0\x1d(k\x03\0001Q0", qr_data(b"ab1%" * 500)),
    "QR codes": fill(qr_data(b"ab1%" * 375) + b"\x1d(k\x03\0001Q0"),
    "PDF417": fill(b"\x1d(k\x04\0000E01\x1d(k\x03\0000Q0", pdf417_data(b"ab1%" * 150)),
    "largest boxes": fill(b"\x1dkA\x00" + TOP_OF_PAGE, PAGE + b"\x1dh\xff\x1dw\x08"),
    "pages begun and thrown away": fill(b"\x1bL\x1d$\xff\xffA\n\x18"),
    "page printed again": fill(b"\x1b\x0c\x1bK\xff", LONGEST_UNITS + PAGE + b"\x1d$\xff\xffA\n"),
    "bar codes without an end": fill(b"\x1dk\x01"),
    "half commands": fill(b"\x1d\x28"),
    "text that may be a command": fill(b"Z"),
    "line feeds": fill(b"\n"),
    "cuts": fill(b"\x1bi"),
    "cuts with paper in between": fill(b"\x1bJ\x0f\x1bi"),
    "marks of logos": fill(b"\x1cp\x01\0\x1bJ\x15"),
    "wide rows": fill(b"\x1dv0\x20\xff\xff\xff\xff" + b"\x81\xff" * 4000),
    "characters without width": fill(b"AAAAAAAA", b"\x1b%\x01\x1b&\x03AA\x00"),
    "announced lengths": fill(b"\x1d8A\xff\xff\xff\xff"),
    "announced images": fill(b"\x1cq\xff\xff\xff\xff\xff"),
}


class Limits(unittest.TestCase):
    def run_tool(self, data, *options):
        """Runs the tool on the bytes; its own seconds of processor time and its largest memory."""
        with tempfile.TemporaryDirectory() as folder:
            job = os.path.join(folder, "job")
            with open(job, "wb") as file:
                file.write(data)
            process = subprocess.Popen([TOOL, "-q", job] + [option.replace("OUT", folder) for option in options],
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            _, status, used = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
            return process.returncode, used.ru_utime + used.ru_stime, used.ru_maxrss * 1024

    def check(self, *options):
        for name, data in WORST.items():
            with self.subTest(name):
                status, seconds, memory = self.run_tool(data, *options)
                self.assertIn(status, (0, 1))
                self.assertLess(seconds, MOST_SECONDS)
                self.assertLess(memory, MOST_BYTES)

    def test_listing(self):
        self.check("--json")

    def test_bare_picture(self):
        self.check("--bare", "-o", "OUT/picture.png")

    def test_picture_on_the_desk(self):
        self.check("-o", "OUT/picture.png")

    def test_an_announced_length_beyond_the_printer_is_a_failure(self):
        self.assertEqual(self.run_tool(b"\x1cq\x01\xff\xff\xff\xff")[0], 1)


if __name__ == "__main__":
    unittest.main()
