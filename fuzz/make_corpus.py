#!/usr/bin/env python3
"""Writes the fuzzers' seeds, fuzz/corpus: small sound inputs, from which a fuzzer goes astray sooner."""

import os
import random
import struct
import sys
import zlib

FOLDER = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(FOLDER, "..", "tests", "filter", "process"))

import raster  # noqa: E402
from ppd import Option, Ppd, Size  # noqa: E402

# Model, bytes a row, rows a strip, flags, paper saving, distance, trace.
DEVICES = {"plain": bytes((0, 72, 14, 4, 0, 10, 1)), "packed": bytes((0, 9, 3, 2 | 192, 3, 10, 0)),
           "shifted": bytes((3, 4, 2, 1 | 4, 1, 0, 1)), "fixed": bytes((1, 6, 2, 32, 0, 0, 1))}


def rows(width, count, rng):
    return b"".join(rng.choice((bytes(width), bytes((rng.randrange(256),)) * width, rng.randbytes(width)))
                    for _ in range(count))


def raster_seeds():
    rng = random.Random(1)
    for number, (name, device) in enumerate(DEVICES.items()):
        width = device[1]
        for version in (1, 2, 3):
            order = raster.ORDERS[(number + version) % 2]
            page = (raster.header(width, 7, copies=1 + (number + version) % 2), rows(width, 7, rng))
            yield "%s-v%d" % (name, version), device + raster.stream([page], version, order)
    wide = raster.header(2000, 2), bytes(100)
    yield "wide", DEVICES["plain"] + raster.stream([wide], 2)
    yield "apple", DEVICES["plain"] + b"UNIRAST\0" + bytes(4) + bytes(32)


def option_seeds():
    size = Size("72x200", ("0", "0", "204", "600"), ("204", "600"))
    yield "no-ppd", b"CutMode=1\0"
    yield "plain", b"Resolution=300dpi Drawer1=1 BeepControl=2\0" + Ppd(sizes=[size], default_size="72x200").text()
    yield "custom", b"PageSize=Custom.72x3000mm PostPrintAction=3\0" + Ppd(sizes=[size], variable=True).text()
    yield "quoted", b"a='b c' CutMode={1 2} \"x\\\"y\"=3 PaperSaveMode=-9999999999\0" + Ppd(
        "QX-200", [Option("CutMode", ("0", "1"), "1")]).text()


def log_seeds():
    orders = b"\nSTATE: paused\nPPD: ShortNickName=x\n"
    plain = raster.header(72, 20, MediaClass=b"Roll")
    yield "plain", raster.header_bytes(plain, 1) + b"CutMode=1 PageSize=72x200"
    hostile = raster.header(72, 20, MediaClass=orders, MediaColor=b"\n" * 64, MediaType=b"\x7f" * 64, OutputType=orders)
    yield "orders", raster.header_bytes(hostile, 1) + b"note='%s'" % orders
    yield "long", raster.header_bytes(plain, 1) + b"x" * 2040 + b" ATTR: auth-info-required=username,password"


def reader_seeds():
    image = bytes.fromhex("1d7630000200030080000000 0180".replace(" ", ""))
    device = bytes((71, 0, 0, 3))
    yield "image", device + image + bytes.fromhex("1d564200")
    yield "text", device + b"\x1b@hello\n\x1ba\x01world\x1bd\x03\x1b!\x10x\n"
    yield "packed", device + bytes.fromhex("1d763020020002 00ff41ff42".replace(" ", ""))
    yield "symbols", device + bytes.fromhex("1d6b49047b413132 1d286b0600315030616263 1d286b0300315130".replace(" ", ""))
    yield "page", device + bytes.fromhex("1b4c1b57000000004000400041421b0c1b53")
    yield "graphics", device + bytes.fromhex("1d284c0b0030703001013108000100ff 1d284c02003032".replace(" ", ""))


def compression_seeds():
    for name, text in (("runs", b"AAAABBBBB"), ("mixed", b"ABBCDDDDEF"), ("zeros", bytes(200)), ("tail", b"AAAB")):
        yield name, bytes((len(text) - 1 if len(text) < 160 else 150,)) + text * 2


def random_seeds(seed, size):
    rng = random.Random(seed)
    for number in range(12):
        yield "random-%02d" % number, rng.randbytes(size)


def encoder_key(name):
    """How an input names its encoder: the folded FNV-1a hash, as fuzz/encoders.cpp computes it."""
    value = 0x811C9DC5
    for byte in name.encode():
        value = (value ^ byte) * 0x01000193 & 0xFFFFFFFF
    return (value >> 16 ^ value & 0xFFFF).to_bytes(2, "little")


ENCODERS = ("transmit_printer_version",
            "print_downloaded_bit_image",
            "pdf417_set_the_number_of_rows",
            "write_to_nv_user_memory",
            "return_home",
            "select_the_number_of_parts_for_the_thermal_head_energizing",
            "set_2track_card_reader_mode",
            "qr_transmit_the_size_information_of_the_symbol_data_in_the_symbol_storage_area",
            "select_the_print_control_mode",
            "eh_reset",
            "feed_paper_to_the_print_starting_position",
            "pdf417_print_the_symbol_data_in_the_symbol_storage_area")


def encoder_seeds():
    for name, (file_name, data) in zip(ENCODERS, encoder_seeds()):
        yield file_name, encoder_key("klov_cmd_" + name) + data[2:]


def reply_seeds():
    yield "version", b"\x01\x01\x03_1.2.30 "
    yield "symbol", b"\x01\x01\x0376" + b"12\x1f34\x1f"
    yield "image", b"\x02\x01\x1d\x76\x30\x00\x02\x00\x03\x00\x80\x00\x00"
    yield "asb", b"\x00\x01\x01\x10\x00\x00\x00\x01\x12"


def text_seeds():
    yield "narrow", b"\x00\x28" + "Grüße".encode("utf-32-le")
    yield "wide", b"\x01\x28" + "Grüße 漢字".encode()
    yield "error", b"\x02\x08\x00\x60"
    yield "wide-error", b"\x03\x08\x04\x60"


def png(width, height, depth, colour, interlaced, data):
    def chunk(kind, body):
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))
    header = struct.pack(">IIBBBBB", width, height, depth, colour, 0, 0, interlaced)
    exif = chunk(b"eXIf", b"II*\0\x08\0\0\0\1\0\x12\1\3\0\1\0\0\0\6\0\0\0\0\0\0\0")
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + exif + chunk(b"pHYs", struct.pack(">IIB", 8000, 8000, 1)) +
            chunk(b"IDAT", zlib.compress(data)) + chunk(b"IEND", b""))


def jpeg(tables, body):
    """A JPEG of 8 x 8 grey dots whose Huffman tables know one code each."""
    def marker(kind, data):
        return bytes((0xFF, kind)) + struct.pack(">H", len(data) + 2) + data
    counts = bytes((1,)) + bytes(15)
    return (b"\xff\xd8" + tables + marker(0xDB, bytes((0,)) + bytes((8,)) * 64) +
            marker(0xC0, struct.pack(">BHHBBBB", 8, 8, 8, 1, 1, 0x11, 0)) + marker(0xC4, b"\x00" + counts + b"\x00") +
            marker(0xC4, b"\x10" + counts + b"\x00") + marker(0xDA, bytes((1, 1, 0, 0, 63, 0))) + body + b"\xff\xd9")


def picture_seeds():
    plain, label = b"\x01\x47", b"\x84\x07"
    yield "png-grey", plain + png(4, 2, 8, 0, 0, b"\0\0\x40\x80\xff" * 2)
    yield "png-colour", label + png(2, 1, 8, 6, 0, b"\0" + bytes(range(8)))
    yield "png-bits", plain + png(9, 2, 1, 0, 0, b"\0\xaa\x80" * 2)
    yield "png-interlaced", plain + png(1, 1, 16, 2, 1, b"\0" + bytes(6))
    yield "jpeg", plain + jpeg(b"", b"\x3f")
    notes = b"Exif\0\0MM\0*\0\0\0\x08\0\1\1\x12\0\3\0\0\0\1\0\x08\0\0\0\0\0\0"
    yield "jpeg-exif", label + jpeg(b"\xff\xe1" + struct.pack(">H", len(notes) + 2) + notes, b"\x3f")
    for name, data in (("p1", b"P1\n# x\n3 2\n0 1 0\n111\n"), ("p2", b"P2 3 1 100\n0 50 100\n"),
                       ("p3", b"P3 1 1 255 255 0 0"), ("p4", b"P4 9 1\n\xaa\x80"),
                       ("p5", b"P5 2 1 65535\n\x80\0\xff\xff"), ("p6", b"P6 1 1 255\n\0\xff\0")):
        yield name, plain + data


def plain_text_seeds():
    yield "utf-8", b"\x2f\0" + "Größe € 漢字 שלום 12\tनमस्ते\f\r\n".encode()
    yield "windows", b"\x0a\0Gr\xf6\xdfe \x80 N\bN _\bx \x1b[1mfett"
    yield "gb18030", b"\x1f\1\xd6\xd0\xb9\xfa\x81\x30\x81\x30"
    yield "utf-16", b"\x1f\0\xff\xfea\0\xac\x20"
    yield "cut", b"\x08\2" + b"a line that is cut and not wrapped\nnext"


def talk_seeds():
    # Two bytes of an answer each: 5 and 7 hear one byte's worth and two.
    def hear(data):
        return b"".join(bytes((4, byte, 0)) for byte in data)
    ready = hear(b"\x12\x12\x12") + hear(b"\x10\0\0\0\0")
    yield "good", b"\x01" + ready + b"\x82" + hear(b"\0")
    yield "paper", b"\x01" + hear(b"\x7e\x32\x12") + b"\0\x40\1" + ready + hear(b"\x10\0\x0f\0") + b"\x82" + ready
    yield "cancel", b"\x09" + hear(b"\x37\x25\0") + ready + b"\xe3" + hear(b"\x10\0\x0f\0")
    yield "noise", b"\x11" + hear(bytes(range(256))) + b"\x82" + hear(bytes(range(255, 0, -3)))


SEEDS = {"pictures": picture_seeds(), "plain_text": plain_text_seeds(),
         "raster": raster_seeds(), "options": option_seeds(), "reader": reader_seeds(),
         "compression": compression_seeds(), "encoders": encoder_seeds(), "properties": random_seeds(3, 32),
         "log": log_seeds(), "replies": reply_seeds(), "texts": text_seeds(), "talk": talk_seeds()}


def main():
    for target, seeds in SEEDS.items():
        folder = os.path.join(FOLDER, "corpus", target)
        os.makedirs(folder, exist_ok=True)
        for name, data in seeds:
            with open(os.path.join(folder, name), "wb") as file:
                file.write(data)


if __name__ == "__main__":
    main()
