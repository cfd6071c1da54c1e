// The splitter for list texts.
#include <gtest/gtest.h>
#include <klov/model.h>

#include <string>
#include <vector>

#include "model/instance.h"

namespace {

constexpr int32_t skip_blanks = 1;
constexpr int32_t trim_blanks = 2;

std::vector<std::string> split(std::string text, int32_t separator, int32_t flags)
{
    std::vector<std::string> items;
    int32_t position = 0;
    while (const char *item = get_item(text.data(), &position, separator, flags)) {
        items.emplace_back(item);
    }
    EXPECT_EQ(position, static_cast<int32_t>(text.size()));
    return items;
}

using items = std::vector<std::string>;

}  // namespace

TEST(GetItem, SplitsInPlace)
{
    EXPECT_EQ(split("a,bc,,d", ',', 0), (items{"a", "bc", "", "d"}));
    EXPECT_EQ(split("alone", ',', 0), (items{"alone"}));
    EXPECT_EQ(split("closed,", ',', 0), (items{"closed"}));
    EXPECT_EQ(split("", ',', 0), items{});
}

TEST(GetItem, ReadsTheFontList)
{
    const items fonts = split(FONTS_DEFAULT, ';', 0);
    ASSERT_EQ(fonts.size(), 2U);
    EXPECT_EQ(split(fonts[0], ',', 0), (items{"A", "12", "24", "242", "311", "318", "437", "720", "850", "860", "863",
                                              "865", "866", "852", "858"}));
    EXPECT_EQ(split(fonts[1], ',', 0), (items{"B", "9", "17", "242", "311", "318", "437", "850", "860", "863", "865",
                                              "866", "852", "858", "1252"}));
}

TEST(GetItem, SkipsBlanksInFrontOnRequest)
{
    EXPECT_EQ(split("  a,  b", ',', 0), (items{"  a", "  b"}));
    EXPECT_EQ(split("  a,  b", ',', skip_blanks), (items{"a", "b"}));
    EXPECT_EQ(split("a, ", ',', skip_blanks), (items{"a", ""}));
    EXPECT_EQ(split("\ta", ',', skip_blanks), (items{"\ta"})) << "a tab is not a blank";
}

// The byte before the next position is the separator that has just become a terminator, so there is nothing to trim;
// lists in the field hold names that end in blanks.
TEST(GetItem, TrimsOnlyTheLastItem)
{
    EXPECT_EQ(split("a  ,b  ,c  ", ',', trim_blanks), (items{"a  ", "b  ", "c"}));
    EXPECT_EQ(split(" a , b ", ',', skip_blanks | trim_blanks), (items{"a ", "b"}));
    EXPECT_EQ(split("a,  ", ',', trim_blanks), (items{"a", ""}));
}

TEST(GetItem, TrimmingStopsAtTheStartOfTheText)
{
    std::string guarded = "    ";
    int32_t position = 0;
    EXPECT_STREQ(get_item(guarded.data() + 2, &position, ',', trim_blanks), "");
    EXPECT_EQ(position, 2);
    EXPECT_EQ(guarded, std::string("  \0\0", 4));
}

TEST(GetItem, OnlyTheSeparatorsLowByteCounts)
{
    EXPECT_EQ(split("a,b", 0x12300 + ',', 0), (items{"a", "b"}));
    EXPECT_EQ(split("a,b", 0x12300, 0), (items{"a,b"})) << "a separator of 0 never separates";
    EXPECT_EQ(split("a\xE9"
                    "b",
                    0xE9, 0),
              (items{"a", "b"}));
}

TEST(GetItem, StaysAtTheEnd)
{
    char text[] = "a";
    int32_t position = 0;
    EXPECT_STREQ(get_item(text, &position, ',', 0), "a");
    EXPECT_EQ(get_item(text, &position, ',', 0), nullptr);
    EXPECT_EQ(get_item(text, &position, ',', 0), nullptr);
    EXPECT_EQ(position, 1);
}
