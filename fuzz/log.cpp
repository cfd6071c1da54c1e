// Any page header, any job options: standard error holds no line that the scheduler would obey but the filter's own.
#include "diag/messages.h"
#include "filter/device.h"
#include "fuzz/fatal_end.h"
#include "fuzz/input.h"

#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>

#include <string_view>

namespace {

constexpr char ppd_text[] =
    "*PPD-Adobe: \"4.3\"\n*FormatVersion: \"4.3\"\n*FileVersion: \"1.0\"\n*LanguageVersion: English\n"
    "*LanguageEncoding: ISOLatin1\n*PCFileName: \"TEST.PPD\"\n*Manufacturer: \"Test\"\n*Product: \"(Test)\"\n"
    "*ModelName: \"Test\"\n*ShortNickName: \"QX-100\"\n*NickName: \"Test\"\n*PSVersion: \"(3010.000) 0\"\n";

// As long as the scheduler reads at a time.
constexpr size_t longest_line = 1999;
constexpr size_t header_lines = 40;

bool starts_with(std::string_view line, std::string_view prefix)
{
    return line.substr(0, prefix.size()) == prefix;
}

void check_line(std::string_view line, std::string_view page_line)
{
    FUZZ_CHECK(line.size() < longest_line);
    FUZZ_CHECK(starts_with(line, "INFO: ") || starts_with(line, "DEBUG: ") || line == page_line);
    for (const char sign : line) {
        FUZZ_CHECK(static_cast<uint8_t>(sign) >= 32 && sign != 127);
    }
}

// Returns the number of lines.
size_t check_lines(std::string_view log, std::string_view page_line)
{
    size_t lines = 0;
    while (!log.empty()) {
        const size_t end = log.find('\n');
        FUZZ_CHECK(end != std::string_view::npos);
        check_line(log.substr(0, end), page_line);
        log.remove_prefix(end + 1);
        lines += 1;
    }
    return lines;
}

const char *ppd_path()
{
    static const int file = memfd_create("ppd", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(file);
    FUZZ_CHECK(pwrite(file, ppd_text, sizeof ppd_text - 1, 0) == sizeof ppd_text - 1);
    return path.c_str();
}

cups_page_header_t any_header(fuzz::Input &input)
{
    cups_page_header_t header = {};
    const std::vector<uint8_t> bytes = input.bytes(sizeof header);
    if (!bytes.empty()) {
        memcpy(&header, bytes.data(), bytes.size());
    }
    return header;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::silence();
    FILE *const usual = stderr;
    setenv("PPD", ppd_path(), 1);
    fuzz::Input input(data, size);
    const cups_page_header_t header = any_header(input);
    const std::string options = input.text();

    char *log = nullptr;
    size_t length = 0;
    stderr = open_memstream(&log, &length);
    page_message(1, header.NumCopies);
    dump_header(header);
    fflush(stderr);
    const std::string page_line = "PAGE: 1 " + std::to_string(static_cast<int32_t>(header.NumCopies));
    FUZZ_CHECK(check_lines({log, length}, page_line) == 1 + header_lines);

    // A record that no memory is to be had for ends the process, which counts as an end.
    printer_dev *device = nullptr;
    auto create = [&] { klov_printer_dev_creator(options.c_str(), &device); };
    if (fuzz::survives(create)) {
        klov_printer_dev_destroy(device);
        fflush(stderr);
        check_lines({log, length}, page_line);
    }
    fclose(stderr);
    stderr = usual;
    free(log);
    return 0;
}
