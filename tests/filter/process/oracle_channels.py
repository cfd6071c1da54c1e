"""The oracle's three channels: printer bytes, scheduler messages and trace, and the end by a fatal error."""

CUPS_ERROR = b"successful-ok"  # what CUPS says when nothing has gone wrong there

INFORMATION, DEBUG, FATAL, DUMP = 0, 1, 2, 64

ERROR_TEXTS = {
    -3: b"Printer model type is error. Please use the printer with expected type.",
    -8: b"Unable to identify the printer model. Please correct the printer model.",
}

_HEX = [b"0x%x " % value for value in range(256)]


def shown(text):
    """A text that is not the filter's own, as log and trace have it: control bytes spelt out, at most 1,000 bytes."""
    out = b""
    for byte in text:
        piece = b"\\x%02x" % byte if byte < 0x20 or byte == 0x7F else bytes((byte,))
        if len(out + piece) > 1000:
            return out + b"..."
        out += piece
    return out


class Fatal(Exception):
    """The process has ended with status 1."""


class Unsuited(Exception):
    """The job is no case for a quick test: it would send or hold more than its limit."""


class Channels:
    def __init__(self, limit=1 << 26):
        self.limit = limit
        self.printer = bytearray()
        self.messages = bytearray()
        self.traced = bytearray()

    def trace(self, line):
        self.traced += line

    def msg(self, level, text):
        if level == INFORMATION:
            self.trace(b"INFO: %s\n" % text)
            self.messages += b"INFO: %s \n" % text
        elif level == DEBUG:
            self.trace(b"DEBUG: %s\n" % text)
            self.messages += b"DEBUG: %s (cups:%s)\n" % (text, CUPS_ERROR)
        elif level == DUMP:
            self.trace(b"DEBUG: %s\n" % text)
            self.messages += b"DEBUG: %s \n" % text
        elif level == FATAL:
            self.trace(b"ERROR: %s\n" % text)
            self.error(text)

    def check_size(self, size):
        if size > self.limit:
            raise Unsuited()

    def msgerrno(self, level, code):
        self.msg(level, (b"error(%d):%s" % (code, ERROR_TEXTS[code]))[:254])

    def error(self, text):
        self.messages += b"ERROR:Raster(%s, cups:%s)\n" % (text, CUPS_ERROR)
        raise Fatal()

    def write_bytes(self, data):
        self.check_size(len(self.printer))
        self.trace(b"+write_bytes start(data_size:%d):\n" % len(data))
        self.trace(b"".join([_HEX[value] for value in data]) + b"\n")
        self.printer += data
        self.trace(b"-write_bytes finished(writed:%d).\n" % (1 if data else 0))
