// Lengths of caller data that wrap with what stands around them: no buffer holds them, and no byte of theirs is
// touched.
#include <gtest/gtest.h>
#include <klov/klov.h>

#include "tests/cmds/every_encoder.h"

namespace {

using kit::Encoder;
using kit::Kind;
using kit::Value;

constexpr uint8_t data[256] = {};

// Commands whose count is one byte, and the bit image, whose count is signed and may be taken back from its header.
bool counts_otherwise(const Encoder &encoder)
{
    for (const char *name : {"define_user_defined_characters", "set_horizontal_tab_positions",
                             "enable_real_time_command", "eh_send_attestation_data", "select_bit_image_mode"}) {
        if (encoder.is(name)) {
            return true;
        }
    }
    return false;
}

std::vector<const Encoder *> encoders_with_long_data()
{
    std::vector<const Encoder *> found;
    for (const Encoder &encoder : kit::every_encoder()) {
        if (encoder.takes_data() && !counts_otherwise(encoder)) {
            found.push_back(&encoder);
        }
    }
    return found;
}

TEST(WrappingLengths, AreRefusedForWantOfRoomByEveryCommandWithData)
{
    EXPECT_EQ(encoders_with_long_data().size(), 16U);
    for (const Encoder *encoder : encoders_with_long_data()) {
        // Every length whose sum with 8 bytes or fewer wraps; the shortest frame has 3.
        for (uint32_t size = 0xFFFFFFFDU; size != 0; size++) {
            std::vector<Value> values;
            for (const Kind kind : encoder->parameters) {
                values.push_back({kind == Kind::size ? size : 1, kind == Kind::data ? data : nullptr});
            }
            if (encoder->is("print_raster_bit_image")) {
                values[1].number = size;  // times one row
            }
            for (const uint32_t cap : {0U, 100U, 0xFFFFFFFFU}) {
                uint8_t buf[128] = {};
                uint32_t len = 0;
                EXPECT_EQ(encoder->call(1, values.data(), buf, cap, &len), KLOV_E_BUFFER_TOO_SMALL)
                    << encoder->name << " " << size;
                EXPECT_EQ(len, 0U);
                for (const uint8_t byte : buf) {
                    ASSERT_EQ(byte, 0) << encoder->name;
                }
                // The class still comes first, and the null buffer is the same answer.
                EXPECT_EQ(encoder->call(0x10, values.data(), buf, cap, &len), KLOV_E_MODEL_TYPE) << encoder->name;
                EXPECT_EQ(encoder->call(1, values.data(), nullptr, cap, &len), KLOV_E_BUFFER_TOO_SMALL);
            }
        }
    }
}

TEST(WrappingLengths, StartWhereTheFrameNoLongerFits)
{
    uint8_t buf[16] = {};
    uint32_t len = 0;
    // A count that just fits 32 bits is a matter of the room, and then of the range.
    EXPECT_EQ(klov_cmd_draw_line(1, data, 0xFFFFFFF9, buf, 0xFFFFFFFF, &len), KLOV_E_PARAMETER);
    EXPECT_EQ(klov_cmd_draw_line(1, data, 0xFFFFFFFA, buf, 0xFFFFFFFF, &len), KLOV_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(klov_cmd_pdf417_store_the_data_in_the_symbol_storage_area(1, data, 0xFFFFFFF7, buf, 0xFFFFFFFF, &len),
              KLOV_E_PARAMETER);
    EXPECT_EQ(klov_cmd_pdf417_store_the_data_in_the_symbol_storage_area(1, data, 0xFFFFFFF8, buf, 0xFFFFFFFF, &len),
              KLOV_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(klov_cmd_qr_store_the_data_in_the_symbol_storage_area(1, nullptr, 0xFFFFFFF7, buf, 0xFFFFFFFF, &len),
              KLOV_E_PARAMETER);
    EXPECT_EQ(klov_cmd_qr_store_the_data_in_the_symbol_storage_area(1, nullptr, 0xFFFFFFF8, buf, 0xFFFFFFFF, &len),
              KLOV_E_BUFFER_TOO_SMALL);
    // A bar code without data is none, whatever its count says.
    EXPECT_EQ(klov_cmd_print_bar_code(0, 73, nullptr, 0xFFFFFFFF, buf, 0, &len), KLOV_OK);
    EXPECT_EQ(len, 0U);
}

TEST(WrappingLengths, OfABitImageAreTakenBackFromItsHeader)
{
    uint8_t buf[16] = {};
    for (int32_t k = -5; k <= -1; k++) {
        uint32_t len = 4;
        EXPECT_EQ(klov_cmd_select_bit_image_mode(1, 0, 1, data, k, buf, 16, &len), KLOV_OK);
        EXPECT_EQ(len, 4U + 5U + static_cast<uint32_t>(k));
    }
}

}  // namespace
