// Covariances that several observations share: the numbers of a section [covariances.NAME], and which rows they belong
// to.
//
// The components of a covariance are those of the rows that name it: tables in the order distances,
// horizontal_distances, height_differences, directions, vertical_angles, azimuths, bearings, angles, baselines,
// coordinates, coordinate_differences, scale_bars; rows as they stand; x, y, z as far as given.

#ifndef VORNHOST_COVARIANCES_H
#define VORNHOST_COVARIANCES_H

#include <optional>
#include <vector>

#include "host/input/network_tables.h"

namespace vornhost {

enum class MatrixForm { full, lower, upper, band };

// A section as it was read: which numbers it holds, before it is known how many there should be.
struct MatrixText {
    MatrixForm form = MatrixForm::full;
    int width = 0;           // of a band
    double sigma_factor = 1; // of all standard deviations
    std::optional<Passage> numbers;
    Source at;
};

// Numbers each covariance through its rows and fills Model::covariances (metres and radians); rows that give no
// standard deviation take that of their covariance. texts belong to Model::covariances one by one. To be called after
// all tables were read.
void complete_covariances(Network &net, const std::vector<MatrixText> &texts);

} // namespace vornhost

#endif
