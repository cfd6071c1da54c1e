// The virtual printer's answers, as the library's own parsers read them.
#include <gtest/gtest.h>
#include <klov/klov.h>

#include <cstring>

#include "preview/answer.h"
#include "preview/reader.h"

namespace {

constexpr uint32_t some_class = 1;

using Stream = std::vector<uint8_t>;

Stream reply_to(const Stream &request, const preview::Health &health)
{
    Stream reply;
    preview::Reader reader(preview::Options{});
    reader.watch([&](const preview::Command &command) { reply = preview::answer(command, health); });
    reader.feed(request);
    return reply;
}

printer_status real_time(const preview::Health &health)
{
    printer_status status{};
    for (uint8_t n = 1; n <= 4; ++n) {
        const Stream reply = reply_to({0x10, 0x04, n}, health);
        EXPECT_EQ(reply.size(), 1U);
        EXPECT_EQ(klov_cmd_parse_real_time_status(some_class, n, reply.at(0), &status), KLOV_OK);
    }
    return status;
}

}  // namespace

TEST(Status, AHealthyPrinterReportsNoTrouble)
{
    const printer_status status = real_time({});
    EXPECT_EQ(status.cover_open, 0);
    EXPECT_EQ(status.paper_end, 0);
    EXPECT_EQ(status.paper_near_end, 0);
    EXPECT_EQ(status.drawer_pin3, 0);
}

TEST(Status, RealTimeRequestsTellPaperEndAndOpenCover)
{
    EXPECT_EQ(real_time({.paper_end = true}).paper_end, 1);
    EXPECT_EQ(real_time({.paper_end = true}).cover_open, 0);
    EXPECT_EQ(real_time({.paper_near_end = true}).paper_near_end, 1);
    EXPECT_EQ(real_time({.paper_near_end = true}).paper_end, 0);
    EXPECT_EQ(real_time({.cover_open = true}).cover_open, 1);
}

TEST(Status, AutomaticStatusIsSentWhenItIsEnabled)
{
    const Stream reply = reply_to({0x1D, 0x61, 0xFF}, {.paper_end = true, .cover_open = true});
    ASSERT_EQ(reply.size(), 4U);
    printer_status status{};
    EXPECT_EQ(klov_cmd_parse_ASB_status(some_class, reply.data(), &status), KLOV_OK);
    EXPECT_EQ(status.cover_open, 1);
    EXPECT_EQ(status.paper_end, 1);
    EXPECT_TRUE(reply_to({0x1D, 0x61, 0x00}, {}).empty());
}

TEST(Status, TransmitStatusTellsThePaper)
{
    for (const bool end : {false, true}) {
        const Stream reply = reply_to({0x1D, 0x72, 1}, {.paper_end = end});
        ASSERT_EQ(reply.size(), 1U);
        printer_status status{};
        EXPECT_EQ(klov_cmd_parse_transmit_status(some_class, 1, reply[0], &status), KLOV_OK);
        EXPECT_EQ(status.paper_end, end ? 1 : 0);
    }
}

TEST(Status, VersionIsReadableByTheParser)
{
    Stream reply = reply_to({0x1D, 0x49, 0x41}, {});
    uint32_t numbers[3] = {99, 99, 99};
    EXPECT_EQ(klov_cmd_parse_printer_version(some_class, reinterpret_cast<char *>(reply.data()), numbers, 3), KLOV_OK);
    EXPECT_EQ(numbers[0], 1U);
    EXPECT_EQ(numbers[1], 0U);
    EXPECT_EQ(numbers[2], 0U);
}

TEST(Status, QrSizeIsReadableByTheParser)
{
    Stream reply = reply_to({0x1D, 0x28, 0x6B, 3, 0, 0x31, 0x52, 0x30}, {});
    uint32_t width = 0;
    uint32_t height = 0;
    EXPECT_EQ(klov_cmd_parse_qr_code_size(some_class, reinterpret_cast<char *>(reply.data()), &width, &height),
              KLOV_OK);
    EXPECT_EQ(width, 21U);
    EXPECT_EQ(height, 21U);
}

TEST(Status, PrintingCommandsAreNotAnswered)
{
    EXPECT_TRUE(reply_to({0x1B, 0x40}, {}).empty());
    EXPECT_TRUE(reply_to({0x1D, 0x56, 66, 0}, {}).empty());
}
