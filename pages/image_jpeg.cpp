// JPEG on libjpeg. It reports errors by a call that must not return: every call stands behind its own landing place,
// and no object with a destructor lives between the two.
#include "pages/exif.h"
#include "pages/image.h"
#include "pages/log.h"

#include <csetjmp>
#include <cstring>

// After <cstdio>, which it does not include.
#include <jerror.h>
#include <jpeglib.h>

namespace pages {
namespace {

constexpr double inch = 2.54;              // centimetres
constexpr unsigned marker_bytes = 0xFFFF;  // the longest a marker can be
constexpr long most_memory = 160'000'000;  // a progressive picture is kept whole
constexpr int most_scans = 200;            // each costs the time of a whole picture
constexpr char exif_name[] = {'E', 'x', 'i', 'f', 0, 0};

// What libjpeg hands back to its callers' functions, with the place to land.
struct Errors {
    jpeg_error_mgr base;
    std::jmp_buf landing;
    bool broken = false;  // the data ended early or made no sense
    char text[JMSG_LENGTH_MAX] = "";
};

[[noreturn]] void jump(j_common_ptr info)
{
    auto *errors = reinterpret_cast<Errors *>(info->err);
    errors->base.format_message(info, errors->text);
    std::longjmp(errors->landing, 1);
}

// libjpeg goes on after warnings and fills what is missing with grey; those that mean lost rows are failures here.
void note(j_common_ptr info, int level)
{
    if (level >= 0) {
        return;
    }
    auto *errors = reinterpret_cast<Errors *>(info->err);
    switch (errors->base.msg_code) {
        case JWRN_JPEG_EOF:
        case JWRN_HIT_MARKER:
        case JWRN_HUFF_BAD_CODE:
        case JWRN_MUST_RESYNC:
            errors->broken = true;
            errors->base.format_message(info, errors->text);
            break;
        default:
            break;
    }
}

// Called while libjpeg works. What is broken is not worth any more time.
void watch(j_common_ptr info)
{
    auto *errors = reinterpret_cast<Errors *>(info->err);
    auto *decoder = reinterpret_cast<j_decompress_ptr>(info);
    if (errors->broken || decoder->input_scan_number > most_scans) {
        std::longjmp(errors->landing, 1);
    }
}

struct Decoder {
    jpeg_decompress_struct info;
    Errors errors;
    jpeg_progress_mgr progress;

    Decoder()
    {
        std::memset(&info, 0, sizeof info);
        std::memset(&progress, 0, sizeof progress);
        info.err = jpeg_std_error(&errors.base);
        errors.base.error_exit = jump;
        errors.base.emit_message = note;
        progress.progress_monitor = watch;
    }
    Decoder(const Decoder &) = delete;
    Decoder &operator=(const Decoder &) = delete;
    ~Decoder()
    {
        jpeg_destroy_decompress(&info);
    }
};

bool read_header(Decoder &decoder, std::FILE *file)
{
    if (setjmp(decoder.errors.landing) != 0) {
        return false;
    }
    jpeg_create_decompress(&decoder.info);
    decoder.info.progress = &decoder.progress;
    decoder.info.mem->max_memory_to_use = most_memory;
    jpeg_stdio_src(&decoder.info, file);
    jpeg_save_markers(&decoder.info, JPEG_APP0 + 1, marker_bytes);
    return jpeg_read_header(&decoder.info, TRUE) == JPEG_HEADER_OK;
}

bool start(Decoder &decoder)
{
    if (setjmp(decoder.errors.landing) != 0) {
        return false;
    }
    return jpeg_start_decompress(&decoder.info) != FALSE;
}

bool read_row(Decoder &decoder, std::uint8_t *row)
{
    if (setjmp(decoder.errors.landing) != 0) {
        return false;
    }
    JSAMPROW rows[] = {row};
    return jpeg_read_scanlines(&decoder.info, rows, 1) == 1 && !decoder.errors.broken;
}

class JpegReader : public ImageReader {
public:
    std::optional<Failure> open(std::FILE *file)
    {
        jpeg_decompress_struct &info = decoder_.info;
        if (!read_header(decoder_, file)) {
            return damaged();
        }
        set_size(info.image_width, info.image_height);
        if (auto failure = refuse_size(width_, height_)) {
            return failure;
        }
        switch (info.jpeg_color_space) {
            case JCS_GRAYSCALE:
            case JCS_YCbCr:
            case JCS_RGB:
                info.out_color_space = JCS_GRAYSCALE;
                break;
            case JCS_CMYK:
            case JCS_YCCK:
                info.out_color_space = JCS_CMYK;
                break;
            default:
                return Failure{"The picture has colours of a kind that cannot be printed."};
        }
        read_notes();
        return std::nullopt;
    }

    // An eighth, a quarter or a half of the size costs libjpeg less than the whole.
    void shrink(std::size_t width, std::size_t height) override
    {
        for (std::size_t part = 8; part > 1; part /= 2) {
            const std::size_t less_width = (info_.width + part - 1) / part;
            const std::size_t less_height = (info_.height + part - 1) / part;
            if (less_width >= width && less_height >= height) {
                decoder_.info.scale_num = 1;
                decoder_.info.scale_denom = static_cast<unsigned>(part);
                width_ = less_width;
                height_ = less_height;
                return;
            }
        }
    }

    std::optional<Failure> read(const GreySink &sink) override;

private:
    Failure damaged()
    {
        log_debug("libjpeg: " + foreign_text(decoder_.errors.text));
        return Failure{"The picture is damaged or ends too early."};
    }

    void read_notes();

    Decoder decoder_;
};

void JpegReader::read_notes()
{
    const jpeg_decompress_struct &info = decoder_.info;
    Exif exif;
    for (const jpeg_marker_struct *marker = info.marker_list; marker != nullptr; marker = marker->next) {
        const std::size_t name = sizeof exif_name;
        if (marker->data_length > name && std::memcmp(marker->data, exif_name, name) == 0) {
            exif = read_exif(marker->data + name, marker->data_length - name);
            break;
        }
    }
    info_.turning = turning_of_tag(exif.orientation);
    info_.ppi_x = exif.ppi_x;
    info_.ppi_y = exif.ppi_y;
    if (info.saw_JFIF_marker && (info.density_unit == 1 || info.density_unit == 2)) {
        const double factor = info.density_unit == 1 ? 1 : inch;
        info_.ppi_x = info.X_density * factor;
        info_.ppi_y = info.Y_density * factor;
    }
}

// Cyan, magenta, yellow and black as light: 255 is no ink.
std::uint8_t grey_of_inks(const std::uint8_t *inks, std::uint8_t flip)
{
    const unsigned light = grey_of(inks[0] ^ flip, inks[1] ^ flip, inks[2] ^ flip);
    return static_cast<std::uint8_t>((light * (inks[3] ^ flip) + 127) / 255);
}

std::optional<Failure> JpegReader::read(const GreySink &sink)
{
    if (!start(decoder_)) {
        return damaged();
    }
    const bool inks = decoder_.info.out_color_space == JCS_CMYK;
    // Adobe's programs write no ink as 255, all others as 0.
    const std::uint8_t flip = decoder_.info.saw_Adobe_marker ? 0x00 : 0xFF;
    std::vector<std::uint8_t> row(width_ * (inks ? 4 : 1));
    std::vector<std::uint8_t> grey(inks ? width_ : 0);
    if (decoder_.info.output_width != width_ || decoder_.info.output_height != height_) {
        return damaged();
    }
    for (std::size_t y = 0; y < height_; ++y) {
        if (!read_row(decoder_, row.data())) {
            return damaged();
        }
        for (std::size_t x = 0; x < grey.size(); ++x) {
            grey[x] = grey_of_inks(row.data() + 4 * x, flip);
        }
        sink(inks ? grey.data() : row.data());
    }
    return std::nullopt;
}

}  // namespace

OpenedImage open_jpeg(std::FILE *file)
{
    auto reader = std::make_unique<JpegReader>();
    if (auto failure = reader->open(file)) {
        return *failure;
    }
    return reader;
}

}  // namespace pages
