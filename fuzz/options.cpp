// A job's option string, a NUL, and the text of a PPD, through the making of the device object.
#include "filter/device.h"
#include "fuzz/fatal_end.h"
#include "fuzz/input.h"

#include <cups/cups.h>
#include <cups/ppd.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>

// What the filter has from libcups at the moment, to be given back after a fatal error.
static ppd_file_t *open_ppd = nullptr;
static cups_option_t *options_list = nullptr;
static int options_count = 0;

extern "C" ppd_file_t *__real_ppdOpenFile(const char *path);
extern "C" ppd_file_t *__wrap_ppdOpenFile(const char *path);
extern "C" void __real_ppdClose(ppd_file_t *ppd);
extern "C" void __wrap_ppdClose(ppd_file_t *ppd);
extern "C" int __real_cupsParseOptions(const char *text, int count, cups_option_t **list);
extern "C" int __wrap_cupsParseOptions(const char *text, int count, cups_option_t **list);
extern "C" void __real_cupsFreeOptions(int count, cups_option_t *list);
extern "C" void __wrap_cupsFreeOptions(int count, cups_option_t *list);

extern "C" ppd_file_t *__wrap_ppdOpenFile(const char *path)
{
    open_ppd = __real_ppdOpenFile(path);
    return open_ppd;
}

extern "C" void __wrap_ppdClose(ppd_file_t *ppd)
{
    __real_ppdClose(ppd);
    open_ppd = nullptr;
}

extern "C" int __wrap_cupsParseOptions(const char *text, int count, cups_option_t **list)
{
    options_count = __real_cupsParseOptions(text, count, list);
    options_list = *list;
    return options_count;
}

extern "C" void __wrap_cupsFreeOptions(int count, cups_option_t *list)
{
    __real_cupsFreeOptions(count, list);
    options_count = 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const int file = memfd_create("ppd", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(file);
    fuzz::silence();
    setenv("PPD", path.c_str(), 1);
    fuzz::Input input(data, size);
    const std::string options = input.text();
    const std::vector<uint8_t> ppd = input.rest();
    FUZZ_CHECK(ftruncate(file, 0) == 0);
    FUZZ_CHECK(pwrite(file, ppd.data(), ppd.size(), 0) == static_cast<ssize_t>(ppd.size()));

    printer_dev *device = nullptr;
    auto create = [&] { klov_printer_dev_creator(options.c_str(), &device); };
    if (fuzz::survives(create)) {
        FUZZ_CHECK(device != nullptr && device->devOptions->name != nullptr);
        FUZZ_CHECK(device->data_buf_size == device->render_data_size + 20);
        klov_printer_dev_destroy(device);
        return 0;
    }
    __wrap_cupsFreeOptions(options_count, options_list);
    __wrap_ppdClose(open_ppd);
    return 0;
}
