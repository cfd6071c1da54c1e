// pdftoroll: a CUPS filter that draws a PDF as pages of a paper roll, or as labels, for rastertoklov.

#include "pages/job.h"
#include "pages/limits.h"
#include "pages/log.h"
#include "pages/pdf_page.h"

#include <unistd.h>
#include <algorithm>
#include <cmath>
#include <map>
#include <new>

namespace pages {

namespace {

// A page of 100 m is no page: somebody mistook a unit.
constexpr double longest_page_mm = 100000;
constexpr double widest_page_mm = 10000;
// Pages of one size share one scale, found before the first is printed; of a long document, from its first pages.
constexpr std::size_t pages_looked_at = 50;

using SizeKey = std::pair<long, long>;

struct Group {
    std::optional<Box> ink;  // of the pages looked at
};

class Printing {
public:
    Printing(const Job &job, PdfDocument &document) : job_(job), document_(document), writer_(STDOUT_FILENO) {}
    std::optional<Failure> run();

private:
    std::vector<unsigned> wanted_pages() const;
    std::optional<Failure> look_at(unsigned number, PageOrder &order);
    std::optional<Failure> find_ink(const PageOrder &order, std::optional<Box> &ink);
    std::optional<Failure> place_page(unsigned number, PageOrder &order);
    std::optional<Failure> look_at_first_pages(const std::vector<unsigned> &numbers);
    std::optional<Failure> print(const std::vector<unsigned> &numbers, unsigned copies);

    const Job &job_;
    PdfDocument &document_;
    RasterWriter writer_;
    std::map<SizeKey, Group> groups_;
    std::map<unsigned, std::optional<Box>> ink_;  // of the pages looked at, by page
};

SizeKey key_of(const PageOrder &order)
{
    return {std::lround(order.size.width), std::lround(order.size.height)};
}

double mm(double points)
{
    return points / 72 * 25.4;
}

Failure page_failure(unsigned number, const char *what)
{
    return Failure{"Page " + std::to_string(number) + " of the document " + what};
}

std::vector<unsigned> Printing::wanted_pages() const
{
    std::vector<unsigned> numbers;
    for (unsigned number = 1; number <= document_.page_count(); number++) {
        if (is_wanted(job_, number))
            numbers.push_back(number);
    }
    if (job_.reverse)
        std::ranges::reverse(numbers);
    return numbers;
}

std::optional<Failure> Printing::look_at(unsigned number, PageOrder &order)
{
    begin_work_on_page(number);
    const std::optional<Size> size = document_.page_size(number);
    if (!size)
        return page_failure(number, "is damaged.");
    if (!(size->width > 0.1 && size->height > 0.1))
        return page_failure(number, "has no size.");
    if (mm(size->height) > longest_page_mm || mm(size->width) > longest_page_mm)
        return page_failure(number, "is longer than 100 m.");
    order.number = number;
    order.turn = choose_turn(job_, *size);
    order.size = turned(*size, order.turn);
    if (mm(order.size.width) > widest_page_mm)
        return page_failure(number, "is wider than 10 m.");
    return std::nullopt;
}

std::optional<Failure> Printing::find_ink(const PageOrder &order, std::optional<Box> &ink)
{
    const auto known = ink_.find(order.number);
    if (known == ink_.end())
        return document_.find_ink(order.number, order.turn, order.size, ink);
    ink = known->second;
    return std::nullopt;
}

std::optional<Failure> Printing::look_at_first_pages(const std::vector<unsigned> &numbers)
{
    const std::size_t count = std::min(numbers.size(), pages_looked_at);
    for (std::size_t i = 0; i < count && !is_cancelled(); i++) {
        PageOrder order;
        // A page that fails is told of when its turn comes, after the good pages before it.
        if (look_at(numbers[i], order) || !needs_ink(job_, order.size))
            continue;
        std::optional<Box> ink;
        if (document_.find_ink(order.number, order.turn, order.size, ink))
            continue;
        ink_[order.number] = ink;
        std::optional<Box> &all = groups_[key_of(order)].ink;
        if (ink)
            all = all ? unite(*all, *ink) : *ink;
    }
    return std::nullopt;
}

std::optional<Failure> Printing::place_page(unsigned number, PageOrder &order)
{
    if (auto failure = look_at(number, order))
        return failure;
    std::optional<Ink> ink;
    if (needs_ink(job_, order.size)) {
        std::optional<Box> own;
        if (auto failure = find_ink(order, own))
            return failure;
        if (own)
            ink = Ink{*own, unite(*own, groups_[key_of(order)].ink.value_or(*own))};
    }
    order.placement = place(job_, order.size, ink);
    const double rows = longest_page_mm / 25.4 * job_.paper.dpi;
    if (order.placement.height > rows)
        return page_failure(number, "would be longer than 100 m on paper.");
    return std::nullopt;
}

std::optional<Failure> Printing::print(const std::vector<unsigned> &numbers, unsigned copies)
{
    for (const unsigned number : numbers) {
        PageOrder order;
        if (is_cancelled())
            return std::nullopt;
        if (auto failure = place_page(number, order))
            return failure;
        order.copies = copies;
        if (auto failure = print_page(job_, document_, order, writer_))
            return failure;
    }
    return std::nullopt;
}

std::optional<Failure> Printing::run()
{
    const std::vector<unsigned> numbers = wanted_pages();
    if (numbers.empty())
        log_warning("The document has none of the pages that were asked for.");
    if (auto failure = look_at_first_pages(numbers))
        return failure;
    // Copies of one page are alike however they are put together.
    if (!job_.collate || numbers.size() == 1)
        return print(numbers, job_.copies);
    for (unsigned copy = 0; copy < job_.copies; copy++) {
        if (auto failure = print(numbers, 1))
            return failure;
    }
    return std::nullopt;
}

std::optional<Failure> print_job(int argc, const char *const *argv)
{
    Job job;
    if (auto failure = read_job(argc, argv, job))
        return failure;
    set_limits();
    begin_work_on_page(0);
    try {
        PdfDocument document;
        if (auto failure = PdfDocument::open(job.file, document))
            return failure;
        return Printing(job, document).run();
    } catch (const std::bad_alloc &) {
        return Failure{"The document needs more memory than a print job may use."};
    } catch (const std::exception &) {
        return Failure{"The document is damaged and cannot be drawn."};
    }
}

}  // namespace

}  // namespace pages

int main(int argc, char **argv)
{
    const auto failure = pages::print_job(argc, argv);
    if (!failure)
        return 0;
    pages::log_error(failure->text);
    return 1;
}
