"""Two kinds of pictures, written as SVG by hand: bars in groups, and points with lines through them."""

import html
import math

COLOURS = ("#1b6ca8", "#4aa3df", "#7fc8a9", "#9a9a9a", "#d08c60", "#c9604c", "#a04668", "#6b4e71", "#c0b283", "#404040")
FONT = 'font-family="sans-serif" font-size="12"'


def _text(x, y, words, anchor="start", extra=""):
    return '<text x="%.1f" y="%.1f" text-anchor="%s" %s %s>%s</text>' % (x, y, anchor, FONT, extra, html.escape(words))


def _write(path, width, height, parts):
    with open(path, "w", encoding="utf-8") as file:
        file.write('<svg xmlns="http://www.w3.org/2000/svg" width="%d" height="%d" viewBox="0 0 %d %d">\n'
                   '<rect width="100%%" height="100%%" fill="white"/>\n' % (width, height, width, height))
        file.write("\n".join(parts) + "\n</svg>\n")


def bars(path, title, groups, unit):
    """groups: list of (name, list of (label, value)). Each group has a scale of its own."""
    height = 50 + sum(30 + 18 * len(values) for _, values in groups)
    left, width, room = 190, 820, 520
    names = []
    for _, values in groups:
        names += [label for label, _ in values if label not in names]
    parts = [_text(10, 24, title, extra='font-weight="bold"')]
    y = 44
    for name, values in groups:
        parts.append(_text(10, y + 14, name, extra='font-weight="bold"'))
        y += 22
        longest = max(value for _, value in values) or 1
        for label, value in values:
            colour = COLOURS[names.index(label) % len(COLOURS)]
            parts.append(_text(left - 8, y + 12, label, "end"))
            parts.append('<rect x="%d" y="%d" width="%.1f" height="14" fill="%s"/>'
                         % (left, y, room * value / longest, colour))
            parts.append(_text(left + 6 + room * value / longest, y + 12, "%.4g %s" % (value, unit)))
            y += 18
        y += 8
    _write(path, width, height, parts)


def _ticks(low, high):
    return [10.0 ** power for power in range(math.floor(math.log10(low)), math.ceil(math.log10(high)) + 1)]


def lines(path, title, x_name, y_name, series, least_y=None):
    """series: list of (label, list of (x, y)), all above zero; both axes are logarithmic."""
    width, height, left, top, bottom, right = 820, 460, 80, 44, 60, 190
    xs = [x for _, points in series for x, _ in points]
    ys = [y for _, points in series for _, y in points] + ([least_y] if least_y else [])
    x_ticks, y_ticks = _ticks(min(xs), max(xs)), _ticks(min(ys), max(ys))

    def place(value, ticks, start, end):
        share = (math.log10(value) - math.log10(ticks[0])) / max(1e-9, math.log10(ticks[-1]) - math.log10(ticks[0]))
        return start + share * (end - start)

    def at(x, y):
        return place(x, x_ticks, left, width - right), place(y, y_ticks, height - bottom, top)

    parts = [_text(10, 24, title, extra='font-weight="bold"')]
    for tick in x_ticks:
        x = at(tick, y_ticks[0])[0]
        parts.append('<line x1="%.1f" y1="%d" x2="%.1f" y2="%d" stroke="#ddd"/>' % (x, top, x, height - bottom))
        parts.append(_text(x, height - bottom + 18, "{:,.6g}".format(tick), "middle"))
    for tick in y_ticks:
        y = at(x_ticks[0], tick)[1]
        parts.append('<line x1="%d" y1="%.1f" x2="%d" y2="%.1f" stroke="#ddd"/>' % (left, y, width - right, y))
        parts.append(_text(left - 8, y + 4, "{:,.6g}".format(tick), "end"))
    parts.append(_text((left + width - right) / 2, height - 16, x_name, "middle"))
    parts.append(_text(10, top - 6, y_name))
    for number, (label, points) in enumerate(series):
        colour = COLOURS[number % len(COLOURS)]
        placed = [at(x, y) for x, y in points]
        parts.append('<polyline fill="none" stroke="%s" stroke-width="2" points="%s"/>'
                     % (colour, " ".join("%.1f,%.1f" % point for point in placed)))
        parts += ['<circle cx="%.1f" cy="%.1f" r="3" fill="%s"/>' % (x, y, colour) for x, y in placed]
        parts.append('<rect x="%d" y="%d" width="12" height="12" fill="%s"/>'
                     % (width - right + 14, top + 20 * number, colour))
        parts.append(_text(width - right + 32, top + 11 + 20 * number, label))
    _write(path, width, height, parts)
