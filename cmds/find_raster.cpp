// Finds a raster bit image in a block of command bytes.
#include <klov/printing.h>

#include "cmds/contract.h"

constexpr uint32_t raster_header_size = 8;

int32_t klov_cmds_find_raster_imgdata(uint32_t printer_class, const uint8_t *data, uint32_t size, uint8_t *m,
                                      uint32_t *xBytes, uint32_t *yDots, uint32_t *width, uint32_t *position,
                                      uint32_t *total)
{
    *m = 0;
    *xBytes = 0;
    *yDots = 0;
    *width = 0;
    *position = 0;
    *total = 0;
    if ((printer_class & class_escpos) == 0) {
        return KLOV_E_MODEL_TYPE;
    }

    const void *first_gs = size > 0 ? memchr(data, 0x1D, size) : nullptr;
    if (first_gs == nullptr) {
        return KLOV_OK;
    }
    // Only the first GS counts, whatever command it starts. The difference wraps for a block below 8 bytes.
    const uint8_t *header = static_cast<const uint8_t *>(first_gs);
    const uint32_t found = static_cast<uint32_t>(header - data);
    if (found >= size - raster_header_size || header[1] != 0x76 || header[2] != 0x30) {
        return KLOV_OK;
    }
    *m = header[3];
    *xBytes = header[4] + 256U * header[5];
    *yDots = header[6] + 256U * header[7];
    *width = *xBytes;
    *position = found;
    *total = *yDots * *xBytes + raster_header_size;
    return KLOV_OK;
}
