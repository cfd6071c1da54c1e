// The first bytes of documents.
#include "preview/document.h"

#include <algorithm>

namespace preview {
namespace {

struct Start {
    std::string_view bytes;
    std::string_view kind;
};

using namespace std::string_view_literals;

constexpr Start starts[] = {
    {"%PDF-"sv, "a PDF document"},
    {"%!PS"sv, "a PostScript document"},
    {"\x89PNG\r\n"sv, "a PNG picture"},
    {"\xFF\xD8\xFF"sv, "a JPEG picture"},
    {"GIF8"sv, "a GIF picture"},
    {"II*\0"sv, "a TIFF picture"},
    {"MM\0*"sv, "a TIFF picture"},
    {"PK\x03\x04"sv, "a ZIP file or an office document"},
    {"\x1F\x8B\x08"sv, "a compressed file"},
    {"RaSt"sv, "a CUPS raster"},
    {"tSaR"sv, "a CUPS raster"},
    {"RaS2"sv, "a CUPS raster"},
    {"2SaR"sv, "a CUPS raster"},
    {"RaS3"sv, "a CUPS raster"},
    {"3SaR"sv, "a CUPS raster"},
    {"#CUPS-COMMAND"sv, "a CUPS command file"},
    {"<!DOCTYPE"sv, "an HTML or XML document"},
    {"<html"sv, "an HTML document"},
    {"<?xml"sv, "an XML document"},
    {"{\\rtf"sv, "an RTF document"},
    {"\x7F"
     "ELF"sv,
     "a program"},
};

}  // namespace

std::string_view document_kind(Bytes start)
{
    for (const Start &known : starts) {
        const bool same = start.size() >= known.bytes.size() &&
                          std::equal(known.bytes.begin(), known.bytes.end(), start.begin(),
                                     [](char wanted, uint8_t byte) { return static_cast<uint8_t>(wanted) == byte; });
        if (same) {
            return known.kind;
        }
    }
    return {};
}

}  // namespace preview
