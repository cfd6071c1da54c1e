"""The real libcups by way of ctypes: the referee for the raster writer, the PPD writer and the models of both."""

import ctypes
import os
import tempfile

import raster

try:
    _cups = ctypes.CDLL("libcups.so.2")
except OSError:
    _cups = None


class _Choice(ctypes.Structure):
    _fields_ = [("marked", ctypes.c_char), ("choice", ctypes.c_char * 41), ("text", ctypes.c_char * 81)]


class _Size(ctypes.Structure):
    _fields_ = [("marked", ctypes.c_int), ("name", ctypes.c_char * 41)] + \
        [(n, ctypes.c_float) for n in ("width", "length", "left", "bottom", "right", "top")]


class _Option(ctypes.Structure):
    _fields_ = [("name", ctypes.c_char_p), ("value", ctypes.c_char_p)]


if _cups is not None:
    _cups.ppdOpenFile.restype = ctypes.c_void_p
    _cups.ppdFindMarkedChoice.restype = ctypes.POINTER(_Choice)
    _cups.ppdPageSize.restype = ctypes.POINTER(_Size)
    _cups.cupsRasterOpen.restype = ctypes.c_void_p
    _cups.cupsGetOption.restype = ctypes.c_char_p
    _cups.ippErrorString.restype = ctypes.c_char_p


def available():
    return _cups is not None


def last_error_text():
    return _cups.ippErrorString(_cups.cupsLastError())


def _scratch(data):
    file = tempfile.NamedTemporaryFile()
    file.write(data)
    file.flush()
    return file


def read_stream(data, rows_at_once):
    """All pages of a stream: a list of (header bytes, reported sizes, bytes), or None when it does not open.

    `rows_at_once` 0 reads each page at once, as a filter does for several copies.
    """
    with _scratch(data) as file:
        descriptor = os.open(file.name, os.O_RDONLY)
        handle = ctypes.c_void_p(_cups.cupsRasterOpen(descriptor, 0))
        if not handle:
            os.close(descriptor)
            return None
        pages = []
        head = ctypes.create_string_buffer(raster.HEADER1_SIZE)
        while _cups.cupsRasterReadHeader(handle, head):
            values = memoryview(head.raw)[256:].cast("I")
            height, width = values[PLACE["cupsHeight"]], values[PLACE["cupsBytesPerLine"]]
            reported, rows = [], b""
            done = 0
            while done < height:
                count = min(rows_at_once or height, height - done)
                buffer = ctypes.create_string_buffer(count * width)
                reported.append(_cups.cupsRasterReadPixels(handle, buffer, count * width))
                rows += buffer.raw
                done += count
                if rows_at_once and reported[-1] != count * width:
                    break
            pages.append((head.raw, reported, rows))
        _cups.cupsRasterClose(handle)
        os.close(descriptor)
        return pages


def _places():
    at, result = 0, {}
    for name, count in raster.NUMBERS:
        result[name] = at
        at += count
    return result


PLACE = _places()


class OpenPpd:
    """A PPD as CUPS sees it after ppdMarkDefaults."""

    def __init__(self, text):
        with _scratch(text) as file:
            self.handle = ctypes.c_void_p(_cups.ppdOpenFile(file.name.encode()))
        self.opened = bool(self.handle)
        if self.opened:
            _cups.ppdMarkDefaults(self.handle)

    def marked(self, keyword):
        choice = _cups.ppdFindMarkedChoice(self.handle, keyword.encode())
        return choice.contents.choice if choice else None

    def right_edge(self, name):
        size = _cups.ppdPageSize(self.handle, name)
        return size.contents.right if size else None

    def close(self):
        if self.opened:
            _cups.ppdClose(self.handle)


def parse_options(text):
    """The job options as CUPS splits them: a dictionary of lower-case name to value."""
    options = ctypes.POINTER(_Option)()
    count = _cups.cupsParseOptions(text, 0, ctypes.byref(options))
    result = {options[i].name.lower(): options[i].value for i in range(count)}
    _cups.cupsFreeOptions(count, options)
    return result
