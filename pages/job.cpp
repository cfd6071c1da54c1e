#include "pages/job.h"

#include "pages/log.h"

#include <cups/ppd.h>
#include <strings.h>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace pages {

namespace {

constexpr unsigned most_copies = 9999;
constexpr std::size_t most_ranges = 1000;

bool same_word(std::string_view left, std::string_view right)
{
    return left.size() == right.size() && strncasecmp(left.data(), right.data(), left.size()) == 0;
}

// CUPS matches names without looking at their case.
const std::string *find(const Options &options, std::string_view name)
{
    for (const auto &[key, value] : options) {
        if (same_word(key, name))
            return &value;
    }
    return nullptr;
}

std::optional<bool> truth(const Options &options, std::string_view name)
{
    const std::string *value = find(options, name);
    if (!value)
        return std::nullopt;
    for (const char *word : {"true", "on", "yes", "1"}) {
        if (same_word(*value, word))
            return true;
    }
    return false;
}

// A finite decimal number and nothing behind it.
std::optional<double> number_of(std::string_view text)
{
    if (text.starts_with('+'))
        text.remove_prefix(1);
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    if (error != std::errc() || end != text.data() + text.size() || text.empty())
        return std::nullopt;
    return number;
}

void warn(std::string_view name, std::string_view value)
{
    log_warning("Option " + std::string(name) + " is left out, its value makes no sense: " + foreign_text(value));
}

// The option's number between two bounds; nothing, with a warning, when it is none.
std::optional<double> number(const Options &options, std::string_view name, double least, double most)
{
    const std::string *value = find(options, name);
    if (!value)
        return std::nullopt;
    const std::optional<double> read = number_of(*value);
    if (read && *read >= least && *read <= most)
        return read;
    warn(name, *value);
    return std::nullopt;
}

std::optional<unsigned> page_number(std::string_view text)
{
    unsigned read = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read);
    if (error != std::errc() || end != text.data() + text.size() || read == 0)
        return std::nullopt;
    return read;
}

std::optional<PageRange> range_of(std::string_view text)
{
    PageRange range;
    const std::size_t dash = text.find('-');
    const std::string_view first = text.substr(0, dash);
    if (!first.empty()) {
        const auto read = page_number(first);
        if (!read)
            return std::nullopt;
        range.first = range.last = *read;
    }
    if (dash == std::string_view::npos)
        return first.empty() ? std::nullopt : std::optional(range);
    const std::string_view last = text.substr(dash + 1);
    range.last = PageRange().last;
    if (!last.empty()) {
        const auto read = page_number(last);
        if (!read || *read < range.first)
            return std::nullopt;
        range.last = *read;
    }
    return first.empty() && last.empty() ? std::nullopt : std::optional(range);
}

// "1-4,7,9-": all of it or nothing, so that a slip never prints pages that nobody asked for.
void apply_ranges(const Options &options, Job &job)
{
    const std::string *value = find(options, "page-ranges");
    if (!value)
        return;
    std::vector<PageRange> ranges;
    std::string_view left = *value;
    while (!left.empty() && ranges.size() < most_ranges) {
        const std::size_t comma = left.find(',');
        const auto range = range_of(left.substr(0, comma));
        if (!range)
            return warn("page-ranges", *value);
        ranges.push_back(*range);
        left = comma == std::string_view::npos ? std::string_view() : left.substr(comma + 1);
    }
    if (!left.empty() || ranges.empty())
        return warn("page-ranges", *value);
    job.ranges = ranges;
}

void apply_pages(const Options &options, Job &job)
{
    apply_ranges(options, job);
    if (const std::string *set = find(options, "page-set")) {
        if (same_word(*set, "odd")) {
            job.even_pages = false;
        } else if (same_word(*set, "even")) {
            job.odd_pages = false;
        } else if (!same_word(*set, "all")) {
            warn("page-set", *set);
        }
    }
    if (const std::string *order = find(options, "OutputOrder"))
        job.reverse = same_word(*order, "reverse");
    if (const auto up = number(options, "number-up", 1, 1000))
        job.number_up = static_cast<unsigned>(*up);
    if (const std::string *handling = find(options, "multiple-document-handling"))
        job.collate = !same_word(*handling, "separate-documents-uncollated-copies");
    if (const auto collate = truth(options, "collate"))
        job.collate = *collate;
}

void apply_scaling(const Options &options, Job &job)
{
    struct Word {
        const char *name;
        Scaling scaling;
    };
    static constexpr Word words[] = {{"auto", Scaling::automatic},
                                     {"none", Scaling::none},
                                     {"fit", Scaling::fit},
                                     {"fill", Scaling::fill},
                                     {"auto-fit", Scaling::auto_fit}};
    for (const char *name : {"fit-to-page", "fitplot"}) {
        if (truth(options, name).value_or(false))
            job.scaling = Scaling::fit;
    }
    if (const std::string *value = find(options, "print-scaling")) {
        const auto *word = std::ranges::find_if(words, [&](const Word &w) { return same_word(*value, w.name); });
        if (word == std::end(words)) {
            warn("print-scaling", *value);
        } else {
            job.scaling = word->scaling;
        }
    }
    job.page_percent = number(options, "scaling", 1, 1000);
    job.natural_percent = number(options, "natural-scaling", 1, 1000);
    job.ppi = number(options, "ppi", 1, 10000);
}

void apply_position(const Options &options, Job &job)
{
    struct Word {
        const char *name;
        Place across;
        Place along;
    };
    static constexpr Word words[] = {
        {"center", Place::centre, Place::centre}, {"top", Place::centre, Place::start},
        {"bottom", Place::centre, Place::end},    {"left", Place::start, Place::centre},
        {"right", Place::end, Place::centre},     {"top-left", Place::start, Place::start},
        {"top-right", Place::end, Place::start},  {"bottom-left", Place::start, Place::end},
        {"bottom-right", Place::end, Place::end},
    };
    const std::string *value = find(options, "position");
    if (!value)
        return;
    const auto *word = std::ranges::find_if(words, [&](const Word &w) { return same_word(*value, w.name); });
    if (word == std::end(words))
        return warn("position", *value);
    job.across = word->across;
    job.along = word->along;
}

void apply_orientation(const Options &options, Job &job)
{
    if (const auto landscape = truth(options, "landscape"))
        job.orientation = *landscape ? Turn::quarter : Turn::none;
    if (const std::string *value = find(options, "orientation-requested")) {
        if (*value == "3") {
            job.orientation = Turn::none;
        } else if (*value == "4") {
            job.orientation = Turn::quarter;
        } else if (*value == "5") {
            job.orientation = Turn::three_quarters;
        } else if (*value == "6") {
            job.orientation = Turn::half;
        } else if (*value != "7") {
            warn("orientation-requested", *value);  // 7: as the document is
        }
    }
    job.auto_rotate = truth(options, "pdfAutoRotate").value_or(true);
    job.mirror = truth(options, "mirror").value_or(false);
}

void apply_text(const Options &options, Job &job)
{
    job.cpi = number(options, "cpi", 1, 100);
    job.lpi = number(options, "lpi", 1, 100);
    job.wrap = truth(options, "wrap").value_or(true);
    job.left_margin = number(options, "page-left", 0, 10000).value_or(0);
    job.right_margin = number(options, "page-right", 0, 10000).value_or(0);
    job.top_margin = number(options, "page-top", 0, 10000).value_or(0);
    job.bottom_margin = number(options, "page-bottom", 0, 10000).value_or(0);
}

// The choice of an option: the job's own, else the PPD's default, as the raster filter reads it.
std::string choice(ppd_file_t *ppd, const Options &options, const char *keyword)
{
    if (const std::string *value = find(options, keyword))
        return *value;
    const ppd_choice_t *marked = ppdFindMarkedChoice(ppd, keyword);
    return marked ? marked->choice : "";
}

void read_dots(ppd_file_t *ppd, const Options &options, DotSettings &dots)
{
    const std::string dither = choice(ppd, options, "Dither");
    if (same_word(dither, "ordered")) {
        dots.dither = Dither::ordered;
    } else if (same_word(dither, "threshold")) {
        dots.dither = Dither::threshold;
    } else if (!dither.empty() && !same_word(dither, "diffusion")) {
        warn("Dither", dither);
    }

    const std::string darkness = choice(ppd, options, "Darkness");
    if (darkness.empty())
        return;
    const std::optional<double> step = number_of(darkness);
    if (!step || *step < -3 || *step > 3)
        return warn("Darkness", darkness);
    dots.darkness = static_cast<int>(*step);
}

// The dots of a row that ends at this edge (points), a whole number of bytes.
unsigned row_dots(double right_edge, unsigned resolution)
{
    return static_cast<unsigned>((right_edge / 72.0 * resolution + 7.0) / 8.0) * 8;
}

double true_dpi(unsigned resolution)
{
    // Heads are made to whole dots a millimetre; 203 is 203.2 cut short.
    const double dots_per_mm = resolution / 25.4;
    const double whole = std::round(dots_per_mm);
    return std::abs(dots_per_mm - whole) < 0.03 ? whole * 25.4 : resolution;
}

void read_sizes(ppd_file_t *ppd, const Options &options, Paper &paper)
{
    constexpr double widest_edge = 72.0 * 40;  // no head is wider than a metre
    double head_edge = ppd->custom_max[0];
    for (int i = 0; i < ppd->num_sizes; i++)
        head_edge = std::max<double>(head_edge, ppd->sizes[i].right);
    head_edge = std::min(head_edge, widest_edge);
    paper.head_dots = row_dots(head_edge, paper.resolution);
    paper.size_name = choice(ppd, options, "PageSize");
    const ppd_size_t *size = ppdPageSize(ppd, paper.size_name.c_str());
    if (size) {
        paper.page_width = size->width;
        paper.page_length = size->length;
        // The raster filter prints rows as wide as the page size; it has no room for longer ones.
        const double edge = std::min<double>(size->right, widest_edge);
        paper.head_dots = std::min(paper.head_dots, row_dots(std::max(edge, 0.0), paper.resolution));
    }
    paper.dpi = true_dpi(paper.resolution);
    paper.paper_width = paper.head_dots / paper.dpi * 25.4 + 10;
}

}  // namespace

Options parse_options(std::string_view text)
{
    cups_option_t *list = nullptr;
    const int count = cupsParseOptions(std::string(text).c_str(), 0, &list);
    Options options;
    for (int i = 0; i < count; i++)
        options.emplace_back(list[i].name, list[i].value);
    cupsFreeOptions(count, list);
    return options;
}

void apply_options(const Options &options, Job &job)
{
    apply_pages(options, job);
    apply_scaling(options, job);
    apply_position(options, job);
    apply_orientation(options, job);
    apply_text(options, job);
}

std::optional<Failure> read_paper(const char *ppd_path, const Options &options, Job &job)
{
    if (!ppd_path)
        return Failure{"The queue has no driver file: the variable PPD is not set."};
    ppd_file_t *ppd = ppdOpenFile(ppd_path);
    if (!ppd)
        return Failure{"The queue's driver file cannot be read: " + foreign_text(ppd_path)};
    ppdMarkDefaults(ppd);
    const int resolution = atoi(choice(ppd, options, "Resolution").c_str());
    if (resolution >= 50 && resolution <= 2400)
        job.paper.resolution = static_cast<unsigned>(resolution);
    const int type = atoi(choice(ppd, options, "PaperType").c_str());
    job.paper.type = type == 1 ? PaperType::label : type == 2 ? PaperType::ticket : PaperType::roll;
    read_sizes(ppd, options, job.paper);
    read_dots(ppd, options, job.dots);
    ppdClose(ppd);
    if (job.paper.head_dots == 0)
        return Failure{"The page size of this job has no width."};
    return std::nullopt;
}

std::optional<Failure> read_job(int argc, const char *const *argv, Job &job)
{
    if (argc != 6 && argc != 7)
        return Failure{"Wanted: job-id user title copies options [file]"};
    const int copies = atoi(argv[4]);
    job.copies = copies < 1 ? 1 : std::min(static_cast<unsigned>(copies), most_copies);
    job.title = argv[3];
    if (argc == 7)
        job.file = argv[6];
    if (const char *type = getenv("CONTENT_TYPE"))
        job.content_type = type;
    if (const char *language = getenv("LANG"))
        job.language = language;
    const Options options = parse_options(argv[5]);
    apply_options(options, job);
    if (auto failure = read_paper(getenv("PPD"), options, job))
        return failure;
    if (job.number_up > 1)
        log_warning("Pages are printed one by one: number-up does not suit this paper.");
    return std::nullopt;
}

bool is_wanted(const Job &job, unsigned number)
{
    if (number % 2 ? !job.odd_pages : !job.even_pages)
        return false;
    return job.ranges.empty() || std::ranges::any_of(job.ranges, [&](const PageRange &range) {
               return number >= range.first && number <= range.last;
           });
}

}  // namespace pages
