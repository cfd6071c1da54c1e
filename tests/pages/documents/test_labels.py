"""Labels and tickets: one page is one label."""

import unittest

import numpy
from makers import Page
from paper import DOTS_PER_MM, DocumentTest

SIZE = ("PageSize=50.05x80mm.Fullbleed",)


class Labels(DocumentTest):
    def test_a_page_as_large_as_the_label(self):
        document = Page(self.path("a.pdf"), 50, 80).rule(5, 10, 40, 1).rule(5, 70, 40, 1).save()
        left, top, right, bottom = self.print_on("label", document, *SIZE).box()
        self.assert_near(left, 40)
        self.assert_near(right, 360)
        self.assert_near(top, 80)
        self.assert_near(bottom, 71 * DOTS_PER_MM)

    def test_a_landscape_page_is_turned(self):
        document = Page(self.path("b.pdf"), 80, 50).rule(10, 10, 60, 1).save()
        left, top, right, bottom = self.print_on("label", document, *SIZE).box()
        self.assert_near(right - left, 8)
        self.assert_near(bottom - top, 480)

    def test_unless_somebody_speaks(self):
        document = Page(self.path("c.pdf"), 80, 50).rule(10, 10, 60, 1).save()
        for word in ("orientation-requested=3", "nopdfAutoRotate"):
            left, _, right, _ = self.print_on("label", document, *SIZE, word).box()
            self.assert_near(right - left, 480 * 50 / 80, 3)

    def test_an_a4_page_is_fitted(self):
        document = Page(self.path("d.pdf"), 210, 297).rule(0, 100, 210, 4).save()
        left, _, right, _ = self.print_on("label", document, *SIZE).box()
        self.assert_near(right - left, 400, 3)

    def test_a_roll_size_job_on_tickets(self):
        document = Page(self.path("e.pdf"), 72, 80).rule(6, 10).next_page().rule(6, 10).save()
        paper = self.print_on("label", document, "PageSize=72.07x80mm.Fullbleed", "PaperType=2", "PaperSaveBottom=0")
        inked = paper.dots.any(axis=1)
        first, second = numpy.flatnonzero(inked & ~numpy.roll(inked, 1))[:2]
        self.assertGreaterEqual(second - first, 80 * DOTS_PER_MM - 2)


if __name__ == "__main__":
    unittest.main()
