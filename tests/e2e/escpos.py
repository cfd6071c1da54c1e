"""A plain reader of the bytes that the filter sends: commands, and the picture that they draw."""

from collections import namedtuple

Raster = namedtuple("Raster", "mode width rows data")
Cut = namedtuple("Cut", "kind feed")
Pulse = namedtuple("Pulse", "pin on off")
Beep = namedtuple("Beep", "count length pause")
Align = namedtuple("Align", "side")
Logo = namedtuple("Logo", "key1 key2 x y")
Feed = namedtuple("Feed", "units")
NextLabel = namedtuple("NextLabel", "")


def read_commands(data):
    """All commands in order. A byte that belongs to no command is an error: it would be printed as text."""
    commands = []
    at = 0
    while at < len(data):
        command, length = read_command(data, at)
        if at + length > len(data):
            raise ValueError("the last command is cut short: %s" % data[at:at + 12].hex(" "))
        commands.append(command)
        at += length
    return commands


def read_command(data, at):
    head = data[at:at + 11].ljust(11, b"\0")
    if head[:3] == b"\x1dv0":
        return read_raster(data, at, head)
    if head[:2] == b"\x1dV":
        return Cut(head[2], head[3]), 4
    if head[:2] == b"\x1bp":
        return Pulse(head[2], head[3], head[4]), 5
    if head[:7] == b"\x1b(A\x05\x00ad":
        return Beep(head[7], head[8], head[9]), 10
    if head[:2] == b"\x1ba":
        return Align(head[2]), 3
    if head[:7] == b"\x1d(L\x06\x000E":
        return Logo(head[7], head[8], head[9], head[10]), 11
    if head[:2] == b"\x1bJ":
        return Feed(head[2]), 3
    if head[:1] == b"\x0c":
        return NextLabel(), 1
    raise ValueError("no command at byte %d: %s" % (at, head.hex(" ")))


def read_raster(data, at, head):
    mode, width, rows = head[3], head[4] + 256 * head[5], head[6] + 256 * head[7]
    size = width * rows
    if mode == 0:
        return Raster(mode, width, rows, data[at + 8:at + 8 + size]), 8 + size
    pixels, used = unpack(data, at + 8, 0 if width == 1 else size)
    return Raster(mode, width, rows, pixels.ljust(size, b"\0")), 8 + used


def unpack(data, at, size):
    """The compressed form: a count and literal bytes, or a negative count and one byte to repeat."""
    pixels = bytearray()
    start = at
    while len(pixels) < size:
        count = data[at]
        if count < 128:
            pixels += data[at + 1:at + 2 + count]
            at += 2 + count
        else:
            pixels += data[at + 1:at + 2] * (257 - count)
            at += 2
    if len(pixels) != size:
        raise ValueError("compressed data of %d bytes instead of %d" % (len(pixels), size))
    return bytes(pixels), at - start


def picture(commands, width):
    """Rows of width bytes, as the paper shows them. A dot feed is blank rows."""
    rows = []
    for command in commands:
        if isinstance(command, Raster):
            if command.width > width:
                raise ValueError("%d bytes on a head of %d" % (command.width, width))
            for row in range(command.rows):
                rows.append(command.data[row * command.width:(row + 1) * command.width].ljust(width, b"\0"))
        elif isinstance(command, Feed):
            rows += [bytes(width)] * command.units
    return rows


def without_blank_end(rows):
    end = len(rows)
    while end and not any(rows[end - 1]):
        end -= 1
    return rows[:end]


def others(commands):
    """The commands that are not dots or feeds."""
    return [command for command in commands if not isinstance(command, (Raster, Feed))]


def blank_tail(commands):
    """Rows fed after the last ink."""
    rows = 0
    for command in commands:
        if isinstance(command, Raster):
            rows = 0 if any(command.data) else rows + command.rows
        elif isinstance(command, Feed):
            rows += command.units
    return rows
