// A short damped adjustment of a whole network from first values, in which what does not fit loses its weight.
//
// Minimizes the sum over the rows of c^2 log(1 + (u / c)^2), u the misclosure in standard deviations (Cauchy's
// function), by reweighted steps of Levenberg and Marquardt while c shrinks from what the first values are off by to a
// few standard deviations: first everything is pulled together, then what most observations agree on.

#ifndef VORNHOST_START_DAMPED_H
#define VORNHOST_START_DAMPED_H

#include <vector>

#include "adjust/model.h"

namespace vornhost::start {

struct Fit {
    double loss = 0;         // sum over the rows of log(1 + (u / 5)^2), the same for every way to the same network
    double scale = 1;        // at least 1; median of |u| over that of the normal distribution
    int rows = 0;            // that can be computed
    std::vector<double> off; // [observations] |u|, the largest of its components; 0 where it takes no part
    bool finite = true;
    bool ended = false; // the damped adjustment came to an end before its steps were used up
};

Fit measure_fit(const vornadjust::Model &model);

// What counts at first: what most observations agree on, or all of them.
enum class Pull { most, together };

// Moves the estimated values of the model; at most so many steps.
Fit settle(vornadjust::Model *model, int steps, Pull pull);

} // namespace vornhost::start

#endif
