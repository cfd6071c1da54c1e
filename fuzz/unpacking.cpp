// Compressed rows of any codes: the filter unpacks them as CUPS does, also where the stream ends too early.
#include "fuzz/input.h"
#include "tests/faults/both_readings.h"
#include "tests/faults/page_header.h"

namespace {

// A header that CUPS accepts, in either byte order.
std::string page_header(fuzz::Input &input, bool swapped)
{
    static constexpr unsigned spaces[] = {CUPS_CSPACE_K, CUPS_CSPACE_W, CUPS_CSPACE_RGB, CUPS_CSPACE_SW};
    cups_page_header2_t header = {};
    const uint8_t depth = input.byte();
    const unsigned pixel_size = depth < 128 ? 1 : 1 + depth % largest_pixel;
    header.cupsHeight = 1 + input.byte();
    header.cupsBytesPerLine = (1 + input.byte()) * pixel_size;
    // Of 16-bit numbers CUPS swaps the bytes, but not in pages that end too early: that alone may differ.
    const bool wide = input.byte() % 2 == 0 && pixel_size % 2 == 0 && !swapped;
    header.cupsBitsPerColor = wide ? 16 : 8;
    header.cupsBitsPerPixel = pixel_size * 8 - (swapped ? 1 : 0);
    header.cupsColorSpace = static_cast<cups_cspace_t>(spaces[input.byte() % 4]);
    header.cupsNumColors = 1;
    return page_header_bytes(header, swapped);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    const bool swapped = input.byte() % 2 != 0;
    const uint32_t rows_at_once = input.byte() % 8;
    const size_t piece_size = input.byte() % 4 == 0 ? 1 + input.byte() % 64 : 0;
    std::string stream;
    put_stream_word(stream, CUPS_RASTER_SYNCv2, swapped);
    while (!input.done()) {
        stream += page_header(input, swapped);
        const uint8_t blocks = input.byte() % 16;
        const std::vector<uint8_t> codes = input.bytes(256U * blocks + input.byte());
        stream.append(codes.begin(), codes.end());
    }
    FUZZ_CHECK(readings::read_by_filter(stream, rows_at_once, piece_size) ==
               readings::read_by_cups(stream, rows_at_once));
    return 0;
}
