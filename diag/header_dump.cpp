// The page header in the scheduler's log, for support: what CUPS asked of this page.
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

template <typename Field>
void number_line(const char *name, const Field &field)
{
    log_line("INFO: %s:%d\n", name, static_cast<int>(any_number(field)));
}

template <typename Field>
void truth_line(const char *name, const Field &field)
{
    log_line("INFO: %s:%s\n", name, any_number(field) != 0 ? "TRUE" : "FALSE");
}

// A forged header may leave a text without its end: never read past the field.
void text_line(const char *name, const char (&value)[64])
{
    log_line("INFO: %s:%.64s\n", name, value);
}

// The two numbers run together; log readers have always seen them so.
void pair_line(const char *name, const unsigned (&pair)[2])
{
    log_line("INFO: %s:%d%d\n", name, static_cast<int>(pair[0]), static_cast<int>(pair[1]));
}

}  // namespace

void dump_header(cups_page_header_t header)
{
    const unsigned *box = header.ImagingBoundingBox;
    number_line("AdvanceDistance", header.AdvanceDistance);
    number_line("AdvanceMedia", header.AdvanceMedia);
    truth_line("Collate", header.Collate);
    number_line("CutMedia", header.CutMedia);
    truth_line("Duplex", header.Duplex);
    pair_line("HWResolution", header.HWResolution);
    log_line("INFO: ImagingBoundingBox:left%d, bottom%d, right%d, top%d\n", static_cast<int>(box[0]),
             static_cast<int>(box[1]), static_cast<int>(box[2]), static_cast<int>(box[3]));
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
}
