// A serial line, with the settings in its address as CUPS writes them: ?baud=9600+bits=8+parity=none+flow=none.
#include "talk/device.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace talk {
namespace {

struct Speed {
    const char *name;
    speed_t value;
};
constexpr Speed speeds[] = {{"1200", B1200},     {"2400", B2400},     {"4800", B4800},    {"9600", B9600},
                            {"19200", B19200},   {"38400", B38400},   {"57600", B57600},  {"115200", B115200},
                            {"230400", B230400}, {"460800", B460800}, {"921600", B921600}};

bool set_baud(termios &line, const std::string &value)
{
    for (const Speed &speed : speeds) {
        if (value == speed.name) {
            return cfsetspeed(&line, speed.value) == 0;
        }
    }
    return false;
}

bool set_parity(termios &line, const std::string &value)
{
    const auto both = static_cast<tcflag_t>(PARENB | PARODD);
    line.c_cflag &= ~both;
    if (value == "even" || value == "odd") {
        line.c_cflag |= static_cast<tcflag_t>(value == "odd" ? PARENB | PARODD : PARENB);
    }
    return value == "even" || value == "odd" || value == "none";
}

bool set_flow(termios &line, const std::string &value)
{
    line.c_cflag &= ~static_cast<tcflag_t>(CRTSCTS);
    line.c_iflag &= ~static_cast<tcflag_t>(IXON | IXOFF);
    if (value == "soft") {
        line.c_iflag |= static_cast<tcflag_t>(IXON | IXOFF);
    } else if (value == "rtscts" || value == "hard") {
        line.c_cflag |= static_cast<tcflag_t>(CRTSCTS);
    }
    return value == "soft" || value == "rtscts" || value == "hard" || value == "none";
}

bool set_bits(termios &line, const std::string &value)
{
    line.c_cflag &= ~static_cast<tcflag_t>(CSIZE);
    line.c_cflag |= static_cast<tcflag_t>(value == "7" ? CS7 : CS8);
    return value == "7" || value == "8";
}

bool set_one(termios &line, const std::string &setting)
{
    const size_t equals = setting.find('=');
    const std::string name = setting.substr(0, equals);
    const std::string value = equals == std::string::npos ? "" : setting.substr(equals + 1);
    if (name == "baud") {
        return set_baud(line, value);
    }
    if (name == "parity") {
        return set_parity(line, value);
    }
    if (name == "flow") {
        return set_flow(line, value);
    }
    return name == "bits" && set_bits(line, value);
}

bool set_all(termios &line, std::string settings)
{
    while (!settings.empty()) {
        const size_t end = settings.find_first_of("+&");
        if (!set_one(line, settings.substr(0, end))) {
            return false;
        }
        settings = end == std::string::npos ? "" : settings.substr(end + 1);
    }
    return true;
}

}  // namespace

int open_serial(const std::string &address, std::string &error)
{
    const std::string place = address.substr(strlen("serial:"));
    const size_t question = place.find('?');
    const std::string path = place.substr(0, question);
    const int descriptor = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    termios line = {};
    if (descriptor < 0 || tcgetattr(descriptor, &line) != 0) {
        error = path + ": " + strerror(errno);
        if (descriptor >= 0) {
            close(descriptor);
        }
        return -1;
    }
    cfmakeraw(&line);
    line.c_cflag |= static_cast<tcflag_t>(CREAD | CLOCAL);
    const bool good = set_all(line, question == std::string::npos ? "" : place.substr(question + 1));
    if (!good || tcsetattr(descriptor, TCSANOW, &line) != 0) {
        error = address + ": the settings of the line are wrong";
        close(descriptor);
        return -1;
    }
    return descriptor;
}

}  // namespace talk
