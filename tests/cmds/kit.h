// Test kit for command encoders: a command's row as data, and the checks that every encoder must pass.
//
// Most commands need one Row for each parameter in a list handed to INSTANTIATE_TEST_SUITE_P(Family, Command, ...).
// Commands with caller data or with rules of their own call check_accepted(), check_refused() and complaint() directly.
#pragma once

#include <gtest/gtest.h>
#include <klov/result.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kit {

using Bytes = std::vector<uint8_t>;

// An encoder with its parameters bound: what remains is the class and the buffer triple.
using Call = std::function<int32_t(uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len)>;

// Class word of an ordinary printer: ESC/POS-type command set and an arbitrary model identifier.
constexpr uint32_t some_class = 0x19550001;

// "1B 24 nL nH" with a value as bytes. Placeholders: n or nL low byte, nH second byte, n1 to n4 all four.
Bytes hex(std::string_view text, int32_t value = 0);

// Recognisable caller data of any length.
Bytes sample_data(size_t size);

Bytes operator+(Bytes head, const Bytes &tail);

// One call: `before` bytes are in the buffer already, `cap` is what the encoder is told; the memory really behind it
// has room for `before` bytes and the expected ones, fences on both sides.
struct Trial {
    uint32_t printer_class = some_class;
    uint32_t before = 0;
    uint32_t cap = 0;
};

struct Outcome {
    int32_t code = KLOV_OK;
    Bytes written = {};   // these bytes at buf + before, and not one byte elsewhere
    uint32_t growth = 0;  // of *len
};

Outcome accepted(Bytes bytes);
Outcome refused(int32_t code);

// Makes the call twice, over two different fills, so that a write of any value shows. Returns what went wrong, or "".
std::string complaint(const Call &call, const Trial &trial, const Outcome &expected);

// A command that its parameters allow: the bytes at any fill; -2 at every capacity below the length; success at it and
// above; a fill beyond the capacity passes; -3 without the class bit, even with a null buffer; -2 with a null buffer.
void check_accepted(const Call &call, const Bytes &bytes, uint32_t printer_class = some_class);

// A command that its parameters forbid: -1 with room for `length` bytes or more, -2 with less: the room comes first.
void check_refused(const Call &call, uint32_t length, uint32_t printer_class = some_class);

// A command whose data's length wraps with its frame: -2 at any capacity, as no buffer holds it.
void check_no_room(const Call &call, uint32_t printer_class = some_class);

// How a parameter is tested against its ranges: by its low byte, or with all its 32 bits as a signed number.
enum class Tested { low_byte, whole };

struct Range {
    int64_t first;
    int64_t last;
};

using Encode = int32_t (*)(uint32_t printer_class, int32_t value, uint8_t *buf, uint32_t cap, uint32_t *len);

struct Row {
    std::string name;
    Encode encode;                  // with one parameter, the one under test; see with<>
    const char *bytes;              // with the placeholders of hex()
    std::vector<Range> valid = {};  // none: any value
    Tested tested = Tested::low_byte;
    uint32_t printer_class = some_class;
};

// Binds the parameters of an encoder, V standing for the one under test:
// with<klov_cmd_generate_pulse, 0, V, 255> varies t1, with<klov_cmd_print_and_return_standard_mode> varies nothing.
constexpr int32_t V = 0x5EED5EED;

struct Argument {
    int32_t value;
    operator int32_t() const
    {
        return value;
    }
    operator uint32_t() const
    {
        return static_cast<uint32_t>(value);
    }
};

template <auto encode, int32_t... arguments>
int32_t with(uint32_t printer_class, [[maybe_unused]] int32_t value, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return encode(printer_class, Argument{arguments == V ? value : arguments}..., buf, cap, len);
}

// Every byte value, its aliases above and below, the edges of the ranges and of 16 and 32 bits.
std::vector<int32_t> telling_values(const Row &row);
bool is_valid(const Row &row, int32_t value);

void PrintTo(const Row &row, std::ostream *out);
std::string row_name(const testing::TestParamInfo<Row> &info);

class Command : public testing::TestWithParam<Row> {};

}  // namespace kit
