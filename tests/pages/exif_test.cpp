// Camera notes: what is read, and that nothing outside of the block ever is.
#include "pages/exif.h"

#include "tests/pages/exif_block.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using pages_test::exif_block;

TEST(Exif, OrientationAndResolutionInBothByteOrders)
{
    for (const bool big : {false, true}) {
        for (unsigned orientation = 1; orientation <= 8; ++orientation) {
            const auto block = exif_block(big, orientation, 300, 2);
            const pages::Exif exif = pages::read_exif(block.data(), block.size());
            EXPECT_EQ(exif.orientation, orientation);
            EXPECT_EQ(exif.ppi_x, 300);
            EXPECT_EQ(exif.ppi_y, 300);
        }
    }
}

TEST(Exif, CentimetresBecomeInches)
{
    const auto block = exif_block(false, 1, 100, 3);
    EXPECT_DOUBLE_EQ(pages::read_exif(block.data(), block.size()).ppi_x, 254);
}

TEST(Exif, AUnitThatNobodyKnowsSaysNothing)
{
    const auto block = exif_block(false, 1, 100, 1);
    EXPECT_EQ(pages::read_exif(block.data(), block.size()).ppi_x, 0);
}

TEST(Exif, OrientationsThatDoNotExistTurnNothing)
{
    for (const unsigned orientation : {0U, 9U, 65535U}) {
        const auto block = exif_block(true, orientation, 300, 2);
        EXPECT_EQ(pages::read_exif(block.data(), block.size()).orientation, 1U);
    }
}

// Exact sizes on the heap, so that a sanitizer sees every byte too far.
TEST(Exif, BlocksThatEndEarlyOrLieAreHarmless)
{
    const auto block = exif_block(false, 6, 300, 2);
    for (std::size_t size = 0; size <= block.size(); ++size) {
        const std::vector<std::uint8_t> cut(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(size));
        const pages::Exif exif = pages::read_exif(cut.data(), cut.size());
        EXPECT_TRUE(exif.orientation == 1 || exif.orientation == 6);
    }
    std::mt19937 random(1);
    for (int round = 0; round < 20'000; ++round) {
        auto broken = block;
        for (int i = 0; i < 3; ++i) {
            broken[random() % broken.size()] = static_cast<std::uint8_t>(random());
        }
        const pages::Exif exif = pages::read_exif(broken.data(), broken.size());
        EXPECT_GE(exif.orientation, 1U);
        EXPECT_LE(exif.orientation, 8U);
    }
}

}  // namespace
