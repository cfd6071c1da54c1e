#!/usr/bin/env python3
"""Makes the pages that the benchmarks print: one-bit CUPS raster streams of any version, always the same bytes.

    pages.py KIND FILE [--width BYTES] [--rows N] [--pages N] [--copies N] [--version 1|2|3]
"""

import argparse
import random
import struct

WIDTH = 72
ROWS = 2000

SYNC = {1: 0x52615374, 2: 0x52615332, 3: 0x52615333}
HEADER_SIZE = {1: 420, 2: 1796, 3: 1796}

# Offsets of the header's fields in bytes, native byte order.
FIELDS = {
    "HWResolution": 276, "NumCopies": 340, "PageSize": 352, "cupsWidth": 372, "cupsHeight": 376,
    "cupsBitsPerColor": 384, "cupsBitsPerPixel": 388, "cupsBytesPerLine": 392, "cupsColorSpace": 400,
    "cupsRowCount": 408, "cupsNumColors": 420,
}
SPACE_K = 3

BAYER = (0, 32, 8, 40, 2, 34, 10, 42, 48, 16, 56, 24, 50, 18, 58, 26, 12, 44, 4, 36, 14, 46, 6, 38, 60, 28, 52, 20, 62,
         30, 54, 22, 3, 35, 11, 43, 1, 33, 9, 41, 51, 19, 59, 27, 49, 17, 57, 25, 15, 47, 7, 39, 13, 45, 5, 37, 63, 31,
         55, 23, 61, 29, 53, 21)


def _glyphs(rng):
    """96 glyphs of 12 x 24 dots made of strokes: about a fifth of the dots black, as in print."""
    glyphs = []
    for _ in range(96):
        rows = [0] * 24
        for _ in range(rng.randint(2, 4)):
            if rng.random() < 0.5:
                column, top = rng.randint(1, 8), rng.randint(3, 8)
                for row in range(top, rng.randint(top + 6, 20)):
                    rows[row] |= 3 << column
            else:
                bar, first = rng.randint(3, 18), rng.randint(0, 4)
                stroke = ((1 << rng.randint(4, 7)) - 1) << first
                rows[bar] |= stroke
                rows[bar + 1] |= stroke
        glyphs.append(rows)
    return glyphs


def text_rows(width, count):
    """Lines of text of uneven length, 24 dots high with 8 blank rows between them, as on a receipt."""
    rng = random.Random(7)
    glyphs = _glyphs(rng)
    columns = width * 8 // 12
    out = bytearray()
    while len(out) < width * count:
        length = rng.choice((columns, columns, columns * 3 // 4, columns // 2, columns // 4, 0))
        line = [None if rng.random() < 0.17 else rng.choice(glyphs) for _ in range(length)]
        for row in range(24):
            bits = 0
            for glyph in line:
                bits = bits << 12 | (glyph[row] if glyph else 0)
            bits <<= width * 8 - 12 * length
            out += bits.to_bytes(width, "big")
        out += bytes(8 * width)
    return bytes(out[:width * count])


def photo_rows(width, count):
    """A smooth picture with grain through an ordered dither: ink in nearly every byte, hardly two bytes alike."""
    rng = random.Random(11)
    period = min(count, 512)
    grain = [rng.randint(-6, 6) for _ in range(4099)]
    out = bytearray()
    at = 0
    for y in range(period):
        bits = 0
        for x in range(width * 8):
            at = (at + 1) % 4099
            shade = 8 + 48 * ((x * 5 // width + y) % 97) // 97 + grain[at]
            bits = bits << 1 | (shade > BAYER[(y & 7) * 8 + (x & 7)])
        out += bits.to_bytes(width, "big")
    return (bytes(out) * (count // period + 1))[:width * count]


def sparse_rows(width, count):
    """Mostly paper: every 200 rows a rule one row high and a mark four bytes wide."""
    rows = bytearray(width * count)
    for top in range(60, count, 200):
        rows[top * width + width // 8:top * width + width // 2] = b"\xff" * (width // 2 - width // 8)
        for row in range(top + 20, min(top + 40, count)):
            rows[row * width + width // 4:row * width + width // 4 + 4] = b"\x7e\x00\x3c\x81"
    return bytes(rows)


def black_rows(width, count):
    return b"\xff" * (width * count)


KINDS = {"text": text_rows, "photo": photo_rows, "sparse": sparse_rows, "black": black_rows}


def _header(width, count, copies, version, resolution, row_count, bits):
    head = bytearray(HEADER_SIZE[version])
    values = {
        "NumCopies": copies, "cupsWidth": width * 8 // bits, "cupsHeight": count, "cupsBitsPerColor": bits,
        "cupsBitsPerPixel": bits, "cupsBytesPerLine": width, "cupsColorSpace": SPACE_K, "cupsRowCount": row_count,
    }
    for name, value in values.items():
        struct.pack_into("=I", head, FIELDS[name], value)
    struct.pack_into("=2I", head, FIELDS["HWResolution"], resolution, resolution)
    points = (width * 8 // bits * 72 // resolution, count * 72 // resolution)
    struct.pack_into("=2I", head, FIELDS["PageSize"], *points)
    if version > 1:
        struct.pack_into("=I", head, FIELDS["cupsNumColors"], 1)
    return bytes(head)


def _packed_row(row):
    out = bytearray()
    at = 0
    while at < len(row):
        end = at + 1
        while end < len(row) and end - at < 128 and row[end] == row[at]:
            end += 1
        if end - at > 1:
            out += bytes((end - at - 1, row[at]))
            at = end
            continue
        while end < len(row) and end - at < 128 and (end + 1 == len(row) or row[end] != row[end + 1]):
            end += 1
        out += bytes((0, row[at])) if end - at == 1 else bytes((257 - (end - at),)) + row[at:end]
        at = end
    return bytes(out)


def _packed(rows, width):
    """The compressed form of version 2: equal rows are counted, each row is run-length coded."""
    out = bytearray()
    known = {}
    at = 0
    while at < len(rows):
        row = rows[at:at + width]
        same = 1
        while same < 256 and rows[at + same * width:at + (same + 1) * width] == row:
            same += 1
        if row not in known:
            known[row] = _packed_row(row)
        out.append(same - 1)
        out += known[row]
        at += same * width
    return bytes(out)


def write_stream(path, kind, width=WIDTH, rows=ROWS, pages=1, copies=1, version=3, resolution=203, row_count=0, bits=1):
    """Writes a stream of equal pages and returns its size. row_count is what a driver for dot-matrix heads puts into
    the header; bits widens every dot to a grey value of 8 bits for filters that want that."""
    data = KINDS[kind](width, rows)
    if bits == 8:
        widened = [bytes(255 if byte & 0x80 >> bit else 0 for bit in range(8)) for byte in range(256)]
        data = b"".join(map(widened.__getitem__, data))
        width *= 8
    if version == 2:
        data = _packed(data, width)
    head = _header(width, rows, copies, version, resolution, row_count, bits)
    with open(path, "wb") as file:
        file.write(struct.pack("=I", SYNC[version]))
        for _ in range(pages):
            file.write(head)
            file.write(data)
        return file.tell()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("kind", choices=sorted(KINDS))
    parser.add_argument("file")
    parser.add_argument("--width", type=int, default=WIDTH)
    parser.add_argument("--rows", type=int, default=ROWS)
    parser.add_argument("--pages", type=int, default=1)
    parser.add_argument("--copies", type=int, default=1)
    parser.add_argument("--version", type=int, default=3, choices=(1, 2, 3))
    words = parser.parse_args()
    size = write_stream(words.file, words.kind, words.width, words.rows, words.pages, words.copies, words.version)
    print("%s: %d bytes" % (words.file, size))


if __name__ == "__main__":
    main()
