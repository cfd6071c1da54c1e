// Document and page sequencing.
#include "filter/document.h"

#include "diag/trace.h"
#include "filter/number.h"
#include "printops/blank.h"
#include "printops/finishing.h"
#include "printops/output.h"

#include <stdio.h>

namespace {

constexpr int32_t at_start = 1;
constexpr int32_t at_end = 2;

constexpr int32_t action_feed = 1;
constexpr int32_t action_feed_and_cut = 2;
constexpr int32_t action_cut_every_page = 3;

// Millimetres to dots, in single precision, truncated toward zero.
int32_t dots_of(const dev_options &options, int32_t millimetres)
{
    const float dots = static_cast<float>(millimetres) / options.dot_unit;
    return whole_number(static_cast<double>(dots));
}

// How a distance of the options became dots.
void trace_distance(const char *what, const dev_options &options, int32_t dots, int32_t millimetres)
{
    char unit[64];
    snprintf(unit, sizeof unit, "%f", static_cast<double>(options.dot_unit));
    // The label says feeddistance in either case; trace readers rely on the text.
    trace_put("*end_doc ", what, " = ", dots, ", feeddistance = ", millimetres, ", dot_unit = ", unit, ".\n");
}

// Beeps, drawers and logo whose control option names this moment.
void run_peripherals(printer_dev *dev, int32_t moment)
{
    const dev_options &options = *dev->devOptions;
    if (options.beepcontrol == moment) {
        print_beep(dev);
    }
    if (options.externalbeepcontrol == moment) {
        print_external_beep(dev);
    }
    if (options.drawer1 == moment) {
        print_open_drawer(dev, 0);
    }
    if (options.drawer2 == moment) {
        print_open_drawer(dev, 1);
    }
    if (options.printlogo == moment) {
        printer_set_align(dev);
        print_logo(dev);
    }
}

void run_post_print_action(printer_dev *dev)
{
    const dev_options &options = *dev->devOptions;
    if (options.postprintaction == action_feed) {
        const int32_t dots = dots_of(options, options.feeddistance);
        print_blank(dev, dots);
        trace_distance("feed_dots", options, dots, options.feeddistance);
    } else if (options.postprintaction == action_feed_and_cut) {
        const int32_t dots = dots_of(options, options.cutdistance);
        print_blank(dev, dots);
        print_cut_page(dev);
        trace_distance("cut_dots", options, dots, options.cutdistance);
    }
}

}  // namespace

void start_doc(printer_dev *dev)
{
    const dev_options &options = *dev->devOptions;
    trace_put("+start_doc start.\n");
    flush_output();
    dev->state->lastStripBlanksHeight = 0;
    if (options.speed != -1) {
        printer_set_speed(dev);
    }
    if (options.density != -1) {
        printer_set_density(dev);
    }
    if (options.linespacing != -1) {
        printer_set_linespacing(dev);
    }
    run_peripherals(dev, at_start);
    flush_output();
    trace_put("-start_doc finished.\n");
}

void start_page(printer_dev *dev)
{
    trace_put("+start_page start.\n");
    dev->state->unfed_blank_rows = 0;
    dev->state->lastStripBlanksHeight = 0;
    trace_put("-start_page finished.\n");
}

void end_page(printer_dev *dev)
{
    const dev_options &options = *dev->devOptions;
    trace_put("+end_page start.\n");
    dev->state->unfed_blank_rows = 0;
    if (!options.pagemode && options.ticketmode) {
        dev->state->lastStripBlanksHeight = 0;
    }
    if (options.papertype == 1 || options.papertype == 2) {
        print_position_next_ticket(dev);
    }
    if (options.postprintaction == action_cut_every_page) {
        print_blank(dev, dots_of(options, options.cutdistance));
        print_cut_page(dev);
    }
    trace_put("-end_page finished.\n");
}

void end_doc(printer_dev *dev)
{
    const dev_options &options = *dev->devOptions;
    trace_put("+end_doc start.\n");
    if (options.fwdfeed != 0) {
        trace_put("\tfwdfeed:", options.fwdfeed, ".\n");
        if (options.fwdfeed != -1) {
            print_blank(dev, options.fwdfeed);
        }
    }
    // Without ticket mode no kind of cut asks for anything here: the cut comes with the post-print action.
    trace_put(options.ticketmode ? "\tticketmode:1.\n" : "\tticketmode:0.\n\tticketmode:False.\n");
    run_peripherals(dev, at_end);
    run_post_print_action(dev);
    flush_output();
    trace_put("-end_doc finished.\n");
}
