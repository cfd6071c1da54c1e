// Graphics and bit images.
#include <klov/graphics.h>

#include "tests/cmds/kit.h"

using namespace kit;

namespace {

int32_t bit_image_without_data(uint32_t printer_class, int32_t m, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return klov_cmd_select_bit_image_mode(printer_class, m, n, nullptr, 0, buf, cap, len);
}

int32_t nv_bit_image_without_data(uint32_t printer_class, int32_t n, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return klov_cmd_define_nv_bit_image_fmode(printer_class, n, nullptr, 0, buf, cap, len);
}

const std::vector<Range> key = {{32, 126}};
const std::vector<Range> scale_mode = {{0, 3}, {48, 51}};

const Row rows[] = {
    {"select_bit_image_mode_m", with<bit_image_without_data, V, 0x123>, "1B 2A n 23 01", {{0, 1}, {32, 33}}},
    {"select_bit_image_mode_n", with<bit_image_without_data, 33, V>, "1B 2A 21 nL nH", {{1, 2047}}, Tested::whole},
    {"print_NV_bit_image_n", with<klov_cmd_print_NV_bit_image, V, 51>, "1C 70 n 33", {{1, 255}}},
    {"print_NV_bit_image_m", with<klov_cmd_print_NV_bit_image, 9, V>, "1C 70 09 n", scale_mode},
    {"define_nv_bit_image_n", nv_bit_image_without_data, "1C 71 n", {{1, 255}}},
    {"print_downloaded_bit_image", klov_cmd_print_downloaded_bit_image, "1D 2F n", scale_mode},
    {"transmit_NV_capacity", with<klov_cmd_transmit_the_NV_graphics_memory_capacity_gmode>, "1D 28 4C 02 00 30 30"},
    {"set_reference_dot_density",
     klov_cmd_set_the_reference_dot_density_for_graphics_gmode,
     "1D 28 4C 04 00 30 31 n n",
     {{50, 51}}},
    {"print_print_buffer", with<klov_cmd_print_the_graphics_data_in_the_print_buffer_gmode>, "1D 28 4C 02 00 30 32"},
    {"transmit_NV_remaining", with<klov_cmd_transmit_the_remaining_capacity_of_the_NV_graphics_memory_gmode>,
     "1D 28 4C 02 00 30 33"},
    {"transmit_download_remaining",
     with<klov_cmd_transmit_the_remaining_capacity_of_the_download_graphics_memory_gmode>, "1D 28 4C 02 00 30 34"},
    {"transmit_NV_key_codes", with<klov_cmd_transmit_the_key_code_list_for_defined_NV_graphics_gmode>,
     "1D 28 4C 04 00 30 40 4B 43"},
    {"delete_all_NV", with<klov_cmd_delete_all_NV_graphics_data_gmode>, "1D 28 4C 05 00 30 41 43 4C 52"},
    {"delete_NV_kc1", with<klov_cmd_delete_the_specified_NV_graphics_data_gmode, V, 32>, "1D 28 4C 04 00 30 42 n 20",
     key},
    {"delete_NV_kc2", with<klov_cmd_delete_the_specified_NV_graphics_data_gmode, 126, V>, "1D 28 4C 04 00 30 42 7E n",
     key},
    {"transmit_download_key_codes", with<klov_cmd_transmit_the_key_code_list_for_defined_download_graphics_gmode>,
     "1D 28 4C 04 00 30 50 4B 43"},
    {"delete_all_download", with<klov_cmd_delete_all_memory_graphics_data_gmode>, "1D 28 4C 05 00 30 51 43 4C 52"},
    {"delete_download_kc1", with<klov_cmd_delete_the_specified_download_memory_graphics_data_gmode, V, 32>,
     "1D 28 4C 04 00 30 52 n 20", key},
    {"delete_download_kc2", with<klov_cmd_delete_the_specified_download_memory_graphics_data_gmode, 126, V>,
     "1D 28 4C 04 00 30 52 7E n", key},
    {"print_download_kc1", with<klov_cmd_print_the_specified_downloaded_graphics_data_gmode, V, 126, 1, 2>,
     "1D 28 4C 06 00 30 55 n 7E 01 02", key},
    {"print_download_kc2", with<klov_cmd_print_the_specified_downloaded_graphics_data_gmode, 32, V, 1, 2>,
     "1D 28 4C 06 00 30 55 20 n 01 02", key},
    {"print_download_x", with<klov_cmd_print_the_specified_downloaded_graphics_data_gmode, 65, 66, V, 2>,
     "1D 28 4C 06 00 30 55 41 42 n 02"},
    {"print_download_y", with<klov_cmd_print_the_specified_downloaded_graphics_data_gmode, 65, 66, 1, V>,
     "1D 28 4C 06 00 30 55 41 42 01 n"},
};

INSTANTIATE_TEST_SUITE_P(Graphics, Command, testing::ValuesIn(rows), row_name);

TEST(SetTheReferenceDotDensity, IsACharacterSentTwice)
{
    const auto density = [](int32_t n) {
        return [n](uint32_t c, uint8_t *buf, uint32_t cap, uint32_t *len) {
            return klov_cmd_set_the_reference_dot_density_for_graphics_gmode(c, n, buf, cap, len);
        };
    };
    check_accepted(density(50), hex("1D 28 4C 04 00 30 31 32 32"));
    check_refused(density(52), 9);
}

// ---- Bit image (ESC *) ----

Call bit_image_call(int32_t m, int32_t n, const uint8_t *data, int32_t k)
{
    return [=](uint32_t c, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_select_bit_image_mode(c, m, n, data, k, buf, cap, len);
    };
}

TEST(BitImage, WantsTheDataThatItsModeExpects)
{
    const struct {
        int32_t m;
        int32_t bytes_per_dot;
    } modes[] = {{0, 1}, {1, 2}, {32, 1}, {33, 6}};
    const Bytes data = sample_data(6 * 2047 + 1);
    for (const auto &mode : modes) {
        for (const int32_t n : {1, 2, 10, 255, 256, 2047}) {
            const int32_t size = n * mode.bytes_per_dot;
            const Bytes bytes = hex("1B 2A n", mode.m) + hex("nL nH", n) + Bytes(&data[0], &data[0] + size);
            const uint32_t need = 5 + static_cast<uint32_t>(size);
            const Call call = bit_image_call(mode.m, n, data.data(), size);
            EXPECT_EQ(complaint(call, {some_class, 6, 6 + need}, accepted(bytes)), "");
            EXPECT_EQ(complaint(call, {some_class, 6, 5 + need}, refused(KLOV_E_BUFFER_TOO_SMALL)), "");
            for (const int32_t other : {size - 1, size + 1}) {
                if (other > 0) {
                    check_refused(bit_image_call(mode.m, n, data.data(), other), static_cast<uint32_t>(5 + other));
                }
            }
        }
        check_accepted(bit_image_call(mode.m, 3, data.data(), 3 * mode.bytes_per_dot),
                       hex("1B 2A n 03 00", mode.m) + Bytes(&data[0], &data[0] + 3 * mode.bytes_per_dot));
    }
}

// Three bytes a dot would be what the printer reads, but one is what callers send.
TEST(BitImage, ExpectsOneByteADotInMode32)
{
    const Bytes data = sample_data(30);
    check_refused(bit_image_call(32, 10, data.data(), 30), 35);
    check_accepted(bit_image_call(32, 10, data.data(), 10), hex("1B 2A 20 0A 00") + Bytes(&data[0], &data[10]));
}

TEST(BitImage, WithoutDataReservesRoomThatTheCallerFills)
{
    const Call call = bit_image_call(33, 10, nullptr, 7);
    EXPECT_EQ(complaint(call, {some_class, 3, 15}, {KLOV_OK, hex("1B 2A 21 0A 00"), 12}), "");
    EXPECT_EQ(complaint(call, {some_class, 3, 14}, refused(KLOV_E_BUFFER_TOO_SMALL)), "");
}

TEST(BitImage, WithDataOfNoLengthIsItsHeader)
{
    const Bytes data = sample_data(1);
    check_accepted(bit_image_call(0, 10, data.data(), 0), hex("1B 2A 00 0A 00"));
}

// The length is signed: a small negative one shortens the growth, a larger one is a huge unsigned need.
TEST(BitImage, ANegativeLengthShortensTheGrowth)
{
    const Bytes data = sample_data(1);
    for (int32_t k = -5; k <= -1; k++) {
        const uint32_t growth = static_cast<uint32_t>(5 + k);
        const Call call = bit_image_call(0, 10, data.data(), k);
        EXPECT_EQ(complaint(call, {some_class, 3, 3 + growth}, {KLOV_OK, hex("1B 2A 00 0A 00"), growth}), "") << k;
        if (growth > 0) {
            EXPECT_EQ(complaint(call, {some_class, 3, 2 + growth}, refused(KLOV_E_BUFFER_TOO_SMALL)), "") << k;
        }
    }
    for (const int32_t k : {-6, -7, -1000, INT32_MIN}) {
        const Call call = bit_image_call(0, 10, data.data(), k);
        EXPECT_EQ(complaint(call, {some_class, 3, 255}, refused(KLOV_E_BUFFER_TOO_SMALL)), "") << k;
    }
}

// ---- NV bit image (FS q) and downloaded bit image (GS *) ----

TEST(DefineNvBitImage, CopiesItsDataUntested)
{
    for (const uint32_t k : {0U, 1U, 5U, 400U, 70000U}) {
        const Bytes data = sample_data(k);
        const auto call = [&](uint32_t c, uint8_t *buf, uint32_t cap, uint32_t *len) {
            return klov_cmd_define_nv_bit_image_fmode(c, 2, data.data(), k, buf, cap, len);
        };
        check_accepted(call, hex("1C 71 02") + data);
    }
}

TEST(DefineNvBitImage, RefusesALengthThatNoBufferHolds)
{
    for (const uint32_t k : {0xFFFFFFFFU, 0xFFFFFFFDU, 0xFFFFFFFCU, 0x80000000U}) {
        const auto call = [k](uint32_t c, uint8_t *buf, uint32_t cap, uint32_t *len) {
            return klov_cmd_define_nv_bit_image_fmode(c, 2, buf, k, buf, cap, len);
        };
        EXPECT_EQ(complaint(call, {some_class, 3, 255}, refused(KLOV_E_BUFFER_TOO_SMALL)), "") << k;
    }
}

Call downloaded_call(int32_t x, int32_t y, const Bytes &data, uint32_t k)
{
    return [=, &data](uint32_t c, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_define_downloaded_bit_image(c, x, y, data.data(), k, buf, cap, len);
    };
}

TEST(DefineDownloadedBitImage, WantsEightTimesWidthTimesHeight)
{
    const Bytes data = sample_data(255 * 255 * 8);
    for (const int32_t x : {1, 2, 16, 255}) {
        for (const int32_t y : {1, 3, 255}) {
            const uint32_t k = static_cast<uint32_t>(x * y * 8);
            const Bytes bytes = hex("1D 2A") + hex("n", x) + hex("n", y) + Bytes(&data[0], &data[0] + k);
            for (const int32_t alias : {0, 256, -512}) {
                const Call call = downloaded_call(x + alias, y - alias, data, k);
                EXPECT_EQ(complaint(call, {some_class, 0, 4 + k}, accepted(bytes)), "");
                EXPECT_EQ(complaint(call, {some_class, 0, 3 + k}, refused(KLOV_E_BUFFER_TOO_SMALL)), "");
            }
            check_refused(downloaded_call(x, y, data, k - 1), 3 + k);
            check_refused(downloaded_call(x, y, data, k + 1), 5 + k);
        }
    }
    check_accepted(downloaded_call(2, 3, data, 48), hex("1D 2A 02 03") + Bytes(&data[0], &data[48]));
}

TEST(DefineDownloadedBitImage, RefusesAnEmptyImage)
{
    const Bytes data = sample_data(8);
    check_refused(downloaded_call(0, 1, data, 0), 4);
    check_refused(downloaded_call(1, 0, data, 0), 4);
    check_refused(downloaded_call(256, 1, data, 0), 4);
    check_refused(downloaded_call(256, 1, data, 256 * 8), 4 + 256 * 8);
    check_refused(downloaded_call(0, 1, data, 8), 12);
    check_no_room(downloaded_call(1, 1, data, 0xFFFFFFFF));
}

}  // namespace
