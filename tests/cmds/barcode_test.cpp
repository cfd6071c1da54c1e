// Bar codes and two-dimensional symbols.
#include <klov/barcode.h>

#include <algorithm>
#include <limits>

#include "tests/cmds/kit.h"

using namespace kit;

namespace {

constexpr int32_t lowest = std::numeric_limits<int32_t>::min();

const Row rows[] = {
    {"select_print_position_HRI",
     klov_cmd_select_print_position_HRI_characters,
     "1D 48 n",
     {{lowest, 3}, {48, 51}},
     Tested::whole},
    {"select_font_HRI", klov_cmd_select_font_HRI_characters, "1D 66 n", {{0, 1}, {48, 49}}},
    {"set_bar_code_height", klov_cmd_set_bar_code_height, "1D 68 n", {{1, 255}}},
    {"set_bar_code_width", klov_cmd_set_bar_code_width, "1D 77 n", {{1, 6}}},
    {"pdf417_columns",
     klov_cmd_pdf417_set_the_number_of_columns_in_the_data_region,
     "1D 28 6B 03 00 30 41 n",
     {{0, 30}}},
    {"pdf417_rows", klov_cmd_pdf417_set_the_number_of_rows, "1D 28 6B 03 00 30 42 n", {{0, 0}, {3, 90}}},
    {"pdf417_module_width", klov_cmd_pdf417_set_the_width_of_the_module, "1D 28 6B 03 00 30 43 n", {{2, 8}}},
    {"pdf417_row_height", klov_cmd_pdf417_set_the_row_height, "1D 28 6B 03 00 30 44 n", {{2, 8}}},
    {"pdf417_error_correction_m_with_a_level",
     with<klov_cmd_pdf417_set_the_error_correction_level, V, 50>,
     "1D 28 6B 04 00 30 45 n 32",
     {{48, 48}}},
    {"pdf417_error_correction_m_with_a_ratio",
     with<klov_cmd_pdf417_set_the_error_correction_level, V, 10>,
     "1D 28 6B 04 00 30 45 n 0A",
     {{49, 49}}},
    {"pdf417_error_correction_level",
     with<klov_cmd_pdf417_set_the_error_correction_level, 48, V>,
     "1D 28 6B 04 00 30 45 30 n",
     {{48, 56}}},
    {"pdf417_error_correction_ratio",
     with<klov_cmd_pdf417_set_the_error_correction_level, 49, V>,
     "1D 28 6B 04 00 30 45 31 n",
     {{1, 40}}},
    {"pdf417_options", klov_cmd_pdf417_select_the_options, "1D 28 6B 03 00 30 46 n", {{0, 1}}},
    {"pdf417_print", with<klov_cmd_pdf417_print_the_symbol_data_in_the_symbol_storage_area>, "1D 28 6B 03 00 30 51 30"},
    {"pdf417_transmit_size",
     with<klov_cmd_pdf417_transmit_the_size_information_of_the_symbol_data_in_the_symbol_storage_area>,
     "1D 28 6B 03 00 30 52 30"},
    {"qr_model", klov_cmd_qr_select_the_model, "1D 28 6B 04 00 31 41 n 00", {{49, 50}}},
    {"qr_module_size", klov_cmd_qr_set_the_size_of_module, "1D 28 6B 03 00 31 43 n", {{1, 16}}},
    {"qr_error_correction", klov_cmd_qr_select_the_error_correction_level, "1D 28 6B 03 00 31 45 n", {{48, 51}}},
    {"qr_print", with<klov_cmd_qr_print_the_symbol_data_in_the_symbol_storage_area>, "1D 28 6B 03 00 31 51 30"},
    {"qr_transmit_size", with<klov_cmd_qr_transmit_the_size_information_of_the_symbol_data_in_the_symbol_storage_area>,
     "1D 28 6B 03 00 31 52 30"},
};

INSTANTIATE_TEST_SUITE_P(Barcode, Command, testing::ValuesIn(rows), row_name);

Call error_correction(int32_t m, int32_t n)
{
    return [=](uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_pdf417_set_the_error_correction_level(printer_class, m, n, buf, cap, len);
    };
}

TEST(Pdf417ErrorCorrection, HasALevelOrARatioForEveryPairOfBytes)
{
    for (int32_t m = 0; m < 256; m++) {
        for (int32_t n = 0; n < 256; n++) {
            const bool valid = (m == 48 && n >= 48 && n <= 56) || (m == 49 && n >= 1 && n <= 40);
            Bytes bytes = hex("1D 28 6B 04 00 30 45");
            bytes.push_back(static_cast<uint8_t>(m));
            bytes.push_back(static_cast<uint8_t>(n));
            const Outcome expected = valid ? accepted(bytes) : refused(KLOV_E_PARAMETER);
            ASSERT_EQ(complaint(error_correction(m, n), {some_class, 0, 9}, expected), "") << m << " " << n;
        }
    }
}

TEST(Pdf417ErrorCorrection, RatioStartsAt1AndLevelEndsAt56)
{
    check_refused(error_correction(49, 0), 9);
    check_accepted(error_correction(48, 56), hex("1D 28 6B 04 00 30 45 30 38"));
}

// ---- Human-readable interpretation ----

TEST(HRIPrintPosition, LetsNegativeValuesPassAsTheirLowByte)
{
    const Call position = [](uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_select_print_position_HRI_characters(printer_class, -1, buf, cap, len);
    };
    check_accepted(position, hex("1D 48 FF"));
}

TEST(HRIPrintPosition, KnowsNoAliases)
{
    for (const int32_t n : {256, 257, 256 + 48, 65536}) {
        const Call position = [n](uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len) {
            return klov_cmd_select_print_position_HRI_characters(printer_class, n, buf, cap, len);
        };
        check_refused(position, 3);
    }
}

// ---- Print bar code ----

Call bar_code(int32_t m, const Bytes &data)
{
    return [=](uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len) {
        const uint32_t k = static_cast<uint32_t>(data.size());
        return klov_cmd_print_bar_code(printer_class, m, data.data(), k, buf, cap, len);
    };
}

Bytes bar_code_bytes(int32_t m, const Bytes &data)
{
    const uint8_t symbology = static_cast<uint8_t>(m);
    if (symbology <= 6) {
        return Bytes{0x1D, 0x6B, symbology} + data + Bytes{0x00};
    }
    return Bytes{0x1D, 0x6B, symbology, static_cast<uint8_t>(data.size())} + data;
}

TEST(PrintBarCode, EndsWithANulUpToSymbology6AndCountsFrom65To73)
{
    const Row row = {"m", nullptr, "", {{0, 6}, {65, 73}}};
    const Bytes data = sample_data(5);
    for (const int32_t m : telling_values(row)) {
        const Outcome expected = is_valid(row, m) ? accepted(bar_code_bytes(m, data)) : refused(KLOV_E_PARAMETER);
        ASSERT_EQ(complaint(bar_code(m, data), {some_class, 5, 5 + 9}, expected), "") << "m " << m;
    }
}

TEST(PrintBarCode, KeepsTheContractOfRoomClassAndNullBuffer)
{
    for (const uint32_t k : {1U, 2U, 13U, 254U, 255U}) {
        const Bytes data = sample_data(k);
        check_accepted(bar_code(4, data), bar_code_bytes(4, data));
        check_accepted(bar_code(73, data), bar_code_bytes(73, data));
        check_refused(bar_code(7, data), k + 4);
    }
}

// The count is one byte, the data are the caller's.
TEST(PrintBarCode, CutsOnlyTheCountOfMoreThan255Bytes)
{
    for (const uint32_t k : {256U, 257U, 300U, 1000U}) {
        const Bytes data = sample_data(k);
        check_accepted(bar_code(65, data), bar_code_bytes(65, data));
        check_accepted(bar_code(6, data), bar_code_bytes(6, data));
    }
}

TEST(PrintBarCode, TakesAnyDataByte)
{
    for (int byte = 0; byte < 256; byte++) {
        const Bytes data = {static_cast<uint8_t>(byte), 0x31};
        EXPECT_EQ(complaint(bar_code(0, data), {some_class, 0, 6}, accepted(bar_code_bytes(0, data))), "");
        EXPECT_EQ(complaint(bar_code(69, data), {some_class, 0, 6}, accepted(bar_code_bytes(69, data))), "");
    }
}

TEST(PrintBarCode, EmitsSymbology73WithItsCount)
{
    check_accepted(bar_code(73, hex("7B 41 31 32")), hex("1D 6B 49 04 7B 41 31 32"));
}

// Nothing to print is no mistake: it succeeds ahead of every check, whatever the printer and the buffer.
TEST(PrintBarCode, WithoutDataSucceedsAheadOfEveryCheck)
{
    static const uint8_t some_byte = 0x31;
    const auto bar_code_of = [](const uint8_t *data, uint32_t k, int32_t m) -> Call {
        return [=](uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len) {
            return klov_cmd_print_bar_code(printer_class, m, data, k, buf, cap, len);
        };
    };
    for (const Call &call : {bar_code_of(&some_byte, 0, 4), bar_code_of(nullptr, 10, 4), bar_code_of(nullptr, 0, 99)}) {
        for (const uint32_t printer_class : {0U, some_class}) {
            EXPECT_EQ(complaint(call, {printer_class, 3, 100}, accepted({})), "");
            EXPECT_EQ(complaint(call, {printer_class, 3, 3}, accepted({})), "");
            uint32_t len = 3;
            EXPECT_EQ(call(printer_class, nullptr, 0, &len), KLOV_OK);
            EXPECT_EQ(len, 3U);
        }
    }
}

// ---- Symbol data ----

using Store = int32_t (*)(uint32_t printer_class, const uint8_t *data, uint32_t k, uint8_t *buf, uint32_t cap,
                          uint32_t *len);

Call store(Store encode, const uint8_t *data, uint32_t k)
{
    return [=](uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return encode(printer_class, data, k, buf, cap, len);
    };
}

Call store(Store encode, const Bytes &data)
{
    return store(encode, data.data(), static_cast<uint32_t>(data.size()));
}

const Store pdf417_store = klov_cmd_pdf417_store_the_data_in_the_symbol_storage_area;
const Store qr_store = klov_cmd_qr_store_the_data_in_the_symbol_storage_area;

TEST(Pdf417Store, CountsItsDataWithTwoBytes)
{
    struct {
        size_t k;
        const char *head;
    } const cases[] = {
        {1, "1D 28 6B 04 00 30 50 30"},     {3, "1D 28 6B 06 00 30 50 30"},   {252, "1D 28 6B FF 00 30 50 30"},
        {253, "1D 28 6B 00 01 30 50 30"},   {256, "1D 28 6B 03 01 30 50 30"}, {65531, "1D 28 6B FE FF 30 50 30"},
        {65532, "1D 28 6B FF FF 30 50 30"},
    };
    for (const auto &expected : cases) {
        const Bytes data = sample_data(expected.k);
        const Bytes bytes = hex(expected.head) + data;
        const uint32_t length = static_cast<uint32_t>(bytes.size());
        EXPECT_EQ(complaint(store(pdf417_store, data), {some_class, 7, 7 + length}, accepted(bytes)), "");
        EXPECT_EQ(complaint(store(pdf417_store, data), {some_class, 7, 6 + length}, refused(KLOV_E_BUFFER_TOO_SMALL)),
                  "");
    }
}

TEST(Pdf417Store, KeepsTheContractOfRoomClassAndNullBuffer)
{
    const Bytes data = sample_data(40);
    check_accepted(store(pdf417_store, data), hex("1D 28 6B 2B 00 30 50 30") + data);
}

TEST(Pdf417Store, TestsTheRoomBeforeTheRangeOfK)
{
    const Bytes data = sample_data(65537);
    for (const uint32_t k : {0U, 65533U, 65536U, 65537U}) {
        check_refused(store(pdf417_store, data.data(), k), k + 8);
    }
}

TEST(Pdf417Store, RefusesASizeWhoseRoomWraps)
{
    const Bytes data = sample_data(1);
    check_no_room(store(pdf417_store, data.data(), 0xFFFFFFFF));
    check_no_room(store(pdf417_store, data.data(), 0xFFFFFFF8));
}

TEST(QrStore, EmitsItsDataBehindTheCount)
{
    const Bytes abc = {'a', 'b', 'c'};
    EXPECT_EQ(
        complaint(store(qr_store, abc), {some_class, 5, 5 + 11}, accepted(hex("1D 28 6B 06 00 31 50 30 61 62 63"))),
        "");
}

// The room test covers the frame alone; the caller brings the room for the data.
TEST(QrStore, AsksForEightBytesOfRoomWhateverTheDataSize)
{
    for (const uint32_t k : {0U, 1U, 3U, 100U, 2953U}) {
        const Bytes data = sample_data(k + 1);
        const Bytes bytes = hex("1D 28 6B nL nH 31 50 30", static_cast<int32_t>(k) + 3) +
                            Bytes(data.begin(), data.begin() + static_cast<int32_t>(k));
        const Call call = store(qr_store, data.data(), k);
        for (const uint32_t before : {0U, 17U}) {
            for (uint32_t room = 0; room < 8; room++) {
                const Trial trial = {some_class, before, before + room};
                EXPECT_EQ(complaint(call, trial, refused(KLOV_E_BUFFER_TOO_SMALL)), "");
            }
            for (const uint32_t room : {8U, 9U, k + 7, k + 8, k + 9}) {
                EXPECT_EQ(complaint(call, {some_class, before, before + std::max(room, 8U)}, accepted(bytes)), "");
            }
        }
        EXPECT_EQ(complaint(call, {some_class, 17, 16}, accepted(bytes)), "");
    }
}

TEST(QrStore, WritesTheCountModulo65536AndAllTheData)
{
    struct {
        size_t k;
        const char *head;
    } const cases[] = {
        {65532, "1D 28 6B FF FF 31 50 30"},
        {65533, "1D 28 6B 00 00 31 50 30"},
        {65536, "1D 28 6B 03 00 31 50 30"},
        {70000, "1D 28 6B 73 11 31 50 30"},
    };
    for (const auto &expected : cases) {
        const Bytes data = sample_data(expected.k);
        EXPECT_EQ(complaint(store(qr_store, data), {some_class, 1, 9}, accepted(hex(expected.head) + data)), "");
    }
}

TEST(QrStore, RefusesNullDataAfterTheRoomTest)
{
    check_refused(store(qr_store, nullptr, 3), 8);
    check_refused(store(qr_store, nullptr, 0), 8);
}

TEST(QrStore, NeedsTheClassBitAndABuffer)
{
    const Bytes data = sample_data(3);
    const Call call = store(qr_store, data);
    uint32_t len = 3;
    EXPECT_EQ(call(some_class & ~1U, nullptr, 100, &len), KLOV_E_MODEL_TYPE);
    EXPECT_EQ(call(some_class, nullptr, 100, &len), KLOV_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(len, 3U);
    EXPECT_EQ(complaint(call, {some_class & ~1U, 3, 100}, refused(KLOV_E_MODEL_TYPE)), "");
}

}  // namespace
