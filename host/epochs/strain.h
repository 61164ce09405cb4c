// Strain of a group of points between two epochs: how it was stretched, sheared and turned as a whole.
//
// The shifts of the points are taken for a linear function of their places, d = t + (E + R)(x - x_0) with x_0 the mean
// of the places, E symmetric (strain) and R skew (turn); small ones, so that products of them do not count (W. Welsch,
// Some techniques of monitoring and analysing deformations and control nets, 1983; Y. Q. Chen, Analysis of deformation
// surveys, 1983). By least squares with the cofactors of the shifts; what the networks leave open (shifts, turns,
// the scale) is taken out beside it, and the parameters that go with it are not determined: an open scale leaves the
// mean extension open, and E is then that without it.
//
// Strains and turns have no unit (metres a metre, radians).

#ifndef VORNHOST_STRAIN_H
#define VORNHOST_STRAIN_H

#include <optional>
#include <string>
#include <vector>

#include "adjust/congruence.h"
#include "host/epochs/fisher.h"

namespace vornhost {

struct StrainValue {
    double value = 0, deviation = 0;
};

struct Strain {
    std::vector<std::string> words;     // why there is none
    int dimension = 0;                  // 2 or 3
    std::optional<StrainValue> mean;    // extension, mean of all directions; absent where the scale is open
    std::vector<StrainValue> elements;  // exx, eyy, exy; in space exx, eyy, ezz, exy, exz, eyz. Without the mean
                                        // extension where that is absent
    std::vector<StrainValue> principal; // extensions, the largest first
    double bearing = 0;                 // of the largest extension in the plane, from x towards y, 0 to pi
    StrainValue shear;                  // the largest: between the first and the last principal direction
    std::vector<std::optional<StrainValue>>
        turns;              // from x to y; in space from y to z, z to x, x to y. Absent where open
    FisherTest strained;    // that E is zero
    FisherTest homogeneous; // that the shifts are linear; not made where nothing is left

    bool made() const { return words.empty(); }
};

// Of points with the same number of coordinates, 2 or 3.
//   places, shifts  [points][dimension] metres
//   q               [n][n] cofactors of the shifts, variance factor 1, n = points times dimension
//   motions         n by d: what is open
Strain find_strain(int dimension, const std::vector<double> &places, const std::vector<double> &shifts,
                   std::vector<double> q, const vornadjust::Dense &motions, const VarianceFactor &factor, double level);

} // namespace vornhost

#endif
