// texttoroll: plain text in, one long page of the roll out.
#include "pages/limits.h"
#include "pages/log.h"
#include "pages/text_clean.h"
#include "pages/text_page.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <string>

namespace {

using pages::Failure;

// A kilometre of paper; the whole text is in memory, since its length comes first in the raster.
constexpr std::size_t most_bytes = std::size_t{16} * 1024 * 1024;

std::optional<Failure> read_all(std::FILE *file, std::string &bytes)
{
    char buffer[16 * 1024];
    std::size_t count = 0;
    while ((count = std::fread(buffer, 1, sizeof buffer, file)) > 0) {
        if (bytes.size() + count > most_bytes) {
            return Failure{"The text is too long: it has more than 16 MB."};
        }
        bytes.append(buffer, count);
    }
    if (std::ferror(file) != 0) {
        return Failure{"The document cannot be read: " + pages::foreign_text(std::strerror(errno))};
    }
    return std::nullopt;
}

std::optional<Failure> run(int argc, char **argv)
{
    pages::Job job;
    if (auto failure = pages::read_job(argc, argv, job)) {
        return failure;
    }
    std::FILE *file = job.file.empty() ? stdin : std::fopen(job.file.c_str(), "rbe");
    if (file == nullptr) {
        return Failure{"The document cannot be opened: " + pages::foreign_text(std::strerror(errno))};
    }
    std::string bytes;
    if (auto failure = read_all(file, bytes)) {
        return failure;
    }
    const std::string text = pages::clean_text(bytes, job.language);
    bytes = {};
    pages::RasterWriter writer(STDOUT_FILENO);
    return pages::print_text(text, job, writer);
}

std::optional<Failure> run_within_limits(int argc, char **argv)
{
    pages::set_limits();
    pages::begin_work_on_page(0);
    try {
        return run(argc, argv);
    } catch (const std::bad_alloc &) {
        return Failure{"There is not enough memory for the text."};
    } catch (const std::exception &) {
        return Failure{"The text is damaged and cannot be printed."};
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
