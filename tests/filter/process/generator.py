"""Makes random print jobs: models, PPDs, options, pages and streams, sound and odd, all from one seed."""

import random

import catalogue
import oracle
import oracle_options
import raster
from oracle_channels import Channels, Fatal, Unsuited
from numbers_c import dots
from ppd import Option, Ppd, Size

SMALL = ("0", "1", "2", "3", "4", "5", "6", "10", "40", "63", "64", "255", "256", "300")
ODD = ("-1", "-7", "-300", "", "none", "True", "+2", "007", "1x", "2.9", "0x10", "99999999999", "-99999999999",
       "2147483647", "2147483648", "-2147483648", "-2147483649", "4294967297", "18446744073709551617")
RESOLUTIONS = ("203dpi", "203", "180", "300dpi", "600", "203x203dpi", "1", "7", "254", "0", "-203", "abc", "16777217",
               "2147483647", "99999999999", "-1")
DISTANCES = ("0", "1", "2", "10", "20", "79", "80", "100", "-1", "-20", "1000", "16777217", "2147483647",
             "-2147483648", "99999999999", "x")
SIZE_NAMES = ("72x200", "48x100", "56", "80mm", "1", "2x2", "7w", "73", "100", "128x9", "210", "297x420", "512", "1024",
              "1025", "3000x1", "0", "0x72", "A4", "Roll80", "-5x3", "-72")
EDGES = ("204", "204.31", "136.06", "576", "72.5", "0", "1", "2.48", "2.49", "100.125", "842.17", "35.4699", "255.9")
EXTRA_OPTIONS = (b"finishings=3", b"number-up=1", b"nocollate", b"sides=one-sided", b"job-uuid=urn:uuid:12",
                 b"print-color-mode=monochrome", b"x", b"media=Custom.72x100mm")
LIMIT = 1 << 19


def _value(rng, keyword):
    if keyword == "Resolution":
        return rng.choice(RESOLUTIONS)
    if keyword in ("FormfeedLength", "CutPaperLength"):
        return rng.choice(DISTANCES)
    if keyword == "LogoIndex":
        return rng.choice(SMALL + ODD + ("48", "79", "80", "209", "-14", "-15"))
    if keyword == "CutMode":
        return rng.choice(SMALL + ODD + ("1", "2") * 12 + ("65", "66", "67", "68", "257"))
    if keyword == "LogoAlign":
        return rng.choice(SMALL + ODD + ("1", "2", "3") * 6 + ("48", "49", "50", "51", "52", "257"))
    if keyword in ("PostPrintAction", "PaperType", "Drawer1", "Drawer2", "PrintLogo", "BeepControl",
                   "ExternalBeepControl", "PaperSaveMode", "PaperSaveBottom", "BitmapCompression"):
        return rng.choice(("0", "1", "2", "3") * 3 + SMALL + ODD)
    return rng.choice(SMALL + ODD)


def _any_case(rng, text):
    return text if rng.random() < 0.9 else "".join(rng.choice((c.lower(), c.upper())) for c in text)


def _job_options(rng, sizes):
    words = []
    for keyword in oracle_options.KEYWORDS:
        if rng.random() < 0.25:
            if keyword == "PageSize":
                names = [size.name for size in sizes] or ["72x200"]
                value = rng.choice(names + ["Custom.%dx%d%s" % (rng.randint(1, 300), rng.randint(1, 300), unit)
                                            for unit in ("", "mm", "cm")] + list(SIZE_NAMES) + ["", "Custom"])
            else:
                value = _value(rng, keyword)
            words.append(("%s=%s" % (_any_case(rng, keyword), value)).encode())
    if rng.random() < 0.1:
        words.append(rng.choice((b"Drawer1", b"noDrawer2", b"CutMode=1", b"CutMode=2", b"nocutmode")))
    words += rng.sample(EXTRA_OPTIONS, rng.randrange(4))
    rng.shuffle(words)
    return rng.choice((b" ", b"  ", b" ", b"\t")).join(words)


def _ppd(rng):
    chosen = rng.choice(catalogue.models())
    if rng.random() < 0.5:  # models that print are more to the point
        chosen = rng.choice([m for m in catalogue.models() if m.dialect & 1])
    options = []
    for keyword in oracle_options.KEYWORDS:
        if keyword == "PageSize" or rng.random() < 0.3:
            continue
        values = [_value(rng, keyword).strip() for _ in range(rng.randint(1, 4))]
        choices = tuple(dict.fromkeys(v for v in values if v)) or ("0",)
        default = rng.choice(choices)
        if rng.random() < 0.1:
            default = rng.choice((None, "NoSuchChoice"))
        options.append(Option(keyword, choices, default))
    sizes = []
    if rng.random() < 0.85:
        for name in rng.sample(SIZE_NAMES, rng.randint(1, 4)):
            area = None if rng.random() < 0.1 else ("0", "0", rng.choice(EDGES), "600")
            sizes.append(Size(name, area, None if rng.random() < 0.2 else ("204", "600")))
    default = rng.choice([size.name for size in sizes] * 4 + ["Nothing", None]) if sizes else None
    return Ppd(chosen.name, options, sizes, default, rng.random() < 0.3, (0, 0, rng.choice((0, 3.5, 10)), 0))


def _row(rng, width):
    kind = rng.randrange(7)
    if kind == 0:
        return bytes(width)
    if kind == 1:
        return b"\xff" * width
    if kind == 2:  # a single dot
        row = bytearray(width)
        row[rng.randrange(width)] = 1 << rng.randrange(8)
        return bytes(row)
    if kind == 3:  # like text: short words between gaps
        row = bytearray()
        while len(row) < width:
            row += bytes(rng.randrange(1, 9)) + rng.randbytes(rng.randrange(1, 9))
        return bytes(row[:width])
    if kind == 4:  # runs of all lengths
        row = bytearray()
        while len(row) < width:
            row += bytes([rng.choice((0, 255, 0x41, 0x42))]) * rng.choice((1, 1, 2, 3, 5, 127, 128, 129, 255, 256))
        return bytes(row[:width])
    if kind == 5:
        return rng.randbytes(width)
    return bytes(rng.randrange(width + 1)).ljust(width, b"\x55")


def _rows(rng, width, height):
    rows = []
    while len(rows) < height:
        row = _row(rng, width)
        same = rng.choice((1, 1, 2, 5, 14, 30, 300)) if rng.random() < 0.5 else 1
        rows += [row] * min(same, height - len(rows))
        if rng.random() < 0.15:
            rows += [bytes(width)] * min(rng.choice((1, 10, 13, 14, 15, 100, 255, 256, 600)), height - len(rows))
    return b"".join(rows)


def _page(rng, options):
    strip = oracle_options.strip_buffer_size(options) if options else 1008
    width = rng.choice((1, 2, 3, 48, 72, 73, rng.randint(1, 300),
                        max(1, min(300, options.printer_width if options else 72))))
    if width > strip and rng.random() < 0.9:
        width = max(1, min(300, strip))
    height = min(3000, int(2 ** rng.uniform(0, 11.6)))
    while width * height > LIMIT // 8:
        height = max(1, height // 2)
    copies = rng.choice((1, 1, 1, 1, 2, 3, 0))
    fields = raster.header(
        width, height, copies, CutMedia=rng.randrange(5),
        MediaClass=rng.choice((b"", b"Roll", b"caf\xe9", b"\nSTATE: paused\n\x7f")),
        MediaType=rng.choice((b"", b"Thermal")), OutputType=rng.choice((b"", b"x" * 63)),
        AdvanceDistance=rng.choice((0, 5, 0xFFFFFFFF)),
        Duplex=rng.randrange(3), HWResolution=[203, rng.choice((203, 180))], ImagingBoundingBox=[0, 1, 204, 0x80000000],
        Margins=[1, 2], PageSize=[204, 567], Tumble=rng.randrange(2), cupsColorSpace=rng.choice((0, 3, 3, 3, 18)),
        cupsCompression=rng.randrange(3), cupsRowCount=rng.randrange(9), cupsMediaType=rng.randrange(3))
    rows = _rows(rng, width, height)
    if copies == 0 and rng.random() < 0.6:
        rows = b""
    return fields, rows


def _damaged(rng, data):
    kind = rng.randrange(4)
    if kind == 0:  # likely within the rows
        return data[:int(len(data) * rng.uniform(0.6, 1))]
    if kind == 1:
        return data[:rng.randrange(len(data) + 1)]
    if kind == 2:
        return data + rng.randbytes(rng.choice((1, 100, 420, 2000)))
    at = 4 + 4 * rng.randrange(min(450, max(1, (len(data) - 4) // 4)))
    forged = rng.choice((0, 1, 2, 3, 7, 73, 300, 2000))
    return data[:at] + forged.to_bytes(4, rng.choice(("little", "big"))) + data[at + 4:]


def _quick(job):
    """The job's options when running it is no matter of gigabytes; None when it ends before there are any."""
    try:
        options = oracle_options.get_options(Channels(), job)
    except Fatal:
        return None
    if oracle_options.strip_buffer_size(options) > (1 << 24):
        raise Unsuited()
    if max(dots(options.cutdistance, options.dot_unit), dots(options.feeddistance, options.dot_unit)) > 20000:
        raise Unsuited()
    if options.externalbeeptimes > 1000:
        raise Unsuited()
    return options


def _draw(rng, ppd_path):
    ppd = _ppd(rng)
    if rng.random() < 0.01:
        ppd.short_nick_name = rng.choice(("qx-100", "Nobody", "", "QX-100 "))
    job = oracle.Job(b"", _job_options(rng, ppd.sizes), ppd, ppd_path)
    if rng.random() < 0.01:
        job.ppd = None
    if rng.random() < 0.01:
        job.arguments = rng.choice((5, 8))
    elif rng.random() < 0.3:
        job.arguments = 7
        job.file_opens = rng.random() < 0.97
    options = _quick(job)
    if options and oracle_options.strip_buffer_size(options) == 0 and rng.random() < 0.8:
        raise Unsuited()  # a page that does not fit ends the job at once; a few of them are enough
    version, order = rng.choice((1, 2, 2, 3, 3)), rng.choice(raster.ORDERS)
    pages = [_page(rng, options) for _ in range(rng.choice((0, 1, 1, 1, 2, 3)))]
    job.raster = raster.stream(pages, version, order, rng)
    if rng.random() < 0.2:
        job.raster = _damaged(rng, job.raster)
    return job, "version %d, order %s, pages %s" % (
        version, order, [(f["cupsBytesPerLine"], f["cupsHeight"], f["NumCopies"]) for f, _ in pages])


def make(seed, ppd_path):
    """A job, what must come of it, and words that describe it. The same seed gives the same job."""
    rng = random.Random(seed)
    while True:
        try:
            job, note = _draw(rng, ppd_path)
            outcome = oracle.run(job, limit=LIMIT)
            break
        except Unsuited:
            continue
    name = job.ppd.short_nick_name if job.ppd else "no PPD"
    return job, outcome, "model %s, options %r, %s, %d arguments, %d raster bytes" % (
        name, job.options, note, job.arguments, len(job.raster))
