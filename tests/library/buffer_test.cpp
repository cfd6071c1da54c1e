// klov.hpp: what it adds to the functions, and that nothing overruns, whatever the arguments are.
#include <gtest/gtest.h>
#include <klov/klov.hpp>

#include <climits>

namespace {

std::vector<uint8_t> bytes(std::initializer_list<int> values)
{
    return {values.begin(), values.end()};
}

TEST(Buffer, AddsCommandsAndTextInTheirOrder)
{
    klov::buffer job("QX-100");
    job.add(klov_cmd_initialize_printer).add(klov_cmd_select_justification, KLOV_JUSTIFY_CENTRE).text("Hi\n");
    job.add(klov_cmd_print_bar_code, KLOV_BAR_CODE128, klov::data("{B4"));
    EXPECT_EQ(job.bytes(), bytes({0x1B, 0x40, 0x1B, 0x61, 1, 'H', 'i', '\n', 0x1D, 0x6B, 73, 3, '{', 'B', '4'}));
}

TEST(Buffer, TellsARefusalByExceptionOrByCodeAndAddsNothing)
{
    klov::buffer job(0x1);
    job.text("x");
    try {
        job.add(klov_cmd_select_justification, 7);
        FAIL();
    } catch (const klov::error &error) {
        EXPECT_EQ(error.code(), KLOV_E_PARAMETER);
        EXPECT_STREQ(error.what(), "Parameter is error. Please check the parameter is corrected.");
    }
    EXPECT_EQ(job.try_add(klov_cmd_select_justification, 7), KLOV_E_PARAMETER);
    EXPECT_EQ(klov::buffer(0x40).try_add(klov_cmd_initialize_printer), KLOV_E_MODEL_TYPE);
    EXPECT_EQ(job.size(), 1U);
    EXPECT_THROW(klov::buffer("no such model"), klov::error);
}

TEST(Buffer, BringsTheRoomOfCommandsThatDoNotAskForIt)
{
    klov::buffer job(0x1);
    job.add(klov_cmd_qr_store_the_data_in_the_symbol_storage_area, klov::data(std::string(60000, 'q')));
    EXPECT_EQ(job.size(), 60008U);
    job.clear();
    job.add(klov_cmd_select_character_code_table, 5, 1);
    EXPECT_EQ(job.size(), 36U);
    job.clear();
    job.add(klov_cmd_select_bit_image_mode, 0, 10, klov::data(static_cast<const uint8_t *>(nullptr), 10));
    EXPECT_EQ(job.size(), 15U);
}

TEST(Buffer, FeedsAnyDistanceBothWays)
{
    for (const int32_t n : {0, 1, 254, 255, 256, 600, 40000, 1000000}) {
        klov::buffer job(0x1);
        job.add(klov_cmd_print_and_feed_paper, n);
        EXPECT_EQ(job.size(), n == 0 ? 3U : 3U * ((static_cast<uint32_t>(n) + 254) / 255)) << n;
        job.clear();
        job.add(klov_cmd_print_and_reverse_feed_n_line, n);
        int32_t lines = 0;
        for (size_t i = 0; i < job.size(); i += 3) {
            ASSERT_EQ(job.data()[i], 0x1B);
            ASSERT_EQ(job.data()[i + 1], 0x65);
            lines += job.data()[i + 2];
        }
        EXPECT_EQ(lines, n);
    }
    klov::buffer job(0x1);
    EXPECT_EQ(job.try_add(klov_cmd_print_and_feed_paper, INT_MIN), KLOV_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(job.try_add(klov_cmd_print_and_reverse_feed_n_line, INT_MIN), KLOV_OK);
    EXPECT_EQ(job.size(), 0U);
}

TEST(Buffer, HoldsAnImageToItsSize)
{
    klov::buffer job(0x1);
    const std::vector<uint8_t> dots(12, 0xFF);
    job.add(klov_cmd_print_raster_bit_image, KLOV_SCALE_NORMAL, 4, 3, klov::data(dots));
    EXPECT_EQ(job.size(), 8U + 12);
    EXPECT_EQ(job.try_add(klov_cmd_print_raster_bit_image, 0, 4, 4, klov::data(dots)), KLOV_E_PARAMETER);
    EXPECT_EQ(job.try_add(klov_cmd_print_raster_bit_image, 0, 65536, 65536, klov::data(dots)), KLOV_E_PARAMETER);
    EXPECT_EQ(job.size(), 8U + 12);
    job.add(klov_cmd_print_raster_img_cmd_header, 0, 4, 3);
    EXPECT_EQ(job.size(), 8U + 12 + 8);
}

// Every kind of signature with the ends of its numbers: no overrun under the sanitizers, no exception but ours.
TEST(Buffer, SurvivesAbsurdArguments)
{
    for (const int32_t n : {INT_MIN, -32769, -509, -1, 0, 1, 255, 256, 65535, 65536}) {
        klov::buffer job(0xFFFFFFFF);
        job.try_add(klov_cmd_print_and_feed_paper, n);
        job.try_add(klov_cmd_print_and_reverse_feed_n_line, n);
        job.try_add(klov_cmd_select_character_code_table, n, n);
        job.try_add(klov_cmd_set_print_area_in_page_mode, n, n, n, n);
        job.try_add(klov_cmd_usb_ctl, n);
        job.try_add(klov_cmd_print_bar_code, n, klov::data(std::string(300, '1')));
        job.try_add(klov_cmd_print_raster_img_cmd_header, n, n, n);
        job.try_add(klov_cmd_write_to_nv_user_memory, n, n, klov::data(""));
        job.try_add(klov_cmd_smart_card_select_file, klov::data(std::string(70000, 'f')));
        job.try_add(klov_cmd_draw_line, klov::data(static_cast<const uint8_t *>(nullptr), 0xFFFFFFFFFULL));
        job.try_add(klov_cmd_eh_send_attestation_data, klov::data("12345678"));
        EXPECT_LT(job.size(), 200000U);
    }
}

}  // namespace
