// Runs files, or all files of folders, through a fuzz target: the regression program of
// compilers without libFuzzer. A crash or a report of a sanitizer ends it with a failure.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "scratch.h"

namespace fs = std::filesystem;

static std::vector<fs::path> files_of(const fs::path &path)
{
    if (!fs::is_directory(path)) return {fs::absolute(path)};
    std::vector<fs::path> files;
    for (const auto &entry : fs::directory_iterator(path)) files.push_back(fs::absolute(entry.path()));
    std::sort(files.begin(), files.end());
    return files;
}

static void run_file(const fs::path &path)
{
    std::ifstream in(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    fprintf(stderr, "%s\n", path.filename().c_str());
    LLVMFuzzerTestOneInput((const uint8_t *)bytes.data(), bytes.size());
}

int main(int argc, char **argv)
{
    size_t count = 0;
    std::vector<fs::path> files;
    for (int i = 1; i < argc; i++)
        for (const fs::path &path : files_of(argv[i])) files.push_back(path);
    for (const fs::path &path : files) {
        run_file(path); // the target may change the working folder
        count++;
    }
    printf("%zu files\n", count);
    return count > 0 ? 0 : 1;
}
