// Text files of image coordinates: a line a point, then u, v and, if known, their standard deviations, all in the unit
// of the file. They have one of two forms:
//
//   fixed   the name stands in the first 8 places of the line. A line has at most 89 bytes; of a longer one the rest
//           counts as the next.
//   wide    the first line is the heading "name u v", with "su sv" behind it where they are known, and rows follow as
//   in
//           the tables of the network file: names of any length, in quotation marks where they hold blanks.

#ifndef VORNHOST_IMAGE_FILE_H
#define VORNHOST_IMAGE_FILE_H

#include <optional>
#include <string>
#include <vector>

namespace vornhost {

struct ImageLine {
    int line = 0;     // in the file, from 1
    std::string name; // without the blanks that fill its 8 places
    double u = 0, v = 0;
    std::optional<double> su, sv;
    bool numbers = false; // u and v could be read
    bool rest = false;    // what was behind the 89th byte of a line
};

// Whether the file has the wide form, which the engine does not read.
bool is_wide_image_file(const std::string &path);

// The lines that are not blank, a heading apart; nothing when the file cannot be read.
std::optional<std::vector<ImageLine>> read_image_file(const std::string &path);

} // namespace vornhost

#endif
