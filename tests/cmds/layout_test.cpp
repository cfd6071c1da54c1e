// Text, layout and page mode.
#include <klov/layout.h>

#include <algorithm>

#include "tests/cmds/kit.h"

using namespace kit;

namespace {

const std::vector<Range> word = {{0, 65535}};
const std::vector<Range> signed_word = {{-32768, 32767}};
const std::vector<Range> to_2_or_digit = {{0, 2}, {48, 50}};

const Row rows[] = {
    {"print_and_line_feed", with<klov_cmd_print_and_line_feed>, "0A"},
    {"print_and_carriage_return", with<klov_cmd_print_and_carriage_return>, "0D"},
    {"horizontal_tab", with<klov_cmd_horizontal_tab>, "09"},
    {"cancel_print_data_in_page_mode", with<klov_cmd_cancel_print_data_in_page_mode>, "18"},
    {"print_data_in_page_mode", with<klov_cmd_print_data_in_page_mode>, "1B 0C"},
    {"select_default_line_spacing", with<klov_cmd_select_default_line_spacing>, "1B 32"},
    {"print_and_reverse_feed", klov_cmd_print_and_reverse_feed, "1B 4B n"},
    {"print_and_feed_n_line", klov_cmd_print_and_feed_n_line, "1B 64 n"},
    {"set_right_side_character_spacing", klov_cmd_set_right_side_character_spacing, "1B 20 n"},
    {"select_print_modes", klov_cmd_select_print_modes, "1B 21 n"},
    {"select_or_cancel_defined_charater_set", klov_cmd_select_or_cancel_defined_charater_set, "1B 25 n"},
    {"cancel_user_defined_characters", klov_cmd_cancel_user_defined_characters, "1B 3F n", {{32, 126}}},
    {"turn_underline_mode_on_off", klov_cmd_turn_underline_mode_on_off, "1B 2D n", to_2_or_digit},
    {"turn_emphasized_mode_on_off", klov_cmd_turn_emphasized_mode_on_off, "1B 45 n"},
    {"turn_double_strike_mode_on_off", klov_cmd_turn_double_strike_mode_on_off, "1B 47 n"},
    {"select_character_font", klov_cmd_select_character_font, "1B 4D n", to_2_or_digit},
    {"select_an_international_character_set", klov_cmd_select_an_international_character_set, "1B 52 n", {{0, 15}}},
    {"turn90_clockwise_rotation_mode_on_off", klov_cmd_turn90_clockwise_rotation_mode_on_off, "1B 56 n", to_2_or_digit},
    {"turn_upside_down_print_mode_on_off", klov_cmd_turn_upside_down_print_mode_on_off, "1B 7B n"},
    {"select_character_size",
     klov_cmd_select_character_size,
     "1D 21 n",
     {{0x00, 0x07}, {0x10, 0x17}, {0x20, 0x27}, {0x30, 0x37}, {0x40, 0x47}, {0x50, 0x57}, {0x60, 0x67}, {0x70, 0x77}}},
    {"turn_white_black_reverse_print_mode_on_off", klov_cmd_turn_white_black_reverse_print_mode_on_off, "1D 42 n"},
    {"turn_smoothing_mode_on_off", klov_cmd_turn_smoothing_mode_on_off, "1D 62 n"},
    {"set_absolute_print_position", klov_cmd_set_absolute_print_position, "1B 24 nL nH", word, Tested::whole},
    {"set_relative_print_position", klov_cmd_set_relative_print_position, "1B 5C nL nH", signed_word, Tested::whole},
    {"select_print_direction_in_page_mode",
     klov_cmd_select_print_direction_in_page_mode,
     "1B 54 n",
     {{0, 3}, {48, 51}}},
    {"set_absolute_vertical_print_position_in_page_mode", klov_cmd_set_absolute_vertical_print_position_in_page_mode,
     "1D 24 nL nH", word, Tested::whole},
    {"set_print_position_to_the_beginning_of_print_line",
     klov_cmd_set_print_position_to_the_beginning_of_print_line,
     "1D 54 n",
     {{0, 1}, {48, 49}}},
    {"set_print_area_width", klov_cmd_set_print_area_width, "1D 57 nL nH", word, Tested::whole},
    {"set_relative_vertical_print_position_in_page_mode", klov_cmd_set_relative_vertical_print_position_in_page_mode,
     "1D 5C nL nH", signed_word, Tested::whole},
    {"motion_units_x", with<klov_cmd_set_horizontal_and_vertical_motion_units, V, 0xB4>, "1D 50 n B4"},
    {"motion_units_y", with<klov_cmd_set_horizontal_and_vertical_motion_units, 0xCB, V>, "1D 50 CB n"},
    {"select_kanji_character_mode", with<klov_cmd_select_kanji_character_mode>, "1C 26"},
    {"cancel_kanji_character_mode", with<klov_cmd_cancel_kanji_character_mode>, "1C 2E"},
    // Eleven bytes on this model; the ten-byte form, which asks for eleven all the same, is tested below.
    {"print_area_of_model_1102_x", with<klov_cmd_set_print_area_in_page_mode, V, 1, 2, 3>,
     "1B 57 00 nL nH 01 00 02 00 03 00", word, Tested::whole, 0x11020001},
    {"print_area_of_model_1102_y", with<klov_cmd_set_print_area_in_page_mode, 65535, V, 2, 3>,
     "1B 57 00 FF FF nL nH 02 00 03 00", word, Tested::whole, 0x11020001},
    {"print_area_of_model_1102_dx", with<klov_cmd_set_print_area_in_page_mode, 0, 1, V, 3>,
     "1B 57 00 00 00 01 00 nL nH 03 00", word, Tested::whole, 0x1102FFFF},
    {"print_area_of_model_1102_dy", with<klov_cmd_set_print_area_in_page_mode, 0, 1, 512, V>,
     "1B 57 00 00 00 01 00 00 02 nL nH", word, Tested::whole, 0x11020001},
};

INSTANTIATE_TEST_SUITE_P(Layout, Command, testing::ValuesIn(rows), row_name);

Call reverse_call(int32_t n)
{
    return [=](uint32_t c, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_print_and_reverse_feed_n_line(c, n, buf, cap, len);
    };
}

Call character_call(int32_t c1, int32_t c2, int32_t x, const Bytes &data, int32_t k)
{
    return [=, &data](uint32_t c, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_define_user_defined_characters(c, c1, c2, x, data.data(), k, buf, cap, len);
    };
}

Call code_table_call(int32_t n, int32_t mode)
{
    return [=](uint32_t c, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_select_character_code_table(c, n, mode, buf, cap, len);
    };
}

Call tabs_call(const Bytes &columns, int32_t k)
{
    return [=, &columns](uint32_t c, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_set_horizontal_tab_positions(c, columns.data(), k, buf, cap, len);
    };
}

Call area_call(int32_t x, int32_t y, int32_t dx, int32_t dy)
{
    return [=](uint32_t c, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_set_print_area_in_page_mode(c, x, y, dx, dy, buf, cap, len);
    };
}

Call number_call(int32_t (*encode)(uint32_t, int32_t, uint8_t *, uint32_t, uint32_t *), int32_t n)
{
    return [=](uint32_t c, uint8_t *buf, uint32_t cap, uint32_t *len) { return encode(c, n, buf, cap, len); };
}

// ---- Single values that callers stumble over ----

TEST(SelectCharacterSize, WantsBits3And7Clear)
{
    check_accepted(number_call(klov_cmd_select_character_size, 0x11), hex("1D 21 11"));
    check_refused(number_call(klov_cmd_select_character_size, 0x80), 3);
    check_refused(number_call(klov_cmd_select_character_size, 0x08), 3);
}

TEST(SelectAnInternationalCharacterSet, EndsAt15)
{
    check_accepted(number_call(klov_cmd_select_an_international_character_set, 15), hex("1B 52 0F"));
    check_refused(number_call(klov_cmd_select_an_international_character_set, 16), 3);
}

TEST(SetRelativePrintPosition, SendsTwosComplement)
{
    check_accepted(number_call(klov_cmd_set_relative_print_position, -1), hex("1B 5C FF FF"));
    check_accepted(number_call(klov_cmd_set_relative_print_position, -32768), hex("1B 5C 00 80"));
    check_refused(number_call(klov_cmd_set_relative_print_position, 32768), 4);
}

// ---- Reverse feed by lines ----

TEST(ReverseFeedByLines, CountsASingleGroupBelow255Lines)
{
    check_accepted(reverse_call(100), hex("1B 65 64"));
    for (int32_t n = 1; n <= 254; n++) {
        EXPECT_EQ(complaint(reverse_call(n), {some_class, 4, 7}, accepted(hex("1B 65 n", n))), "");
        EXPECT_EQ(complaint(reverse_call(n), {some_class, 4, 6}, refused(KLOV_E_BUFFER_TOO_SMALL)), "");
    }
}

// The length of a longer feed works out as 0: the groups lie behind *len, for the caller to count.
TEST(ReverseFeedByLines, WritesLongerFeedsWithoutCountingThem)
{
    EXPECT_EQ(complaint(reverse_call(300), {some_class, 0, 100}, {KLOV_OK, hex("1B 65 FF 1B 65 2D"), 0}), "");
    for (int32_t n = 255; n < 2000; n++) {
        Bytes groups;
        for (int32_t rest = n; rest > 0; rest -= 255) {
            groups = groups + hex("1B 65 n", std::min(rest, 255));
        }
        for (const uint32_t cap : {4U, 5U, 100U}) {
            EXPECT_EQ(complaint(reverse_call(n), {some_class, 4, cap}, {KLOV_OK, groups, 0}), "") << n;
        }
    }
    EXPECT_EQ(complaint(reverse_call(300), {some_class & ~1U, 0, 100}, refused(KLOV_E_MODEL_TYPE)), "");
    uint32_t len = 0;
    EXPECT_EQ(klov_cmd_print_and_reverse_feed_n_line(1, 300, nullptr, 100, &len), KLOV_E_BUFFER_TOO_SMALL);
}

TEST(ReverseFeedByLines, WritesNothingForNoLinesOrLess)
{
    for (const int32_t n : {0, -1, -2, -254, -255, -256, -510, INT32_MIN}) {
        EXPECT_EQ(complaint(reverse_call(n), {some_class, 4, 4}, accepted({})), "") << n;
        EXPECT_EQ(complaint(reverse_call(n), {some_class & ~1U, 4, 4}, refused(KLOV_E_MODEL_TYPE)), "") << n;
        uint32_t len = 0;
        EXPECT_EQ(klov_cmd_print_and_reverse_feed_n_line(1, n, nullptr, 100, &len), KLOV_E_BUFFER_TOO_SMALL);
    }
}

// ---- User-defined characters ----

TEST(DefineUserDefinedCharacters, SendsOneShapeOfThreeBytesAColumn)
{
    const Bytes data = sample_data(36);
    check_accepted(character_call(0x41, 0x41, 12, data, 36), hex("1B 26 03 41 41 0C") + data);
}

TEST(DefineUserDefinedCharacters, SendsOneShapeEvenForARangeOfCodes)
{
    const Bytes data = sample_data(3);
    check_accepted(character_call(0x41, 0x5A, 1, data, 3), hex("1B 26 03 41 5A 01") + data);
    check_refused(character_call(0x41, 0x42, 1, data, 6), 12);
}

TEST(DefineUserDefinedCharacters, WantsThreeBytesForEveryColumn)
{
    const Bytes data = sample_data(256);
    for (int32_t x = 0; x < 256; x++) {
        for (int32_t k = 0; k < 256; k++) {
            const uint32_t need = 6 + static_cast<uint32_t>(k);
            const Outcome expected = k == 3 * x ? accepted(hex("1B 26 03 20 7E n", x) + Bytes(&data[0], &data[0] + k))
                                                : refused(KLOV_E_PARAMETER);
            ASSERT_EQ(complaint(character_call(32, 126, x, data, k), {some_class, 1, 1 + need}, expected), "");
        }
    }
}

TEST(DefineUserDefinedCharacters, TakesPrintableCodesInOrder)
{
    const Bytes data = sample_data(3);
    for (int32_t c1 = 0; c1 < 256; c1++) {
        for (int32_t c2 = 0; c2 < 256; c2++) {
            const bool valid = c1 >= 32 && c1 <= c2 && c2 <= 126;
            const Bytes bytes = hex("1B 26 03") + hex("n", c1) + hex("n", c2) + hex("01") + data;
            const Outcome expected = valid ? accepted(bytes) : refused(KLOV_E_PARAMETER);
            ASSERT_EQ(complaint(character_call(c1, c2, 1, data, 3), {some_class, 0, 9}, expected), "")
                << c1 << " " << c2;
        }
    }
}

TEST(DefineUserDefinedCharacters, TakesEveryParameterByItsLowByte)
{
    const Bytes data = sample_data(36);
    check_accepted(character_call(0x141, 0x41 - 256, 12 + 512, data, 0x124), hex("1B 26 03 41 41 0C") + data);
}

// 3 * 86 is 258, which a length of one byte cannot say; the product is not cut to 2.
TEST(DefineUserDefinedCharacters, CannotDefine86Columns)
{
    const Bytes data = sample_data(258);
    check_accepted(character_call(65, 65, 85, data, 255), hex("1B 26 03 41 41 55") + Bytes(&data[0], &data[0] + 255));
    check_refused(character_call(65, 65, 86, data, 2), 8);
    check_refused(character_call(65, 65, 86, data, 258), 8);
}

// ---- Tab positions ----

TEST(SetHorizontalTabPositions, ClearsAllTabsWithoutColumns)
{
    check_accepted(tabs_call(Bytes(1), 0), hex("1B 44 00"));
}

TEST(SetHorizontalTabPositions, SendsUpTo32ColumnsUntested)
{
    const Bytes columns = sample_data(255);
    for (int32_t k = 0; k < 256; k++) {
        const Bytes bytes = hex("1B 44") + Bytes(&columns[0], &columns[0] + k) + hex("00");
        const uint32_t need = static_cast<uint32_t>(bytes.size());
        const Outcome expected = k <= 32 ? accepted(bytes) : refused(KLOV_E_PARAMETER);
        for (const int32_t alias : {k, k + 256, k - 256}) {
            EXPECT_EQ(complaint(tabs_call(columns, alias), {some_class, 2, 2 + need}, expected), "") << alias;
            EXPECT_EQ(complaint(tabs_call(columns, alias), {some_class, 2, 1 + need}, refused(KLOV_E_BUFFER_TOO_SMALL)),
                      "");
        }
    }
    check_accepted(tabs_call(columns, 32), hex("1B 44") + Bytes(&columns[0], &columns[0] + 32) + hex("00"));
    check_refused(tabs_call(columns, 33), 36);
}

// ---- Code table ----

const char *const stored_code_table =
    "1D 28 45 03 00 01 49 4E 1D 28 45 04 00 05 08 n 00 1D 28 45 02 00 06 08 01 49 4E 1D 28 45 04 00 02 4F 55 54";

// Nobody asks for room here, so every capacity will do.
void check_without_room(const Call &call, const Bytes &bytes)
{
    for (const uint32_t cap : {0U, 3U, 9U, 10U, 12U, 44U, 45U, 255U}) {
        EXPECT_EQ(complaint(call, {some_class, 9, cap}, accepted(bytes)), "") << cap;
    }
    EXPECT_EQ(complaint(call, {some_class & ~1U, 9, 255}, refused(KLOV_E_MODEL_TYPE)), "");
    uint32_t len = 0;
    EXPECT_EQ(call(some_class, nullptr, 255, &len), KLOV_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(call(some_class & ~1U, nullptr, 255, &len), KLOV_E_MODEL_TYPE);
    EXPECT_EQ(len, 0U);
}

TEST(SelectCharacterCodeTable, SelectsForNowInMode0)
{
    check_without_room(code_table_call(0x13, 0), hex("1B 74 13"));
}

TEST(SelectCharacterCodeTable, StoresTheSettingInMode1)
{
    EXPECT_EQ(hex(stored_code_table).size(), 36U);
    check_without_room(code_table_call(0x13, 1), hex(stored_code_table, 0x13));
}

TEST(SelectCharacterCodeTable, SendsTheTableNumbersLowByte)
{
    for (int32_t n = -256; n < 512; n++) {
        EXPECT_EQ(complaint(code_table_call(n, 0), {some_class, 0, 36}, accepted(hex("1B 74 n", n))), "");
        EXPECT_EQ(complaint(code_table_call(n, 1), {some_class, 0, 36}, accepted(hex(stored_code_table, n))), "");
    }
}

TEST(SelectCharacterCodeTable, KnowsTwoModesTestedWhole)
{
    for (const int32_t mode : {2, -1, 48, 49, 255, 256, 257, -255, 65536, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(complaint(code_table_call(0, mode), {some_class, 0, 0}, refused(KLOV_E_PARAMETER)), "") << mode;
    }
}

// ---- Print area of page mode ----

TEST(SetPrintAreaInPageMode, AsksForElevenBytesToWriteTen)
{
    const Bytes bytes = hex("1B 57 01 00 02 01 FF FF 00 80");
    const Call call = area_call(1, 0x102, 65535, 0x8000);
    for (const uint32_t printer_class : {0x1U, 0x11010001U, 0x11030001U, 0x21020001U, 0x01020001U, 0x00001103U}) {
        for (uint32_t room = 0; room <= 10; room++) {
            EXPECT_EQ(complaint(call, {printer_class, 5, 5 + room}, refused(KLOV_E_BUFFER_TOO_SMALL)), "") << room;
        }
        EXPECT_EQ(complaint(call, {printer_class, 5, 16}, accepted(bytes)), "");
        EXPECT_EQ(complaint(call, {printer_class, 5, 255}, accepted(bytes)), "");
        EXPECT_EQ(complaint(call, {printer_class, 5, 4}, accepted(bytes)), "") << "*len beyond cap wraps";
    }
}

TEST(SetPrintAreaInPageMode, InsertsAByteForOneModel)
{
    check_accepted(area_call(1, 0x102, 65535, 0x8000), hex("1B 57 00 01 00 02 01 FF FF 00 80"), 0x11020001);
}

TEST(SetPrintAreaInPageMode, TestsEachValueWhole)
{
    for (const int32_t bad : {-1, 65536, 65537, INT32_MIN, INT32_MAX}) {
        check_refused(area_call(bad, 0, 0, 0), 11);
        check_refused(area_call(0, bad, 0, 0), 11);
        check_refused(area_call(0, 0, bad, 0), 11);
        check_refused(area_call(0, 0, 0, bad), 11);
    }
    const Call widest = area_call(65535, 65535, 65535, 65535);
    EXPECT_EQ(complaint(widest, {some_class, 0, 11}, accepted(hex("1B 57 FF FF FF FF FF FF FF FF"))), "");
}

}  // namespace
