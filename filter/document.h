// What frames a document and its pages: set-up, finishing, peripherals.
#pragma once

#include "printops/device.h"

// Once before the first page: settings, then the beeps, drawers and logo that are asked for at the start.
void start_doc(printer_dev *dev);

// Around every copy of every page.
void start_page(printer_dev *dev);
void end_page(printer_dev *dev);

// Once after the last page, unless the job was cancelled.
void end_doc(printer_dev *dev);
