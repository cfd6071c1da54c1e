#include "tests/filter/ppd_text.h"

#include <stdlib.h>

namespace {

std::string option_text(const PpdOption &option)
{
    std::string text =
        "*OpenUI *" + option.keyword + ": PickOne\n*OrderDependency: 10 AnySetup *" + option.keyword + "\n";
    if (!option.default_choice.empty()) {
        text += "*Default" + option.keyword + ": " + option.default_choice + "\n";
    }
    for (const std::string &choice : option.choices) {
        text += "*" + option.keyword + " " + choice + ": \"\"\n";
    }
    return text + "*CloseUI: *" + option.keyword + "\n";
}

}  // namespace

std::string Ppd::text() const
{
    std::string text =
        "*PPD-Adobe: \"4.3\"\n*FormatVersion: \"4.3\"\n*FileVersion: \"1.0\"\n*LanguageVersion: English\n"
        "*LanguageEncoding: ISOLatin1\n*PCFileName: \"TEST.PPD\"\n*Manufacturer: \"Test\"\n*Product: \"(Test)\"\n"
        "*ModelName: \"Test Printer\"\n*NickName: \"Test Printer\"\n*PSVersion: \"(3010.000) 0\"\n";
    if (!short_nick_name.empty()) {
        text += "*ShortNickName: \"" + short_nick_name + "\"\n";
    }
    if (custom_sizes) {
        text +=
            "*VariablePaperSize: True\n*HWMargins: 0 0 9 0\n*MaxMediaWidth: \"3000\"\n*MaxMediaHeight: \"9000\"\n"
            "*CustomPageSize True: \"pop\"\n*ParamCustomPageSize Width: 1 points 1 3000\n"
            "*ParamCustomPageSize Height: 2 points 1 9000\n";
    }
    if (!sizes.empty()) {
        PpdOption page_size = {"PageSize", default_size, {}};
        for (const PpdSize &size : sizes) {
            page_size.choices.push_back(size.name);
        }
        text += option_text(page_size);
    }
    for (const PpdOption &option : options) {
        text += option_text(option);
    }
    for (const PpdSize &size : sizes) {
        if (!size.area.empty()) {
            text += "*ImageableArea " + size.name + ": \"" + size.area + "\"\n";
        }
        text += "*PaperDimension " + size.name + ": \"204 600\"\n";
    }
    return text;
}

PpdInEnvironment::PpdInEnvironment(const std::string &path)
{
    setenv("PPD", path.c_str(), 1);
}

PpdInEnvironment::~PpdInEnvironment()
{
    unsetenv("PPD");
}
