"""imagetoroll and texttoroll as CUPS runs them: arguments, environment, standard streams, status and log."""

import os
import struct
import subprocess
import tempfile
import unittest
import zlib

IMAGE = os.environ["KLOV_IMAGETOROLL"]
TEXT = os.environ["KLOV_TEXTTOROLL"]
HEADER = 1796
PPD = """*PPD-Adobe: "4.3"
*FormatVersion: "4.3"
*FileVersion: "1"
*LanguageVersion: English
*LanguageEncoding: ISOLatin1
*PCFileName: "TEST.PPD"
*Manufacturer: "Test"
*Product: "(Test)"
*ModelName: "Test"
*ShortNickName: "Test"
*NickName: "Test"
*PSVersion: "(3010.000) 0"
*OpenUI *PageSize/Size: PickOne
*DefaultPageSize: 72x210
*PageSize 72x210/72 x 210: "x"
*CloseUI: *PageSize
*DefaultImageableArea: 72x210
*ImageableArea 72x210/a: "0 0 204.31 595.27"
*DefaultPaperDimension: 72x210
*PaperDimension 72x210/a: "204.31 595.27"
*OpenUI *Resolution/Resolution: PickOne
*DefaultResolution: 203dpi
*Resolution 203dpi/203: "x"
*CloseUI: *Resolution
*OpenUI *PaperType/Kind: PickOne
*DefaultPaperType: 0
*PaperType 0/Roll: "x"
*PaperType 1/Label: "x"
*CloseUI: *PaperType
*OpenUI *Dither/Dither: PickOne
*DefaultDither: Diffusion
*Dither Diffusion/D: "x"
*Dither Threshold/T: "x"
*CloseUI: *Dither
"""


def png(width, height, data, depth=8):
    def chunk(kind, body):
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, depth, 0, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(data)) + chunk(b"IEND", b""))


def grey_png(width, height, value):
    return png(width, height, (b"\0" + bytes((value,)) * width) * height)


class Result:
    def __init__(self, process):
        self.status = process.returncode
        self.log = process.stderr.decode()
        self.errors = [line for line in self.log.splitlines() if line.startswith("ERROR: ")]
        self.raster = process.stdout

    def pages(self):
        """Copies, width, rows of each page."""
        assert self.raster[:4] == b"3SaR", self.raster[:4]
        at, found = 4, []
        while at < len(self.raster):
            copies, = struct.unpack_from("=I", self.raster, at + 340)
            width, height = struct.unpack_from("=II", self.raster, at + 372)
            line = (width + 7) // 8
            rows = self.raster[at + HEADER:at + HEADER + line * height]
            assert len(rows) == line * height, "cut short"
            found.append((copies, width, [rows[i * line:(i + 1) * line] for i in range(height)]))
            at += HEADER + line * height
        return found


class ProgramTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.ppd = self.write("test.ppd", PPD.encode())

    def write(self, name, data):
        path = os.path.join(self.folder.name, name)
        with open(path, "wb") as file:
            file.write(data)
        return path

    def run_program(self, program, data, options="", copies="1", piped=False, language="C.UTF-8", name="document"):
        path = self.write(name, data)
        environment = {"PPD": self.ppd, "LANG": language, "PATH": os.environ["PATH"], "HOME": self.folder.name}
        for name in ("ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"):
            if name in os.environ:
                environment[name] = os.environ[name]
        command = [program, "1", "user", "title", copies, options] + ([] if piped else [path])
        with open(path, "rb") as source:
            process = subprocess.run(command, stdin=source if piped else subprocess.DEVNULL, capture_output=True,
                                     env=environment, timeout=200)
        return Result(process)

    def printed(self, *arguments, **settings):
        result = self.run_program(*arguments, **settings)
        self.assertEqual(result.status, 0, result.log)
        self.assertEqual(result.errors, [])
        return result.pages()

    def refused(self, *arguments, **settings):
        """One line in words, and not a byte of a page."""
        result = self.run_program(*arguments, **settings)
        self.assertEqual(result.status, 1)
        self.assertEqual(len(result.errors), 1, result.log)
        self.assertEqual([page for page in result.pages()] if result.raster else [], [])
        return result.errors[0]


class Pictures(ProgramTest):
    def test_black_and_white_dot_for_dot_in_the_middle(self):
        pages = self.printed(IMAGE, png(16, 2, b"\0\xAA\x0F\0\x55\xF0", depth=1))
        self.assertEqual(len(pages), 1)
        copies, width, rows = pages[0]
        self.assertEqual((copies, width), (1, 576))
        self.assertEqual([row[35:37] for row in rows], [b"\x55\xF0", b"\xAA\x0F"])
        self.assertEqual(b"".join(row[:35] + row[37:] for row in rows), bytes(2 * 70))

    def test_a_pipe_is_printed_like_a_file(self):
        picture = grey_png(700, 300, 120)
        self.assertEqual(self.printed(IMAGE, picture, piped=True), self.printed(IMAGE, picture))

    def test_copies_are_left_to_the_filter_behind(self):
        self.assertEqual([page[0] for page in self.printed(IMAGE, grey_png(8, 8, 0), copies="3")], [3])
        self.assertEqual([page[0] for page in self.printed(IMAGE, grey_png(8, 8, 0), "Collate", copies="3")], [3])

    def test_options_of_the_job_and_of_the_ppd(self):
        grey = grey_png(100, 100, 100)

        def ink(options=""):
            return sum(byte.bit_count() for row in self.printed(IMAGE, grey, options)[0][2] for byte in row)
        self.assertEqual(ink("Dither=Threshold"), 100 * 100)
        self.assertLess(ink("Darkness=-3"), ink())
        self.assertLess(ink(), ink("Darkness=3"))
        self.assertLess(ink("Darkness=3"), 100 * 100)

    def test_a_label(self):
        rows = self.printed(IMAGE, grey_png(100, 50, 0), "PaperType=1")[0][2]
        self.assertEqual(len(rows), 1680)  # 210 mm

    def test_what_cannot_be_printed(self):
        good = grey_png(60, 60, 90)
        for data, word in ((b"", "empty"), (b"text", "not a picture"), (good[:-30], "damaged"), (good[:20], "damaged"),
                           (b"\xff\xd8\xff\xe0", "damaged"), (b"P5 10 10 255\nabc", "too early"),
                           (b"P5 0 10 255\n", "empty"), (b"P4 100000000 1\n", "too large"),
                           (b"P4 10 400001\n" + bytes(800002), "too large"),
                           (png(65535, 65535, b""), "65535 x 65535")):
            self.assertIn(word, self.refused(IMAGE, data))

    def test_a_file_that_is_not_there(self):
        process = subprocess.run([IMAGE, "1", "u", "t", "1", "", "/nonexistent"], capture_output=True,
                                 env=dict(os.environ, PPD=self.ppd))
        self.assertEqual(process.returncode, 1)
        self.assertIn(b"ERROR: The document cannot be opened", process.stderr)

    def test_no_page_of_those_asked_for(self):
        self.assertIn("nothing to print", self.refused(IMAGE, grey_png(9, 9, 0), "page-ranges=2-3"))

    def test_an_output_that_is_gone(self):
        path = self.write("document", grey_png(576, 4000, 100))
        for program in (IMAGE, TEXT):
            read_end, write_end = os.pipe()
            os.close(read_end)
            process = subprocess.run([program, "1", "u", "t", "1", "", path], stdout=write_end, stderr=subprocess.PIPE,
                                     env=dict(os.environ, PPD=self.ppd))
            os.close(write_end)
            self.assertEqual(process.returncode, 1)
            self.assertIn(b"ERROR: The printer's filter does not take", process.stderr)


class Texts(ProgramTest):
    def test_one_long_page_of_48_columns(self):
        line = b"x" * 48 + b"\n"
        (_, width, rows), = self.printed(TEXT, line * 500)
        self.assertEqual((width, len(rows)), (576, 12000))
        self.assertEqual(rows[:24] * 500, rows)

    def test_a_pipe_is_printed_like_a_file(self):
        text = "Größe 12,34 €\n".encode() * 30
        self.assertEqual(self.printed(TEXT, text, piped=True), self.printed(TEXT, text))

    def test_windows_text_looks_like_utf_8(self):
        self.assertEqual(self.printed(TEXT, "Größe €".encode("cp1252")), self.printed(TEXT, "Größe €".encode()))

    def test_chinese_text_by_the_language_of_the_job(self):
        text = "收据 12"
        self.assertEqual(self.printed(TEXT, text.encode("gb18030"), language="zh_CN.UTF-8"),
                         self.printed(TEXT, text.encode()))

    def test_columns_by_options(self):
        rows = self.printed(TEXT, b"x" * 28 + b"y", "cpi=10 lpi=6")[0][2]
        self.assertEqual(len(rows), 2 * 34)

    def test_collated_copies_are_repeated(self):
        self.assertEqual([page[0] for page in self.printed(TEXT, b"a\fb", "Collate", copies="2")], [1] * 4)
        self.assertEqual([page[0] for page in self.printed(TEXT, b"a\fb", copies="2")], [2] * 2)

    def test_page_ranges(self):
        self.assertEqual(len(self.printed(TEXT, b"a\fb\fc", "page-ranges=2-")), 2)
        self.assertIn("nothing to print", self.refused(TEXT, b"a\fb", "page-ranges=5"))

    def test_characters_that_no_font_has_are_named(self):
        result = self.run_program(TEXT, "ok \U000F1234".encode())
        self.assertEqual(result.status, 0)
        self.assertIn("WARNING: No font on the print server has these characters", result.log)
        self.assertIn("U+F1234", result.log)

    def test_what_cannot_be_printed(self):
        self.assertIn("empty", self.refused(TEXT, b""))
        self.assertIn("no room", self.refused(TEXT, b"a", "page-left=300"))
        self.assertIn("16 MB", self.refused(TEXT, b"a" * (16 * 1024 * 1024 + 1)))

    def test_a_megabyte_without_a_line_end(self):
        rows = self.printed(TEXT, b"x" * 1000000)
        self.assertEqual(sum(len(page[2]) for page in rows), -(-1000000 // 48) * 24)

    def test_noise_ends_in_order(self):
        result = self.run_program(TEXT, bytes(i * i % 251 for i in range(20000)))
        self.assertEqual((result.status, result.errors), (0, []))


if __name__ == "__main__":
    unittest.main()
