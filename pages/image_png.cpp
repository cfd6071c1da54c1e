// PNG on libpng. libpng reports errors by a long jump; every call stands behind its own landing place, and no object
// with a destructor lives between the two.
#include "pages/exif.h"
#include "pages/image.h"
#include "pages/log.h"

#include <png.h>

#include <cstring>
#include <string>

namespace pages {
namespace {

constexpr double inches_a_metre = 39.3701;
constexpr png_uint_32 most_chunks = 1000;  // of texts and the like, which are skipped
constexpr png_alloc_size_t most_chunk_bytes = 8'000'000;

struct Handles {
    png_structp png = nullptr;
    png_infop info = nullptr;
    char problem[96] = "";

    Handles() = default;
    Handles(const Handles &) = delete;
    Handles &operator=(const Handles &) = delete;
    ~Handles()
    {
        png_destroy_read_struct(&png, &info, nullptr);
    }
};

void jump(png_structp png, png_const_charp text)
{
    auto *handles = static_cast<Handles *>(png_get_error_ptr(png));
    std::strncpy(handles->problem, text, sizeof handles->problem - 1);
    png_longjmp(png, 1);
}

void silent(png_structp, png_const_charp) {}

bool read_header(Handles &handles, std::FILE *file)
{
    if (setjmp(png_jmpbuf(handles.png)) != 0) {
        return false;
    }
    png_init_io(handles.png, file);
    // The size is looked at before any row is read.
    png_set_user_limits(handles.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_chunk_cache_max(handles.png, most_chunks);
    png_set_chunk_malloc_max(handles.png, most_chunk_bytes);
    png_read_info(handles.png, handles.info);
    return true;
}

// Bytes of grey or red, green and blue, with the opacity behind them where there is one. Gamma is left alone, like that
// of JPEG files.
bool set_transforms(Handles &handles)
{
    if (setjmp(png_jmpbuf(handles.png)) != 0) {
        return false;
    }
    png_set_expand(handles.png);
    png_set_scale_16(handles.png);
    png_set_interlace_handling(handles.png);
    png_read_update_info(handles.png, handles.info);
    return true;
}

bool read_row(png_structp png, png_bytep row)
{
    if (setjmp(png_jmpbuf(png)) != 0) {
        return false;
    }
    png_read_row(png, row, nullptr);
    return true;
}

// The check sum of the last data is looked at here.
bool read_end(png_structp png)
{
    if (setjmp(png_jmpbuf(png)) != 0) {
        return false;
    }
    png_read_end(png, nullptr);
    return true;
}

class PngReader : public ImageReader {
public:
    std::optional<Failure> open(std::FILE *file)
    {
        handles_.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &handles_, jump, silent);
        handles_.info = handles_.png != nullptr ? png_create_info_struct(handles_.png) : nullptr;
        if (handles_.info == nullptr) {
            return Failure{"There is not enough memory for the picture."};
        }
        if (!read_header(handles_, file)) {
            return damaged();
        }
        set_size(png_get_image_width(handles_.png, handles_.info), png_get_image_height(handles_.png, handles_.info));
        interlaced_ = png_get_interlace_type(handles_.png, handles_.info) != PNG_INTERLACE_NONE;
        if (auto failure = refuse_size(width_, height_)) {
            return failure;
        }
        if (interlaced_ && width_ * height_ > most_pixels_in_memory) {
            return Failure{"The picture is too large for an interlaced one: it has " + std::to_string(width_) + " x " +
                           std::to_string(height_) + " pixels."};
        }
        read_notes();
        if (!set_transforms(handles_)) {
            return damaged();
        }
        channels_ = png_get_channels(handles_.png, handles_.info);
        row_.resize(png_get_rowbytes(handles_.png, handles_.info));
        return std::nullopt;
    }

    std::optional<Failure> read(const GreySink &sink) override
    {
        return interlaced_ ? read_passes(sink) : read_rows(sink);
    }

private:
    Failure damaged()
    {
        log_debug("libpng: " + foreign_text(handles_.problem));
        return Failure{"The picture is damaged or ends too early."};
    }

    void read_notes();
    std::optional<Failure> read_rows(const GreySink &sink);
    std::optional<Failure> read_passes(const GreySink &sink);
    std::uint8_t grey_at(std::size_t x) const;

    Handles handles_;
    bool interlaced_ = false;
    unsigned channels_ = 1;
    std::vector<std::uint8_t> row_;
};

void PngReader::read_notes()
{
    png_uint_32 exif_size = 0;
    png_bytep exif = nullptr;
    if (png_get_eXIf_1(handles_.png, handles_.info, &exif_size, &exif) != 0) {
        info_.turning = turning_of_tag(read_exif(exif, exif_size).orientation);
    }
    info_.ppi_x = png_get_x_pixels_per_meter(handles_.png, handles_.info) / inches_a_metre;
    info_.ppi_y = png_get_y_pixels_per_meter(handles_.png, handles_.info) / inches_a_metre;
}

std::uint8_t PngReader::grey_at(std::size_t x) const
{
    const std::uint8_t *pixel = row_.data() + x * channels_;
    switch (channels_) {
        case 1:
            return pixel[0];
        case 2:
            return on_paper(pixel[0], pixel[1]);
        case 3:
            return grey_of(pixel[0], pixel[1], pixel[2]);
        default:
            return on_paper(grey_of(pixel[0], pixel[1], pixel[2]), pixel[3]);
    }
}

std::optional<Failure> PngReader::read_rows(const GreySink &sink)
{
    std::vector<std::uint8_t> grey(width_);
    for (std::size_t y = 0; y < height_; ++y) {
        if (!read_row(handles_.png, row_.data())) {
            return damaged();
        }
        for (std::size_t x = 0; x < width_; ++x) {
            grey[x] = grey_at(x);
        }
        sink(grey.data());
    }
    if (!read_end(handles_.png)) {
        return damaged();
    }
    return std::nullopt;
}

// An interlaced picture comes in seven passes, each a coarse grid of its own.
std::optional<Failure> PngReader::read_passes(const GreySink &sink)
{
    std::vector<std::uint8_t> grey(width_ * height_);
    for (unsigned pass = 0; pass < PNG_INTERLACE_ADAM7_PASSES; ++pass) {
        for (std::size_t y = 0; y < height_; ++y) {
            if (!read_row(handles_.png, row_.data())) {
                return damaged();
            }
            if (!PNG_ROW_IN_INTERLACE_PASS(y, pass)) {
                continue;
            }
            for (std::size_t x = PNG_PASS_START_COL(pass); x < width_; x += PNG_PASS_COL_OFFSET(pass)) {
                grey[y * width_ + x] = grey_at(x);
            }
        }
    }
    if (!read_end(handles_.png)) {
        return damaged();
    }
    for (std::size_t y = 0; y < height_; ++y) {
        sink(grey.data() + y * width_);
    }
    return std::nullopt;
}

}  // namespace

OpenedImage open_png(std::FILE *file)
{
    auto reader = std::make_unique<PngReader>();
    if (auto failure = reader->open(file)) {
        return *failure;
    }
    return reader;
}

}  // namespace pages
