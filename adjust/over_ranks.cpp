#include "adjust/over_ranks.h"

#include <algorithm>
#include <numeric>

namespace vornadjust {

bool leads(const Ranks *ranks) { return !ranks || ranks->own() == 0; }

void sum(Ranks *ranks, double *x, std::size_t n)
{
    if (ranks) ranks->sum(x, n);
}

void most(Ranks *ranks, double *x, std::size_t n)
{
    if (ranks) ranks->most(x, n);
}

// Each rank has places of its own in a sum.
std::vector<double> gather(Ranks *ranks, const std::vector<double> &own)
{
    if (!ranks) return own;
    std::vector<double> counts((std::size_t)ranks->size(), 0.0);
    counts[ranks->own()] = (double)own.size();
    sum(ranks, counts.data(), counts.size());
    const double before = std::accumulate(counts.begin(), counts.begin() + ranks->own(), 0.0);
    std::vector<double> all((std::size_t)std::accumulate(counts.begin(), counts.end(), 0.0), 0.0);
    std::copy(own.begin(), own.end(), all.begin() + (std::ptrdiff_t)before);
    sum(ranks, all.data(), all.size());
    return all;
}

} // namespace vornadjust
