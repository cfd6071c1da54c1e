"""The operations that send bytes: bands of rows, compression, blank feeds, finishing."""

import oracle_commands as commands
from oracle_channels import FATAL
from oracle_options import class_as_signed, strip_buffer_size
from numbers_c import quotient

FIXED_WIDTH_MODELS = (0x1955, 0x1956)


def _result(status):
    return status, b"success." if status == 0 else b"fail!"


def last_ink(row):
    """Bytes up to and with the last one that is not zero."""
    return len(row.rstrip(b"\0"))


def print_dotline(out, options, band, width, height):
    """`band` holds `height` rows of `width` bytes."""
    if height < 1:
        return
    out.trace(b"+print_dotline(pData:*,dwWidthBytes:%d,dwHeight:%d) start.\n" % (width, height))
    fixed = options.model in FIXED_WIDTH_MODELS
    data_buffer = strip_buffer_size(options) + 20
    section = data_buffer // width
    if section >= options.max_render_height:
        section = options.max_render_height
    if section < 1 or width > data_buffer:
        out.msg(FATAL, b"prt databufsize is too small!/n")
    for start in range(0, height, section):
        rows = [band[at * width:(at + 1) * width] for at in range(start, min(start + section, height))]
        if fixed:
            used = min(width, options.printer_width)
        elif options.printer_width < width:
            used = options.printer_width
        else:
            used = max(last_ink(row) for row in rows)
        if used < 1:
            continue  # a width that makes no sense prints nothing
        _print_section(out, options, rows, width, used)
        if fixed:
            out.write_bytes(b"\x1b\x4a\x00")
    out.trace(b"-print_dotline finished(0) success.\n")


def _print_section(out, options, rows, width, used):
    mode = 32 if options.compression else 0
    status, header = commands.raster_header(options.type, mode, used, len(rows))
    if status != 0 and used == width:
        out.msgerrno(FATAL, status)
    if status != 0:
        out.msg(FATAL, b"Error in print_dotline")
    rows = [row[:used] for row in rows]
    out.write_bytes(header)
    out.write_bytes(b"".join(tiff_compression(row) for row in rows) if mode else b"".join(rows))
    if used != width:
        out.trace(b"\tone section complete.\n")


def tiff_compression(row):
    """One row in the printers' run-length code, step by step as the printers were taught it."""
    out = bytearray()
    last = len(row) - 1
    current, start, in_run = row[0], 0, False
    literal = repeat = None  # counts less one, when pending
    for i in range(1, len(row)):
        if row[i] == current:
            if not in_run and i > 1 and i > start + 1:
                literal = ((i - start) % 256 - 2) % 256
            in_run = True
        elif in_run:
            repeat = (i - start) % 65536 - 1
            in_run = False
        if i == last:
            if literal is None and repeat is None:
                if in_run:
                    repeat = i - start
                else:
                    literal = (i - start) % 256
            elif literal is not None:
                literal += 2
            else:
                literal, repeat = 0, (i - start) - 1
        if literal is not None:
            while literal > 127:
                out.append(127)
                out += row[start:start + 128]
                start += 128
                literal -= 128
            out.append(literal)
            out += row[start:start + literal + 1]
            start += literal + 1
            literal = None
        if repeat is not None:
            start += repeat + 1
            while repeat > 127:
                out += bytes((0x81, current))
                repeat -= 127
            out += bytes((-repeat & 0xFF, current))
            repeat = None
        if not in_run:
            current = row[i]
    return bytes(out)


def print_blank(out, options, count):
    quarters = options.papersavemode if options.papersavemode in (1, 2, 3) else 0
    out.trace(b"+print_blank(blank_counter:%d, save percent %d/4) start.\n" % (count, quarters))
    if count < 1:
        return
    left = count - quotient(quarters * count, 4)
    while left > 0:
        chunk = min(left, 255)
        left -= chunk
        if options.model in FIXED_WIDTH_MODELS:
            status, command = commands.feed_up_to_255(options.type, chunk)
        else:
            status, command = commands.raster_header(options.type, 0, 1, chunk)
        if status != 0:
            out.msgerrno(FATAL, status)
        out.write_bytes(command)
        if options.model not in FIXED_WIDTH_MODELS:
            out.write_bytes(bytes(chunk))
    out.trace(b"-print_blank finished(0) success.\n")


def _send(out, name, result, times=1):
    status, command = result
    if status == 0:
        for _ in range(times):
            out.write_bytes(command)
    out.trace(b"-%s finished(%d) %s\n" % ((name,) + _result(status)))


def print_cut_page(out, options):
    out.trace(b"+print_cut_page(printer_class:%d) start.\n" % class_as_signed(options))
    _send(out, b"print_cut_page", commands.cut(options.type, (0x43 - options.finalcut) & 0xFF, 0))


def print_position_next_ticket(out, options):
    out.trace(b"+print_position_next_ticket(printer_class:%d) start.\n" % class_as_signed(options))
    _send(out, b"print_position_next_ticket", commands.form_feed(options.type))


def print_beep(out, options):
    _send(out, b"print_beep", commands.buzzer(options.type, options.beeptimes & 0xFF, options.beepduration & 0xFF,
                                              options.beepinterval & 0xFF))


def print_external_beep(out, options):
    out.trace(b"-print_external_beep start(%d)\n" % options.externalbeeptimes)
    result = commands.pulse(options.type, 0, (options.externalbeepduration * 50) & 0xFF,
                            (options.externalbeepinterval * 50) & 0xFF)
    _send(out, b"print_external_beep", result, max(0, options.externalbeeptimes))


def print_open_drawer(out, options, pin):
    _send(out, b"print_open_drawer", commands.pulse(options.type, pin, 80, 80))


def printer_set_align(out, options):
    _send(out, b"print_set_logo_align", commands.justify(options.type, (options.logoalign - 1) & 0xFF))


def print_logo(out, options):
    status, image = commands.stored_image(options.type, 0x30, (options.logoindex + 47) & 0xFF)
    if status == 0:
        status, back_to_left = commands.justify(options.type, 0)
        image += back_to_left
    _send(out, b"print_logo", (status, image))
