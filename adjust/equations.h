// The linear equations of all observations, unweighted: row by row
//     misclosure = sum over k of coefficient[k] * correction(column[k]) + residual
// with misclosure = observed - computed before and residual = observed - computed after the corrections. Metres and
// radians; image rows in pixels. A row belongs to one component of one observation; the components of an observation
// follow one another, and rows stand in the order of the observations that are used.
//
// Storage by rows: entries of row r are begin[r] <= k < begin[r + 1]. Columns are UNKNOWN INDEXES of the model, the
// held ones too (their coefficients tell the search for open motions what they hold); absent ones have no entry. They
// ascend in a row, each once. Example, slope distance 0 -> 1: columns 0 1 2 3 4 5.
//
// The pattern depends on kinds and indexes alone and is made once; fill() computes coefficients and misclosures at the
// model's present values and allocates nothing.

#ifndef VORNADJUST_EQUATIONS_H
#define VORNADJUST_EQUATIONS_H

#include <cstddef>
#include <vector>

#include "adjust/model.h"

namespace vornadjust {

// exact:     derivatives of the value that is computed.
// invariant: derivatives as if verticals were parallel, without convergence of meridians and without the dependence of
//            refraction on length, so that curvature alone holds no shift, tilt or scale. Misclosures are exact in
//            both; where motions are open the adjusted network differs from the least-squares one by its residuals
//            times size over radius.
enum class Derivatives { exact, invariant };

struct Equations {
    std::vector<std::size_t> begin;  // [rows + 1]
    std::vector<int> column;         // [entries] unknown indexes
    std::vector<double> coefficient; // [entries]

    std::vector<double> misclosure;       // [rows] observed - computed; angles within half a turn
    std::vector<double> sigma;            // [rows] standard deviation; of group members the root of the variance
    std::vector<double> factor;           // [rows] a-priori factor
    std::vector<int> observation;         // [rows]
    std::vector<unsigned char> component; // [rows] 0 to 2
    std::vector<int> group;               // [rows] or -1
    std::vector<int> place;               // [rows] row in the group's covariance
    std::vector<unsigned char> usable; // [rows] 0: no derivative where the points are now (ends in one place, a sight
                                       // straight up); its coefficients and misclosure are 0 and it counts nowhere

    int rows() const { return (int)misclosure.size(); }
    int usable_rows() const;
};

// Pattern of a model's equations, coefficients 0; or of those of one part of the observations.
//   part_of  [observations]
Equations pattern(const Model &model);
Equations pattern(const Model &model, const std::vector<int> &part_of, int part);

// Coefficients, misclosures and usable rows at the model's present values, the same for any number of threads.
void fill(const Model &model, Derivatives derivatives, Equations *equations, int threads = 1);

// Columns of the normal system: the unknowns that are estimated, in the order of the model. Unknowns other than
// coordinates that no row can answer to (the orientation of an upright set-up without directions) take no part.
struct Columns {
    std::vector<int> of;      // [unknowns] column, or -1
    std::vector<int> unknown; // [columns]

    int count() const { return (int)unknown.size(); }
};

Columns columns(const Model &model, const Equations &equations);

} // namespace vornadjust

#endif
