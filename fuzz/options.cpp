// A job's option string, a NUL, and the text of a PPD, through the making of the device object.
#include "filter/device.h"
#include "fuzz/fatal_end.h"
#include "fuzz/input.h"

#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>

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
    }
    return 0;
}
