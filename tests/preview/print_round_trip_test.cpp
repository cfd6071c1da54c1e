// Through the printer operations and back: what is printed stands on the paper dot for dot, for every width of the
// catalogue; compressed, it is what the run-length code stands for.
#include <gtest/gtest.h>
#include <klov/model.h>

#include <algorithm>
#include <random>
#include <set>

#include "preview/reader.h"
#include "printops/band.h"
#include "printops/blank.h"
#include "rows_encoder.h"
#include "tests/printops/kit.h"

namespace {

using test::Row;

// The catalogue's closing row has the width 0 or none that prints.
std::set<uint32_t> catalogue_widths()
{
    std::set<uint32_t> widths;
    for (const model_brief *row = model_brief_table; row->id != 0xFFFFFFFF; ++row) {
        widths.insert(static_cast<uint32_t>(row->width));
    }
    return widths;
}

// A page with text-like rows and blank stretches of every length.
std::vector<Row> random_page(std::mt19937 &random, size_t width)
{
    std::vector<Row> page;
    while (page.size() < 700) {
        page.insert(page.end(), random() % 3 == 0 ? random() % 300 : random() % 3, Row(width));
        const size_t inked = 1 + random() % 120;
        for (size_t i = 0; i < inked; ++i) {
            Row row(width);
            for (size_t x = random() % width; x < width; x += 1 + random() % 9) {
                row[x] = static_cast<uint8_t>(random() % 2 == 0 ? 0xFF : random());
            }
            row[random() % width] |= 1;
            page.push_back(row);
        }
    }
    return page;
}

bool is_blank(const Row &row)
{
    return std::all_of(row.begin(), row.end(), [](uint8_t byte) { return byte == 0; });
}

// Inked runs as bands, blank runs as feeds, as a page is printed.
std::string print_page(kit::Device &device, const std::vector<Row> &page)
{
    const auto print = [&] {
        for (size_t first = 0; first < page.size();) {
            const bool blank = is_blank(page[first]);
            size_t last = first;
            std::vector<uint8_t> band;
            for (; last < page.size() && is_blank(page[last]) == blank; ++last) {
                band.insert(band.end(), page[last].begin(), page[last].end());
            }
            const auto rows = static_cast<int32_t>(last - first);
            const auto width = static_cast<uint32_t>(page[0].size());
            blank ? print_blank(&device.dev, rows) : print_dotline(&device.dev, band.data(), width, rows);
            first = last;
        }
    };
    return kit::observe_untraced(print).out;
}

void prepare(kit::Device &device, uint32_t width, bool compressed)
{
    device.options.type = 0x10010001;
    device.options.printer_width = static_cast<int32_t>(width / 8);
    device.options.compression = compressed ? 1 : 0;
    device.make_buffers();
}

std::unique_ptr<preview::Reader> read_back(const std::string &stream, uint32_t width)
{
    auto reader = std::make_unique<preview::Reader>(preview::Options{.width = width, .margin_unit = 8});
    reader->feed({reinterpret_cast<const uint8_t *>(stream.data()), stream.size()});
    EXPECT_TRUE(reader->finish());
    // Only rows of more than 128 bytes can hold runs that the code makes longer, and only from 256 on is that
    // ambiguous.
    for (const preview::Warning &warning : reader->warnings()) {
        EXPECT_GT(width, 128U * 8) << warning.text;
        const bool ambiguous = warning.text.find("ambiguous") != std::string::npos;
        EXPECT_TRUE(ambiguous || warning.text.find("a byte too many") != std::string::npos) << warning.text;
        EXPECT_TRUE(!ambiguous || width >= 256U * 8) << warning.text;
    }
    return reader;
}

Row row_of(const preview::Reader &reader, uint64_t index)
{
    const preview::Bytes bits = reader.paper().row(index);
    return bits.empty() ? Row(reader.options().width / 8) : Row(bits.begin(), bits.end());
}

}  // namespace

TEST(PrintRoundTrip, PlainPagesEqualTheirInputDotForDot)
{
    ASSERT_GE(catalogue_widths().size(), 3U);
    std::mt19937 random(11);
    for (const uint32_t width : catalogue_widths()) {
        kit::Device device;
        prepare(device, width, false);
        const std::vector<Row> page = random_page(random, width / 8);
        const auto reader = read_back(print_page(device, page), width);
        ASSERT_EQ(reader->paper().rows(), page.size()) << width;
        for (size_t i = 0; i < page.size(); ++i) {
            ASSERT_EQ(row_of(*reader, i), page[i]) << width << " row " << i;
        }
    }
}

// Sections are trimmed at the right before they are coded, so the code's consequences apply to the trimmed row.
TEST(PrintRoundTrip, CompressedPagesEqualWhatTheCodeStandsFor)
{
    std::mt19937 random(12);
    for (const uint32_t width : catalogue_widths()) {
        kit::Device device;
        prepare(device, width, true);
        const std::vector<Row> page = random_page(random, width / 8);
        const auto reader = read_back(print_page(device, page), width);
        ASSERT_EQ(reader->paper().rows(), page.size()) << width;
        size_t row = 0;
        for (const preview::CommandRecord &command : reader->commands()) {
            ASSERT_EQ(command.name, "print_raster_bit_image");
            const auto used = static_cast<size_t>(command.args[1].value);
            for (int64_t i = 0; i < command.args[2].value; ++i, ++row) {
                Row expected = page[row];
                if (command.args[0].value == 32) {
                    expected = test::after_the_code(
                        Row(page[row].begin(), page[row].begin() + static_cast<std::ptrdiff_t>(used)));
                    expected.resize(width / 8);
                }
                ASSERT_EQ(row_of(*reader, row), expected) << width << " row " << row;
            }
        }
        EXPECT_EQ(row, page.size());
    }
}

// A printer that shifts lines gets the left margin in bytes; one band, because a margin stays until the next one is
// set.
TEST(PrintRoundTrip, AShiftedBandComesBackInItsPlace)
{
    std::mt19937 random(13);
    for (const uint32_t width : catalogue_widths()) {
        for (size_t blank_bytes = 1; blank_bytes < width / 8; blank_bytes += 5) {
            kit::Device device;
            prepare(device, width, false);
            device.options.issupportshiftline = true;
            std::vector<Row> band(20, Row(width / 8));
            for (Row &row : band) {
                row[blank_bytes] = static_cast<uint8_t>(1 + random() % 255);
            }
            const auto reader = read_back(print_page(device, band), width);
            ASSERT_EQ(reader->paper().rows(), band.size());
            for (size_t i = 0; i < band.size(); ++i) {
                ASSERT_EQ(row_of(*reader, i), band[i]) << width << " blank " << blank_bytes;
            }
        }
    }
}
