"""What CUPS makes of a raster stream: headers, rows, and where it stops.

Covers what a one-bit filter can meet: chunked or one-colour pages. A plain re-telling of cupsRasterReadHeader and
cupsRasterReadPixels; test_against_libcups.py holds it to the real ones.
"""

import struct

import raster

_WHITE_IS_FF = {0, 1, 17, 18, 19, 20}
_KNOWN_SPACES = set(range(21)) | set(range(32, 47)) | set(range(48, 63))
_KINDS = {raster.SYNC[1]: 1, raster.SYNC[2]: 2, raster.SYNC[3]: 3}


class Stream:
    """An open stream. `version` is None when CUPS does not open it."""

    def __init__(self, data, guarded=True):
        """guarded: read past the filter's guard, which lets no row length be refused for its size."""
        self.longest_row = 0xFFFFFFFF if guarded else (1 << 31) - 1
        self.data = data
        self.at = 4
        self.version = None
        self.remaining = 0
        self.repeats = 0
        self.row = b""
        for order in raster.ORDERS:
            if len(data) >= 4 and struct.unpack(order + "I", data[:4])[0] in _KINDS:
                self.version = _KINDS[struct.unpack(order + "I", data[:4])[0]]
                self.order = order

    def _take(self, size):
        piece = self.data[self.at:self.at + size]
        self.at += len(piece)
        return piece

    def read_header(self):
        """The next header as a dictionary, or None at the end of what CUPS accepts."""
        size = raster.HEADER1_SIZE if self.version == 1 else raster.HEADER2_SIZE
        piece = self._take(size)
        if len(piece) < size:
            return None
        fields = {name: piece[64 * i:64 * (i + 1)].split(b"\0")[0] for i, name in enumerate(raster.STRINGS)}
        values = struct.unpack_from("%s%dI" % (self.order, raster.PLACES), piece, 64 * len(raster.STRINGS))
        at = 0
        for name, places in raster.NUMBERS:
            fields[name] = values[at] if places == 1 else list(values[at:at + places])
            at += places
        bits = fields["cupsBitsPerColor"] if fields["cupsColorOrder"] else fields["cupsBitsPerPixel"]
        self.pixel = max(1, (((bits + 7) & 0xFFFFFFFF) // 8))
        self.fields = fields
        self.remaining = fields["cupsHeight"]
        self.repeats = 0
        width = fields["cupsBytesPerLine"]
        colors = 0 if self.version == 1 else struct.unpack_from(self.order + "I", piece, raster.HEADER1_SIZE)[0]
        if colors == 0 and fields["cupsColorSpace"] not in _KNOWN_SPACES:
            return None  # how many colours there are cannot be told
        if not 1 <= fields["cupsBitsPerColor"] <= 16 or not 1 <= fields["cupsBitsPerPixel"] <= 240:
            return None
        if not 1 <= width <= self.longest_row or fields["cupsHeight"] == 0 or width % self.pixel:
            return None
        return fields

    def read_rows(self, count):
        """Asks for `count` rows: (the count of bytes that CUPS reports, the bytes that really came)."""
        width = self.fields["cupsBytesPerLine"]
        wanted = count * width
        if self.remaining == 0:
            return 0, b""
        if self.version != 2:
            self.remaining -= count
            piece = self._take(wanted)
            return (wanted if len(piece) == wanted else 0), piece
        out = bytearray()
        while len(out) < wanted and self.remaining:
            if self.repeats == 0 and not self._unpack_row(width):
                # A row by itself is unpacked in the caller's memory, so its beginning is there.
                return 0, bytes(out + self.row) if self.single and wanted - len(out) == width else bytes(out)
            out += self.row
            self.repeats -= 1
            self.remaining -= 1
        return wanted, bytes(out)

    def _unpack_row(self, width):
        """Fills `row`; False when the stream ends within it (`row` then holds what came)."""
        self.row = b""
        self.single = False
        head = self._take(1)
        if not head:
            return False
        self.repeats = head[0] + 1
        self.single = self.repeats == 1
        row = bytearray()
        while len(row) < width:
            head = self._take(1)
            if not head:
                break
            code, left = head[0], width - len(row)
            if code == 128:
                row += (b"\xff" if self.fields["cupsColorSpace"] in _WHITE_IS_FF else b"\0") * left
            elif code > 128:
                size = min((257 - code) * self.pixel, left)
                piece = self._take(size)
                row += piece
                if len(piece) < size:
                    break
            else:
                size = min((code + 1) * self.pixel, left)
                piece = self._take(self.pixel)
                if len(piece) < self.pixel:
                    row += piece
                    break
                row += (piece * (code + 1))[:size]
        self.row = bytes(row)
        if len(row) < width:
            self.repeats = 0
            return False
        return True
