// Runs a fuzz target over files instead of random inputs, so that every build replays what the fuzzers found.
#include "fuzz/input.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <unistd.h>

namespace {

std::vector<std::filesystem::path> files_of(const std::filesystem::path &place)
{
    if (!std::filesystem::is_directory(place)) {
        return {place};
    }
    std::vector<std::filesystem::path> files;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(place)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

bool replay(const std::filesystem::path &path)
{
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        return false;
    }
    const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
    return true;
}

}  // namespace

int main(int argc, char **argv)
{
    // Targets take standard output away; the file's name is on record before it runs.
    const int record = dup(STDOUT_FILENO);
    int replayed = 0;
    for (int i = 1; i < argc; ++i) {
        for (const std::filesystem::path &path : files_of(argv[i])) {
            dprintf(record, "%s\n", path.c_str());
            if (!replay(path)) {
                dprintf(record, "cannot be read\n");
                return 1;
            }
            replayed += 1;
        }
    }
    dprintf(record, "%d files replayed\n", replayed);
    return replayed > 0 ? 0 : 1;
}
