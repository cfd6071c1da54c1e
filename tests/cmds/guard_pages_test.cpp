// Memory that ends where the caller's buffer and data end: whatever the arguments are, no command reaches beyond. Guard
// pages see what sanitizers see, in the very code that is shipped.
#include <gtest/gtest.h>
#include <klov/klov.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "tests/cmds/every_encoder.h"

namespace {

using kit::Encoder;
using kit::Kind;

// Bytes that end at a page nobody may touch; in front of them lies another one.
class Guarded {
public:
    explicit Guarded(size_t most)
        : page_(static_cast<size_t>(sysconf(_SC_PAGESIZE))), room_((most + page_ - 1) / page_ * page_)
    {
        void *memory = mmap(nullptr, room_ + 2 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) {
            throw std::runtime_error("mmap");
        }
        start_ = static_cast<uint8_t *>(memory);
        if (mprotect(start_ + page_, room_, PROT_READ | PROT_WRITE) != 0) {
            throw std::runtime_error("mprotect");
        }
    }
    Guarded(const Guarded &) = delete;
    Guarded &operator=(const Guarded &) = delete;
    ~Guarded()
    {
        munmap(start_, room_ + 2 * page_);
    }

    // The last bytes in front of the guard.
    uint8_t *last(size_t size)
    {
        return start_ + page_ + room_ - size;
    }

private:
    size_t page_;
    size_t room_;
    uint8_t *start_ = nullptr;
};

constexpr uint32_t most_room = 5000;
constexpr uint32_t most_data = most_room + 256;

// Bytes beyond cap that the headers tell a caller to bring.
uint32_t promised_beyond(const Encoder &encoder, const std::vector<kit::Value> &values)
{
    if (encoder.is("select_character_code_table")) {
        return 36;
    }
    if (encoder.is("select_bit_image_mode")) {
        return 5;
    }
    if (encoder.is("print_and_reverse_feed_n_line")) {
        const int32_t lines = static_cast<int32_t>(values[0].number);
        return lines > 0 ? 3 * ((static_cast<uint32_t>(lines) + 254) / 255) : 0;
    }
    if (encoder.is("qr_store_the_data_in_the_symbol_storage_area")) {
        return values[1].number < most_data ? values[1].number : 0;
    }
    return 0;
}

// Counts that a caller may be mistaken about are as good as any, as long as they are refused: too large for the room,
// or for 32 bits. Some commands look at the low byte alone.
size_t data_behind(uint32_t size)
{
    return size <= most_data ? size : size & 0xFF;
}

class GuardPages : public testing::TestWithParam<size_t> {};

TEST_P(GuardPages, NoCommandReachesBeyondItsBufferAndItsData)
{
    const Encoder &encoder = kit::every_encoder()[GetParam()];
    kit::Numbers numbers(static_cast<uint32_t>(GetParam()) + 1);
    Guarded buffer(most_room + most_data + 300);
    Guarded data(most_data);
    const size_t parameters = encoder.parameters.size();
    for (int round = 0; round < 3000; round++) {
        std::vector<kit::Value> values(parameters);
        for (size_t i = 0; i < parameters; i++) {
            values[i].number = numbers.any();
        }
        if (encoder.is("print_and_reverse_feed_n_line")) {
            values[0].number %= 255 * 50;
        }
        if (encoder.is("qr_store_the_data_in_the_symbol_storage_area") && values[1].number < 0xFFFFFFF8) {
            values[1].number %= most_data;  // its count is the caller's word, up to the length that wraps
        }
        for (size_t i = 0; i < parameters; i++) {
            if (encoder.parameters[i] != Kind::data) {
                continue;
            }
            const bool counted = i + 1 < parameters;
            const uint32_t size = counted ? values[i + 1].number : values[1].number * values[2].number;
            const size_t there = data_behind(size);
            values[i].data = data.last(there);
            memset(data.last(there), static_cast<int>(numbers.below(256)), there);
        }
        const uint32_t cap = numbers.below(most_room);
        const uint32_t beyond = promised_beyond(encoder, values);
        uint32_t len = numbers.below(cap + 1);
        const uint32_t before = len;
        const uint32_t printer_class = numbers.below(8) == 0 ? numbers.any() : numbers.any() | 0x1001;

        const int32_t code = encoder.call(printer_class, values.data(), buffer.last(cap + beyond), cap, &len);
        if (code != KLOV_OK) {
            ASSERT_EQ(len, before) << encoder.name;
        } else {
            // A count of -5 to -1 takes back; nothing else does.
            ASSERT_GE(len, before) << encoder.name;
            ASSERT_LE(len, cap + beyond) << encoder.name;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EveryEncoder, GuardPages, testing::Range<size_t>(0, kit::every_encoder().size()),
                         [](const testing::TestParamInfo<size_t> &place) {
                             return std::string(kit::every_encoder()[place.param].name.substr(9));
                         });

TEST(GuardPagesOfReplies, ParsersStayWithinTheReply)
{
    kit::Numbers numbers(77);
    Guarded reply(200);
    for (int round = 0; round < 20000; round++) {
        const uint32_t printer_class = numbers.any() | (round % 4 != 0 ? 1U : 0U);
        printer_status status = {};
        for (size_t i = 0; i < 4; i++) {
            reply.last(4)[i] = static_cast<uint8_t>(round % 2 == 0 ? numbers.any() : numbers.any() & 0x6F);
        }
        reply.last(4)[0] = static_cast<uint8_t>(round % 3 == 0 ? 0x10 : numbers.any());
        klov_cmd_parse_ASB_status(printer_class, reply.last(4), &status);

        // Texts that end at the guard with their terminator, in the alphabet of the replies.
        const uint32_t length = numbers.below(80);
        char *text = reinterpret_cast<char *>(reply.last(length + 1));
        for (uint32_t i = 0; i < length; i++) {
            text[i] = "_76.0123456789 -\x1F"[numbers.below(17)];
        }
        text[length] = '\0';
        uint32_t three[3] = {};
        if (length >= 1) {
            text[0] = '_';
        }
        // The class without bit 0 reads three bytes, whatever they are: the caller brings them.
        if ((printer_class & 1) != 0 || length >= 2) {
            klov_cmd_parse_printer_version(printer_class, text, three, static_cast<int32_t>(numbers.any()));
        }
        if (length >= 2) {
            memcpy(text, "76", 2);
        }
        klov_cmd_parse_qr_code_size(printer_class, text, &three[0], &three[1]);
    }
}

TEST(GuardPagesOfReplies, TheSearchForAnImageStaysWithinItsBlock)
{
    kit::Numbers numbers(78);
    Guarded block(300);
    for (int round = 0; round < 20000; round++) {
        const uint32_t size = 8 + numbers.below(200);
        uint8_t *data = block.last(size);
        for (uint32_t i = 0; i < size; i++) {
            data[i] = static_cast<uint8_t>(numbers.any());
        }
        const uint32_t at = numbers.below(size);
        memcpy(data + at, "\x1D\x76\x30", std::min<size_t>(3, size - at));
        uint8_t m = 0;
        uint32_t out[5] = {};
        klov_cmds_find_raster_imgdata(1, data, size, &m, &out[0], &out[1], &out[2], &out[3], &out[4]);
    }
}

}  // namespace
