// Reads the PPD and the job's options into the options record.
#include "filter/options.h"

#include "diag/foreign.h"
#include "diag/messages.h"
#include "diag/trace.h"
#include "filter/number.h"

#include <cups/cups.h>
#include <cups/ppd.h>
#include <klov/model.h>
#include <klov/result.h>
#include <stdlib.h>

namespace {

// Where values come from.
struct option_source {
    ppd_file_t *ppd;
    int count;
    cups_option_t *list;
};

void apply_resolution(dev_options &options, const char *value, ppd_file_t *)
{
    options.resolution = parse_number(value);
    options.motion_v = static_cast<float>(254.0 / options.resolution / 10.0);
    options.dot_unit = options.motion_v;
}

// The size's keyword begins with the width in bytes; strips and commands then hold about one kilobyte.
void apply_strip_height(dev_options &options, const char *value, ppd_file_t *)
{
    options.printer_width = parse_number(value);
    if (options.printer_width != 0) {
        options.max_render_height = 1024 / options.printer_width;
    }
}

// The printable width comes from the size's imageable area, where the PPD knows the size.
void apply_page_width(dev_options &options, const char *value, ppd_file_t *ppd)
{
    const ppd_size_t *size = ppdPageSize(ppd, value);
    if (size != nullptr) {
        const double right = size->right;
        options.printer_width = whole_number((right / 72.0 * options.resolution + 7.0) / 8.0);
    }
}

void apply_post_print_action(dev_options &options, const char *value, ppd_file_t *)
{
    options.postprintaction = parse_number(value);
    if (options.postprintaction == 3) {
        options.is_page_cut = true;
    }
}

// One keyword: a plain number for a field, or a rule of its own.
struct option_row {
    const char *keyword;
    int32_t dev_options::*field = nullptr;
    void (*apply)(dev_options &options, const char *value, ppd_file_t *ppd) = nullptr;
};

// In this order: the page width needs the resolution.
constexpr option_row option_table[] = {
    {.keyword = "Resolution", .apply = apply_resolution},
    {.keyword = "PageSize", .apply = apply_strip_height},
    {.keyword = "PaperType", .field = &dev_options::papertype},
    {.keyword = "PageSize", .apply = apply_page_width},
    {.keyword = "PrintLogo", .field = &dev_options::printlogo},
    {.keyword = "LogoIndex", .field = &dev_options::logoindex},
    {.keyword = "LogoAlign", .field = &dev_options::logoalign},
    {.keyword = "BeepControl", .field = &dev_options::beepcontrol},
    {.keyword = "BeepDuration", .field = &dev_options::beepduration},
    {.keyword = "BeepInterval", .field = &dev_options::beepinterval},
    {.keyword = "BeepRepeat", .field = &dev_options::beeptimes},
    {.keyword = "ExternalBeepControl", .field = &dev_options::externalbeepcontrol},
    {.keyword = "ExternalBeepDuration", .field = &dev_options::externalbeepduration},
    {.keyword = "ExternalBeepInterval", .field = &dev_options::externalbeepinterval},
    {.keyword = "ExternalBeepRepeat", .field = &dev_options::externalbeeptimes},
    {.keyword = "Drawer1", .field = &dev_options::drawer1},
    {.keyword = "Drawer2", .field = &dev_options::drawer2},
    {.keyword = "BitmapCompression", .field = &dev_options::compression},
    {.keyword = "PaperSaveMode", .field = &dev_options::papersavemode},
    {.keyword = "PaperSaveBottom", .field = &dev_options::papersavebottom},
    {.keyword = "PostPrintAction", .apply = apply_post_print_action},
    {.keyword = "FormfeedLength", .field = &dev_options::feeddistance},
    {.keyword = "CutMode", .field = &dev_options::finalcut},
    {.keyword = "CutPaperLength", .field = &dev_options::cutdistance},
};

// The job's own value, else the PPD's default choice, else null.
const char *find_value(const option_source &source, const char *keyword)
{
    const char *value = cupsGetOption(keyword, source.count, source.list);
    if (value != nullptr) {
        return value;
    }
    const ppd_choice_t *marked = ppdFindMarkedChoice(source.ppd, keyword);
    return marked != nullptr ? marked->choice : nullptr;
}

void apply_options(dev_options &options, const option_source &source)
{
    for (const option_row &row : option_table) {
        const char *value = find_value(source, row.keyword);
        if (value == nullptr) {
            continue;
        }
        if (row.apply != nullptr) {
            row.apply(options, value, source.ppd);
        } else {
            options.*row.field = parse_number(value);
        }
    }
}

ppd_file_t *open_ppd()
{
    const char *path = getenv("PPD");
    if (path == nullptr) {
        trace_put("\tPPD environment variable not set!\n");
        error("PPD environment variable not set");
    }
    trace_put("\tget_options PPD:", shown(path).text, ".\n");
    ppd_file_t *ppd = ppdOpenFile(path);
    if (ppd == nullptr) {
        trace_put("\tppdOpenFile failed!\n");
        error("ppdOpenFile failed");
    }
    return ppd;
}

}  // namespace

int32_t get_model_info(dev_options *options, const char *model_name)
{
    printer_model *model = nullptr;
    const int32_t status =
        model_name != nullptr ? klov_printer_model_creator2(model_name, &model) : KLOV_E_UNKNOWN_MODEL;
    if (status != KLOV_OK) {
        return msgerrno(level_debug, status);
    }
    options->model = model->id;
    options->name = model->model_name;
    options->type = model->type;
    options->printer_width = model->width / 8;
    options->motion_v = model->motion_v;
    klov_printer_model_destroy(model);
    return KLOV_OK;
}

void get_options(printer_dev *dev, const char *options)
{
    trace_put("+get_options() start.\n");
    option_source source = {open_ppd(), 0, nullptr};
    ppdMarkDefaults(source.ppd);
    if (options != nullptr) {
        source.count = cupsParseOptions(options, 0, &source.list);
    }
    trace_put("\tget_options modelname:", shown(source.ppd->shortnickname).text, ".\n");
    if (get_model_info(dev->devOptions, source.ppd->shortnickname) != 0) {
        trace_put("-wrong ppd modelname!\n");
        error("wrong ppd modelname!");
    }
    apply_options(*dev->devOptions, source);
    if (source.count > 0) {
        cupsFreeOptions(source.count, source.list);
    }
    ppdClose(source.ppd);
    msg(level_dump, shown(options).text);
    trace_put("-get options finished.\n");
}
