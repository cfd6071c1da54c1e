// Inked rows on their way to the printer: trimmed, compressed on request, sent as raster bit-image commands.
#pragma once

#include "printops/device.h"

// Print dwHeight contiguous rows of dwWidthBytes bytes each. Returns 0 or the code of the encoder that refused.
int32_t print_dotline(printer_dev *dev, const uint8_t *pData, uint32_t dwWidthBytes, int32_t dwHeight);
