// What a run leaves in the working folder beside its outputs: the files that docs/program.md lists.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "host/folder.h"

namespace {

std::string text_of(const std::filesystem::path &path)
{
    std::ostringstream all;
    all << std::ifstream(path).rdbuf();
    return all.str();
}

bool contains(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

// Whether a network has what the engine does not take.
bool own_alone(const std::string &network)
{
    return contains(network, "\nsetups = ") || contains(network, "\nangles = ") || contains(network, "[covariances.");
}

std::set<std::string> side_files(const std::string &network, const std::string &mode)
{
    std::set<std::string> names;
    if (own_alone(network)) return names;
    if (mode == "solution" && contains(network, "images = ")) names.insert("rejects");
    if (contains(network, "method = 9")) names.insert("simili.out");
    return names;
}

TEST(SideFiles, OfAnExampleAreTheListedOnes)
{
    if (std::string(VORN_PROGRAM).empty()) GTEST_SKIP() << "the program is not built";
    for (const auto &entry : std::filesystem::directory_iterator(SOURCE_DIR "/examples"))
        for (const char *mode : {"statistics", "solution", "propagation"})
            for (const std::string solver : {"compact", "sparse"}) {
                if (entry.path().extension() != ".inp") continue;
                const Folder folder;
                const std::string command = VORN_PROGRAM " adjust " + entry.path().string() + " --quiet --mode " +
                                            mode + " --solver " + solver + " -C " + folder.path +
                                            " >/dev/null 2>&1 </dev/null";
                ASSERT_NE(system(command.c_str()), -1);
                std::set<std::string> names;
                for (const auto &left : std::filesystem::directory_iterator(folder.path))
                    names.insert(left.path().filename().string());
                const std::set<std::string> listed = side_files(text_of(entry.path()), mode);
                EXPECT_EQ(names, solver == "sparse" ? std::set<std::string>() : listed) << entry.path() << " " << mode;
            }
}

} // namespace
