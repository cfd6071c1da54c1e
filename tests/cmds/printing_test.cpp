// The commands that print a page.
#include <klov/printing.h>

#include <algorithm>

#include "tests/cmds/kit.h"

using namespace kit;

namespace {

int32_t raster_header(uint32_t printer_class, int32_t m, int32_t xBytes, int32_t yDots, uint8_t *buf, uint32_t cap,
                      uint32_t *len)
{
    return klov_cmd_print_raster_img_cmd_header(printer_class, m, xBytes, yDots, reinterpret_cast<uintptr_t>(buf), cap,
                                                len);
}

const Row rows[] = {
    {"print_raster_img_cmd_header_m", with<raster_header, V, 48, 0x0102>, "1D 76 30 n 30 00 02 01"},
    {"print_raster_img_cmd_header_xBytes", with<raster_header, 3, V, 0x8001>, "1D 76 30 03 nL nH 01 80"},
    {"print_raster_img_cmd_header_yDots", with<raster_header, 0, 72, V>, "1D 76 30 00 48 00 nL nH"},
    {"set_left_margin", klov_cmd_set_left_margin, "1D 4C nL nH", {{0, 65535}}, Tested::whole},
    {"print_and_return_standard_mode", with<klov_cmd_print_and_return_standard_mode>, "0C"},
    {"select_the_print_speed", klov_cmd_select_the_print_speed, "1D 45 n"},
    {"select_the_print_density", klov_cmd_select_the_print_density, "1D 28 4B 02 00 31 n"},
    {"set_line_spacing", klov_cmd_set_line_spacing, "1B 33 n"},
    {"select_justification", klov_cmd_select_justification, "1B 61 n", {{0, 2}, {48, 50}}},
    {"beep_integrated_beeper_n",
     with<klov_cmd_beep_integrated_beeper, V, 0x11, 0x22>,
     "1B 28 41 05 00 61 64 n 11 22",
     {{0, 63}}},
    {"beep_integrated_beeper_c", with<klov_cmd_beep_integrated_beeper, 63, V, 0x22>, "1B 28 41 05 00 61 64 3F n 22"},
    {"beep_integrated_beeper_t", with<klov_cmd_beep_integrated_beeper, 0, 0x11, V>, "1B 28 41 05 00 61 64 00 11 n"},
    {"generate_pulse_m", with<klov_cmd_generate_pulse, V, 0x10, 0x20>, "1B 70 n 10 20", {{0, 1}, {48, 49}}},
    {"generate_pulse_t1", with<klov_cmd_generate_pulse, 49, V, 255>, "1B 70 31 n FF"},
    {"generate_pulse_t2", with<klov_cmd_generate_pulse, 1, 0, V>, "1B 70 01 00 n"},
    {"select_cut_mode_and_feed_paper_short", with<klov_cmd_select_cut_mode_and_feed_paper, 1, V>, "1D 56 42 n"},
    {"select_cut_mode_and_feed_paper_n", with<klov_cmd_select_cut_mode_and_feed_paper, 65, V>, "1D 56 41 n"},
    {"print_NV_graphics_kc1",
     with<klov_cmd_print_the_specified_NV_graphics_data_gmode, V, 126, 1, 2>,
     "1D 28 4C 06 00 30 45 n 7E 01 02",
     {{32, 126}}},
    {"print_NV_graphics_kc2",
     with<klov_cmd_print_the_specified_NV_graphics_data_gmode, 32, V, 1, 2>,
     "1D 28 4C 06 00 30 45 20 n 01 02",
     {{32, 126}}},
    {"print_NV_graphics_x", with<klov_cmd_print_the_specified_NV_graphics_data_gmode, 48, 49, V, 2>,
     "1D 28 4C 06 00 30 45 30 31 n 02"},
    {"print_NV_graphics_y", with<klov_cmd_print_the_specified_NV_graphics_data_gmode, 48, 49, 1, V>,
     "1D 28 4C 06 00 30 45 30 31 01 n"},
};

INSTANTIATE_TEST_SUITE_P(Printing, Command, testing::ValuesIn(rows), row_name);

Call header_call(int32_t m, int32_t xBytes, int32_t yDots)
{
    return [=](uint32_t c, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return raster_header(c, m, xBytes, yDots, buf, cap, len);
    };
}

Call image_call(int32_t m, int32_t xBytes, int32_t yDots, const Bytes &data)
{
    return [=, &data](uint32_t c, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_print_raster_bit_image(c, m, xBytes, yDots, data.data(), buf, cap, len);
    };
}

Call feed_call(int32_t n)
{
    return [=](uint32_t c, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_print_and_feed_paper(c, n, buf, cap, len);
    };
}

Call cut_call(int32_t m, int32_t n)
{
    return [=](uint32_t c, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_select_cut_mode_and_feed_paper(c, m, n, buf, cap, len);
    };
}

Call pulse_call(int32_t m, int32_t t1, int32_t t2)
{
    return [=](uint32_t c, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_generate_pulse(c, m, t1, t2, buf, cap, len);
    };
}

// ---- The contract, seen on its plainest commands ----

TEST(Contract, AClearClassBitComesBeforeANullBuffer)
{
    uint32_t len = 0;
    EXPECT_EQ(klov_cmd_set_line_spacing(0xFFFFFFFE, 30, nullptr, 255, &len), KLOV_E_MODEL_TYPE);
    EXPECT_EQ(klov_cmd_print_and_return_standard_mode(0, nullptr, 255, &len), KLOV_E_MODEL_TYPE);
    EXPECT_EQ(klov_cmd_select_justification(0, 99, nullptr, 0, &len), KLOV_E_MODEL_TYPE);
    EXPECT_EQ(len, 0U);
}

TEST(Contract, AFullBufferTakesACommandThatFitsExactlyAndNoLargerOne)
{
    uint8_t buf[4] = {};
    uint32_t len = 1;
    EXPECT_EQ(klov_cmd_set_line_spacing(1, 30, buf, 3, &len), KLOV_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(len, 1U);
    EXPECT_EQ(klov_cmd_set_line_spacing(1, 30, buf, 4, &len), KLOV_OK);
    EXPECT_EQ(len, 4U);
    EXPECT_EQ(klov_cmd_print_and_return_standard_mode(1, buf, 4, &len), KLOV_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(len, 4U);
}

// The room is an unsigned difference, and callers in the field have shipped with it.
TEST(Contract, AFillBeyondTheCapacityWrapsAndPasses)
{
    uint8_t buf[8] = {};
    uint32_t len = 4;
    EXPECT_EQ(klov_cmd_set_line_spacing(1, 30, buf, 3, &len), KLOV_OK);
    EXPECT_EQ(Bytes(buf, buf + 8), hex("00 00 00 00 1B 33 1E 00"));
    EXPECT_EQ(klov_cmd_print_and_return_standard_mode(1, buf, 3, &len), KLOV_OK);
    EXPECT_EQ(Bytes(buf, buf + 8), hex("00 00 00 00 1B 33 1E 0C"));
    EXPECT_EQ(len, 8U);
}

TEST(Contract, CommandsFollowEachOtherInOneBuffer)
{
    uint8_t buf[255] = {};
    uint32_t len = 0;
    EXPECT_EQ(klov_cmd_select_justification(1, 1, buf, sizeof buf, &len), KLOV_OK);
    EXPECT_EQ(klov_cmd_select_justification(1, 3, buf, sizeof buf, &len), KLOV_E_PARAMETER);
    EXPECT_EQ(klov_cmd_print_and_feed_paper(1, 256, buf, sizeof buf, &len), KLOV_OK);
    EXPECT_EQ(Bytes(buf, buf + len), hex("1B 61 01 1B 4A FF 1B 4A 01"));
}

// ---- Left margin, cut, pulse ----

TEST(SetLeftMargin, TakesSixteenBits)
{
    const auto margin = [](int32_t n) {
        return [n](uint32_t c, uint8_t *buf, uint32_t cap, uint32_t *len) {
            return klov_cmd_set_left_margin(c, n, buf, cap, len);
        };
    };
    check_accepted(margin(65535), hex("1D 4C FF FF"));
    check_refused(margin(65536), 4);
    check_refused(margin(-1), 4);
}

TEST(SelectCutMode, SendsTheShortModesAsCutsAfterAFeed)
{
    check_accepted(cut_call(0, 0x30), hex("1D 56 41 30"));
    check_accepted(cut_call(1, 0x30), hex("1D 56 42 30"));
    check_accepted(cut_call(65, 0x30), hex("1D 56 41 30"));
    check_accepted(cut_call(66, 0x30), hex("1D 56 42 30"));
    check_refused(cut_call(2, 0x30), 4);
}

TEST(SelectCutMode, RefusesEveryOtherModeByItsLowByte)
{
    for (int32_t byte = 0; byte < 256; byte++) {
        Outcome expected = refused(KLOV_E_PARAMETER);
        if (byte == 0 || byte == 65) {
            expected = accepted(hex("1D 56 41 07"));
        } else if (byte == 1 || byte == 66) {
            expected = accepted(hex("1D 56 42 07"));
        }
        for (const int32_t m : {byte, byte + 256, byte - 256, byte - 0x7FFFFF00}) {
            EXPECT_EQ(complaint(cut_call(m, 7), {some_class, 2, 6}, expected), "") << m;
        }
    }
}

TEST(GeneratePulse, RaisesAShortOffTimeToTheOnTime)
{
    check_accepted(pulse_call(0, 100, 50), hex("1B 70 00 64 64"));
    check_accepted(pulse_call(1, 50, 100), hex("1B 70 01 32 64"));
}

TEST(GeneratePulse, ComparesTheTimesByTheirLowBytes)
{
    for (int32_t on = 0; on < 256; on++) {
        for (int32_t off = 0; off < 256; off++) {
            Bytes expected = hex("1B 70 30") + hex("n", on) + hex("n", std::max(on, off));
            ASSERT_EQ(complaint(pulse_call(48, on, off), {some_class, 0, 5}, accepted(expected)), "");
            ASSERT_EQ(complaint(pulse_call(48, on + 256, off - 512), {some_class, 0, 5}, accepted(expected)), "");
        }
    }
}

// ---- Feeds ----

TEST(PrintAndFeedPaper, SplitsAFeedIntoGroupsOf255Units)
{
    check_accepted(feed_call(0), hex("1B 4A 00"));
    check_accepted(feed_call(1), hex("1B 4A 01"));
    check_accepted(feed_call(255), hex("1B 4A FF"));
    check_accepted(feed_call(256), hex("1B 4A FF 1B 4A 01"));
    check_accepted(feed_call(510), hex("1B 4A FF 1B 4A FF"));
    check_accepted(feed_call(511), hex("1B 4A FF 1B 4A FF 1B 4A 01"));
}

TEST(PrintAndFeedPaper, AsksRoomForAllGroupsAtOnce)
{
    check_accepted(feed_call(600), hex("1B 4A FF 1B 4A FF 1B 4A 5A"));
}

TEST(PrintAndFeedPaper, FeedsExactlyWhatWasAskedFor)
{
    for (int32_t n = 1; n < 3000; n++) {
        Bytes expected;
        for (int32_t fed = 0; fed < n;) {
            const int32_t step = std::min(n - fed, 255);
            expected = expected + hex("1B 4A n", step);
            fed += step;
        }
        const uint32_t need = static_cast<uint32_t>(expected.size());
        ASSERT_EQ(complaint(feed_call(n), {some_class, 3, 3 + need}, accepted(expected)), "") << n;
        ASSERT_EQ(complaint(feed_call(n), {some_class, 3, 2 + need}, refused(KLOV_E_BUFFER_TOO_SMALL)), "") << n;
    }
}

// The count of groups is a signed quotient, which is 0 for these; a full buffer is room enough for nothing.
TEST(PrintAndFeedPaper, WritesNothingForASmallNegativeFeed)
{
    for (int32_t n = -508; n <= -1; n++) {
        EXPECT_EQ(complaint(feed_call(n), {some_class, 9, 9}, accepted({})), "") << n;
        EXPECT_EQ(complaint(feed_call(n), {some_class, 9, 200}, accepted({})), "") << n;
    }
    EXPECT_EQ(complaint(feed_call(-1), {some_class & ~1U, 9, 200}, refused(KLOV_E_MODEL_TYPE)), "");
    uint32_t len = 0;
    EXPECT_EQ(klov_cmd_print_and_feed_paper(1, -1, nullptr, 200, &len), KLOV_E_BUFFER_TOO_SMALL);
}

// A negative length is a huge unsigned one, which no buffer holds.
TEST(PrintAndFeedPaper, FindsNoRoomForALargeNegativeFeed)
{
    for (const int32_t n : {-509, -510, -763, -764, -100000, INT32_MIN, INT32_MAX, INT32_MAX - 253}) {
        EXPECT_EQ(complaint(feed_call(n), {some_class, 9, 200}, refused(KLOV_E_BUFFER_TOO_SMALL)), "") << n;
        EXPECT_EQ(complaint(feed_call(n), {some_class, 0, 0x7FFFFFFF}, refused(KLOV_E_BUFFER_TOO_SMALL)), "") << n;
    }
}

// ---- Raster bit images ----

TEST(RasterHeader, HasOneFormForEveryPrinterClass)
{
    for (const uint32_t printer_class : {0x1U, 0x19550001U, 0x19560001U, 0x10001U, 0xFFFFFFFFU, 0x11020001U}) {
        check_accepted(header_call(0, 0x1234, 0x5678), hex("1D 76 30 00 34 12 78 56"), printer_class);
    }
}

TEST(RasterImage, CopiesTheImageBehindItsHeader)
{
    const Bytes data = sample_data(3 * 300);
    check_accepted(image_call(0, 3, 300, data), hex("1D 76 30 00 03 00 2C 01") + data);
    check_accepted(image_call(51, 1, 1, data), hex("1D 76 30 33 01 00 01 00") + Bytes{data[0]});
}

TEST(RasterImage, TestsTheModeByItsLowByte)
{
    const Bytes data = sample_data(1);
    for (int32_t byte = 0; byte < 256; byte++) {
        const bool valid = byte <= 3 || (byte >= 48 && byte <= 51);
        const Bytes bytes = hex("1D 76 30 n 01 00 01 00", byte) + data;
        for (const int32_t m : {byte, byte + 256, byte - 256}) {
            const Outcome expected = valid ? accepted(bytes) : refused(KLOV_E_PARAMETER);
            EXPECT_EQ(complaint(image_call(m, 1, 1, data), {some_class, 1, 10}, expected), "") << m;
        }
    }
}

TEST(RasterImage, TestsTheSizesWhole)
{
    const Bytes data = sample_data(128 * 2303);
    for (const int32_t xBytes : {1, 2, 127, 128}) {
        for (const int32_t yDots : {1, 255, 256, 257, 2302, 2303}) {
            const uint32_t size = static_cast<uint32_t>(xBytes * yDots);
            const Bytes bytes =
                hex("1D 76 30 01 n 00", xBytes) + hex("nL nH", yDots) + Bytes(&data[0], &data[0] + size);
            EXPECT_EQ(complaint(image_call(1, xBytes, yDots, data), {some_class, 0, 8 + size}, accepted(bytes)), "");
            EXPECT_EQ(complaint(image_call(1, xBytes, yDots, data), {some_class, 0, 7 + size},
                                refused(KLOV_E_BUFFER_TOO_SMALL)),
                      "");
        }
    }
    check_refused(image_call(0, 0, 1, data), 8);
    check_refused(image_call(0, 1, 0, data), 8);
    check_refused(image_call(0, 129, 1, data), 8 + 129);
    check_refused(image_call(0, 257, 1, data), 8 + 257);
    check_refused(image_call(0, 1, 2304, data), 8 + 2304);
    check_refused(image_call(0, 1, 65537, data), 8 + 65537);
    check_refused(image_call(0, 129, 2304, data), 8 + 129 * 2304);
    check_refused(image_call(4, 128, 2303, data), 8 + 128 * 2303);
}

TEST(RasterImage, AnOversizedImageInASmallBufferIsARoomFailure)
{
    const Bytes data = sample_data(1);
    EXPECT_EQ(complaint(image_call(9, 200, 3000, data), {some_class, 0, 255}, refused(KLOV_E_BUFFER_TOO_SMALL)), "");
}

// The product is 32 bits wide: one negative size makes the length a small number, two of them a plain product.
TEST(RasterImage, ComputesItsLengthInThirtyTwoBits)
{
    const Bytes data = sample_data(1);
    check_no_room(image_call(0, -1, 1, data));
    check_no_room(image_call(0, 1, -8, data));
    check_refused(image_call(0, -2, -3, data), 8 + 6);
    check_refused(image_call(0, 65536, 65536, data), 8);
    EXPECT_EQ(complaint(image_call(0, -9, 1, data), {some_class, 0, 255}, refused(KLOV_E_BUFFER_TOO_SMALL)), "");
}

// ---- Finding a raster bit image ----

struct Found {
    int32_t code = 99;
    uint8_t m = 99;
    uint32_t xBytes = 99, yDots = 99, width = 99, position = 99, total = 99;
    bool operator==(const Found &) const = default;
};

Found find(const Bytes &block, uint32_t size, uint32_t printer_class = some_class)
{
    Found found;
    found.code = klov_cmds_find_raster_imgdata(printer_class, block.data(), size, &found.m, &found.xBytes, &found.yDots,
                                               &found.width, &found.position, &found.total);
    return found;
}

Found find(const Bytes &block)
{
    return find(block, static_cast<uint32_t>(block.size()));
}

const Found nothing = {KLOV_OK, 0, 0, 0, 0, 0, 0};

TEST(FindRaster, TellsTheImageAndItsPlace)
{
    EXPECT_EQ(find(hex("1D 76 30 02 30 01 02 03 FF")), (Found{KLOV_OK, 2, 0x130, 0x302, 0x130, 0, 0x130 * 0x302 + 8}));
    EXPECT_EQ(find(hex("1B 40 00 1D 76 30 00 48 00 18 00 AA BB")), (Found{KLOV_OK, 0, 72, 24, 72, 3, 72 * 24 + 8}));
    EXPECT_EQ(find(hex("1D 76 30 FF FF FF FF FF 00")),
              (Found{KLOV_OK, 255, 65535, 65535, 65535, 0, 65535U * 65535U + 8}));
    EXPECT_EQ(find(hex("1D 76 30 00 00 00 00 00 00")), (Found{KLOV_OK, 0, 0, 0, 0, 0, 8}));
}

TEST(FindRaster, ExaminesTheFirstGsOnly)
{
    EXPECT_EQ(find(hex("1D 4C 00 00 1D 76 30 00 01 00 01 00 AA BB")), nothing);
    EXPECT_EQ(find(hex("1D 1D 76 30 00 01 00 01 00 AA BB")), nothing);
    EXPECT_EQ(find(hex("1D 76 31 00 01 00 01 00 AA BB")), nothing);
}

TEST(FindRaster, FindsNothingInABlockWithoutGs)
{
    EXPECT_EQ(find({}), nothing);
    EXPECT_EQ(find(hex("1B 40 0A 0A 0A 0A 0A 0A 0A 0A 0A")), nothing);
    EXPECT_EQ(find(hex("1B 40 0A 1D 76 30 00 01 00 01 00 AA"), 3), nothing);
}

TEST(FindRaster, NeedsAByteBehindTheHeader)
{
    EXPECT_EQ(find(hex("1D 76 30 00 01 00 01 00")), nothing);
    EXPECT_EQ(find(hex("1D 76 30 00 01 00 01 00 AA")).total, 9U);
    EXPECT_EQ(find(hex("1B 1D 76 30 00 01 00 01 00")), nothing);
    EXPECT_EQ(find(hex("1B 1D 76 30 00 01 00 01 00 AA")).position, 1U);
}

// The distance from the end is unsigned: below 8 bytes it wraps and the header behind the block is believed.
TEST(FindRaster, ReadsAShortBlockAsALongOne)
{
    const Bytes block = hex("1D 76 30 01 02 00 03 00");
    for (uint32_t size = 1; size < 8; size++) {
        EXPECT_EQ(find(block, size), (Found{KLOV_OK, 1, 2, 3, 2, 0, 14}));
    }
    EXPECT_EQ(find(block, 8), nothing);
}

TEST(FindRaster, ClearsItsOutputsForAClassWithoutTheCommandSet)
{
    Found expected = nothing;
    expected.code = KLOV_E_MODEL_TYPE;
    EXPECT_EQ(find(hex("1D 76 30 02 30 01 02 03 FF"), 9, 0xFFFFFFFE), expected);
}

}  // namespace
