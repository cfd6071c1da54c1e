"""PDFs on a roll: place, scale, length, words, codes, logos and photos."""

import shutil
import subprocess
import unittest

import makers
import numpy
from makers import Page
from paper import DOTS_PER_MM, DocumentTest, psnr
from PIL import Image


class Receipts(DocumentTest):
    def rule_of(self, paper, y):
        """Left and right of the ink in the rows around y millimetres."""
        left, _, right, _ = paper.part(int((y - 1) * DOTS_PER_MM), int((y + 2) * DOTS_PER_MM)).box()
        return left, right

    def test_as_wide_as_the_head(self):
        document = Page(self.path("a.pdf"), 72, 60).text(5, 10, "Exactly the head").rule(6, 20).rule(6, 55).save()
        paper = self.print_on("receipt", document)
        self.assertEqual(self.rule_of(paper, 20), (48, 528))
        self.assert_near(paper.length, 55.5 * DOTS_PER_MM)
        self.assert_words(paper, "Exactly")

    def test_shorter_than_wide_is_not_turned(self):
        document = Page(self.path("b.pdf"), 72, 50).text(5, 10, "Kitchen ticket").text(5, 20, "2 soups", 14).rule(6, 40)
        paper = self.print_on("receipt", document.save())
        self.assertEqual(self.rule_of(paper, 40), (48, 528))
        self.assert_near(paper.length, 40.5 * DOTS_PER_MM)
        self.assert_words(paper, "Kitchen", "soups")

    def test_80_mm_with_margins(self):
        document = Page(self.path("c.pdf"), 80, 100).text(8, 20, "Eighty millimetres").rule(10, 50).save()
        paper = self.print_on("receipt", document)
        self.assertEqual(self.rule_of(paper, 50), (48, 528))
        self.assert_words(paper, "Eighty")

    def test_80_mm_with_ink_at_the_left_edge_is_shifted(self):
        document = Page(self.path("d.pdf"), 80, 40).rule(1, 20).save()
        left, right = self.rule_of(self.print_on("receipt", document), 20)
        self.assert_near(right - left, 480)
        self.assert_near(left, 0, 2)

    def test_80_mm_of_ink_shrinks_just_enough(self):
        document = Page(self.path("e.pdf"), 80, 40).rule(0, 20, 80).save()
        left, right = self.rule_of(self.print_on("receipt", document), 18)
        self.assert_near(right - left, 576, 2)

    def test_60_cm_long(self):
        page = Page(self.path("f.pdf"), 72, 600)
        for y in range(10, 600, 20):
            page.text(6, y, "Line at %d mm" % y)
        paper = self.print_on("receipt", page.rule(6, 590).save())
        self.assert_near(paper.length, 590.5 * DOTS_PER_MM)
        self.assertEqual(self.rule_of(paper, 590), (48, 528))

    def test_58_mm_on_an_80_mm_printer(self):
        document = Page(self.path("g.pdf"), 58, 40).rule(4, 20, 50).save()
        self.assertEqual(self.rule_of(self.print_on("receipt", document), 20), (88, 488))

    def test_58_mm_on_a_58_mm_printer(self):
        document = Page(self.path("h.pdf"), 58, 40).rule(9, 20, 40).text(9, 10, "Small paper").save()
        paper = self.print_on("small", document)
        self.assertEqual(self.rule_of(paper, 20), (32, 352))
        self.assert_words(paper, "Small")

    def test_an_own_rotation_of_the_pdf_is_kept(self):
        document = Page(self.path("i.pdf"), 72, 40, rotate=90).bar(10, 5, 2, 30).save()
        size = subprocess.run(["pdfinfo", document], capture_output=True, text=True).stdout
        self.assertIn("Page rot:        90", size)
        left, top, right, bottom = self.print_on("receipt", document).box()
        self.assert_near(right - left, 240)
        self.assert_near(bottom - top, 16)

    def test_a4_shrinks_until_its_ink_fits(self):
        page = Page(self.path("j.pdf"), 210, 297).text(20, 40, "INVOICE 4711", 40).rule(20, 60, 170).rule(20, 120, 1)
        paper = self.print_on("receipt", page.save())
        left, _, right, _ = paper.box()
        self.assert_near(right - left, 576, 3)
        self.assertLess(paper.length, 60 * DOTS_PER_MM)
        top = paper.box()[1]
        self.assert_near(top, 24, 4)
        self.assert_words(paper, "INVOICE", "4711")

    def test_a4_pages_of_one_size_share_one_scale(self):
        page = Page(self.path("k.pdf"), 210, 297).rule(20, 60, 170, 2).next_page().rule(20, 60, 85, 2)
        paper = self.print_on("receipt", page.save())
        lengths = sorted(int(row.sum()) for row in paper.dots if row.any())
        self.assert_near(lengths[0], 288, 3)
        self.assert_near(lengths[-1], 576, 3)

    def test_pages_keep_their_own_length(self):
        page = Page(self.path("l.pdf"), 72, 30).rule(6, 10).next_page(height=80).rule(6, 10)
        paper = self.print_on("receipt", page.save(), "PaperSaveBottom=0")
        first, second = numpy.flatnonzero(paper.dots.any(axis=1) & ~numpy.roll(paper.dots.any(axis=1), 1))
        self.assert_near(second - first, 30 * DOTS_PER_MM)

    def test_stems_are_black_and_small_text_is_read(self):
        page = Page(self.path("m.pdf"), 72, 40)
        for i, size in enumerate((6, 7, 8, 9)):
            page.text(5, 8 + 8 * i, "Quick brown foxes jump %d" % size, size)
        self.assert_words(self.print_on("receipt", page.save()), "jump 7", "jump 8", "jump 9")

    def test_hairlines_do_not_vanish(self):
        page = Page(self.path("n.pdf"), 72, 40)
        page.canvas.setLineWidth(0.05)
        for i in range(10):
            page.canvas.line(20, 20 + i * 5.3, 180, 20 + i * 5.3)
        paper = self.print_on("receipt", page.save())
        rows = [int(row.sum()) for row in paper.dots if row.any()]
        self.assertEqual(len(rows), 10)
        self.assertGreater(min(rows), 440)

    def test_codes(self):
        page = Page(self.path("o.pdf"), 72, 120)
        page.code("EAN13", 8.13, 5.21, "400638133393", barWidth=0.3 * makers.mm, barHeight=15 * makers.mm)
        page.code("Code128", 5.37, 35.44, "KLOV-2026/11", barWidth=0.27 * makers.mm, barHeight=12 * makers.mm)
        page.code("QR", 20.61, 60.77, "https://example.org/receipt/2041", barWidth=25 * makers.mm,
                  barHeight=25 * makers.mm)
        codes = self.print_on("receipt", page.save()).codes()
        self.assertEqual(codes, {"4006381333931", "KLOV-2026/11", "https://example.org/receipt/2041"})

    def test_a_logo_in_a_pdf_is_dot_for_dot(self):
        logo = makers.logo(384, 200)
        file = self.path("logo.png")
        Image.fromarray(~logo).save(file)
        document = Page(self.path("p.pdf"), 72, 40).picture(file, 12, 5, 48, 25).save()
        paper = self.print_on("receipt", document)
        self.assertTrue((paper.dots[40:240, 96:480] == logo).all())

    def test_a_photo_keeps_its_greys(self):
        photo = makers.photo(560, 400)
        file = self.path("photo.png")
        Image.fromarray(photo).save(file)
        document = Page(self.path("q.pdf"), 72, 60).picture(file, 1, 5, 70, 50).save()
        paper = self.print_on("receipt", document)
        cut = type(paper)(paper.dots[40:440, 8:568])
        self.assertGreater(psnr(cut, photo), 24)

    def test_solid_grey_is_dotted_and_near_white_is_paper(self):
        document = Page(self.path("r.pdf"), 72, 60).bar(6, 5, 60, 20, grey=0.5).bar(6, 30, 60, 20, grey=0.95).save()
        paper = self.print_on("receipt", document)
        self.assertTrue(0.2 < paper.part(48, 192).ink_share() < 0.6)
        self.assertEqual(paper.length, 200)


class Producers(DocumentTest):
    def test_cairo(self):
        def draw(context):
            context.select_font_face("DejaVu Sans")
            context.set_font_size(5)
            context.move_to(5, 12)
            context.show_text("Cairo receipt")
            context.rectangle(6, 20, 60, 1)
            context.fill()
        paper = self.print_on("receipt", makers.cairo_receipt(self.path("a.pdf"), 72, 40, draw))
        self.assert_near(paper.part(150, 180).box()[2], 528, 1)
        self.assert_words(paper, "Cairo receipt")

    def test_ghostscript(self):
        source = "/Helvetica findfont 14 scalefont setfont 14 60 moveto (Ghost script) show " \
                 "17.01 28.35 170.08 2 rectfill showpage"
        paper = self.print_on("receipt", makers.ghostscript(self.path("b.pdf"), source, 72, 40))
        left, _, right, _ = paper.part(230, 260).box()
        self.assertEqual((left, right), (48, 528))
        self.assert_words(paper, "Ghost")

    def test_postscript_itself(self):
        path = self.path("c.ps")
        with open(path, "w", encoding="ascii") as file:
            file.write("%!PS-Adobe-3.0\n%%BoundingBox: 0 0 204 113\n<</PageSize[204.3 113.4]>>setpagedevice\n"
                       "/Helvetica findfont 14 scalefont setfont 14 60 moveto (Post script) show\n"
                       "17.01 28.35 170.08 2 rectfill showpage\n")
        paper = self.print_on("receipt", path)
        left, _, right, _ = paper.part(220, 270).box()
        self.assert_near(right - left, 480, 1)
        self.assert_words(paper, "Post")

    def test_weasyprint(self):
        html = "<style>@page{size:80mm 70mm;margin:5mm}body{font:12pt 'DejaVu Sans'}" \
               "hr{width:60mm;height:1mm;border:0;background:#000;margin:4mm 5mm}</style>" \
               "<h2>Paper shop</h2><hr><p>Total 12.50"
        paper = self.print_on("receipt", makers.weasyprint(self.path("d.pdf"), html))
        self.assert_near(max(int(row.sum()) for row in paper.dots), 480, 2)
        self.assert_words(paper, "Paper shop", "Total", "12.50")

    @unittest.skipUnless(shutil.which("chromium"), "chromium is not installed")
    def test_a_browser(self):
        html = "<style>@page{size:80mm 70mm;margin:5mm}body{margin:0;font:12pt 'DejaVu Sans'}" \
               "div{width:60mm;height:1mm;background:#000;margin:4mm;-webkit-print-color-adjust:exact}</style>" \
               "<h2>Browser</h2><div></div><p>Total 9.80"
        paper = self.print_on("receipt", makers.chromium(self.path("e.pdf"), self.path("e.html"), html))
        self.assert_near(max(int(row.sum()) for row in paper.dots), 480, 2)
        self.assert_words(paper, "Browser", "9.80")

    def test_groff(self):
        source = ".pl 80m\n.po 5m\n.ll 60m\n.ps 12\n.vs 15\nTypeset by troff\n.br\nTotal 7.35\n"
        paper = self.print_on("receipt", makers.groff(self.path("f.pdf"), source, 72, 60))
        self.assert_words(paper, "Typeset", "7.35")

    def test_a_scanned_bill_prints_without_snow(self):
        document = makers.scan(self.path("g.pdf"), 80, 60, ["Scanned bill", "Total 48.20"])
        paper = self.print_on("receipt", document)
        self.assert_words(paper, "Scanned", "48.20")
        self.assertEqual(int(paper.dots[350:].sum()), 0)


if __name__ == "__main__":
    unittest.main()
