// What a job asks of the document filters: the command line that CUPS gives every filter, the job's options and the
// queue's PPD, read once into one record that all three programs share.
#ifndef KLOV_PAGES_JOB_H
#define KLOV_PAGES_JOB_H

#include "pages/dots.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace pages {

// Why something could not be done, in words for the person at the printer.
struct Failure {
    std::string text;
};

enum class PaperType { roll, label, ticket };
enum class Scaling { automatic, none, fit, fill, auto_fit };
enum class Place { start, centre, end };
// Counter-clockwise, as orientation-requested means it.
enum class Turn { none = 0, quarter = 90, half = 180, three_quarters = 270 };

// What the queue's PPD says, for this job: dots are those of the print head.
struct Paper {
    unsigned head_dots = 576;   // width of every raster row, a multiple of 8
    double dpi = 203.2;         // dots per inch as they really are: the heads called 203 dpi have 8 dots a millimetre
    unsigned resolution = 203;  // as the PPD names it, for the raster header
    double paper_width = 82;    // millimetres: the head and its margins
    PaperType type = PaperType::roll;
    double page_width = 204.31;  // points, of the PageSize
    double page_length = 595;    // points; what a label is long
    std::string size_name;       // keyword of the PageSize
};

struct PageRange {
    unsigned first = 1;
    unsigned last = 0xffffffff;
};

struct Job {
    Paper paper;
    unsigned copies = 1;
    bool collate = false;
    Scaling scaling = Scaling::automatic;
    std::optional<double> page_percent;     // scaling=: percent of the head's width
    std::optional<double> natural_percent;  // natural-scaling=: percent of the document's own size
    std::optional<double> ppi;              // pixels of a picture per inch
    std::optional<Place> across;            // position: left, centre, right
    std::optional<Place> along;             // position: top, centre, bottom
    std::optional<Turn> orientation;        // orientation-requested or landscape; none = nobody said anything
    bool auto_rotate = true;                // false: nopdfAutoRotate
    bool mirror = false;
    std::vector<PageRange> ranges;  // empty: all pages
    bool odd_pages = true;
    bool even_pages = true;
    bool reverse = false;
    unsigned number_up = 1;  // what was asked for; pages are printed one by one
    DotSettings dots;
    std::optional<double> cpi;  // characters per inch
    std::optional<double> lpi;  // lines per inch
    bool wrap = true;
    double left_margin = 0;   // points, page-left
    double right_margin = 0;  // points, page-right
    double top_margin = 0;
    double bottom_margin = 0;
    std::string language;  // "zh_CN", from the job or the environment
    std::string title;
    std::string content_type;  // MIME type of the document as the scheduler calls it
    std::string file;          // path of the document; empty: standard input
};

// The options of argv[5] as pairs; a word alone is "true", "noWord" stays as it is written.
using Options = std::vector<std::pair<std::string, std::string>>;
Options parse_options(std::string_view text);

// Applies the options that need no PPD. Numbers that make no sense leave the default, with a warning in the log.
void apply_options(const Options &options, Job &job);

// The paper as the PPD file and the job's options say it, by the same rules as the raster filter behind.
std::optional<Failure> read_paper(const char *ppd_path, const Options &options, Job &job);

// Everything: the arguments "job-id user title copies options [file]" and the environment.
std::optional<Failure> read_job(int argc, const char *const *argv, Job &job);

// Whether page `number` (1 is the first) is to be printed.
bool is_wanted(const Job &job, unsigned number);

}  // namespace pages

#endif
