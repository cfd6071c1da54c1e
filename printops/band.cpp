// Raster band printing. A band is cut into sections that fit the printer's image height and the device's work buffer;
// each section is one raster command.
#include "printops/band.h"

#include "diag/messages.h"
#include "diag/trace.h"
#include "printops/compression.h"
#include "printops/output.h"
#include "printops/rows.h"

#include <klov/printing.h>
#include <stdlib.h>

namespace {

constexpr int32_t mode_plain = 0;
constexpr int32_t mode_compressed = 32;

// Rows of one section inside the band.
struct section {
    const uint8_t *rows;
    uint32_t stride;  // bytes from row to row
    int32_t count;
};

// The compressed form of a section. Kept from band to band and only ever grown, so that no band allocates.
uint8_t *work = nullptr;
size_t work_size = 0;

bool reserve_work(size_t size)
{
    if (size <= work_size) {
        return true;
    }
    free(work);
    work = static_cast<uint8_t *>(malloc(size));
    work_size = work != nullptr ? size : 0;
    return work != nullptr;
}

const uint8_t *row_of(const section &part, int32_t row)
{
    return part.rows + static_cast<size_t>(row) * part.stride;
}

// Blank bytes that all rows have at their left.
uint32_t left_cut(const section &part)
{
    uint32_t cut = part.stride;
    for (int32_t row = 0; row < part.count && cut > 0; ++row) {
        cut = static_cast<uint32_t>(blank_bytes_at_left(row_of(part, row), cut));
    }
    return cut;
}

// Bytes of each row that are sent, counted from the left cut. A page wider than the printer takes the printer's whole
// width, wherever its ink ends. Nothing sensible is left when the result is below 1.
int64_t used_width(const dev_options &options, const section &part, uint32_t left)
{
    const bool too_wide = options.printer_width < static_cast<int64_t>(part.stride);
    if (is_fixed_width_model(options)) {
        return too_wide ? options.printer_width : static_cast<int64_t>(part.stride);
    }
    const int64_t right = too_wide ? options.printer_width
                                   : int64_t{inked_bytes(part.rows, part.stride, static_cast<uint32_t>(part.count))};
    return right - left;
}

void write_rows(const dev_options &options, const uint8_t *rows, uint32_t width, int32_t count)
{
    if (options.compression != 0) {
        uint32_t length = 0;
        tiff_compression(rows, width, static_cast<uint32_t>(count), work, &length);
        write_bytes(work, static_cast<int32_t>(length));
        return;
    }
    write_bytes(rows, static_cast<int32_t>(width * static_cast<uint32_t>(count)));
}

int32_t write_raster_header(const dev_options &options, uint32_t width, int32_t count)
{
    uint8_t command[255];
    uint32_t length = 0;
    const int32_t mode = options.compression != 0 ? mode_compressed : mode_plain;
    const int32_t status =
        klov_cmd_print_raster_img_cmd_header(options.type, mode, static_cast<int32_t>(width), count,
                                             reinterpret_cast<uintptr_t>(command), sizeof command, &length);
    if (status == KLOV_OK) {
        write_bytes(command, static_cast<int32_t>(length));
    }
    return status;
}

// The margin goes out as counted, in bytes: printers that shift lines read it so.
int32_t write_left_margin(const dev_options &options, uint32_t left)
{
    uint8_t command[255];
    uint32_t length = 0;
    const int32_t status =
        klov_cmd_set_left_margin(options.type, static_cast<int32_t>(left), command, sizeof command, &length);
    write_bytes(command, static_cast<int32_t>(length));
    return status;
}

// Rows go out as they lie in the band.
int32_t print_whole_section(const dev_options &options, const section &part)
{
    const int32_t status = write_raster_header(options, part.stride, part.count);
    if (status != KLOV_OK) {
        msgerrno(level_fatal, status);
    }
    write_rows(options, part.rows, part.stride, part.count);
    return status;
}

// Rows are first cropped to width bytes from left on, side by side in the device's work buffer.
int32_t print_trimmed_section(printer_dev *dev, const section &part, uint32_t left, uint32_t width)
{
    const dev_options &options = *dev->devOptions;
    int32_t margin_status = KLOV_OK;
    if (options.issupportshiftline) {
        trace_put("\tcmd_shift_dotline");
        margin_status = write_left_margin(options, left);
    }
    // A fixed-width model that shifts lines would ask for more than the row has behind its left cut.
    const uint32_t present = width < part.stride - left ? width : part.stride - left;
    if (present < width) {
        memset(dev->data_buf, 0, static_cast<size_t>(width) * static_cast<size_t>(part.count));
    }
    for (int32_t row = 0; row < part.count; ++row) {
        memcpy(dev->data_buf + static_cast<size_t>(row) * width, row_of(part, row) + left, present);
    }
    const int32_t status = write_raster_header(options, width, part.count);
    if (status != KLOV_OK) {
        msg(level_fatal, "Error in print_dotline");
    }
    write_rows(options, dev->data_buf, width, part.count);
    trace_put("\tone section complete.\n");
    return margin_status;
}

int32_t print_section(printer_dev *dev, const section &part)
{
    const dev_options &options = *dev->devOptions;
    uint32_t left = 0;
    if (options.issupportshiftline) {
        trace_put("\tisSupportShiftLine:TRUE");
        left = left_cut(part);
    }
    const int64_t width = used_width(options, part, left);
    if (width < 1) {
        return KLOV_OK;
    }
    const int32_t status = width == part.stride ? print_whole_section(options, part)
                                                : print_trimmed_section(dev, part, left, static_cast<uint32_t>(width));
    if (is_fixed_width_model(options)) {
        static const uint8_t feed_nothing[] = {0x1B, 0x4A, 0x00};
        write_bytes(feed_nothing, sizeof feed_nothing);
    }
    return status;
}

}  // namespace

int32_t print_dotline(printer_dev *dev, const uint8_t *pData, uint32_t dwWidthBytes, int32_t dwHeight)
{
    if (dwHeight < 1) {
        return KLOV_OK;
    }
    const int32_t address = static_cast<int32_t>(reinterpret_cast<uintptr_t>(pData));
    trace_put("+print_dotline(pData:", address, ",dwWidthBytes:", static_cast<int32_t>(dwWidthBytes),
              ",dwHeight:", dwHeight, ") start.\n");
    const dev_options &options = *dev->devOptions;
    if (dev->state->lastStripBlanksHeight > 0) {
        dev->state->lastStripBlanksHeight = 0;
    }

    const int64_t fitting_rows = dev->data_buf_size / dwWidthBytes;
    const int64_t most_rows = fitting_rows < options.max_render_height ? fitting_rows : options.max_render_height;
    if (most_rows < 1) {
        msg(level_fatal, "prt databufsize is too small!/n");
    }
    if (options.compression != 0 && !reserve_work((static_cast<size_t>(most_rows) * dwWidthBytes + 4) * 2)) {
        trace_flush();
        return KLOV_OK;
    }

    int32_t status = KLOV_OK;
    for (int32_t start = 0; start < dwHeight;) {
        const int32_t left = dwHeight - start;
        const int32_t count = left < most_rows ? left : static_cast<int32_t>(most_rows);
        const int32_t result =
            print_section(dev, {pData + static_cast<size_t>(start) * dwWidthBytes, dwWidthBytes, count});
        status = result != KLOV_OK ? result : status;
        start += count;
    }
    flush_output();
    trace_finished("print_dotline", status);
    return status;
}
