"""The paper as the virtual printer draws it: klov-preview in its form for programs."""

import os
import struct
import subprocess
import zlib

TOOL = os.environ.get("KLOV_PREVIEW", "")


def rows(data, width):
    """Rows of width bytes, a set bit black."""
    result = subprocess.run([TOOL, "--bare", "--quiet", "--width", str(width * 8), "--output", "-", "-"], input=data,
                            capture_output=True)
    if result.returncode or result.stderr:
        raise AssertionError("klov-preview: %d %s" % (result.returncode, result.stderr.decode(errors="replace")))
    return read_png(result.stdout)


def read_png(png):
    """A picture of one bit a dot, as klov-preview writes it."""
    at, packed = 8, b""
    while at < len(png):
        length, kind = struct.unpack_from(">I4s", png, at)
        body = png[at + 8:at + 8 + length]
        if kind == b"IHDR":
            width, height, depth, colour = struct.unpack_from(">IIBB", body)
            if (depth, colour) != (1, 0):
                raise ValueError("not a picture of one bit a dot")
        elif kind == b"IDAT":
            packed += body
        at += 12 + length
    lines = zlib.decompress(packed)
    size = (width + 7) // 8
    above = bytes(size)
    found = []
    for row in range(height):
        start = row * (size + 1)
        above = unfilter(lines[start], lines[start + 1:start + 1 + size], above)
        found.append(bytes(byte ^ 0xFF for byte in above))
    return found


def unfilter(kind, line, above):
    """Undoes a row's PNG filter; neighbours are one byte apart."""
    if kind == 0:
        return line
    out = bytearray()
    for i, byte in enumerate(line):
        left = out[i - 1] if i else 0
        up = above[i]
        corner = above[i - 1] if i else 0
        if kind == 4:
            guess = left + up - corner
            distances = [(abs(guess - left), 0, left), (abs(guess - up), 1, up), (abs(guess - corner), 2, corner)]
            predicted = min(distances)[2]
        else:
            predicted = (left, up, (left + up) // 2)[kind - 1]
        out.append((byte + predicted) & 0xFF)
    return bytes(out)
