// Sets of a set-up as one, and the standard deviation of a set from their scatter.

#ifndef VORNHOST_FIELD_MEANS_H
#define VORNHOST_FIELD_MEANS_H

#include <vector>

#include "host/formats/field_sets.h"

namespace vornhost {

// A target of a mean of sets, or of a single one.
struct MeanTarget {
    SetTarget sight;
    double factor = 1.0; // standard deviation of its angles beside that of a mean of two faces
};

// Sets over the same targets as one. Their directions are means after each set was turned onto the first.
struct MeanSet {
    std::vector<MeanTarget> targets;
    size_t sets = 0;
};

// Sums of squares of what differs between sets, with their degrees of freedom.
struct Scatter {
    double squares = 0.0;
    size_t freedom = 0;

    MaybeNumber deviation() const; // of one set
};

struct MeanSets {
    std::vector<MeanSet> sets;
    Scatter direction, zenith, distance;
};

// Sets over the same targets become one each where merged is set. Sets of which a target is off as no error of
// measuring is stay by themselves, with a note.
MeanSets mean_sets(const std::vector<FieldSet> &sets, double circle, bool merged, RecordAccount &account);

} // namespace vornhost

#endif
