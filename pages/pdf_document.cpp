#include "pages/pdf_document.h"

#include "pages/log.h"
#include "pages/tone.h"

#include <poppler-document.h>
#include <poppler-global.h>
#include <poppler-page-renderer.h>
#include <poppler-page.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>

namespace pages {

namespace {

constexpr double points_per_inch = 72;

// Ink is looked for at the head's own fineness, on big pages coarser: a picture of 3 million pixels takes 9 MB.
constexpr double ink_dpi = 203.2;
constexpr double ink_pixels = 3e6;
// A damaged document can make poppler complain without end.
constexpr unsigned most_complaints = 20;

void log_complaint(const std::string &text, void *)
{
    static unsigned complaints = 0;
    if (complaints++ < most_complaints)
        log_debug("poppler: " + foreign_text(text));
}

Failure page_failure(unsigned number, const char *what)
{
    return Failure{"Page " + std::to_string(number) + " of the document " + what};
}

poppler::rotation_enum clockwise(Turn turn)
{
    switch (turn) {
        case Turn::quarter:
            return poppler::rotate_270;
        case Turn::half:
            return poppler::rotate_180;
        case Turn::three_quarters:
            return poppler::rotate_90;
        default:
            return poppler::rotate_0;
    }
}

// poppler reads a PDF from its end, so standard input goes to a file that nobody else sees.
std::optional<Failure> spool(std::string &path)
{
    const char *folder = getenv("TMPDIR");
    path = std::string(folder && *folder ? folder : "/tmp") + "/pdftoroll-XXXXXX";
    const int file = mkstemp(path.data());
    if (file < 0)
        return Failure{std::string("No temporary file for the document: ") + strerror(errno)};
    std::array<char, 65536> buffer;
    std::optional<Failure> failure;
    for (;;) {
        const ssize_t got = read(STDIN_FILENO, buffer.data(), buffer.size());
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            failure = Failure{std::string("The document cannot be read: ") + strerror(errno)};
        if (got <= 0)
            break;
        if (write(file, buffer.data(), static_cast<std::size_t>(got)) != got) {
            failure = Failure{std::string("No room for the document in the spool: ") + strerror(errno)};
            break;
        }
    }
    close(file);
    if (failure)
        unlink(path.c_str());
    return failure;
}

std::optional<Failure> look_at_file(const std::string &path)
{
    struct stat status {};
    if (stat(path.c_str(), &status) < 0)
        return Failure{std::string("The document cannot be read: ") + strerror(errno)};
    if (status.st_size == 0)
        return Failure{"The document is empty."};
    return std::nullopt;
}

poppler::image render(const poppler::page &page, const Cutout &cutout)
{
    poppler::page_renderer renderer;
    renderer.set_image_format(cutout.pixels == Pixels::grey ? poppler::image::format_gray8
                                                            : poppler::image::format_mono);
    renderer.set_render_hints(0);  // smoothing would mix up soft edges and grey
    return renderer.render_page(&page, cutout.dpi, cutout.dpi, cutout.x, cutout.y, cutout.width, cutout.height,
                                clockwise(cutout.turn));
}

bool has_ink(std::uint8_t pixel)
{
    return pixel < lightest_ink;  // lighter greys stay paper and need no room
}

// Pixels, the far edges outside.
struct PixelBox {
    int left = INT_MAX;
    int top = INT_MAX;
    int right = 0;
    int bottom = 0;
};

PixelBox ink_of(const poppler::image &picture)
{
    PixelBox box;
    for (int y = 0; y < picture.height(); y++) {
        const auto *row = reinterpret_cast<const std::uint8_t *>(picture.const_data()) +
                          static_cast<std::ptrdiff_t>(y) * picture.bytes_per_row();
        const auto *end = row + picture.width();
        const auto *first = std::find_if(row, end, has_ink);
        if (first == end)
            continue;
        const auto *last = end;
        while (!has_ink(last[-1]))
            last--;
        box.left = std::min(box.left, static_cast<int>(first - row));
        box.right = std::max(box.right, static_cast<int>(last - row));
        box.top = std::min(box.top, y);
        box.bottom = y + 1;
    }
    return box;
}

}  // namespace

PdfDocument::PdfDocument() = default;
PdfDocument::~PdfDocument() = default;

std::optional<Failure> PdfDocument::open(const std::string &path, PdfDocument &document)
{
    poppler::set_debug_error_function(log_complaint, nullptr);
    std::string file = path;
    if (path.empty()) {
        if (auto failure = spool(file))
            return failure;
    }
    std::optional<Failure> failure = look_at_file(file);
    if (!failure)
        document.document_.reset(poppler::document::load_from_file(file));
    if (path.empty())
        unlink(file.c_str());
    if (failure)
        return failure;
    if (!document.document_)
        return Failure{"The document is damaged, or no PDF at all."};
    if (document.document_->is_locked())
        return Failure{"The document is protected by a password and cannot be printed."};
    if (document.document_->pages() < 1)
        return Failure{"The document is damaged: it has no pages."};
    return std::nullopt;
}

unsigned PdfDocument::page_count() const
{
    return static_cast<unsigned>(document_->pages());
}

poppler::page *PdfDocument::page(unsigned number)
{
    if (number != page_number_ || !page_) {
        page_.reset(document_->create_page(static_cast<int>(number) - 1));
        page_number_ = number;
    }
    return page_.get();
}

std::optional<Size> PdfDocument::page_size(unsigned number)
{
    const poppler::page *found = page(number);
    if (!found)
        return std::nullopt;
    const poppler::rectf box = found->page_rect(poppler::crop_box);
    const auto orientation = found->orientation();
    if (orientation == poppler::page::landscape || orientation == poppler::page::seascape)
        return Size{box.height(), box.width()};
    return Size{box.width(), box.height()};
}

std::optional<Failure> PdfDocument::find_ink(unsigned number, Turn turn, Size size, std::optional<Box> &ink)
{
    ink.reset();
    const double pixels = size.width * size.height * (ink_dpi / points_per_inch) * (ink_dpi / points_per_inch);
    Cutout cutout;
    cutout.turn = turn;
    cutout.dpi = pixels > ink_pixels ? ink_dpi * std::sqrt(ink_pixels / pixels) : ink_dpi;
    const double points_per_pixel = points_per_inch / cutout.dpi;
    cutout.width = static_cast<int>(std::ceil(size.width / points_per_pixel));
    cutout.height = static_cast<int>(std::ceil(size.height / points_per_pixel));
    const poppler::page *found = page(number);
    if (!found)
        return page_failure(number, "is damaged.");
    const poppler::image picture = render(*found, cutout);
    if (!picture.is_valid())
        return page_failure(number, "cannot be drawn.");
    const PixelBox box = ink_of(picture);
    if (box.bottom == 0)
        return std::nullopt;
    ink = Box{box.left * points_per_pixel, box.top * points_per_pixel, box.right * points_per_pixel,
              box.bottom * points_per_pixel};
    return std::nullopt;
}

std::optional<Failure> PdfDocument::draw(unsigned number, const Cutout &cutout, const Take &take)
{
    const poppler::page *found = page(number);
    if (!found)
        return page_failure(number, "is damaged.");
    const poppler::image picture = render(*found, cutout);
    if (!picture.is_valid() || picture.width() != cutout.width || picture.height() != cutout.height)
        return page_failure(number, "cannot be drawn.");
    take(reinterpret_cast<const std::uint8_t *>(picture.const_data()),
         static_cast<std::size_t>(picture.bytes_per_row()));
    return std::nullopt;
}

}  // namespace pages
