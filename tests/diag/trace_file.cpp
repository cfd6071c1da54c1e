#include "tests/diag/trace_file.h"

#include <klov/trace.h>
#include <limits.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

long counted_write_calls()
{
    std::ifstream counters("/proc/self/io");
    std::string name;
    long value = 0;
    while (counters >> name >> value) {
        if (name == "syscw:") {
            return value;
        }
    }
    return -1;
}

}  // namespace

void TraceTest::SetUp()
{
    std::string pattern = testing::TempDir() + "trace_XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = fs::canonical(pattern);
}

void TraceTest::TearDown()
{
    klov_trace_exit();
    klov_trace_handle = nullptr;
    fs::remove_all(folder_);
}

std::string TraceTest::path(const std::string &name) const
{
    return folder_ + "/" + name;
}

std::string file_contents(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    std::ostringstream contents;
    contents << file.rdbuf();
    return contents.str();
}

int open_descriptors_on(const std::string &path)
{
    int count = 0;
    for (const fs::directory_entry &entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code failure;
        count += fs::read_symlink(entry.path(), failure) == path ? 1 : 0;
    }
    return count;
}

int descriptor_on(const std::string &path)
{
    for (const fs::directory_entry &entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code failure;
        if (fs::read_symlink(entry.path(), failure) == path) {
            return std::stoi(entry.path().filename());
        }
    }
    return -1;
}

int open_descriptors()
{
    int count = 0;
    for ([[maybe_unused]] const fs::directory_entry &entry : fs::directory_iterator("/proc/self/fd")) {
        ++count;
    }
    return count;
}

bool counts_write_calls()
{
    const auto one_write = [] { EXPECT_EQ(write(STDERR_FILENO, "", 0), 0); };
    // The first time round a sanitizer's own start-up may be among the writes.
    writes_of(one_write);
    return writes_of(one_write) == 1;
}

long writes_of(const std::function<void()> &step)
{
    const long before = counted_write_calls();
    step();
    return counted_write_calls() - before;
}
