// Pictures, read back with libpng.
#include "preview/painter.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <set>

#include "png_file.h"

namespace {

using Stream = std::vector<uint8_t>;

bool exists(const std::string &path)
{
    struct stat status {};
    return stat(path.c_str(), &status) == 0;
}

// Two receipts of 32 dots: a raster of 2 rows and a cut, a raster of 1 row and a feed of 4.
const Stream two_receipts = {0x1D, 0x76, 0x30, 0,    2,    0, 2, 0, 0x80, 0x01, 0xFF, 0x00, 0x1D, 0x56,
                             66,   0,    0x1D, 0x76, 0x30, 0, 1, 0, 1,    0,    0x0F, 0x1B, 0x4A, 4};

struct Painted {
    explicit Painted(preview::PictureOptions options, const Stream &stream = two_receipts, uint32_t width = 32)
        : folder(test::temporary_folder()), reader(preview::Options{.width = width})
    {
        reader.feed(stream);
        reader.finish();
        options.path = folder + "out.png";
        std::string error;
        EXPECT_TRUE(preview::paint(reader, options, {}, error)) << error;
    }
    test::Png picture(const std::string &name = "out.png") const
    {
        return test::read_png(folder + name);
    }
    std::string folder;
    preview::Reader reader;
};

void expect_dots(const test::Png &picture, const preview::Reader &reader, uint64_t first_row)
{
    for (uint32_t y = 0; y < picture.height; ++y) {
        for (uint32_t x = 0; x < picture.width; ++x) {
            ASSERT_EQ(picture.colour(x, y), reader.dot(first_row + y, x) ? 0x000000U : 0xFFFFFFU) << x << ' ' << y;
        }
    }
}

}  // namespace

TEST(BarePicture, IsOnePixelADotAndNothingElse)
{
    const Painted painted({.bare = true});
    const test::Png picture = painted.picture();
    EXPECT_EQ(picture.width, 32U);
    EXPECT_EQ(picture.height, 7U);
    EXPECT_EQ(picture.bit_depth, 1);
    EXPECT_EQ(picture.dots_a_metre, 7992U);
    EXPECT_TRUE(picture.black(0, 0));
    EXPECT_FALSE(picture.black(1, 0));
    EXPECT_TRUE(picture.black(15, 0));
    expect_dots(picture, painted.reader, 0);
}

TEST(BarePicture, TakesWidthsThatAreNoWholeBytes)
{
    const Painted painted({.bare = true}, two_receipts, 13);
    EXPECT_EQ(painted.picture().width, 13U);
    expect_dots(painted.picture(), painted.reader, 0);
}

TEST(BarePicture, WithoutAnyRowIsOneBlankRow)
{
    const Painted painted({.bare = true}, Stream{0x1B, 0x40});
    EXPECT_EQ(painted.picture().height, 1U);
    EXPECT_FALSE(painted.picture().black(0, 0));
}

TEST(SplitPicture, IsOneFileAReceipt)
{
    const Painted painted({.bare = true, .split = true});
    EXPECT_FALSE(exists(painted.folder + "out.png"));
    EXPECT_EQ(painted.picture("out-1.png").height, 2U);
    EXPECT_EQ(painted.picture("out-2.png").height, 5U);
    expect_dots(painted.picture("out-2.png"), painted.reader, 2);
    EXPECT_FALSE(exists(painted.folder + "out-3.png"));
}

TEST(SplitPicture, HasNoEmptyReceiptBehindTheLastCut)
{
    const Painted painted({.bare = true, .split = true}, Stream{0x1B, 0x4A, 9, 0x1D, 0x56, 66, 0, 0x1D, 0x56, 66, 0});
    EXPECT_EQ(painted.picture("out-1.png").height, 9U);
    EXPECT_FALSE(exists(painted.folder + "out-2.png"));
}

TEST(FramedPicture, ShowsThePaperItsCutAndAMark)
{
    const Painted painted({});
    const test::Png picture = painted.picture();
    ASSERT_GT(picture.width, 32U + 2 * 32U);
    // The ink is where the paper's rows are, and only there: count it.
    const uint32_t ink = 0x1C1C1E;
    size_t inked = 0;
    std::set<uint32_t> colours;
    for (uint32_t y = 0; y < picture.height; ++y) {
        for (uint32_t x = 0; x < picture.width; ++x) {
            inked += picture.colour(x, y) == ink ? 1U : 0U;
            colours.insert(picture.colour(x, y));
        }
    }
    EXPECT_EQ(inked, 2U + 8U + 4U);
    EXPECT_TRUE(colours.count(0xC0392B) == 1) << "no cut line";
    EXPECT_TRUE(colours.count(0x3A3A3C) == 1) << "no words beside the paper";
}

TEST(FramedPicture, ManyEventsAtOneRowGiveALimitedPicture)
{
    Stream stream;
    for (int i = 0; i < 3000; ++i) {
        stream.insert(stream.end(), {0x1B, 0x70, static_cast<uint8_t>(i % 2), static_cast<uint8_t>(i), 255});
    }
    const Painted painted({}, stream);
    EXPECT_LT(painted.picture().height, 2000U);
}

TEST(Picture, AFileThatCanNotBeWrittenIsReported)
{
    preview::Reader reader(preview::Options{.width = 32});
    reader.finish();
    std::string error;
    EXPECT_FALSE(preview::paint(reader, {.path = "/nonexistent/out.png"}, {}, error));
    EXPECT_NE(error.find("/nonexistent/out.png"), std::string::npos);
}

TEST(Picture, AFullDiskIsReported)
{
    if (!exists("/dev/full")) {
        GTEST_SKIP() << "no /dev/full";
    }
    preview::Reader reader(preview::Options{.width = 32});
    reader.feed(two_receipts);
    reader.finish();
    std::string error;
    EXPECT_FALSE(preview::paint(reader, {.path = "/dev/full"}, {}, error));
    EXPECT_FALSE(error.empty());
}

TEST(Picture, NumbersComeBeforeTheEnding)
{
    EXPECT_EQ(preview::numbered_path("a/out.png", 2), "a/out-2.png");
    EXPECT_EQ(preview::numbered_path("a.b/out", 2), "a.b/out-2");
    EXPECT_EQ(preview::numbered_path("out", 10), "out-10");
}
