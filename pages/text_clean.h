// A text file as it comes, made into text that can be laid out.
#ifndef KLOV_PAGES_TEXT_CLEAN_H
#define KLOV_PAGES_TEXT_CLEAN_H

#include <cstdint>
#include <string>
#include <string_view>

namespace pages {

// Valid UTF-8 with no control characters but "\n", "\t" and "\f". Reads UTF-8, and bytes that are none as Windows-1252;
// when the language is Chinese ("zh...") and the whole is not UTF-8, as GB18030; UTF-16 by its mark. Line ends of other
// systems become "\n", the overstrikes of manual pages one character, colour codes of terminals nothing.
std::string clean_text(std::string_view bytes, std::string_view language);

// The character at the front of a text, 1 to 4 bytes; size 0: the bytes there are not UTF-8.
struct Character {
    char32_t code = 0;
    unsigned size = 0;
};
Character front_character(std::string_view text);
void append_utf8(std::string &text, char32_t code);

}  // namespace pages

#endif
