// Composes the picture row by row. The picture is a pile of bands: desk, torn edge, paper, cut line.
#include "preview/painter.h"

#include <algorithm>
#include <array>

#include "preview/label.h"
#include "preview/png_writer.h"

namespace preview {
namespace {

enum Tint : uint8_t { desk, shadow, sheet, ink, faint, dash, words, amber, teal, violet, blue, grey };

constexpr std::array<Colour, 12> palette{{{0xE9, 0xE6, 0xE1},
                                          {0xD2, 0xCD, 0xC5},
                                          {0xFF, 0xFF, 0xFF},
                                          {0x1C, 0x1C, 0x1E},
                                          {0xB9, 0xB3, 0xAA},
                                          {0xC0, 0x39, 0x2B},
                                          {0x3A, 0x3A, 0x3C},
                                          {0xE0, 0x8E, 0x0B},
                                          {0x0F, 0x86, 0x7B},
                                          {0x7D, 0x4C, 0xB0},
                                          {0x1F, 0x6F, 0xC4},
                                          {0x77, 0x77, 0x7A}}};

constexpr uint32_t desk_border = 28;
constexpr uint32_t shadow_width = 4;
constexpr uint32_t edge_height = 6;   // of the torn edge's teeth
constexpr uint32_t blank_paper = 14;  // between an edge and the first printed row
constexpr uint32_t cut_height = 15;
constexpr uint64_t bullet_radius = 6;
constexpr uint32_t bullet_x = 30;  // from the paper's right edge
constexpr uint32_t words_x = 44;
constexpr uint64_t progress_rows = 20'000;

enum class BandKind { desk, top_edge, blank, rows, cut, bottom_edge };

struct Band {
    BandKind kind;
    uint64_t height;
    uint64_t first_row = 0;  // of the paper
    bool partial = false;    // of a cut
};

struct Layout {
    uint32_t width = 0;
    uint64_t height = 0;
    uint32_t paper_left = 0;
    uint32_t paper_width = 0;
    uint32_t margin = 0;
    std::vector<Band> bands;
    std::vector<Label> labels;
};

uint8_t event_colour(std::string_view kind)
{
    const std::pair<std::string_view, Tint> colours[] = {{"cut", dash},  {"drawer", amber}, {"buzzer", violet},
                                                         {"logo", teal}, {"ticket", blue},  {"label", blue},
                                                         {"page", grey}};
    for (const auto &[name, tint] : colours) {
        if (name == kind) {
            return tint;
        }
    }
    return grey;
}

void add_band(Layout &layout, Band band)
{
    layout.height += band.height;
    layout.bands.push_back(band);
}

// One receipt, or the whole paper: its rows and its events, each from the first to the one behind the last.
struct Section {
    uint64_t first_row, end_row;
    size_t first_event, end_event;
};

// Bands for a section, and the picture row of every event in it.
std::vector<LabelText> stack_bands(Layout &layout, const Reader &reader, const Section &section)
{
    add_band(layout, {BandKind::desk, desk_border});
    add_band(layout, {BandKind::top_edge, edge_height});
    add_band(layout, {BandKind::blank, blank_paper});
    uint64_t row = section.first_row;
    std::vector<LabelText> texts;
    for (size_t i = section.first_event; i < section.end_event; ++i) {
        const Event &event = reader.events()[i];
        // A reverse feed can put an event above the one before it.
        const uint64_t event_row = std::min(event.row, section.end_row);
        if (event_row > row) {
            add_band(layout, {BandKind::rows, event_row - row, row});
            row = event_row;
        }
        uint64_t tick = layout.height;
        // Cuts without paper in between fall on one line.
        const bool cut_again = !layout.bands.empty() && layout.bands.back().kind == BandKind::cut;
        if (event.kind == "cut" && cut_again) {
            tick -= cut_height - cut_height / 2;
        } else if (event.kind == "cut") {
            add_band(layout, {BandKind::cut, cut_height, 0, event.text == "partial cut"});
            tick += cut_height / 2;
        }
        texts.push_back({tick, event_colour(event.kind), event.text});
    }
    if (section.end_row > row) {
        add_band(layout, {BandKind::rows, section.end_row - row, row});
    }
    const bool ends_in_cut = layout.bands.back().kind == BandKind::cut;
    add_band(layout, {BandKind::blank, ends_in_cut ? 2 : blank_paper});
    add_band(layout, {BandKind::bottom_edge, edge_height});
    return texts;
}

Layout lay_out(const Reader &reader, const Section &section, uint32_t margin)
{
    Layout layout;
    layout.margin = margin;
    layout.paper_left = desk_border;
    layout.paper_width = reader.options().width + 2 * margin;
    const std::vector<LabelText> texts = stack_bands(layout, reader, section);
    layout.labels = stack_labels(texts, grey);
    uint32_t beside = 0;
    uint64_t bottom = layout.height;
    for (const Label &label : layout.labels) {
        beside = std::max(beside, words_x + label.text.width);
        bottom = std::max(bottom, label.top + label_height);
    }
    add_band(layout, {BandKind::desk, bottom - layout.height + desk_border});
    layout.width = layout.paper_left + layout.paper_width + beside + desk_border;
    return layout;
}

// How deep the torn edge reaches at a column: teeth of 12 dots.
uint32_t tooth(uint32_t x)
{
    const uint32_t phase = x % (2 * edge_height);
    return phase < edge_height ? phase : 2 * edge_height - 1 - phase;
}

// The bare sheet between its margins, with its shadow.
void paint_blank(const Layout &layout, std::vector<uint8_t> &out)
{
    const auto left = out.begin() + layout.paper_left;
    std::fill(out.begin(), out.end(), desk);
    std::fill_n(left, layout.paper_width, sheet);
    std::fill_n(left + layout.paper_width, shadow_width, shadow);
}

void paint_edge(const Layout &layout, BandKind kind, uint64_t line, std::vector<uint8_t> &out)
{
    const auto left = out.begin() + layout.paper_left;
    for (uint32_t x = 0; x < layout.paper_width; ++x) {
        const bool torn_off = kind == BandKind::top_edge ? line < tooth(x) : line >= edge_height - tooth(x);
        if (torn_off) {
            left[x] = desk;
        }
    }
    if (kind == BandKind::top_edge) {
        std::fill_n(left + layout.paper_width, shadow_width, desk);
    }
}

void paint_cut(const Layout &layout, bool partial, std::vector<uint8_t> &out)
{
    const uint32_t period = partial ? 12 : 20;
    for (uint32_t x = 4; x + 4 < layout.paper_width; ++x) {
        if (x % period < period - 6) {
            out[layout.paper_left + x] = dash;
        }
    }
}

void paint_ink(Bytes bits, uint32_t dots, uint8_t *out)
{
    for (uint32_t x = 0; x < dots; ++x) {
        const uint8_t byte = bits[x / 8];
        if (byte == 0) {
            x |= 7;
        } else if ((byte >> (7 - x % 8) & 1) != 0) {
            out[x] = ink;
        }
    }
}

// `blank` is a row of the bare sheet: most rows of long paper are just that.
void paint_sheet(const Layout &layout, const Reader &reader, const Band &band, uint64_t line,
                 const std::vector<uint8_t> &blank, std::vector<uint8_t> &out)
{
    std::copy(blank.begin(), blank.end(), out.begin());
    if (band.kind == BandKind::top_edge || band.kind == BandKind::bottom_edge) {
        paint_edge(layout, band.kind, line, out);
    } else if (band.kind == BandKind::cut && line == cut_height / 2) {
        paint_cut(layout, band.partial, out);
    } else if (band.kind == BandKind::rows) {
        const Bytes bits = reader.paper().row(band.first_row + line);
        const auto dots = static_cast<uint32_t>(std::min<size_t>(bits.size() * 8, reader.options().width));
        paint_ink(bits, dots, out.data() + layout.paper_left + layout.margin);
    }
}

// Labels whose tick lies above and whose end lies below the current picture row.
struct LabelWindow {
    size_t first = 0;
    size_t end = 0;
};

void paint_label(const Layout &layout, const Label &label, uint64_t y, std::vector<uint8_t> &out)
{
    const uint32_t edge = layout.paper_left + layout.paper_width + shadow_width;
    const uint64_t middle = label.top + label_height / 2;
    const uint32_t elbow = edge + 10;
    if (y == label.tick) {
        std::fill(out.begin() + edge, out.begin() + elbow, faint);
    }
    if (y >= std::min(label.tick, middle) && y <= std::max(label.tick, middle)) {
        out[elbow] = faint;
    }
    const uint32_t centre = layout.paper_left + layout.paper_width + bullet_x;
    if (y == middle) {
        std::fill(out.begin() + elbow, out.begin() + centre, faint);
    }
    const uint64_t distance = y > middle ? y - middle : middle - y;
    for (uint64_t dx = 0; dx <= bullet_radius; ++dx) {
        if (dx * dx + distance * distance <= bullet_radius * bullet_radius + 2) {
            const uint32_t offset = static_cast<uint32_t>(dx);
            out[centre + offset] = label.colour;
            out[centre - offset] = label.colour;
        }
    }
    if (y < label.top || y >= label.top + label.text.height) {
        return;
    }
    const uint32_t text_left = layout.paper_left + layout.paper_width + words_x;
    for (uint32_t x = 0; x < label.text.width; ++x) {
        if (label.text.dot(x, static_cast<uint32_t>(y - label.top))) {
            out[text_left + x] = words;
        }
    }
}

void paint_labels(const Layout &layout, LabelWindow &window, uint64_t y, std::vector<uint8_t> &out)
{
    const std::vector<Label> &labels = layout.labels;
    while (window.end < labels.size() && std::min(labels[window.end].tick, labels[window.end].top) <= y) {
        ++window.end;
    }
    while (window.first < window.end && labels[window.first].top + label_height <= y) {
        ++window.first;
    }
    for (size_t i = window.first; i < window.end; ++i) {
        paint_label(layout, labels[i], y, out);
    }
}

bool write_framed(const Reader &reader, const Layout &layout, PngWriter &png, const Progress &progress)
{
    std::vector<uint8_t> out(layout.width);
    std::vector<uint8_t> blank(layout.width);
    paint_blank(layout, blank);
    LabelWindow window;
    uint64_t y = 0;
    for (const Band &band : layout.bands) {
        for (uint64_t line = 0; line < band.height; ++line, ++y) {
            if (band.kind == BandKind::desk) {
                std::fill(out.begin(), out.end(), desk);
            } else {
                paint_sheet(layout, reader, band, line, blank, out);
            }
            paint_labels(layout, window, y, out);
            if (!png.row(out)) {
                return false;
            }
            if (progress && y % progress_rows == 0) {
                progress(y, layout.height);
            }
        }
    }
    return true;
}

bool write_bare(const Reader &reader, uint64_t first, uint64_t rows, PngWriter &png, const Progress &progress)
{
    const size_t stride = (reader.options().width + 7U) / 8;
    std::vector<uint8_t> out(stride);
    for (uint64_t row = 0; row < rows; ++row) {
        const Bytes bits = reader.paper().row(first + row);
        std::fill(out.begin(), out.end(), uint8_t{0xFF});
        std::transform(bits.begin(), bits.end(), out.begin(), [](uint8_t byte) { return static_cast<uint8_t>(~byte); });
        if (!png.row(out)) {
            return false;
        }
        if (progress && row % progress_rows == 0) {
            progress(row, rows);
        }
    }
    return true;
}

bool paint_section(const Reader &reader, const PictureOptions &options, const std::string &path, const Section &section,
                   const Progress &progress, std::string &error)
{
    PngWriter png;
    bool written = false;
    if (options.bare) {
        const uint64_t rows = std::max<uint64_t>(section.end_row - section.first_row, 1);
        written = png.open(path, reader.options().width, static_cast<uint32_t>(rows), reader.options().dpi, {}) &&
                  write_bare(reader, section.first_row, rows, png, progress);
    } else {
        const Layout layout = lay_out(reader, section, options.paper_margin);
        written = png.open(path, layout.width, static_cast<uint32_t>(layout.height), reader.options().dpi, palette) &&
                  write_framed(reader, layout, png, progress);
    }
    if (!written || !png.close()) {
        error = png.error();
        return false;
    }
    return true;
}

// A section ends with its cut. Cuts without paper in between belong to the same section.
std::vector<Section> sections(const Reader &reader)
{
    std::vector<Section> found;
    Section open{0, 0, 0, 0};
    const std::vector<Event> &events = reader.events();
    for (size_t i = 0; i < events.size(); ++i) {
        if (events[i].kind == "cut" && events[i].row > open.first_row) {
            open.end_row = events[i].row;
            open.end_event = i + 1;
            found.push_back(open);
            open = {open.end_row, open.end_row, i + 1, i + 1};
        }
    }
    open.end_row = reader.paper().rows();
    open.end_event = events.size();
    if (open.end_row > open.first_row || found.empty()) {
        found.push_back(open);
    } else {
        found.back().end_event = open.end_event;
    }
    return found;
}

}  // namespace

std::string numbered_path(const std::string &path, size_t number)
{
    const size_t slash = path.find_last_of('/');
    const size_t dot = path.find_last_of('.');
    const bool has_ending = dot != std::string::npos && (slash == std::string::npos || dot > slash + 1);
    const size_t end = has_ending ? dot : path.size();
    return path.substr(0, end) + '-' + std::to_string(number) + path.substr(end);
}

bool paint(const Reader &reader, const PictureOptions &options, const Progress &progress, std::string &error)
{
    if (!options.split) {
        const Section whole{0, reader.paper().rows(), 0, reader.events().size()};
        return paint_section(reader, options, options.path, whole, progress, error);
    }
    size_t number = 0;
    for (const Section &section : sections(reader)) {
        const std::string path = numbered_path(options.path, ++number);
        if (!paint_section(reader, options, path, section, progress, error)) {
            return false;
        }
    }
    return true;
}

}  // namespace preview
