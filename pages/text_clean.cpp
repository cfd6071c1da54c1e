#include "pages/text_clean.h"

#include <iconv.h>

#include <algorithm>

namespace pages {
namespace {

constexpr char32_t replacement = 0xFFFD;
constexpr char escape = 0x1B;

// Windows-1252 from 0x80 to 0x9F; 0: no character.
constexpr char16_t windows_1252[32] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                       0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                       0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                       0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

bool is_utf8(std::string_view text)
{
    while (!text.empty()) {
        const Character next = front_character(text);
        if (next.size == 0) {
            return false;
        }
        text.remove_prefix(next.size);
    }
    return true;
}

// What the converter does not know is replaced, so that the rest of the text is not lost.
std::string converted(std::string_view bytes, const char *encoding)
{
    iconv_t converter = iconv_open("UTF-8", encoding);
    if (converter == reinterpret_cast<iconv_t>(-1)) {
        return std::string(bytes);
    }
    std::string result;
    char buffer[4096];
    char *from = const_cast<char *>(bytes.data());
    std::size_t left = bytes.size();
    while (left > 0) {
        char *to = buffer;
        std::size_t room = sizeof buffer;
        const std::size_t before = left;
        const std::size_t status = iconv(converter, &from, &left, &to, &room);
        result.append(buffer, to);
        if (status == static_cast<std::size_t>(-1) && left > 0 && room >= 8 && (left == before || room > 8)) {
            append_utf8(result, replacement);
            from += 1;
            left -= 1;
        }
    }
    iconv_close(converter);
    return result;
}

// Characters that change how others are drawn or nothing at all; none has a place on a grid of cells.
bool is_invisible(char32_t code)
{
    return code == 0xAD || code == 0xFEFF || code == 0x200B || (code >= 0x200E && code <= 0x200F) ||
           (code >= 0x2028 && code <= 0x202E) || (code >= 0x2060 && code <= 0x206F) ||
           (code >= 0xFFF9 && code <= 0xFFFB) || (code >= 0xE0000 && code <= 0xE007F);
}

// ESC [ numbers letter: how many bytes, 0 when it is no such code.
std::size_t terminal_code(std::string_view text)
{
    constexpr std::size_t longest = 40;
    if (text.size() < 3 || text[1] != '[') {
        return 0;
    }
    const std::size_t end = std::min(text.size(), longest);
    for (std::size_t i = 2; i < end; ++i) {
        if (text[i] >= 0x40 && text[i] <= 0x7E) {
            return i + 1;
        }
        if (text[i] < 0x20 || text[i] > 0x3F) {
            return 0;
        }
    }
    return 0;
}

class Cleaner {
public:
    explicit Cleaner(std::string_view text) : text_(text)
    {
        result_.reserve(text.size() + text.size() / 16);
    }

    std::string run()
    {
        while (!text_.empty()) {
            const auto byte = static_cast<unsigned char>(text_.front());
            if (byte >= 0x20 && byte < 0x7F) {
                put(byte, 1);
            } else if (byte < 0x80) {
                control(text_.front());
            } else {
                beyond_ascii(byte);
            }
        }
        return std::move(result_);
    }

private:
    void put(char32_t code, std::size_t taken)
    {
        last_start_ = result_.size();
        append_utf8(result_, code);
        text_.remove_prefix(taken);
    }

    void control(char byte)
    {
        std::size_t taken = 1;
        switch (byte) {
            case '\r':
                taken = text_.size() > 1 && text_[1] == '\n' ? 2 : 1;
                result_ += '\n';
                break;
            case '\n':
            case '\t':
            case '\f':
                result_ += byte;
                break;
            case '\b':
                overstrike();
                break;
            case escape:
                taken = std::max<std::size_t>(terminal_code(text_), 1);
                break;
            default:
                break;
        }
        if (byte != '\b') {
            last_start_ = result_.size();
        }
        text_.remove_prefix(taken);
    }

    // Bold is a character over itself, underlined one over or under a line.
    void overstrike()
    {
        const std::string_view before = std::string_view(result_).substr(std::min(last_start_, result_.size()));
        const Character after = front_character(text_.substr(1));
        if (before.empty() || after.size == 0) {
            return;
        }
        const std::string_view next = text_.substr(1, after.size);
        if (before == next || before == "_") {
            result_.resize(last_start_);
        } else if (next == "_") {
            text_.remove_prefix(after.size);
        }
    }

    void beyond_ascii(unsigned char byte)
    {
        const Character next = front_character(text_);
        if (next.size == 0) {
            const char32_t code = byte >= 0xA0 ? byte : windows_1252[byte - 0x80];
            code == 0 ? text_.remove_prefix(1) : put(code, 1);
        } else if (next.code < 0xA0 || is_invisible(next.code)) {
            text_.remove_prefix(next.size);
        } else {
            put(next.code, next.size);
        }
    }

    std::string_view text_;
    std::string result_;
    std::size_t last_start_ = 0;  // of the last character in the result
};

}  // namespace

Character front_character(std::string_view text)
{
    if (text.empty()) {
        return {};
    }
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned first = byte(0);
    if (first < 0x80) {
        return {first, 1};
    }
    const unsigned size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < size) {
        return {};
    }
    char32_t code = first & (0xFFU >> (size + 1));
    for (unsigned i = 1; i < size; ++i) {
        if ((byte(i) & 0xC0U) != 0x80) {
            return {};
        }
        code = code << 6 | (byte(i) & 0x3FU);
    }
    constexpr char32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < least[size] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
        return {};
    }
    return {code, size};
}

void append_utf8(std::string &text, char32_t code)
{
    if (code < 0x80) {
        text += static_cast<char>(code);
        return;
    }
    if (code < 0x800) {
        text += static_cast<char>(0xC0 | code >> 6);
    } else if (code < 0x10000) {
        text += static_cast<char>(0xE0 | code >> 12);
        text += static_cast<char>(0x80 | (code >> 6 & 0x3F));
    } else {
        text += static_cast<char>(0xF0 | code >> 18);
        text += static_cast<char>(0x80 | (code >> 12 & 0x3F));
        text += static_cast<char>(0x80 | (code >> 6 & 0x3F));
    }
    text += static_cast<char>(0x80 | (code & 0x3F));
}

std::string clean_text(std::string_view bytes, std::string_view language)
{
    std::string converted_bytes;
    if (bytes.starts_with("\xFF\xFE")) {
        converted_bytes = converted(bytes.substr(2), "UTF-16LE");
        bytes = converted_bytes;
    } else if (bytes.starts_with("\xFE\xFF")) {
        converted_bytes = converted(bytes.substr(2), "UTF-16BE");
        bytes = converted_bytes;
    } else if (language.starts_with("zh") && !is_utf8(bytes)) {
        converted_bytes = converted(bytes, "GB18030");
        bytes = converted_bytes;
    }
    return Cleaner(bytes).run();
}

}  // namespace pages
