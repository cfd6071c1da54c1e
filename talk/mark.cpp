#include "talk/mark.h"

#include <errno.h>
#include <fcntl.h>
#include <klov/trace.h>
#include <stdio.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace talk {

mark open_mark(const char *folder, const char *device_uri)
{
    if (folder == nullptr || device_uri == nullptr) {
        return {};
    }
    // The address may hold a password, so that its checksum names the file.
    size_t length = strcspn(device_uri, "?");
    while (length > 0 && device_uri[length - 1] == '/') {
        length--;
    }
    const uint32_t checksum = CRC32(0, reinterpret_cast<const uint8_t *>(device_uri), static_cast<uint32_t>(length));
    char path[1024];
    const int written = snprintf(path, sizeof path, "%s/klovstatus-%08x", folder, checksum);
    if (written < 0 || static_cast<size_t>(written) >= sizeof path) {
        return {};
    }
    return {open(path, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY, 0600)};
}

bool lock_mark(const mark &of)
{
    return of.descriptor < 0 || flock(of.descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

bool is_marked(const mark &of)
{
    struct stat file = {};
    return of.descriptor >= 0 && fstat(of.descriptor, &file) == 0 && file.st_size > 0;
}

void set_mark(const mark &of)
{
    if (of.descriptor >= 0) {
        // A full disk costs the mark, not the job.
        [[maybe_unused]] const ssize_t written = pwrite(of.descriptor, "!", 1, 0);
    }
}

void remove_mark(const mark &of)
{
    if (of.descriptor >= 0) {
        [[maybe_unused]] const int result = ftruncate(of.descriptor, 0);
    }
}

}  // namespace talk
