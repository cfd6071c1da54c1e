// Runs a fuzz target over files instead of random inputs, so that every build replays what the fuzzers found.
#include "fuzz/input.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

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
    int replayed = 0;
    for (int i = 1; i < argc; ++i) {
        for (const std::filesystem::path &path : files_of(argv[i])) {
            // Targets take the standard streams away; the file's name is on record before it runs.
            dprintf(1, "%s\n", path.c_str());
            if (!replay(path)) {
                dprintf(1, "cannot be read\n");
                return 1;
            }
            replayed += 1;
        }
    }
    dprintf(1, "%d files replayed\n", replayed);
    return replayed > 0 ? 0 : 1;
}
