// What the answers say about the printer, value by value.
#include "talk/health.h"
#include "talk/words.h"

#include <gtest/gtest.h>
#include <stdlib.h>

namespace {

using talk::fault;
using talk::health;

constexpr uint8_t real_time_bits = 0x12;

uint8_t real_time(unsigned value)
{
    return static_cast<uint8_t>((value & ~0x93U) | real_time_bits);
}

fault expected_fault(unsigned bits)
{
    if ((bits & 0x20) != 0) {
        return fault::unrecoverable;
    }
    if ((bits & 0x08) != 0) {
        return fault::cutter;
    }
    return (bits & 0x44) != 0 ? fault::recoverable : fault::none;
}

TEST(Health, AnUnheardPrinterIsTakenForReady)
{
    EXPECT_TRUE(talk::can_print(health{}));
    EXPECT_EQ(health{}.drawer, talk::level::unknown);
}

TEST(Health, EveryRealTimePaperStatus)
{
    for (unsigned value = 0; value < 256; value++) {
        const uint8_t byte = real_time(value);
        health printer;
        talk::take_real_time(printer, 4, byte);
        EXPECT_EQ(talk::out_of_paper(printer), (byte & 0x60) == 0x60) << value;
        EXPECT_EQ(printer.paper_near_end, (byte & 0x0C) == 0x0C) << value;
        EXPECT_EQ(talk::can_print(printer), (byte & 0x60) != 0x60) << value;
    }
}

TEST(Health, EveryRealTimeOfflineStatus)
{
    for (unsigned value = 0; value < 256; value++) {
        const uint8_t byte = real_time(value);
        health printer;
        talk::take_real_time(printer, 2, byte);
        EXPECT_EQ(printer.cover_open, (byte & 0x04) != 0) << value;
        EXPECT_EQ(talk::out_of_paper(printer), (byte & 0x20) != 0) << value;
    }
}

TEST(Health, EveryRealTimeErrorStatus)
{
    for (unsigned value = 0; value < 256; value++) {
        const uint8_t byte = real_time(value);
        health printer;
        talk::take_real_time(printer, 3, byte);
        EXPECT_EQ(printer.error, expected_fault(byte)) << value;
    }
}

TEST(Health, TheDrawerLevel)
{
    health printer;
    talk::take_real_time(printer, 1, 0x1A);
    EXPECT_EQ(printer.drawer, talk::level::high);
    talk::take_real_time(printer, 1, 0x12);
    EXPECT_EQ(printer.drawer, talk::level::low);
    const uint8_t high[4] = {0x18, 0, 0, 0};
    talk::take_automatic(printer, high);
    EXPECT_EQ(printer.drawer, talk::level::high);
}

TEST(Health, EveryValueOfEachByteOfAnAutomaticStatus)
{
    for (unsigned place = 0; place < 4; place++) {
        for (unsigned value = 0; value < 256; value++) {
            uint8_t bytes[4] = {0x10, 0, 0, 0};
            bytes[place] = static_cast<uint8_t>(place == 0 ? (value & ~0x93U) | 0x10 : value & ~0x90U);
            health printer;
            talk::take_automatic(printer, bytes);
            SCOPED_TRACE(testing::Message() << "byte " << place << " value " << value);
            EXPECT_EQ(printer.cover_open, (bytes[0] & 0x20) != 0);
            EXPECT_EQ(printer.error, expected_fault(bytes[1]));
            EXPECT_EQ(printer.paper_near_end, (bytes[2] & 0x03) == 0x03);
            EXPECT_EQ(talk::out_of_paper(printer), (bytes[2] & 0x0C) == 0x0C);
        }
    }
}

TEST(Health, BytesThatAreNoStatusChangeNothing)
{
    health printer;
    talk::take_real_time(printer, 4, 0x6D);
    talk::take_real_time(printer, 0, 0x7E);
    talk::take_real_time(printer, 5, 0x7E);
    const uint8_t wrong[4] = {0x30, 0x08, 0x9F, 0x00};
    talk::take_automatic(printer, wrong);
    EXPECT_TRUE(talk::can_print(printer));
    EXPECT_FALSE(printer.paper_near_end);
}

TEST(Health, TheNewestAnswerCounts)
{
    health printer;
    talk::take_real_time(printer, 4, 0x7E);
    talk::take_real_time(printer, 2, 0x32);
    EXPECT_TRUE(talk::out_of_paper(printer));
    const uint8_t good[4] = {0x10, 0, 0, 0};
    talk::take_automatic(printer, good);
    EXPECT_TRUE(talk::can_print(printer)) << "also the stop by paper is over";
}

TEST(Health, PaperIsLowOnlyWhileThereIsSome)
{
    health printer;
    talk::take_real_time(printer, 4, 0x1E);
    EXPECT_TRUE(talk::paper_is_low(printer));
    EXPECT_TRUE(talk::can_print(printer));
    talk::take_real_time(printer, 4, 0x7E);
    EXPECT_FALSE(talk::paper_is_low(printer));
}

TEST(Words, AreThereInBothLanguages)
{
    for (int i = 0; i < static_cast<int>(talk::word::count); i++) {
        const auto what = static_cast<talk::word>(i);
        EXPECT_STRNE(talk::text_of(what, talk::language::english), "");
        EXPECT_STRNE(talk::text_of(what, talk::language::chinese), talk::text_of(what, talk::language::english));
    }
    EXPECT_STREQ(talk::text_of(talk::word::out_of_paper, talk::language::english), "Out of paper");
    EXPECT_STREQ(talk::text_of(talk::word::no_answer, talk::language::english), "No answer");
}

TEST(Words, TheLanguageIsThatOfTheEnvironment)
{
    struct row {
        const char *lang;
        talk::language expected;
    };
    const row rows[] = {{"zh", talk::language::chinese},          {"zh_CN.UTF-8", talk::language::chinese},
                        {"zh_CN", talk::language::chinese},       {"zh_TW.UTF-8", talk::language::english},
                        {"zh_HK", talk::language::english},       {"zhx", talk::language::english},
                        {"en_US.UTF-8", talk::language::english}, {"", talk::language::english}};
    for (const row &test : rows) {
        unsetenv("LC_ALL");
        unsetenv("LC_MESSAGES");
        setenv("LANG", test.lang, 1);
        EXPECT_EQ(talk::language_of_environment(), test.expected) << test.lang;
    }
    setenv("LANG", "zh_CN", 1);
    setenv("LC_ALL", "C", 1);
    EXPECT_EQ(talk::language_of_environment(), talk::language::english) << "LC_ALL comes first";
}

}  // namespace
