// Where the rows of each rank stand among those of all ranks.
//
// Ranks that divide one network have all its observations and number them alike. Ranks that have observations of their
// own alone number these as one process would meet them, with gaps where it would have none.

#ifndef VORNADJUST_PLACES_H
#define VORNADJUST_PLACES_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "adjust/share.h"

namespace vornadjust {

struct OwnObservations {
    std::vector<std::int64_t> numbers; // [observations] ascending, each on one rank only; empty: their indexes
    std::int64_t all = 0;              // numbers lie from 0 to this - 1; the same on all ranks

    std::int64_t number(int observation) const
    {
        return numbers.empty() ? observation : numbers[(std::size_t)observation];
    }
};

// [rows] places among the usable rows of all ranks, by the numbers of their observations; -1 where a row is not usable.
// Memory does not grow with all observations.
std::vector<int> find_places(const Share &share, const Equations &equations, const OwnObservations &own);

} // namespace vornadjust

#endif
