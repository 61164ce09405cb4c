// Text files of image coordinates: a line a point, its name in 8 places, then u, v and, if known, their standard
// deviations, all in the unit of the file. A line has at most 89 bytes; of a longer one the rest counts as the next.

#ifndef VORNHOST_IMAGE_FILE_H
#define VORNHOST_IMAGE_FILE_H

#include <optional>
#include <string>
#include <vector>

namespace vornhost {

struct ImageLine {
    int line = 0;     // in the file, from 1
    std::string name; // 8 bytes, as records hold it
    double u = 0, v = 0;
    std::optional<double> su, sv;
    bool numbers = false; // u and v could be read
    bool rest = false;    // what was behind the 89th byte of a line
};

// The lines that are not blank; nothing when the file cannot be read.
std::optional<std::vector<ImageLine>> read_image_file(const std::string &path);

} // namespace vornhost

#endif
