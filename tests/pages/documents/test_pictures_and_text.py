"""Pictures and plain text through the scheduler."""

import os
import unittest

import makers
import numpy
from paper import DOTS_PER_MM, DocumentTest, Paper, psnr
from PIL import Image


class Pictures(DocumentTest):
    def save(self, name, dots, **how):
        Image.fromarray(dots).save(self.path(name), **how)
        return self.path(name)

    def test_a_logo_is_dot_for_dot(self):
        logo = makers.logo(384, 200)
        paper = self.print_on("receipt", self.save("a.png", ~logo))
        left, top, right, bottom = paper.box()
        self.assertEqual((right - left, bottom - top), (384, 200))
        self.assertTrue((paper.dots[top:bottom, left:right] == logo).all())
        self.assertEqual(left, 96)

    def test_unasked_72_dpi_change_nothing(self):
        logo = makers.logo(384, 200)
        paper = self.print_on("receipt", self.save("b.png", ~logo, dpi=(72, 72)))
        left, top, right, bottom = paper.box()
        self.assertTrue((paper.dots[top:bottom, left:right] == logo).all())

    def test_a_photo_is_scaled_to_the_head(self):
        photo = makers.photo(1152, 800)
        paper = self.print_on("receipt", self.save("c.jpg", photo, quality=95))
        wanted = numpy.asarray(Image.fromarray(photo).resize((576, 400), Image.BOX))
        self.assertGreater(psnr(Paper(paper.dots[:400]), wanted), 24)

    def test_a_broken_picture_says_so(self):
        path = self.save("d.png", makers.photo(300, 300))
        with open(path, "r+b") as file:
            file.truncate(os.path.getsize(path) // 2)
        self.assertTrue(self.fails("receipt", path))


class Text(DocumentTest):
    def write(self, name, text):
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(text)
        return self.path(name)

    def test_48_columns_are_the_head(self):
        line = "".join(chr(65 + i % 26) for i in range(48))
        paper = self.print_on("receipt", self.write("a.txt", line + "\n" + line + "\n"))
        left, _, right, _ = paper.box()
        self.assertGreater(right, 560)
        self.assertLess(left, 8)
        self.assertLess(paper.length, 12 * DOTS_PER_MM)

    def test_words_are_read(self):
        receipt = self.write("b.txt", "Corner Bakery\nTwo rolls        4.20\nTotal           4.20\n")
        paper = self.print_on("receipt", receipt)
        self.assert_words(paper, "Corner", "Total")

    def test_what_looks_like_a_program_is_text(self):
        path = self.write("c.txt", "/***********/\n/* RECEIPT */\nTotal 9.99\n")
        self.assert_words(self.print_on("receipt", path), "Total")


class OtherQueues(DocumentTest):
    def test_nothing_changes_for_a_queue_without_our_driver(self):
        """A raster printer by CUPS's own sample driver: its documents go CUPS's own way."""
        self.cups.run("lpadmin", "-p", "other", "-E", "-v", "file://" + self.cups.output_path("other"), "-m",
                      "drv:///sample.drv/zebra.ppd")
        job = self.cups.submit("other", makers.Page(self.path("o.pdf"), 72, 40).rule(6, 10).save())
        self.cups.wait_for_job(job)
        log = self.cups.job_log(job)
        self.assertIn("pdftopdf", log)
        self.assertNotIn("pdftoroll", log)


if __name__ == "__main__":
    unittest.main()
