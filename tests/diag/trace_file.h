// A private folder for trace targets, and what a test wants to know about the files in it and about this process.
#pragma once

#include <gtest/gtest.h>
#include <stdio.h>

#include <functional>
#include <string>

class TraceTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // The path of a name in the folder.
    std::string path(const std::string &name) const;

private:
    std::string folder_;
};

std::string file_contents(const std::string &path);

// How many descriptors this process has open on the file.
int open_descriptors_on(const std::string &path);

// One of them, -1 when there is none.
int descriptor_on(const std::string &path);

int open_descriptors();

// Whether the write system calls of this process can be counted: some systems do not, and under an emulator that writes
// on its own account the figures mean nothing.
bool counts_write_calls();

// The write system calls of a step.
long writes_of(const std::function<void()> &step);
