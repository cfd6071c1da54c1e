// What frames a document and its pages, and in which order.
#include "filter/document.h"

#include "tests/printops/kit.h"

#include <gtest/gtest.h>

#include <limits>

using namespace kit;

namespace {

using Step = void (*)(printer_dev *);

Seen run(Device &device, Step step)
{
    Seen seen = observe([&] { step(&device.dev); });
    EXPECT_EQ(seen.err, "");
    return seen;
}

std::string sent(Device &device, Step step)
{
    return hex(run(device, step).out);
}

// All options that name a moment, with recognisable commands.
void ask_for_everything(Device &device, int32_t moment)
{
    device.options.beepcontrol = moment;
    device.options.beeptimes = 2;
    device.options.externalbeepcontrol = moment;
    device.options.externalbeepduration = 1;
    device.options.drawer1 = moment;
    device.options.drawer2 = moment;
    device.options.printlogo = moment;
    device.options.logoindex = 1;
    device.options.logoalign = 2;
    device.options.finalcut = 1;
}

const std::string beep = "1B 28 41 05 00 61 64 02 00 00";
const std::string external_beep = "1B 70 00 32 32";
const std::string drawers = "1B 70 00 50 50 1B 70 01 50 50";
const std::string centre = "1B 61 01";
const std::string logo = "1D 28 4C 06 00 30 45 30 30 01 01 1B 61 00";
const std::string peripherals = beep + " " + external_beep + " " + drawers + " " + centre + " " + logo;
const std::string cut = "1D 56 42 00";

TEST(StartDocument, SettingsComeFirstThenBeepsDrawersAndLogo)
{
    Device device;
    ask_for_everything(device, 1);
    device.options.speed = 3;
    device.options.density = 4;
    device.options.linespacing = 5;
    EXPECT_EQ(sent(device, start_doc), "1D 45 03 1D 28 4B 02 00 31 04 1B 33 05 " + peripherals);
}

TEST(StartDocument, WithTheDefaultsSendsNothing)
{
    Device device;
    device.state.lastStripBlanksHeight = 12;
    const Seen seen = run(device, start_doc);
    EXPECT_EQ(seen.out, "");
    EXPECT_EQ(seen.trace, "+start_doc start.\n-start_doc finished.\n");
    EXPECT_EQ(device.state.lastStripBlanksHeight, 0);
}

TEST(StartDocument, LeavesTheEndsPeripheralsAlone)
{
    for (const int32_t control : {0, 2, 3, -1}) {
        Device device;
        ask_for_everything(device, control);
        EXPECT_EQ(sent(device, start_doc), "");
    }
}

TEST(StartDocument, SettingsOfZeroAreSent)
{
    Device device;
    device.options.speed = 0;
    device.options.density = 0;
    device.options.linespacing = 0;
    EXPECT_EQ(sent(device, start_doc), "1D 45 00 1D 28 4B 02 00 31 00 1B 33 00");
}

TEST(StartDocument, OneBeepBeforeTheFirstPageAndADrawerAfterTheLast)
{
    Device device;
    device.options.beepcontrol = 1;
    device.options.drawer2 = 2;
    device.options.postprintaction = 0;
    EXPECT_EQ(sent(device, start_doc), "1B 28 41 05 00 61 64 01 00 00");
    EXPECT_EQ(sent(device, end_doc), "1B 70 01 50 50");
}

TEST(StartPage, ClearsTheCounters)
{
    Device device;
    device.state.unfed_blank_rows = 3;
    device.state.lastStripBlanksHeight = 4;
    const Seen seen = run(device, start_page);
    EXPECT_EQ(seen.out, "");
    EXPECT_EQ(seen.trace, "+start_page start.\n-start_page finished.\n");
    EXPECT_EQ(device.state.unfed_blank_rows, 0);
    EXPECT_EQ(device.state.lastStripBlanksHeight, 0);
}

TEST(EndPage, WithTheDefaultsSendsNothing)
{
    Device device;
    device.state.unfed_blank_rows = 3;
    device.state.lastStripBlanksHeight = 4;
    const Seen seen = run(device, end_page);
    EXPECT_EQ(seen.out, "");
    EXPECT_EQ(seen.trace, "+end_page start.\n-end_page finished.\n");
    EXPECT_EQ(device.state.unfed_blank_rows, 0);
    EXPECT_EQ(device.state.lastStripBlanksHeight, 4);
}

TEST(EndPage, ForgetsWithheldRowsInTicketModeOnly)
{
    for (const bool page : {false, true}) {
        for (const bool ticket : {false, true}) {
            Device device;
            device.options.pagemode = page;
            device.options.ticketmode = ticket;
            device.state.lastStripBlanksHeight = 4;
            run(device, end_page);
            EXPECT_EQ(device.state.lastStripBlanksHeight, ticket && !page ? 0 : 4);
        }
    }
}

TEST(EndPage, PaperTypesOneAndTwoMoveToTheNextTicket)
{
    for (const auto &[type, bytes_sent] :
         {std::pair{0, ""}, {1, "0C"}, {2, "0C"}, {3, ""}, {-1, ""}, {257, ""}, {INT32_MAX, ""}}) {
        Device device;
        device.options.papertype = type;
        EXPECT_EQ(sent(device, end_page), bytes_sent) << type;
    }
}

TEST(EndPage, ActionThreeFeedsAndCutsBehindTheNextTicket)
{
    Device device;
    device.options.papertype = 1;
    device.options.postprintaction = 3;
    device.options.cutdistance = 10;
    device.options.finalcut = 1;
    EXPECT_EQ(sent(device, end_page), "0C " + hex(feed(79)) + " " + cut);
}

TEST(EndPage, OtherActionsDoNotCut)
{
    for (const int32_t action : {0, 1, 2, 4, -1}) {
        Device device;
        device.options.postprintaction = action;
        device.options.cutdistance = 10;
        device.options.finalcut = 1;
        EXPECT_EQ(sent(device, end_page), "") << action;
    }
}

TEST(EndDocument, WithTheDefaultsOnlyCuts)
{
    Device device;
    device.options.finalcut = 1;
    const Seen seen = run(device, end_doc);
    EXPECT_EQ(hex(seen.out), cut);
    EXPECT_EQ(seen.trace,
              "+end_doc start.\n"
              "\tticketmode:0.\n"
              "\tticketmode:False.\n"
              "+print_blank(blank_counter:-7, save percent 0/4) start.\n"
              "+print_cut_page(printer_class:268500993) start.\n" +
                  traced(bytes(cut)) +
                  "-print_cut_page finished(0) success.\n"
                  "*end_doc cut_dots = -7, feeddistance = -1, dot_unit = 0.125123.\n"
                  "-end_doc finished.\n");
}

TEST(EndDocument, FeedsThenPeripheralsThenTheLastFeedAndCut)
{
    Device device;
    ask_for_everything(device, 2);
    device.options.fwdfeed = 3;
    device.options.cutdistance = 10;
    EXPECT_EQ(sent(device, end_doc), hex(feed(3)) + " " + peripherals + " " + hex(feed(79)) + " " + cut);
}

TEST(EndDocument, LeavesTheStartsPeripheralsAlone)
{
    for (const int32_t control : {0, 1, 3, -1}) {
        Device device;
        ask_for_everything(device, control);
        EXPECT_EQ(sent(device, end_doc), cut);
    }
}

TEST(EndDocument, ActionOneFeedsWithoutACut)
{
    Device device;
    device.options.postprintaction = 1;
    device.options.feeddistance = 20;
    device.options.cutdistance = 99;
    device.options.finalcut = 1;
    const Seen seen = run(device, end_doc);
    EXPECT_EQ(hex(seen.out), hex(feed(159)));
    EXPECT_NE(seen.trace.find("*end_doc feed_dots = 159, feeddistance = 20, dot_unit = 0.125123.\n"),
              std::string::npos);
}

TEST(EndDocument, ActionThreeAndOthersAddNothing)
{
    for (const int32_t action : {0, 3, 4, -1, 258}) {
        Device device;
        device.options.postprintaction = action;
        device.options.feeddistance = 20;
        device.options.cutdistance = 20;
        device.options.finalcut = 1;
        const Seen seen = run(device, end_doc);
        EXPECT_EQ(seen.out, "");
        EXPECT_EQ(seen.trace, "+end_doc start.\n\tticketmode:0.\n\tticketmode:False.\n-end_doc finished.\n");
    }
}

TEST(EndDocument, AForwardFeedOfMinusOneIsTracedButNotFed)
{
    Device device;
    device.options.postprintaction = 0;
    device.options.fwdfeed = -1;
    const Seen seen = run(device, end_doc);
    EXPECT_EQ(seen.out, "");
    EXPECT_EQ(seen.trace, "+end_doc start.\n\tfwdfeed:-1.\n\tticketmode:0.\n\tticketmode:False.\n-end_doc finished.\n");
}

// Only -1 stands for no feed; other negative feeds reach the feed, which finds nothing to do.
TEST(EndDocument, AForwardFeedBelowMinusOneIsTriedAndFeedsNothing)
{
    Device device;
    device.options.postprintaction = 0;
    device.options.fwdfeed = -2;
    const Seen seen = run(device, end_doc);
    EXPECT_EQ(seen.out, "");
    EXPECT_NE(seen.trace.find("\tfwdfeed:-2.\n+print_blank(blank_counter:-2, save percent 0/4) start.\n"),
              std::string::npos);
}

TEST(EndDocument, TheForwardFeedIsInDots)
{
    Device device;
    device.options.postprintaction = 0;
    device.options.fwdfeed = 300;
    EXPECT_EQ(sent(device, end_doc), hex(feed(300)));
}

TEST(EndDocument, TicketModeIsTracedOnce)
{
    Device device;
    device.options.postprintaction = 0;
    device.options.ticketmode = true;
    EXPECT_EQ(run(device, end_doc).trace, "+end_doc start.\n\tticketmode:1.\n-end_doc finished.\n");
}

// The kind of cut matters to the cut alone.
TEST(EndDocument, NoKindOfCutAsksForMoreThanTheCut)
{
    for (const auto &[kind, bytes_sent] : {std::pair{0, ""}, {1, "1D 56 42 00"}, {2, "1D 56 41 00"}, {3, ""}}) {
        Device device;
        device.options.finalcut = kind;
        EXPECT_EQ(sent(device, end_doc), bytes_sent);
    }
}

// ---- Millimetres to dots ----

int32_t traced_dots(int32_t millimetres, float dot_unit)
{
    Device device;
    device.options.postprintaction = 1;
    device.options.feeddistance = millimetres;
    device.options.dot_unit = dot_unit;
    device.options.model = 0x1955;  // feeds with three bytes a command
    const Seen seen = run(device, end_doc);
    const std::string label = "feed_dots = ";
    const size_t at = seen.trace.find(label);
    EXPECT_NE(at, std::string::npos);
    return std::stoi(seen.trace.substr(at + label.size()));
}

TEST(Distances, AreTruncatedTowardZero)
{
    const auto at_203 = static_cast<float>(254.0 / 203 / 10.0);
    EXPECT_EQ(traced_dots(0, at_203), 0);
    EXPECT_EQ(traced_dots(1, at_203), 7);
    EXPECT_EQ(traced_dots(10, at_203), 79);
    EXPECT_EQ(traced_dots(20, at_203), 159);
    EXPECT_EQ(traced_dots(-1, at_203), -7);
    EXPECT_EQ(traced_dots(-10, at_203), -79);
}

TEST(Distances, AreComputedInSinglePrecision)
{
    for (const int dpi : {180, 200, 203, 300, 600}) {
        const auto unit = static_cast<float>(254.0 / dpi / 10.0);
        for (int32_t millimetres = -20; millimetres <= 120; ++millimetres) {
            volatile float quotient = static_cast<float>(millimetres) / unit;
            ASSERT_EQ(traced_dots(millimetres, unit), static_cast<int32_t>(quotient)) << dpi << " dpi";
        }
    }
}

TEST(Distances, ThatDoNotFitFeedNothing)
{
    const auto at_203 = static_cast<float>(254.0 / 203 / 10.0);
    EXPECT_EQ(traced_dots(INT32_MAX, at_203), INT32_MIN);
    EXPECT_EQ(traced_dots(INT32_MIN, at_203), INT32_MIN);
    EXPECT_EQ(traced_dots(0, std::numeric_limits<float>::quiet_NaN()), INT32_MIN);
}

TEST(Distances, OfAResolutionOfZeroAreZero)
{
    EXPECT_EQ(traced_dots(50, std::numeric_limits<float>::infinity()), 0);
    EXPECT_EQ(traced_dots(INT32_MIN, std::numeric_limits<float>::infinity()), 0);
}

// ---- When the bytes leave ----

TEST(Document, StartAndEndFlushStandardOutput)
{
    Device device;
    ask_for_everything(device, 1);
    std::string left;
    {
        const WatchedOutput out([&](std::string_view block) { left += block; });
        start_doc(&device.dev);
        EXPECT_EQ(hex(left), peripherals);
        left.clear();
        end_doc(&device.dev);
        EXPECT_EQ(hex(left), cut);
    }
}

}  // namespace
