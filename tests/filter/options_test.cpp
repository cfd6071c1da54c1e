// The options record: where values come from and what they set.
#include "filter/options.h"

#include "filter/device.h"

#include "tests/filter/ppd_text.h"
#include "tests/printops/kit.h"

#include <gtest/gtest.h>
#include <klov/model.h>
#include <klov/result.h>
#include <stdlib.h>

using namespace kit;

namespace {

Seen read_options(Device &device, const Ppd &ppd, const char *job)
{
    const MemoryFile file(ppd.text());
    const PpdInEnvironment environment(file.path());
    return observe([&] { get_options(&device.dev, job); });
}

struct NumberOption {
    const char *keyword;
    int32_t dev_options::*field;
};

const NumberOption number_options[] = {{"PaperType", &dev_options::papertype},
                                       {"PrintLogo", &dev_options::printlogo},
                                       {"LogoIndex", &dev_options::logoindex},
                                       {"LogoAlign", &dev_options::logoalign},
                                       {"BeepControl", &dev_options::beepcontrol},
                                       {"BeepDuration", &dev_options::beepduration},
                                       {"BeepInterval", &dev_options::beepinterval},
                                       {"BeepRepeat", &dev_options::beeptimes},
                                       {"ExternalBeepControl", &dev_options::externalbeepcontrol},
                                       {"ExternalBeepDuration", &dev_options::externalbeepduration},
                                       {"ExternalBeepInterval", &dev_options::externalbeepinterval},
                                       {"ExternalBeepRepeat", &dev_options::externalbeeptimes},
                                       {"Drawer1", &dev_options::drawer1},
                                       {"Drawer2", &dev_options::drawer2},
                                       {"BitmapCompression", &dev_options::compression},
                                       {"PaperSaveMode", &dev_options::papersavemode},
                                       {"PaperSaveBottom", &dev_options::papersavebottom},
                                       {"PostPrintAction", &dev_options::postprintaction},
                                       {"FormfeedLength", &dev_options::feeddistance},
                                       {"CutMode", &dev_options::finalcut},
                                       {"CutPaperLength", &dev_options::cutdistance}};

class EveryNumberOption : public testing::TestWithParam<NumberOption> {
protected:
    int32_t value(const Ppd &ppd, const std::string &job) const
    {
        Device device;
        read_options(device, ppd, job.c_str());
        return device.options.*GetParam().field;
    }
    Ppd with_default(const std::string &choice) const
    {
        return {.options = {{GetParam().keyword, choice, {choice, "9other"}}}};
    }
    std::string job(const std::string &text) const
    {
        return std::string(GetParam().keyword) + "=" + text;
    }
    int32_t built_in() const
    {
        Device device;
        return device.options.*GetParam().field;
    }
};

TEST_P(EveryNumberOption, WithoutAnyValueKeepsItsBuiltInDefault)
{
    EXPECT_EQ(value({}, ""), built_in());
}

TEST_P(EveryNumberOption, TakesThePpdsDefaultChoice)
{
    EXPECT_EQ(value(with_default("17th"), ""), 17);
}

TEST_P(EveryNumberOption, TakesTheJobsValueBeforeThePpds)
{
    EXPECT_EQ(value(with_default("17th"), job("23")), 23);
    EXPECT_EQ(value({}, job("23")), 23);
}

TEST_P(EveryNumberOption, IsZeroWhenItsValueIsNoNumber)
{
    EXPECT_EQ(value(with_default("None"), ""), 0);
    EXPECT_EQ(value({}, job("None")), 0);
    EXPECT_EQ(value(with_default("17th"), job("''")), 0) << "an empty value is a value";
}

TEST_P(EveryNumberOption, SaturatesAndTakesASign)
{
    EXPECT_EQ(value({}, job("99999999999")), INT32_MAX);
    EXPECT_EQ(value({}, job("-99999999999")), INT32_MIN);
    EXPECT_EQ(value({}, job("-5")), -5);
}

TEST_P(EveryNumberOption, IgnoresADefaultThatIsNoChoice)
{
    EXPECT_EQ(value({.options = {{GetParam().keyword, "17th", {"9other"}}}}, ""), built_in());
}

INSTANTIATE_TEST_SUITE_P(Options, EveryNumberOption, testing::ValuesIn(number_options),
                         [](const auto &tested) { return std::string(tested.param.keyword); });

// No option reaches any other field.
TEST(Options, OnlyTheModelChangesAnythingWithoutOptions)
{
    for (const char *job : {static_cast<const char *>(nullptr), ""}) {
        Device device;
        Device fresh;
        read_options(device, {}, job);
        printer_model *model = nullptr;
        ASSERT_EQ(klov_printer_model_creator2("KLR-5813", &model), KLOV_OK);
        EXPECT_EQ(device.options.model, 0x1013U);
        EXPECT_EQ(device.options.model, model->id);
        EXPECT_STREQ(device.options.name, "KLR-5813");
        EXPECT_EQ(device.options.type, model->type);
        EXPECT_EQ(device.options.printer_width, 48);
        EXPECT_EQ(device.options.motion_v, model->motion_v);
        EXPECT_EQ(device.options.max_render_height, 14);
        EXPECT_EQ(device.options.resolution, 203);
        EXPECT_EQ(device.options.dot_unit, fresh.options.dot_unit);
        EXPECT_FALSE(device.options.is_page_cut);
        EXPECT_FALSE(device.options.issupportshiftline || device.options.islabelprinter);
        EXPECT_FALSE(device.options.pagemode || device.options.ticketmode);
        EXPECT_EQ(device.options.speed, -1);
        EXPECT_EQ(device.options.density, -1);
        EXPECT_EQ(device.options.linespacing, -1);
        EXPECT_EQ(device.options.fwdfeed, 0);
        EXPECT_EQ(device.options.backfeed, 0);
        EXPECT_EQ(device.options.cut_spacing, 0.0F);
        klov_printer_model_destroy(model);
    }
}

TEST(Options, BuiltInDefaults)
{
    dev_options options;
    memset(static_cast<void *>(&options), 0xEE, sizeof options);
    EXPECT_EQ(init_dev_mode(&options), &options);
    EXPECT_EQ(options.model, 0x1001U);
    EXPECT_EQ(options.name, nullptr);
    EXPECT_EQ(options.type, 0x10010001U);
    EXPECT_EQ(options.printer_width, 48);
    EXPECT_EQ(options.max_render_height, 14);
    EXPECT_EQ(options.motion_v, 0.0F);
    EXPECT_EQ(options.resolution, 203);
    EXPECT_EQ(options.dot_unit, static_cast<float>(254.0 / 203 / 10.0));
    EXPECT_NEAR(static_cast<double>(options.dot_unit), 0.12512315, 1e-8);
    EXPECT_EQ(options.beeptimes, 1);
    EXPECT_EQ(options.externalbeeptimes, 1);
    EXPECT_EQ(options.postprintaction, 2);
    EXPECT_EQ(options.cutdistance, -1);
    EXPECT_EQ(options.papersavebottom, 1);
    for (const NumberOption &option : number_options) {
        const std::string keyword = option.keyword;
        if (keyword != "BeepRepeat" && keyword != "ExternalBeepRepeat" && keyword != "PostPrintAction" &&
            keyword != "CutPaperLength" && keyword != "PaperSaveBottom") {
            EXPECT_EQ(options.*option.field, 0) << keyword;
        }
    }
    EXPECT_EQ(options.reserved, 0);
}

// ---- Resolution and post-print action ----

const Ppd at_203 = {.options = {{"Resolution", "203dpi", {"203dpi", "300dpi"}}}};

TEST(Options, TheJobsResolutionGoesBeforeThePpds)
{
    Device device;
    read_options(device, at_203, "Resolution=300dpi");
    EXPECT_EQ(device.options.resolution, 300);
    EXPECT_NEAR(static_cast<double>(device.options.dot_unit), 0.0846667, 1e-7);
    EXPECT_EQ(device.options.dot_unit, static_cast<float>(254.0 / 300 / 10.0));
    EXPECT_EQ(device.options.motion_v, device.options.dot_unit);
}

// Also a default replaces the model's own motion unit.
TEST(Options, AnyResolutionReplacesTheModelsMotionUnit)
{
    Device device;
    read_options(device, at_203, nullptr);
    EXPECT_EQ(device.options.motion_v, static_cast<float>(254.0 / 203 / 10.0));
}

TEST(Options, AResolutionOfZeroMakesDistancesVanish)
{
    Device device;
    read_options(device, at_203, "Resolution=draft");
    EXPECT_EQ(device.options.resolution, 0);
    EXPECT_GT(device.options.dot_unit, 1e30F);
    EXPECT_EQ(device.options.motion_v, device.options.dot_unit);
}

TEST(Options, ActionThreeCutsEveryPage)
{
    for (const auto &[job, cut] : {std::pair{"PostPrintAction=3", true}, {"PostPrintAction=2", false}}) {
        Device device;
        read_options(device, {}, job);
        EXPECT_EQ(device.options.is_page_cut, cut);
    }
}

TEST(Options, NothingTurnsThePageCutOffAgain)
{
    Device device;
    device.options.is_page_cut = true;
    read_options(device, {}, "PostPrintAction=1");
    EXPECT_TRUE(device.options.is_page_cut);
    EXPECT_EQ(device.options.postprintaction, 1);
}

TEST(Options, KeywordsCompareWithoutCase)
{
    Device device;
    read_options(device, {}, "cutmode=2 DRAWER1=1");
    EXPECT_EQ(device.options.finalcut, 2);
    EXPECT_EQ(device.options.drawer1, 1);
}

TEST(Options, StrangersAreSkipped)
{
    Device device;
    read_options(device, {}, "job-uuid=urn:uuid:1 nocollate CutMode=1 finishings=3");
    EXPECT_EQ(device.options.finalcut, 1);
}

TEST(Options, OfTheSameKeywordTheLastOneCounts)
{
    Device device;
    read_options(device, {}, "CutMode=1 CutMode=2");
    EXPECT_EQ(device.options.finalcut, 2);
}

// ---- Log and trace ----

TEST(Options, TheOptionStringIsLogged)
{
    const MemoryFile file(Ppd{}.text());
    const PpdInEnvironment environment(file.path());
    Device device;
    const Seen seen = observe([&] { get_options(&device.dev, "CutMode=1  x"); });
    EXPECT_EQ(seen.err, "DEBUG: CutMode=1  x \n");
    EXPECT_EQ(seen.out, "");
    EXPECT_EQ(seen.trace, "+get_options() start.\n\tget_options PPD:" + file.path() +
                              ".\n\tget_options modelname:KLR-5813.\nDEBUG: CutMode=1  x\n-get options finished.\n");
}

TEST(Options, ANullOptionStringIsNoFault)
{
    Device device;
    const Seen seen = read_options(device, {}, nullptr);
    EXPECT_EQ(seen.err, "DEBUG: (null) \n");
}

// ---- What ends the job ----

Ended end_of(const Ppd &ppd)
{
    const MemoryFile file(ppd.text());
    const PpdInEnvironment environment(file.path());
    return run_to_end([] {
        Device device;
        get_options(&device.dev, "");
    });
}

TEST(OptionsFatal, WithoutAPpdVariable)
{
    unsetenv("PPD");
    const Ended ended = run_to_end([] {
        Device device;
        get_options(&device.dev, "");
    });
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.err, fatal_line("PPD environment variable not set"));
    EXPECT_EQ(ended.trace, "+get_options() start.\n\tPPD environment variable not set!\n");
}

TEST(OptionsFatal, WithAPpdThatCannotBeOpened)
{
    for (const std::string path : {"", "/nowhere/x.ppd", "/dev/null"}) {
        const PpdInEnvironment environment(path);
        const Ended ended = run_to_end([] {
            Device device;
            get_options(&device.dev, "");
        });
        EXPECT_EQ(ended.status, 1);
        EXPECT_EQ(ended.err, fatal_line("ppdOpenFile failed"));
        EXPECT_EQ(ended.trace, "+get_options() start.\n\tget_options PPD:" + path + ".\n\tppdOpenFile failed!\n");
    }
}

void expect_wrong_model(const Ended &ended)
{
    EXPECT_EQ(ended.status, 1);
    const std::string complaint = code_text(KLOV_E_UNKNOWN_MODEL);
    const std::string cups = fatal_line("").substr(std::string("ERROR:Raster(, ").size());
    EXPECT_EQ(ended.err, "DEBUG: " + complaint + " (" + cups + fatal_line("wrong ppd modelname!"));
    const std::string tail = "DEBUG: " + complaint + "\n-wrong ppd modelname!\n";
    ASSERT_GE(ended.trace.size(), tail.size());
    EXPECT_EQ(ended.trace.substr(ended.trace.size() - tail.size()), tail);
}

TEST(OptionsFatal, WithAModelThatIsNotInTheCatalogue)
{
    expect_wrong_model(end_of({.short_nick_name = "No-Such-Printer"}));
}

TEST(OptionsFatal, WithoutAModelName)
{
    expect_wrong_model(end_of({.short_nick_name = ""}));
}

TEST(ModelInfo, AnUnknownNameChangesNothing)
{
    for (const char *name : {"No-Such-Printer", static_cast<const char *>(nullptr)}) {
        Device device;
        const dev_options before = device.options;
        int32_t status = 0;
        const Seen seen = observe([&] { status = get_model_info(&device.options, name); });
        EXPECT_EQ(status, KLOV_E_UNKNOWN_MODEL);
        EXPECT_EQ(memcmp(&device.options, &before, sizeof before), 0);
        EXPECT_EQ(seen.trace, "DEBUG: " + code_text(KLOV_E_UNKNOWN_MODEL) + "\n");
    }
}

}  // namespace
