// What klov.h promises for every command alike, tried with every command: null data, a null fill count, data that lie
// in the command buffer.
#include <gtest/gtest.h>
#include <klov/klov.h>

#include <cstring>
#include <functional>
#include <map>

#include "tests/cmds/every_encoder.h"

namespace {

using kit::Encoder;
using kit::Kind;
using kit::Value;

uint8_t sample[256];

// Arguments that a command with data accepts: its numbers in their order, the count among them.
const std::map<std::string_view, std::vector<uint32_t>> accepted_numbers = {
    {"klov_cmd_print_raster_bit_image", {0, 4, 3}},
    {"klov_cmd_define_user_defined_characters", {65, 65, 12, 36}},
    {"klov_cmd_set_horizontal_tab_positions", {9}},
    {"klov_cmd_select_bit_image_mode", {1, 5, 10}},
    {"klov_cmd_define_nv_bit_image_fmode", {1, 9}},
    {"klov_cmd_define_downloaded_bit_image", {1, 2, 16}},
    {"klov_cmd_define_the_NV_graphics_data_raster_gmode", {65, 66, 20, 3, 9}},
    {"klov_cmd_define_the_NV_graphics_data_column_gmode", {65, 66, 3, 20, 9}},
    {"klov_cmd_define_the_downloaded_graphics_data_raster_gmode", {65, 66, 20, 3, 9}},
    {"klov_cmd_define_the_downloaded_graphics_data_column_gmode", {65, 66, 3, 20, 9}},
    {"klov_cmd_store_the_graphics_data_in_the_print_buffer_raster_gmode", {1, 2, 20, 3, 9}},
    {"klov_cmd_store_the_graphics_data_in_the_print_buffer_column_gmode", {1, 2, 3, 20, 9}},
    {"klov_cmd_print_bar_code", {73, 9}},
    {"klov_cmd_pdf417_store_the_data_in_the_symbol_storage_area", {9}},
    {"klov_cmd_qr_store_the_data_in_the_symbol_storage_area", {9}},
    {"klov_cmd_smart_card_select_file", {9}},
    {"klov_cmd_eh_send_attestation_data", {8}},
    {"klov_cmd_enable_real_time_command", {3, 2}},
    {"klov_cmd_draw_line", {12}},
    {"klov_cmd_draw_rectangle", {14}},
    {"klov_cmd_write_to_nv_user_memory", {5, 9, 9}},
};

std::vector<Value> arguments(const Encoder &encoder, const uint8_t *data)
{
    std::vector<Value> values;
    size_t next = 0;
    for (const Kind kind : encoder.parameters) {
        if (kind == Kind::data) {
            values.push_back({0, data});
        } else {
            values.push_back({accepted_numbers.at(encoder.name)[next++], nullptr});
        }
    }
    return values;
}

void for_every_command_with_data(const std::function<void(const Encoder &)> &check)
{
    for (size_t i = 0; i < sizeof sample; i++) {
        sample[i] = static_cast<uint8_t>(0x30 + i % 64);
    }
    size_t seen = 0;
    for (const Encoder &encoder : kit::every_encoder()) {
        if (encoder.takes_data()) {
            SCOPED_TRACE(encoder.name);
            seen++;
            check(encoder);
        }
    }
    EXPECT_EQ(seen, accepted_numbers.size());
}

TEST(Conventions, ANullFillCountIsANullBuffer)
{
    ASSERT_GT(kit::every_encoder().size(), 150U);
    for (const Encoder &encoder : kit::every_encoder()) {
        std::vector<Value> values(encoder.parameters.size(), Value{1, sample});
        uint8_t buf[400] = {};
        EXPECT_EQ(encoder.call(0xFFFFFFFF, values.data(), buf, sizeof buf, nullptr), KLOV_E_BUFFER_TOO_SMALL)
            << encoder.name;
        for (const uint8_t byte : buf) {
            ASSERT_EQ(byte, 0) << encoder.name;
        }
        EXPECT_EQ(encoder.call(0, values.data(), buf, sizeof buf, nullptr), KLOV_E_MODEL_TYPE) << encoder.name;
    }
}

// The two that differ are a bar code without anything in it, and an image whose bytes follow later.
TEST(Conventions, NullDataIsAWrongParameter)
{
    for_every_command_with_data([](const Encoder &encoder) {
        const std::vector<Value> values = arguments(encoder, nullptr);
        uint8_t buf[400] = {};
        uint32_t len = 7;
        const int32_t code = encoder.call(1, values.data(), buf, sizeof buf, &len);
        if (encoder.is("print_bar_code")) {
            EXPECT_EQ(code, KLOV_OK);
            EXPECT_EQ(len, 7U);
            return;
        }
        if (encoder.is("select_bit_image_mode")) {
            EXPECT_EQ(code, KLOV_OK);
            EXPECT_EQ(len, 7U + 5 + 10);
            return;
        }
        EXPECT_EQ(code, KLOV_E_PARAMETER);
        EXPECT_EQ(len, 7U);
        for (const uint8_t byte : buf) {
            ASSERT_EQ(byte, 0);
        }
        EXPECT_EQ(encoder.call(1, values.data(), buf, 7, &len), KLOV_E_BUFFER_TOO_SMALL) << "the room comes first";
    });
}

TEST(Conventions, NullDataOfNoBytesIsNothing)
{
    uint8_t buf[64];
    uint32_t len = 0;
    EXPECT_EQ(klov_cmd_set_horizontal_tab_positions(1, nullptr, 0, buf, sizeof buf, &len), KLOV_OK);
    EXPECT_EQ(klov_cmd_smart_card_select_file(1, nullptr, 0, buf, sizeof buf, &len), KLOV_OK);
    EXPECT_EQ(klov_cmd_define_nv_bit_image_fmode(1, 1, nullptr, 0, buf, sizeof buf, &len), KLOV_OK);
    EXPECT_EQ(klov_cmd_enable_real_time_command(1, 3, nullptr, 0, buf, sizeof buf, &len), KLOV_OK);
    EXPECT_EQ(klov_cmd_define_user_defined_characters(1, 65, 65, 0, nullptr, 0, buf, sizeof buf, &len), KLOV_OK);
    EXPECT_EQ(len, 3U + 12 + 3 + 6 + 6);
    // This one wants data even for none.
    EXPECT_EQ(klov_cmd_qr_store_the_data_in_the_symbol_storage_area(1, nullptr, 0, buf, sizeof buf, &len),
              KLOV_E_PARAMETER);
}

TEST(Conventions, DataMayLieAnywhereInTheBuffer)
{
    for_every_command_with_data([](const Encoder &encoder) {
        uint8_t wanted[400] = {};
        uint32_t length = 0;
        ASSERT_EQ(encoder.call(1, arguments(encoder, sample).data(), wanted, sizeof wanted, &length), KLOV_OK);
        constexpr uint32_t before = 100;
        for (uint32_t at = 0; at < 250; at++) {
            uint8_t buf[500] = {};
            memcpy(buf + at, sample, 64);
            uint32_t len = before;
            ASSERT_EQ(encoder.call(1, arguments(encoder, buf + at).data(), buf, sizeof buf, &len), KLOV_OK);
            ASSERT_EQ(len, before + length);
            ASSERT_EQ(memcmp(buf + before, wanted, length), 0) << "data at " << at;
        }
    });
}

}  // namespace
