// Blank feed and paper saving.
#include "printops/blank.h"

#include "diag/messages.h"
#include "diag/trace.h"
#include "printops/output.h"
#include "printops/repeat.h"

#include <klov/printing.h>

namespace {

constexpr int32_t most_rows_a_command = 255;

int32_t saved_quarters(const dev_options &options)
{
    const int32_t mode = options.papersavemode;
    return mode >= 1 && mode <= 3 ? mode : 0;
}

// The fixed-width models know the feed command; on all others a white image one byte wide moves the paper, which
// prints the same on every firmware.
int32_t feed(const dev_options &options, int32_t rows)
{
    uint8_t command[255];
    uint32_t length = 0;
    if (is_fixed_width_model(options)) {
        const int32_t status = klov_cmd_print_and_feed_paper(options.type, rows, command, sizeof command, &length);
        if (status == KLOV_OK) {
            write_bytes(command, static_cast<int32_t>(length));
        }
        return status;
    }
    static const uint8_t white[most_rows_a_command] = {};
    const int32_t status = klov_cmd_print_raster_img_cmd_header(
        options.type, 0, 1, rows, reinterpret_cast<uintptr_t>(command), sizeof command, &length);
    if (status == KLOV_OK) {
        write_bytes(command, static_cast<int32_t>(length));
        write_bytes(white, rows);
    }
    return status;
}

}  // namespace

int32_t print_blank(printer_dev *dev, int32_t blank_counter)
{
    const dev_options &options = *dev->devOptions;
    const int32_t quarters = saved_quarters(options);
    trace_put("+print_blank(blank_counter:", blank_counter, ", save percent ", quarters, "/4) start.\n");
    if (blank_counter < 1) {
        return KLOV_OK;
    }

    // 64 bits: three quarters of a count near the end of 32 bits pass through a larger product.
    int32_t rows = blank_counter - static_cast<int32_t>(static_cast<int64_t>(quarters) * blank_counter / 4);
    int32_t status = KLOV_OK;
    for (int32_t sent = 0; rows > 0 && may_repeat(sent); ++sent) {
        const int32_t chunk = rows > most_rows_a_command ? most_rows_a_command : rows;
        rows -= chunk;
        status = feed(options, chunk);
        if (status != KLOV_OK) {
            msgerrno(level_fatal, status);
        }
    }
    flush_output();
    dev->state->unfed_blank_rows += rows;
    trace_finished("print_blank", status);
    return status;
}
