#include "tests/filter/page_stream.h"

#include <unistd.h>

namespace {

cups_page_header_t header_of(const StreamPage &page)
{
    cups_page_header_t header = {};
    header.HWResolution[0] = 203;
    header.HWResolution[1] = 203;
    header.NumCopies = page.copies;
    header.cupsWidth = page.width * 8;
    header.cupsHeight = page.height != 0 ? page.height : static_cast<unsigned>(page.rows.size() / page.width);
    header.cupsBytesPerLine = page.width;
    header.cupsBitsPerColor = 1;
    header.cupsBitsPerPixel = 1;
    header.cupsColorSpace = CUPS_CSPACE_K;
    return header;
}

}  // namespace

PageStream::PageStream(const std::vector<StreamPage> &pages)
{
    cups_raster_t *writer = cupsRasterOpen(file_.descriptor(), CUPS_RASTER_WRITE);
    for (const StreamPage &page : pages) {
        cups_page_header_t page_header = header_of(page);
        cupsRasterWriteHeader(writer, &page_header);
        std::string rows = page.rows;
        cupsRasterWritePixels(writer, reinterpret_cast<unsigned char *>(rows.data()),
                              static_cast<unsigned>(rows.size()));
    }
    cupsRasterClose(writer);
    lseek(file_.descriptor(), 0, SEEK_SET);
    stream = cupsRasterOpen(file_.descriptor(), CUPS_RASTER_READ);
}

PageStream::~PageStream()
{
    cupsRasterClose(stream);
}

bool PageStream::next()
{
    return cupsRasterReadHeader(stream, &header) != 0;
}
