// The page header in the scheduler's log, for support: what CUPS asked of this page.
#include "diag/foreign.h"
#include "diag/messages.h"

#include <stdio.h>
#include <string.h>

namespace {

// The numbers of a pair run together; log readers have always seen them so. The height closes the list once more: on a
// long log it stands beside the width.
constexpr char lines_format[] =
    "INFO: AdvanceDistance:%d\n"
    "INFO: AdvanceMedia:%d\n"
    "INFO: Collate:%s\n"
    "INFO: CutMedia:%d\n"
    "INFO: Duplex:%s\n"
    "INFO: HWResolution:%d%d\n"
    "INFO: ImagingBoundingBox:left%d, bottom%d, right%d, top%d\n"
    "INFO: InsertSheet:%s\n"
    "INFO: cups_jog_t:%d\n"
    "INFO: cups_edge_t:%d\n"
    "INFO: ManualFeed:%s\n"
    "INFO: Margins:%d%d\n"
    "INFO: MediaClass:%s\n"
    "INFO: MediaColor:%s\n"
    "INFO: MediaPosition:%d\n"
    "INFO: MediaType:%s\n"
    "INFO: MediaWeight:%d\n"
    "INFO: MirrorPrint:%s\n"
    "INFO: NegativePrint:%s\n"
    "INFO: NumCopies:%d\n"
    "INFO: Orientation:%d\n"
    "INFO: OutputFaceUp:%s\n"
    "INFO: OutputType:%s\n"
    "INFO: PageSize:%d%d\n"
    "INFO: Separations:%s\n"
    "INFO: TraySwitch:%s\n"
    "INFO: Tumble:%s\n"
    "INFO: cupsBitsPerColor:%d\n"
    "INFO: cupsBitsPerPixel:%d\n"
    "INFO: cupsBytesPerLine:%d\n"
    "INFO: cupsColorOrder:%d\n"
    "INFO: cupsColorSpace:%d\n"
    "INFO: cupsCompression:%d\n"
    "INFO: cupsHeight:%d\n"
    "INFO: cupsMediaType:%d\n"
    "INFO: cupsRowCount:%d\n"
    "INFO: cupsRowFeed:%d\n"
    "INFO: cupsRowStep:%d\n"
    "INFO: cupsWidth:%d\n"
    "INFO: cupsHeight:%d\n";

// The stream may hold any number in a field that is declared as an enumeration.
template <typename Field>
int32_t number(const Field &field)
{
    static_assert(sizeof(Field) == sizeof(int32_t));
    int32_t value;
    memcpy(&value, &field, sizeof value);
    return value;
}

template <typename Field>
const char *truth(const Field &field)
{
    return number(field) != 0 ? "TRUE" : "FALSE";
}

// A forged header may leave a text without its end.
foreign_text text(const char (&field)[64])
{
    return shown(field, sizeof field);
}

}  // namespace

void dump_header(cups_page_header_t header)
{
    // Four texts of 64 bytes, each shown as four, and the numbers of at most eleven characters.
    char lines[4096];
    const auto &h = header;
    const int length = snprintf(
        lines, sizeof lines, lines_format, number(h.AdvanceDistance), number(h.AdvanceMedia), truth(h.Collate),
        number(h.CutMedia), truth(h.Duplex), number(h.HWResolution[0]), number(h.HWResolution[1]),
        number(h.ImagingBoundingBox[0]), number(h.ImagingBoundingBox[1]), number(h.ImagingBoundingBox[2]),
        number(h.ImagingBoundingBox[3]), truth(h.InsertSheet), number(h.Jog), number(h.LeadingEdge),
        truth(h.ManualFeed), number(h.Margins[0]), number(h.Margins[1]), text(h.MediaClass).text,
        text(h.MediaColor).text, number(h.MediaPosition), text(h.MediaType).text, number(h.MediaWeight),
        truth(h.MirrorPrint), truth(h.NegativePrint), number(h.NumCopies), number(h.Orientation), truth(h.OutputFaceUp),
        text(h.OutputType).text, number(h.PageSize[0]), number(h.PageSize[1]), truth(h.Separations),
        truth(h.TraySwitch), truth(h.Tumble), number(h.cupsBitsPerColor), number(h.cupsBitsPerPixel),
        number(h.cupsBytesPerLine), number(h.cupsColorOrder), number(h.cupsColorSpace), number(h.cupsCompression),
        number(h.cupsHeight), number(h.cupsMediaType), number(h.cupsRowCount), number(h.cupsRowFeed),
        number(h.cupsRowStep), number(h.cupsWidth), number(h.cupsHeight));
    log_text(lines, static_cast<size_t>(length));
}
