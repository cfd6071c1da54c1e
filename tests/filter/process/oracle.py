"""A second, plain implementation of a whole print job: what the filter must leave on every channel, byte for byte."""

from dataclasses import dataclass

import oracle_options
import raster
from cups_stream import Stream
from oracle_channels import DEBUG, Channels, Fatal, INFORMATION, shown
from oracle_document import end_doc, process_page, start_doc
from numbers_c import signed
from outcome import Outcome
from ppd import Ppd

VERSION = "0.1.0"  # of the commands that the filter was built on; a release does not change it
COMPILED = b"DEBUG: rastertoklov compiled with KLOV library version %s\n" % VERSION.encode()
HANDLER_LINES = b"+cancel_handler(signum:15) start.\n-cancel_handler finished."
USAGE = b"ERROR: rastertoklov job-id user title copies options [file]\n"
ACCEPTED_COUNTS = (6, 7)

BOOLEANS = {"Collate", "Duplex", "InsertSheet", "ManualFeed", "MirrorPrint", "NegativePrint", "OutputFaceUp",
            "Separations", "TraySwitch", "Tumble"}

# Label in the scheduler's log and the header field behind it, in the log's order.
HEADER_LINES = (
    ("AdvanceDistance",) * 2, ("AdvanceMedia",) * 2, ("Collate",) * 2, ("CutMedia",) * 2, ("Duplex",) * 2,
    ("HWResolution",) * 2, ("ImagingBoundingBox",) * 2, ("InsertSheet",) * 2, ("cups_jog_t", "Jog"),
    ("cups_edge_t", "LeadingEdge"), ("ManualFeed",) * 2, ("Margins",) * 2, ("MediaClass",) * 2, ("MediaColor",) * 2,
    ("MediaPosition",) * 2, ("MediaType",) * 2, ("MediaWeight",) * 2, ("MirrorPrint",) * 2, ("NegativePrint",) * 2,
    ("NumCopies",) * 2, ("Orientation",) * 2, ("OutputFaceUp",) * 2, ("OutputType",) * 2, ("PageSize",) * 2,
    ("Separations",) * 2, ("TraySwitch",) * 2, ("Tumble",) * 2, ("cupsBitsPerColor",) * 2, ("cupsBitsPerPixel",) * 2,
    ("cupsBytesPerLine",) * 2, ("cupsColorOrder",) * 2, ("cupsColorSpace",) * 2, ("cupsCompression",) * 2,
    ("cupsHeight",) * 2, ("cupsMediaType",) * 2, ("cupsRowCount",) * 2, ("cupsRowFeed",) * 2, ("cupsRowStep",) * 2,
    ("cupsWidth",) * 2, ("cupsHeight",) * 2,
)


@dataclass
class Job:
    """Everything that decides what a run does."""
    raster: bytes = b""
    options: bytes = b""
    ppd: Ppd | None = None         # None: the file cannot be opened as a PPD
    ppd_path: bytes | None = None  # None: the variable is not set
    arguments: int = 6             # how many words the command line has, the program's name included
    file_opens: bool = True        # with seven arguments: the raster file is there


def header_lines(fields):
    out = b""
    for label, name in HEADER_LINES:
        value = fields[name]
        if name in BOOLEANS:
            text = b"TRUE" if value else b"FALSE"
        elif name in raster.STRINGS:
            text = shown(value)
        elif name == "ImagingBoundingBox":
            text = b"left%d, bottom%d, right%d, top%d" % tuple(map(signed, value))
        elif isinstance(value, list):
            text = b"".join(b"%d" % signed(number) for number in value)
        else:
            text = b"%d" % signed(value)
        out += b"INFO: %s:%s\n" % (label.encode(), text)
    return out


def run(job, cancelled_before=None, cancelled_late=False, limit=1 << 26):
    """The outcome of a job.

    `cancelled_before` is the number of the page whose header is being read when SIGTERM comes (one more than there
    are pages: at the stream's end); `cancelled_late` says that it came when the document's end was being sent.
    """
    out = Channels(limit)
    try:
        _run(out, job, cancelled_before, cancelled_late)
        status = 0
    except Fatal:
        status = 1
    return Outcome(bytes(out.printer), bytes(out.messages), bytes(out.traced), status)


def _run(out, job, cancelled_before, cancelled_late):
    out.msg(INFORMATION, b"rastertoklov filter started")
    out.messages += COMPILED
    if job.arguments not in ACCEPTED_COUNTS:
        out.error(USAGE)
    options = oracle_options.get_options(out, job)
    oracle_options.dump_options(out, options)
    out.trace(b"-dump options finished.\n")
    if job.arguments == 7 and not job.file_opens:
        out.error(b"Unable to open raster file")
    stream = Stream(job.raster)
    if stream.version is None:
        out.error(b"cupsRasterOpen failed")
    start_doc(out, options)
    out.trace(b"\tstart_doc.\n")
    withheld, cancelled = _pages(out, options, stream, cancelled_before)
    if cancelled:
        out.msg(DEBUG, b"Print job was cancelled")
    else:
        out.trace(b"\tbefore end_doc,lastStripBlanksHeight:%d,pagemode:NO.\n" % withheld)
        out.trace(b"end_docing.\n")
        end_doc(out, options)
    out.trace(b"Closing.\n")
    if cancelled_late:
        out.trace(HANDLER_LINES)
    out.msg(DEBUG, b"rastertoklov filter finished")


def _pages(out, options, stream, cancelled_before):
    withheld = 0
    page = 0
    while True:
        fields = stream.read_header()
        if cancelled_before == page + 1:
            out.trace(HANDLER_LINES)
            return withheld, True
        if fields is None:
            return withheld, False
        page += 1
        out.messages += b"PAGE: %d %d\n" % (page, signed(fields["NumCopies"]))
        out.messages += header_lines(fields)
        withheld = process_page(out, options, fields, stream, withheld)
