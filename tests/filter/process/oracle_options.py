"""The options record: built-in defaults, the PPD's choices, the job's options, the model's properties, the listing."""

from dataclasses import dataclass

import catalogue
from oracle_channels import DEBUG, DUMP, shown
from numbers_c import INT32_MIN, atoi, dot_unit, quotient, signed


@dataclass
class Options:
    model: int = 0x1001
    name: str = ""
    type: int = 0x10010001
    printer_width: int = 48
    max_render_height: int = 14
    motion_v: float = 0.0
    resolution: int = 203
    dot_unit: float = dot_unit(203)
    compression: int = 0
    papertype: int = 0
    finalcut: int = 0
    is_page_cut: bool = False
    beepcontrol: int = 0
    beepduration: int = 0
    beepinterval: int = 0
    beeptimes: int = 1
    externalbeepcontrol: int = 0
    externalbeepduration: int = 0
    externalbeepinterval: int = 0
    externalbeeptimes: int = 1
    drawer1: int = 0
    drawer2: int = 0
    postprintaction: int = 2
    feeddistance: int = 0
    cutdistance: int = -1
    printlogo: int = 0
    logoindex: int = 0
    logoalign: int = 0
    papersavemode: int = 0
    papersavebottom: int = 1


# Option keyword and the field that simply takes its number.
PLAIN = (
    ("PrintLogo", "printlogo"), ("LogoIndex", "logoindex"), ("LogoAlign", "logoalign"),
    ("BeepControl", "beepcontrol"), ("BeepDuration", "beepduration"), ("BeepInterval", "beepinterval"),
    ("BeepRepeat", "beeptimes"), ("ExternalBeepControl", "externalbeepcontrol"),
    ("ExternalBeepDuration", "externalbeepduration"), ("ExternalBeepInterval", "externalbeepinterval"),
    ("ExternalBeepRepeat", "externalbeeptimes"), ("Drawer1", "drawer1"), ("Drawer2", "drawer2"),
    ("BitmapCompression", "compression"), ("PaperSaveMode", "papersavemode"), ("PaperSaveBottom", "papersavebottom"),
    ("PostPrintAction", "postprintaction"), ("FormfeedLength", "feeddistance"), ("CutMode", "finalcut"),
    ("CutPaperLength", "cutdistance"),
)
KEYWORDS = ("Resolution", "PageSize", "PaperType") + tuple(keyword for keyword, _ in PLAIN)


def parse_job_options(text):
    """The job's "name=value" words; a bare word is true, one with "no" in front false; the last of a name counts."""
    found = {}
    for word in text.split():
        name, equals, value = word.partition(b"=")
        if not equals:
            value = b"true"
            if name.lower().startswith(b"no"):
                name, value = name[2:], b"false"
        found[name.lower()] = value
    return found


def get_options(out, job):
    out.trace(b"+get_options() start.\n")
    if job.ppd_path is None:
        out.trace(b"\tPPD environment variable not set!\n")
        out.error(b"PPD environment variable not set")
    out.trace(b"\tget_options PPD:%s.\n" % shown(job.ppd_path))
    if job.ppd is None:
        out.trace(b"\tppdOpenFile failed!\n")
        out.error(b"ppdOpenFile failed")
    given = parse_job_options(job.options)
    options = Options()
    short_name = job.ppd.short_nick_name
    # A PPD that names no model is traced the way glibc prints a missing text.
    seen = b"(null)" if short_name is None else shown(short_name.encode("latin-1"))
    out.trace(b"\tget_options modelname:%s.\n" % seen)
    _take_model(out, options, short_name)

    def value_of(keyword):
        value = given.get(keyword.lower().encode())
        return job.ppd.marked(keyword) if value is None else value

    _take_geometry(options, job.ppd, value_of)
    for keyword, field in PLAIN:
        value = value_of(keyword)
        if value is not None:
            setattr(options, field, atoi(value))
            if keyword == "PostPrintAction" and options.postprintaction == 3:
                options.is_page_cut = True
    out.msg(DUMP, shown(job.options))
    out.trace(b"-get options finished.\n")
    return options


def _take_model(out, options, name):
    model = None if name is None else catalogue.find(name)
    if model is None:
        out.msgerrno(DEBUG, -8)
        out.trace(b"-wrong ppd modelname!\n")
        out.error(b"wrong ppd modelname!")
    options.model = model.id
    options.name = model.name
    options.type = model.class_word
    options.printer_width = quotient(model.width, 8)
    options.motion_v = model.motion_v


def _take_geometry(options, ppd, value_of):
    value = value_of("Resolution")
    if value is not None:
        options.resolution = atoi(value)
        options.dot_unit = options.motion_v = dot_unit(options.resolution)
    size = value_of("PageSize")
    if size is not None:
        options.printer_width = atoi(size)
        if options.printer_width != 0:
            options.max_render_height = quotient(1024, options.printer_width)
    value = value_of("PaperType")
    if value is not None:
        options.papertype = atoi(value)
    if size is not None:
        right = ppd.right_edge(size)
        if right is not None:
            width = int(((right / 72.0) * options.resolution + 7.0) / 8.0)
            options.printer_width = width if -(1 << 31) <= width < (1 << 31) else INT32_MIN


def dump_options(out, options):
    def yes_no(value):
        return "YES" if value else "NO"

    for line in (
            "CUPS printing options",
            "model            = 0x%x" % options.model,
            "name             = %s" % options.name,
            "type             = 0x%x" % options.type,
            "printer_width    = %d bytes" % options.printer_width,
            "max_render_height= %d" % options.max_render_height,
            "issupportshiftline= NO",
            "islabelprinter   = NO",
            "cut_spacing     = 0.000000",
            "motion_v        = %f" % options.motion_v,
            "dot_unit         = %f" % options.dot_unit,
            "compression         = %d" % options.compression,
            "papertype        = %d" % options.papertype,
            "pagemode         = NO",
            "ticketmode       = NO",
            "finalcut         = %d" % options.finalcut,
            "is_page_cut      = %s" % yes_no(options.is_page_cut),
            "fwdfeed          = 0",
            "backfeed         = 0",
            "speed            = -1",
            "density          = -1",
            "linespacing      = -1",
            "printlogo        = %d" % options.printlogo,
            "logoindex        = %d" % options.logoindex,
            "logoalign        = %d" % options.logoalign,
            "beepcontrol        = %d" % options.beepcontrol,
            "beepduration        = %d" % options.beepduration,
            "beepinterval        = %d" % options.beepinterval,
            "beeptimes        = %d" % options.beeptimes,
            "externalbeepcontrol        = %d" % options.externalbeepcontrol,
            "externalbeepduration        = %d" % options.externalbeepduration,
            "externalbeepinterval        = %d" % options.externalbeepinterval,
            "externalbeeptimes        = %d" % options.externalbeeptimes,
            "drawer1        = %d" % options.drawer1,
            "drawer2        = %d" % options.drawer2,
            "postprintaction       =%d" % options.postprintaction,
            "feeddistance        = %d" % options.feeddistance,
            "cutdistance        = %d" % options.cutdistance,
            "papersavemode        = %d" % options.papersavemode,
            "papersavebottom        = %d" % options.papersavebottom):
        out.msg(DUMP, line.encode("latin-1"))


def strip_buffer_size(options):
    """Bytes of the strip buffer: an unsigned 32-bit product."""
    return (options.printer_width * options.max_render_height) & 0xFFFFFFFF


def class_as_signed(options):
    return signed(options.type)
