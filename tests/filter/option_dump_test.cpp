// The options record in the scheduler's log: its lines, literally.
#include "filter/option_dump.h"

#include "tests/printops/kit.h"

#include <gtest/gtest.h>

#include <regex>

using namespace kit;

namespace {

// A different value in every field.
dev_options odd_options()
{
    dev_options options = {};
    options.model = 0xFFFF1001;
    options.name = "KLR-5813";
    options.type = 0x80010401;
    options.printer_width = 2;
    options.max_render_height = 3;
    options.issupportshiftline = true;
    options.islabelprinter = false;
    options.cut_spacing = 4.5F;
    options.motion_v = 5.25F;
    options.resolution = 999;
    options.dot_unit = 0.125F;
    options.compression = 6;
    options.papertype = 7;
    options.pagemode = true;
    options.ticketmode = false;
    options.finalcut = 8;
    options.is_page_cut = true;
    options.fwdfeed = 9;
    options.backfeed = 10;
    options.speed = -11;
    options.density = 12;
    options.linespacing = 13;
    options.beepcontrol = 14;
    options.beepduration = 15;
    options.beepinterval = 16;
    options.beeptimes = 17;
    options.externalbeepcontrol = 18;
    options.externalbeepduration = 19;
    options.externalbeepinterval = 20;
    options.externalbeeptimes = 21;
    options.drawer1 = 22;
    options.drawer2 = 23;
    options.postprintaction = 24;
    options.feeddistance = 25;
    options.cutdistance = 26;
    options.printlogo = 27;
    options.logoindex = 28;
    options.logoalign = 29;
    options.papersavemode = 30;
    options.papersavebottom = INT32_MIN;
    options.reserved = 888;
    return options;
}

const char *const lines[] = {"CUPS printing options",
                             "model            = 0xffff1001",
                             "name             = KLR-5813",
                             "type             = 0x80010401",
                             "printer_width    = 2 bytes",
                             "max_render_height= 3",
                             "issupportshiftline= YES",
                             "islabelprinter   = NO",
                             "cut_spacing     = 4.500000",
                             "motion_v        = 5.250000",
                             "dot_unit         = 0.125000",
                             "compression         = 6",
                             "papertype        = 7",
                             "pagemode         = YES",
                             "ticketmode       = NO",
                             "finalcut         = 8",
                             "is_page_cut      = YES",
                             "fwdfeed          = 9",
                             "backfeed         = 10",
                             "speed            = -11",
                             "density          = 12",
                             "linespacing      = 13",
                             "printlogo        = 27",
                             "logoindex        = 28",
                             "logoalign        = 29",
                             "beepcontrol        = 14",
                             "beepduration        = 15",
                             "beepinterval        = 16",
                             "beeptimes        = 17",
                             "externalbeepcontrol        = 18",
                             "externalbeepduration        = 19",
                             "externalbeepinterval        = 20",
                             "externalbeeptimes        = 21",
                             "drawer1        = 22",
                             "drawer2        = 23",
                             "postprintaction       =24",
                             "feeddistance        = 25",
                             "cutdistance        = 26",
                             "papersavemode        = 30",
                             "papersavebottom        = -2147483648"};

// Log readers know these lines. An option that comes later may have its line between them.
TEST(OptionDump, KnownLinesInTheirOrder)
{
    const dev_options options = odd_options();
    const Seen seen = observe([&] { dump_options(&options); });
    EXPECT_EQ(seen.out, "");
    EXPECT_TRUE(seen.err.starts_with("DEBUG: CUPS printing options \n"));
    size_t at = 0;
    for (const char *line : lines) {
        const std::string logged = std::string("DEBUG: ") + line + " \n";
        const size_t found = seen.err.find(logged, at);
        ASSERT_NE(found, std::string::npos) << line << "\nis missing, or not in its place";
        at = found + logged.size();
    }
    // The trace has the same lines without the blank at their ends.
    EXPECT_EQ(std::regex_replace(seen.err, std::regex(" \n"), "\n"), seen.trace);
}

TEST(OptionDump, FlagsTheOtherWayRound)
{
    dev_options options = odd_options();
    options.issupportshiftline = false;
    options.islabelprinter = true;
    options.pagemode = false;
    options.ticketmode = true;
    options.is_page_cut = false;
    const Seen seen = observe_untraced([&] { dump_options(&options); });
    for (const char *line : {"issupportshiftline= NO", "islabelprinter   = YES", "pagemode         = NO",
                             "ticketmode       = YES", "is_page_cut      = NO"}) {
        EXPECT_NE(seen.err.find(std::string("DEBUG: ") + line + " \n"), std::string::npos) << line;
    }
}

TEST(OptionDump, ARecordWithoutANameIsListed)
{
    Device device;
    EXPECT_NE(observe_untraced([&] { dump_options(&device.options); }).err.find("name             = (null) \n"),
              std::string::npos);
}

// A line is never longer than its buffer.
TEST(OptionDump, LongNamesAreCut)
{
    const std::string name(400, 'n');
    dev_options options = odd_options();
    options.name = name.c_str();
    const Seen seen = observe_untraced([&] { dump_options(&options); });
    const std::string prefix = "name             = ";
    EXPECT_NE(seen.err.find("DEBUG: " + prefix + std::string(254 - prefix.size(), 'n') + " \n"), std::string::npos);
}

TEST(OptionDump, IsOneWriteToTheScheduler)
{
    int writes = 0;
    const dev_options options = odd_options();
    {
        const WatchedLog err([&](std::string_view) { writes += 1; });
        dump_options(&options);
    }
    EXPECT_EQ(writes, 1);
}

}  // namespace
