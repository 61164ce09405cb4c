// Movements inside a network that no row answers to and that are no motions of the whole: hinges,
// points on one sight, constants that nothing tells apart.
//
// The unit rows, columns scaled to length 1 and the minimal datum held, make a normal matrix N. Its
// small pivots are suspects only: a traverse of 1,000 legs has a pivot of 3e-9 where it is determined
// and 1e-9 where one angle is missing. From the suspects, as a block, null vectors are found by
// inverse iteration with N + d I; each is decided by its largest answer in the rows themselves:
//   z <- z - (N + d I)^-1 A'(A z),    which is d (N + d I)^-1 z, with the residual of the rows.
// A traverse of 1,000 legs then has 9e-7 against 9e-13.

#ifndef VORNADJUST_MECHANISMS_H
#define VORNADJUST_MECHANISMS_H

#include <vector>

#include "adjust/datum.h"
#include "adjust/small_svd.h"
#include "adjust/unit_rows.h"

namespace vornadjust {

struct Mechanisms {
    Dense vectors;           // unknowns by movements, largest entry 1; metres and radians
    std::vector<int> unseen; // estimated coordinates to which no row answers
    std::vector<int> idle;   // other estimated unknowns in rows that do not answer to them, to be left out of the
                             // normal system: the orientation of a set-up with vertical angles alone
    std::vector<int> weak;   // unknowns of small pivots whose movement the rows do feel
    int not_searched = 0;    // suspects beyond those that one search takes

    bool none() const { return vectors.cols == 0 && unseen.empty(); }
};

// At the values at which the rows were filled.
// Throws std::bad_alloc.
Mechanisms find_mechanisms(const UnitRows &rows, const Datum &datum);

} // namespace vornadjust

#endif
