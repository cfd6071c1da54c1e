#!/usr/bin/env python3
"""The receipt of receipt.c, byte for byte, through libklov's C interface.

usage: receipt.py [-l LIBRARY] [-m MODEL] [FILE]
       receipt.py -m QX-100 /dev/usb/lp0
"""

import argparse
import ctypes
import ctypes.util
import sys

CAPACITY = 1024
BUFFER_TOO_SMALL = -2


class CommandError(Exception):
    pass


class Library:
    def __init__(self, path):
        self.c = ctypes.CDLL(path)

    def explain(self, step, code):
        text = ctypes.create_string_buffer(256)
        self.c.klov_format_error_ansi(code, 0, text, 0, len(text) - 1)
        return CommandError(f"{step}: {text.value.decode()} ({code})")

    def class_of_model(self, name):
        """The class word that the encoders want: bit 0, ESC/POS-type command set, and the model's family."""
        row = ctypes.c_void_p()
        code = self.c.klov_printer_model_creator2(name.encode(), ctypes.byref(row))
        if code != 0:
            raise self.explain(name, code)
        try:
            return ctypes.cast(row, ctypes.POINTER(PrinterModelHead)).contents.type
        finally:
            self.c.klov_printer_model_destroy(row)


class PrinterModelHead(ctypes.Structure):
    """The first fields of printer_model, as far as the class word."""

    _fields_ = [
        ("size", ctypes.c_uint32),
        ("id", ctypes.c_uint32),
        ("manufacturer", ctypes.c_char_p),
        ("model_name", ctypes.c_char_p),
        ("identity", ctypes.c_char_p),
        ("description", ctypes.c_char_p),
        ("type", ctypes.c_uint32),
    ]


class Receipt:
    def __init__(self, library, printer_class):
        self.library = library
        self.printer_class = ctypes.c_uint32(printer_class)
        self.buffer = (ctypes.c_uint8 * CAPACITY)()
        self.length = ctypes.c_uint32(0)

    def command(self, name, *arguments):
        """Append one command; its C function is klov_cmd_NAME. Its data are bytes, followed by their length."""
        encode = getattr(self.library.c, "klov_cmd_" + name)
        encode.restype = ctypes.c_int32
        code = encode(self.printer_class, *arguments, self.buffer, ctypes.c_uint32(CAPACITY), ctypes.byref(self.length))
        if code != 0:
            raise self.library.explain(name, code)

    def need_room(self, size, step):
        if size > CAPACITY - self.length.value:
            raise self.library.explain(step, BUFFER_TOO_SMALL)

    def text(self, text):
        """Text is no command: its bytes go into the buffer as they are. A line feed prints the line."""
        data = text.encode("ascii")
        self.need_room(len(data), "text")
        ctypes.memmove(ctypes.addressof(self.buffer) + self.length.value, data, len(data))
        self.length.value += len(data)

    def bytes(self):
        return bytes(self.buffer[: self.length.value])


def add_heading(r, text):
    r.command("select_justification", 1)
    r.command("turn_emphasized_mode_on_off", 1)
    r.command("select_character_size", 0x11)
    r.text(text)
    r.command("select_character_size", 0x00)
    r.command("turn_emphasized_mode_on_off", 0)


def add_items(r):
    r.command("select_justification", 0)
    r.text("Coffee                      2.80\n")
    r.text("Cheese cake                 4.20\n")
    r.command("turn_emphasized_mode_on_off", 1)
    r.text("Total                       7.00\n")
    r.command("turn_emphasized_mode_on_off", 0)
    r.command("print_and_feed_n_line", 1)


def add_bar_code(r, number):
    """The receipt's number in CODE128, code set B, with its digits below."""
    data = b"{B" + number.encode("ascii")
    r.command("select_justification", 1)
    r.command("select_print_position_HRI_characters", 2)
    r.command("set_bar_code_height", 80)
    r.command("set_bar_code_width", 2)
    r.command("print_bar_code", 73, data, len(data))
    r.command("print_and_feed_n_line", 1)


def add_qr_code(r, text):
    data = text.encode("ascii")
    r.command("qr_select_the_model", 50)
    r.command("qr_set_the_size_of_module", 6)
    r.command("qr_select_the_error_correction_level", 49)
    # This encoder asks for 8 bytes of room only; the room for the data is the caller's business.
    r.need_room(len(data) + 8, "QR data")
    r.command("qr_store_the_data_in_the_symbol_storage_area", data, len(data))
    r.command("qr_print_the_symbol_data_in_the_symbol_storage_area")


def compose(r):
    r.command("initialize_printer")
    add_heading(r, "CORNER CAFE\n")
    add_items(r)
    add_bar_code(r, "2024000117")
    add_qr_code(r, "https://example.com/r/2024000117")
    r.command("select_cut_mode_and_feed_paper", 66, 40)


def main():
    parser = argparse.ArgumentParser(description="Compose a receipt and write it to a file or a printer's device.")
    parser.add_argument("-l", "--library", help="path of libklov.so; found by name without it")
    parser.add_argument("-m", "--model", default="QX-100", help="model name of the catalogue")
    parser.add_argument("file", nargs="?", help="standard output without it")
    options = parser.parse_args()
    path = options.library or ctypes.util.find_library("klov")
    if path is None:
        sys.exit("receipt.py: libklov is not installed; name it with -l")
    try:
        library = Library(path)
        receipt = Receipt(library, library.class_of_model(options.model))
        compose(receipt)
        # Nothing is written before the whole receipt has been composed: half a receipt is none.
        with open(options.file, "wb") if options.file else sys.stdout.buffer as out:
            out.write(receipt.bytes())
    except (CommandError, OSError) as error:
        sys.exit(f"receipt.py: {error}")


if __name__ == "__main__":
    main()
