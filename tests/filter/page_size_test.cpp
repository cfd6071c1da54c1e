// What the page size's name and its imageable area make of strips and width.
#include "filter/options.h"
#include "tests/filter/ppd_text.h"
#include "tests/printops/kit.h"

#include <gtest/gtest.h>

using namespace kit;

namespace {

struct Geometry {
    int32_t width;
    int32_t height;
};

bool operator==(const Geometry &one, const Geometry &other)
{
    return one.width == other.width && one.height == other.height;
}

void PrintTo(const Geometry &geometry, std::ostream *out)
{
    *out << geometry.width << " bytes, " << geometry.height << " rows";
}

Geometry read(const Ppd &ppd, const char *job)
{
    const MemoryFile file(ppd.text());
    const PpdInEnvironment environment(file.path());
    Device device;
    observe([&] { get_options(&device.dev, job); });
    return {device.options.printer_width, device.options.max_render_height};
}

Ppd with_sizes(std::vector<PpdSize> sizes, const std::string &default_size = "")
{
    Ppd ppd;
    ppd.sizes = std::move(sizes);
    ppd.default_size = default_size;
    return ppd;
}

TEST(PageSize, NowhereKeepsTheModelsWidthAndFourteenRows)
{
    EXPECT_EQ(read({}, ""), (Geometry{48, 14}));
    EXPECT_EQ(read({.short_nick_name = "QX-100"}, ""), (Geometry{72, 14}));
}

TEST(PageSize, TheNamesNumberMakesTheStripAndTheAreaTheWidth)
{
    EXPECT_EQ(read(with_sizes({{"72x200", "0 0 204 567"}}, "72x200"), ""), (Geometry{72, 14}));
    EXPECT_EQ(read(with_sizes({{"48x200", "0 0 204 567"}}, "48x200"), ""), (Geometry{72, 21}));
}

TEST(PageSize, TheJobsSizeGoesBeforeThePpds)
{
    const Ppd ppd = with_sizes({{"72x200", "0 0 204 567"}, {"100x9", "0 0 136 567"}}, "72x200");
    EXPECT_EQ(read(ppd, "PageSize=100x9"), (Geometry{48, 10}));
}

// (204 / 72 x 203 + 7) / 8 = 72.77
TEST(PageSize, TheRightEdgeIsRoundedUpToABitAndDownToAByte)
{
    struct {
        const char *area;
        int32_t width;
    } const table[] = {{"0 0 204 567", 72},   {"0 0 204.31 567", 72},     {"0 0 136 567", 48}, {"0 0 0 567", 0},
                       {"0 0 0.3 567", 0},    {"0 0 0.5 567", 1},         {"9 0 204 567", 72}, {"0 0 842 567", 297},
                       {"0 0 -100 567", -34}, {"0 0 1e12 567", INT32_MIN}};
    for (const auto &row : table) {
        EXPECT_EQ(read(with_sizes({{"72x200", row.area}}, "72x200"), "").width, row.width) << row.area;
    }
}

TEST(PageSize, TheResolutionCountsForTheWidth)
{
    Ppd ppd = with_sizes({{"72x200", "0 0 204 567"}}, "72x200");
    EXPECT_EQ(read(ppd, "Resolution=300dpi").width, 107);
    EXPECT_EQ(read(ppd, "Resolution=0").width, 0);
    ppd.options = {{"Resolution", "180dpi", {"180dpi"}}};
    EXPECT_EQ(read(ppd, "").width, 64);
}

TEST(PageSize, ANameWithoutANumberKeepsTheStripHeight)
{
    EXPECT_EQ(read(with_sizes({{"Receipt", "0 0 204 567"}}, "Receipt"), ""), (Geometry{72, 14}));
}

TEST(PageSize, ASizeThatThePpdDoesNotKnowKeepsTheNamesNumber)
{
    const Ppd ppd = with_sizes({{"72x200", "0 0 204 567"}}, "72x200");
    EXPECT_EQ(read(ppd, "PageSize=64x100"), (Geometry{64, 16}));
    EXPECT_EQ(read(ppd, "PageSize=Unknown"), (Geometry{0, 14}));
    EXPECT_EQ(read(ppd, "PageSize=''"), (Geometry{0, 14}));
    EXPECT_EQ(read({}, "PageSize=64x100"), (Geometry{64, 16}));
}

TEST(PageSize, OddNumbersDivideAsTheyAre)
{
    EXPECT_EQ(read({}, "PageSize=2000"), (Geometry{2000, 0}));
    EXPECT_EQ(read({}, "PageSize=1024"), (Geometry{1024, 1}));
    EXPECT_EQ(read({}, "PageSize=3"), (Geometry{3, 341}));
    EXPECT_EQ(read({}, "PageSize=-5"), (Geometry{-5, -204}));
    EXPECT_EQ(read({}, "PageSize=-99999999999"), (Geometry{INT32_MIN, 0}));
}

// A size that is in the PPD counts as found, whatever it lacks.
TEST(PageSize, ASizeWithoutAnImageableAreaHasNoWidth)
{
    EXPECT_EQ(read(with_sizes({{"72x200", ""}}, "72x200"), ""), (Geometry{0, 14}));
}

TEST(PageSize, NamesCompareWithoutCase)
{
    EXPECT_EQ(read(with_sizes({{"72w200h", "0 0 136 567"}}), "pagesize=72W200H"), (Geometry{48, 14}));
}

// 300 points less the margin of 9.
TEST(PageSize, CustomSizesHaveNoNumberButAWidth)
{
    Ppd ppd = with_sizes({{"72x200", "0 0 204 567"}}, "72x200");
    ppd.custom_sizes = true;
    EXPECT_EQ(read(ppd, "PageSize=Custom.300x500"), (Geometry{103, 14}));
    EXPECT_EQ(read(ppd, "PageSize=Custom.80x120mm"), (Geometry{77, 14}));
}

TEST(PageSize, CustomSizesAreUnknownWhereThePpdForbidsThem)
{
    EXPECT_EQ(read(with_sizes({{"72x200", "0 0 204 567"}}, "72x200"), "PageSize=Custom.300x500"), (Geometry{0, 14}));
}

}  // namespace
