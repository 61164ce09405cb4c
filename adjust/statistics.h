// What an adjustment is worth: variance factor, residuals with their tests, standard deviations and ellipses.
//
// With Q the cofactors of the unknowns, S the covariance of the observations as weighted (sigma / factor), P = S^-1,
// v = observed - adjusted:
//   variance factor      v^T P v / redundancy,  redundancy = rows - unknowns + open motions
//   cofactors of v       Qvv = S - A Q A^T
//   redundancy numbers   r_i = (Qvv P)_ii, their sum is the redundancy
//   normalised residual  (P v)_i / sqrt((P Qvv P)_ii)       without correlation v_i / sqrt((Qvv)_ii)
// (Baarda, A testing procedure for use in geodetic networks, 1968.) All is read from the unweighted rows, in metres and
// radians (images in pixels).

#ifndef VORNADJUST_STATISTICS_H
#define VORNADJUST_STATISTICS_H

#include <array>
#include <utility>
#include <vector>

#include "adjust/cofactors.h"
#include "adjust/watch.h"

namespace vornadjust {

// Redundancy numbers below it are rounding: nothing controls such an observation.
constexpr double least_redundancy = 1e-8;

struct RowStatistics {
    double residual = 0.0;   // observed - adjusted
    double cofactor = 0.0;   // of the residual
    double redundancy = 0.0; // r_i
    double normalised = 0.0; // by cofactors alone (variance factor 1); 0 where the redundancy is below least_redundancy
};

// Rows of one kind together.
struct KindStatistics {
    int rows = 0;
    double squares = 0.0;    // their share of v^T P v
    double redundancy = 0.0; // sum of r_i
};

// Semi-axes (metres) and the bearing of the long one, from the first axis towards the second, 0 <= bearing < pi.
struct Ellipse {
    double a = 0.0, b = 0.0, bearing = 0.0;
};

Ellipse ellipse(double qxx, double qxy, double qyy);

// Covariances of three coordinates: xx, xy, xz, yy, yz, zz; 0 for a coordinate that is held.
using Covariance = std::array<double, 6>;

struct Statistics {
    double sigma = 1.0;              // root of the variance factor that the standard deviations below contain
    std::vector<double> deviation;   // [unknowns] standard deviations; 0 for what is held
    std::vector<Covariance> points;  // [points]
    std::vector<Covariance> pairs;   // [pairs] of the difference second - first
    std::vector<double> joint;       // [joint][joint] cofactors (variance factor 1); 0 for what is held
    std::vector<RowStatistics> rows; // [rows]; empty when not asked for
    std::array<KindStatistics, n_kinds> kinds = {}; // by Kind, of usable rows
};

struct StatisticsOptions {
    double sigma = 1.0;
    bool residuals = true;
    Watch watch;                            // rows without statistics are missing where it stops
    std::vector<std::pair<int, int>> pairs; // of points
    std::vector<int> joint;                 // unknowns whose cofactors are wanted, all with all
};

Statistics statistics(const Model &model, const System &system, const Cofactors &cofactors,
                      const StatisticsOptions &options);

} // namespace vornadjust

#endif
