// Raster bands: how a section is trimmed and sent, and what is refused.
#include "printops/band.h"

#include "tests/printops/kit.h"

#include <gtest/gtest.h>
#include <klov/result.h>

using namespace kit;

namespace {

int32_t print(Device &device, std::string_view rows, uint32_t width)
{
    return print_dotline(&device.dev, reinterpret_cast<const uint8_t *>(rows.data()), width,
                         width > 0 ? static_cast<int32_t>(rows.size() / width) : 0);
}

Seen print_seen(Device &device, std::string_view rows, uint32_t width)
{
    return observe([&] { EXPECT_EQ(print(device, rows, width), KLOV_OK); });
}

std::string start_line(const void *rows, int width, int height)
{
    return "+print_dotline(pData:" + std::to_string(static_cast<int>(reinterpret_cast<uintptr_t>(rows))) +
           ",dwWidthBytes:" + std::to_string(width) + ",dwHeight:" + std::to_string(height) + ") start.\n";
}

const std::string finished = "-print_dotline finished(0) success.\n";

TEST(Band, ASectionOfFullWidthIsSentAsItLies)
{
    Device device;
    const std::string rows = bytes("80 00 00 00 01 80");
    const Seen seen = print_seen(device, rows, 2);
    EXPECT_EQ(hex(seen.out), "1D 76 30 00 02 00 03 00 80 00 00 00 01 80");
    EXPECT_EQ(seen.trace,
              start_line(rows.data(), 2, 3) + traced(bytes("1D 76 30 00 02 00 03 00")) + traced(rows) + finished);
    EXPECT_EQ(seen.err, "");
}

TEST(Band, BlankBytesAtTheRightAreTrimmed)
{
    Device device;
    const std::string rows = bytes("80 00 00 00  00 40 00 00  01 00 00 00");
    const Seen seen = print_seen(device, rows, 4);
    EXPECT_EQ(hex(seen.out), "1D 76 30 00 02 00 03 00 80 00 00 40 01 00");
    EXPECT_EQ(seen.trace, start_line(rows.data(), 4, 3) + traced(bytes("1D 76 30 00 02 00 03 00")) +
                              traced(bytes("80 00 00 40 01 00")) + "\tone section complete.\n" + finished);
}

TEST(Band, BlankBytesAtTheLeftStayWithoutLineShift)
{
    Device device;
    EXPECT_EQ(hex(print_seen(device, bytes("00 00 01 00"), 4).out), "1D 76 30 00 03 00 01 00 00 00 01");
}

TEST(Band, LineShiftSendsTheLeftCutAsAMarginInBytes)
{
    Device device;
    device.options.issupportshiftline = true;
    const std::string rows = bytes("00 00 01 00  00 80 00 00");
    const Seen seen = print_seen(device, rows, 4);
    EXPECT_EQ(hex(seen.out), "1D 4C 01 00 1D 76 30 00 02 00 02 00 00 01 80 00");
    EXPECT_EQ(seen.trace, start_line(rows.data(), 4, 2) + "\tisSupportShiftLine:TRUE\tcmd_shift_dotline" +
                              traced(bytes("1D 4C 01 00")) + traced(bytes("1D 76 30 00 02 00 02 00")) +
                              traced(bytes("00 01 80 00")) + "\tone section complete.\n" + finished);
}

// Trimmed at the right only: the margin is 0, and is sent.
TEST(Band, LineShiftSendsAMarginOfZeroToo)
{
    Device device;
    device.options.issupportshiftline = true;
    EXPECT_EQ(hex(print_seen(device, bytes("80 00"), 2).out), "1D 4C 00 00 1D 76 30 00 01 00 01 00 80");
}

TEST(Band, AFullSectionBehindATrimmedOneSendsNoMargin)
{
    Device device;
    device.options.issupportshiftline = true;
    device.options.max_render_height = 1;
    device.make_buffers();
    EXPECT_EQ(hex(print_seen(device, bytes("00 80  80 01"), 2).out),
              "1D 4C 01 00 1D 76 30 00 01 00 01 00 80 1D 76 30 00 02 00 01 00 80 01");
}

TEST(Band, APageWiderThanThePrinterLosesItsRightPart)
{
    Device device;
    device.options.printer_width = 2;
    EXPECT_EQ(hex(print_seen(device, bytes("81 82 83 84  91 92 93 94"), 4).out), "1D 76 30 00 02 00 02 00 81 82 91 92");
}

// Also where the ink ends earlier.
TEST(Band, APageWiderThanThePrinterIsSentAsWideAsThePrinter)
{
    Device device;
    device.options.printer_width = 3;
    EXPECT_EQ(hex(print_seen(device, bytes("80 00 00 00"), 4).out), "1D 76 30 00 03 00 01 00 80 00 00");
}

TEST(Band, AWidthThatLeavesNothingSendsNothing)
{
    for (const int32_t printer_width : {0, -1, INT32_MIN}) {
        Device device;
        device.options.printer_width = printer_width;
        const std::string rows = bytes("80 00 00 01");
        const Seen seen = print_seen(device, rows, 2);
        EXPECT_EQ(seen.out, "");
        EXPECT_EQ(seen.trace, start_line(rows.data(), 2, 2) + finished);
    }
}

TEST(Band, ABlankSectionSendsNothing)
{
    for (const bool shift : {false, true}) {
        Device device;
        device.options.issupportshiftline = shift;
        EXPECT_EQ(print_seen(device, std::string(12, '\0'), 4).out, "");
    }
}

// All of the ink lies right of what the printer can reach.
TEST(Band, ALeftCutBeyondThePrintersWidthSendsNothing)
{
    Device device;
    device.options.issupportshiftline = true;
    device.options.printer_width = 2;
    EXPECT_EQ(print_seen(device, bytes("00 00 00 01"), 4).out, "");
}

TEST(Band, FixedWidthModelsTakeUntrimmedLinesAndAZeroFeed)
{
    for (const uint32_t model : {0x1955U, 0x1956U}) {
        Device device;
        device.options.model = model;
        const std::string rows = bytes("80 00  00 00");
        const Seen seen = print_seen(device, rows, 2);
        EXPECT_EQ(hex(seen.out), "1D 76 30 00 02 00 02 00 80 00 00 00 1B 4A 00");
        EXPECT_EQ(seen.trace, start_line(rows.data(), 2, 2) + traced(bytes("1D 76 30 00 02 00 02 00")) + traced(rows) +
                                  traced(bytes("1B 4A 00")) + finished);
    }
}

TEST(Band, FixedWidthModelsCutAPageThatIsTooWide)
{
    Device device;
    device.options.model = 0x1955;
    device.options.printer_width = 2;
    const std::string rows = bytes("80 00 07  00 00 09");
    const Seen seen = print_seen(device, rows, 3);
    EXPECT_EQ(hex(seen.out), "1D 76 30 00 02 00 02 00 80 00 00 00 1B 4A 00");
    EXPECT_EQ(seen.trace, start_line(rows.data(), 3, 2) + traced(bytes("1D 76 30 00 02 00 02 00")) +
                              traced(bytes("80 00 00 00")) + "\tone section complete.\n" + traced(bytes("1B 4A 00")) +
                              finished);
}

// None of these models shifts lines; should one, its rows end in blanks where the page has no more bytes.
TEST(Band, FixedWidthModelsThatShiftLinesFillTheirRowsWithBlanks)
{
    Device device;
    device.options.model = 0x1955;
    device.options.printer_width = 2;
    device.options.issupportshiftline = true;
    device.options.max_render_height = 1;
    EXPECT_EQ(hex(print_seen(device, bytes("00 00 07  05 06 08"), 3).out),
              "1D 4C 02 00 1D 76 30 00 02 00 01 00 07 00 1B 4A 00 "
              "1D 4C 00 00 1D 76 30 00 02 00 01 00 05 06 1B 4A 00");
}

TEST(Band, FixedWidthModelsFeedZeroAfterEverySection)
{
    Device device;
    device.options.model = 0x1956;
    device.options.max_render_height = 2;
    device.make_buffers();
    EXPECT_EQ(hex(print_seen(device, bytes("01 02 03 04 05"), 1).out),
              "1D 76 30 00 01 00 02 00 01 02 1B 4A 00 1D 76 30 00 01 00 02 00 03 04 1B 4A 00 "
              "1D 76 30 00 01 00 01 00 05 1B 4A 00");
}

TEST(Band, CompressionCodesFullAndTrimmedSections)
{
    Device device;
    device.options.compression = 1;
    EXPECT_EQ(hex(print_seen(device, bytes("41 41 41 41 41 42 43 44"), 4).out),
              "1D 76 30 20 04 00 02 00 FD 41 03 41 42 43 44");
    EXPECT_EQ(hex(print_seen(device, bytes("41 41 41 41 00 00"), 6).out), "1D 76 30 20 04 00 01 00 FD 41");
}

TEST(Band, AnyValueButZeroTurnsCompressionOn)
{
    for (const int32_t value : {-1, 1, 2, 256, INT32_MIN}) {
        Device device;
        device.options.compression = value;
        EXPECT_EQ(hex(print_seen(device, bytes("41 41"), 2).out), "1D 76 30 20 02 00 01 00 FF 41");
    }
}

// Rows of one byte have no compressed form; the output channel is called with nothing all the same.
TEST(Band, CompressedRowsOfOneByteAreAnEmptyBlock)
{
    Device device;
    device.options.compression = 1;
    const std::string rows = bytes("80 81");
    const Seen seen = print_seen(device, rows, 1);
    EXPECT_EQ(hex(seen.out), "1D 76 30 20 01 00 02 00");
    EXPECT_EQ(seen.trace,
              start_line(rows.data(), 1, 2) + traced(bytes("1D 76 30 20 01 00 02 00")) + traced("") + finished);
}

TEST(Band, NoRowsLeaveNotEvenATraceLine)
{
    for (const int32_t height : {0, -1, INT32_MIN}) {
        Device device;
        device.state.lastStripBlanksHeight = 4;
        const uint8_t row[2] = {1, 2};
        int32_t status = 99;
        const Seen seen = observe([&] { status = print_dotline(&device.dev, row, 2, height); });
        EXPECT_EQ(status, KLOV_OK);
        EXPECT_EQ(seen.out + seen.err + seen.trace, "");
        EXPECT_EQ(device.state.lastStripBlanksHeight, 4);
    }
}

TEST(Band, PrintingForgetsTheWithheldBlankRows)
{
    for (const auto &[before, after] : {std::pair{17, 0}, {1, 0}, {0, 0}, {-3, -3}}) {
        Device device;
        device.state.lastStripBlanksHeight = before;
        print_seen(device, bytes("80"), 1);
        EXPECT_EQ(device.state.lastStripBlanksHeight, after);
    }
}

TEST(Band, FlushesStandardOutput)
{
    Device device;
    std::string left;
    const WatchedOutput out([&](std::string_view block) { left += block; });
    print(device, bytes("80"), 1);
    EXPECT_EQ(hex(left), "1D 76 30 00 01 00 01 00 80");
}

// ---- What ends the job ----

void expect_fatal(const Ended &ended, const std::string &text)
{
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.err, fatal_line(text));
    const std::string last_line = "ERROR: " + text + "\n";
    ASSERT_GE(ended.trace.size(), last_line.size());
    EXPECT_EQ(ended.trace.substr(ended.trace.size() - last_line.size()), last_line);
}

TEST(BandFatal, ABufferTooSmallForOneRow)
{
    expect_fatal(run_to_end([] {
                     Device device;
                     device.dev.data_buf_size = 3;
                     print(device, bytes("80 00 00 01"), 4);
                 }),
                 "prt databufsize is too small!/n");
}

TEST(BandFatal, ABufferOfExactlyOneRowIsEnough)
{
    Device device;
    device.dev.data_buf_size = 4;
    EXPECT_EQ(hex(print_seen(device, bytes("80 00 00 01  80 00 00 02"), 4).out),
              "1D 76 30 00 04 00 01 00 80 00 00 01 1D 76 30 00 04 00 01 00 80 00 00 02");
}

TEST(BandFatal, AStripHeightBelowOne)
{
    for (const int32_t height : {0, -1}) {
        expect_fatal(run_to_end([&] {
                         Device device;
                         device.options.max_render_height = height;
                         print(device, bytes("80"), 1);
                     }),
                     "prt databufsize is too small!/n");
    }
}

TEST(BandFatal, AClassThatRefusesTheHeaderOfAFullSection)
{
    expect_fatal(run_to_end([] {
                     Device device;
                     device.options.type = 0x30010002;
                     print(device, bytes("80"), 1);
                 }),
                 code_text(KLOV_E_MODEL_TYPE));
}

TEST(BandFatal, AClassThatRefusesTheHeaderOfATrimmedSection)
{
    expect_fatal(run_to_end([] {
                     Device device;
                     device.options.type = 0x30010002;
                     print(device, bytes("80 00"), 2);
                 }),
                 "Error in print_dotline");
}

// The margin is the one command whose refusal ends nothing: the section is printed where the printer stands.
TEST(Band, AMarginBeyondItsRangeIsLeftOutAndTheResultSaysSo)
{
    constexpr uint32_t width = 70000;
    Device device;
    device.options.issupportshiftline = true;
    device.options.printer_width = width;
    device.options.max_render_height = 1;
    device.make_buffers();
    std::string row(width, '\0');
    row[66000] = 1;
    row[66001] = 2;
    int32_t status = 0;
    const Seen seen = observe([&] { status = print(device, row, width); });
    EXPECT_EQ(status, KLOV_E_PARAMETER);
    EXPECT_EQ(hex(seen.out), "1D 76 30 00 02 00 01 00 01 02");
    EXPECT_EQ(seen.trace, start_line(row.data(), width, 1) + "\tisSupportShiftLine:TRUE\tcmd_shift_dotline" +
                              traced("") + traced(bytes("1D 76 30 00 02 00 01 00")) + traced(bytes("01 02")) +
                              "\tone section complete.\n-print_dotline finished(-1) fail!\n");
}

}  // namespace
