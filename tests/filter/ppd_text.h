// PPD files for the tests: a printer's options, their choices and defaults, and its page sizes.
#pragma once

#include <string>
#include <vector>

struct PpdOption {
    std::string keyword;
    std::string default_choice;        // empty: none
    std::vector<std::string> choices;  // the default's own entry included, when it is to be one
};

struct PpdSize {
    std::string name;
    std::string area;  // left, bottom, right, top in points; empty: the size has no imageable area
};

struct Ppd {
    std::string short_nick_name = "KLR-5813";  // 384 dots; empty: the line is missing
    std::vector<PpdOption> options = {};
    std::vector<PpdSize> sizes = {};
    std::string default_size = "";  // empty: none
    bool custom_sizes = false;      // with a right margin of 9 points

    std::string text() const;
};

// The PPD that the environment names, while this object lives.
class PpdInEnvironment {
public:
    explicit PpdInEnvironment(const std::string &path);
    ~PpdInEnvironment();
    PpdInEnvironment(const PpdInEnvironment &) = delete;
    PpdInEnvironment &operator=(const PpdInEnvironment &) = delete;
};
