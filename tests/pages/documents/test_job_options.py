"""What a job can ask of its pages."""

import unittest

import numpy
from makers import Page
from paper import DOTS_PER_MM, DocumentTest


class JobOptions(DocumentTest):
    def pages(self, count=4):
        """Page n has a bar of n cm."""
        page = Page(self.path("pages.pdf"), 72, 30)
        for number in range(1, count + 1):
            page.rule(6, 10, 10 * number, 1)
            if number < count:
                page.next_page()
        return page.save()

    def order(self, paper):
        """The lengths of the bars in centimetres, from the top."""
        widths = [int(row.sum()) for row in paper.dots]
        starts = [i for i, width in enumerate(widths) if width and not widths[i - 1]]
        return [round(widths[i + 2] / DOTS_PER_MM / 10) for i in starts]

    def test_ranges_sets_and_order(self):
        document = self.pages()
        self.assertEqual(self.order(self.print_on("receipt", document)), [1, 2, 3, 4])
        self.assertEqual(self.order(self.print_on("receipt", document, "page-ranges=2-3")), [2, 3])
        self.assertEqual(self.order(self.print_on("receipt", document, "page-set=odd")), [1, 3])
        self.assertEqual(self.order(self.print_on("receipt", document, "outputorder=reverse")), [4, 3, 2, 1])

    def test_copies(self):
        document = self.pages(2)
        self.assertEqual(self.order(self.print_on("receipt", document, copies=2)), [1, 1, 2, 2])
        self.assertEqual(self.order(self.print_on("receipt", document, "Collate=True", copies=2)), [1, 2, 1, 2])

    def test_number_up_prints_pages_one_by_one(self):
        paper = self.print_on("receipt", self.pages(2), "number-up=2")
        self.assertEqual(self.order(paper), [1, 2])
        self.assertIn("number-up", self.cups.log())

    def box(self, document, *options):
        return self.print_on("receipt", document, *options).box()

    def test_position(self):
        document = Page(self.path("narrow.pdf"), 40, 30).bar(0, 10, 40, 2).save()
        self.assertEqual(self.box(document)[0], 128)
        self.assertEqual(self.box(document, "position=left")[0], 0)
        self.assertEqual(self.box(document, "position=right")[2], 576)

    def test_mirror(self):
        document = Page(self.path("side.pdf"), 72, 30).bar(0, 10, 10, 2).save()
        self.assertEqual(self.box(document, "mirror")[2], 576)

    def test_orientation_turns_counter_clockwise(self):
        document = Page(self.path("turn.pdf"), 72, 60).bar(0, 0, 10, 2).save()
        left, top, right, bottom = self.box(document, "landscape")
        self.assertEqual((right - left, bottom - top), (16, 80))
        self.assert_near(top, 62 * DOTS_PER_MM)
        left, top, right, bottom = self.box(document, "orientation-requested=6")
        self.assert_near(right, 576)
        self.assert_near(bottom, 60 * DOTS_PER_MM)

    def test_scaling(self):
        document = Page(self.path("scale.pdf"), 144, 30).bar(0, 10, 144, 2).save()
        wide = Page(self.path("half.pdf"), 36, 30).bar(0, 10, 36, 2).save()
        self.assertEqual(self.box(document, "print-scaling=none")[3], 96)
        self.assertEqual(self.box(document, "fit-to-page")[3], 48)
        left, _, right, bottom = self.box(wide, "print-scaling=fit")
        self.assertEqual((left, right, bottom), (0, 576, 192))
        left, _, right, _ = self.box(wide, "natural-scaling=50")
        self.assert_near(right - left, 144)

    def test_banners(self):
        paper = self.print_on("receipt", self.pages(1), "job-sheets=standard,none")
        self.assertIn("receipt", paper.words())

    def test_dither_and_darkness(self):
        document = Page(self.path("grey.pdf"), 72, 40).bar(6, 5, 60, 30, grey=0.5).save()
        plain = self.print_on("receipt", document).ink_share()
        self.assertGreater(self.print_on("receipt", document, "Darkness=3").ink_share(), plain * 1.1)
        self.assertLess(self.print_on("receipt", document, "Darkness=-3").ink_share(), plain * 0.9)
        dots = self.print_on("receipt", document, "Dither=ordered").dots[100:200, 100:400]
        self.assertTrue(any(numpy.array_equal(dots[step:, :], dots[:-step, :]) for step in (4, 8, 16)))
        solid = self.print_on("receipt", document, "Dither=threshold", "PaperSaveBottom=0").dots[100:200, 100:400]
        self.assertIn(float(solid.mean()), (0.0, 1.0))


if __name__ == "__main__":
    unittest.main()
