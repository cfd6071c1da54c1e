"""Makes documents.png: three documents by CUPS's own filters and by the document filters, both through rastertoklov.

usage: /usr/bin/python3 docs/before-after.py BUILD_FOLDER [PICTURE]"""

import os
import subprocess
import sys
import tempfile

DOCS = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [os.path.join(DOCS, "..", "tests", "pages", "documents")]

import makers  # noqa: E402
from PIL import Image, ImageDraw, ImageFont  # noqa: E402


def documents(folder):
    ticket = makers.Page(folder + "/ticket.pdf", 72, 50).text(5, 10, "KITCHEN", 20).text(5, 22, "2 x Onion soup", 14)
    ticket.text(5, 31, "1 x Trout", 14).rule(5, 36, 62).text(5, 44, "Table 12   19:42", 12)
    invoice = makers.Page(folder + "/invoice.pdf", 210, 297).text(20, 30, "INVOICE 4711", 30).rule(20, 40, 170)
    for i, line in enumerate(("Flour, 25 kg   2   38.00", "Yeast          6    7.20", "Total             45.20")):
        invoice.text(20, 55 + 12 * i, line, 24, "Courier-Bold")
    photo = folder + "/photo.png"
    Image.fromarray(makers.photo(560, 360)).save(photo)
    tall = makers.Page(folder + "/slip.pdf", 80, 130).text(12, 20, "The Corner Bakery", 16)
    tall.picture(photo, 6, 30, 68, 44)
    tall.code("EAN13", 20, 90, "400638133393", barWidth=0.33 * makers.mm, barHeight=18 * makers.mm)
    return [ticket.save(), tall.save(), invoice.save()]


def printed(build, raster, name, folder):
    environment = dict(os.environ, PPD=folder + "/ppd/qx100.ppd")
    data = subprocess.run([build + "/filter/rastertoklov", "1", "user", name, "1", "PostPrintAction=0"], input=raster,
                          env=environment, capture_output=True, check=True).stdout
    subprocess.run([build + "/preview/klov-preview", "--bare", "--quiet", "--width", "576", "-o", folder + "/paper.png",
                    "-"], input=data, check=True)
    with Image.open(folder + "/paper.png") as picture:
        return picture.convert("L").crop((0, 0, 576, min(picture.height, 1700)))


def main():
    build, target = os.path.abspath(sys.argv[1]), (sys.argv[2:] + [DOCS + "/documents.png"])[0]
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(["ppdc", "-d", folder + "/ppd", build + "/ppd/klov.drv"], check=True)
        papers = []
        for path in documents(folder):
            stock = subprocess.run(["cupsfilter", "-e", "-p", folder + "/ppd/qx100.ppd",
                                    "-m", "application/vnd.cups-raster", path],
                                   capture_output=True, check=True).stdout
            own = subprocess.run([build + "/pages/pdftoroll", "1", "user", "t", "1", "", path], capture_output=True,
                                 check=True, env=dict(os.environ, PPD=folder + "/ppd/qx100.ppd")).stdout
            papers.append([printed(build, raster, "t", folder) for raster in (stock, own)])
    height = max(paper.height for pair in papers for paper in pair)
    sheet = Image.new("L", (620 * 6, height + 160), 225)
    font = ImageFont.truetype("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", 44)
    for i, pair in enumerate(papers):
        for j, paper in enumerate(pair):
            sheet.paste(paper, (620 * (2 * i + j) + 22, 110))
            ImageDraw.Draw(sheet).text((620 * (2 * i + j) + 30, 40), ("before", "after")[j], fill=0, font=font)
    sheet.resize((sheet.width // 3, sheet.height // 3), Image.BOX).save(target, optimize=True)


if __name__ == "__main__":
    main()
