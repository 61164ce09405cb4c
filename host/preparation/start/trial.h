// One way to first values of a whole network: heights that need no plan, the plan, heights again, and a short damped
// adjustment that tells how well they fit.

#ifndef VORNHOST_START_TRIAL_H
#define VORNHOST_START_TRIAL_H

#include <vector>

#include "host/preparation/start/damped.h"
#include "host/preparation/start/plan.h"
#include "host/preparation/start/sightings.h"

namespace vornhost::start {

struct Trial {
    vornadjust::Model model;     // with its first values
    std::vector<char> placed;    // [points] in the plan
    std::vector<char> levelled;  // [points] that have a height
    std::vector<Choice> choices; // where something else fitted alike
    Way way;
    Fit fit;

    std::vector<int> missing; // points that want a place and have none
};

// Too large for many ways and many steps.
bool is_large(const vornadjust::Model &model);

// Observations with a 1 in `left_out` place nothing; the adjustment has them.
Trial try_way(const vornadjust::Model &model, const Given &given, const std::vector<char> &left_out, const Way &way);

// Observations that are off by more than so many standard deviations.
std::vector<int> misfits(const Trial &trial);

} // namespace vornhost::start

#endif
