// Page processing: rows are read in strips and classified; runs of inked rows are printed, runs of blank rows fed.
#include "filter/page.h"

#include "diag/messages.h"
#include "diag/trace.h"
#include "filter/document.h"
#include "printops/band.h"
#include "printops/blank.h"
#include "printops/output.h"
#include "printops/rows.h"

#include <stdio.h>
#include <stdlib.h>

namespace {

// Where a page's rows come from: the stream, or memory when there are copies to make.
struct row_source {
    cups_raster_t *stream;
    const uint8_t *page;  // null: read from the stream
    size_t position;      // in page
};

// The rows of one strip.
struct strip {
    const uint8_t *rows;
    uint32_t width;
    int32_t count;
};

// Once printer bytes were lost the job cannot succeed any more: a forged count of rows or copies is not to keep it
// busy.
bool printing()
{
    return !output_failed();
}

// Rows of this width that the strip buffer holds.
uint32_t rows_in_strip(const printer_dev &dev, uint32_t width)
{
    const uint32_t rows = width > 0 ? dev.render_data_size / width : 0;
    return rows < INT32_MAX ? rows : INT32_MAX;
}

void fill_strip(printer_dev *dev, row_source &source, uint32_t size)
{
    if (source.page != nullptr) {
        memcpy(dev->render_data, source.page + source.position, size);
        source.position += size;
        return;
    }
    if (cupsRasterReadPixels(source.stream, dev->render_data, size) != size) {
        error("cupsRasterReadPixels did not read enough data");
    }
}

void feed_run(printer_dev *dev, int32_t &blank_run)
{
    if (blank_run > 0) {
        print_blank(dev, blank_run);
    }
    blank_run = 0;
}

const uint8_t *row_of(const strip &part, int32_t row)
{
    return part.rows + static_cast<size_t>(row) * part.width;
}

// First row from the given one on that has ink; the strip's count when there is none. Rows lie one after another, so
// that blank ones are looked through in one go.
int32_t find_inked_row(const strip &part, int32_t row)
{
    const size_t rest = static_cast<size_t>(part.count - row) * part.width;
    return row + static_cast<int32_t>(blank_bytes_at_left(row_of(part, row), rest) / part.width);
}

// Rows that follow each other have much of their ink in the same places, so each is looked at there first: a tenth less
// instructions for a page of text, a fifth less for a photo.
int32_t find_blank_row(const strip &part, int32_t row)
{
    const size_t last_word = part.width < 8 ? 0 : part.width - 8;
    for (size_t inked = 0; row < part.count; ++row) {
        const uint8_t *const bytes = row_of(part, row);
        if (part.width >= 8 && load_word(bytes + inked) != 0) {
            continue;
        }
        const size_t blank = blank_bytes_at_left(bytes, part.width);
        if (blank == part.width) {
            break;
        }
        inked = blank < last_word ? blank : last_word;
    }
    return row;
}

// Print a strip. An inked run ends with the strip at the latest; a blank run is carried into the next strip unless
// bottom blanks are to be fed, and ink at that strip's top then feeds it.
void print_strip(printer_dev *dev, const strip &part, int32_t &blank_run)
{
    for (int32_t row = 0; row < part.count;) {
        const int32_t inked = find_inked_row(part, row);
        const int32_t blank_rows = inked - row;
        blank_run = blank_run < INT32_MAX - blank_rows ? blank_run + blank_rows : INT32_MAX;
        if (inked == part.count) {
            break;
        }
        feed_run(dev, blank_run);
        row = find_blank_row(part, inked);
        print_dotline(dev, row_of(part, inked), part.width, row - inked);
    }
    if (dev->devOptions->papersavebottom == 0) {
        feed_run(dev, blank_run);
    }
}

// Print one copy; returns the blank rows left at its bottom.
int32_t print_copy(printer_dev *dev, const cups_page_header_t &header, row_source &source, uint32_t strip_rows_max)
{
    const uint32_t width = header.cupsBytesPerLine;
    int32_t blank_run = 0;
    source.position = 0;
    start_page(dev);
    for (uint32_t rows_done = 0; rows_done < header.cupsHeight && printing();) {
        const uint32_t left = header.cupsHeight - rows_done;
        const uint32_t count = left < strip_rows_max ? left : strip_rows_max;
        fill_strip(dev, source, count * width);
        print_strip(dev, {dev->render_data, width, static_cast<int32_t>(count)}, blank_run);
        rows_done += count;
    }
    end_page(dev);
    return blank_run;
}

// The whole page in memory, blank where the stream ended early. Null when it does not fit.
uint8_t *read_page(const cups_page_header_t &header, cups_raster_t *stream)
{
    const uint64_t size = static_cast<uint64_t>(header.cupsHeight) * header.cupsBytesPerLine;
    if (size > SIZE_MAX) {
        return nullptr;
    }
    uint8_t *page = static_cast<uint8_t *>(calloc(size > 0 ? static_cast<size_t>(size) : 1, 1));
    if (page == nullptr) {
        return nullptr;
    }
    const unsigned request = size > UINT32_MAX ? UINT32_MAX : static_cast<unsigned>(size);
    const unsigned received = cupsRasterReadPixels(stream, page, request);
    trace_put("dataSize (", static_cast<int32_t>(received), ") dHeight (", static_cast<int32_t>(header.cupsHeight),
              ") wBytes (", static_cast<int32_t>(header.cupsBytesPerLine), ").\n");
    return page;
}

void report_end(const printer_dev *dev)
{
    char text[255];
    snprintf(text, sizeof text, "\tlastStripBlanksHeight:%d.", dev->state->lastStripBlanksHeight);
    msg(level_debug, text);
    trace_put("-process_page finished(0).\n");
}

}  // namespace

void process_page(printer_dev *dev, const cups_page_header_t *header, cups_raster_t *stream)
{
    msg(level_debug, "process_page start.\n");
    release_messages();
    const bool printable = header->NumCopies > 0 && header->cupsHeight > 0;
    const uint32_t strip_rows_max = rows_in_strip(*dev, header->cupsBytesPerLine);
    if (printable && strip_rows_max == 0) {
        error("Raster line does not fit the strip buffer");
    }

    row_source source = {stream, nullptr, 0};
    uint8_t *page = nullptr;
    if (header->NumCopies > 1) {
        page = read_page(*header, stream);
        if (page == nullptr) {
            return;
        }
        source.page = page;
    }
    int32_t bottom_blanks = dev->state->lastStripBlanksHeight;
    for (uint32_t copies_left = header->NumCopies; copies_left > 0 && printing(); --copies_left) {
        bottom_blanks = print_copy(dev, *header, source, strip_rows_max);
    }
    dev->state->lastStripBlanksHeight = bottom_blanks;
    free(page);
    report_end(dev);
}
