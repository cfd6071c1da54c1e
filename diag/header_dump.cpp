// The page header in the scheduler's log, for support: what CUPS asked of this page.
#include "diag/decimal.h"
#include "diag/messages.h"

#include <string.h>

namespace {

// The stream may hold any number in a field that is declared as an enumeration.
template <typename Field>
uint32_t any_number(const Field &field)
{
    static_assert(sizeof(Field) == sizeof(uint32_t));
    uint32_t number;
    memcpy(&number, &field, sizeof number);
    return number;
}

// The forty lines, put together without printf: they come with every page.
char lines[4096];
char *line_end = lines;

void put_text(const char *text, size_t length)
{
    memcpy(line_end, text, length);
    line_end += length;
}

template <size_t size>
void put(const char (&text)[size])
{
    put_text(text, size - 1);
}

template <typename Field>
void put_number(const Field &field)
{
    line_end = put_decimal(line_end, static_cast<int32_t>(any_number(field)));
}

template <size_t size, typename Field>
void number_line(const char (&name)[size], const Field &field)
{
    put("INFO: ");
    put(name);
    put(":");
    put_number(field);
    put("\n");
}

template <size_t size, typename Field>
void truth_line(const char (&name)[size], const Field &field)
{
    put("INFO: ");
    put(name);
    if (any_number(field) != 0) {
        put(":TRUE\n");
    } else {
        put(":FALSE\n");
    }
}

// A forged header may leave a text without its end: never read past the field.
template <size_t size>
void text_line(const char (&name)[size], const char (&value)[64])
{
    put("INFO: ");
    put(name);
    put(":");
    put_text(value, strnlen(value, sizeof value));
    put("\n");
}

// The two numbers run together; log readers have always seen them so.
template <size_t size>
void pair_line(const char (&name)[size], const unsigned (&pair)[2])
{
    put("INFO: ");
    put(name);
    put(":");
    put_number(pair[0]);
    put_number(pair[1]);
    put("\n");
}

void box_line(const unsigned (&box)[4])
{
    put("INFO: ImagingBoundingBox:left");
    put_number(box[0]);
    put(", bottom");
    put_number(box[1]);
    put(", right");
    put_number(box[2]);
    put(", top");
    put_number(box[3]);
    put("\n");
}

}  // namespace

void dump_header(cups_page_header_t header)
{
    line_end = lines;
    number_line("AdvanceDistance", header.AdvanceDistance);
    number_line("AdvanceMedia", header.AdvanceMedia);
    truth_line("Collate", header.Collate);
    number_line("CutMedia", header.CutMedia);
    truth_line("Duplex", header.Duplex);
    pair_line("HWResolution", header.HWResolution);
    box_line(header.ImagingBoundingBox);
    truth_line("InsertSheet", header.InsertSheet);
    number_line("cups_jog_t", header.Jog);
    number_line("cups_edge_t", header.LeadingEdge);
    truth_line("ManualFeed", header.ManualFeed);
    pair_line("Margins", header.Margins);
    text_line("MediaClass", header.MediaClass);
    text_line("MediaColor", header.MediaColor);
    number_line("MediaPosition", header.MediaPosition);
    text_line("MediaType", header.MediaType);
    number_line("MediaWeight", header.MediaWeight);
    truth_line("MirrorPrint", header.MirrorPrint);
    truth_line("NegativePrint", header.NegativePrint);
    number_line("NumCopies", header.NumCopies);
    number_line("Orientation", header.Orientation);
    truth_line("OutputFaceUp", header.OutputFaceUp);
    text_line("OutputType", header.OutputType);
    pair_line("PageSize", header.PageSize);
    truth_line("Separations", header.Separations);
    truth_line("TraySwitch", header.TraySwitch);
    truth_line("Tumble", header.Tumble);
    number_line("cupsBitsPerColor", header.cupsBitsPerColor);
    number_line("cupsBitsPerPixel", header.cupsBitsPerPixel);
    number_line("cupsBytesPerLine", header.cupsBytesPerLine);
    number_line("cupsColorOrder", header.cupsColorOrder);
    number_line("cupsColorSpace", header.cupsColorSpace);
    number_line("cupsCompression", header.cupsCompression);
    number_line("cupsHeight", header.cupsHeight);
    number_line("cupsMediaType", header.cupsMediaType);
    number_line("cupsRowCount", header.cupsRowCount);
    number_line("cupsRowFeed", header.cupsRowFeed);
    number_line("cupsRowStep", header.cupsRowStep);
    number_line("cupsWidth", header.cupsWidth);
    // The height closes the list once more: on a long log it stands beside the width.
    number_line("cupsHeight", header.cupsHeight);
    log_text(lines, static_cast<size_t>(line_end - lines));
}
