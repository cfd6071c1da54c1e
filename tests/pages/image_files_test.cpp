// PNG, JPEG and PNM files, written here in every kind and read back as grey.
#include "pages/image.h"
#include "pages/image_page.h"

#include "tests/pages/exif_block.h"

#include <gtest/gtest.h>
#include <jpeglib.h>
#include <png.h>

#include <cstring>
#include <string>

namespace {

using pages::ImageReader;

struct Read {
    pages::ImageInfo info;
    std::vector<std::uint8_t> grey;
    std::string failure;
};

class File {
public:
    explicit File(const std::string &bytes)
        : bytes_(bytes), file_(bytes_.empty() ? std::tmpfile() : fmemopen(bytes_.data(), bytes_.size(), "r"))
    {
    }
    File(const File &) = delete;
    File &operator=(const File &) = delete;
    ~File()
    {
        fclose(file_);
    }
    std::FILE *get() const
    {
        return file_;
    }

private:
    std::string bytes_;
    std::FILE *file_;
};

Read read(const std::string &bytes)
{
    Read result;
    const File file(bytes);
    auto opened = pages::open_image(file.get());
    if (const auto *failure = std::get_if<pages::Failure>(&opened)) {
        result.failure = failure->text;
        return result;
    }
    ImageReader &reader = *std::get<std::unique_ptr<ImageReader>>(opened);
    result.info = reader.info();
    const auto failure = reader.read(
        [&](const std::uint8_t *row) { result.grey.insert(result.grey.end(), row, row + reader.row_width()); });
    if (failure) {
        result.failure = failure->text;
    }
    return result;
}

// A picture to write: samples as the format has them.
struct Picture {
    unsigned width = 13;
    unsigned height = 11;
    int colour = PNG_COLOR_TYPE_GRAY;
    int depth = 8;
    bool interlaced = false;
    std::vector<std::uint8_t> rows;  // as libpng takes them
    std::vector<png_color> palette;
    std::vector<std::uint8_t> palette_opacity;
    unsigned dots_a_metre = 0;
    std::vector<std::uint8_t> exif;
    bool only_header = false;
};

void append(png_structp png, png_bytep bytes, std::size_t count)
{
    static_cast<std::string *>(png_get_io_ptr(png))->append(reinterpret_cast<char *>(bytes), count);
}

std::string png_file(Picture picture)
{
    std::string file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &file, append, nullptr);
    png_set_IHDR(png, info, picture.width, picture.height, picture.depth, picture.colour,
                 picture.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    if (!picture.palette.empty()) {
        png_set_PLTE(png, info, picture.palette.data(), static_cast<int>(picture.palette.size()));
    }
    if (!picture.palette_opacity.empty()) {
        png_set_tRNS(png, info, picture.palette_opacity.data(), static_cast<int>(picture.palette_opacity.size()),
                     nullptr);
    }
    if (picture.dots_a_metre > 0) {
        png_set_pHYs(png, info, picture.dots_a_metre, picture.dots_a_metre, PNG_RESOLUTION_METER);
    }
    if (!picture.exif.empty()) {
        png_set_eXIf_1(png, info, static_cast<png_uint_32>(picture.exif.size()), picture.exif.data());
    }
    png_write_info(png, info);
    if (picture.only_header) {
        png_destroy_write_struct(&png, &info);
        return file + std::string("\0\0\1\0IDAT", 8);
    }
    const std::size_t stride = picture.rows.size() / picture.height;
    const int passes = png_set_interlace_handling(png);
    for (int pass = 0; pass < passes; ++pass) {
        for (std::size_t y = 0; y < picture.height; ++y) {
            png_write_row(png, picture.rows.data() + y * stride);
        }
    }
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return file;
}

Picture of_kind(int colour, int depth, bool interlaced)
{
    Picture picture;
    picture.colour = colour;
    picture.depth = depth;
    picture.interlaced = interlaced;
    const unsigned channels = colour == PNG_COLOR_TYPE_RGB          ? 3
                              : colour == PNG_COLOR_TYPE_RGB_ALPHA  ? 4
                              : colour == PNG_COLOR_TYPE_GRAY_ALPHA ? 2
                                                                    : 1;
    const std::size_t stride = (picture.width * channels * static_cast<unsigned>(depth) + 7) / 8;
    picture.rows.resize(stride * picture.height);
    for (std::size_t i = 0; i < picture.rows.size(); ++i) {
        picture.rows[i] = static_cast<std::uint8_t>(i * 89 + i / 7);
    }
    if (colour == PNG_COLOR_TYPE_PALETTE) {
        for (unsigned i = 0; i < 1U << depth; ++i) {
            const auto value = static_cast<png_byte>(i * 255 / ((1U << depth) - 1));
            picture.palette.push_back({value, static_cast<png_byte>(255 - value), 128});
        }
        picture.palette_opacity = {0};
    }
    return picture;
}

unsigned sample(const Picture &picture, unsigned x, unsigned y, unsigned channels, unsigned channel)
{
    const auto depth = static_cast<unsigned>(picture.depth);
    const std::size_t stride = picture.rows.size() / picture.height;
    const std::size_t bit = static_cast<std::size_t>(x * channels + channel) * depth;
    const std::uint8_t *at = picture.rows.data() + y * stride + bit / 8;
    if (depth == 16) {
        return at[0] * 256U + at[1];
    }
    return (at[0] >> (8 - depth - bit % 8)) & ((1U << depth) - 1);
}

// Of 255, exact.
double grey_wanted(const Picture &picture, unsigned x, unsigned y)
{
    const double most = (1 << picture.depth) - 1;
    const auto value = [&](unsigned channels, unsigned channel) {
        return sample(picture, x, y, channels, channel) / most * 255;
    };
    const auto mixed = [](double red, double green, double blue) { return (red * 77 + green * 150 + blue * 29) / 256; };
    const auto paper = [](double grey, double opacity) { return 255 + (grey - 255) * opacity / 255; };
    switch (picture.colour) {
        case PNG_COLOR_TYPE_GRAY:
            return value(1, 0);
        case PNG_COLOR_TYPE_GRAY_ALPHA:
            return paper(value(2, 0), value(2, 1));
        case PNG_COLOR_TYPE_RGB:
            return mixed(value(3, 0), value(3, 1), value(3, 2));
        case PNG_COLOR_TYPE_RGB_ALPHA:
            return paper(mixed(value(4, 0), value(4, 1), value(4, 2)), value(4, 3));
        default: {
            const unsigned index = sample(picture, x, y, 1, 0);
            const png_color &colour = picture.palette[index];
            return paper(mixed(colour.red, colour.green, colour.blue), index == 0 ? 0 : 255);
        }
    }
}

TEST(PngFiles, EveryKindAndDepthStraightAndInterlaced)
{
    constexpr int kinds[][2] = {
        {PNG_COLOR_TYPE_GRAY, 1},      {PNG_COLOR_TYPE_GRAY, 2},       {PNG_COLOR_TYPE_GRAY, 4},
        {PNG_COLOR_TYPE_GRAY, 8},      {PNG_COLOR_TYPE_GRAY, 16},      {PNG_COLOR_TYPE_PALETTE, 1},
        {PNG_COLOR_TYPE_PALETTE, 2},   {PNG_COLOR_TYPE_PALETTE, 4},    {PNG_COLOR_TYPE_PALETTE, 8},
        {PNG_COLOR_TYPE_RGB, 8},       {PNG_COLOR_TYPE_RGB, 16},       {PNG_COLOR_TYPE_GRAY_ALPHA, 8},
        {PNG_COLOR_TYPE_RGB_ALPHA, 8}, {PNG_COLOR_TYPE_RGB_ALPHA, 16}, {PNG_COLOR_TYPE_GRAY_ALPHA, 16}};
    for (const auto &kind : kinds) {
        for (const bool interlaced : {false, true}) {
            const Picture picture = of_kind(kind[0], kind[1], interlaced);
            const Read result = read(png_file(picture));
            ASSERT_EQ(result.failure, "") << kind[0] << ", " << kind[1];
            ASSERT_EQ(result.grey.size(), picture.width * picture.height);
            for (unsigned y = 0; y < picture.height; ++y) {
                for (unsigned x = 0; x < picture.width; ++x) {
                    ASSERT_NEAR(result.grey[y * picture.width + x], grey_wanted(picture, x, y), 1.6)
                        << kind[0] << ", " << kind[1] << (interlaced ? " interlaced" : "") << ": " << x << ", " << y;
                }
            }
        }
    }
}

TEST(PngFiles, ResolutionAndTurning)
{
    Picture picture = of_kind(PNG_COLOR_TYPE_GRAY, 8, false);
    EXPECT_EQ(read(png_file(picture)).info.ppi_x, 0);
    picture.dots_a_metre = 11811;
    picture.exif = pages_test::exif_block(true, 6, 72, 2);
    const Read result = read(png_file(picture));
    EXPECT_NEAR(result.info.ppi_x, 300, 0.01);
    EXPECT_EQ(result.info.turning, pages::turning_of_tag(6));
}

TEST(PngFiles, FilesThatEndEarlyFail)
{
    for (const bool interlaced : {false, true}) {
        const std::string file = png_file(of_kind(PNG_COLOR_TYPE_RGB, 8, interlaced));
        for (std::size_t size = 0; size < file.size(); ++size) {
            ASSERT_NE(read(file.substr(0, size)).failure, "") << size << " of " << file.size();
        }
    }
}

TEST(PngFiles, ABrokenCheckSumFails)
{
    std::string file = png_file(of_kind(PNG_COLOR_TYPE_RGB, 8, false));
    file[file.size() - 13] = static_cast<char>(file[file.size() - 13] ^ 1);  // of the picture's data
    EXPECT_NE(read(file).failure, "");
}

TEST(PngFiles, ASizeThatNoMemoryHoldsIsRefusedBeforeAnythingIsRead)
{
    Picture huge = of_kind(PNG_COLOR_TYPE_GRAY, 8, false);
    huge.width = huge.height = 65535;
    huge.only_header = true;
    EXPECT_EQ(read(png_file(huge)).failure, "The picture is too large: it has 65535 x 65535 pixels.");
}

struct Jpeg {
    J_COLOR_SPACE space = JCS_RGB;
    int channels = 3;
    bool progressive = false;
    bool adobe = false;
    unsigned density = 0;
    std::vector<std::uint8_t> exif;
    unsigned width = 64;
    unsigned height = 48;
    std::vector<std::uint8_t> rows;
};

std::string jpeg_file(const Jpeg &jpeg)
{
    jpeg_compress_struct info;
    jpeg_error_mgr errors;
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char *bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &bytes, &size);
    info.image_width = jpeg.width;
    info.image_height = jpeg.height;
    info.input_components = jpeg.channels;
    info.in_color_space = jpeg.space;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 95, TRUE);
    info.write_Adobe_marker = jpeg.adobe ? TRUE : FALSE;
    if (jpeg.density > 0) {
        info.density_unit = 1;
        info.X_density = info.Y_density = static_cast<UINT16>(jpeg.density);
    }
    if (jpeg.progressive) {
        jpeg_simple_progression(&info);
    }
    jpeg_start_compress(&info, TRUE);
    if (!jpeg.exif.empty()) {
        std::vector<std::uint8_t> marker = {'E', 'x', 'i', 'f', 0, 0};
        marker.insert(marker.end(), jpeg.exif.begin(), jpeg.exif.end());
        jpeg_write_marker(&info, JPEG_APP0 + 1, marker.data(), static_cast<unsigned>(marker.size()));
    }
    const std::size_t stride = jpeg.rows.size() / jpeg.height;
    for (std::size_t y = 0; y < jpeg.height; ++y) {
        JSAMPROW row = const_cast<JSAMPROW>(jpeg.rows.data() + y * stride);
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    std::string file(reinterpret_cast<char *>(bytes), size);
    jpeg_destroy_compress(&info);
    free(bytes);
    return file;
}

// Two halves, each of one colour.
Jpeg two_colours(J_COLOR_SPACE space, const std::vector<std::uint8_t> &left, const std::vector<std::uint8_t> &right)
{
    Jpeg jpeg;
    jpeg.space = space;
    jpeg.channels = static_cast<int>(left.size());
    for (unsigned y = 0; y < jpeg.height; ++y) {
        for (unsigned x = 0; x < jpeg.width; ++x) {
            const auto &colour = x < jpeg.width / 2 ? left : right;
            jpeg.rows.insert(jpeg.rows.end(), colour.begin(), colour.end());
        }
    }
    return jpeg;
}

void expect_halves(const Jpeg &jpeg, double left, double right, const char *what)
{
    const Read result = read(jpeg_file(jpeg));
    ASSERT_EQ(result.failure, "") << what;
    ASSERT_EQ(result.grey.size(), jpeg.width * jpeg.height) << what;
    for (unsigned y = 4; y < jpeg.height; y += 10) {
        EXPECT_NEAR(result.grey[y * jpeg.width + 8], left, 4) << what;
        EXPECT_NEAR(result.grey[y * jpeg.width + jpeg.width - 8], right, 4) << what;
    }
}

TEST(JpegFiles, GreyAndColours)
{
    for (const bool progressive : {false, true}) {
        Jpeg grey = two_colours(JCS_GRAYSCALE, {30}, {220});
        grey.progressive = progressive;
        expect_halves(grey, 30, 220, "grey");
        Jpeg colour = two_colours(JCS_RGB, {255, 0, 0}, {255, 255, 0});
        colour.progressive = progressive;
        expect_halves(colour, 76, 226, "red and yellow");
    }
}

TEST(JpegFiles, InksAsAdobeWritesThemAndAsOthersDo)
{
    // Cyan, and black at a half.
    Jpeg plain = two_colours(JCS_CMYK, {255, 0, 0, 0}, {0, 0, 0, 128});
    expect_halves(plain, 179, 127, "plain");
    Jpeg adobe = two_colours(JCS_CMYK, {0, 255, 255, 255}, {255, 255, 255, 127});
    adobe.adobe = true;
    expect_halves(adobe, 179, 127, "Adobe");
}

TEST(JpegFiles, ResolutionAndTurning)
{
    Jpeg jpeg = two_colours(JCS_GRAYSCALE, {0}, {255});
    jpeg.exif = pages_test::exif_block(false, 8, 350, 2);
    Read result = read(jpeg_file(jpeg));
    EXPECT_EQ(result.info.turning, pages::turning_of_tag(8));
    EXPECT_EQ(result.info.ppi_x, 350);
    jpeg.density = 300;
    result = read(jpeg_file(jpeg));
    EXPECT_EQ(result.info.ppi_x, 300);
}

TEST(JpegFiles, FilesThatEndEarlyFail)
{
    for (const bool progressive : {false, true}) {
        Jpeg jpeg;
        jpeg.progressive = progressive;
        for (unsigned i = 0; i < jpeg.width * jpeg.height * 3; ++i) {
            jpeg.rows.push_back(static_cast<std::uint8_t>(i * i / 50));
        }
        const std::string file = jpeg_file(jpeg);
        // The last bytes may hold nothing but the end mark and a few bits.
        for (std::size_t size = 0; size + 12 < file.size(); size += 3) {
            ASSERT_NE(read(file.substr(0, size)).failure, "") << size << " of " << file.size();
        }
    }
}

TEST(JpegFiles, ASmallerPictureIsDeliveredWhenThatIsEnough)
{
    Jpeg jpeg = two_colours(JCS_GRAYSCALE, {0}, {255});
    const std::string bytes = jpeg_file(jpeg);
    struct Case {
        std::size_t width, height, got_width, got_height;
    };
    for (const Case &c : {Case{64, 48, 64, 48}, Case{33, 10, 64, 48}, Case{32, 24, 32, 24}, Case{16, 13, 32, 24},
                          Case{16, 12, 16, 12}, Case{1, 1, 8, 6}}) {
        const File file(bytes);
        auto opened = pages::open_image(file.get());
        ImageReader &reader = *std::get<std::unique_ptr<ImageReader>>(opened);
        reader.shrink(c.width, c.height);
        EXPECT_EQ(reader.row_width(), c.got_width);
        EXPECT_EQ(reader.row_count(), c.got_height);
        std::size_t rows = 0;
        EXPECT_FALSE(reader.read([&](const std::uint8_t *) { ++rows; }));
        EXPECT_EQ(rows, c.got_height);
    }
}

struct Pnm {
    const char *what;
    std::string file;
    std::vector<std::uint8_t> grey;
};

TEST(PnmFiles, AllSixKinds)
{
    const Pnm files[] = {
        {"P1", "P1\n# comment\n3 2\n0 1 0\n111\n", {255, 0, 255, 0, 0, 0}},
        {"P2", "P2 3 1 100\n0 50 100\n", {0, 128, 255}},
        {"P3", "P3\n2 1\n255\n255 0 0  0 0 255", {76, 28}},
        {"P4", std::string("P4 9 1\n\xAA\x80", 9), {0, 255, 0, 255, 0, 255, 0, 255, 0}},
        {"P5", std::string("P5 2 2 255\n\0\x40\x80\xFF", 15), {0, 64, 128, 255}},
        {"P5 of 16 bits", std::string("P5 2 1 65535\n\x80\0\xFF\xFF", 17), {128, 255}},
        {"P6", std::string("P6\n1 1\n255\n\0\xFF\0", 14), {149}},
        {"above white", std::string("P5 1 1 100\n\xFF", 12), {255}},
    };
    for (const Pnm &pnm : files) {
        const Read result = read(pnm.file);
        EXPECT_EQ(result.failure, "") << pnm.what;
        EXPECT_EQ(result.grey, pnm.grey) << pnm.what;
    }
}

TEST(PnmFiles, BrokenOnesFail)
{
    for (const char *file : {"P", "P7 1 1 255\n", "P5", "P5 1", "P5 1 1", "P5 0 1 255\na", "P5 1 1 0\na",
                             "P5 1 1 65536\naa", "P5 4000000000 1 255\n", "P5 -1 1 255\n", "P2 2 1 255\n7", "P1 1 1\n2",
                             "P1 1 1\n", "P4 9 1\na", "P6 1 1 255\nab", "P5 #", "P5 2 1 255\na"}) {
        EXPECT_NE(read(file).failure, "") << file;
    }
}

TEST(ImageFiles, WhatIsNoPictureIsRefusedInWords)
{
    EXPECT_EQ(read("").failure, "The picture is empty: the file has no content.");
    for (const char *file : {"hello", "GIF89a", "%PDF-1.4"}) {
        EXPECT_EQ(read(file).failure, "The document is not a picture of a kind that can be printed: PNG, JPEG or PNM.");
    }
}

// Through layout, turning, scaling and dots.
std::vector<std::uint8_t> printed(const std::string &bytes, const pages::Job &job)
{
    const File file(bytes);
    auto opened = pages::open_image(file.get());
    ImageReader &reader = *std::get<std::unique_ptr<ImageReader>>(opened);
    const auto layout = pages::lay_out_image(reader.info(), job);
    auto drawn = pages::draw_image(reader, std::get<pages::ImageLayout>(layout), job.paper.head_dots, job.dots);
    return std::get<std::vector<std::uint8_t>>(drawn);
}

TEST(ImagePages, EveryTurningPutsEveryDotInItsPlace)
{
    // An L of 11 x 7 dots.
    std::string file = "P1 11 7\n";
    for (int y = 0; y < 7; ++y) {
        for (int x = 0; x < 11; ++x) {
            file += x == 0 || (y == 6 && x < 5) ? '1' : '0';
        }
    }
    for (const pages::Turn turn :
         {pages::Turn::none, pages::Turn::quarter, pages::Turn::half, pages::Turn::three_quarters}) {
        for (const bool mirror : {false, true}) {
            pages::Job job;
            job.paper.head_dots = 16;
            job.across = pages::Place::start;
            job.orientation = turn;
            job.mirror = mirror;
            const auto bits = printed(file, job);
            const bool lies = turn == pages::Turn::quarter || turn == pages::Turn::three_quarters;
            const int width = lies ? 7 : 11, height = lies ? 11 : 7;
            ASSERT_EQ(bits.size(), 2U * static_cast<unsigned>(height));
            for (int y = 0; y < height; ++y) {
                for (int x = 0; x < width; ++x) {
                    const int column = mirror ? width - 1 - x : x;
                    // Where the dot was before the counter-clockwise turn.
                    const int u = turn == pages::Turn::none      ? column
                                  : turn == pages::Turn::quarter ? 10 - y
                                  : turn == pages::Turn::half    ? 10 - column
                                                                 : y;
                    const int v = turn == pages::Turn::none      ? y
                                  : turn == pages::Turn::quarter ? column
                                  : turn == pages::Turn::half    ? 6 - y
                                                                 : 6 - column;
                    const bool wanted = u == 0 || (v == 6 && u < 5);
                    const auto byte = static_cast<std::size_t>(y) * 2 + static_cast<std::size_t>(x) / 8;
                    const bool got = (bits[byte] >> (7 - x % 8) & 1) != 0;
                    ASSERT_EQ(got, wanted)
                        << static_cast<int>(turn) << (mirror ? " mirrored: " : ": ") << x << ", " << y;
                }
            }
        }
    }
}

TEST(ImagePages, WhatIsWiderThanTheHeadIsCutOnBothSides)
{
    pages::Job job;
    job.paper.head_dots = 8;
    job.scaling = pages::Scaling::none;
    EXPECT_EQ(printed("P1 12 1\n100101010011", job), std::vector<std::uint8_t>{0b01010100});
}

TEST(ImagePages, LabelsHaveBlankRowsAboveAndBelow)
{
    pages::Job job;
    job.paper.head_dots = 8;
    job.paper.type = pages::PaperType::label;
    job.paper.page_width = 8 / 203.2 * 72;
    job.paper.page_length = 6 / 203.2 * 72;
    EXPECT_EQ(printed("P1 8 2\n1111111111111111", job), (std::vector<std::uint8_t>{0, 0, 255, 255, 0, 0}));
    job.along = pages::Place::end;
    EXPECT_EQ(printed("P1 8 2\n1111111111111111", job), (std::vector<std::uint8_t>{0, 0, 0, 0, 255, 255}));
    // Taller than the label and not to be shrunk: both ends fall off.
    job.scaling = pages::Scaling::none;
    job.along = pages::Place::centre;
    EXPECT_EQ(printed("P1 8 8\n" + std::string(64, '1'), job), std::vector<std::uint8_t>(6, 255));
}

}  // namespace
