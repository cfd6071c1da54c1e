"""Writes CUPS raster streams: versions 1 to 3, both byte orders, sound or broken.

A header is a dictionary of field name to value (a list where the field is an array). Everything that a test does not
set is zero, or the least that makes a one-bit page.
"""

import struct

STRINGS = ("MediaClass", "MediaColor", "MediaType", "OutputType")

# Field name and number of 32-bit places, in the order of cups_page_header_t behind its four strings.
NUMBERS = (
    ("AdvanceDistance", 1), ("AdvanceMedia", 1), ("Collate", 1), ("CutMedia", 1), ("Duplex", 1), ("HWResolution", 2),
    ("ImagingBoundingBox", 4), ("InsertSheet", 1), ("Jog", 1), ("LeadingEdge", 1), ("Margins", 2), ("ManualFeed", 1),
    ("MediaPosition", 1), ("MediaWeight", 1), ("MirrorPrint", 1), ("NegativePrint", 1), ("NumCopies", 1),
    ("Orientation", 1), ("OutputFaceUp", 1), ("PageSize", 2), ("Separations", 1), ("TraySwitch", 1), ("Tumble", 1),
    ("cupsWidth", 1), ("cupsHeight", 1), ("cupsMediaType", 1), ("cupsBitsPerColor", 1), ("cupsBitsPerPixel", 1),
    ("cupsBytesPerLine", 1), ("cupsColorOrder", 1), ("cupsColorSpace", 1), ("cupsCompression", 1),
    ("cupsRowCount", 1), ("cupsRowFeed", 1), ("cupsRowStep", 1),
)
PLACES = sum(places for _, places in NUMBERS)
HEADER1_SIZE = 64 * len(STRINGS) + 4 * PLACES
HEADER2_SIZE = 1796

SYNC = {1: 0x52615374, 2: 0x52615332, 3: 0x52615333}
ORDERS = ("<", ">")

SPACE_W, SPACE_K, SPACE_SW = 0, 3, 18


def header(width_bytes, height, copies=1, **fields):
    """A header of a one-bit page of `height` rows of `width_bytes` bytes."""
    result = {
        "NumCopies": copies, "HWResolution": [203, 203], "cupsWidth": width_bytes * 8, "cupsHeight": height,
        "cupsBitsPerColor": 1, "cupsBitsPerPixel": 1, "cupsBytesPerLine": width_bytes, "cupsColorSpace": SPACE_K,
    }
    result.update(fields)
    return result


def header_bytes(fields, version=3, order="<"):
    """The header as it lies in the stream: 420 bytes in version 1, 1796 in versions 2 and 3."""
    out = bytearray()
    for name in STRINGS:
        text = fields.get(name, b"")
        out += text[:64].ljust(64, b"\0")
    for name, places in NUMBERS:
        value = fields.get(name, 0)
        values = list(value) if isinstance(value, (list, tuple)) else [value]
        values += [0] * (places - len(values))
        out += struct.pack("%s%dI" % (order, places), *[v & 0xFFFFFFFF for v in values])
    if version == 1:
        return bytes(out)
    out += struct.pack(order + "I", fields.get("cupsNumColors", 1))
    return bytes(out.ljust(HEADER2_SIZE, b"\0"))


def _packed_row(row, rng):
    """One row in the run-length form of version 2; with a generator, any of the equivalent forms."""
    out = bytearray()
    at = 0
    while at < len(row):
        if rng is not None and not any(row[at:]) and rng.random() < 0.5:
            out.append(128)  # the rest of the row is white
            return bytes(out)
        run = 1
        while at + run < len(row) and run < 128 and row[at + run] == row[at]:
            run += 1
        if run > 1 or (rng is not None and rng.random() < 0.1):
            out += bytes((run - 1, row[at]))
            at += run
            continue
        end = at + 1
        while end < len(row) and end - at < 128 and row[end] != row[end - 1]:
            end += 1
        if end < len(row) and end - at > 1 and row[end] == row[end - 1]:
            end -= 1
        count = end - at
        if count == 1:
            out += bytes((0, row[at]))  # 257 - 1 would be 256: one byte is written as a run
        else:
            out.append(257 - count)
            out += row[at:end]
        at = end
    return bytes(out)


def packed_rows(rows, width, rng=None):
    """All rows of a page in the form of version 2: equal rows are counted, at most 256 at a time."""
    out = bytearray()
    count = len(rows) // width
    at = 0
    while at < count:
        row = rows[at * width:(at + 1) * width]
        same = 1
        while at + same < count and same < 256 and rows[(at + same) * width:(at + same + 1) * width] == row:
            same += 1
        if rng is not None and same > 1 and rng.random() < 0.3:
            same = rng.randint(1, same)
        out.append(same - 1)
        out += _packed_row(row, rng)
        at += same
    return bytes(out)


def page_bytes(fields, rows, version=3, order="<", rng=None):
    """A header and its rows."""
    head = header_bytes(fields, version, order)
    width = fields["cupsBytesPerLine"]
    if version == 2 and rows:
        return head + packed_rows(rows, width, rng)
    return head + rows


def stream(pages, version=3, order="<", rng=None):
    """A whole stream of (header, rows) pages."""
    out = struct.pack(order + "I", SYNC[version])
    for fields, rows in pages:
        out += page_bytes(fields, rows, version, order, rng)
    return out
