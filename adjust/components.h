// Variance components: for classes of observations the factors of their standard deviations that make v^T P v of each
// class equal to its redundancy,
//   s_c^2 = (v^T P v)_c / r_c,  r_c = sum of the redundancy numbers of the class,
// and again with standard deviations times s_c until all s_c are 1 (Foerstner, Ein Verfahren zur Schaetzung von
// Varianz- und Kovarianzkomponenten, AVN 86, 1979, 446-453: the end of it is that of Helmert's estimation). The
// standard deviation of a factor is s sqrt((h^-1)_cc / 2), h the redundancy traces of the classes that are estimated:
// that of restricted maximum likelihood, which the estimate is. s / sqrt(2 r), of a class that shares no redundancy
// with others, is its least value.

#ifndef VORNADJUST_COMPONENTS_H
#define VORNADJUST_COMPONENTS_H

#include <vector>

#include "adjust/adjustment.h"

namespace vornadjust {

struct ComponentLimits {
    double redundancy = 10.0; // classes with less keep their standard deviations
    int rounds = 50;
    double close = 1e-4; // of the factors of the last round to 1
};

struct Component {
    int rows = 0;
    double redundancy = 0.0; // of the last round
    double squares = 0.0;    // v^T P v of the last round
    double factor = 1.0;     // of the standard deviations of the model as it came
    double deviation = 0.0;  // of the factor; 0 where the classes cannot be told apart
    bool estimated = false;  // false: too little redundancy, or no errors at all
};

struct ComponentEstimate {
    std::vector<Component> components;
    bool converged = false;
    bool stopped = false; // by the watch, or the adjustment failed on the way
};

// Redundancy and squares of each class in an adjustment with statistics of residuals.
//   of  in  [observations] class, or -1; the same for all of a correlated group
std::vector<Component> component_sums(const Model &model, const Outcome &outcome, const std::vector<int> &of,
                                      int count);

// Adjusts the model again and again from an adjustment of it; the standard deviations and covariances of the model
// become those of the estimate, and the outcome its last adjustment.
ComponentEstimate estimate_components(Model *model, Outcome *outcome, const Options &options,
                                      const std::vector<int> &of, int count, const ComponentLimits &limits);

} // namespace vornadjust

#endif
