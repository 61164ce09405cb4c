// What the rows of a network leave open as a whole, and the conditions that close exactly that.
//
// Motions of a part: shifts, turns and the scale of all its coordinates. A motion is open when no
// unit row and no held coordinate answers to it, whatever the other unknowns (orientations, tilts,
// cameras, constants, scales, motions of lumps) do along with it: those are eliminated first. With K
// the rows' answers to the motions, each of which moves the farthest point by 1, singular values of K
// below 1e-10 are open motions. The threshold is absolute: where everything is open the largest
// singular value is rounding itself. Over 191 networks zeros were below 1e-15 and others above 2e-2,
// in hard cases (one azimuth on 0.1 m in a network of 100 km) above 2e-7.
//
// Open motions become conditions over the coordinates with code `datum`:
//   conditions' (x - start) = 0,   conditions = motions with all rows but those of datum coordinates 0,
// with `motions` at the first coordinates on the whole way. Nothing else is held.
//
// Hinges inside a part do not show here; the factor of the rows finds them.

#ifndef VORNADJUST_DATUM_H
#define VORNADJUST_DATUM_H

#include <array>
#include <vector>

#include "adjust/holding.h"
#include "adjust/parts.h"
#include "adjust/similarity.h"
#include "adjust/small_svd.h"
#include "adjust/unit_rows.h"

namespace vornadjust {

enum class DatumState {
    held,       // nothing is open
    by_points,  // conditions over the datum points close what is open
    loose,      // more than one part, and at least one of them has an open motion
    not_carried // the datum points do not hold every open motion
};

struct Datum {
    DatumState state = DatumState::held;
    Parts parts;
    std::vector<int> loose_parts; // of state loose: those with open motions

    // Of the one part, in the states by_points and not_carried.
    Similarity similarity;
    std::vector<NamedMotion> open;
    Dense motions;                        // unknowns by open motions, orthonormal over the coordinates
    Dense conditions;                     // the same with the datum coordinates alone
    std::vector<NamedMotion> not_carried; // what the datum points leave open
    double least_hold = 1;                // least singular value of the conditions, 0 to 1
    bool weakly_carried = false;          // by_points: far points will have large standard deviations

    std::array<Holding, n_motions> holding; // of all parts together, by basic motion
};

// At the model's present values; equations filled there with invariant derivatives. The time is
// linear in the rows. Where ranks share the rows, all of them call it and find the same, to the bit.
Datum find_datum(const UnitRows &rows);

// Estimated coordinates that stop all motions when they are held, one for each column of motions, by
// complete pivoting (the largest movement first: any others would lose digits).
std::vector<int> minimal_datum(const Model &model, Dense motions);

} // namespace vornadjust

#endif
