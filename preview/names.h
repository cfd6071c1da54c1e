// Names of commands and of their parameters, looked up in the command table while compiling: one that no row has is an
// error there.
#ifndef KLOV_PREVIEW_NAMES_H
#define KLOV_PREVIEW_NAMES_H

#include <string_view>

#include "preview/table_rows.h"

namespace preview {

class CommandName {
public:
    // NOLINTNEXTLINE(google-explicit-constructor): handler lists and comparisons read as text
    consteval CommandName(const char *name) : text_(name)
    {
        if (!is_known(text_)) {
            throw "no row of preview/table_rows.h has this name";
        }
    }

    constexpr std::string_view text() const
    {
        return text_;
    }

private:
    static consteval bool is_known(std::string_view name)
    {
        for (const TableRow &row : command_table) {
            if (name == row.name) {
                return true;
            }
        }
        return name == "text";  // characters between commands
    }

    std::string_view text_;
};

class ArgName {
public:
    // NOLINTNEXTLINE(google-explicit-constructor): see above
    consteval ArgName(const char *name) : text_(name)
    {
        if (!is_known(text_)) {
            throw "no row of preview/table_rows.h has a parameter of this name";
        }
    }

    constexpr std::string_view text() const
    {
        return text_;
    }

private:
    // A word of a pattern is the name, alone or with its size or its values behind it.
    static consteval bool is_known(std::string_view name)
    {
        for (const TableRow &row : command_table) {
            const std::string_view pattern = row.pattern;
            for (std::size_t at = pattern.find(name); at != pattern.npos; at = pattern.find(name, at + 1)) {
                const char before = at > 0 ? pattern[at - 1] : ' ';
                const char behind = at + name.size() < pattern.size() ? pattern[at + name.size()] : ' ';
                if (before == ' ' && (behind == ' ' || behind == '.' || behind == '=')) {
                    return true;
                }
            }
        }
        return false;
    }

    std::string_view text_;
};

}  // namespace preview

#endif
