"""Reads uncompressed CUPS rasters, and writes them."""

import struct
from collections import namedtuple

HEADER = 1796
Page = namedtuple("Page", "copies width height bytes_per_line pixels")
NUM_COPIES, WIDTH, HEIGHT, BYTES_PER_LINE = 340, 372, 376, 392


def read_pages(path):
    with open(path, "rb") as file:
        data = file.read()
    order = {b"RaS3": ">", b"3SaR": "<"}[data[:4]]
    pages = []
    at = 4
    while at < len(data):
        def number(offset):
            return struct.unpack_from(order + "I", data, at + offset)[0]
        height, line = number(HEIGHT), number(BYTES_PER_LINE)
        pixels = data[at + HEADER:at + HEADER + height * line]
        if len(pixels) != height * line:
            raise ValueError("raster cut short")
        pages.append(Page(number(NUM_COPIES), number(WIDTH), height, line, pixels))
        at += HEADER + height * line
    return pages


def rows_of(page, width):
    rows = (page.pixels[row * page.bytes_per_line:(row + 1) * page.bytes_per_line] for row in range(page.height))
    return [row[:width].ljust(width, b"\0") for row in rows]


def write_pages(path, pages):
    """pages: (copies, bytes per line, rows) with rows as one block of bytes."""
    with open(path, "wb") as file:
        file.write(b"RaS3")
        for copies, line, pixels in pages:
            header = bytearray(HEADER)
            for offset, value in ((276, 203), (280, 203), (NUM_COPIES, copies), (WIDTH, line * 8),
                                  (HEIGHT, len(pixels) // line), (384, 1), (388, 1), (BYTES_PER_LINE, line),
                                  (400, 3), (420, 1)):
                struct.pack_into(">I", header, offset, value)
            file.write(header + pixels)
