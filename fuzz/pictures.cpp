// Any bytes are a picture or are refused in words; what is printed of one fits the page that its layout says.
#include "pages/image_page.h"

#include "fuzz/input.h"

#include <cstdio>

namespace {

pages::Job job_of(fuzz::Input &input)
{
    pages::Job job;
    const uint8_t wish = input.byte();
    job.paper.head_dots = 8 * (1 + input.byte() % 72U);
    job.paper.type = wish % 4 == 0 ? pages::PaperType::label : pages::PaperType::roll;
    job.paper.page_length = input.byte();
    job.scaling = static_cast<pages::Scaling>(wish / 4 % 5);
    job.orientation = wish >= 128 ? std::optional(static_cast<pages::Turn>(wish / 32 % 4 * 90)) : std::nullopt;
    job.mirror = wish % 64 >= 32;
    return job;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    const pages::Job job = job_of(input);
    std::vector<uint8_t> bytes = input.rest();
    if (bytes.empty()) {
        return 0;
    }
    std::FILE *file = fmemopen(bytes.data(), bytes.size(), "r");
    {
        auto opened = pages::open_image(file);
        if (auto *reader = std::get_if<std::unique_ptr<pages::ImageReader>>(&opened)) {
            const auto laid = pages::lay_out_image((*reader)->info(), job);
            if (const auto *layout = std::get_if<pages::ImageLayout>(&laid)) {
                const auto drawn = pages::draw_image(**reader, *layout, job.paper.head_dots, job.dots);
                if (const auto *dots = std::get_if<std::vector<uint8_t>>(&drawn)) {
                    FUZZ_CHECK(dots->size() == layout->page_height * ((job.paper.head_dots + 7) / 8));
                }
            }
        }
    }
    std::fclose(file);
    return 0;
}
