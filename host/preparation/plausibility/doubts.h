// What looks wrong in a network before it is adjusted, by observation. None of it is refused. Metres and radians.

#ifndef VORNHOST_PLAUSIBILITY_DOUBTS_H
#define VORNHOST_PLAUSIBILITY_DOUBTS_H

#include <vector>

#include "adjust/model.h"

namespace vornhost::plausibility {

enum class Doubt {
    repeated,         // the same as another row
    exchanged,        // a large standard deviation beside a small value
    small_sigma,      // smaller than the kind can have
    large_sigma,      // larger
    looks_horizontal, // a distance in space that is the horizontal one by the first coordinates
    contradicted      // by the first coordinates
};

struct Finding {
    Doubt doubt;
    int observation;
    int other = -1;      // the row that it repeats
    double observed = 0; // value or standard deviation
    double compared = 0; // what it would be, or the limit of the standard deviation
};

// Smallest and largest standard deviation of a kind; 0, 0 where anything goes.
struct SigmaRange {
    double least, most;
};

SigmaRange sigma_range(vornadjust::Kind kind);

// Rows with equal values, standard deviations and ends; `label` tells observations of a kind apart that are meant to be
// equal (their sets). Directions of 0 begin a round and are not compared.
std::vector<Finding> find_repeated(const vornadjust::Model &model, const std::vector<int> &label);

std::vector<Finding> find_strange_sigmas(const vornadjust::Model &model);

// A length, height difference or baseline by more than a tenth of the length, at least by `least_contradiction`; an
// angle by more than `angle_contradiction` and, across, by more than `least_contradiction`; directions beside the
// median of their set-up. Against the values as they stand.
constexpr double share_contradiction = 0.1, least_contradiction = 1.0, angle_contradiction = 0.1;

// A point most of whose observations are contradicted, more than those of any point at their other ends.
struct Misplaced {
    int point;
    int contradicted, observations;
};

struct Contradictions {
    std::vector<Finding> rows; // of no misplaced point
    std::vector<Misplaced> points;
    int contradicted = 0, compared = 0; // rows in all
};

Contradictions find_contradicted(const vornadjust::Model &model);

// Slope distances that the coordinates tell from horizontal ones by more than 20 standard deviations, and that are
// nearer to the horizontal one by a factor of 10. Only where the coordinates are good enough to tell: most of the steep
// distances fit one of the two as well.
std::vector<Finding> find_horizontal(const vornadjust::Model &model);

} // namespace vornhost::plausibility

#endif
