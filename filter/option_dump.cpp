// Lists the options record. The uneven spacing of the lines is what log readers have always seen.
#include "filter/option_dump.h"

#include "diag/messages.h"

#include <stdio.h>

namespace {

// One line: its format and the one field that it shows.
struct dump_row {
    const char *format;
    uint32_t dev_options::*word = nullptr;
    int32_t dev_options::*number = nullptr;
    bool dev_options::*flag = nullptr;
    float dev_options::*distance = nullptr;
    const char *dev_options::*text = nullptr;
};

constexpr dump_row dump_table[] = {
    {.format = "model            = 0x%x", .word = &dev_options::model},
    {.format = "name             = %s", .text = &dev_options::name},
    {.format = "type             = 0x%x", .word = &dev_options::type},
    {.format = "printer_width    = %d bytes", .number = &dev_options::printer_width},
    {.format = "max_render_height= %d", .number = &dev_options::max_render_height},
    {.format = "issupportshiftline= %s", .flag = &dev_options::issupportshiftline},
    {.format = "islabelprinter   = %s", .flag = &dev_options::islabelprinter},
    {.format = "cut_spacing     = %f", .distance = &dev_options::cut_spacing},
    {.format = "motion_v        = %f", .distance = &dev_options::motion_v},
    {.format = "dot_unit         = %f", .distance = &dev_options::dot_unit},
    {.format = "compression         = %d", .number = &dev_options::compression},
    {.format = "papertype        = %d", .number = &dev_options::papertype},
    {.format = "pagemode         = %s", .flag = &dev_options::pagemode},
    {.format = "ticketmode       = %s", .flag = &dev_options::ticketmode},
    {.format = "finalcut         = %d", .number = &dev_options::finalcut},
    {.format = "is_page_cut      = %s", .flag = &dev_options::is_page_cut},
    {.format = "fwdfeed          = %d", .number = &dev_options::fwdfeed},
    {.format = "backfeed         = %d", .number = &dev_options::backfeed},
    {.format = "speed            = %d", .number = &dev_options::speed},
    {.format = "density          = %d", .number = &dev_options::density},
    {.format = "linespacing      = %d", .number = &dev_options::linespacing},
    {.format = "printlogo        = %d", .number = &dev_options::printlogo},
    {.format = "logoindex        = %d", .number = &dev_options::logoindex},
    {.format = "logoalign        = %d", .number = &dev_options::logoalign},
    {.format = "beepcontrol        = %d", .number = &dev_options::beepcontrol},
    {.format = "beepduration        = %d", .number = &dev_options::beepduration},
    {.format = "beepinterval        = %d", .number = &dev_options::beepinterval},
    {.format = "beeptimes        = %d", .number = &dev_options::beeptimes},
    {.format = "externalbeepcontrol        = %d", .number = &dev_options::externalbeepcontrol},
    {.format = "externalbeepduration        = %d", .number = &dev_options::externalbeepduration},
    {.format = "externalbeepinterval        = %d", .number = &dev_options::externalbeepinterval},
    {.format = "externalbeeptimes        = %d", .number = &dev_options::externalbeeptimes},
    {.format = "drawer1        = %d", .number = &dev_options::drawer1},
    {.format = "drawer2        = %d", .number = &dev_options::drawer2},
    {.format = "postprintaction       =%d", .number = &dev_options::postprintaction},
    {.format = "feeddistance        = %d", .number = &dev_options::feeddistance},
    {.format = "cutdistance        = %d", .number = &dev_options::cutdistance},
    {.format = "papersavemode        = %d", .number = &dev_options::papersavemode},
    {.format = "papersavebottom        = %d", .number = &dev_options::papersavebottom},
};

void format_row(char *line, size_t size, const dump_row &row, const dev_options &options)
{
    if (row.word != nullptr) {
        snprintf(line, size, row.format, options.*row.word);
    } else if (row.number != nullptr) {
        snprintf(line, size, row.format, options.*row.number);
    } else if (row.flag != nullptr) {
        snprintf(line, size, row.format, options.*row.flag ? "YES" : "NO");
    } else if (row.distance != nullptr) {
        snprintf(line, size, row.format, static_cast<double>(options.*row.distance));
    } else {
        snprintf(line, size, row.format, options.*row.text);
    }
}

}  // namespace

void dump_options(const dev_options *options)
{
    char line[255];
    hold_messages();
    msg(level_dump, "CUPS printing options");
    for (const dump_row &row : dump_table) {
        format_row(line, sizeof line, row, *options);
        msg(level_dump, line);
    }
    release_messages();
}
