// Pictures that the printer keeps: logo N of the print options is the picture with the key codes '0' and N + 47.
#pragma once

#include "talk/ask.h"
#include "talk/commands.h"

#include <string>
#include <vector>

namespace talk {

// words: "logo", then list, add N PICTURE, print N or delete N. A picture is made no wider than so many dots. False:
// the words are wrong, or the picture cannot be read and `error` says why.
bool add_logo_command(Commands &commands, const std::vector<std::string> &words, int widest, std::string &error);

// Send the request in `commands` and print the numbers of the logos that the printer has. The exit status.
int list_logos(const connection &line, const Commands &commands, int64_t deadline_ms);

// The key codes in a printer's list, two bytes each; taken from "37 72 status codes... 00". False while it is not
// complete; `more` when the printer has a further block and waits for ACK.
bool read_key_codes(const std::vector<uint8_t> &reply, std::vector<uint8_t> &codes, bool &more);

struct LogoPicture {
    int width = 0;  // dots
    int height = 0;
    std::vector<uint8_t> rows;  // (width + 7) / 8 bytes each, a set bit black
};

// A picture file as dots of the head, no wider than so many. False with `error` set when it is none.
bool read_logo_picture(const std::string &path, int widest, LogoPicture &picture, std::string &error);

}  // namespace talk
