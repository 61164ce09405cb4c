// Sums, largest values and lists over the ranks that share a network (ranks.h). Without ranks they are those of the
// caller alone.

#ifndef VORNADJUST_OVER_RANKS_H
#define VORNADJUST_OVER_RANKS_H

#include <cstddef>
#include <vector>

#include "adjust/ranks.h"

namespace vornadjust {

// Whether the caller counts what all ranks know, so that it is counted once.
bool leads(const Ranks *ranks);

// In each of n places.
//   x  in/out  [n]
void sum(Ranks *ranks, double *x, std::size_t n);
void most(Ranks *ranks, double *x, std::size_t n);

// Numbers of all ranks one behind the other, in the order of the ranks; any count of each.
std::vector<double> gather(Ranks *ranks, const std::vector<double> &own);

} // namespace vornadjust

#endif
