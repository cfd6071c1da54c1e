"""Documents through CUPS's own filters: what comes out of the printer is what CUPS drew, dot for dot."""

import os
import shutil
import subprocess
import unittest

import documents
import escpos
import raster
import support
from support import PrintTest


def setUpModule():
    global cups, folder, receipt, label, mobile
    cups = support.start_scheduler()
    folder = support.work_folder()
    cups.add_queue("receipt", "qx100.ppd")
    cups.add_queue("label", "kll3220.ppd")
    receipt = cups.keep_raster("receipt")
    label = cups.keep_raster("label")


def pdf(*pages, **size):
    return documents.write_pdf(os.path.join(folder, "document.pdf"), pages, **size)


def has_chinese_font():
    """CUPS's text filter asks for this font by name for Chinese characters."""
    if shutil.which("fc-match") is None:
        return False
    found = subprocess.run(["fc-match", "ARPLUmingCN", "file"], capture_output=True, text=True).stdout
    return "uming" in found


class Documents(PrintTest):
    def prints(self, document, *options, queue=None, copies=1, width=72):
        name, raster_path = queue or receipt
        data = cups.print(name, document, *options, copies=copies)
        pages = self.assert_same_dots(data, raster_path, width)
        return escpos.read_commands(data), pages

    def test_text(self):
        commands, pages = self.prints(documents.TEXT)
        self.assertEqual(len(pages), 1)
        self.assertEqual(commands[-1], escpos.Cut(66, 0))

    def test_pdf_with_a_picture(self):
        commands, _ = self.prints(pdf(documents.title("Receipt") + documents.image()))
        rows = escpos.picture(commands, 72)
        ink = sum(bin(int.from_bytes(row, "big")).count("1") for row in rows)
        self.assertTrue(20000 < ink < 200000, ink)

    def test_png(self):
        _, pages = self.prints(documents.write_png(os.path.join(folder, "rings.png")))
        self.assertEqual(pages[0].width, 576)

    @unittest.skipUnless(has_chinese_font(), "the font AR PL UMing is not installed (fonts-arphic-uming)")
    def test_chinese_text(self):
        commands, _ = self.prints(documents.CHINESE)
        rows = escpos.picture(commands, 72)
        # Three lines of text; the characters differ, so they are not the box that stands for a missing one.
        cells = {tuple(row[left:left + 2] for row in rows[34:70]) for left in (0, 2)}
        self.assertEqual(len(cells), 2)
        self.assertTrue(all(any(map(any, cell)) for cell in cells))

    def test_several_pages_follow_each_other_and_one_cut_ends_the_document(self):
        commands, pages = self.prints(pdf(documents.title("One"), documents.title("Two"), documents.title("Three")))
        self.assertEqual(len(pages), 3)
        self.assertEqual(escpos.others(commands), [escpos.Cut(66, 0)])

    def test_three_copies_of_one_page(self):
        commands, pages = self.prints(pdf(documents.title("Copy")), copies=3)
        self.assertEqual([page.copies for page in pages], [3])
        self.assertEqual(escpos.others(commands), [escpos.Cut(66, 0)])

    def test_three_copies_of_two_pages_are_never_nine(self):
        for collate in ("true", "false"):
            commands, pages = self.prints(pdf(documents.title("A"), documents.title("B")), "collate=" + collate,
                                          "PostPrintAction=3", copies=3)
            self.assertEqual(sum(page.copies for page in pages), 6)
            self.assertEqual(escpos.others(commands), [escpos.Cut(66, 0)] * 6)

    def test_every_copy_is_cut_off_when_every_page_is(self):
        commands, _ = self.prints(pdf(documents.title("Copy")), "PostPrintAction=3", copies=3)
        self.assertEqual(escpos.others(commands), [escpos.Cut(66, 0)] * 3)

    def test_a_custom_size(self):
        _, pages = self.prints(pdf(documents.title("Long") + documents.block(10, 10, 50, 50), height=1100),
                               "media=Custom.72x400mm")
        self.assertAlmostEqual(pages[0].height, support.dots(400), delta=2)
        self.assertEqual(pages[0].bytes_per_line, 72)

    def test_a_custom_size_as_long_as_half_a_roll(self):
        _, pages = self.prints(documents.TEXT, "media=Custom.72x40000mm")
        self.assertAlmostEqual(pages[0].height, support.dots(40000), delta=2)

    def test_a_plain_size_name_finds_the_size_of_the_list(self):
        _, pages = self.prints(documents.TEXT, "media=72x80mm")
        self.assertEqual((pages[0].width, pages[0].height), (576, support.dots(80)))

    def test_a_page_wider_than_the_head_loses_its_right_part_only(self):
        name, raster_path = receipt
        data = cups.print(name, pdf(documents.block(10, 10, 280, 50), width=300), "PageSize=Custom.110x80mm")
        page, = raster.read_pages(raster_path)
        self.assertGreater(page.bytes_per_line, 72)
        commands = escpos.read_commands(data)
        rows = escpos.without_blank_end(raster.rows_of(page, page.bytes_per_line))
        self.assertEqual(escpos.picture(commands, page.bytes_per_line)[:len(rows)], rows)

    def test_a_narrow_label_prints_at_the_left_and_moves_to_the_next_label(self):
        title = documents.title("Label", 150)
        commands, pages = self.prints(pdf(title, title, width=141, height=226),
                                      "PageSize=50.05x80mm.Fullbleed", queue=label, width=50)
        self.assertEqual([(page.width, page.height) for page in pages], [(400, support.dots(80))] * 2)
        self.assertEqual(escpos.others(commands), [escpos.NextLabel()] * 2)

    def test_a_label_wider_than_long_is_a_custom_size(self):
        _, pages = self.prints(pdf(documents.title("Label", 60), width=141, height=85), "media=Custom.50x30mm",
                               queue=label, width=50)
        self.assertEqual([page.bytes_per_line for page in pages], [50])

    def test_a_blank_page_prints_nothing_but_the_cut(self):
        data = cups.print("receipt", pdf("0 g\n"))
        self.assertEqual(escpos.read_commands(data), [escpos.Cut(66, 0)])
