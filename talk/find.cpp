#include "talk/find.h"

#include "talk/ask.h"

#include <fcntl.h>
#include <klov/model.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <strings.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

extern char **environ;

namespace talk {
namespace {

constexpr size_t longest_listing = 1 << 20;

// The value of the first of these keys, blanks around it left out.
std::string value_of(const std::string &id, const std::vector<std::string> &keys)
{
    size_t at = 0;
    while (at < id.size()) {
        const size_t end = std::min(id.find(';', at), id.size());
        const size_t colon = std::min(id.find(':', at), end);
        const size_t key_begin = std::min(id.find_first_not_of(" \t\n", at), colon);
        const std::string key = id.substr(key_begin, colon - key_begin);
        if (std::find(keys.begin(), keys.end(), key) != keys.end() && colon < end) {
            return id.substr(colon + 1, end - colon - 1);
        }
        at = end + 1;
    }
    return "";
}

bool same(const std::string &left, const char *right)
{
    return strcasecmp(left.c_str(), right) == 0;
}

std::string model_by_names(const std::string &brand, const std::string &model)
{
    for (const model_brief &row : model_brief_table) {
        if (row.width == 0 || !same(model, row.model_name)) {
            continue;
        }
        // The driver file calls models without a brand "Generic".
        if (same(brand, *row.manufacturer != '\0' ? row.manufacturer : "Generic")) {
            return row.identity;
        }
    }
    return "";
}

std::vector<std::string> split(const std::string &line, char separator)
{
    std::vector<std::string> fields(1);
    for (const char c : line) {
        if (c == separator) {
            fields.emplace_back();
        } else {
            fields.back() += c;
        }
    }
    return fields;
}

// avahi writes what is not plain in a name as \DDD, and a backslash in front of a dot or backslash.
std::string plain_name(const std::string &text)
{
    std::string result;
    for (size_t i = 0; i < text.size(); i++) {
        const bool number =
            text[i] == '\\' && i + 3 < text.size() &&
            std::all_of(text.begin() + static_cast<long>(i) + 1, text.begin() + static_cast<long>(i) + 4,
                        [](char c) { return c >= '0' && c <= '9'; });
        if (number) {
            result += static_cast<char>(std::stoi(text.substr(i + 1, 3)) & 0xFF);
            i += 3;
        } else if (text[i] == '\\' && i + 1 < text.size()) {
            result += text[++i];
        } else {
            result += text[i];
        }
    }
    return result;
}

// The text record is a row of "key=value" in quotation marks.
std::string record_value(const std::string &records, const std::string &key)
{
    const std::string begin = "\"" + key + "=";
    const size_t at = records.find(begin);
    if (at == std::string::npos) {
        return "";
    }
    const size_t value = at + begin.size();
    return records.substr(value, std::min(records.find('"', value), records.size()) - value);
}

Found found_by_avahi(const std::vector<std::string> &fields)
{
    Found printer = {"network", plain_name(fields[3]), "", ""};
    const bool is_ipv6 = fields[7].find(':') != std::string::npos;
    printer.device = "socket://" + (is_ipv6 ? "[" + fields[7] + "]" : fields[7]) + ":" + fields[8];
    const std::string &records = fields[9];
    printer.model = model_by_names(record_value(records, "usb_MFG"), record_value(records, "usb_MDL"));
    return printer;
}

// What a program writes, up to a time and a size. Empty when it is not there.
std::string output_of(const char *const *words, int timeout_ms)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return "";
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = -1;
    const int problem = posix_spawnp(&child, words[0], &actions, nullptr, const_cast<char *const *>(words), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    std::string text;
    const int64_t deadline = monotonic_ms() + timeout_ms;
    bool lost = problem != 0;
    while (!lost && text.size() < longest_listing) {
        const int byte = receive_by({-1, ends[0]}, deadline, &lost);
        if (byte < 0) {
            break;
        }
        text += static_cast<char>(byte);
    }
    close(ends[0]);
    if (problem == 0) {
        kill(child, SIGTERM);
        waitpid(child, nullptr, 0);
    }
    return text;
}

}  // namespace

std::string model_of_device_id(const std::string &id)
{
    return model_by_names(value_of(id, {"MFG", "MANUFACTURER"}), value_of(id, {"MDL", "MODEL"}));
}

std::vector<Found> find_usb(const std::string &folder)
{
    std::vector<Found> printers;
    std::error_code none;
    for (const auto &entry : std::filesystem::directory_iterator(folder, none)) {
        const std::string name = entry.path().filename();
        std::ifstream file(entry.path() / "device" / "ieee1284_id");
        std::string id;
        if (name.compare(0, 2, "lp") != 0 || !std::getline(file, id)) {
            continue;
        }
        const std::string shown = value_of(id, {"MFG", "MANUFACTURER"}) + " " + value_of(id, {"MDL", "MODEL"});
        printers.push_back({"usb", shown, "/dev/usb/" + name, model_of_device_id(id)});
    }
    std::sort(printers.begin(), printers.end(), [](const Found &a, const Found &b) { return a.device < b.device; });
    return printers;
}

std::vector<Found> read_avahi(const std::string &text)
{
    std::vector<Found> printers;
    for (const std::string &line : split(text, '\n')) {
        const std::vector<std::string> fields = split(line, ';');
        if (fields.size() < 10 || fields[0] != "=") {
            continue;
        }
        const Found printer = found_by_avahi(fields);
        // One printer is announced once for each of the network's sides.
        const bool known = std::any_of(printers.begin(), printers.end(),
                                       [&printer](const Found &other) { return other.name == printer.name; });
        if (!known) {
            printers.push_back(printer);
        }
    }
    return printers;
}

std::vector<Found> find_network(int timeout_ms)
{
    static const char *const words[] = {"avahi-browse", "-rpt", "_pdl-datastream._tcp", nullptr};
    return read_avahi(output_of(words, timeout_ms));
}

}  // namespace talk
