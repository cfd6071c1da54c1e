#include "pages/text_glyphs.h"

#include "pages/log.h"
#include "pages/text_clean.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace pages {
namespace {

// Real monospace fonts, by the order in which they suit a print head.
constexpr const char *families = "DejaVu Sans Mono,Liberation Mono,Noto Sans Mono,monospace";
constexpr int trial_size = 1000;  // dots, to measure the font's proportions
// Glyphs in memory; a text with more distinct ones than this is drawn all the same.
constexpr std::size_t most_glyphs = 20'000;
constexpr std::size_t most_named = 5;

template <typename Object>
struct Unref {
    void operator()(Object *object) const
    {
        g_object_unref(object);
    }
};
struct FreeDescription {
    void operator()(PangoFontDescription *description) const
    {
        pango_font_description_free(description);
    }
};
struct FreeMetrics {
    void operator()(PangoFontMetrics *metrics) const
    {
        pango_font_metrics_unref(metrics);
    }
};
struct FreeSurface {
    void operator()(cairo_surface_t *surface) const
    {
        cairo_surface_destroy(surface);
    }
};
struct FreeCairo {
    void operator()(cairo_t *cairo) const
    {
        cairo_destroy(cairo);
    }
};
struct FreeOptions {
    void operator()(cairo_font_options_t *options) const
    {
        cairo_font_options_destroy(options);
    }
};

using Context = std::unique_ptr<PangoContext, Unref<PangoContext>>;
using Layout = std::unique_ptr<PangoLayout, Unref<PangoLayout>>;
using Description = std::unique_ptr<PangoFontDescription, FreeDescription>;
using Metrics = std::unique_ptr<PangoFontMetrics, FreeMetrics>;
using Surface = std::unique_ptr<cairo_surface_t, FreeSurface>;
using Cairo = std::unique_ptr<cairo_t, FreeCairo>;
using FontOptions = std::unique_ptr<cairo_font_options_t, FreeOptions>;

// How far the font's characters go on when it is `size` dots high.
double advance(PangoContext *context, PangoFontDescription *description, double size)
{
    pango_font_description_set_absolute_size(description, size * PANGO_SCALE);
    const Metrics metrics(pango_context_get_metrics(context, description, nullptr));
    return static_cast<double>(pango_font_metrics_get_approximate_digit_width(metrics.get())) / PANGO_SCALE;
}

}  // namespace

struct GlyphMaker::Pango {
    Context context;
    Layout layout;
    double baseline = 0;  // dots below the cell's upper edge
};

GlyphMaker::GlyphMaker(std::size_t width, std::size_t height)
    : width_(width), height_(height), pango_(std::make_unique<Pango>())
{
}

GlyphMaker::~GlyphMaker() = default;

std::optional<Failure> GlyphMaker::prepare()
{
    PangoFontMap *map = pango_cairo_font_map_get_default();
    PangoFontFamily **known = nullptr;
    int count = 0;
    pango_font_map_list_families(map, &known, &count);
    g_free(known);
    if (count == 0) {
        return Failure{"There are no fonts on the print server; the package fonts-dejavu-core brings one."};
    }
    pango_->context.reset(pango_font_map_create_context(map));
    // Whole dots: a stem that is half a dot grey would come out ragged.
    const FontOptions options(cairo_font_options_create());
    cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_NONE);
    cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_FULL);
    cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(pango_->context.get(), options.get());
    pango_cairo_context_set_resolution(pango_->context.get(), 72);

    const Description description(pango_font_description_from_string(families));
    const double trial = advance(pango_->context.get(), description.get(), trial_size);
    // A font is about 1.17 times as high as its size; lines that stand closer ask for a smaller one.
    double size =
        std::min(trial_size * static_cast<double>(width_) / std::max(trial, 1.0), static_cast<double>(height_) / 1.17);
    size = std::max(size, 1.0);
    pango_font_description_set_absolute_size(description.get(), size * PANGO_SCALE);
    const Metrics metrics(pango_context_get_metrics(pango_->context.get(), description.get(), nullptr));
    const double ascent = static_cast<double>(pango_font_metrics_get_ascent(metrics.get())) / PANGO_SCALE;
    const double descent = static_cast<double>(pango_font_metrics_get_descent(metrics.get())) / PANGO_SCALE;
    pango_->baseline = std::round((static_cast<double>(height_) - ascent - descent) / 2 + ascent);
    pango_->layout.reset(pango_layout_new(pango_->context.get()));
    pango_layout_set_font_description(pango_->layout.get(), description.get());
    pango_layout_set_single_paragraph_mode(pango_->layout.get(), TRUE);
    return std::nullopt;
}

unsigned GlyphMaker::columns_of(std::string_view word)
{
    if (word_columns_.size() >= most_glyphs) {
        word_columns_.clear();
    }
    const auto [place, is_new] = word_columns_.try_emplace(std::string(word), 1U);
    if (is_new) {
        pango_layout_set_text(pango_->layout.get(), word.data(), static_cast<int>(word.size()));
        PangoRectangle logical;
        pango_layout_get_extents(pango_->layout.get(), nullptr, &logical);
        const double dots = static_cast<double>(logical.width) / PANGO_SCALE;
        place->second = static_cast<unsigned>(std::max(1.0, std::ceil(dots / static_cast<double>(width_) - 0.1)));
    }
    return place->second;
}

const Glyph &GlyphMaker::glyph(const Cell &cell)
{
    if (glyphs_.size() >= most_glyphs) {
        glyphs_.clear();
    }
    const auto [place, is_new] = glyphs_.try_emplace(std::string(cell.text));
    if (is_new) {
        place->second = draw(cell);
    }
    return place->second;
}

Glyph GlyphMaker::draw(const Cell &cell)
{
    PangoLayout *layout = pango_->layout.get();
    pango_layout_set_text(layout, cell.text.data(), static_cast<int>(cell.text.size()));
    Glyph glyph;
    glyph.width = cell.columns * width_;
    glyph.row_bytes = (glyph.width + 7) / 8;
    const auto columns = static_cast<int>(glyph.width);
    const auto rows = static_cast<int>(height_);
    const Surface surface(cairo_image_surface_create(CAIRO_FORMAT_A8, columns, rows));
    const Cairo cairo(cairo_create(surface.get()));
    if (pango_layout_get_unknown_glyphs_count(layout) > 0) {
        // An empty box, so that the reader sees that something was there.
        note_missing(cell.text);
        cairo_set_antialias(cairo.get(), CAIRO_ANTIALIAS_NONE);
        cairo_rectangle(cairo.get(), 1.5, 2.5, columns - 3, rows - 5);
        cairo_set_line_width(cairo.get(), 1);
        cairo_stroke(cairo.get());
    } else {
        PangoRectangle logical;
        pango_layout_get_extents(layout, nullptr, &logical);
        const double wide = static_cast<double>(logical.width) / PANGO_SCALE;
        const bool fills_two = cell.columns == 2 && wide < columns && wide > columns * 0.75;
        if (fills_two) {
            // Characters of two columns are drawn as large as their cells: they have many strokes.
            const double scale = columns / wide;
            const double high = scale * logical.height / PANGO_SCALE;
            const double ascent = scale * pango_layout_get_baseline(layout) / PANGO_SCALE;
            cairo_translate(cairo.get(), 0, std::round((rows - high) / 2 + ascent));
            cairo_scale(cairo.get(), scale, scale);
        } else {
            // Other fonts have other widths: what is too wide is made narrower, what is narrower stands in the middle.
            const double squeeze = wide > columns + 0.5 ? columns / wide : 1;
            const double left = std::max(0.0, std::floor((columns - wide * squeeze) / 2 + 0.25));
            cairo_translate(cairo.get(), left, pango_->baseline);
            cairo_scale(cairo.get(), squeeze, 1);
        }
        pango_cairo_show_layout_line(cairo.get(), pango_layout_get_line_readonly(layout, 0));
    }
    cairo_surface_flush(surface.get());
    const std::uint8_t *alpha = cairo_image_surface_get_data(surface.get());
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface.get()));
    if (alpha == nullptr) {
        return glyph;
    }
    glyph.bits.resize(glyph.row_bytes * height_);
    for (std::size_t y = 0; y < height_; ++y) {
        for (std::size_t x = 0; x < glyph.width; ++x) {
            if (alpha[y * stride + x] >= 128) {
                glyph.bits[y * glyph.row_bytes + x / 8] |= static_cast<std::uint8_t>(0x80U >> x % 8);
            }
        }
    }
    return glyph;
}

void GlyphMaker::note_missing(std::string_view text)
{
    missing_count_ += 1;
    if (missing_.size() >= most_named) {
        return;
    }
    // Of a character with marks, the first that is missing.
    char32_t code = 0;
    for (Character next = front_character(text); next.size > 0; next = front_character(text)) {
        code = next.code;
        pango_layout_set_text(pango_->layout.get(), text.data(), static_cast<int>(next.size));
        if (pango_layout_get_unknown_glyphs_count(pango_->layout.get()) > 0) {
            break;
        }
        text.remove_prefix(next.size);
    }
    auto *scripts = static_cast<GEnumClass *>(g_type_class_ref(PANGO_TYPE_SCRIPT));
    const GEnumValue *script = g_enum_get_value(scripts, static_cast<int>(g_unichar_get_script(code)));
    char name[64];
    std::snprintf(name, sizeof name, "U+%04X (%s)", static_cast<unsigned>(code),
                  script != nullptr ? script->value_nick : "unknown");
    g_type_class_unref(scripts);
    missing_.emplace_back(name);
}

void GlyphMaker::report_missing() const
{
    if (missing_count_ == 0) {
        return;
    }
    std::string text = "No font on the print server has these characters, empty boxes are printed for them:";
    for (const std::string &name : missing_) {
        text += " " + name + ",";
    }
    if (missing_count_ > missing_.size()) {
        text += " and " + std::to_string(missing_count_ - missing_.size()) + " more,";
    }
    text.back() = '.';
    log_warning(text);
}

}  // namespace pages
