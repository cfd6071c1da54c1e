// Pictures as logos, by the same tone and dots as printed pictures.
#include "pages/dots.h"
#include "pages/image.h"
#include "pages/image_scaler.h"
#include "talk/logo.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace talk {
namespace {

constexpr size_t tallest_logo = 2304;  // what the command can say

struct FileClose {
    void operator()(FILE *file) const
    {
        fclose(file);
    }
};

struct Size {
    size_t width;
    size_t height;
};

// As it is, or smaller by the same factor across and down. Never larger: small pictures of few dots stay sharp.
Size fitting(const Size &own, size_t widest)
{
    if (own.width <= widest) {
        return own;
    }
    const size_t height = (own.height * widest + own.width / 2) / own.width;
    return {widest, height > 0 ? height : 1};
}

bool draw(pages::ImageReader &reader, const Size &size, LogoPicture &picture, std::string &error)
{
    const size_t stride = (size.width + 7) / 8;
    picture = {static_cast<int>(size.width), static_cast<int>(size.height), {}};
    pages::DotMaker dots(size.width, {}, [&picture, stride](const uint8_t *row) {
        picture.rows.insert(picture.rows.end(), row, row + stride);
    });
    pages::ImageScaler scaler(reader.row_width(), reader.row_count(), size.width, size.height,
                              [&dots](const uint8_t *grey) { dots.put_rows(grey, 0, 1); });
    const auto failure = reader.read([&scaler](const uint8_t *grey) { scaler.put_row(grey); });
    dots.finish();
    if (failure) {
        error = failure->text;
        return false;
    }
    picture.rows.resize(stride * size.height);
    return true;
}

}  // namespace

bool read_logo_picture(const std::string &path, int widest, LogoPicture &picture, std::string &error)
{
    const std::unique_ptr<FILE, FileClose> file(fopen(path.c_str(), "rbe"));
    if (file == nullptr) {
        error = strerror(errno);
        return false;
    }
    pages::OpenedImage opened = pages::open_image(file.get());
    if (const auto *failure = std::get_if<pages::Failure>(&opened)) {
        error = failure->text;
        return false;
    }
    const auto &reader = std::get<std::unique_ptr<pages::ImageReader>>(opened);
    const Size size = fitting({reader->info().width, reader->info().height}, static_cast<size_t>(widest));
    if (size.height > tallest_logo) {
        error = "is too long for a logo";
        return false;
    }
    reader->shrink(size.width, size.height);
    return draw(*reader, size, picture, error);
}

}  // namespace talk
