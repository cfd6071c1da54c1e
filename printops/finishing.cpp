// The ten finishing and peripheral operations and the one pattern that they share.
#include "printops/finishing.h"

#include "diag/trace.h"
#include "printops/output.h"
#include "printops/repeat.h"

#include <klov/printing.h>

namespace {

// The command of one operation.
struct command {
    uint8_t bytes[255];
    uint32_t length = 0;
};

// Option values travel in one byte; arithmetic on them wraps.
constexpr int32_t byte_of(uint32_t value)
{
    return static_cast<int32_t>(value & 0xFF);
}

constexpr int32_t byte_of(int32_t value)
{
    return byte_of(static_cast<uint32_t>(value));
}

void trace_start(const char *operation, const printer_dev *dev)
{
    trace_put("+", operation, "(printer_class:", static_cast<int32_t>(dev->devOptions->type), ") start.\n");
}

// Write what the encoder made, times in a row, unless it refused.
int32_t finish(const char *operation, int32_t status, const command &made, int32_t times = 1)
{
    for (int32_t sent = 0; status == KLOV_OK && sent < times && may_repeat(sent); ++sent) {
        write_bytes(made.bytes, static_cast<int32_t>(made.length));
    }
    trace_finished(operation, status);
    return status;
}

using setting_encoder = int32_t (*)(uint32_t printer_class, int32_t value, uint8_t *buf, uint32_t cap, uint32_t *len);

// A printer setting of one byte.
int32_t send_setting(const char *operation, const printer_dev *dev, setting_encoder encode, int32_t value)
{
    command setting;
    trace_start(operation, dev);
    const int32_t status =
        encode(dev->devOptions->type, byte_of(value), setting.bytes, sizeof setting.bytes, &setting.length);
    return finish(operation, status, setting);
}

}  // namespace

int32_t print_cut_page(printer_dev *dev)
{
    command cut;
    trace_start("print_cut_page", dev);
    const int32_t mode = byte_of('C' - byte_of(dev->devOptions->finalcut));
    const int32_t status = klov_cmd_select_cut_mode_and_feed_paper(dev->devOptions->type, mode, 0, cut.bytes,
                                                                   sizeof cut.bytes, &cut.length);
    return finish("print_cut_page", status, cut);
}

int32_t print_position_next_ticket(printer_dev *dev)
{
    command next;
    trace_start("print_position_next_ticket", dev);
    const int32_t status =
        klov_cmd_print_and_return_standard_mode(dev->devOptions->type, next.bytes, sizeof next.bytes, &next.length);
    return finish("print_position_next_ticket", status, next);
}

int32_t printer_set_speed(printer_dev *dev)
{
    return send_setting("printer_set_speed", dev, klov_cmd_select_the_print_speed, dev->devOptions->speed);
}

int32_t printer_set_density(printer_dev *dev)
{
    return send_setting("printer_set_density", dev, klov_cmd_select_the_print_density, dev->devOptions->density);
}

int32_t printer_set_linespacing(printer_dev *dev)
{
    return send_setting("printer_set_linespacing", dev, klov_cmd_set_line_spacing, dev->devOptions->linespacing);
}

int32_t print_beep(printer_dev *dev)
{
    command beep;
    const dev_options &options = *dev->devOptions;
    const int32_t status =
        klov_cmd_beep_integrated_beeper(options.type, byte_of(options.beeptimes), byte_of(options.beepduration),
                                        byte_of(options.beepinterval), beep.bytes, sizeof beep.bytes, &beep.length);
    return finish("print_beep", status, beep);
}

int32_t print_external_beep(printer_dev *dev)
{
    command pulse;
    const dev_options &options = *dev->devOptions;
    // Begins with "-" though it opens the operation; readers of old traces look for it so.
    trace_put("-print_external_beep start(", options.externalbeeptimes, ")\n");
    const int32_t on_time = byte_of(static_cast<uint32_t>(options.externalbeepduration) * 50);
    const int32_t off_time = byte_of(static_cast<uint32_t>(options.externalbeepinterval) * 50);
    const int32_t status =
        klov_cmd_generate_pulse(options.type, 0, on_time, off_time, pulse.bytes, sizeof pulse.bytes, &pulse.length);
    return finish("print_external_beep", status, pulse, options.externalbeeptimes);
}

int32_t print_open_drawer(printer_dev *dev, int32_t drawer)
{
    command pulse;
    const int32_t status = klov_cmd_generate_pulse(dev->devOptions->type, byte_of(drawer), 80, 80, pulse.bytes,
                                                   sizeof pulse.bytes, &pulse.length);
    return finish("print_open_drawer", status, pulse);
}

int32_t print_logo(printer_dev *dev)
{
    command logo;
    const dev_options &options = *dev->devOptions;
    const int32_t key = byte_of(static_cast<uint32_t>(options.logoindex) + '/');
    int32_t status = klov_cmd_print_the_specified_NV_graphics_data_gmode(options.type, '0', key, 1, 1, logo.bytes,
                                                                         sizeof logo.bytes, &logo.length);
    if (status == KLOV_OK) {
        status = klov_cmd_select_justification(options.type, 0, logo.bytes, sizeof logo.bytes, &logo.length);
    }
    return finish("print_logo", status, logo);
}

int32_t printer_set_align(printer_dev *dev)
{
    command align;
    const int32_t justification = byte_of(static_cast<uint32_t>(dev->devOptions->logoalign) - 1);
    const int32_t status = klov_cmd_select_justification(dev->devOptions->type, justification, align.bytes,
                                                         sizeof align.bytes, &align.length);
    return finish("print_set_logo_align", status, align);
}
