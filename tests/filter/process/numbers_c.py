"""The arithmetic of the C side: 32-bit integers and single precision."""

import math
import struct

INT32_MIN = -(1 << 31)
INT32_MAX = (1 << 31) - 1


def signed(value):
    """The low 32 bits as a signed number."""
    value &= 0xFFFFFFFF
    return value - (1 << 32) if value & 0x80000000 else value


def atoi(text):
    """What the text's leading number is worth; beyond 32 bits it stays at the end of the range."""
    at = 0
    while at < len(text) and text[at:at + 1] in (b" ", b"\t", b"\n", b"\v", b"\f", b"\r"):
        at += 1
    negative = text[at:at + 1] == b"-"
    if text[at:at + 1] in (b"-", b"+"):
        at += 1
    value = 0
    while text[at:at + 1].isdigit():
        value = value * 10 + int(text[at:at + 1])
        at += 1
    value = -value if negative else value
    return max(INT32_MIN, min(INT32_MAX, value))


def f32(value):
    """Rounded to single precision."""
    return struct.unpack("f", struct.pack("f", value))[0]


def quotient(a, b):
    """C division of whole numbers: toward zero."""
    result = abs(a) // abs(b)
    return -result if (a < 0) != (b < 0) else result


def dot_unit(resolution):
    """Millimetres a dot: 254.0 / resolution / 10.0 in double precision, kept in single."""
    return f32(math.inf if resolution == 0 else 254.0 / resolution / 10.0)


def dots(millimetres, unit):
    """A distance in dots, in single precision; one that 32 bits cannot hold counts as INT32_MIN."""
    value = math.trunc(f32(f32(millimetres) / unit))
    return value if INT32_MIN <= value <= INT32_MAX else INT32_MIN
