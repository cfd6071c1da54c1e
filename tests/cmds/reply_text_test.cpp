// Reply texts into numbers: the firmware version and the size of a QR symbol.
#include <gtest/gtest.h>
#include <klov/status.h>

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace {

constexpr uint32_t escpos = 0x19550001;
constexpr uint32_t keep = 0xEEEEEEEE;  // an element that must stay as it was

// A text as the tables show it: '|' for a NUL that a parser put there, '^' for the separator 1F.
std::string shown(std::string text)
{
    std::replace(text.begin(), text.end(), '\0', '|');
    std::replace(text.begin(), text.end(), '\x1F', '^');
    return text;
}

std::string sent(std::string text)
{
    std::replace(text.begin(), text.end(), '^', '\x1F');
    return text;
}

template <typename Case>
std::string case_name(const testing::TestParamInfo<Case> &info)
{
    return info.param.name;
}

// ---- Firmware version ----

using Numbers = std::vector<uint32_t>;

struct VersionCase {
    std::string name;
    std::string text;
    int32_t count;
    int32_t code;
    Numbers numbers;
    std::string text_after;
};

void PrintTo(const VersionCase &version, std::ostream *out)
{
    *out << version.name;
}

class ParsePrinterVersion : public testing::TestWithParam<VersionCase> {};

TEST_P(ParsePrinterVersion, ReadsTheReplyOfAnEscposPrinter)
{
    const VersionCase &version = GetParam();
    for (const uint32_t printer_class : {escpos, 0x1U, 0x7U, 0xFFFFFFFFU}) {
        std::string text = version.text;
        Numbers numbers = {keep, keep, keep};
        EXPECT_EQ(klov_cmd_parse_printer_version(printer_class, text.data(), numbers.data(), version.count),
                  version.code);
        EXPECT_EQ(numbers, version.numbers);
        EXPECT_EQ(shown(text), version.text_after);
    }
}

const std::string zeros_57(57, '0');

const VersionCase version_cases[] = {
    {"three_numbers", "_1.2.30 ", 3, KLOV_OK, {1, 2, 30}, "_1|2|30|"},
    {"text_after_the_space", "_1.2.30 beta.4 ", 3, KLOV_OK, {1, 2, 30}, "_1|2|30|beta.4 "},

    // The count is asked after an element is stored, so one element more than the count is read.
    {"count_0_reads_one", "_1.2.30 ", 0, KLOV_OK, {1, keep, keep}, "_1|2.30 "},
    {"count_1_reads_two", "_1.2.30 ", 1, KLOV_OK, {1, 2, keep}, "_1|2|30 "},
    {"count_2_reads_three", "_1.2.30 ", 2, KLOV_OK, {1, 2, 30}, "_1|2|30|"},
    {"count_4_reads_three", "_1.2.30 ", 4, KLOV_OK, {1, 2, 30}, "_1|2|30|"},
    {"negative_count_reads_one", "_1.2.30 ", -1, KLOV_OK, {1, keep, keep}, "_1|2.30 "},
    {"count_stops_at_a_missing_separator_too", "_7 ", 0, KLOV_OK, {keep, keep, keep}, "_7 "},

    // A number above 254 is no version number; what was read before it stays.
    {"second_number_255", "_3.255.1 ", 3, KLOV_OK, {3, keep, keep}, "_3|255|1 "},
    {"first_number_255", "_255.1.1 ", 3, KLOV_OK, {keep, keep, keep}, "_255|1.1 "},
    {"third_number_255", "_1.2.255 ", 3, KLOV_OK, {1, 2, keep}, "_1|2|255|"},
    {"numbers_254", "_254.254.254 ", 3, KLOV_OK, {254, 254, 254}, "_254|254|254|"},
    {"huge_number", "_99999999999.1.1 ", 3, KLOV_OK, {keep, keep, keep}, "_99999999999|1.1 "},

    // Compared as signed numbers, kept as their two's complement.
    {"negative_numbers", "_-1.-300.-9 ", 3, KLOV_OK, {0xFFFFFFFF, 0xFFFFFED4, 0xFFFFFFF7}, "_-1|-300|-9|"},
    {"huge_negative_number", "_-99999999999.0.0 ", 3, KLOV_OK, {0x80000000, 0, 0}, "_-99999999999|0|0|"},

    // Without its separator an element stays, and the next one is read from the same place.
    {"no_space", "_1.2.30", 3, KLOV_OK, {1, 2, keep}, "_1|2|30"},
    {"one_dot", "_1.2 ", 3, KLOV_OK, {1, keep, 2}, "_1|2|"},
    {"no_dot", "_9 ", 3, KLOV_OK, {keep, keep, 9}, "_9|"},
    {"no_separator", "_9", 3, KLOV_OK, {keep, keep, keep}, "_9"},
    {"space_before_the_dot", "_1 2.3.4", 3, KLOV_OK, {1, 3, keep}, "_1 2|3|4"},
    {"underscore_alone", "_", 3, KLOV_OK, {keep, keep, keep}, "_"},

    {"no_digits_are_0", "_a.. ", 3, KLOV_OK, {0, 0, 0}, "_a|||"},
    {"blanks_and_signs", "_ 7.+8.009x ", 3, KLOV_OK, {7, 8, 9}, "_ 7|+8|009x|"},

    {"empty", "", 3, KLOV_E_REPLY_FORMAT, {keep, keep, keep}, ""},
    {"no_underscore", "1.2.30 ", 3, KLOV_E_REPLY_FORMAT, {keep, keep, keep}, "1.2.30 "},
    {"underscore_later", " _1.2.30 ", 3, KLOV_E_REPLY_FORMAT, {keep, keep, keep}, " _1.2.30 "},
    {"64_characters", "_" + zeros_57 + "5.1.1 ", 3, KLOV_OK, {5, 1, 1}, "_" + zeros_57 + "5|1|1|"},
    {"65_characters",
     "_0" + zeros_57 + "5.1.1 ",
     3,
     KLOV_E_REPLY_FORMAT,
     {keep, keep, keep},
     "_0" + zeros_57 + "5.1.1 "},
};

INSTANTIATE_TEST_SUITE_P(Reply, ParsePrinterVersion, testing::ValuesIn(version_cases), case_name<VersionCase>);

TEST(PrinterVersionReply, NullTextIsNoReply)
{
    Numbers numbers = {keep, keep, keep};
    EXPECT_EQ(klov_cmd_parse_printer_version(escpos, nullptr, numbers.data(), 3), KLOV_E_REPLY_FORMAT);
    EXPECT_EQ(klov_cmd_parse_printer_version(0x2, nullptr, numbers.data(), 3), KLOV_E_REPLY_FORMAT);
    EXPECT_EQ(numbers, (Numbers{keep, keep, keep}));
}

TEST(PrinterVersionReply, IsNotReadWithClassBit2)
{
    for (const uint32_t printer_class : {0x4U, 0x6U, 0xFFFFFFFEU}) {
        char text[] = "_1.2.30 ";
        Numbers numbers = {keep, keep, keep};
        EXPECT_EQ(klov_cmd_parse_printer_version(printer_class, text, numbers.data(), 3), KLOV_OK);
        EXPECT_EQ(klov_cmd_parse_printer_version(printer_class, nullptr, numbers.data(), 3), KLOV_OK);
        EXPECT_EQ(numbers, (Numbers{keep, keep, keep}));
        EXPECT_STREQ(text, "_1.2.30 ");
    }
}

TEST(PrinterVersionReply, GivesItsFirstBytesWithClassBit1Alone)
{
    struct {
        int32_t count;
        Numbers numbers;
    } const cases[] = {
        {-1, {0x31, keep, keep}}, {0, {0x31, keep, keep}}, {1, {0x31, 0x80, keep}},
        {2, {0x31, 0x80, 0xFF}},  {3, {0x31, 0x80, 0xFF}}, {99, {0x31, 0x80, 0xFF}},
    };
    for (const auto &expected : cases) {
        for (const uint32_t printer_class : {0x2U, 0xFFFFFFFAU}) {
            char text[] = "1\x80\xFF.4";
            Numbers numbers = {keep, keep, keep};
            EXPECT_EQ(klov_cmd_parse_printer_version(printer_class, text, numbers.data(), expected.count), KLOV_OK);
            EXPECT_EQ(numbers, expected.numbers);
            EXPECT_STREQ(text, "1\x80\xFF.4");
        }
    }
}

// The bytes are a version, not a text: a 0 among them is a number.
TEST(PrinterVersionReply, GivesZeroBytesToo)
{
    char text[] = {2, 0, 5};
    Numbers numbers = {keep, keep, keep};
    EXPECT_EQ(klov_cmd_parse_printer_version(0x2, text, numbers.data(), 3), KLOV_OK);
    EXPECT_EQ(numbers, (Numbers{2, 0, 5}));
}

TEST(PrinterVersionReply, NeedsOneOfTheThreeClassBits)
{
    for (const uint32_t printer_class : {0U, 0x8U, 0xFFFFFFF8U}) {
        char text[] = "_1.2.30 ";
        Numbers numbers = {keep, keep, keep};
        EXPECT_EQ(klov_cmd_parse_printer_version(printer_class, text, numbers.data(), 3), KLOV_E_MODEL_TYPE);
        EXPECT_EQ(klov_cmd_parse_printer_version(printer_class, nullptr, numbers.data(), 3), KLOV_E_MODEL_TYPE);
        EXPECT_EQ(numbers, (Numbers{keep, keep, keep}));
        EXPECT_STREQ(text, "_1.2.30 ");
    }
}

// The reply buffer of 65 bytes is looked at no further, terminated or not.
TEST(PrinterVersionReply, OfTooManyCharactersIsNotReadPastTheLimit)
{
    std::vector<char> text(65, '_');
    Numbers numbers = {keep, keep, keep};
    EXPECT_EQ(klov_cmd_parse_printer_version(escpos, text.data(), numbers.data(), 3), KLOV_E_REPLY_FORMAT);
}

// ---- Size of a QR symbol ----

struct SizeCase {
    std::string name;
    std::string text;
    int32_t code;
    uint32_t first;
    uint32_t second;
    std::string text_after;
};

void PrintTo(const SizeCase &size, std::ostream *out)
{
    *out << size.name;
}

class ParseQrCodeSize : public testing::TestWithParam<SizeCase> {};

TEST_P(ParseQrCodeSize, ReadsTheReply)
{
    const SizeCase &size = GetParam();
    std::string text = sent(size.text);
    uint32_t first = keep;
    uint32_t second = keep;
    EXPECT_EQ(klov_cmd_parse_qr_code_size(escpos, text.data(), &first, &second), size.code);
    EXPECT_EQ(first, size.first);
    EXPECT_EQ(second, size.second);
    EXPECT_EQ(shown(text), size.text_after);
}

const SizeCase size_cases[] = {
    {"two_numbers", "7621^21^", KLOV_OK, 21, 21, "7621|21|"},
    {"different_numbers", "76177^25^", KLOV_OK, 177, 25, "76177|25|"},
    {"rest_is_not_read", "7621^25^1^0", KLOV_OK, 21, 25, "7621|25|1^0"},
    {"numbers_above_a_byte", "7665536^300^", KLOV_OK, 65536, 300, "7665536|300|"},
    {"negative_numbers", "76-1^-2^", KLOV_OK, 0xFFFFFFFF, 0xFFFFFFFE, "76-1|-2|"},
    {"no_digits_are_0", "76^x^", KLOV_OK, 0, 0, "76|x|"},
    {"18_characters", "7612345678^12345^x", KLOV_OK, 12345678, 12345, "7612345678|12345|x"},
    {"19_characters", "7612345678^123456^x", KLOV_E_REPLY_FORMAT, keep, keep, "7612345678^123456^x"},
    {"second_separator_missing", "7621^25", KLOV_E_REPLY_FORMAT, 21, keep, "7621|25"},
    {"no_separator", "762125", KLOV_E_REPLY_FORMAT, keep, keep, "762125"},
    {"head_alone", "76", KLOV_E_REPLY_FORMAT, keep, keep, "76"},
    {"half_a_head", "7", KLOV_E_REPLY_FORMAT, keep, keep, "7"},
    {"empty", "", KLOV_E_REPLY_FORMAT, keep, keep, ""},
    {"another_head", "7721^21^", KLOV_E_REPLY_FORMAT, keep, keep, "7721^21^"},
    {"head_later", " 7621^21^", KLOV_E_REPLY_FORMAT, keep, keep, " 7621^21^"},
};

INSTANTIATE_TEST_SUITE_P(Reply, ParseQrCodeSize, testing::ValuesIn(size_cases), case_name<SizeCase>);

TEST(QrCodeSizeReply, NullTextIsNoReply)
{
    uint32_t first = keep;
    uint32_t second = keep;
    EXPECT_EQ(klov_cmd_parse_qr_code_size(escpos, nullptr, &first, &second), KLOV_E_REPLY_FORMAT);
    EXPECT_EQ(first, keep);
    EXPECT_EQ(second, keep);
}

TEST(QrCodeSizeReply, NeedsTheClassBit)
{
    for (const uint32_t printer_class : {0U, 0x6U, 0xFFFFFFFEU}) {
        std::string text = sent("7621^21^");
        uint32_t first = keep;
        uint32_t second = keep;
        EXPECT_EQ(klov_cmd_parse_qr_code_size(printer_class, text.data(), &first, &second), KLOV_E_MODEL_TYPE);
        EXPECT_EQ(klov_cmd_parse_qr_code_size(printer_class, nullptr, &first, &second), KLOV_E_MODEL_TYPE);
        EXPECT_EQ(first, keep);
        EXPECT_EQ(second, keep);
        EXPECT_EQ(shown(text), "7621^21^");
    }
}

}  // namespace
