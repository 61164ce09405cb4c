// Robust estimation by weights that fall with the residuals, found again and again until they stay.
//
// With u the largest residual of the components of an observation by their standard deviations, its weight is
//   huber           1 up to k, then k / u                   k = 1.5   (P. J. Huber, Robust statistics, 1981)
//   danish          1 up to k, then exp(1 - (u / k)^2)      k = 2     (T. Krarup, J. Juhl, K. Kubik, 1980), from where
//                   huber has settled
//   least_absolute  1 up to k, then k / u, and all divided by their median     k = 0.05: the sum of |u| is least, but
//   for
//                   residuals below a twentieth of a standard deviation
// It multiplies P on both sides by its root.

#ifndef VORNADJUST_ROBUST_H
#define VORNADJUST_ROBUST_H

#include <vector>

#include "adjust/adjustment.h"

namespace vornadjust {

enum class Estimator { huber, danish, least_absolute };

struct Robust {
    Outcome outcome;            // with the last weights; its suspects are judged by the weights of the model
    std::vector<double> weight; // [observations] beside those of the model
    bool settled = true;        // the weights stayed in the end
};

// Adjusts the model, whose factors are as before behind it.
Robust adjust_robustly(Model *model, const Options &options, Estimator estimator);

} // namespace vornadjust

#endif
