// Files of connected nets: coordinates of the points that an adjustment exported, and their cofactors.
//
//   File: NAME.con for N connections in dimension D
//   name (8 bytes) x y z                               N lines, metres; a longer name stands in quotation marks
//   cofactor                                           n (n + 1) / 2 lines, n = D N: the lower triangle by rows
//
// Cofactors (metres squared) are those before the variance factor; a point has D rows, x, y, z or z alone.

#ifndef VORNHOST_CONNECTED_FILE_H
#define VORNHOST_CONNECTED_FILE_H

#include <array>
#include <string>
#include <vector>

namespace vornhost {

struct ConnectedFile {
    int dimension = 0;
    std::vector<std::string> names; // without blanks at the end
    std::vector<std::array<double, 3>> coordinates;
    std::vector<double> cofactors; // packed as in the file
};

// Reads a file. Returns what is wrong with it, empty when nothing is.
std::string read_connected_file(const std::string &path, ConnectedFile &content);

// The text of a file of that name.
std::string connected_text(const std::string &name, const ConnectedFile &content);

} // namespace vornhost

#endif
