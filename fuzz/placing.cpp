// Any options and any page: numbers stay within their bounds, and on a roll no ink is lost and no paper comes before
// it.
#include "pages/log.h"
#include "pages/placement.h"

#include "fuzz/input.h"

#include <cmath>

namespace {

double length(fuzz::Input &input)
{
    return 0.2 + static_cast<double>(input.word() % 300000) / 10;
}

pages::Job job_of(fuzz::Input &input)
{
    pages::Job job;
    job.paper.type = static_cast<pages::PaperType>(input.byte() % 3);
    job.paper.head_dots = 8 + input.byte() * 8U;
    job.paper.page_width = length(input);
    job.paper.page_length = length(input);
    job.paper.paper_width = job.paper.head_dots / 8.0 + 10;
    return job;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    pages::Job job = job_of(input);
    const pages::Size page = {length(input), length(input)};
    const double left = page.width * input.byte() / 256;
    const double top = page.height * input.byte() / 256;
    const pages::Box box = {left, top, page.width, page.height};
    const std::vector<uint8_t> words = input.rest();
    const std::string options(words.begin(), words.end());
    pages::apply_options(pages::parse_options(options), job);

    FUZZ_CHECK(job.ranges.size() <= 1000);
    FUZZ_CHECK(!job.page_percent || (*job.page_percent >= 1 && *job.page_percent <= 1000));
    FUZZ_CHECK(!job.cpi || (*job.cpi >= 1 && *job.cpi <= 100));
    FUZZ_CHECK(pages::foreign_text(options).find('\n') == std::string::npos);

    const bool turned_box = pages::choose_turn(job, page) != pages::Turn::none;
    const pages::Placement placement = pages::place(job, page, pages::Ink{box, box});
    FUZZ_CHECK(std::isfinite(placement.scale) && placement.scale > 0);
    FUZZ_CHECK(placement.height >= 1);
    const bool by_itself = job.scaling == pages::Scaling::automatic && !job.page_percent && !job.natural_percent;
    if (job.paper.type == pages::PaperType::roll && by_itself && !turned_box) {
        const double dots = placement.scale * job.paper.dpi / 72;
        FUZZ_CHECK(placement.scale <= 1);
        FUZZ_CHECK(placement.top <= 0);
        FUZZ_CHECK(box.left * dots + static_cast<double>(placement.left) >= -3);
        FUZZ_CHECK(box.right * dots + static_cast<double>(placement.left) <= job.paper.head_dots + 3.0);
    }
    return 0;
}
