"""Receipts: text, columns, bar codes, pictures, in the order in which they are to stand on the paper."""

import textwrap
from types import TracebackType
from typing import Any, Callable, List, Optional, Tuple, Type

from . import commands, printers
from ._encode import KlovError
from .constants import CodeTable, FeedAndCut, Hri, Justification, Pin, QrCorrection, QrModel, Symbology
from .models import find_model

ALIGN = {"left": Justification.LEFT, "centre": Justification.CENTRE, "center": Justification.CENTRE,
         "right": Justification.RIGHT}
CODE_TABLES = {"cp437": CodeTable.TABLE_437, "cp850": CodeTable.TABLE_850, "cp858": CodeTable.TABLE_858,
               "cp1252": CodeTable.TABLE_1252, "cp852": CodeTable.TABLE_852, "cp866": CodeTable.TABLE_866,
               "cp860": CodeTable.TABLE_860, "cp863": CodeTable.TABLE_863, "cp865": CodeTable.TABLE_865}
_CELL = 12  # dots across of a character of font A
_COUNT = 6  # characters of a column between the first and the last
_PRICE = 10  # characters of the last column of three and more
_BAND = 1024  # rows of a picture that one command carries


class Receipt:
    """A receipt for one model of printer, and for a place to send it to.

    >>> receipt = Receipt(model="QX-100")
    >>> receipt.text("Tea").cut()  # doctest: +ELLIPSIS
    <Receipt of ... bytes>
    >>> bytes(receipt)[:5]
    b'\\x1b@Tea'

    As a context manager it sends itself to its printer at the end, unless an exception came in between: half a
    receipt is none.
    """

    def __init__(self, printer: Optional[printers.Printer] = None, model: str = "QX-100") -> None:
        self.model = find_model(model)
        self._printer = printer
        self._class = self.model.printer_class
        self._table = "cp437"
        self._out = bytearray(commands.initialize_printer(self._class))

    def __repr__(self) -> str:
        return f"<Receipt of {len(self._out)} bytes>"

    def __bytes__(self) -> bytes:
        """The bytes for the printer, so far."""
        return bytes(self._out)

    def add(self, data: bytes) -> "Receipt":
        """Bytes as they are, such as those of klov.commands."""
        self._out += data
        return self

    # ---- Text ----

    def text(self, text: str = "", *, bold: bool = False, underline: bool = False, size: Tuple[int, int] = (1, 1),
             align: str = "left") -> "Receipt":
        """A line of text, or several; size is times across and times down, 1 to 8 each.

        >>> bytes(Receipt().text("Total", bold=True, align="right"))
        b'\\x1b@\\x1ba\\x02\\x1bE\\x01Total\\n\\x1bE\\x00\\x1ba\\x00'

        Letters that the printer's code table lacks bring their own table along. Characters that would steer the
        printer are printed as question marks.

        >>> bytes(Receipt().text("1 €\\x1b"))
        b'\\x1b@\\x1bt\\x131 \\xd5?\\n'
        """
        across, down = size
        if not (1 <= across <= 8 and 1 <= down <= 8):
            raise KlovError(-1)
        modes: List[Tuple[bool, Callable[[int], bytes]]] = [
            (align != "left", lambda on: commands.select_justification(self._class, ALIGN[align] if on else 0)),
            (bold, lambda on: commands.turn_emphasized_mode_on_off(self._class, on)),
            (underline, lambda on: commands.turn_underline_mode_on_off(self._class, on)),
            (size != (1, 1), lambda on: commands.select_character_size(
                self._class, ((across - 1) << 4 | (down - 1)) if on else 0)),
        ]
        wanted = [mode for is_wanted, mode in modes if is_wanted]
        characters = self._characters(text)
        for mode in wanted:
            self.add(mode(1))
        self.add(characters + b"\n")
        for mode in reversed(wanted):
            self.add(mode(0))
        return self

    def _characters(self, text: str) -> bytes:
        safe = "".join(c if c == "\n" or (c >= " " and c != "\x7f") else "?" for c in text)
        for table in (self._table, *CODE_TABLES):
            try:
                encoded = safe.encode(table)
            except UnicodeEncodeError:
                continue
            if table == self._table:
                return encoded
            self._table = table
            return commands.select_character_code_table(self._class, CODE_TABLES[table], 0) + encoded
        # No table has them all.
        return b"".join(self._characters(c) for c in safe) if len(safe) > 1 else b"?"

    @property
    def characters_a_line(self) -> int:
        """How many characters stand side by side."""
        return self.model.width // _CELL

    def columns(self, *cells: str, **style: Any) -> "Receipt":
        """Cells side by side: the first at the left, in as many lines as it needs, the last at the right end.

        >>> bytes(Receipt().columns("Tea", "2", "3.00"))[2:]
        b'Tea                                  2      3.00\\n'
        """
        if not cells:
            return self
        width = max(2, self.characters_a_line // max(1, style.get("size", (1, 1))[0]))
        tail = "".join(cell[:_COUNT - 1].rjust(_COUNT) for cell in cells[1:-1])
        if len(cells) > 1:
            tail += " " + cells[-1].rjust(_PRICE - 1 if len(cells) > 2 else 0)
        tail = tail[1 - width:] if len(tail) >= width else tail
        lines = textwrap.wrap(cells[0], width - len(tail)) or [""]
        for line in lines[:-1]:
            self.text(line, **style)
        return self.text(lines[-1].ljust(width - len(tail)) + tail, **style)

    def rule(self, character: str = "-") -> "Receipt":
        """A line of one character from side to side."""
        return self.text(character * self.characters_a_line)

    def feed(self, lines: int = 1) -> "Receipt":
        """Empty lines, up to 255."""
        return self.add(commands.print_and_feed_n_line(self._class, lines))

    # ---- Symbols and pictures ----

    def _aligned(self, align: str, *parts: bytes) -> "Receipt":
        self.add(commands.select_justification(self._class, ALIGN[align]))
        for part in parts:
            self.add(part)
        return self.add(commands.select_justification(self._class, Justification.LEFT))

    def bar_code(self, data: str, kind: Symbology = Symbology.CODE128, *, height: int = 80, width: int = 2,
                 readable: Hri = Hri.BELOW, align: str = "centre") -> "Receipt":
        """A bar code. Code 128 without a code set of its own gets set B.

        >>> bytes(Receipt().bar_code("4711"))[-13:]
        b'\\x1dkI\\x06{B4711\\x1ba\\x00'
        """
        content = "{B" + data.replace("{", "{{") if kind == Symbology.CODE128 and not data.startswith("{") else data
        encoded = content.encode("ascii")
        if not data or len(encoded) > 255:
            raise KlovError(-1)
        c = self._class
        return self._aligned(align, commands.select_print_position_HRI_characters(c, readable),
                             commands.set_bar_code_height(c, height), commands.set_bar_code_width(c, width),
                             commands.print_bar_code(c, kind, encoded))

    def qr(self, data: str, *, size: int = 6, correction: QrCorrection = QrCorrection.M,
           align: str = "centre") -> "Receipt":
        """A QR Code; size is the dots of a module, 1 to 16. White of 4 modules above and below lets readers find it."""
        encoded = data.encode()
        if not 1 <= len(encoded) <= 7089:
            raise KlovError(-1)
        c = self._class
        white = commands.print_and_feed_paper(c, 4 * size)
        return self._aligned(align, white, commands.qr_select_the_model(c, QrModel.MODEL_2),
                             commands.qr_set_the_size_of_module(c, size),
                             commands.qr_select_the_error_correction_level(c, correction),
                             commands.qr_store_the_data_in_the_symbol_storage_area(c, encoded),
                             commands.qr_print_the_symbol_data_in_the_symbol_storage_area(c), white)

    def picture(self, image: Any, align: str = "centre") -> "Receipt":
        """A picture: a file's name or an image of Pillow; or, without Pillow, its dots as (width, bytes).

        The bytes are rows of 8 dots a byte, the highest bit leftmost, 1 is black. Pillow's images are brought to black
        and white, and down to the paper's width when they are wider.

        >>> bytes(Receipt().picture((8, b"\\x81\\x42")))[5:-3]
        b'\\x1dv0\\x00\\x01\\x00\\x02\\x00\\x81B'
        """
        width, dots = image if isinstance(image, tuple) else _dots(image, self.model.width)
        row = (width + 7) // 8
        if not 1 <= row <= 65535 or not dots or len(dots) % row:
            raise KlovError(-25)
        parts = []
        for start in range(0, len(dots) // row, _BAND):
            band = dots[start * row:(start + _BAND) * row]
            parts += [commands.print_raster_img_cmd_header(self._class, 0, row, len(band) // row), band]
        return self._aligned(align, *parts)

    def logo(self, key: str = "00", *, scale: Tuple[int, int] = (1, 1), align: str = "centre") -> "Receipt":
        """A logo kept in the printer, by its key of two characters."""
        if len(key) != 2 or not key.isascii():
            raise KlovError(-1)
        return self._aligned(align, commands.print_the_specified_NV_graphics_data_gmode(
            self._class, ord(key[0]), ord(key[1]), *scale))

    # ---- Machine ----

    def drawer(self, pin: Pin = Pin.PIN_2, milliseconds: int = 200) -> "Receipt":
        """Opens a cash drawer."""
        units = max(1, min(255, milliseconds // 2))
        return self.add(commands.generate_pulse(self._class, pin, units, units))

    def cut(self, *, partial: bool = True, feed: int = 40) -> "Receipt":
        """Feeds to the cutter, and so many units more, and cuts."""
        mode = FeedAndCut.PARTIAL if partial else FeedAndCut.FULL
        return self.add(commands.select_cut_mode_and_feed_paper(self._class, mode, feed))

    # ---- Out ----

    def preview(self, tool: str = "klov-preview") -> "Preview":
        """The paper, as the virtual printer draws it."""
        return Preview(printers.paint(bytes(self), self.model.width, tool))

    def print(self, printer: Optional[printers.Printer] = None) -> None:
        """Sends the receipt to this printer, or to the one that it was made for."""
        target = printer or self._printer
        if target is None:
            raise KlovError(-6)
        target.send(bytes(self))

    def __enter__(self) -> "Receipt":
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 where: Optional[TracebackType]) -> None:
        if kind is None and self._printer is not None:
            self.print()


class Preview:
    """A picture of the paper. Notebooks show it by themselves."""

    def __init__(self, png: bytes) -> None:
        self.png = png

    def save(self, path: str) -> None:
        """Writes the PNG file."""
        with open(path, "wb") as file:
            file.write(self.png)

    def image(self) -> Any:
        """The picture as an image of Pillow."""
        import io

        from PIL import Image
        return Image.open(io.BytesIO(self.png))

    def _repr_png_(self) -> bytes:
        return self.png


def _dots(image: Any, most: int) -> Tuple[int, bytes]:
    """A picture of Pillow, or a file's name, as black and white dots."""
    from PIL import Image, ImageOps
    if not isinstance(image, Image.Image):
        image = Image.open(image)
    image = ImageOps.exif_transpose(image)
    if image.mode in ("RGBA", "LA", "P"):
        paper = Image.new("RGBA", image.size, "white")
        image = Image.alpha_composite(paper, image.convert("RGBA"))
    image = image.convert("L")
    if image.width > most:
        image = image.resize((most, max(1, image.height * most // image.width)))
    return image.width, ImageOps.invert(image).convert("1").tobytes()
