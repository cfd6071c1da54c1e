// One page of the raster stream on its way to the printer.
#pragma once

#include "printops/device.h"

#include <cups/raster.h>

// Print the page behind the header just read, with all its copies. Messages about the page that the caller holds are
// sent with the first one from here. A broken stream ends the process; a page that cannot be held in memory for its
// copies is skipped.
void process_page(printer_dev *dev, const cups_page_header_t *header, cups_raster_t *stream);
