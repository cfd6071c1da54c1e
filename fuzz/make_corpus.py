#!/usr/bin/env python3
"""Writes the fuzzers' seeds, fuzz/corpus: small sound inputs from which a fuzzer goes astray sooner than from nothing."""

import os
import random
import sys

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


def talk_seeds():
    # Two bytes of an answer each: 5 and 7 hear one byte's worth and two.
    def hear(data):
        return b"".join(bytes((4, byte, 0)) for byte in data)
    ready = hear(b"\x12\x12\x12") + hear(b"\x10\0\0\0\0")
    yield "good", b"\x01" + ready + b"\x82" + hear(b"\0")
    yield "paper", b"\x01" + hear(b"\x7e\x32\x12") + b"\0\x40\1" + ready + hear(b"\x10\0\x0f\0") + b"\x82" + ready
    yield "cancel", b"\x09" + hear(b"\x37\x25\0") + ready + b"\xe3" + hear(b"\x10\0\x0f\0")
    yield "noise", b"\x11" + hear(bytes(range(256))) + b"\x82" + hear(bytes(range(255, 0, -3)))


def unpacking_seeds():
    rng = random.Random(5)
    for number, pixel in enumerate((1, 1, 2, 30)):
        height, width = 12, 20
        codes = raster.packed_rows(rows(width * pixel, height, rng), width * pixel, rng)
        depth = 0 if pixel == 1 else 119 + pixel + (30 if pixel < 9 else 0)
        page = bytes((depth, height - 1, width - 1, number % 2, number)) + len(codes).to_bytes(2, "big") + codes
        yield "pages-%d" % number, bytes((number % 2, number, 1)) + page + page[:-5]


SEEDS = {"unpacking": unpacking_seeds(), "raster": raster_seeds(), "options": option_seeds(), "reader": reader_seeds(),
         "compression": compression_seeds(), "encoders": random_seeds(2, 48), "properties": random_seeds(3, 32),
         "replies": reply_seeds(), "texts": text_seeds(), "talk": talk_seeds()}


def main():
    for target, seeds in SEEDS.items():
        folder = os.path.join(FOLDER, "corpus", target)
        os.makedirs(folder, exist_ok=True)
        for name, data in seeds:
            with open(os.path.join(folder, name), "wb") as file:
                file.write(data)


if __name__ == "__main__":
    main()
