// Requests for status, identity and firmware version.
#include <klov/status.h>

#include "tests/cmds/kit.h"

using namespace kit;

namespace {

const Row rows[] = {
    {"transmit_real_time_status", klov_cmd_transmit_real_time_status, "10 04 n", {{1, 4}, {7, 7}}},
    {"transmit_specified_status_in_real_time",
     klov_cmd_transmit_specified_status_in_real_time,
     "10 14 07 n",
     {{1, 1}, {5, 5}}},
    {"transmit_peripheral_device_status", with<klov_cmd_transmit_peripheral_device_status>, "1B 75"},
    {"transmit_paper_sensor_status", with<klov_cmd_transmit_paper_sensor_status>, "1B 76"},
    {"enable_disable_ASB", klov_cmd_enable_disable_ASB, "1D 61 n"},
    {"transmit_status", klov_cmd_transmit_status, "1D 72 n", {{1, 2}, {49, 50}}, Tested::whole},
    {"transmit_printer_id", klov_cmd_transmit_printer_id, "1D 49 n", {{1, 3}, {49, 51}}},
};

INSTANTIATE_TEST_SUITE_P(Status, Command, testing::ValuesIn(rows), row_name);

Call transmit_status(int32_t n)
{
    return [n](uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_transmit_status(printer_class, n, buf, cap, len);
    };
}

// Callers read the reply by the n they sent, so an alias must not get as far as the printer.
TEST(TransmitStatus, TestsTheWholeValueOfN)
{
    for (const int32_t alias : {257, 258, 256 + 49, 256 + 50, 65537, -255}) {
        check_refused(transmit_status(alias), 3);
    }
}

const Call request_version = klov_cmd_transmit_printer_version;

const Bytes version_by_id = hex("1D 49 41");
const Bytes version_by_command = hex("1B 23 2A 0A 00");
const Bytes version_by_text = {'Z', 'Z', 'Z', 'G', 'E', 'T', 'V', 'E', 'R', 'S', 'I', 'O', 'N'};

struct VersionForm {
    uint32_t printer_class;
    Bytes bytes;
};

const VersionForm version_forms[] = {
    {0x1, version_by_id},        {0x3, version_by_id},
    {0x5, version_by_id},        {0x7, version_by_id},
    {0xFFFFFFFF, version_by_id}, {0x4, version_by_command},
    {0x6, version_by_command},   {0xFFFFFFFE, version_by_command},
    {0x2, version_by_text},      {0xFFFFFFFA, version_by_text},
};

TEST(TransmitPrinterVersion, TakesTheFormThatTheClassKnows)
{
    for (const VersionForm &form : version_forms) {
        const uint32_t length = static_cast<uint32_t>(form.bytes.size());
        for (const uint32_t before : {0U, 1U, 17U}) {
            for (uint32_t room = 0; room < length; room++) {
                const Trial trial = {form.printer_class, before, before + room};
                EXPECT_EQ(complaint(request_version, trial, refused(KLOV_E_BUFFER_TOO_SMALL)), "");
            }
            for (const uint32_t cap : {before + length, before + length + 1, 0xFFFFFFFFU}) {
                EXPECT_EQ(complaint(request_version, {form.printer_class, before, cap}, accepted(form.bytes)), "");
            }
        }
        EXPECT_EQ(complaint(request_version, {form.printer_class, 17, 16}, accepted(form.bytes)), "");
        uint32_t len = 3;
        EXPECT_EQ(request_version(form.printer_class, nullptr, 100, &len), KLOV_E_BUFFER_TOO_SMALL);
        EXPECT_EQ(len, 3U);
    }
}

TEST(TransmitPrinterVersion, IsRefusedOnlyWithoutAnyOfTheThreeClassBits)
{
    for (const uint32_t printer_class : {0U, 0x8U, 0xFFFFFFF8U}) {
        EXPECT_EQ(complaint(request_version, {printer_class, 0, 100}, refused(KLOV_E_MODEL_TYPE)), "");
        uint32_t len = 3;
        EXPECT_EQ(request_version(printer_class, nullptr, 100, &len), KLOV_E_MODEL_TYPE);
        EXPECT_EQ(len, 3U);
    }
}

TEST(TransmitPrinterVersion, WithClass6EmitsTheCommandForm)
{
    EXPECT_EQ(complaint(request_version, {0x6, 0, 5}, accepted(hex("1B 23 2A 0A 00"))), "");
}

TEST(TransmitPrinterVersion, WithClass2EmitsTheTextWithoutATerminator)
{
    const Bytes text = hex("5A 5A 5A 47 45 54 56 45 52 53 49 4F 4E");
    EXPECT_EQ(complaint(request_version, {0x2, 0, 13}, accepted(text)), "");
}

}  // namespace
