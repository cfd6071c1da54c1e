#include "pages/job.h"
#include "pages/log.h"

#include <gtest/gtest.h>
#include <unistd.h>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace pages {
namespace {

Job with(const char *options)
{
    Job job;
    apply_options(parse_options(options), job);
    return job;
}

TEST(JobOptions, WithoutAWordEverythingIsAutomatic)
{
    const Job job = with("");
    EXPECT_EQ(job.scaling, Scaling::automatic);
    EXPECT_FALSE(job.orientation);
    EXPECT_TRUE(job.auto_rotate);
    EXPECT_FALSE(job.collate);
    EXPECT_FALSE(job.mirror);
    EXPECT_TRUE(job.wrap);
    EXPECT_TRUE(job.ranges.empty());
}

TEST(JobOptions, SchedulersOwnWords)
{
    const Job job = with("finishings=3 number-up=1 print-color-mode=monochrome job-uuid=urn:uuid:1 noCollate");
    EXPECT_FALSE(job.collate);
    EXPECT_EQ(job.number_up, 1U);
    EXPECT_TRUE(with("Collate").collate);
    EXPECT_TRUE(with("collate=true").collate);
    EXPECT_FALSE(with("Collate=False").collate);
    EXPECT_TRUE(with("multiple-document-handling=separate-documents-collated-copies").collate);
    EXPECT_FALSE(with("multiple-document-handling=separate-documents-uncollated-copies").collate);
    EXPECT_FALSE(with("nopdfAutoRotate").auto_rotate);
    EXPECT_FALSE(with("nowrap").wrap);
}

TEST(JobOptions, Scaling)
{
    EXPECT_EQ(with("print-scaling=none").scaling, Scaling::none);
    EXPECT_EQ(with("print-scaling=fill").scaling, Scaling::fill);
    EXPECT_EQ(with("print-scaling=auto-fit").scaling, Scaling::auto_fit);
    EXPECT_EQ(with("print-scaling=huge").scaling, Scaling::automatic);
    EXPECT_EQ(with("fit-to-page").scaling, Scaling::fit);
    EXPECT_EQ(with("nofit-to-page").scaling, Scaling::automatic);
    EXPECT_EQ(with("fit-to-page print-scaling=none").scaling, Scaling::none);
    EXPECT_EQ(with("scaling=50").page_percent, 50);
    EXPECT_EQ(with("natural-scaling=150").natural_percent, 150);
    EXPECT_EQ(with("ppi=203").ppi, 203);
}

TEST(JobOptions, NumbersThatMakeNoSenseAreLeftOut)
{
    for (const char *value : {"0", "-1", "nan", "inf", "1e999", "12x", "''", "0x10", "99999999999"}) {
        const Job job = with(("scaling=" + std::string(value) + " cpi=" + value + " ppi=" + value).c_str());
        EXPECT_FALSE(job.page_percent) << value;
        EXPECT_FALSE(job.cpi) << value;
        EXPECT_FALSE(job.ppi) << value;
    }
}

TEST(JobOptions, Orientation)
{
    EXPECT_EQ(with("orientation-requested=3").orientation, Turn::none);
    EXPECT_EQ(with("orientation-requested=4").orientation, Turn::quarter);
    EXPECT_EQ(with("orientation-requested=5").orientation, Turn::three_quarters);
    EXPECT_EQ(with("orientation-requested=6").orientation, Turn::half);
    EXPECT_FALSE(with("orientation-requested=7").orientation);
    EXPECT_FALSE(with("orientation-requested=9").orientation);
    EXPECT_EQ(with("landscape").orientation, Turn::quarter);
}

TEST(JobOptions, Position)
{
    EXPECT_EQ(with("position=bottom-right").across, Place::end);
    EXPECT_EQ(with("position=bottom-right").along, Place::end);
    EXPECT_EQ(with("position=left").across, Place::start);
    EXPECT_FALSE(with("position=nowhere").across);
}

TEST(PageRanges, SelectPages)
{
    const Job job = with("page-ranges=1-2,5,8-");
    for (const unsigned number : {1U, 2U, 5U, 8U, 9U, 1000U}) {
        EXPECT_TRUE(is_wanted(job, number)) << number;
    }
    for (const unsigned number : {3U, 4U, 6U, 7U}) {
        EXPECT_FALSE(is_wanted(job, number)) << number;
    }
    EXPECT_TRUE(is_wanted(with("page-ranges=-3"), 1));
    EXPECT_FALSE(is_wanted(with("page-ranges=-3"), 4));
}

TEST(PageRanges, ASlipSelectsEverything)
{
    for (const char *value : {"x", "3-1", "1,,2", "0", "-", "1-x", "4294967296"}) {
        EXPECT_TRUE(with((std::string("page-ranges=") + value).c_str()).ranges.empty()) << value;
    }
}

TEST(PageRanges, MoreThanAThousandAreNotTaken)
{
    std::string many = "page-ranges=1";
    for (int i = 0; i < 1000; i++) {
        many += ",1";
    }
    EXPECT_TRUE(with(many.c_str()).ranges.empty());
}

TEST(PageSet, OddAndEven)
{
    EXPECT_TRUE(is_wanted(with("page-set=odd"), 1));
    EXPECT_FALSE(is_wanted(with("page-set=odd"), 2));
    EXPECT_TRUE(is_wanted(with("page-set=even"), 2));
    EXPECT_FALSE(is_wanted(with("page-set=even"), 3));
    EXPECT_TRUE(with("outputorder=Reverse").reverse);
}

// A PPD of one page size, with what a test adds.
class PpdFile {
public:
    explicit PpdFile(const std::string &lines)
    {
        char name[] = "/tmp/pages-job-XXXXXX";
        const int file = mkstemp(name);
        path_ = name;
        const std::string text =
            "*PPD-Adobe: \"4.3\"\n*FormatVersion: \"4.3\"\n*FileVersion: \"1\"\n*LanguageVersion: "
            "English\n*LanguageEncoding: ISOLatin1\n*PCFileName: \"X.PPD\"\n*Manufacturer: \"X\"\n"
            "*Product: \"(X)\"\n*PSVersion: \"(3010.000) 0\"\n*ModelName: \"X\"\n*ShortNickName: "
            "\"X\"\n*NickName: \"X\"\n" +
            lines;
        EXPECT_EQ(write(file, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        close(file);
    }
    ~PpdFile()
    {
        unlink(path_.c_str());
    }
    PpdFile(const PpdFile &) = delete;
    PpdFile &operator=(const PpdFile &) = delete;
    const char *path() const
    {
        return path_.c_str();
    }

private:
    std::string path_;
};

std::string pick_one(const std::string &keyword, const std::string &standard, const std::string &choices)
{
    return "*OpenUI *" + keyword + ": PickOne\n*Default" + keyword + ": " + standard + "\n" + choices + "*CloseUI: *" +
           keyword + "\n";
}

std::string sizes()
{
    return pick_one("PageSize", "72x210mm", "*PageSize 72x210mm: \"\"\n*PageSize 50x30mm: \"\"\n") +
           "*DefaultImageableArea: 72x210mm\n*ImageableArea 72x210mm: \"0 0 204.31 595.28\"\n"
           "*ImageableArea 50x30mm: \"0 0 141.88 85\"\n*DefaultPaperDimension: 72x210mm\n"
           "*PaperDimension 72x210mm: \"204.31 595.28\"\n*PaperDimension 50x30mm: \"141.88 85\"\n"
           "*VariablePaperSize: True\n*MaxMediaWidth: \"204.31\"\n*MaxMediaHeight: \"9000\"\n"
           "*CustomPageSize True: \"pop\"\n*ParamCustomPageSize Width: 1 points 28 204.31\n"
           "*ParamCustomPageSize Height: 2 points 14 9000\n*HWMargins: 0 0 0 0\n" +
           pick_one("Resolution", "203dpi", "*Resolution 203dpi: \"\"\n") +
           pick_one("PaperType", "0", "*PaperType 0: \"\"\n*PaperType 1: \"\"\n") +
           pick_one("Dither", "diffusion", "*Dither diffusion: \"\"\n*Dither ordered: \"\"\n") +
           pick_one("Darkness", "0", "*Darkness 0: \"\"\n*Darkness 2: \"\"\n");
}

Job from_ppd(const std::string &options)
{
    const PpdFile ppd(sizes());
    Job job;
    const auto failure = read_paper(ppd.path(), parse_options(options), job);
    EXPECT_FALSE(failure) << (failure ? failure->text : "");
    return job;
}

TEST(PaperOfThePpd, HeadAndDefaults)
{
    const Job job = from_ppd("");
    EXPECT_EQ(job.paper.head_dots, 576U);
    EXPECT_DOUBLE_EQ(job.paper.dpi, 203.2);
    EXPECT_NEAR(job.paper.paper_width, 82, 0.01);
    EXPECT_EQ(job.paper.type, PaperType::roll);
    EXPECT_EQ(job.paper.size_name, "72x210mm");
    EXPECT_EQ(job.dots.dither, Dither::diffusion);
    EXPECT_EQ(job.dots.darkness, 0);
}

TEST(PaperOfThePpd, TheJobSaysMore)
{
    const Job job = from_ppd("PageSize=50x30mm PaperType=2 Dither=threshold Darkness=-3");
    EXPECT_EQ(job.paper.head_dots, 400U);
    EXPECT_EQ(job.paper.type, PaperType::ticket);
    EXPECT_NEAR(job.paper.page_length, 85, 0.01);
    EXPECT_EQ(job.dots.dither, Dither::threshold);
    EXPECT_EQ(job.dots.darkness, -3);
}

TEST(PaperOfThePpd, CustomSizesAreNoWiderThanTheHead)
{
    EXPECT_EQ(from_ppd("PageSize=Custom.80x120mm").paper.head_dots, 576U);
    EXPECT_EQ(from_ppd("PageSize=Custom.40x120mm").paper.head_dots, 320U);
    EXPECT_NEAR(from_ppd("PageSize=Custom.40x120mm").paper.page_length, 120 * 72 / 25.4, 0.1);
}

TEST(PaperOfThePpd, AnUnknownSizeLeavesTheHead)
{
    EXPECT_EQ(from_ppd("PageSize=A4").paper.head_dots, 576U);
}

TEST(PaperOfThePpd, NonsenseLeavesTheDefaults)
{
    const Job job = from_ppd("Dither=sideways Darkness=9 Resolution=0dpi PaperType=x");
    EXPECT_EQ(job.dots.dither, Dither::diffusion);
    EXPECT_EQ(job.dots.darkness, 0);
    EXPECT_EQ(job.paper.resolution, 203U);
    EXPECT_EQ(job.paper.type, PaperType::roll);
}

TEST(PaperOfThePpd, WithoutAPpdThereIsNoPaper)
{
    Job job;
    EXPECT_TRUE(read_paper(nullptr, {}, job));
    EXPECT_TRUE(read_paper("/nowhere/x.ppd", {}, job));
}

TEST(JobArguments, CopiesAreBounded)
{
    const PpdFile ppd(sizes());
    setenv("PPD", ppd.path(), 1);
    struct Case {
        const char *word;
        unsigned copies;
    };
    for (const Case &wanted : {Case{"3", 3}, Case{"0", 1}, Case{"-5", 1}, Case{"x", 1}, Case{"2000000000", 9999}}) {
        const char *const arguments[] = {"pdftoroll", "1", "user", "title", wanted.word, "", "/file"};
        Job job;
        EXPECT_FALSE(read_job(7, arguments, job));
        EXPECT_EQ(job.copies, wanted.copies) << wanted.word;
        EXPECT_EQ(job.file, "/file");
        EXPECT_EQ(job.title, "title");
    }
    const char *const few[] = {"pdftoroll", "1", "user", "title", "1"};
    Job job;
    EXPECT_TRUE(read_job(5, few, job));
}

TEST(ForeignText, ControlBytesAndLengthAreTamed)
{
    EXPECT_EQ(foreign_text("plain \xc3\xa4"), "plain \xc3\xa4");
    EXPECT_EQ(foreign_text("a\nERROR: b\x7f\x1b"), "a\\x0aERROR: b\\x7f\\x1b");
    EXPECT_EQ(foreign_text(std::string(1000, 'x')), std::string(1000, 'x'));
    EXPECT_EQ(foreign_text(std::string(1001, 'x')), std::string(1000, 'x') + "...");
    EXPECT_EQ(foreign_text(std::string(998, 'x') + "\n"), std::string(998, 'x') + "...");
}

}  // namespace
}  // namespace pages
