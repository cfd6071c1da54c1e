"""The printer commands that the filter sends. Each gives (status, bytes); a refused command has no bytes."""

OK, BAD_PARAMETER, WRONG_TYPE = 0, -1, -3


def _command(class_word, allowed, *data):
    if not class_word & 1:
        return WRONG_TYPE, b""
    if not allowed:
        return BAD_PARAMETER, b""
    return OK, bytes(value & 0xFF for value in data)


def raster_header(class_word, mode, width, height):
    return _command(class_word, True, 0x1D, 0x76, 0x30, mode, width, width >> 8, height, height >> 8)


def feed_up_to_255(class_word, count):
    return _command(class_word, True, 0x1B, 0x4A, count)


def cut(class_word, mode, feed):
    sent = {0: 65, 1: 66, 65: 65, 66: 66}.get(mode, 0)
    return _command(class_word, sent != 0, 0x1D, 0x56, sent, feed)


def form_feed(class_word):
    return _command(class_word, True, 0x0C)


def buzzer(class_word, count, duration, interval):
    return _command(class_word, count <= 63, 0x1B, 0x28, 0x41, 5, 0, 0x61, 0x64, count, duration, interval)


def pulse(class_word, pin, on, off):
    return _command(class_word, pin in (0, 1, 48, 49), 0x1B, 0x70, pin, on, max(on, off))


def justify(class_word, value):
    return _command(class_word, value in (0, 1, 2, 48, 49, 50), 0x1B, 0x61, value)


def stored_image(class_word, key1, key2):
    allowed = 32 <= key1 <= 126 and 32 <= key2 <= 126
    return _command(class_word, allowed, 0x1D, 0x28, 0x4C, 6, 0, 0x30, 0x45, key1, key2, 1, 1)
