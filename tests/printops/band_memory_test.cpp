// A band that cannot be compressed for want of memory.
#include "printops/band.h"
#include "tests/printops/kit.h"

#include <gtest/gtest.h>
#include <klov/result.h>
#include <stdlib.h>

using namespace kit;

// A request of at least this size fails. The kit's own requests and the C library's stay below it.
static size_t failing_size = SIZE_MAX;
// Requests of exactly this size are counted.
static size_t counted_size = 0;
static int counted = 0;

extern "C" void *__real_malloc(size_t size);
extern "C" void *__wrap_malloc(size_t size);
extern "C" void *__wrap_malloc(size_t size)
{
    counted += size == counted_size ? 1 : 0;
    return size >= failing_size ? nullptr : __real_malloc(size);
}

namespace {

constexpr size_t width = 1000;
constexpr size_t height = 200;

int32_t print_large_band(Device &device)
{
    device.options.printer_width = width;
    device.options.max_render_height = height;
    device.make_buffers();
    const std::vector<uint8_t> rows(width * height, 0x41);
    failing_size = width * height;
    const int32_t status = print_dotline(&device.dev, rows.data(), width, height);
    failing_size = SIZE_MAX;
    return status;
}

TEST(BandMemory, WithoutAWorkBufferTheBandIsSilentlyLeftOut)
{
    Device device;
    device.options.compression = 1;
    int32_t status = 99;
    const Seen seen = observe([&] { status = print_large_band(device); });
    EXPECT_EQ(status, KLOV_OK);
    EXPECT_EQ(seen.out, "");
    EXPECT_EQ(seen.err, "");
    EXPECT_EQ(seen.trace.find("+print_dotline("), 0U);
    EXPECT_EQ(seen.trace.find('\n'), seen.trace.size() - 1) << "more than the start line: " << seen.trace;
}

TEST(BandMemory, BandsOfOneSizeShareOneWorkBuffer)
{
    Device device;
    device.options.compression = 1;
    device.options.max_render_height = 1;
    const std::vector<uint8_t> row(7919, 0x41);
    device.options.printer_width = static_cast<int32_t>(row.size());
    device.make_buffers();
    counted_size = (row.size() + 4) * 2;
    observe_untraced([&] {
        for (int band = 0; band < 3; ++band) {
            EXPECT_EQ(print_dotline(&device.dev, row.data(), static_cast<uint32_t>(row.size()), 1), KLOV_OK);
        }
    });
    counted_size = 0;
    EXPECT_EQ(counted, 1);
}

TEST(BandMemory, TheNextBandIsPrintedAgain)
{
    Device device;
    device.options.compression = 1;
    const Seen seen = observe_untraced([&] {
        print_large_band(device);
        const uint8_t row[2] = {0x41, 0x41};
        EXPECT_EQ(print_dotline(&device.dev, row, 2, 1), KLOV_OK);
    });
    EXPECT_EQ(hex(seen.out), "1D 76 30 20 02 00 01 00 FF 41");
}

TEST(BandMemory, WithoutCompressionNoMemoryIsNeeded)
{
    Device device;
    const Seen seen = observe_untraced([&] { print_large_band(device); });
    EXPECT_EQ(seen.out, raster(0, width, height, std::string(width * height, 'A')));
}

}  // namespace
