// Graphics with data: the four definitions and the two stores, against a slow reference that builds each command from
// its body.
#include <klov/graphics.h>

#include "tests/cmds/kit.h"

using namespace kit;

namespace {

using Encoder = int32_t (*)(uint32_t printer_class, int32_t first, int32_t second, int32_t x, int32_t y,
                            const uint8_t *data, uint32_t k, uint8_t *buf, uint32_t cap, uint32_t *len);

struct Family {
    const char *name;
    Encoder encode;
    bool column;           // data in columns, else in rows
    const char *body;      // up to the size; first and second are the two leading parameters
    const char *body_end;  // between the size and the data
    uint32_t overstated;   // how much the stated length exceeds the body
    const char *long_form;
    int32_t first;
    int32_t second;
    int32_t most_x;
    int32_t most_y;
};

const Family families[] = {
    {"NV raster", klov_cmd_define_the_NV_graphics_data_raster_gmode, false, "30 43 30 41 42 01", "31", 0, "1D 28 4C",
     0x41, 0x42, 8192, 2304},
    {"NV column", klov_cmd_define_the_NV_graphics_data_column_gmode, true, "30 44 30 41 42 01", "30", 0, "1D 28 4C",
     0x41, 0x42, 8192, 2304},
    {"downloaded raster", klov_cmd_define_the_downloaded_graphics_data_raster_gmode, false, "30 53 30 41 42 01", "31",
     0, "1D 28 4C", 0x41, 0x42, 8192, 2304},
    {"downloaded column", klov_cmd_define_the_downloaded_graphics_data_column_gmode, true, "30 54 30 41 42 01", "31", 0,
     "1D 28 4C", 0x41, 0x42, 8192, 2304},
    {"store raster", klov_cmd_store_the_graphics_data_in_the_print_buffer_raster_gmode, false, "30 70 30 02 01 31", "",
     0, "1D 38 4C", 2, 1, 2047, 1662},
    {"store column", klov_cmd_store_the_graphics_data_in_the_print_buffer_column_gmode, true, "30 70 30 01 02 31", "",
     1, "1D 28 4C", 1, 2, 2047, 831},
};

uint32_t data_size(const Family &family, int32_t x, int32_t y)
{
    const int32_t groups = ((family.column ? y : x) + 7) / 8;
    return static_cast<uint32_t>((family.column ? x : y) * groups);
}

Call call_of(const Family &family, int32_t x, int32_t y, const Bytes &data, uint32_t k)
{
    return [=, &data](uint32_t c, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return family.encode(c, family.first, family.second, x, y, data.data(), k, buf, cap, len);
    };
}

uint32_t stated_length(const Family &family, uint32_t k)
{
    const size_t fixed = hex(family.body).size() + 4 + hex(family.body_end).size();
    return static_cast<uint32_t>(fixed) + k + family.overstated;
}

uint32_t command_length(const Family &family, uint32_t k)
{
    const uint32_t stated = stated_length(family, k);
    return stated - family.overstated + (stated < 65536 ? 5 : 7);
}

Bytes reference(const Family &family, int32_t x, int32_t y, const Bytes &data)
{
    const int32_t stated = static_cast<int32_t>(stated_length(family, static_cast<uint32_t>(data.size())));
    const Bytes head =
        stated < 65536 ? hex("1D 28 4C nL nH", stated) : hex(family.long_form) + hex("n1 n2 n3 n4", stated);
    return head + hex(family.body) + hex("nL nH", x) + hex("nL nH", y) + hex(family.body_end) + data;
}

void check_image(const Family &family, int32_t x, int32_t y)
{
    const Bytes data = sample_data(data_size(family, x, y));
    const Bytes bytes = reference(family, x, y, data);
    const uint32_t need = static_cast<uint32_t>(bytes.size());
    const uint32_t k = static_cast<uint32_t>(data.size());
    ASSERT_EQ(need, command_length(family, k));
    ASSERT_EQ(complaint(call_of(family, x, y, data, k), {some_class, 2, 2 + need}, accepted(bytes)), "")
        << family.name << " " << x << " x " << y;
    ASSERT_EQ(complaint(call_of(family, x, y, data, k), {some_class, 2, 1 + need}, refused(KLOV_E_BUFFER_TOO_SMALL)),
              "")
        << family.name << " " << x << " x " << y;
}

TEST(GraphicsData, IsFramedForEverySmallImage)
{
    for (const Family &family : families) {
        for (int32_t x = 1; x <= 34; x++) {
            for (int32_t y = 1; y <= 34; y++) {
                check_image(family, x, y);
            }
        }
    }
}

TEST(GraphicsData, KeepsTheContract)
{
    const Bytes data = sample_data(6);
    for (const Family &family : families) {
        SCOPED_TRACE(family.name);
        const int32_t x = family.column ? 3 : 11;
        const int32_t y = family.column ? 11 : 3;
        check_accepted(call_of(family, x, y, data, 6), reference(family, x, y, data));
        check_refused(call_of(family, x, y, data, 5), command_length(family, 5));
        check_refused(call_of(family, x, y, data, 7), command_length(family, 7));
        check_refused(call_of(family, y, x, data, 6), command_length(family, 6));
        check_refused(call_of(family, 1, 1, data, 0), command_length(family, 0));
    }
}

TEST(GraphicsData, ReachesItsLargestImagesAndNoFurther)
{
    const Bytes nothing;
    for (const Family &family : families) {
        SCOPED_TRACE(family.name);
        for (const int32_t x : {1, 255, 256, family.most_x - 1, family.most_x}) {
            check_image(family, x, 1);
        }
        for (const int32_t y : {1, 255, 256, family.most_y - 1, family.most_y}) {
            check_image(family, 1, y);
        }
        check_image(family, family.most_x, family.most_y);

        for (const int32_t x : {family.most_x + 1, 65535, 65536, 65537}) {
            const uint32_t k = data_size(family, x, 1);
            check_refused(call_of(family, x, 1, nothing, k), command_length(family, k));
        }
        for (const int32_t y : {family.most_y + 1, 65535, 65536, 65537}) {
            const uint32_t k = data_size(family, 1, y);
            check_refused(call_of(family, 1, y, nothing, k), command_length(family, k));
        }
        for (const int32_t none : {0, -1, -8, INT32_MIN, INT32_MAX}) {
            for (const uint32_t k : {0U, 1U}) {
                check_refused(call_of(family, none, 1, nothing, k), command_length(family, k));
                check_refused(call_of(family, 1, none, nothing, k), command_length(family, k));
            }
        }
    }
}

// The smallest height of an image whose data has exactly k bytes; 0 when there is none of this family.
int32_t height_for(const Family &family, uint32_t k, int32_t *x)
{
    for (int32_t y = 1; y <= family.most_y; y++) {
        const int32_t total = static_cast<int32_t>(k);
        const int32_t lines = family.column ? (y + 7) / 8 : y;
        if (total % lines == 0) {
            *x = family.column ? total / lines : total / lines * 8;
            if (*x <= family.most_x) {
                return y;
            }
        }
    }
    return 0;
}

// At a stated length of 65536 the length takes four bytes and the command grows by two.
TEST(GraphicsData, ChangesItsFormAtALengthOf65536)
{
    const Bytes nothing;
    for (const Family &family : families) {
        SCOPED_TRACE(family.name);
        int32_t short_images = 0;
        int32_t long_images = 0;
        const uint32_t edge = 65536 - stated_length(family, 0);
        for (uint32_t k = edge - 60; k < edge + 60; k++) {
            check_refused(call_of(family, 1, 1, nothing, k), command_length(family, k));
            int32_t x = 0;
            const int32_t y = height_for(family, k, &x);
            if (y > 0) {
                check_image(family, x, y);
                (k < edge ? short_images : long_images)++;
            }
        }
        EXPECT_GT(short_images, 0);
        EXPECT_GT(long_images, 0);
        EXPECT_EQ(command_length(family, edge), command_length(family, edge - 1) + 3);
    }
}

// Lengths are 32-bit numbers: no buffer holds one that wraps.
TEST(GraphicsData, RefusesLengthsThatWrap)
{
    const Bytes nothing;
    for (const Family &family : families) {
        SCOPED_TRACE(family.name);
        const uint32_t wrapped_to_nothing = 0U - stated_length(family, 0);
        for (const uint32_t k : {wrapped_to_nothing, 0xFFFFFFFFU}) {
            check_no_room(call_of(family, 1, 1, nothing, k));
        }
        const Call call = call_of(family, 1, 1, nothing, 0x80000000U);
        EXPECT_EQ(complaint(call, {some_class, 2, 255}, refused(KLOV_E_BUFFER_TOO_SMALL)), "");
    }
}

TEST(DefineGraphics, OfOneByteHasSeventeenBytes)
{
    const Bytes data = {0x80};
    check_accepted(call_of(families[0], 8, 1, data, 1), hex("1D 28 4C 0C 00 30 43 30 41 42 01 08 00 01 00 31 80"));
}

TEST(DefineGraphics, StatesALengthOf65536InFourBytes)
{
    const Bytes data = sample_data(65525);
    for (const Family &family : {families[1], families[3]}) {
        const Bytes bytes =
            hex("1D 28 4C 00 00 01 00") + hex(family.body) + hex("3D 0A C8 00") + hex(family.body_end) + data;
        check_accepted(call_of(family, 2621, 200, data, 65525), bytes);
    }
}

TEST(DefineGraphics, NamesColour30InNvColumnsOnly)
{
    const Bytes data = {0x80};
    for (const Family &family : {families[0], families[1], families[2], families[3]}) {
        uint8_t buf[32] = {};
        uint32_t len = 0;
        EXPECT_EQ(family.encode(1, 65, 66, 1, 1, data.data(), 1, buf, sizeof buf, &len), KLOV_OK);
        EXPECT_EQ(buf[15], family.encode == klov_cmd_define_the_NV_graphics_data_column_gmode ? 0x30 : 0x31);
    }
}

TEST(DefineGraphics, TakesPrintableKeyCodesByTheirLowBytes)
{
    const Bytes data = {0x80};
    for (Family family : {families[0], families[1], families[2], families[3]}) {
        SCOPED_TRACE(family.name);
        const uint8_t function = hex(family.body)[1];
        for (int32_t code = 0; code < 256; code++) {
            for (const int32_t alias : {code, code + 256, code - 256}) {
                const Bytes tail = hex("01 01 00 01 00") + hex(family.body_end) + data;
                const Bytes head = hex("1D 28 4C 0C 00 30 n 30", function);
                const bool valid = code >= 32 && code <= 126;
                family.first = alias;
                family.second = 0x42;
                Outcome expected = valid ? accepted(head + hex("n 42", code) + tail) : refused(KLOV_E_PARAMETER);
                EXPECT_EQ(complaint(call_of(family, 1, 1, data, 1), {some_class, 0, 17}, expected), "") << alias;
                family.first = 0x7E;
                family.second = alias;
                expected = valid ? accepted(head + hex("7E n", code) + tail) : refused(KLOV_E_PARAMETER);
                EXPECT_EQ(complaint(call_of(family, 1, 1, data, 1), {some_class, 0, 17}, expected), "") << alias;
            }
        }
    }
}

TEST(StoreGraphics, TakesScalesOfOneAndTwoByTheirLowBytes)
{
    const Bytes data = {0x80};
    for (Family family : {families[4], families[5]}) {
        SCOPED_TRACE(family.name);
        const Bytes head = hex("1D 28 4C n 00 30 70 30", family.overstated == 0 ? 11 : 12);
        for (int32_t scale = 0; scale < 256; scale++) {
            for (const int32_t alias : {scale, scale + 256, scale - 256}) {
                const bool valid = scale == 1 || scale == 2;
                const Bytes tail = hex("31 01 00 01 00") + data;
                family.first = alias;
                family.second = 1;
                Outcome expected = valid ? accepted(head + hex("n 01", scale) + tail) : refused(KLOV_E_PARAMETER);
                EXPECT_EQ(complaint(call_of(family, 1, 1, data, 1), {some_class, 0, 16}, expected), "") << alias;
                family.first = 2;
                family.second = alias;
                expected = valid ? accepted(head + hex("02 n", scale) + tail) : refused(KLOV_E_PARAMETER);
                EXPECT_EQ(complaint(call_of(family, 1, 1, data, 1), {some_class, 0, 16}, expected), "") << alias;
            }
        }
    }
}

TEST(StoreGraphics, HoldsHalfTheRowsAtDoubleHeight)
{
    const Bytes nothing;
    for (Family family : {families[4], families[5]}) {
        SCOPED_TRACE(family.name);
        for (const int32_t by : {1, 2, 257, 258}) {
            const int32_t most = by % 256 == 1 ? 1662 : 831;
            family.second = by;
            family.body = by % 256 == 1 ? "30 70 30 01 01 31" : "30 70 30 01 02 31";
            family.first = 1;
            check_image(family, 9, most);
            const uint32_t k = data_size(family, 9, most + 1);
            check_refused(call_of(family, 9, most + 1, nothing, k), command_length(family, k));
        }
    }
}

TEST(StoreGraphics, StatesOneByteTooManyInColumns)
{
    const Bytes data = {0x80};
    check_accepted(call_of(families[4], 8, 1, data, 1), hex("1D 28 4C 0B 00 30 70 30 02 01 31 08 00 01 00 80"));
    check_accepted(call_of(families[5], 1, 8, data, 1), hex("1D 28 4C 0C 00 30 70 30 01 02 31 01 00 08 00 80"));
}

// The long raster form has a letter of its own, the long column form keeps the short form's.
TEST(StoreGraphics, ChangesTheLetterOfTheLongRasterFormOnly)
{
    const Bytes raster = sample_data(163 * 402);
    check_accepted(call_of(families[4], 163 * 8, 402, raster, 65526),
                   hex("1D 38 4C 00 00 01 00 30 70 30 02 01 31 18 05 92 01") + raster);
    const Bytes column = sample_data(2000 * 33);
    check_accepted(call_of(families[5], 2000, 264, column, 66000),
                   hex("1D 28 4C DB 01 01 00 30 70 30 01 02 31 D0 07 08 01") + column);
}

}  // namespace
