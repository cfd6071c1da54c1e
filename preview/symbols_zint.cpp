// Bar codes and symbols through libzint.
#include <zint.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "preview/symbols.h"

namespace preview {
namespace {

// Bar code systems 65 to 73 of the print command.
constexpr int symbologies[] = {BARCODE_UPCA,     BARCODE_UPCE,    BARCODE_EANX,   BARCODE_EANX,   BARCODE_CODE39,
                               BARCODE_C25INTER, BARCODE_CODABAR, BARCODE_CODE93, BARCODE_CODE128};
constexpr uint32_t first_symbology = 65;
constexpr uint32_t code128 = 73;

// The library chooses the code sets of CODE128 by itself: {A and {B go, and the numbers after {C become pairs of
// digits.
std::string code128_text(Bytes data)
{
    std::string text;
    bool numbers = false;
    for (size_t i = 0; i < data.size(); ++i) {
        if (data[i] == '{' && i + 1 < data.size()) {
            ++i;
            if (data[i] != '{') {
                numbers = data[i] == 'C' || (numbers && data[i] != 'A' && data[i] != 'B');
                continue;
            }
        }
        if (numbers && data[i] < 100) {
            text += static_cast<char>('0' + data[i] / 10);
            text += static_cast<char>('0' + data[i] % 10);
        } else {
            text += static_cast<char>(data[i]);
        }
    }
    return text;
}

std::string without(std::string text, const char *characters)
{
    std::erase_if(text,
                  [characters](char c) { return std::string_view(characters).find(c) != std::string_view::npos; });
    return text;
}

// UPC-E may be given as the UPC-A number that it stands for: 0, five digits of the maker (m), five of the article (a).
// The zeros among them are left out by one of four rules.
std::string upc_e_digits(const std::string &number)
{
    if (number.size() < 11 || number[0] != '0') {
        return number;
    }
    const std::string m = number.substr(1, 5);
    const std::string a = number.substr(6, 5);
    if (m[2] <= '2' && m.substr(3) == "00" && a.substr(0, 2) == "00") {
        return m.substr(0, 2) + a.substr(2) + m[2];
    }
    if (m.substr(3) == "00" && a.substr(0, 3) == "000") {
        return m.substr(0, 3) + a.substr(3) + '3';
    }
    if (m[4] == '0' && a.substr(0, 4) == "0000") {
        return m.substr(0, 4) + a[4] + '4';
    }
    return a.substr(0, 4) == "0000" && a[4] >= '5' ? m + a[4] : number;
}

std::string encoder_text(const SymbolRequest &request)
{
    std::string text(request.data.begin(), request.data.end());
    if (request.type != SymbolRequest::Type::bar_code) {
        return text;
    }
    const int symbology = symbologies[request.symbology - first_symbology];
    if (request.symbology == code128) {
        return code128_text(request.data);
    }
    if (symbology == BARCODE_UPCE) {
        return upc_e_digits(text);
    }
    // The printer lets the start and stop characters of CODE39 be sent or left out.
    if (symbology == BARCODE_CODE39) {
        return without(text, "*");
    }
    return text;
}

void copy_modules(const zint_symbol &symbol, Bitmap &modules)
{
    modules = make_bitmap(static_cast<uint32_t>(symbol.width), static_cast<uint32_t>(symbol.rows));
    for (uint32_t y = 0; y < modules.height; ++y) {
        for (uint32_t x = 0; x < modules.width; ++x) {
            if ((symbol.encoded_data[y][x / 8] >> (x % 8) & 1) != 0) {
                modules.set(x, y);
            }
        }
    }
}

}  // namespace

bool encode_symbol(const SymbolRequest &request, Bitmap &modules)
{
    if (request.data.empty() || (request.type == SymbolRequest::Type::bar_code &&
                                 request.symbology - first_symbology >= std::size(symbologies))) {
        return false;
    }
    zint_symbol *symbol = ZBarcode_Create();
    if (symbol == nullptr) {
        return false;
    }
    symbol->input_mode = DATA_MODE;
    switch (request.type) {
        case SymbolRequest::Type::bar_code:
            symbol->symbology = symbologies[request.symbology - first_symbology];
            break;
        case SymbolRequest::Type::qr:
            symbol->symbology = BARCODE_QRCODE;
            symbol->option_1 = static_cast<int>(request.level) + 1;
            break;
        case SymbolRequest::Type::pdf417:
            symbol->symbology = BARCODE_PDF417;
            symbol->option_1 = static_cast<int>(request.level);
            symbol->option_2 = static_cast<int>(request.columns);
            break;
    }
    const std::string text = encoder_text(request);
    const int result =
        ZBarcode_Encode(symbol, reinterpret_cast<const unsigned char *>(text.data()), static_cast<int>(text.size()));
    const bool encoded = result < ZINT_ERROR && symbol->rows > 0 && symbol->width > 0 && !text.empty();
    if (encoded) {
        copy_modules(*symbol, modules);
    }
    ZBarcode_Delete(symbol);
    return encoded;
}

}  // namespace preview
