// What the printer answers: status bytes into flags, version and symbol size texts into numbers.
#include <gtest/gtest.h>
#include <klov/status.h>

#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

namespace {

constexpr uint32_t escpos = 0x19550001;
constexpr uint32_t classes_without_escpos[] = {0, 0x2, 0x19550000, 0xFFFFFFFE};
constexpr uint8_t untouched = 0xEE;

constexpr printer_status untouched_status = {untouched, untouched, untouched, untouched,
                                             untouched, untouched, untouched, untouched};

bool bit(int32_t byte, int index)
{
    return ((byte >> index) % 2) != 0;
}

bool same(const printer_status &a, const printer_status &b)
{
    static_assert(sizeof(printer_status) == 8);
    return memcmp(&a, &b, sizeof a) == 0;
}

std::string text_of(const printer_status &status)
{
    const uint8_t flags[] = {status.aux0,        status.aux1,       status.aux2,           status.aux3,
                             status.drawer_pin3, status.cover_open, status.paper_near_end, status.paper_end};
    std::string text;
    for (const uint8_t flag : flags) {
        text += (flag == untouched ? "-" : std::to_string(flag)) + " ";
    }
    return text;
}

// A verdict on one reply: the code, and the record after it.
struct Reading {
    int32_t code;
    printer_status status;
};

bool operator==(const Reading &a, const Reading &b)
{
    return a.code == b.code && same(a.status, b.status);
}

void PrintTo(const Reading &reading, std::ostream *out)
{
    *out << reading.code << ": " << text_of(reading.status);
}

const Reading rejected = {KLOV_E_PARAMETER, untouched_status};

TEST(PrinterStatus, IsEightBytesInOrder)
{
    const uint8_t bytes[8] = {0, 1, 2, 3, 4, 5, 6, 7};
    printer_status status;
    memcpy(&status, bytes, sizeof status);
    EXPECT_EQ(text_of(status), "0 1 2 3 4 5 6 7 ");
}

// ---- Automatic status back ----

Reading read_asb(const uint8_t (&asb)[4], uint32_t printer_class = escpos)
{
    Reading reading = {0, untouched_status};
    reading.code = klov_cmd_parse_ASB_status(printer_class, asb, &reading.status);
    return reading;
}

Reading expected_asb(const uint8_t (&asb)[4])
{
    const bool first_fits = !bit(asb[0], 0) && !bit(asb[0], 1) && bit(asb[0], 4) && !bit(asb[0], 7);
    if (!first_fits) {
        return rejected;
    }
    for (int i = 1; i < 4; i++) {
        if (bit(asb[i], 4) || bit(asb[i], 7)) {
            return rejected;
        }
    }
    Reading expected = {KLOV_OK, untouched_status};
    expected.status.drawer_pin3 = bit(asb[0], 3);
    expected.status.cover_open = bit(asb[0], 5);
    expected.status.paper_near_end = bit(asb[2], 0) && bit(asb[2], 1);
    expected.status.paper_end = bit(asb[2], 2) && bit(asb[2], 3);
    return expected;
}

void check_asb(const uint8_t (&asb)[4])
{
    const Reading expected = expected_asb(asb);
    ASSERT_EQ(read_asb(asb), expected) << int{asb[0]} << " " << int{asb[1]} << " " << int{asb[2]} << " " << int{asb[3]};
    ASSERT_EQ(klov_cmd_parse_ASB_status(escpos, asb, nullptr), expected.code);
}

TEST(ParseASBStatus, ReadsEveryFirstAndThirdByte)
{
    for (int first = 0; first < 256; first++) {
        for (int third = 0; third < 256; third++) {
            check_asb({static_cast<uint8_t>(first), 0x00, static_cast<uint8_t>(third), 0x00});
        }
    }
}

TEST(ParseASBStatus, AsksOnlyTheFixedBitsOfTheSecondAndFourthByte)
{
    for (int value = 0; value < 256; value++) {
        check_asb({0x38, static_cast<uint8_t>(value), 0x0F, 0x00});
        check_asb({0x10, 0x6F, 0x00, static_cast<uint8_t>(value)});
    }
}

TEST(ParseASBStatus, ReadsDrawerCoverAndPaperFrom38000F00)
{
    const Reading expected = {KLOV_OK, {untouched, untouched, untouched, untouched, 1, 1, 1, 1}};
    EXPECT_EQ(read_asb({0x38, 0x00, 0x0F, 0x00}), expected);
}

TEST(ParseASBStatus, WritesZerosWhereNothingIsWrong)
{
    const Reading expected = {KLOV_OK, {untouched, untouched, untouched, untouched, 0, 0, 0, 0}};
    EXPECT_EQ(read_asb({0x10, 0x00, 0x00, 0x00}), expected);
}

TEST(ParseASBStatus, NeedsTheClassBit)
{
    for (const uint32_t printer_class : classes_without_escpos) {
        EXPECT_EQ(read_asb({0x10, 0x00, 0x00, 0x00}, printer_class), rejected);
    }
}

// ---- Transmit status ----

Reading read_transmit(int32_t n, int32_t reply, uint32_t printer_class = escpos)
{
    Reading reading = {0, untouched_status};
    reading.code = klov_cmd_parse_transmit_status(printer_class, n, reply, &reading.status);
    return reading;
}

Reading expected_transmit(int32_t n, int32_t reply)
{
    if (n < 1 || n > 2 || bit(reply, 4) || bit(reply, 7)) {
        return rejected;
    }
    Reading expected = {KLOV_OK, untouched_status};
    if (n == 1) {
        expected.status.paper_near_end = bit(reply, 0) && bit(reply, 1);
        expected.status.paper_end = bit(reply, 2) && bit(reply, 3);
    } else {
        expected.status.paper_end = bit(reply, 0);
        expected.status.cover_open = bit(reply, 0);
    }
    return expected;
}

TEST(ParseTransmitStatus, ReadsEveryReplyToEveryRequest)
{
    for (const int32_t n : {-1, 0, 1, 2, 3, 4, 49, 50, 257, 258, 65537, -255, -254}) {
        for (int32_t reply = 0; reply < 256; reply++) {
            EXPECT_EQ(read_transmit(n, reply), expected_transmit(n, reply)) << "n " << n << " reply " << reply;
        }
    }
}

TEST(ParseTransmitStatus, NeedsARecordEvenToTestTheReply)
{
    for (const int32_t n : {1, 2}) {
        for (int32_t reply = 0; reply < 256; reply++) {
            EXPECT_EQ(klov_cmd_parse_transmit_status(escpos, n, reply, nullptr), KLOV_E_PARAMETER);
        }
    }
}

// Callers read these two flags after a drawer request, although neither is the drawer's.
TEST(ParseTransmitStatus, PutsTheDrawerLevelIntoPaperEndAndCoverOpen)
{
    const Reading high = {KLOV_OK, {untouched, untouched, untouched, untouched, untouched, 1, untouched, 1}};
    const Reading low = {KLOV_OK, {untouched, untouched, untouched, untouched, untouched, 0, untouched, 0}};
    EXPECT_EQ(read_transmit(2, 0x01), high);
    EXPECT_EQ(read_transmit(2, 0x6E), low);
}

TEST(ParseTransmitStatus, NeedsTheClassBit)
{
    for (const uint32_t printer_class : classes_without_escpos) {
        EXPECT_EQ(read_transmit(1, 0x00, printer_class), rejected);
        EXPECT_EQ(read_transmit(2, 0x00, printer_class), rejected);
    }
}

// ---- Real-time status ----

Reading read_real_time(int32_t n, int32_t reply, uint32_t printer_class = escpos)
{
    Reading reading = {0, untouched_status};
    reading.code = klov_cmd_parse_real_time_status(printer_class, n, reply, &reading.status);
    return reading;
}

Reading expected_real_time(int32_t n, int32_t reply)
{
    const bool fits = !bit(reply, 0) && bit(reply, 1) && bit(reply, 4) && !bit(reply, 7);
    if (n < 1 || n > 4 || !fits) {
        return rejected;
    }
    Reading expected = {KLOV_OK, untouched_status};
    if (n == 1) {
        expected.status.drawer_pin3 = bit(reply, 3);
    }
    if (n == 2) {
        expected.status.cover_open = bit(reply, 2);
    }
    if (n == 4) {
        expected.status.paper_near_end = bit(reply, 2) && bit(reply, 3);
        expected.status.paper_end = bit(reply, 5) && bit(reply, 6);
    }
    return expected;
}

TEST(ParseRealTimeStatus, ReadsEveryReplyToEveryRequest)
{
    for (const int32_t n : {-1, 0, 1, 2, 3, 4, 5, 7, 257, 258, 260, 65537, -255, -252}) {
        for (int32_t reply = 0; reply < 256; reply++) {
            const Reading expected = expected_real_time(n, reply);
            EXPECT_EQ(read_real_time(n, reply), expected) << "n " << n << " reply " << reply;
            EXPECT_EQ(klov_cmd_parse_real_time_status(escpos, n, reply, nullptr), expected.code);
        }
    }
}

TEST(ParseRealTimeStatus, Reply1AToRequest1SetsTheDrawerPin)
{
    const Reading expected = {KLOV_OK,
                              {untouched, untouched, untouched, untouched, 1, untouched, untouched, untouched}};
    EXPECT_EQ(read_real_time(1, 0x1A), expected);
}

TEST(ParseRealTimeStatus, Reply16ToRequest2SetsCoverOpen)
{
    const Reading expected = {KLOV_OK,
                              {untouched, untouched, untouched, untouched, untouched, 1, untouched, untouched}};
    EXPECT_EQ(read_real_time(2, 0x16), expected);
}

TEST(ParseRealTimeStatus, Reply13IsNoRealTimeStatus)
{
    for (const int32_t n : {1, 2, 3, 4}) {
        EXPECT_EQ(read_real_time(n, 0x13), rejected);
    }
}

TEST(ParseRealTimeStatus, NeedsTheClassBit)
{
    for (const uint32_t printer_class : classes_without_escpos) {
        EXPECT_EQ(read_real_time(1, 0x12, printer_class), rejected);
        EXPECT_EQ(klov_cmd_parse_real_time_status(printer_class, 1, 0x12, nullptr), KLOV_E_PARAMETER);
    }
}

// ---- Second status byte ----

Reading read_status2(int32_t s, uint32_t printer_class = escpos)
{
    Reading reading = {0, untouched_status};
    reading.code = klov_cmd_parse_status2(printer_class, s, &reading.status);
    return reading;
}

TEST(ParseStatus2, MapsEveryByte)
{
    for (int32_t s = 0; s < 256; s++) {
        Reading expected = {KLOV_OK, untouched_status};
        expected.status.aux0 = bit(s, 5) ? 0 : 1;
        expected.status.aux1 = bit(s, 1) ? 0 : 1;
        expected.status.aux2 = bit(s, 2) ? 4 : 0;
        expected.status.aux3 = bit(s, 0) ? 1 : 0;
        expected.status.drawer_pin3 = bit(s, 3) ? 8 : 0;
        expected.status.cover_open = bit(s, 4) ? 0x10 : 0;
        EXPECT_EQ(read_status2(s), expected) << "byte " << s;
        EXPECT_EQ(read_status2(s + 256), expected) << "only the low byte counts";
    }
}

TEST(ParseStatus2, Byte22ClearsAllSixFlags)
{
    const Reading expected = {KLOV_OK, {0, 0, 0, 0, 0, 0, untouched, untouched}};
    EXPECT_EQ(read_status2(0x22), expected);
}

TEST(ParseStatus2, NeedsTheClassBitAndARecord)
{
    for (const uint32_t printer_class : classes_without_escpos) {
        EXPECT_EQ(read_status2(0x22, printer_class), rejected);
        EXPECT_EQ(klov_cmd_parse_status2(printer_class, 0x22, nullptr), KLOV_E_PARAMETER);
    }
    EXPECT_EQ(klov_cmd_parse_status2(escpos, 0x22, nullptr), KLOV_E_PARAMETER);
}

}  // namespace
