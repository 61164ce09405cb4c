#include "host/results/output_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <sstream>

#include "host/folder.h"

using namespace vornhost;

namespace {

std::string text_of(const std::string &path)
{
    std::ostringstream all;
    all << std::ifstream(path, std::ios::binary).rdbuf();
    return all.str();
}

size_t entries(const Folder &folder)
{
    size_t n = 0;
    for (const auto &entry : std::filesystem::directory_iterator(folder.path)) n += !entry.path().empty();
    return n;
}

std::string error_of(const std::string &path, const std::string &text)
{
    try {
        write_file(path, text);
    } catch (const OutputError &error) {
        return error.what();
    }
    return "";
}

} // namespace

TEST(OutputFile, HasItsNameOnlyWhenItIsWhole)
{
    Folder folder;
    OutputFile file(folder.file("a.txt"));
    file.write("whole\n");
    EXPECT_FALSE(std::filesystem::exists(folder.file("a.txt")));
    file.finish();
    EXPECT_EQ(text_of(folder.file("a.txt")), "whole\n");
    EXPECT_EQ(entries(folder), 1u);
}

TEST(OutputFile, LeavesNothingWhenItIsNotFinished)
{
    Folder folder;
    {
        OutputFile file(folder.file("a.txt"));
        file.write("half");
    }
    EXPECT_EQ(entries(folder), 0u);
}

TEST(OutputFile, LeavesTheOldFileUntilTheNewOneIsWhole)
{
    Folder folder;
    folder.write("a.txt", "old");
    {
        OutputFile file(folder.file("a.txt"));
        file.write("half");
    }
    EXPECT_EQ(text_of(folder.file("a.txt")), "old");
    write_file(folder.file("a.txt"), "new");
    EXPECT_EQ(text_of(folder.file("a.txt")), "new");
}

TEST(OutputFile, KeepsThePermissionsOfTheFileItReplaces)
{
    Folder folder;
    folder.write("a.txt", "old");
    chmod(folder.file("a.txt").c_str(), 0640);
    write_file(folder.file("a.txt"), "new");
    struct stat info;
    ASSERT_EQ(stat(folder.file("a.txt").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
}

TEST(OutputFile, GivesANewFileTheUsualPermissions)
{
    Folder folder;
    const mode_t mask = umask(022);
    write_file(folder.file("a.txt"), "new");
    umask(mask);
    struct stat info;
    ASSERT_EQ(stat(folder.file("a.txt").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0644u);
}

TEST(OutputFile, WritesBehindALink)
{
    Folder folder;
    folder.write("a.txt", "old");
    std::filesystem::create_symlink(folder.file("a.txt"), folder.file("link"));
    write_file(folder.file("link"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link")));
    EXPECT_EQ(text_of(folder.file("a.txt")), "new");
}

TEST(OutputFile, WritesToADeviceDirectly) { EXPECT_EQ(error_of("/dev/null", "text"), ""); }

TEST(OutputFile, TellsThatTheDiskIsFull)
{
    EXPECT_EQ(error_of("/dev/full", "text"), "cannot write /dev/full: No space left on device");
}

TEST(OutputFile, TellsThatTheDiskIsFullOfALongText)
{
    EXPECT_EQ(error_of("/dev/full", std::string(1000000, 'x')), "cannot write /dev/full: No space left on device");
}

TEST(OutputFile, TellsThatTheFolderIsMissing)
{
    EXPECT_EQ(error_of("/nowhere/a.txt", "text"), "cannot write /nowhere/a.txt: No such file or directory");
}

TEST(OutputFile, RefusesAFolder)
{
    Folder folder;
    EXPECT_EQ(error_of(folder.path, "text"), "cannot write " + folder.path + ": Is a directory");
    EXPECT_EQ(entries(folder), 0u);
}

TEST(OutputFile, KeepsTheSystemsNumber)
{
    try {
        write_file("/nowhere/a.txt", "");
        FAIL();
    } catch (const std::system_error &error) {
        EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
    }
}
