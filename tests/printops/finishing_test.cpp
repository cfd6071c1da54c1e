// The ten finishing and peripheral operations: option values, bytes, trace lines.
#include "printops/finishing.h"

#include "tests/printops/kit.h"

#include <gtest/gtest.h>
#include <klov/result.h>

using namespace kit;

namespace {

constexpr uint32_t some_class = 0x10010201;

struct Done {
    int32_t status;
    Seen seen;
};

Done run(Device &device, const std::function<int32_t(printer_dev *)> &operation)
{
    Done done = {99, {}};
    device.options.type = some_class;
    done.seen = observe([&] { done.status = operation(&device.dev); });
    EXPECT_EQ(done.seen.err, "");
    return done;
}

std::string finished_line(const std::string &name, int32_t status)
{
    return "-" + name + " finished(" + std::to_string(status) + ") " + (status == 0 ? "success." : "fail!") + "\n";
}

// One operation with one of its values: the command, or nothing when the encoder refuses it with -1.
struct Expectation {
    std::string name;        // in the finished line
    std::string start_line;  // may be empty
    std::string command;     // empty: refused
    size_t times = 1;
};

void expect_done(const Done &done, const Expectation &expected)
{
    const int32_t status = expected.command.empty() ? KLOV_E_PARAMETER : KLOV_OK;
    std::string out;
    std::string trace = expected.start_line;
    for (size_t i = 0; status == KLOV_OK && i < expected.times; ++i) {
        out += expected.command;
        trace += traced(expected.command);
    }
    ASSERT_EQ(done.status, status);
    ASSERT_EQ(hex(done.seen.out), hex(out));
    ASSERT_EQ(done.seen.trace, trace + finished_line(expected.name, status));
}

std::string class_line(const std::string &name)
{
    return "+" + name + "(printer_class:" + std::to_string(static_cast<int>(some_class)) + ") start.\n";
}

std::string with_byte(const std::string &hex_text, int32_t value)
{
    return bytes(hex_text) + static_cast<char>(value & 0xFF);
}

// Every byte value, its aliases above and below, and the ends.
std::vector<int32_t> telling_values()
{
    std::vector<int32_t> values = {INT32_MIN, INT32_MAX, INT32_MIN + 1, 65535, 65536};
    for (int32_t value = -300; value <= 600; ++value) {
        values.push_back(value);
    }
    return values;
}

void for_every_value(int32_t dev_options::*field, int32_t (*operation)(printer_dev *),
                     const std::function<Expectation(int32_t value)> &expected)
{
    for (const int32_t value : telling_values()) {
        Device device;
        device.options.*field = value;
        SCOPED_TRACE(value);
        expect_done(run(device, operation), expected(value));
        if (testing::Test::HasFatalFailure()) {
            return;
        }
    }
}

TEST(Finishing, CutKindsOneAndTwoCut)
{
    Device device;
    device.options.finalcut = 1;
    EXPECT_EQ(hex(run(device, print_cut_page).seen.out), "1D 56 42 00");
    device.options.finalcut = 2;
    EXPECT_EQ(hex(run(device, print_cut_page).seen.out), "1D 56 41 00");
}

TEST(Finishing, CutKindZeroIsRefusedWhichIsHowNoCutWorks)
{
    for (const int32_t kind : {0, 3}) {
        Device device;
        device.options.finalcut = kind;
        const Done done = run(device, print_cut_page);
        EXPECT_EQ(done.status, KLOV_E_PARAMETER);
        EXPECT_EQ(done.seen.out, "");
        EXPECT_EQ(done.seen.trace, class_line("print_cut_page") + "-print_cut_page finished(-1) fail!\n");
    }
}

TEST(Finishing, EveryCutKind)
{
    for_every_value(&dev_options::finalcut, print_cut_page, [](int32_t kind) {
        Expectation expected = {"print_cut_page", class_line("print_cut_page"), ""};
        switch (kind & 0xFF) {
            case 1:
            case 66:
                expected.command = bytes("1D 56 42 00");
                break;
            case 2:
            case 67:
                expected.command = bytes("1D 56 41 00");
                break;
            default:
                break;
        }
        return expected;
    });
}

TEST(Finishing, NextTicketIsAFormFeed)
{
    Device device;
    expect_done(run(device, print_position_next_ticket),
                {"print_position_next_ticket", class_line("print_position_next_ticket"), "\x0C"});
}

TEST(Finishing, EverySpeed)
{
    for_every_value(&dev_options::speed, printer_set_speed, [](int32_t value) {
        return Expectation{"printer_set_speed", class_line("printer_set_speed"), with_byte("1D 45", value)};
    });
}

TEST(Finishing, EveryDensity)
{
    for_every_value(&dev_options::density, printer_set_density, [](int32_t value) {
        return Expectation{"printer_set_density", class_line("printer_set_density"),
                           with_byte("1D 28 4B 02 00 31", value)};
    });
}

TEST(Finishing, EveryLineSpacing)
{
    for_every_value(&dev_options::linespacing, printer_set_linespacing, [](int32_t value) {
        return Expectation{"printer_set_linespacing", class_line("printer_set_linespacing"), with_byte("1B 33", value)};
    });
}

std::string beep(int32_t times, int32_t duration, int32_t interval)
{
    if ((times & 0xFF) > 63) {
        return "";
    }
    return with_byte("1B 28 41 05 00 61 64", times) + with_byte("", duration) + with_byte("", interval);
}

TEST(Finishing, EveryNumberOfBeeps)
{
    for_every_value(&dev_options::beeptimes, print_beep, [](int32_t times) {
        return Expectation{"print_beep", "", beep(times, 0, 0)};
    });
}

TEST(Finishing, EveryBeepDuration)
{
    for_every_value(&dev_options::beepduration, print_beep, [](int32_t duration) {
        return Expectation{"print_beep", "", beep(1, duration, 0)};
    });
}

TEST(Finishing, EveryBeepInterval)
{
    for_every_value(&dev_options::beepinterval, print_beep, [](int32_t interval) {
        return Expectation{"print_beep", "", beep(1, 0, interval)};
    });
}

// On pin 0, in units of 50 that wrap at 256; the off time is never below the on time.
std::string pulse(int32_t duration, int32_t interval)
{
    const auto on = static_cast<uint8_t>(static_cast<uint32_t>(duration) * 50U);
    const auto off = static_cast<uint8_t>(static_cast<uint32_t>(interval) * 50U);
    return with_byte("1B 70 00", on) + with_byte("", off < on ? on : off);
}

Expectation external_beep(int32_t times, int32_t duration, int32_t interval)
{
    return {"print_external_beep", "-print_external_beep start(" + std::to_string(times) + ")\n",
            pulse(duration, interval), times > 0 ? static_cast<size_t>(times) : 0};
}

TEST(Finishing, ExternalBeepTimesAreUnitsOfFifty)
{
    struct {
        int32_t duration;
        int32_t interval;
        const char *command;
    } const table[] = {{2, 1, "1B 70 00 64 64"},
                       {1, 2, "1B 70 00 32 64"},
                       {0, 0, "1B 70 00 00 00"},
                       {5, 5, "1B 70 00 FA FA"},
                       {6, 0, "1B 70 00 2C 2C"}};
    for (const auto &row : table) {
        Device device;
        device.options.externalbeepduration = row.duration;
        device.options.externalbeepinterval = row.interval;
        EXPECT_EQ(hex(run(device, print_external_beep).seen.out), row.command);
    }
}

TEST(Finishing, EveryExternalBeepDuration)
{
    for_every_value(&dev_options::externalbeepduration, print_external_beep,
                    [](int32_t duration) { return external_beep(1, duration, 0); });
}

TEST(Finishing, EveryExternalBeepInterval)
{
    for_every_value(&dev_options::externalbeepinterval, print_external_beep,
                    [](int32_t interval) { return external_beep(1, 0, interval); });
}

TEST(Finishing, ExternalBeepsRepeatTheOnePulse)
{
    for (const int32_t times : {0, 1, 2, 3, 300}) {
        Device device;
        device.options.externalbeeptimes = times;
        device.options.externalbeepduration = 1;
        expect_done(run(device, print_external_beep), external_beep(times, 1, 0));
    }
}

// By the letter of an unsigned count these would be billions of pulses.
TEST(Finishing, ANegativeNumberOfExternalBeepsIsSilent)
{
    for (const int32_t times : {-1, -256, INT32_MIN}) {
        Device device;
        device.options.externalbeeptimes = times;
        expect_done(run(device, print_external_beep), external_beep(times, 0, 0));
    }
}

TEST(Finishing, DrawersAreTheConnectorsPins)
{
    for (int32_t drawer = -300; drawer <= 600; ++drawer) {
        Device device;
        const int32_t pin = drawer & 0xFF;
        const bool known = pin == 0 || pin == 1 || pin == 48 || pin == 49;
        SCOPED_TRACE(drawer);
        expect_done(run(device, [&](printer_dev *dev) { return print_open_drawer(dev, drawer); }),
                    {"print_open_drawer", "", known ? with_byte("1B 70", pin) + bytes("50 50") : ""});
    }
}

// Index 1 is the key "0"; the justification goes back to the left behind the logo, in the same write.
TEST(Finishing, EveryLogoIndex)
{
    for_every_value(&dev_options::logoindex, print_logo, [](int32_t index) {
        const int32_t key = static_cast<int32_t>((static_cast<uint32_t>(index) + 47U) & 0xFF);
        const bool known = key >= 32 && key <= 126;
        return Expectation{"print_logo", "",
                           known ? with_byte("1D 28 4C 06 00 30 45 30", key) + bytes("01 01 1B 61 00") : ""};
    });
}

TEST(Finishing, LogoIndexesOneAndTwo)
{
    Device device;
    device.options.logoindex = 1;
    EXPECT_EQ(hex(run(device, print_logo).seen.out), "1D 28 4C 06 00 30 45 30 30 01 01 1B 61 00");
    device.options.logoindex = 2;
    EXPECT_EQ(hex(run(device, print_logo).seen.out), "1D 28 4C 06 00 30 45 30 31 01 01 1B 61 00");
}

TEST(Finishing, EveryLogoAlignment)
{
    for_every_value(&dev_options::logoalign, printer_set_align, [](int32_t align) {
        const int32_t justification = static_cast<int32_t>((static_cast<uint32_t>(align) - 1U) & 0xFF);
        const bool known = justification <= 2 || (justification >= 48 && justification <= 50);
        return Expectation{"print_set_logo_align", "", known ? with_byte("1B 61", justification) : ""};
    });
}

TEST(Finishing, LogoAlignmentZeroIsRefused)
{
    Device device;
    device.options.logoalign = 0;
    const Done done = run(device, printer_set_align);
    EXPECT_EQ(done.status, KLOV_E_PARAMETER);
    EXPECT_EQ(done.seen.out, "");
    EXPECT_EQ(done.seen.trace, "-print_set_logo_align finished(-1) fail!\n");
}

struct Operation {
    const char *name;
    int32_t (*run)(printer_dev *);
    const char *start_line;  // %d: the class word
};

int32_t open_first_drawer(printer_dev *dev)
{
    return print_open_drawer(dev, 0);
}

// A class that does not know the commands: nothing is sent, nobody is told but the trace.
TEST(Finishing, AForeignClassIsRefusedByAllTen)
{
    const Operation operations[] = {
        {"print_cut_page", print_cut_page, "+print_cut_page(printer_class:%d) start.\n"},
        {"print_position_next_ticket", print_position_next_ticket,
         "+print_position_next_ticket(printer_class:%d) start.\n"},
        {"printer_set_speed", printer_set_speed, "+printer_set_speed(printer_class:%d) start.\n"},
        {"printer_set_density", printer_set_density, "+printer_set_density(printer_class:%d) start.\n"},
        {"printer_set_linespacing", printer_set_linespacing, "+printer_set_linespacing(printer_class:%d) start.\n"},
        {"print_beep", print_beep, ""},
        {"print_external_beep", print_external_beep, "-print_external_beep start(1)\n"},
        {"print_open_drawer", open_first_drawer, ""},
        {"print_logo", print_logo, ""},
        {"print_set_logo_align", printer_set_align, ""}};
    for (const Operation &operation : operations) {
        Device device;
        device.options.type = 0x90010002;
        int32_t status = 0;
        const Seen seen = observe([&] { status = operation.run(&device.dev); });
        std::string start = operation.start_line;
        if (const size_t at = start.find("%d"); at != std::string::npos) {
            start.replace(at, 2, "-1878982654");
        }
        EXPECT_EQ(status, KLOV_E_MODEL_TYPE) << operation.name;
        EXPECT_EQ(seen.out + seen.err, "") << operation.name;
        EXPECT_EQ(seen.trace, start + finished_line(operation.name, KLOV_E_MODEL_TYPE)) << operation.name;
    }
}

}  // namespace
