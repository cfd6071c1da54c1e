#include "png_file.h"

#include <gtest/gtest.h>
#include <png.h>
#include <unistd.h>

#include <cstdlib>

namespace test {

uint32_t Png::colour(uint32_t x, uint32_t y) const
{
    const size_t at = (size_t{y} * width + x) * 3;
    return static_cast<uint32_t>(rgb[at] << 16 | rgb[at + 1] << 8 | rgb[at + 2]);
}

Png read_png(const std::string &path)
{
    Png picture;
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, path.c_str()) == 0) {
        return picture;
    }
    image.format = PNG_FORMAT_RGB;
    picture.rgb.resize(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, picture.rgb.data(), 0, nullptr) != 0) {
        picture.width = image.width;
        picture.height = image.height;
    }
    std::FILE *file = std::fopen(path.c_str(), "rb");
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_read_info(png, info);
    picture.bit_depth = png_get_bit_depth(png, info);
    picture.dots_a_metre = png_get_pixels_per_meter(png, info);
    png_destroy_read_struct(&png, &info, nullptr);
    std::fclose(file);
    return picture;
}

std::string temporary_folder()
{
    std::string name = ::testing::TempDir() + "klov-preview-XXXXXX";
    EXPECT_NE(mkdtemp(name.data()), nullptr);
    return name + '/';
}

}  // namespace test
