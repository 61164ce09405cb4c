// What an adjustment is worth: variance factor, residuals with their tests, standard deviations and ellipses.
//
// With Q the cofactors of the unknowns, S the covariance of the observations as weighted (sigma / factor), P = S^-1,
// v = observed - adjusted:
//   variance factor      v^T P v / redundancy,  redundancy = rows - unknowns + open motions
//   cofactors of v       Qvv = S - A Q A^T
//   redundancy numbers   r_i = (Qvv P)_ii, their sum is the redundancy
// and with e the unit vector of an observation
//   normalised residual  e^T P v / sqrt(e^T P Qvv P e)       without correlation v_i / sqrt((Qvv)_ii)
//   estimated error      e^T P v / e^T P Qvv P e             of an observation that alone is wrong
//   share of control     e^T P Qvv P e / e^T P e             without correlation r_i
//   effect of an error   Q A^T P e                           on the unknowns, for an error of one unit
//   test of components   (E^T P v)^T (E^T P Qvv P E)^+ E^T P v, chi-square of the rank of the matrix; E has the columns
//                        e of observations that are tested together
// (Baarda, A testing procedure for use in geodetic networks, 1968; Teunissen, Testing theory, 2000.) All is read from
// the unweighted rows, in metres and radians (images in pixels).

#ifndef VORNADJUST_STATISTICS_H
#define VORNADJUST_STATISTICS_H

#include <array>
#include <cmath>
#include <utility>
#include <vector>

#include "adjust/cofactors.h"
#include "adjust/watch.h"

namespace vornadjust {

// Shares of control below it are rounding: nothing controls such an observation.
constexpr double least_redundancy = 1e-8;

struct RowStatistics {
    double residual = 0.0;   // observed - adjusted
    double cofactor = 0.0;   // of the residual
    double redundancy = 0.0; // r_i
    double normalised = 0.0; // by cofactors alone (variance factor 1); 0 where nothing controls the row
    double weight = 0.0;     // e^T P e
    double control = 0.0;    // e^T P Qvv P e
    double effect = 0.0;     // metres by unit of the row: largest shift of one of its own points by an error of the row
                             // (in the coordinates that it sees; of observed coordinates, in all)

    double share() const { return weight > 0.0 ? control / weight : 0.0; }
    bool controlled() const { return share() >= least_redundancy; }
    // Of a row that alone is wrong.
    double error() const { return controlled() ? normalised / std::sqrt(control) : 0.0; }
};

// A linear function of unknowns: which, and their coefficients.
using Form = std::vector<std::pair<int, double>>;

// Test of observations together.
struct JointStatistics {
    int rank = 0;         // of the cofactors of their residuals; 0: nothing controls them
    double squares = 0.0; // chi-square of the rank where no observation is wrong, for a variance factor of 1
    int rows = 0;         // usable
    int first = -1;       // place of the first of them among the usable rows
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

// Semi-axes in space, the longest first, and their directions as unit vectors.
struct ErrorEllipsoid {
    double axis[3] = {0.0, 0.0, 0.0};
    double direction[3][3] = {};
};

ErrorEllipsoid error_ellipsoid(const Covariance &c);

// Two points that a row sees, by the semi-axes of their relative ellipse, or by the standard deviation of their height
// difference (b is 0).
struct WeakPair {
    int from, to;
    double a, b;
};

struct Statistics {
    double sigma = 1.0;                    // root of the variance factor that the standard deviations below contain
    std::vector<double> deviation;         // [unknowns] standard deviations; 0 for what is held
    std::vector<Covariance> points;        // [points]
    std::vector<Covariance> pairs;         // [pairs] of the difference second - first
    std::vector<WeakPair> weak_pairs;      // those with the largest a, the worst first
    std::vector<double> forms;             // standard deviations of linear functions of the unknowns, as asked for
    std::vector<double> joint;             // [joint][joint] cofactors (variance factor 1); 0 for what is held
    std::vector<RowStatistics> rows;       // [rows] of this rank; empty when not asked for
    std::vector<JointStatistics> together; // as asked for; empty without rows
    std::array<KindStatistics, n_kinds> kinds = {}; // by Kind, of usable rows
};

struct StatisticsOptions {
    double sigma = 1.0;
    bool residuals = true;
    int threads = 1;
    std::vector<int> place;                 // [rows] among the usable rows of all ranks, or -1
    Watch watch;                            // rows without statistics are missing where it stops
    std::vector<std::pair<int, int>> pairs; // of points
    int weak_pairs = 0;                     // how many are wanted
    std::vector<int> joint;                 // unknowns whose cofactors are wanted, all with all
    std::vector<Form> forms;                // whose standard deviations are wanted; a solve each
    // Observations that are tested together: of one correlated group, or without any; each once, their unknowns with
    // one another in the pattern of the normal matrix (those of one group, those of one point). Where ranks have their
    // own observations alone, so are these, and so are the tests.
    std::vector<std::vector<int>> together;
};

// Where ranks share the system, each gets the statistics of all unknowns, and those of its own rows.
Statistics statistics(const Model &model, const System &system, const Cofactors &cofactors,
                      const StatisticsOptions &options);

} // namespace vornadjust

#endif
