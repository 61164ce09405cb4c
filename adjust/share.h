// What one rank of several knows of its part of a shared system, and how it speaks with the others (ranks.h).
//
// A rank has the columns that its own observations see. Those that others have too are its boundary. Of each unknown
// one rank counts as the owner, so that sums over unknowns count it once.
//
// Vectors over columns are of two sorts. A solution has, on each rank, the values of its columns. A right-hand side is
// a contribution: its values at an unknown are those of all ranks added up. Without ranks both are the same, and all
// functions here do nothing.

#ifndef VORNADJUST_SHARE_H
#define VORNADJUST_SHARE_H

#include <vector>

#include "adjust/equations.h"
#include "adjust/ranks.h"

namespace vornadjust {

struct Share {
    Ranks *ranks = nullptr;       // none: one machine has the whole network
    std::vector<char> own;        // [n] 1 for the columns that this rank owns
    std::vector<int> boundary;    // columns that other ranks have too, ascending
    std::vector<char> takes_part; // [unknowns] 1 where any rank has a column
    int unknowns = 0;             // columns of all ranks, each counted once

    bool shared() const { return ranks != nullptr; }
    double sum(double x) const;
    bool any(bool x) const;
    void sum(std::vector<double> *x) const;
};

// Columns of the unknowns that a rank's own equations see: of a point all that are estimated, or none.
Columns columns_of_share(const Model &model, const Equations &own);

Share make_share(const Model &model, const Columns &columns, Ranks *ranks);

// Makes a contribution of a solution: columns that others own become 0.
void contribute(const Share &share, double *x);

// Gives every rank the values of all unknowns.
void gather_values(const Share &share, const Columns &columns, Model *model);

} // namespace vornadjust

#endif
