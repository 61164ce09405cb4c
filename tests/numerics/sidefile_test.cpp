#include "numerics/sidefile.h"

#include <gtest/gtest.h>

#include <errno.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "support/workfolder.h"

using namespace vornengine;

namespace {

class SideFile : public testing::Test {
protected:
    std::string path(const std::string &name) const { return folder.file(name); }

    // Writes n characters into the file; returns the errno that is left.
    static int write(const std::string &name, int n)
    {
        int error = 0;
        FILE *f = open_side(name.c_str(), &error);
        if (!f) return error;
        for (int i = 0; i < n; i++) fputc('x', f);
        close_side(f, &error);
        return error;
    }

    TemporaryFolder folder;
};

TEST_F(SideFile, IsMadeAnewAndLeavesNoErrorWhenItIsWhole)
{
    for (const int n : {100000, 0, 7}) {
        EXPECT_EQ(write(path("new"), n), 0);
        std::ostringstream text;
        text << std::ifstream(path("new")).rdbuf();
        EXPECT_EQ(text.str(), std::string((size_t)n, 'x'));
    }
}

TEST_F(SideFile, LeavesTheReasonWhyItCannotBeOpened)
{
    EXPECT_EQ(write(folder.path, 1), EISDIR);
    EXPECT_EQ(write(path("nowhere/file"), 1), ENOENT);
}

// A short text fails when it is closed, a long one while it is written.
TEST_F(SideFile, LeavesTheReasonWhyItIsNotWhole)
{
    for (const int n : {1, 100, 5000, 100000}) EXPECT_EQ(write("/dev/full", n), ENOSPC) << n;
}

TEST_F(SideFile, KeepsTheFirstReason)
{
    int error = 0;
    EXPECT_EQ(open_side(folder.path.c_str(), &error), nullptr);
    EXPECT_EQ(open_side(path("nowhere/file").c_str(), &error), nullptr);
    EXPECT_EQ(error, EISDIR);
    keep_error(&error, ENOMEM);
    keep_error(&error, 0);
    EXPECT_EQ(error, EISDIR);
    FILE *f = open_side(path("good").c_str(), &error);
    ASSERT_TRUE(f);
    close_side(f, &error);
    EXPECT_EQ(error, EISDIR);
}

TEST_F(SideFile, NeedsNoPlaceForTheReason)
{
    EXPECT_EQ(open_side(folder.path.c_str(), nullptr), nullptr);
    FILE *f = open_side("/dev/full", nullptr);
    ASSERT_TRUE(f);
    fputc('x', f);
    close_side(f, nullptr);
}

} // namespace
