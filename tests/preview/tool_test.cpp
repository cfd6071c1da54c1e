// klov-preview as a process: exit statuses, outputs, the listening printer.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <thread>

#include "png_file.h"

namespace {

struct Result {
    int status = -1;
    std::string output;  // standard output and standard error
};

Result run(const std::string &arguments)
{
    Result result;
    const std::string command = std::string("timeout 60 ") + KLOV_PREVIEW_TOOL + ' ' + arguments + " 2>&1";
    std::FILE *pipe = popen(command.c_str(), "r");
    char piece[4096];
    size_t got = 0;
    while (pipe != nullptr && (got = std::fread(piece, 1, sizeof piece, pipe)) > 0) {
        result.output.append(piece, got);
    }
    const int status = pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

std::string write_file(const std::string &folder, const std::string &bytes)
{
    const std::string path = folder + "job.bin";
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

bool contains(const std::string &text, const char *part)
{
    return text.find(part) != std::string::npos;
}

const std::string feed_and_cut("\x1B\x4A\x20\x1D\x56\x42\x00", 7);

}  // namespace

TEST(Tool, ListsByDefault)
{
    const Result result = run(write_file(test::temporary_folder(), feed_and_cut));
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(contains(result.output, "print_and_feed_paper n=32"));
    EXPECT_TRUE(contains(result.output, "select_cut_mode_and_feed_paper m=66 n=0"));
}

TEST(Tool, ReadsStandardInput)
{
    const Result result = run("--json < " + write_file(test::temporary_folder(), feed_and_cut));
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(contains(result.output, R"("rows":32)"));
    EXPECT_TRUE(contains(result.output, R"("cuts":[{"offset":3,"row":32,"partial":true}])"));
    EXPECT_TRUE(contains(result.output, R"("problem":null})"));
}

TEST(Tool, WritesABarePicture)
{
    const std::string folder = test::temporary_folder();
    const Result result = run(write_file(folder, feed_and_cut) + " --bare --width 384 -o " + folder + "out.png");
    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(test::read_png(folder + "out.png").width, 384U);
    EXPECT_EQ(test::read_png(folder + "out.png").height, 32U);
}

TEST(Tool, BrokenInputGivesAMessageAPictureAndStatusOne)
{
    const std::string folder = test::temporary_folder();
    const std::string broken = feed_and_cut + std::string("\x1D\x76\x30\x00\x02\x00\x02\x00\xFF", 9);
    const Result result = run(write_file(folder, broken) + " --bare --width 384 -o " + folder + "out.png");
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(contains(result.output, "offset 7: the input ends inside print_raster_bit_image after 9 bytes"));
    EXPECT_EQ(test::read_png(folder + "out.png").height, 33U);
}

TEST(Tool, TheRowLimitGivesStatusOne)
{
    const std::string folder = test::temporary_folder();
    const Result result = run(write_file(folder, feed_and_cut) + " --max-rows 10 --bare -o " + folder + "out.png");
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(contains(result.output, "limit of 10 rows"));
    EXPECT_EQ(test::read_png(folder + "out.png").height, 10U);
}

TEST(Tool, WrongUseGivesStatusTwo)
{
    EXPECT_EQ(run("--no-such-option").status, 2);
    EXPECT_EQ(run("--list --json < /dev/null").status, 2);
    EXPECT_EQ(run("--width 0 < /dev/null").status, 2);
    EXPECT_EQ(run("--split -o - < /dev/null").status, 2);
    EXPECT_EQ(run("--paper 20 --width 576 < /dev/null").status, 2);
}

TEST(Tool, OptionsThatDoNothingAreRefused)
{
    const char *alone[] = {"--jobs 1",      "--idle 3",       "--health /dev/null", "--state mute",  "--speed 100",
                           "--buffer 4096", "--drop-after 9", "--log /dev/null",    "--store /none", "--bare",
                           "--split"};
    for (const char *option : alone) {
        const Result result = run(std::string(option) + " < /dev/null");
        EXPECT_EQ(result.status, 2) << option;
        EXPECT_TRUE(contains(result.output, "requires")) << result.output;
    }
}

TEST(Tool, NumbersThatAreNoneAreRefused)
{
    for (const char *option : {"--paper nan", "--paper-margin nan", "--paper inf", "--listen :1 --speed nan",
                               "--listen :1 --idle nan", "--listen :1 --drop-after 0", "--listen :1 --state x"}) {
        EXPECT_EQ(run(std::string(option) + " < /dev/null").status, 2) << option;
    }
}

TEST(Tool, TellsItsVersion)
{
    const Result result = run("--version");
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.output.starts_with("klov-preview ")) << result.output;
}

TEST(Tool, KeepsTheBytes)
{
    const std::string folder = test::temporary_folder();
    EXPECT_EQ(run(write_file(folder, feed_and_cut) + " --save " + folder + "copy").status, 0);
    std::ifstream copy(folder + "copy", std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(copy), {}), feed_and_cut);
    EXPECT_EQ(run(write_file(folder, feed_and_cut) + " --save /nonexistent/copy").status, 1);
}

TEST(Tool, NamesADocument)
{
    const Result result = run(write_file(test::temporary_folder(), "%PDF-1.7\n"));
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(contains(result.output, "this is a PDF document"));
}

TEST(Tool, AMissingFileGivesStatusOne)
{
    EXPECT_EQ(run("/nonexistent/job.bin").status, 1);
}

TEST(Tool, ThePaperWidthGivesThePrintableWidth)
{
    const std::string folder = test::temporary_folder();
    const std::string job = write_file(folder, feed_and_cut);
    // 80 mm less two margins of 4 mm at 203 dpi, in whole bytes: 72 mm.
    EXPECT_EQ(run(job + " --bare --paper 80 -o " + folder + "out.png").status, 0);
    EXPECT_EQ(test::read_png(folder + "out.png").width, 568U);
}

TEST(Tool, ListensAndStopsAfterItsJobs)
{
    const std::string folder = test::temporary_folder();
    const std::string command = std::string("timeout 60 ") + KLOV_PREVIEW_TOOL +
                                " --listen 127.0.0.1:0 --jobs 2 --idle 20 --bare --width 64 -o " + folder +
                                "job.png 2>&1";
    std::FILE *tool = popen(command.c_str(), "r");
    ASSERT_NE(tool, nullptr);
    char line[200] = {};
    ASSERT_NE(std::fgets(line, sizeof line, tool), nullptr);
    unsigned port = 0;
    ASSERT_EQ(std::sscanf(line, "listening on 127.0.0.1:%u", &port), 1) << line;
    for (const uint8_t rows : {uint8_t{11}, uint8_t{22}}) {
        const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ASSERT_EQ(connect(fd, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
        const uint8_t job[] = {0x1B, 0x4A, rows};
        EXPECT_EQ(send(fd, job, sizeof job, MSG_NOSIGNAL), 3);
        close(fd);
    }
    std::string rest;
    while (std::fgets(line, sizeof line, tool) != nullptr) {
        rest += line;
    }
    EXPECT_EQ(pclose(tool), 0);
    EXPECT_EQ(rest, "job 1: 3 bytes, 11 rows, 0 cuts\njob 2: 3 bytes, 22 rows, 0 cuts\n");
    EXPECT_EQ(test::read_png(folder + "job-1.png").height, 11U);
    EXPECT_EQ(test::read_png(folder + "job-2.png").height, 22U);
}
