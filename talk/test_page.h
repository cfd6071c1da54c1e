// A page that shows what a printer can do: its model, a scale across the head in millimetres and dots, grey steps, the
// smallest text, a bar code, a QR code and a cut.
#pragma once

#include "talk/commands.h"

#include <string>

namespace talk {

struct TestPage {
    std::string model;
    int width = 576;  // dots
    bool cuts = true;
};

void add_test_page(Commands &commands, const TestPage &page);

}  // namespace talk
