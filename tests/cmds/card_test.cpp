// Track card reader, smart card slot and encrypting magnetic head.
#include <klov/card.h>

#include "tests/cmds/kit.h"

using namespace kit;

namespace {

const Row rows[] = {
    {"set_1track_card_reader_mode", with<klov_cmd_set_1track_card_reader_mode>, "1B 4D 43"},
    {"set_2track_card_reader_mode", with<klov_cmd_set_2track_card_reader_mode>, "1B 4D 44"},
    {"set_1_2track_card_reader_mode", with<klov_cmd_set_1_2track_card_reader_mode>, "1B 4D 45"},
    {"set_123track_card_reader_mode", with<klov_cmd_set_123track_card_reader_mode>, "1B 4D 46"},
    {"set_3track_card_reader_mode", with<klov_cmd_set_3track_card_reader_mode>, "1B 4D 47"},
    {"cancel_track_card_reader_mode", with<klov_cmd_cancel_track_card_reader_mode>, "04"},
    {"selecting_mode_of_reading_smart_card", with<klov_cmd_selecting_mode_of_reading_smart_card>, "1B 4E"},
    {"selecting_mode_of_operate_smart_card", klov_cmd_selecting_mode_of_operate_smart_card, "1B 4E n"},
    {"cancel_the_mode_of_read_smart_card", with<klov_cmd_cancel_the_mode_of_read_smart_card>, "7E 04 7E"},
    {"get_random_data_from_smart_card", with<klov_cmd_get_random_data_from_smart_card>,
     "1B 4E 13 00 00 05 00 84 00 00 08"},
    {"smart_card_get_response", klov_cmd_smart_card_get_response, "1B 4E 15 00 00 06 00 C0 00 00 00 n"},
    {"smart_card_read_record_r", with<klov_cmd_smart_card_read_record, V, 0x11, 0x22>,
     "1B 4E 15 00 00 06 00 B2 n 11 00 22"},
    {"smart_card_read_record_p", with<klov_cmd_smart_card_read_record, 0x11, V, 0x22>,
     "1B 4E 15 00 00 06 00 B2 11 n 00 22"},
    {"smart_card_read_record_le", with<klov_cmd_smart_card_read_record, 0x11, 0x22, V>,
     "1B 4E 15 00 00 06 00 B2 11 22 00 n"},
    {"eh_reset", with<klov_cmd_eh_reset>, "1B 4D 53 00 04 02 38 03 39"},
    {"eh_set_default_configuration", with<klov_cmd_eh_set_default_configuration>, "1B 4D 53 00 05 02 53 18 03 4A"},
    {"eh_request_attestation_data", with<klov_cmd_eh_request_attestation_data>, "1B 4D 53 00 05 02 52 74 03 27"},
    {"eh_set_encryption_type", klov_cmd_eh_set_encryption_type, "1B 4D 53 00 07 02 53 58 01 n 03 3B", {{48, 49}}},
    {"eh_enable", klov_cmd_eh_enable, "1B 4D 53 00 07 02 53 1A 01 n 03 78", {{48, 49}}},
    {"eh_set_encryption_mode", klov_cmd_eh_set_encryption_mode, "1B 4D 53 00 07 02 53 4C 01 n 03 2E", {{48, 50}}},
    {"eh_return_all_track_data", with<klov_cmd_eh_return_all_track_data>, "1B 4D 53 00 07 02 53 85 01 31 03 E7"},
    {"eh_set_encryption_all_track", with<klov_cmd_eh_set_encryption_all_track>, "1B 4D 53 00 07 02 53 84 01 0F 03 D8"},
};

INSTANTIATE_TEST_SUITE_P(Card, Command, testing::ValuesIn(rows), row_name);

// A command of one byte: only a buffer that is exactly full has no room.
TEST(CancelTrackCardReaderMode, FailsOnlyWhenTheBufferIsExactlyFull)
{
    const Call cancel = klov_cmd_cancel_track_card_reader_mode;
    for (uint32_t before = 0; before < 20; before++) {
        for (uint32_t cap = 0; cap < 20; cap++) {
            const Outcome expected = before == cap ? refused(KLOV_E_BUFFER_TOO_SMALL) : accepted({0x04});
            EXPECT_EQ(complaint(cancel, {some_class, before, cap}, expected), "");
        }
    }
}

// ---- Smart card select file ----

Call select_file(const Bytes &name)
{
    return [=](uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len) {
        const uint32_t k = static_cast<uint32_t>(name.size());
        return klov_cmd_smart_card_select_file(printer_class, name.data(), k, buf, cap, len);
    };
}

TEST(SmartCardSelectFile, SendsATwoByteName)
{
    check_accepted(select_file({0x3F, 0x00}), hex("1B 4E 15 00 00 08 00 A4 04 00 02 3F 00 00"));
}

TEST(SmartCardSelectFile, SendsAnEmptyName)
{
    check_accepted(select_file({}), hex("1B 4E 15 00 00 06 00 A4 04 00 00 00"));
}

// The two counts are bytes, the name is sent whole.
TEST(SmartCardSelectFile, CutsOnlyTheCountsOfALongName)
{
    struct {
        size_t k;
        const char *head;
    } const cases[] = {
        {1, "1B 4E 15 00 00 07 00 A4 04 00 01"},   {16, "1B 4E 15 00 00 16 00 A4 04 00 10"},
        {249, "1B 4E 15 00 00 FF 00 A4 04 00 F9"}, {250, "1B 4E 15 00 00 00 00 A4 04 00 FA"},
        {255, "1B 4E 15 00 00 05 00 A4 04 00 FF"}, {256, "1B 4E 15 00 00 06 00 A4 04 00 00"},
        {300, "1B 4E 15 00 00 32 00 A4 04 00 2C"},
    };
    for (const auto &expected : cases) {
        const Bytes name = sample_data(expected.k);
        check_accepted(select_file(name), hex(expected.head) + name + Bytes{0x00});
    }
}

// ---- Encrypting head ----

Call encryption_mode(int32_t n)
{
    return [n](uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_eh_set_encryption_mode(printer_class, n, buf, cap, len);
    };
}

TEST(EncryptingHeadMode, EndsAt50)
{
    check_accepted(encryption_mode(50), hex("1B 4D 53 00 07 02 53 4C 01 32 03 2E"));
    check_refused(encryption_mode(51), 12);
}

// The head knows each command by one constant check byte, whatever the parameter.
TEST(EncryptingHeadEnable, EndsInTheSameCheckByteForBothValues)
{
    for (const int32_t n : {48, 49}) {
        const Call enable = [n](uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len) {
            return klov_cmd_eh_enable(printer_class, n, buf, cap, len);
        };
        check_accepted(enable, hex("1B 4D 53 00 07 02 53 1A 01 n 03 78", n));
    }
}

Call attestation(const uint8_t *data, uint32_t k)
{
    return [=](uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_eh_send_attestation_data(printer_class, data, k, buf, cap, len);
    };
}

const Bytes eight_bytes = hex("00 FF 1B 03 80 7F 20 A5");

TEST(EncryptingHeadAttestation, SendsItsFrameTwice)
{
    const Bytes frame = hex("1B 4D 53 00 0E 02 53 74 08") + eight_bytes + hex("03 48");
    ASSERT_EQ(frame.size(), 19U);
    check_accepted(attestation(eight_bytes.data(), 8), frame + frame);
}

TEST(EncryptingHeadAttestation, TakesTheSizeAsOneByte)
{
    const Bytes frame = hex("1B 4D 53 00 0E 02 53 74 08") + eight_bytes + hex("03 48");
    for (const uint32_t k : {0x108U, 0xFF08U, 0xFFFFFF08U}) {
        check_accepted(attestation(eight_bytes.data(), k), frame + frame);
    }
}

TEST(EncryptingHeadAttestation, NeedsRoomForBothFrames)
{
    const Call call = attestation(eight_bytes.data(), 8);
    EXPECT_EQ(complaint(call, {some_class, 0, 37}, refused(KLOV_E_BUFFER_TOO_SMALL)), "");
    EXPECT_EQ(complaint(call, {some_class, 5, 5 + 37}, refused(KLOV_E_BUFFER_TOO_SMALL)), "");
}

TEST(EncryptingHeadAttestation, TestsTheRoomBeforeTheSize)
{
    for (uint32_t k = 0; k < 256; k++) {
        if (k != 8) {
            check_refused(attestation(eight_bytes.data(), k), 2 * (k + 11));
        }
    }
    check_refused(attestation(eight_bytes.data(), 0x107), 2 * (7 + 11));
}

}  // namespace
