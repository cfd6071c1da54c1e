// What all of klovctl's commands use of its command line.
#include "talk/klovctl.h"

#include <charconv>
#include <cstdio>

namespace talk {

int complain(const std::string &what)
{
    fprintf(stderr, "klovctl: %s\n", what.c_str());
    return wrong_use;
}

int number_in(const std::string &text)
{
    int number = -1;
    const char *end = text.data() + text.size();
    const auto [at, problem] = std::from_chars(text.data(), end, number);
    return problem == std::errc() && at == end && number >= 0 ? number : -1;
}

}  // namespace talk
