"""The documents that the tests print: written here, so that every byte can be explained."""

import os
import struct
import zlib

DATA = os.path.join(os.path.dirname(os.path.abspath(__file__)), "data")
TEXT = os.path.join(DATA, "receipt.txt")
CHINESE = os.path.join(DATA, "chinese.txt")


def write_pdf(path, pages, width=204.3, height=283.46):
    """One page for each content stream; /I is a picture of 16 x 16 grey dots."""
    picture = bytes((x * 16 + y * 16) % 256 for y in range(16) for x in range(16))
    objects = [b"<</Type/Catalog/Pages 2 0 R>>",
               b"<</Type/Pages/Count %d/Kids[%s]>>" % (
                   len(pages), b" ".join(b"%d 0 R" % (5 + 2 * i) for i in range(len(pages)))),
               b"<</Type/Font/Subtype/Type1/BaseFont/Helvetica-Bold>>",
               stream(b"/Type/XObject/Subtype/Image/Width 16/Height 16/ColorSpace/DeviceGray/BitsPerComponent 8",
                      picture)]
    for i, content in enumerate(pages):
        objects.append(b"<</Type/Page/Parent 2 0 R/MediaBox[0 0 %.2f %.2f]/Resources<</Font<</F 3 0 R>>"
                       b"/XObject<</I 4 0 R>>>>/Contents %d 0 R>>" % (width, height, 6 + 2 * i))
        objects.append(stream(b"", content.encode()))
    text = b"%PDF-1.4\n"
    places = []
    for number, body in enumerate(objects, 1):
        places.append(len(text))
        text += b"%d 0 obj\n%s\nendobj\n" % (number, body)
    start = len(text)
    text += b"xref\n0 %d\n0000000000 65535 f \n" % (len(objects) + 1)
    text += b"".join(b"%010d 00000 n \n" % place for place in places)
    text += b"trailer\n<</Size %d/Root 1 0 R>>\nstartxref\n%d\n%%%%EOF\n" % (len(objects) + 1, start)
    with open(path, "wb") as file:
        file.write(text)
    return path


def stream(keys, data):
    return b"<<%s/Length %d>>\nstream\n%s\nendstream" % (keys, len(data), data)


def title(text, y=250):
    return "BT /F 18 Tf 10 %d Td (%s) Tj ET\n" % (y, text)


def image(x=20, y=40, size=160):
    return "q %d 0 0 %d %d %d cm /I Do Q\n" % (size, size, x, y)


def block(x, y, width, height):
    return "%d %d %d %d re f\n" % (x, y, width, height)


def write_png(path, width=128, height=96):
    """Black rings on white."""
    rows = b""
    for y in range(height):
        rows += b"\0" + bytes(0 if (((x - width // 2) ** 2 + (y - height // 2) ** 2) // 200) % 2 else 255
                              for x in range(width))

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    with open(path, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)) +
                   chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))
    return path
