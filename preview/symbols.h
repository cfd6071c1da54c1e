// Bar codes and two-dimensional symbols: what the paper asks of the library that encodes them.
#ifndef KLOV_PREVIEW_SYMBOLS_H
#define KLOV_PREVIEW_SYMBOLS_H

#include "preview/bitmap.h"

namespace preview {

struct SymbolRequest {
    enum class Type { bar_code, qr, pdf417 } type = Type::bar_code;
    uint32_t symbology = 0;  // of a bar code: 65 to 73, as the print command counts them
    uint32_t level = 0;      // error correction, 0 the lowest
    uint32_t columns = 0;    // PDF417: 0 lets the encoder choose
    Bytes data;
};

// Fills `modules` with one dot a module (a bar code is one row high); false when the data can not be encoded.
using SymbolEncoder = bool (*)(const SymbolRequest &request, Bitmap &modules);

// The encoder made from the symbol library; part of the tool, not of the reader.
bool encode_symbol(const SymbolRequest &request, Bitmap &modules);

}  // namespace preview

#endif
