"""Calls of commands: a buffer for each thread, numbers that fit, refusals as exceptions."""

import threading
from ctypes import byref, c_uint32, create_string_buffer
from typing import Any

from . import _native

# No command has more bytes beside its data.
_FRAME = 64
_UINT32_MAX = 0xFFFFFFFF
_INT32_MIN = -0x80000000


class KlovError(Exception):
    """A refusal of the library: its code and the code's text.

    >>> str(KlovError(-8))
    'Unable to identify the printer model. Please correct the printer model. (-8)'
    """

    def __init__(self, code: int) -> None:
        super().__init__(f"{error_text(code)} ({code})")
        self.code = code


def error_text(code: int, chinese: bool = False) -> str:
    """The words for a result code.

    >>> error_text(-100)
    'KLOV print error.'
    >>> error_text(-100, chinese=True)
    'KLOV 打印错误！'
    """
    text = create_string_buffer(256)
    _native.klov_format_error_ansi(code, 4 if chinese else 0, text, 0, len(text) - 1)
    return text.value.decode("gbk" if code <= 0 else "utf-8", "replace")


class _Buffer(threading.local):
    def __init__(self) -> None:
        length = c_uint32()
        self.parts = (create_string_buffer(_FRAME), length, byref(length))


_buffer = _Buffer()


def encode(function: Any, *arguments: Any) -> bytes:
    """One command without data of any length."""
    memory, length, length_at = _buffer.parts
    length.value = 0
    for number in arguments:
        if not _INT32_MIN <= number <= _UINT32_MAX:
            raise KlovError(-1)
    code = function(*arguments, memory, _FRAME, length_at)
    if code:
        raise KlovError(code)
    return memory.raw[:length.value]


def encode_data(function: Any, size: int, *arguments: Any) -> bytes:
    """One command with so many bytes of data."""
    room = size + _FRAME
    if room > _UINT32_MAX:
        raise KlovError(-2)
    for number in arguments:
        if not isinstance(number, bytes) and not _INT32_MIN <= number <= _UINT32_MAX:
            raise KlovError(-1)
    memory = create_string_buffer(room)
    length = c_uint32()
    code = function(*arguments, memory, room, byref(length))
    if code:
        raise KlovError(code)
    return memory.raw[:length.value]


def feed(function: Any, printer_class: int, n: int) -> bytes:
    """A feed, which repeats itself for every 255 units. The library does not count a long reverse one: steps do."""
    if not _INT32_MIN <= n <= 0x7FFFFFFF:
        raise KlovError(-1)
    if function is _native.klov_cmd_print_and_reverse_feed_n_line and n > 254:
        steps = [254] * (n // 254) + ([n % 254] if n % 254 else [])
        return b"".join(encode(function, printer_class, step) for step in steps)
    return encode_data(function, max(0, (n + 254) // 255 * 3), printer_class, n)
