#include "host/input/file_pieces.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>

#include <filesystem>
#include <memory>
#include <vector>

namespace vornhost {

namespace {

struct Close {
    void operator()(FILE *file) const { fclose(file); }
};
using File = std::unique_ptr<FILE, Close>;

bool is_folder(const std::string &path)
{
    std::error_code ignored;
    return std::filesystem::is_directory(path, ignored);
}

} // namespace

bool read_pieces(const std::string &path, Source asked, size_t largest, Faults &faults, const TakePiece &take)
{
    const std::string name = "file " + quote(path);
    if (is_folder(path)) {
        faults.add(asked, name + " is a folder", "name a file");
        return false;
    }
    File file(fopen(path.c_str(), "rb"));
    if (!file) {
        const bool missing = errno == ENOENT || errno == ENOTDIR;
        if (missing) faults.add(asked, name + " does not exist", "check its name and folder");
        if (!missing) faults.add(asked, name + " cannot be opened: " + strerror(errno), "check its permissions");
        return false;
    }
    std::vector<char> piece(1 << 16);
    size_t total = 0;
    while (const size_t size = fread(piece.data(), 1, piece.size(), file.get())) {
        total += size;
        if (total > largest) {
            faults.add(asked, name + " has more than " + std::to_string(largest) + " bytes", "split the network");
            return false;
        }
        if (!take(piece.data(), size)) return false;
    }
    if (!ferror(file.get())) return true;
    faults.add(asked, name + " cannot be read: " + strerror(errno), "check the disk");
    return false;
}

} // namespace vornhost
