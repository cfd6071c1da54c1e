// The PNG writer on libpng. libpng reports errors by a long jump; every call stands behind its own landing place, and
// no object with a destructor lives between the two.
#include "preview/png_writer.h"

#include <png.h>

#include <cerrno>
#include <cmath>
#include <cstring>

namespace preview {

struct PngWriter::Handles {
    png_structp png = nullptr;
    png_infop info = nullptr;
};

namespace {

constexpr double inches_a_metre = 39.3701;
constexpr int compression = 1;  // long paper: time counts more than the last per cent

void silent(png_structp, png_const_charp) {}

void jump(png_structp png, png_const_charp)
{
    png_longjmp(png, 1);
}

bool write_header(png_structp png, png_infop info, std::FILE *file, png_uint_32 width, png_uint_32 height,
                  png_uint_32 dpm, const png_color *palette, int colours)
{
    if (setjmp(png_jmpbuf(png)) != 0) {
        return false;
    }
    png_init_io(png, file);
    png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_compression_level(png, compression);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
    png_set_IHDR(png, info, width, height, palette == nullptr ? 1 : 4,
                 palette == nullptr ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_PALETTE, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_pHYs(png, info, dpm, dpm, PNG_RESOLUTION_METER);
    if (palette != nullptr) {
        png_set_PLTE(png, info, palette, colours);
    }
    png_write_info(png, info);
    return true;
}

bool write_row(png_structp png, png_const_bytep bytes)
{
    if (setjmp(png_jmpbuf(png)) != 0) {
        return false;
    }
    png_write_row(png, bytes);
    return true;
}

// Two dots a byte, the left one in the high half. libpng would do it dot by dot, which is half the time of long paper.
void pack_pairs(Bytes places, std::vector<uint8_t> &packed)
{
    const size_t pairs = places.size() / 2;
    packed.resize((places.size() + 1) / 2);
    for (size_t i = 0; i < pairs; ++i) {
        packed[i] = static_cast<uint8_t>(places[2 * i] << 4 | places[2 * i + 1]);
    }
    if (places.size() % 2 != 0) {
        packed[pairs] = static_cast<uint8_t>(places.back() << 4);
    }
}

bool write_end(png_structp png, png_infop info)
{
    if (setjmp(png_jmpbuf(png)) != 0) {
        return false;
    }
    png_write_end(png, info);
    return true;
}

}  // namespace

PngWriter::~PngWriter()
{
    release();
}

void PngWriter::release()
{
    if (handles_ != nullptr) {
        png_destroy_write_struct(&handles_->png, &handles_->info);
        delete handles_;
        handles_ = nullptr;
    }
    if (file_ != nullptr && file_ != stdout) {
        std::fclose(file_);
    }
    file_ = nullptr;
}

bool PngWriter::fail(std::string text)
{
    error_ = std::move(text);
    release();
    return false;
}

bool PngWriter::open(const std::string &path, uint32_t width, uint32_t height, uint32_t dpi,
                     std::span<const Colour> palette)
{
    file_ = path == "-" ? stdout : std::fopen(path.c_str(), "wbe");
    if (file_ == nullptr) {
        return fail(path + ": " + std::strerror(errno));
    }
    handles_ = new Handles;
    handles_->png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, jump, silent);
    handles_->info = handles_->png != nullptr ? png_create_info_struct(handles_->png) : nullptr;
    if (handles_->info == nullptr) {
        return fail("out of memory");
    }
    has_palette_ = !palette.empty();
    std::vector<png_color> colours;
    for (const Colour &colour : palette) {
        colours.push_back({colour.red, colour.green, colour.blue});
    }
    const auto dots_a_metre = static_cast<png_uint_32>(std::lround(dpi * inches_a_metre));
    if (!write_header(handles_->png, handles_->info, file_, width, height, dots_a_metre,
                      colours.empty() ? nullptr : colours.data(), static_cast<int>(colours.size()))) {
        return fail(path + ": the picture's header can not be written");
    }
    return true;
}

bool PngWriter::row(Bytes bytes)
{
    if (has_palette_) {
        pack_pairs(bytes, packed_);
        bytes = packed_;
    }
    if (handles_ == nullptr || !write_row(handles_->png, bytes.data())) {
        return fail("the picture can not be written");
    }
    return true;
}

bool PngWriter::close()
{
    if (handles_ == nullptr || !write_end(handles_->png, handles_->info)) {
        return fail("the picture can not be written");
    }
    const bool lost = std::fflush(file_) != 0 || std::ferror(file_) != 0;
    if (lost) {
        return fail("the picture can not be written: " + std::string(std::strerror(errno)));
    }
    release();
    return true;
}

}  // namespace preview
