// Temporary folders of tests, and the working directory of a test.

#ifndef TESTS_WORKFOLDER_H
#define TESTS_WORKFOLDER_H

#include <stdlib.h>

#include <filesystem>
#include <string>

class TemporaryFolder {
public:
    TemporaryFolder()
    {
        char pattern[] = "/tmp/vornXXXXXX";
        path = mkdtemp(pattern) ? pattern : "/nowhere";
    }
    ~TemporaryFolder() { std::filesystem::remove_all(path); }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    std::string file(const std::string &name) const { return path + "/" + name; }

    std::string path;
};

// Makes a folder the working directory as long as it lives.
class InFolder {
public:
    explicit InFolder(const std::string &path) { std::filesystem::current_path(path); }
    ~InFolder() { std::filesystem::current_path(before); }
    InFolder(const InFolder &) = delete;
    InFolder &operator=(const InFolder &) = delete;

private:
    std::filesystem::path before = std::filesystem::current_path();
};

// A working directory of its own, for what is written there.
class WorkFolder : public TemporaryFolder {
    InFolder in{path};
};

#endif
