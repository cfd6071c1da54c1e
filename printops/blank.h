// Blank rows as paper feed instead of image data.
#pragma once

#include "printops/device.h"

// Feed blank_counter dot rows, less what paper saving takes off. A count below 1 feeds nothing. Returns 0 or the code
// of the encoder that refused.
int32_t print_blank(printer_dev *dev, int32_t blank_counter);
