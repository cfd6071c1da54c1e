// Bands that are cut into sections, and random bands held to a plain reference.
#include "printops/band.h"
#include "tests/printops/kit.h"
#include "tests/printops/reference.h"

#include <gtest/gtest.h>
#include <klov/result.h>

#include <random>

using namespace kit;

namespace {

std::string printed(Device &device, std::string_view rows, uint32_t width)
{
    const Seen seen = observe_untraced([&] {
        const auto *first = reinterpret_cast<const uint8_t *>(rows.data());
        EXPECT_EQ(print_dotline(&device.dev, first, width, static_cast<int32_t>(rows.size() / width)), KLOV_OK);
    });
    EXPECT_EQ(seen.err, "");
    return seen.out;
}

TEST(BandSections, EveryHeightTakesAsManyCommandsAsItNeeds)
{
    Device device;
    device.options.max_render_height = 7;
    device.make_buffers();
    for (size_t height = 1; height <= 30; ++height) {
        const std::string rows(height * 2, 'x');
        std::string expected;
        for (size_t at = 0; at < height; at += 7) {
            const size_t count = std::min<size_t>(7, height - at);
            expected += raster(0, 2, count, std::string(count * 2, 'x'));
        }
        EXPECT_EQ(hex(printed(device, rows, 2)), hex(expected)) << height;
    }
}

// 100 bytes hold three rows of 30; the strip height of 14 does not come to bear.
TEST(BandSections, TheWorkBufferBoundsTheSection)
{
    Device device;
    device.dev.data_buf_size = 100;
    const std::string rows(30 * 7, 'y');
    EXPECT_EQ(hex(printed(device, rows, 30)),
              hex(raster(0, 30, 3, rows.substr(0, 90)) + raster(0, 30, 3, rows.substr(0, 90)) +
                  raster(0, 30, 1, rows.substr(0, 30))));
}

TEST(BandSections, EverySectionIsTrimmedByItself)
{
    Device device;
    device.options.max_render_height = 1;
    device.make_buffers();
    EXPECT_EQ(hex(printed(device, bytes("80 00 00  80 01 00  00 00 01"), 3)),
              "1D 76 30 00 01 00 01 00 80 1D 76 30 00 02 00 01 00 80 01 1D 76 30 00 03 00 01 00 00 00 01");
}

std::string random_rows(std::mt19937 &random, size_t width, size_t height)
{
    std::string rows(width * height, '\0');
    const size_t left = random() % (width + 1);
    const size_t right = left + random() % (width - left + 1);
    for (size_t row = 0; row < height; ++row) {
        for (size_t at = left; at < right; ++at) {
            rows[row * width + at] = static_cast<char>(random() % 3 == 0 ? random() : 0);
        }
    }
    return rows;
}

// One random device and band, fixed-width models or the others.
void expect_as_reference(std::mt19937 &random, bool fixed)
{
    Device device;
    const size_t width = 1 + random() % 60;
    device.options.printer_width = static_cast<int32_t>(1 + random() % 60);
    device.options.max_render_height = static_cast<int32_t>(1 + random() % 20);
    device.options.compression = static_cast<int32_t>(random() % 2);
    // The fixed-width models do not shift lines.
    device.options.issupportshiftline = !fixed && random() % 2 == 0;
    device.options.model = fixed ? 0x1955 : 0x1001;
    device.make_buffers();
    if (device.dev.data_buf_size < width) {
        return;
    }
    const std::string rows = random_rows(random, width, 1 + random() % 50);
    ASSERT_EQ(hex(printed(device, rows, static_cast<uint32_t>(width))),
              hex(reference::band(device.options, device.dev.data_buf_size, rows, width)));
}

TEST(BandSections, RandomBandsMatchTheReference)
{
    std::mt19937 random(3);
    for (int round = 0; round < 800 && !HasFailure(); ++round) {
        expect_as_reference(random, false);
    }
}

TEST(BandSections, RandomBandsOfFixedWidthModelsMatchTheReference)
{
    std::mt19937 random(4);
    for (int round = 0; round < 400 && !HasFailure(); ++round) {
        expect_as_reference(random, true);
    }
}

}  // namespace
