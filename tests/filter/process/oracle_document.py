"""How a document and its pages are framed, and how a page is cut into bands and feeds."""

import oracle_printing as printing
from oracle_channels import DEBUG
from oracle_options import strip_buffer_size
from numbers_c import dots, signed


def start_doc(out, options):
    out.trace(b"+start_doc start.\n")
    _peripherals(out, options, 1)
    out.trace(b"-start_doc finished.\n")


def _peripherals(out, options, moment):
    """Buzzers, drawers and logo whose option names this moment: 1 start of the document, 2 its end."""
    if options.beepcontrol == moment:
        printing.print_beep(out, options)
    if options.externalbeepcontrol == moment:
        printing.print_external_beep(out, options)
    if options.drawer1 == moment:
        printing.print_open_drawer(out, options, 0)
    if options.drawer2 == moment:
        printing.print_open_drawer(out, options, 1)
    if options.printlogo == moment:
        printing.printer_set_align(out, options)
        printing.print_logo(out, options)


def start_page(out):
    out.trace(b"+start_page start.\n-start_page finished.\n")


def end_page(out, options):
    out.trace(b"+end_page start.\n")
    if options.papertype in (1, 2):
        printing.print_position_next_ticket(out, options)
    if options.postprintaction == 3:
        printing.print_blank(out, options, dots(options.cutdistance, options.dot_unit))
        printing.print_cut_page(out, options)
    out.trace(b"-end_page finished.\n")


def end_doc(out, options):
    out.trace(b"+end_doc start.\n\tticketmode:0.\n\tticketmode:False.\n")
    _peripherals(out, options, 2)
    if options.postprintaction == 1:
        feed = dots(options.feeddistance, options.dot_unit)
        printing.print_blank(out, options, feed)
        out.trace(b"*end_doc feed_dots = %d, feeddistance = %d, dot_unit = %f.\n" % (
            feed, options.feeddistance, options.dot_unit))
    if options.postprintaction == 2:
        feed = dots(options.cutdistance, options.dot_unit)
        printing.print_blank(out, options, feed)
        printing.print_cut_page(out, options)
        out.trace(b"*end_doc cut_dots = %d, feeddistance = %d, dot_unit = %f.\n" % (
            feed, options.cutdistance, options.dot_unit))
    out.trace(b"-end_doc finished.\n")


def process_page(out, options, fields, stream, withheld):
    """Prints a page with all its copies. Takes and gives the count of blank rows withheld at its bottom."""
    copies, height, width = fields["NumCopies"], fields["cupsHeight"], fields["cupsBytesPerLine"]
    out.msg(DEBUG, b"process_page start.\n")
    strip_rows_max = strip_buffer_size(options) // width
    if copies > 0 and strip_rows_max == 0:
        out.error(b"Raster line does not fit the strip buffer")
    page = None
    if copies > 1:
        out.check_size(height * width)
        size, page = stream.read_rows(height)
        page = page.ljust(height * width, b"\0")
        out.trace(b"dataSize (%d) dHeight (%d) wBytes (%d).\n" % (signed(size), signed(height), signed(width)))
    for _ in range(copies):
        start_page(out)
        withheld = _print_copy(out, options, stream, page, height, width, strip_rows_max)
        end_page(out, options)
    out.msg(DEBUG, b"\tlastStripBlanksHeight:%d." % withheld)
    out.trace(b"-process_page finished(0).\n")
    return withheld


def _print_copy(out, options, stream, page, height, width, strip_rows_max):
    blank_run = 0
    done = 0
    while done < height:
        count = min(strip_rows_max, height - done)
        if page is None:
            size, strip = stream.read_rows(count)
            if size != count * width:
                out.error(b"cupsRasterReadPixels did not read enough data")
        else:
            strip = page[done * width:(done + count) * width]
        done += count
        blank_run = _print_strip(out, options, strip, width, count, blank_run)
    return blank_run


def _print_strip(out, options, strip, width, count, blank_run):
    """Inked runs are printed, at the latest at the strip's end; a blank run waits for the next ink."""
    ink_from = None
    for row in range(count):
        inked = any(strip[row * width:(row + 1) * width])
        if inked and ink_from is None:
            if blank_run > 0:
                printing.print_blank(out, options, blank_run)
                blank_run = 0
            ink_from = row
        if not inked:
            if ink_from is not None:
                printing.print_dotline(out, options, strip[ink_from * width:row * width], width, row - ink_from)
                ink_from = None
            blank_run += 1
    if ink_from is not None:
        printing.print_dotline(out, options, strip[ink_from * width:], width, count - ink_from)
    elif options.papersavebottom == 0 and blank_run > 0:
        printing.print_blank(out, options, blank_run)
        blank_run = 0
    return blank_run
