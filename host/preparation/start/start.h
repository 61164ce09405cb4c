// First values of a network that gives none or only some: what was found, and what has to be said of it, by index.

#ifndef VORNHOST_START_START_H
#define VORNHOST_START_START_H

#include <vector>

#include "host/preparation/start/degenerate.h"
#include "host/preparation/start/doubts.h"
#include "host/preparation/start/sightings.h"

namespace vornhost::start {

// An observation that does not fit, and what it would have to read (metres, radians).
struct Misfit {
    int observation;
    double would_read;
    double off; // standard deviations
};

// Given coordinates far from where the sights of the point put it.
struct Displaced {
    int point;
    double x[2], given[2]; // where they put it, and where it is given
    double off;            // metres
};

struct Start {
    std::vector<int> missing;           // points without a place; where there are any, the model keeps its values
    std::vector<Degenerate> degenerate; // of these, those that their sights leave open along a circle or a line
    std::vector<Misfit> misfits;
    int rough = 0; // observations that do not fit where they are too many to be wrong ones; then no misfits
    std::vector<Doubt> doubts;
    std::vector<Displaced> displaced;
    bool mirrored = false;         // the given coordinates fit the sights as a mirror image only
    double given_scale = 1;        // or with another scale only: given lengths by observed ones
    double scale = 1;              // of the misclosures of what fits, in standard deviations
    bool contradicts = false;      // that is too much: the observations contradict one another everywhere
    int points_that_tell_side = 0; // more than 0 where the mirror image of the network fits as well

    bool found() const { return missing.empty() && doubts.empty() && !mirrored && given_scale == 1.0; }
};

// Fills in values (and starts) that are not given, where all of them could be found.
Start find_start(vornadjust::Model *model, const Given &given);

} // namespace vornhost::start

#endif
