// The file that outlives a job.
#include "talk/mark.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace {

class Mark : public testing::Test {
protected:
    std::string folder;

    void SetUp() override
    {
        char name[] = "/tmp/klov-mark-XXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        folder = name;
    }

    void TearDown() override
    {
        std::filesystem::remove_all(folder);
    }

    talk::mark open(const char *uri)
    {
        return talk::open_mark(folder.c_str(), uri);
    }
};

TEST_F(Mark, OutlivesTheJobThatSetIt)
{
    const talk::mark first = open("socket://192.0.2.7:9100");
    EXPECT_FALSE(talk::is_marked(first));
    talk::set_mark(first);
    talk::set_mark(first);
    close(first.descriptor);
    const talk::mark second = open("socket://192.0.2.7:9100");
    EXPECT_TRUE(talk::is_marked(second));
    talk::remove_mark(second);
    EXPECT_FALSE(talk::is_marked(second));
    close(second.descriptor);
}

TEST_F(Mark, QueuesOfOnePrinterTakeTurns)
{
    const talk::mark first = open("socket://192.0.2.7:9100");
    const talk::mark second = open("socket://192.0.2.7:9100/?waiteof=false");
    const talk::mark third = open("socket://192.0.2.7:9100/");
    EXPECT_TRUE(talk::lock_mark(first));
    EXPECT_FALSE(talk::lock_mark(second)) << "options do not make another printer";
    EXPECT_FALSE(talk::lock_mark(third));
    close(first.descriptor);
    EXPECT_TRUE(talk::lock_mark(second));
    close(second.descriptor);
    close(third.descriptor);
}

TEST_F(Mark, TwoPrintersHaveTwo)
{
    const talk::mark first = open("socket://192.0.2.7:9100");
    const talk::mark second = open("socket://192.0.2.8:9100");
    EXPECT_TRUE(talk::lock_mark(first));
    EXPECT_TRUE(talk::lock_mark(second));
    close(first.descriptor);
    close(second.descriptor);
}

TEST_F(Mark, NobodyElseMayReadIt)
{
    close(open("usb://Acme/QX-100?serial=1").descriptor);
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        struct stat file = {};
        ASSERT_EQ(stat(entry.path().c_str(), &file), 0);
        EXPECT_EQ(file.st_mode & 0777U, 0600U);
        EXPECT_EQ(entry.path().filename().string().find("Acme"), std::string::npos);
    }
}

TEST_F(Mark, AJobDoesWithoutWhereThereIsNoPlace)
{
    for (const talk::mark none :
         {talk::open_mark(nullptr, "socket://x"), talk::open_mark(folder.c_str(), nullptr),
          talk::open_mark("/nowhere", "socket://x"), talk::open_mark(std::string(2000, 'x').c_str(), "socket://x")}) {
        EXPECT_EQ(none.descriptor, -1);
        EXPECT_TRUE(talk::lock_mark(none));
        EXPECT_FALSE(talk::is_marked(none));
        talk::set_mark(none);
        talk::remove_mark(none);
    }
}

TEST_F(Mark, APlantedLinkIsNotFollowed)
{
    close(open("socket://x").descriptor);
    const auto file = std::filesystem::directory_iterator(folder)->path();
    std::filesystem::remove(file);
    std::filesystem::create_symlink(folder + "/elsewhere", file);
    EXPECT_EQ(open("socket://x").descriptor, -1);
    EXPECT_FALSE(std::filesystem::exists(folder + "/elsewhere"));
}

}  // namespace
