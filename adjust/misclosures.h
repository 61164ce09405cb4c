// Observations that do not fit the values that an adjustment starts from, where it fails: gross errors and mistaken
// points show in their misclosures before anything is adjusted.

#ifndef ADJUST_MISCLOSURES_H
#define ADJUST_MISCLOSURES_H

#include <vector>

#include "adjust/equations.h"

namespace vornadjust {

struct Misfit {
    int observation;
    int component;
    double misclosure; // metres, radians, pixels; of directions beside the median of their set-up
    int agreeing;      // other rows of the same kind at the set-up or point whose misclosures are below a tenth of it
};

// Rows whose misclosure is at least 10 times the median size of the others of their kind at the same set-up (or point;
// in the whole network where these are fewer than two) and 10 times their standard deviation; the worst first, at most
// `most`.
std::vector<Misfit> misfits(const Model &model, const Equations &equations, int most);

} // namespace vornadjust

#endif
