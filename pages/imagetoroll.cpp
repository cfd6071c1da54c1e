// imagetoroll: a picture in, one page of the roll out.
#include "pages/image_page.h"
#include "pages/limits.h"
#include "pages/log.h"
#include "pages/raster_writer.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <new>
#include <string>

namespace {

using pages::Failure;

std::optional<Failure> print_picture(std::FILE *file, const pages::Job &job)
{
    pages::OpenedImage opened = pages::open_image(file);
    if (const auto *failure = std::get_if<Failure>(&opened)) {
        return *failure;
    }
    pages::ImageReader &reader = *std::get<std::unique_ptr<pages::ImageReader>>(opened);
    const auto laid = pages::lay_out_image(reader.info(), job);
    if (const auto *failure = std::get_if<Failure>(&laid)) {
        return *failure;
    }
    const auto &layout = std::get<pages::ImageLayout>(laid);
    pages::log_debug("Picture of " + std::to_string(reader.info().width) + " x " +
                     std::to_string(reader.info().height) + " pixels, printed as " + std::to_string(layout.width) +
                     " x " + std::to_string(layout.height) + " dots");
    const auto drawn = pages::draw_image(reader, layout, job.paper.head_dots, job.dots);
    if (const auto *failure = std::get_if<Failure>(&drawn)) {
        return *failure;
    }
    const auto &dots = std::get<std::vector<std::uint8_t>>(drawn);
    pages::RasterWriter writer(STDOUT_FILENO);
    const pages::RollPage page = {job.paper.head_dots, static_cast<unsigned>(layout.page_height), job.paper.resolution,
                                  job.copies, job.paper.size_name};
    if (!writer.begin_page(page) || !writer.put_rows(dots.data(), layout.page_height) || !writer.end_page()) {
        return Failure{"The printer's filter does not take the picture."};
    }
    return std::nullopt;
}

std::optional<Failure> run(int argc, char **argv)
{
    pages::Job job;
    if (auto failure = pages::read_job(argc, argv, job)) {
        return failure;
    }
    if (!pages::is_wanted(job, 1)) {
        return Failure{"There is nothing to print: the picture is the only page, and other pages are asked for."};
    }
    std::FILE *file = job.file.empty() ? stdin : std::fopen(job.file.c_str(), "rbe");
    if (file == nullptr) {
        return Failure{"The document cannot be opened: " + pages::foreign_text(std::strerror(errno))};
    }
    return print_picture(file, job);
}

std::optional<Failure> run_within_limits(int argc, char **argv)
{
    pages::set_limits();
    pages::begin_work_on_page(0);
    try {
        return run(argc, argv);
    } catch (const std::bad_alloc &) {
        return Failure{"There is not enough memory for the picture."};
    } catch (const std::exception &) {
        return Failure{"The picture is damaged and cannot be printed."};
    }
}

}  // namespace

int main(int argc, char **argv)
{
    const auto failure = run_within_limits(argc, argv);
    if (!failure) {
        return 0;
    }
    pages::log_error(failure->text);
    return 1;
}
