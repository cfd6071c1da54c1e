// The page header in the scheduler's log: 40 lines, literally.
#include "diag/messages.h"
#include "tests/printops/kit.h"

#include <gtest/gtest.h>
#include <string.h>

#include <algorithm>

using namespace kit;

namespace {

void set_text(char (&field)[64], const char *text)
{
    snprintf(field, sizeof field, "%s", text);
}

// A different value in every field, so that no two lines can be confused.
cups_page_header_t odd_header()
{
    cups_page_header_t header = {};
    header.AdvanceDistance = 1;
    header.AdvanceMedia = CUPS_ADVANCE_PAGE;
    header.Collate = CUPS_TRUE;
    header.CutMedia = CUPS_CUT_JOB;
    header.Duplex = CUPS_FALSE;
    header.HWResolution[0] = 203;
    header.HWResolution[1] = 180;
    header.ImagingBoundingBox[0] = 11;
    header.ImagingBoundingBox[1] = 12;
    header.ImagingBoundingBox[2] = 13;
    header.ImagingBoundingBox[3] = 14;
    const unsigned odd_truth = 7;  // as a foreign stream may bring it
    memcpy(&header.InsertSheet, &odd_truth, sizeof header.InsertSheet);
    header.Jog = CUPS_JOG_SET;
    header.LeadingEdge = CUPS_EDGE_RIGHT;
    header.ManualFeed = CUPS_FALSE;
    header.Margins[0] = 21;
    header.Margins[1] = 22;
    set_text(header.MediaClass, "class");
    set_text(header.MediaColor, "");
    header.MediaPosition = 23;
    set_text(header.MediaType, "100%s");
    header.MediaWeight = 24;
    header.MirrorPrint = CUPS_TRUE;
    header.NegativePrint = CUPS_FALSE;
    header.NumCopies = 25;
    header.Orientation = CUPS_ORIENT_270;
    header.OutputFaceUp = CUPS_TRUE;
    set_text(header.OutputType, "type");
    header.PageSize[0] = 26;
    header.PageSize[1] = 27;
    header.Separations = CUPS_FALSE;
    header.TraySwitch = CUPS_TRUE;
    header.Tumble = CUPS_FALSE;
    header.cupsBitsPerColor = 28;
    header.cupsBitsPerPixel = 29;
    header.cupsBytesPerLine = 0xFFFFFFFF;
    header.cupsColorOrder = CUPS_ORDER_PLANAR;
    header.cupsColorSpace = CUPS_CSPACE_K;
    header.cupsCompression = 0x80000000;
    header.cupsHeight = 31;
    header.cupsMediaType = 32;
    header.cupsRowCount = 33;
    header.cupsRowFeed = 34;
    header.cupsRowStep = 35;
    header.cupsWidth = 36;
    return header;
}

TEST(HeaderDump, FortyLinesInTheirOrder)
{
    const Seen seen = observe([] { dump_header(odd_header()); });
    EXPECT_EQ(seen.err,
              "INFO: AdvanceDistance:1\n"
              "INFO: AdvanceMedia:4\n"
              "INFO: Collate:TRUE\n"
              "INFO: CutMedia:2\n"
              "INFO: Duplex:FALSE\n"
              "INFO: HWResolution:203180\n"
              "INFO: ImagingBoundingBox:left11, bottom12, right13, top14\n"
              "INFO: InsertSheet:TRUE\n"
              "INFO: cups_jog_t:3\n"
              "INFO: cups_edge_t:1\n"
              "INFO: ManualFeed:FALSE\n"
              "INFO: Margins:2122\n"
              "INFO: MediaClass:class\n"
              "INFO: MediaColor:\n"
              "INFO: MediaPosition:23\n"
              "INFO: MediaType:100%s\n"
              "INFO: MediaWeight:24\n"
              "INFO: MirrorPrint:TRUE\n"
              "INFO: NegativePrint:FALSE\n"
              "INFO: NumCopies:25\n"
              "INFO: Orientation:3\n"
              "INFO: OutputFaceUp:TRUE\n"
              "INFO: OutputType:type\n"
              "INFO: PageSize:2627\n"
              "INFO: Separations:FALSE\n"
              "INFO: TraySwitch:TRUE\n"
              "INFO: Tumble:FALSE\n"
              "INFO: cupsBitsPerColor:28\n"
              "INFO: cupsBitsPerPixel:29\n"
              "INFO: cupsBytesPerLine:-1\n"
              "INFO: cupsColorOrder:2\n"
              "INFO: cupsColorSpace:3\n"
              "INFO: cupsCompression:-2147483648\n"
              "INFO: cupsHeight:31\n"
              "INFO: cupsMediaType:32\n"
              "INFO: cupsRowCount:33\n"
              "INFO: cupsRowFeed:34\n"
              "INFO: cupsRowStep:35\n"
              "INFO: cupsWidth:36\n"
              "INFO: cupsHeight:31\n");
    EXPECT_EQ(std::count(seen.err.begin(), seen.err.end(), '\n'), 40);
    EXPECT_EQ(seen.out, "");
}

// The header is the scheduler's; the trace does not repeat it.
TEST(HeaderDump, IsNotTraced)
{
    EXPECT_EQ(observe([] { dump_header(odd_header()); }).trace, "");
}

TEST(HeaderDump, TextsWithoutAnEndStopAtTheFieldsEnd)
{
    cups_page_header_t header = {};
    memset(header.MediaClass, 'a', sizeof header.MediaClass);
    memset(header.MediaColor, 'b', sizeof header.MediaColor);
    memset(header.MediaType, 'c', sizeof header.MediaType);
    memset(header.OutputType, 'd', sizeof header.OutputType);
    const Seen seen = observe_untraced([&] { dump_header(header); });
    for (const auto &[name, sign] :
         {std::pair{"MediaClass", 'a'}, {"MediaColor", 'b'}, {"MediaType", 'c'}, {"OutputType", 'd'}}) {
        const std::string line = std::string("INFO: ") + name + ":" + std::string(64, sign) + "\n";
        EXPECT_NE(seen.err.find(line), std::string::npos) << name;
    }
    EXPECT_EQ(std::count(seen.err.begin(), seen.err.end(), '\n'), 40);
}

TEST(HeaderDump, IsOneWriteWhenMessagesAreHeld)
{
    int writes = 0;
    {
        const WatchedLog err([&](std::string_view) { writes += 1; });
        hold_messages();
        dump_header(odd_header());
        release_messages();
    }
    EXPECT_EQ(writes, 1);
}

}  // namespace
