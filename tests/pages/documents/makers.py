"""Documents by the producers that people have: each function writes one file and returns its path."""

import io
import shutil
import subprocess

import cairo
import numpy
from PIL import Image, ImageFilter
from reportlab.graphics import renderPDF
from reportlab.graphics.barcode import createBarcodeDrawing
from reportlab.lib.units import mm
from reportlab.pdfgen.canvas import Canvas

POINTS_PER_MM = 72 / 25.4
RULE_MM = 60


class Page:
    """A page of a PDF by reportlab, measured in millimetres from the top left corner."""

    def __init__(self, path, width, height, rotate=0, encrypt=None):
        self.path, self.width, self.height = path, width, height
        self.canvas = Canvas(path, pagesize=(width * mm, height * mm), pageCompression=0, encrypt=encrypt)
        if rotate:
            self.canvas.setPageRotation(rotate)

    def text(self, x, y, words, size=10, font="Helvetica"):
        self.canvas.setFont(font, size)
        self.canvas.drawString(x * mm, (self.height - y) * mm, words)
        return self

    def rule(self, x, y, length=RULE_MM, thickness=0.5):
        """A bar whose length can be measured."""
        return self.bar(x, y, length, thickness)

    def bar(self, x, y, width, height, grey=0):
        self.canvas.setFillGray(grey)
        self.canvas.rect(x * mm, (self.height - y - height) * mm, width * mm, height * mm, stroke=0, fill=1)
        self.canvas.setFillGray(0)
        return self

    def code(self, kind, x, y, value, **options):
        drawing = createBarcodeDrawing(kind, value=value, **options)
        renderPDF.draw(drawing, self.canvas, x * mm, (self.height - y) * mm - drawing.height)
        return self

    def picture(self, picture, x, y, width, height):
        from reportlab.lib.utils import ImageReader
        self.canvas.drawImage(ImageReader(picture), x * mm, (self.height - y - height) * mm, width * mm, height * mm)
        return self

    def next_page(self, width=None, height=None):
        self.canvas.showPage()
        self.width, self.height = width or self.width, height or self.height
        self.canvas.setPageSize((self.width * mm, self.height * mm))
        return self

    def save(self):
        self.canvas.save()
        return self.path


def photo(width, height):
    """A smooth scene with detail, as an array of greys."""
    y, x = numpy.mgrid[0:height, 0:width]
    scene = 140 + 70 * numpy.sin(x / 61) * numpy.cos(y / 47) + 30 * numpy.sin((x + y) / 19)
    ball = ((x - width * 0.6) ** 2 + (y - height * 0.4) ** 2) < (height * 0.25) ** 2
    scene[ball] = 60 + (x[ball] - width * 0.4) * 120 / width
    return numpy.clip(scene, 20, 240).astype(numpy.uint8)


def logo(width, height):
    """Black and white, with single dots in it."""
    y, x = numpy.mgrid[0:height, 0:width]
    rings = ((x - width // 2) ** 2 + (y - height // 2) ** 2) // 300 % 2 == 0
    rings[::7, ::5] ^= True
    return rings


def cairo_receipt(path, width, height, draw):
    surface = cairo.PDFSurface(path, width * POINTS_PER_MM, height * POINTS_PER_MM)
    context = cairo.Context(surface)
    context.scale(POINTS_PER_MM, POINTS_PER_MM)
    draw(context)
    surface.finish()
    return path


def ghostscript(path, postscript, width, height):
    subprocess.run(["gs", "-q", "-dBATCH", "-dNOPAUSE", "-sDEVICE=pdfwrite", "-o", path,
                    "-dDEVICEWIDTHPOINTS=%f" % (width * POINTS_PER_MM),
                    "-dDEVICEHEIGHTPOINTS=%f" % (height * POINTS_PER_MM), "-"], input=postscript.encode(), check=True)
    return path


def weasyprint(path, html):
    subprocess.run(["weasyprint", "-q", "-", path], input=html.encode(), check=True, capture_output=True)
    return path


def chromium(path, html_path, html):
    with open(html_path, "w", encoding="utf-8") as file:
        file.write(html)
    subprocess.run([shutil.which("chromium"), "--headless", "--no-sandbox", "--disable-gpu", "--no-pdf-header-footer",
                    "--disable-dev-shm-usage", "--user-data-dir=" + path + ".profile", "--print-to-pdf=" + path,
                    html_path], check=True, capture_output=True, timeout=120)
    return path


def groff(path, source, width, height):
    out = subprocess.run(["groff", "-Tps", "-P-p%.2fi,%.2fi" % (height / 25.4, width / 25.4)], input=source.encode(),
                         capture_output=True, check=True).stdout
    subprocess.run(["gs", "-q", "-dBATCH", "-dNOPAUSE", "-sDEVICE=pdfwrite", "-o", path, "-"], input=out, check=True)
    return path


def scan(path, width, height, lines):
    """A page of off-white paper with noise, as a scanner at 200 dpi delivers it."""
    from PIL import ImageDraw, ImageFont
    size = int(width / 25.4 * 200), int(height / 25.4 * 200)
    page = Image.new("L", size, 247)
    font = ImageFont.truetype("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", 30)
    for i, line in enumerate(lines):
        ImageDraw.Draw(page).text((60, 60 + 60 * i), line, fill=25, font=font)
    noise = numpy.random.default_rng(1).normal(0, 2, (size[1], size[0]))
    page = page.filter(ImageFilter.GaussianBlur(0.7))
    page = Image.fromarray(numpy.clip(numpy.asarray(page) + noise, 0, 255).astype(numpy.uint8))
    jpeg = io.BytesIO()
    page.save(jpeg, "JPEG", quality=85)
    jpeg.seek(0)
    return Page(path, width, height).picture(jpeg, 0, 0, width, height).save()
