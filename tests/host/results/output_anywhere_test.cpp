// Outputs on any operating system; what is particular to one has tests of its own.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/results/output_file.h"

using namespace vornhost;

namespace {

// A folder that is gone afterwards.
struct Place {
    std::filesystem::path folder;
    explicit Place(const char *name) : folder(std::filesystem::temp_directory_path() / name)
    {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directory(folder);
    }
    ~Place() { std::filesystem::remove_all(folder); }
    std::string file(const char *name) const { return (folder / name).string(); }
    long files() const { return (long)std::distance(std::filesystem::directory_iterator(folder), {}); }
};

std::string bytes_of(const std::string &path)
{
    std::ostringstream all;
    all << std::ifstream(path, std::ios::binary).rdbuf();
    return all.str();
}

} // namespace

TEST(OutputAnywhere, TakesThePlaceOfAFileWithTheSameBytesAsWritten)
{
    const Place place("vorn-output-replaced");
    write_file(place.file("out.csv"), "old\n");
    write_file(place.file("out.csv"), "a,b\r\n1,2\r\n\n");
    EXPECT_EQ(bytes_of(place.file("out.csv")), "a,b\r\n1,2\r\n\n");
    EXPECT_EQ(place.files(), 1);
}

TEST(OutputAnywhere, LeavesNothingOfAnOutputThatWasNotFinished)
{
    const Place place("vorn-output-unfinished");
    write_file(place.file("out.txt"), "old");
    {
        OutputFile file(place.file("out.txt"));
        file.write("half of the new");
    }
    EXPECT_EQ(bytes_of(place.file("out.txt")), "old");
    EXPECT_EQ(place.files(), 1);
}

TEST(OutputAnywhere, RefusesAFolderAndAPathWithoutOne)
{
    const Place place("vorn-output-refused");
    EXPECT_THROW(OutputFile{place.folder.string()}, OutputError);
    EXPECT_THROW(OutputFile{place.file("none") + "/out.txt"}, OutputError);
    EXPECT_EQ(place.files(), 0);
}
