"""The printed paper: what the virtual printer drew, and what people and machines read on it."""

import os
import subprocess
import tempfile
import unittest

import numpy
import preview
import support
from PIL import Image, ImageFilter

DOTS_PER_MM = 8
QUEUES = {"receipt": ("qx100.ppd", 72), "small": ("fq58.ppd", 48), "label": ("kll3220.ppd", 72)}


class Paper:
    """Rows of dots, True is black."""

    def __init__(self, rows):
        self.dots = rows

    @classmethod
    def of_bytes(cls, data, width):
        rows = preview.rows(data, width)
        packed = numpy.frombuffer(b"".join(rows), numpy.uint8).reshape(len(rows), width)
        return cls(numpy.unpackbits(packed, axis=1).astype(bool))

    @property
    def length(self):
        """Rows up to the last ink."""
        inked = numpy.flatnonzero(self.dots.any(axis=1))
        return int(inked[-1]) + 1 if len(inked) else 0

    def box(self):
        """Left, top, right and bottom of all ink, the far edges outside."""
        across = numpy.flatnonzero(self.dots.any(axis=0))
        down = numpy.flatnonzero(self.dots.any(axis=1))
        return int(across[0]), int(down[0]), int(across[-1]) + 1, int(down[-1]) + 1

    def part(self, top, bottom):
        return Paper(self.dots[top:bottom])

    def grey(self):
        return Image.fromarray(numpy.where(self.dots, 0, 255).astype(numpy.uint8))

    def enlarged(self, times, border):
        picture = self.grey()
        picture = picture.resize((picture.width * times, picture.height * times), Image.NEAREST)
        framed = Image.new("L", (picture.width + 2 * border, picture.height + 2 * border), 255)
        framed.paste(picture, (border, border))
        return framed

    def words(self):
        with tempfile.NamedTemporaryFile(suffix=".png") as file:
            self.enlarged(2, 40).save(file.name)
            return run("tesseract", file.name, "-", "--psm", "6")

    def codes(self):
        with tempfile.NamedTemporaryFile(suffix=".png") as file:
            self.enlarged(3, 60).save(file.name)
            return set(run("zbarimg", "-q", "--raw", file.name).split("\n")) - {""}

    def ink_share(self):
        return float(self.dots.mean())


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, env=dict(os.environ, OMP_THREAD_LIMIT="1")).stdout


def psnr(paper, grey):
    """The print beside the picture (0 to 255, of the same size), both blurred as an eye blurs, after the smooth curve
    of tone that fits best."""
    printed = numpy.asarray(paper.grey().filter(ImageFilter.GaussianBlur(3)), float)
    wanted = numpy.asarray(Image.fromarray(grey).filter(ImageFilter.GaussianBlur(3)), float)
    curve = numpy.polyfit(wanted.ravel(), printed.ravel(), 5)
    error = numpy.mean((numpy.polyval(curve, wanted) - printed) ** 2)
    return 10 * numpy.log10(255 ** 2 / error)


class DocumentTest(unittest.TestCase):
    """One scheduler a module; print_on prints a document and returns the paper."""

    @classmethod
    def setUpClass(cls):
        cls.cups = support.Scheduler(documents=True)
        cls.cups.__enter__()
        cls.addClassCleanup(cls.cups.__exit__)
        for queue, (driver, _) in QUEUES.items():
            cls.cups.add_queue(queue, driver)
        cls.folder = tempfile.mkdtemp(prefix="klov-documents-")

    def path(self, name):
        return os.path.join(self.folder, name)

    def print_on(self, queue, document, *options, copies=1):
        paper = Paper.of_bytes(self.cups.print(queue, document, *options, copies=copies), QUEUES[queue][1])
        kept = os.environ.get("KLOV_KEEP_PAPER")
        if kept:
            paper.grey().save(os.path.join(kept, self.id().split(".")[-1] + ".png"))
        return paper

    def fails(self, queue, document, *options):
        """Prints what cannot be printed; the one line that says why."""
        job = self.cups.submit(queue, document, *options)
        self.cups.wait_for_job(job, support_stopped())
        errors = [line for line in self.cups.log().splitlines() if line.startswith("E ") and "[Job %d]" % job in line]
        return errors

    def assert_near(self, measured, wanted, slack=2):
        self.assertLessEqual(abs(measured - wanted), slack, "%s, not %s" % (measured, wanted))

    def assert_words(self, paper, *words):
        read = paper.words()
        for word in words:
            self.assertIn(word, read)


def support_stopped():
    from scheduler import STOPPED
    return STOPPED
