// Cutting a printer's bytes into answers.
#include "talk/reply.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using talk::reply_kind;

constexpr int64_t pause_ms = 501;  // longer than an answer pauses

// What a row of bytes is read as: one letter an answer. r real-time, a automatic, o ordered, d doubtful ordered.
std::string read(talk::reply_reader &reader, const std::vector<uint8_t> &bytes, int64_t now_ms = 0)
{
    std::string letters;
    for (const uint8_t byte : bytes) {
        const talk::reply answer = talk::read_reply_byte(reader, byte, now_ms);
        switch (answer.kind) {
            case reply_kind::real_time:
                letters += 'r';
                break;
            case reply_kind::automatic:
                letters += 'a';
                break;
            case reply_kind::ordered:
                letters += answer.doubtful ? 'd' : 'o';
                break;
            default:
                break;
        }
    }
    return letters;
}

std::string read(const std::vector<uint8_t> &bytes)
{
    talk::reply_reader reader;
    return read(reader, bytes);
}

TEST(Reply, EveryFirstByteIsOneKindByItsFixedBits)
{
    for (unsigned value = 0; value < 256; value++) {
        talk::reply_reader reader;
        const auto byte = static_cast<uint8_t>(value);
        const talk::reply answer = talk::read_reply_byte(reader, byte, 0);
        SCOPED_TRACE(value);
        if ((byte & 0x93) == 0x12) {
            EXPECT_EQ(answer.kind, reply_kind::real_time);
            EXPECT_EQ(answer.bytes[0], byte);
        } else if ((byte & 0x90) == 0) {
            EXPECT_EQ(answer.kind, reply_kind::ordered);
            EXPECT_EQ(answer.bytes[0], byte);
        } else {
            EXPECT_EQ(answer.kind, reply_kind::nothing);
        }
        EXPECT_EQ(reader.held, (byte & 0x93) == 0x10 ? 1 : 0);
    }
}

TEST(Reply, AnAutomaticStatusIsFourBytes)
{
    talk::reply_reader reader;
    EXPECT_EQ(read(reader, {0x10, 0x00, 0x0F}), "");
    const talk::reply answer = talk::read_reply_byte(reader, 0x40, 0);
    ASSERT_EQ(answer.kind, reply_kind::automatic);
    EXPECT_EQ(std::vector<uint8_t>(answer.bytes, answer.bytes + 4), (std::vector<uint8_t>{0x10, 0x00, 0x0F, 0x40}));
}

TEST(Reply, EveryByteIsKeptInEveryPlaceOfAnAutomaticStatus)
{
    for (unsigned place = 1; place < 4; place++) {
        for (unsigned value = 0; value < 256; value++) {
            if ((value & 0x90) != 0) {
                continue;
            }
            std::vector<uint8_t> bytes = {0x10, 0, 0, 0};
            bytes[place] = static_cast<uint8_t>(value);
            EXPECT_EQ(read(bytes), "a") << place << " " << value;
        }
    }
}

TEST(Reply, ARealTimeStatusMayComeWithinAnAutomaticOne)
{
    EXPECT_EQ(read({0x10, 0x00, 0x12, 0x00, 0x00}), "ra");
}

TEST(Reply, AnswersFollowEachOther)
{
    EXPECT_EQ(read({0x12, 0x72, 0x10, 0x00, 0x00, 0x00, 0x00, 0x30, 0x00, 0x0F, 0x00, 0x0C}), "rraoao");
}

TEST(Reply, FlowControlIsNoAnswerAndDisturbsNone)
{
    EXPECT_EQ(read({0x13, 0x10, 0x13, 0x00, 0x11, 0x00, 0x00, 0x11, 0x00}), "ao");
}

TEST(Reply, WhatIsLeftOfADamagedAutomaticStatusIsInDoubt)
{
    EXPECT_EQ(read({0xFF, 0x00, 0x0F, 0x00}), "ddd");
    EXPECT_EQ(read({0xFF, 0x00, 0x0F, 0x00, 0x00}), "dddo") << "a fourth byte is none of it";
}

TEST(Reply, DamageWithinAnAutomaticStatusPutsTheRestInDoubt)
{
    EXPECT_EQ(read({0x10, 0x00, 0xFF, 0x00}), "d");
    EXPECT_EQ(read({0x10, 0x00, 0x10, 0x00, 0x00, 0x00}), "a") << "a new one begins";
}

TEST(Reply, DoubtEndsWithAWholeAnswerOrAPause)
{
    EXPECT_EQ(read({0xFF, 0x10, 0x00, 0x00, 0x00, 0x00}), "ao");
    talk::reply_reader reader;
    EXPECT_EQ(read(reader, {0xFF}, 0), "");
    EXPECT_EQ(read(reader, {0x00}, pause_ms), "o");
}

TEST(Reply, AnAutomaticStatusDoesNotGoOnBehindAPause)
{
    talk::reply_reader reader;
    EXPECT_EQ(read(reader, {0x10, 0x00, 0x00}, 0), "");
    EXPECT_FALSE(reader.lost_something);
    EXPECT_EQ(read(reader, {0x00}, pause_ms), "o") << "not the fourth byte";
    EXPECT_TRUE(reader.lost_something);
}

TEST(Reply, NoiseIsReportedBecauseItMayHaveBeenAnAnswer)
{
    for (const int noise : {0x80, 0x90, 0xFF, 0x37, 0x5F}) {
        talk::reply_reader reader;
        EXPECT_EQ(read(reader, {static_cast<uint8_t>(noise)}), "");
        EXPECT_TRUE(reader.lost_something) << noise;
    }
}

TEST(Reply, TheAnswerToABufferClearIsNoOrderedAnswer)
{
    talk::reply_reader reader;
    reader.expects_clear = true;
    EXPECT_EQ(read(reader, {0x37, 0x25, 0x00, 0x00}), "o") << "what follows is an answer again";
    EXPECT_FALSE(reader.lost_something);
    EXPECT_EQ(read(reader, {0x37, 0x25, 0x00}), "dd") << "nobody asked for it";
}

TEST(Reply, AClearAnswerThatBreaksOffIsGivenUp)
{
    talk::reply_reader reader;
    reader.expects_clear = true;
    EXPECT_EQ(read(reader, {0x37, 0x12, 0x12}), "rr");
    EXPECT_EQ(read(reader, {0x37}, 0), "");
    EXPECT_EQ(read(reader, {0x25}, pause_ms), "o");
}

}  // namespace
