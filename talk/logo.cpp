#include "talk/logo.h"

#include "talk/klovctl.h"

#include <cstdio>

namespace talk {
namespace {

constexpr int first_key = '0';
constexpr int most_logos = 9;

// The second key code of a logo, -1 when the word is no number of a logo.
int key_of(const std::string &word)
{
    const int number = number_in(word);
    return number >= 1 && number <= most_logos ? number + 47 : -1;
}

bool add_picture(Commands &commands, int key, const std::string &path, int widest, std::string &error)
{
    LogoPicture picture;
    if (!read_logo_picture(path, widest, picture, error)) {
        error = path + ": " + error;
        return false;
    }
    return commands.add_data(picture.rows.size(), klov_cmd_define_the_NV_graphics_data_raster_gmode, first_key, key,
                             picture.width, picture.height, picture.rows.data(),
                             static_cast<uint32_t>(picture.rows.size()));
}

}  // namespace

bool add_logo_command(Commands &commands, const std::vector<std::string> &words, int widest, std::string &error)
{
    const std::string what = words.size() > 1 ? words[1] : "";
    if (what == "list") {
        return words.size() == 2 && commands.add(klov_cmd_transmit_the_key_code_list_for_defined_NV_graphics_gmode);
    }
    const int key = words.size() > 2 ? key_of(words[2]) : -1;
    if (key < 0) {
        return false;
    }
    if (what == "add") {
        return words.size() == 4 && add_picture(commands, key, words[3], widest, error);
    }
    if (words.size() != 3) {
        return false;
    }
    if (what == "print") {
        return commands.add(klov_cmd_print_the_specified_NV_graphics_data_gmode, first_key, key, 1, 1);
    }
    return what == "delete" && commands.add(klov_cmd_delete_the_specified_NV_graphics_data_gmode, first_key, key);
}

bool read_key_codes(const std::vector<uint8_t> &reply, std::vector<uint8_t> &codes, bool &more)
{
    constexpr size_t head = 3;
    if (reply.size() <= head || reply.back() != 0 || reply[0] != 0x37 || reply[1] != 0x72) {
        return false;
    }
    more = reply[2] == 0x41;
    codes.insert(codes.end(), reply.begin() + head, reply.end() - 1);
    return true;
}

int list_logos(const connection &line, const Commands &commands, int64_t deadline_ms)
{
    constexpr size_t longest_block = 128;
    constexpr int most_blocks = 200;
    static constexpr uint8_t next_block = 0x06;
    const std::vector<uint8_t> &request = commands.bytes();
    bool lost = false;
    bool more = send_by(line, request.data(), request.size(), deadline_ms, &lost);
    std::vector<uint8_t> codes;
    for (int block = 0; more && block < most_blocks; block++) {
        std::vector<uint8_t> reply;
        while (!read_key_codes(reply, codes, more)) {
            const int byte = receive_by(line, deadline_ms, &lost);
            if (byte < 0 || reply.size() > longest_block) {
                complain("the printer does not list its logos");
                return no_answer;
            }
            // What comes in front of the list is no part of it.
            if (!reply.empty() || byte == 0x37) {
                reply.push_back(static_cast<uint8_t>(byte));
            }
        }
        if (more) {
            more = send_by(line, &next_block, 1, deadline_ms, &lost);
        }
    }
    for (size_t i = 0; i + 1 < codes.size(); i += 2) {
        if (codes[i] == first_key && codes[i + 1] > 47 && codes[i + 1] <= 47 + most_logos) {
            printf("%d\n", codes[i + 1] - 47);
        } else {
            printf("key %d %d\n", codes[i], codes[i + 1]);
        }
    }
    return lost ? no_answer : is_ready;
}

}  // namespace talk
