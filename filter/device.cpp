// The device object: built once before the raster stream is opened, freed once after it is closed.
#include "filter/device.h"

#include "diag/messages.h"
#include "diag/trace.h"
#include "filter/option_dump.h"
#include "filter/options.h"

#include <stdlib.h>

namespace {

template <typename Record>
Record *zeroed()
{
    return static_cast<Record *>(calloc(1, sizeof(Record)));
}

uint8_t *zeroed_bytes(uint32_t size)
{
    return static_cast<uint8_t *>(calloc(1, size));
}

void free_records(printer_dev *dev)
{
    free(dev->state);
    free(dev->devOptions);
    free(dev);
}

}  // namespace

dev_options *init_dev_mode(dev_options *options)
{
    *options = {};
    return options;
}

int32_t klov_printer_dev_creator(const char *options, printer_dev **handle)
{
    dev_options *record = zeroed<dev_options>();
    if (record == nullptr) {
        error("Cannot allocate devOptions buffer");
    }
    render_state *state = zeroed<render_state>();
    if (state == nullptr) {
        free(record);
        error("Cannot allocate rending buffer");
    }
    printer_dev *dev = zeroed<printer_dev>();
    if (dev == nullptr) {
        free(state);
        free(record);
        error("Cannot allocate dev buffer");
    }
    dev->devOptions = init_dev_mode(record);
    dev->state = state;

    get_options(dev, options);
    dump_options(record);
    trace_put("-dump options finished.\n");

    // Unsigned on purpose: odd widths from the options wrap, and page processing refuses rows that do not fit.
    const uint32_t strip_size =
        static_cast<uint32_t>(record->printer_width) * static_cast<uint32_t>(record->max_render_height);
    dev->render_data = zeroed_bytes(strip_size);
    if (dev->render_data == nullptr) {
        free_records(dev);
        error("Cannot allocate rending data buffer");
    }
    dev->render_data_size = strip_size;
    dev->data_buf_size = strip_size + 20;
    dev->data_buf = zeroed_bytes(dev->data_buf_size);
    if (dev->data_buf == nullptr) {
        free(dev->render_data);
        free_records(dev);
        error("Cannot allocate data buffer");
    }
    *handle = dev;
    return 0;
}

int32_t klov_printer_dev_destroy(printer_dev *dev)
{
    free(dev->data_buf);
    free(dev->render_data);
    free_records(dev);
    return 0;
}
