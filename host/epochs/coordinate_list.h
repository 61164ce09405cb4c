// Lists of coordinates: a table "name x y [z] [sx sy sz]" of a file, or the adjusted points of a network file.
//
// Cells of a table stand between blanks, commas, semicolons or tabs, whichever its heading has; other columns are
// passed over. Its numbers may be of any unit; those of a network are metres.

#ifndef VORNHOST_COORDINATE_LIST_H
#define VORNHOST_COORDINATE_LIST_H

#include <array>
#include <string>
#include <vector>

#include "host/input/faults.h"
#include "host/run/run_watch.h"

namespace vornhost {

struct ListedPoint {
    std::string name;
    double x[3] = {0, 0, 0};
    std::array<double, 9> q{}; // covariance, by rows; 0 where the list has no standard deviations
};

struct CoordinateList {
    std::string file;
    bool has_z = false;
    bool has_sigma = false; // all points have standard deviations
    std::vector<ListedPoint> points;
    std::vector<std::string> words; // why a network has no coordinates
    bool stopped = false;           // by the watch
};

// False with faults of the input, or with words where a network cannot be adjusted. Files named *.inp are networks.
bool read_coordinates(const std::string &path, CoordinateList &list, Faults &faults, const RunWatch &watch = {});

} // namespace vornhost

#endif
