// A raster stream of any bytes through the page loop: guard, libcups, strips, bands, compression, feeds. A fatal error
// is a proper end; a crash, an endless loop or a write beside a buffer is not.
#include "filter/device.h"
#include "filter/document.h"
#include "filter/page.h"
#include "filter/raster_guard.h"
#include "fuzz/fatal_end.h"
#include "fuzz/input.h"

#include <klov/trace.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>

namespace {

// Forged copies and heights are obeyed; a fuzz run has no time for billions of them.
constexpr unsigned most_copies = 3;
constexpr unsigned most_rows = 600;
constexpr unsigned most_buffered_bytes = 1U << 17;

struct Device {
    dev_options options;
    render_state state;
    printer_dev dev;
    std::vector<uint8_t> strip;
    std::vector<uint8_t> work;
};

void make_device(Device &device, fuzz::Input &input)
{
    static constexpr uint32_t models[] = {0x1001, 0x1955, 0x1956, 0x1191};
    dev_options &options = device.options;
    init_dev_mode(&options);
    options.model = models[input.byte() % 4];
    options.printer_width = input.byte();
    options.max_render_height = input.byte() % 32;
    const uint8_t flags = input.byte();
    options.issupportshiftline = (flags & 1) != 0;
    options.compression = (flags & 2) != 0;
    options.papersavebottom = (flags & 4) != 0;
    options.pagemode = (flags & 8) != 0;
    options.ticketmode = (flags & 16) != 0;
    options.papertype = (flags & 32) != 0;
    options.postprintaction = flags >> 6;
    options.papersavemode = input.byte() % 5;
    options.cutdistance = static_cast<int32_t>(input.number() % 300);
    device.state = {};
    device.strip.resize(static_cast<size_t>(options.printer_width) * static_cast<size_t>(options.max_render_height));
    device.work.resize(device.strip.size() + 20);
    device.dev = {&options,
                  &device.state,
                  device.strip.data(),
                  static_cast<uint32_t>(device.strip.size()),
                  device.work.data(),
                  static_cast<uint32_t>(device.work.size())};
}

void limit(cups_page_header_t &header)
{
    header.NumCopies = std::min(header.NumCopies, most_copies);
    header.cupsHeight = std::min(header.cupsHeight, most_rows);
    if (header.NumCopies > 1 && header.cupsBytesPerLine > 0) {
        header.cupsHeight = std::min(header.cupsHeight, most_buffered_bytes / header.cupsBytesPerLine);
    }
}

void print(Device &device, raster_guard &guard, cups_raster_t *stream)
{
    cups_page_header_t header;
    start_doc(&device.dev);
    while (read_guarded_header(guard, stream, &header) != 0) {
        limit(header);
        process_page(&device.dev, &header, stream);
    }
    end_doc(&device.dev);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const int file = memfd_create("raster", 0);
    static Device device;
    static raster_guard guard;
    fuzz::silence();
    fuzz::Input input(data, size);
    make_device(device, input);
    if (input.byte() % 4 == 0) {
        klov_trace_init("/dev/null");
    }
    const std::vector<uint8_t> bytes = input.rest();
    FUZZ_CHECK(ftruncate(file, 0) == 0);
    FUZZ_CHECK(pwrite(file, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()));
    lseek(file, 0, SEEK_SET);
    guard = {};
    start_guard(guard, file, device.dev.render_data_size);
    cups_raster_t *stream = cupsRasterOpenIO(read_guarded, &guard, CUPS_RASTER_READ);
    if (stream != nullptr) {
        auto job = [&] { print(device, guard, stream); };
        fuzz::survives(job);
        cupsRasterClose(stream);
    }
    klov_trace_exit();
    return 0;
}
