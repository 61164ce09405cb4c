// Parts of a network that no observation ties to one another.

#ifndef VORNADJUST_PARTS_H
#define VORNADJUST_PARTS_H

#include <vector>

#include "adjust/unit_rows.h"

namespace vornadjust {

struct Parts {
    std::vector<std::vector<int>> points; // of each part, ascending; parts by their first point
    std::vector<int> part_of;             // [points] -1: no row sees the point
};

// Points that stand in one row, or that were imported as one correlated group, which one rank has, belong together.
// The same on all ranks.
Parts find_parts(const UnitRows &rows);

} // namespace vornadjust

#endif
