// Data snooping: the observation that fits worst is left out and the network adjusted again, until none is suspect or a
// limit is reached; then each one that was left out is tried again with the others.
//
// (W. Baarda, A testing procedure for use in geodetic networks, 1968.) Every step is logged. Each adjustment begins at
// the first values of the model, so that the result is that of a network without these observations.

#ifndef VORNADJUST_SNOOP_H
#define VORNADJUST_SNOOP_H

#include <vector>

#include "adjust/adjustment.h"

namespace vornadjust {

struct SnoopLimits {
    int most = 100;               // units left out
    double largest_share = 0.334; // of all units
};

struct SnoopStep {
    enum class Action { left_out, taken_again, kept } action;
    int unit;
    double normalised;      // of the worst row of the unit, with its sign; 0 where it was taken again
    double variance_factor; // of the run behind the step
    std::vector<int> alike; // units that could be wrong in its place
};

struct Snooped {
    Outcome outcome; // of the last run
    std::vector<SnoopStep> steps;
    std::vector<int> left_out; // units, in the order in which they were left out
    bool ended = true;         // false: the limit was reached with suspects left
};

// Adjusts the model, whose observations of the units that remain left out have `use` false behind it. The options must
// look for suspects.
//   unit  [observations] those that are left out together have the same number; they count from 0
// An observation without which the network would not be determined is kept, which is a step too.
Snooped snoop(Model *model, const Options &options, const std::vector<int> &unit, const SnoopLimits &limits = {});

} // namespace vornadjust

#endif
