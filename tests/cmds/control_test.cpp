// The printer's mechanism and state.
#include <klov/control.h>

#include "tests/cmds/kit.h"

using namespace kit;

namespace {

constexpr uint32_t usb_class = 0x19551001;
const uint8_t four_bytes[] = {0x01, 0x02, 0x03, 0xF4};

// One parameter of an encoder with caller data: the data fixed, the value varied.
int32_t enable_real_time_command_p(uint32_t printer_class, int32_t p, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    return klov_cmd_enable_real_time_command(printer_class, p, four_bytes, 4, buf, cap, len);
}

int32_t write_to_nv_user_memory_a(uint32_t printer_class, int32_t a, uint8_t *buf, uint32_t cap, uint32_t *len)
{
    static const uint8_t text[] = {0x20, 0x41, 0xFF};
    return klov_cmd_write_to_nv_user_memory(printer_class, static_cast<uint32_t>(a), 3, text, 3, buf, cap, len);
}

const Row rows[] = {
    {"initialize_printer", with<klov_cmd_initialize_printer>, "1B 40"},
    {"select_page_mode", with<klov_cmd_select_page_mode>, "1B 4C"},
    {"select_standard_mode", with<klov_cmd_select_standard_mode>, "1B 53"},
    {"return_home", with<klov_cmd_return_home>, "1B 3C"},
    {"select_unidirectional_print_mode", klov_cmd_select_unidirectional_print_mode, "1B 55 n"},
    {"select_peripheral_device", klov_cmd_select_peripheral_device, "1B 3D n", {{1, 3}}},
    {"partial_cut_one_point_left_uncut", with<klov_cmd_partial_cut_one_point_left_uncut>, "1B 69"},
    {"partial_cut_three_point_left_uncut", with<klov_cmd_partial_cut_three_point_left_uncut>, "1B 6D"},
    {"select_cut_mode_and_cut_paper", klov_cmd_select_cut_mode_and_cut_paper, "1D 56 n", {{0, 1}, {48, 49}}},
    {"position_next_label", with<klov_cmd_position_next_label>, "1D 0C"},
    {"feed_to_label_peeling", klov_cmd_feed_paper_to_the_label_peeling_position, "1C 28 4C 02 00 41 n", {{48, 49}}},
    {"feed_to_cutting", klov_cmd_feed_paper_to_the_cutting_position, "1C 28 4C 02 00 42 n", {{48, 49}}},
    {"feed_to_print_start", klov_cmd_feed_paper_to_the_print_starting_position, "1C 28 4C 02 00 43 n", {{48, 50}}},
    {"send_real_time_request_to_printer", klov_cmd_send_real_time_request_to_printer, "10 05 n", {{1, 2}}},
    {"generate_pulse_in_real_time_m", with<klov_cmd_generate_pulse_in_real_time, V, 5>, "10 14 01 n 05"},
    {"execute_power_off_sequence", with<klov_cmd_execute_power_off_sequence>, "10 14 02 01 08"},
    {"clear_buffer", with<klov_cmd_clear_buffer>, "10 14 08 01 03 14 01 06 02 08"},
    {"clearbuffer", with<klov_cmd_clearbuffer>, "10 14 08 01 03 14 01 06 02 08"},
    {"set_buzzer", klov_cmd_set_buzzer, "12 27 77 10 n 0D 0A", {{0, 0}, {2, 2}}, Tested::whole},
    {"start_macro_definition", with<klov_cmd_start_macro_definition>, "1D 3A"},
    {"execute_macro_r", with<klov_cmd_execute_macro, V, 0x11, 1>, "1D 5E n 11 01", {{1, 255}}},
    {"execute_macro_t", with<klov_cmd_execute_macro, 2, V, 0>, "1D 5E 02 n 00"},
    {"execute_macro_m", with<klov_cmd_execute_macro, 2, 0x11, V>, "1D 5E 02 11 n", {{0, 1}}},
    {"execute_test_print_n", with<klov_cmd_execute_test_print, V, 51>, "1D 28 41 02 00 n 33", {{0, 2}, {48, 50}}},
    {"execute_test_print_m", with<klov_cmd_execute_test_print, 0, V>, "1D 28 41 02 00 00 n", {{1, 3}, {49, 51}}},
    {"enable_real_time_command_p", enable_real_time_command_p, "1D 28 44 n 00 14 01 02 03 F4", {{3, 3}, {5, 5}}},
    {"select_the_print_control_mode",
     klov_cmd_select_the_print_control_mode,
     "1D 28 4B 02 00 30 n",
     {{0, 4}, {48, 52}}},
    {"thermal_head_energizing",
     klov_cmd_select_the_number_of_parts_for_the_thermal_head_energizing,
     "1D 28 4B 02 00 61 n",
     {{0, 4}, {48, 52}, {128, 128}}},
    {"write_to_nv_user_memory_a", write_to_nv_user_memory_a, "1C 67 31 00 n1 n2 n3 n4 03 00 20 41 FF"},
    {"read_from_nv_user_memory_a",
     with<klov_cmd_read_from_nv_user_memory, V, 80>,
     "1C 67 32 00 n1 n2 n3 n4 50 00",
     {{0, 1023}},
     Tested::whole},
    {"read_from_nv_user_memory_n",
     with<klov_cmd_read_from_nv_user_memory, 1023, V>,
     "1C 67 32 00 FF 03 00 00 nL nH",
     {{1, 80}},
     Tested::whole},
    {"usb_ctl_1", with<klov_cmd_usb_ctl, 1>, "1E 1E 1E", {}, Tested::whole, usb_class},
    {"usb_ctl_2", with<klov_cmd_usb_ctl, 2>, "1E 10 04", {}, Tested::whole, usb_class},
};

INSTANTIATE_TEST_SUITE_P(Control, Command, testing::ValuesIn(rows), row_name);

// ---- Real-time pulse ----

Call pulse(int32_t t)
{
    return [t](uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_generate_pulse_in_real_time(printer_class, 0x42, t, buf, cap, len);
    };
}

TEST(RealTimePulse, TakesUnitsOf100MsOrMilliseconds)
{
    check_accepted(pulse(500), hex("10 14 01 42 05"));
    check_accepted(pulse(101), hex("10 14 01 42 01"));
    check_accepted(pulse(199), hex("10 14 01 42 01"));
    check_accepted(pulse(899), hex("10 14 01 42 08"));
    check_accepted(pulse(1), hex("10 14 01 42 01"));
    check_accepted(pulse(8), hex("10 14 01 42 08"));
}

TEST(RealTimePulse, RefusesTimesOutside1To8Units)
{
    for (const int32_t t : {900, 0, 9, 100, -1, -255, -100, 1000, 65537, 0x7FFFFFFF}) {
        check_refused(pulse(t), 5);
    }
}

TEST(RealTimePulse, ConvertsEveryTime)
{
    for (int32_t t = -1000; t <= 2000; t++) {
        const int32_t units = t > 100 ? (t - t % 100) / 100 : t;
        const Outcome expected =
            units >= 1 && units <= 8 ? accepted(hex("10 14 01 42 n", units)) : refused(KLOV_E_PARAMETER);
        ASSERT_EQ(complaint(pulse(t), {some_class, 0, 5}, expected), "") << "t " << t;
    }
}

// ---- Whole values ----

TEST(SetBuzzer, TestsTheWholeValue)
{
    for (const int32_t n : {256, 258, 65536, -256, -254}) {
        const Call buzzer = [n](uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len) {
            return klov_cmd_set_buzzer(printer_class, n, buf, cap, len);
        };
        check_refused(buzzer, 7);
    }
}

TEST(ThermalHeadEnergizing, Knows128And52ButNot53)
{
    const auto energizing = [](int32_t n) -> Call {
        return [n](uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len) {
            return klov_cmd_select_the_number_of_parts_for_the_thermal_head_energizing(printer_class, n, buf, cap, len);
        };
    };
    check_accepted(energizing(128), hex("1D 28 4B 02 00 61 80"));
    check_accepted(energizing(52), hex("1D 28 4B 02 00 61 34"));
    check_refused(energizing(53), 7);
}

// ---- Enable real-time command ----

Call real_time_command(int32_t p, const uint8_t *data, uint32_t k)
{
    return [=](uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_enable_real_time_command(printer_class, p, data, k, buf, cap, len);
    };
}

TEST(EnableRealTimeCommand, DoesNotCompareTheDataSizeWithP)
{
    const Bytes data = sample_data(255);
    for (const uint32_t k : {0U, 1U, 2U, 4U, 5U, 255U}) {
        const Bytes sent(data.begin(), data.begin() + static_cast<int32_t>(k));
        check_accepted(real_time_command(3, data.data(), k), hex("1D 28 44 03 00 14") + sent);
        check_accepted(real_time_command(5, data.data(), k), hex("1D 28 44 05 00 14") + sent);
    }
}

TEST(EnableRealTimeCommand, TakesTheDataSizeAsOneByte)
{
    const Bytes data = sample_data(2);
    for (const uint32_t k : {0x102U, 0xFFFFFF02U}) {
        check_accepted(real_time_command(3, data.data(), k), hex("1D 28 44 03 00 14") + data);
    }
}

TEST(EnableRealTimeCommand, TestsTheRoomBeforeP)
{
    const Bytes data = sample_data(40);
    for (const uint32_t k : {0U, 2U, 40U}) {
        check_refused(real_time_command(4, data.data(), k), 6 + k);
    }
}

// ---- Line and rectangle ----

using Draw = int32_t (*)(uint32_t printer_class, const uint8_t *data, uint32_t k, uint8_t *buf, uint32_t cap,
                         uint32_t *len);

Call draw(Draw encode, const Bytes &data, uint32_t k)
{
    return [=](uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return encode(printer_class, data.data(), k, buf, cap, len);
    };
}

TEST(Draw, LineTakesTwelveBytesAndRectangleFourteen)
{
    const Bytes line = sample_data(12);
    const Bytes rectangle = sample_data(14);
    check_accepted(draw(klov_cmd_draw_line, line, 12), hex("1D 28 51 0C 00 30") + line);
    check_accepted(draw(klov_cmd_draw_rectangle, rectangle, 14), hex("1D 28 51 0E 00 31") + rectangle);
}

TEST(Draw, TestsTheRoomBeforeTheWholeSize)
{
    const Bytes data = sample_data(300);
    for (const uint32_t k : {0U, 1U, 11U, 13U, 15U, 255U, 0x10CU, 0x10EU}) {
        check_refused(draw(klov_cmd_draw_line, data, k), k + 6);
        check_refused(draw(klov_cmd_draw_rectangle, data, k), k + 6);
    }
    check_refused(draw(klov_cmd_draw_line, data, 14), 20);
    check_refused(draw(klov_cmd_draw_rectangle, data, 12), 18);
    check_no_room(draw(klov_cmd_draw_line, data, 0xFFFFFFFF));
}

// ---- NV user memory ----

Call nv_write(int32_t n, const Bytes &data, uint32_t k)
{
    return [=](uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_write_to_nv_user_memory(printer_class, 0x0A0B0C0D, n, data.data(), k, buf, cap, len);
    };
}

Bytes printable_data(size_t size)
{
    Bytes data = sample_data(size);
    for (uint8_t &byte : data) {
        byte = byte < 0x20 ? static_cast<uint8_t>(byte + 0x20) : byte;
    }
    return data;
}

TEST(WriteToNvUserMemory, SendsAddressAndCountLowByteFirst)
{
    for (const int32_t n : {1, 2, 255, 256, 1023, 1024}) {
        const Bytes data = printable_data(static_cast<size_t>(n));
        check_accepted(nv_write(n, data, static_cast<uint32_t>(n)), hex("1C 67 31 00 0D 0C 0B 0A nL nH", n) + data);
    }
}

TEST(WriteToNvUserMemory, RefusesEveryControlByteAtEveryPlace)
{
    for (int byte = 0; byte < 256; byte++) {
        for (size_t place = 0; place < 4; place++) {
            Bytes data = {'A', 'B', 'C', 'D'};
            data[place] = static_cast<uint8_t>(byte);
            const Outcome expected =
                byte >= 0x20 ? accepted(hex("1C 67 31 00 0D 0C 0B 0A 04 00") + data) : refused(KLOV_E_PARAMETER);
            EXPECT_EQ(complaint(nv_write(4, data, 4), {some_class, 0, 14}, expected), "") << byte << " at " << place;
        }
    }
}

TEST(WriteToNvUserMemory, RefusesALineFeedThoughTheSizesAgree)
{
    check_refused(nv_write(3, {'A', 0x0A, 'B'}, 3), 13);
}

TEST(WriteToNvUserMemory, WantsNFrom1To1024AndEqualToTheDataSize)
{
    const Bytes data = printable_data(1100);
    struct {
        int32_t n;
        uint32_t k;
    } const cases[] = {{0, 0}, {1, 0}, {0, 1}, {3, 4}, {4, 3}, {1025, 1025}, {257, 1}, {1, 257}, {65537, 1}, {-1, 1}};
    for (const auto &sizes : cases) {
        check_refused(nv_write(sizes.n, data, sizes.k), sizes.k + 10);
    }
}

TEST(WriteToNvUserMemory, RefusesASizeWhoseRoomWraps)
{
    check_no_room(nv_write(-1, {'A'}, 0xFFFFFFFF));
    check_no_room(nv_write(-10, {'A'}, 0xFFFFFFF6));
}

// ---- USB control ----

Call usb(int32_t op)
{
    return [op](uint32_t printer_class, uint8_t *buf, uint32_t cap, uint32_t *len) {
        return klov_cmd_usb_ctl(printer_class, op, buf, cap, len);
    };
}

TEST(UsbControl, NeedsBothClassBits)
{
    for (const int32_t op : {1, 2, 3}) {
        for (const uint32_t printer_class : {0x0U, 0x1U, 0x1000U, 0xFFFFEFFFU, 0xFFFFFFFEU}) {
            EXPECT_EQ(complaint(usb(op), {printer_class, 0, 100}, refused(KLOV_E_MODEL_TYPE)), "");
            uint32_t len = 3;
            EXPECT_EQ(usb(op)(printer_class, nullptr, 100, &len), KLOV_E_MODEL_TYPE);
            EXPECT_EQ(len, 3U);
        }
    }
}

// Every op makes the buffer grow alike; of an unknown one the three bytes stay what they were.
TEST(UsbControl, UnknownOpGrowsTheBufferByThreeUnwrittenBytes)
{
    const Outcome grown = {KLOV_OK, {}, 3};
    for (const int32_t op : {3, 0, -1, 257, 258, 65537, -255}) {
        for (const uint32_t before : {0U, 17U}) {
            EXPECT_EQ(complaint(usb(op), {0x1001, before, before + 3}, grown), "");
            for (uint32_t room = 0; room < 3; room++) {
                const Trial trial = {0x1001, before, before + room};
                EXPECT_EQ(complaint(usb(op), trial, refused(KLOV_E_BUFFER_TOO_SMALL)), "");
            }
        }
        uint32_t len = 3;
        EXPECT_EQ(usb(op)(0x1001, nullptr, 100, &len), KLOV_E_BUFFER_TOO_SMALL);
        EXPECT_EQ(len, 3U);
    }
}

}  // namespace
