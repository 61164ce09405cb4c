// How the redundancy of one class of observations depends on the others: what the precision of variance components
// needs.
//
// With R = Qvv P in blocks of classes c and d,
//   h_cd = tr(R_cd R_dc),  sum over all d of h_cd = r_c,  as R is idempotent,
// and 1/2 h is the information that residuals have of the variance factors s_c^2 where these are 1: the covariance of
// restricted maximum likelihood estimates is 2 h^-1 (Koch, Parameter Estimation and Hypothesis Testing in Linear
// Models, 1999, sect. 3.6; Searle, Casella, McCulloch, Variance Components, 1992, sect. 6.6). For c other than d
//   h_cd = |B_c Q B_d^T|^2,  B the weighted rows,
// the mean of |B_c Q B_d^T e|^2 over vectors e of random signs; with each unit vector in turn it is the sum, without
// chance.

#ifndef VORNADJUST_REDUNDANCY_TRACES_H
#define VORNADJUST_REDUNDANCY_TRACES_H

#include <vector>

#include "adjust/system.h"
#include "adjust/statistics.h"

namespace vornadjust {

constexpr int exact_rows = 400;  // networks with more take random signs
constexpr int drawn_signs = 200; // vectors for each class, a solve each: h_cd to some percent

struct RedundancyTraces {
    int count = 0;
    std::vector<double> h; // [count][count], symmetric; empty where the watch ended it

    double operator()(int c, int d) const { return h[(std::size_t)c * count + d]; }
};

// Of a system factored without damping, and statistics of its rows.
//   of          in  [observations] class, or -1; the same for all of a correlated group
//   most_exact  rows up to which each has a solve of its own
RedundancyTraces redundancy_traces(const System &system, const Statistics &statistics, const std::vector<int> &of,
                                   int count, const Watch &watch, int most_exact = exact_rows);

} // namespace vornadjust

#endif
