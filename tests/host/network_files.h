// The network files that tests go through one by one.

#ifndef TESTS_HOST_NETWORK_FILES_H
#define TESTS_HOST_NETWORK_FILES_H

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "host/earth/reference.h"

// Those of examples/ and tests/runs/ by their names. Networks in a national grid (utm_...) need PROJ, which not every
// build has.
inline std::vector<std::string> network_files()
{
    std::vector<std::string> paths;
    for (const char *folder : {SOURCE_DIR "/examples", SOURCE_DIR "/tests/runs"})
        for (const auto &entry : std::filesystem::directory_iterator(folder)) {
            const bool grid = entry.path().stem().string().rfind("utm_", 0) == 0;
            if (entry.path().extension() == ".inp" && (!grid || vornhost::has_proj()))
                paths.push_back(entry.path().string());
        }
    std::sort(paths.begin(), paths.end());
    return paths;
}

#endif
