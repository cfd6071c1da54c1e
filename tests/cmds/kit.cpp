// The checks behind kit.h, and the two tests that every row passes.
#include "tests/cmds/kit.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <ostream>
#include <stdexcept>

namespace kit {

namespace {

constexpr uint32_t fence = 32;

uint8_t byte_of(int32_t value, int index)
{
    return static_cast<uint8_t>(static_cast<uint32_t>(value) >> (8 * index));
}

uint8_t byte_of_token(std::string_view token, int32_t value)
{
    if (token == "n" || token == "nL" || token == "n1") {
        return byte_of(value, 0);
    }
    if (token == "nH" || token == "n2") {
        return byte_of(value, 1);
    }
    if (token == "n3" || token == "n4") {
        return byte_of(value, token == "n3" ? 2 : 3);
    }
    uint8_t byte = 0;
    const auto [end, error] = std::from_chars(token.begin(), token.end(), byte, 16);
    if (token.size() != 2 || error != std::errc() || end != token.end()) {
        throw std::invalid_argument("not a byte: " + std::string(token));
    }
    return byte;
}

std::string text_of(const Bytes &bytes)
{
    std::string text;
    for (const uint8_t byte : bytes) {
        const char digits[] = "0123456789ABCDEF";
        text += {digits[byte >> 4], digits[byte & 15], ' '};
        if (text.size() > 300) {
            return text + "...";
        }
    }
    return text;
}

std::string complaint_over(uint8_t fill, const Call &call, const Trial &trial, const Outcome &expected)
{
    Bytes memory(fence + trial.before + expected.written.size() + fence, fill);
    Bytes wanted = memory;
    std::copy(expected.written.begin(), expected.written.end(), wanted.begin() + fence + trial.before);

    uint32_t len = trial.before;
    const int32_t code = call(trial.printer_class, memory.data() + fence, trial.cap, &len);

    std::string problem;
    if (code != expected.code) {
        problem += " result " + std::to_string(code) + " instead of " + std::to_string(expected.code) + ";";
    }
    if (len != trial.before + expected.growth) {
        problem +=
            " *len " + std::to_string(len) + " instead of " + std::to_string(trial.before + expected.growth) + ";";
    }
    if (memory != wanted) {
        problem += " memory " + text_of(memory) + "instead of " + text_of(wanted) + ";";
    }
    if (!problem.empty()) {
        problem = "class " + std::to_string(trial.printer_class) + ", *len " + std::to_string(trial.before) + ", cap " +
                  std::to_string(trial.cap) + ":" + problem;
    }
    return problem;
}

// All capacities of a short command, the telling ones of a long one.
std::vector<uint32_t> capacities_below(uint32_t length)
{
    std::vector<uint32_t> below;
    for (uint32_t capacity = 0; capacity < length; capacity++) {
        if (capacity < 300 || capacity + 3 > length) {
            below.push_back(capacity);
        }
    }
    return below;
}

void check_class_and_null(const Call &call, uint32_t printer_class, uint32_t length)
{
    for (const uint32_t other : {printer_class & ~1U, 0U, 0xFFFFFFFEU}) {
        EXPECT_EQ(complaint(call, {other, 3, 3 + length}, refused(KLOV_E_MODEL_TYPE)), "");
        EXPECT_EQ(complaint(call, {other, 3, 3}, refused(KLOV_E_MODEL_TYPE)), "");
        uint32_t len = 3;
        EXPECT_EQ(call(other, nullptr, 3 + length, &len), KLOV_E_MODEL_TYPE);
        EXPECT_EQ(len, 3U);
    }
    uint32_t len = 3;
    EXPECT_EQ(call(printer_class, nullptr, 1000 + length, &len), KLOV_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(len, 3U);
}

}  // namespace

Bytes hex(std::string_view text, int32_t value)
{
    Bytes bytes;
    while (!text.empty()) {
        const size_t end = std::min(text.find(' '), text.size());
        if (end > 0) {
            bytes.push_back(byte_of_token(text.substr(0, end), value));
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return bytes;
}

Bytes sample_data(size_t size)
{
    Bytes data(size);
    uint32_t state = 12345;
    for (uint8_t &byte : data) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<uint8_t>(state >> 24);
    }
    return data;
}

Bytes operator+(Bytes head, const Bytes &tail)
{
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

Outcome accepted(Bytes bytes)
{
    const uint32_t growth = static_cast<uint32_t>(bytes.size());
    return {KLOV_OK, std::move(bytes), growth};
}

Outcome refused(int32_t code)
{
    return {code};
}

std::string complaint(const Call &call, const Trial &trial, const Outcome &expected)
{
    const std::string first = complaint_over(0xA5, call, trial, expected);
    return first.empty() ? complaint_over(0x5A, call, trial, expected) : first;
}

void check_accepted(const Call &call, const Bytes &bytes, uint32_t printer_class)
{
    const uint32_t length = static_cast<uint32_t>(bytes.size());
    for (const uint32_t before : {0U, 1U, 17U}) {
        for (const uint32_t room : capacities_below(length)) {
            EXPECT_EQ(complaint(call, {printer_class, before, before + room}, refused(KLOV_E_BUFFER_TOO_SMALL)), "");
        }
        for (const uint32_t cap : {before + length, before + length + 1, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
            EXPECT_EQ(complaint(call, {printer_class, before, cap}, accepted(bytes)), "");
        }
    }
    for (const uint32_t cap : {0U, 16U}) {
        EXPECT_EQ(complaint(call, {printer_class, 17, cap}, accepted(bytes)), "") << "*len beyond cap wraps";
    }
    check_class_and_null(call, printer_class, length);
}

void check_refused(const Call &call, uint32_t length, uint32_t printer_class)
{
    for (const uint32_t before : {0U, 17U}) {
        for (const uint32_t cap : {before + length, before + length + 1, 0xFFFFFFFFU}) {
            EXPECT_EQ(complaint(call, {printer_class, before, cap}, refused(KLOV_E_PARAMETER)), "");
        }
        for (const uint32_t room : capacities_below(length)) {
            EXPECT_EQ(complaint(call, {printer_class, before, before + room}, refused(KLOV_E_BUFFER_TOO_SMALL)), "");
        }
    }
    EXPECT_EQ(complaint(call, {printer_class, 17, 16}, refused(KLOV_E_PARAMETER)), "") << "*len beyond cap wraps";
    check_class_and_null(call, printer_class, length);
}

void check_no_room(const Call &call, uint32_t printer_class)
{
    for (const uint32_t cap : {0U, 17U, 18U, 100U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        EXPECT_EQ(complaint(call, {printer_class, 17, cap}, refused(KLOV_E_BUFFER_TOO_SMALL)), "");
    }
    check_class_and_null(call, printer_class, 0);
}

std::vector<int32_t> telling_values(const Row &row)
{
    constexpr int32_t lowest = std::numeric_limits<int32_t>::min();
    constexpr int32_t highest = std::numeric_limits<int32_t>::max();
    std::vector<int32_t> values = {32767, 32768, -32768, -32769, 65535, 65536, 65537};
    for (int32_t byte = 0; byte < 256; byte++) {
        for (const int32_t alias : {0, 256, -256, 65536, lowest, highest - 255}) {
            values.push_back(alias + byte);
        }
    }
    for (const Range &range : row.valid) {
        for (const int64_t edge : {range.first - 1, range.first, range.last, range.last + 1}) {
            values.push_back(static_cast<int32_t>(std::clamp<int64_t>(edge, lowest, highest)));
        }
    }
    return values;
}

bool is_valid(const Row &row, int32_t value)
{
    const int64_t tested = row.tested == Tested::low_byte ? byte_of(value, 0) : value;
    const auto holds = [tested](const Range &range) { return tested >= range.first && tested <= range.last; };
    return row.valid.empty() || std::any_of(row.valid.begin(), row.valid.end(), holds);
}

void PrintTo(const Row &row, std::ostream *out)
{
    *out << row.bytes;
}

std::string row_name(const testing::TestParamInfo<Row> &info)
{
    return info.param.name;
}

namespace {

Call bind(const Row &row, int32_t value)
{
    return [encode = row.encode, value](uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return encode(printer_class, value, buf, cap, len);
    };
}

}  // namespace

TEST_P(Command, WritesItsBytesForEveryValueInRangeAndRefusesAllOthers)
{
    const Row &row = GetParam();
    for (const int32_t value : telling_values(row)) {
        const Bytes bytes = hex(row.bytes, value);
        const Outcome expected = is_valid(row, value) ? accepted(bytes) : refused(KLOV_E_PARAMETER);
        const Trial trial = {row.printer_class, 5, 5 + static_cast<uint32_t>(bytes.size())};
        ASSERT_EQ(complaint(bind(row, value), trial, expected), "") << "value " << value;
    }
}

TEST_P(Command, KeepsTheContractOfRoomClassAndNullBuffer)
{
    const Row &row = GetParam();
    const std::vector<int32_t> values = telling_values(row);
    const auto in_range = std::find_if(values.begin(), values.end(), [&](int32_t v) { return is_valid(row, v); });
    ASSERT_NE(in_range, values.end());
    check_accepted(bind(row, *in_range), hex(row.bytes, *in_range), row.printer_class);

    const auto outside = std::find_if(values.begin(), values.end(), [&](int32_t v) { return !is_valid(row, v); });
    EXPECT_EQ(outside == values.end(), row.valid.empty());
    if (outside != values.end()) {
        check_refused(bind(row, *outside), static_cast<uint32_t>(hex(row.bytes).size()), row.printer_class);
    }
}

}  // namespace kit
