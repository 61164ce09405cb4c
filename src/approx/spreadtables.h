// The tables of a spread, made by spread() and handed to its steps.

#ifndef VORN_SPREADTABLES_H
#define VORN_SPREADTABLES_H

#include "approx/approxdata.h"

namespace vornengine {

// Status of a station.
enum {
    THEO_UNKNOWN = 0,
    THEO_PLACED = -1,   // position known, orientation not
    THEO_ORIENTED = -2, // orientation known, position not
    THEO_DONE = -3,     // both known
    THEO_RESECT = 3     // marked for resection
};

// Status of a target.
enum { OBJ_UNKNOWN = 0, OBJ_PLACED = -1 };

struct spreadtables {
    double *xap, *yap; // [npoints] plane coordinates being built, metres
    double *oap;       // [nsta] orientations being built, radians
    int **table;       // [nsta][npoints] table[i][j], i not j: index in dir1, plus 1, of the last
                       // shot from station i to point j, 0 without one;
                       // table[i][i]: stations that i sighted and was sighted by
    int *itheo;        // [nsta] status of each station, THEO_...
    int *iobj;         // [ntar] status of each target, OBJ_...
};

// Enters the last shot of each pair into the zeroed table.
void fill_table(const approxdata *net, spreadtables *tab);

// Whether point p has a position in the tables: a placed or finished station, a placed target.
// A station marked for resection has none. Inline: every pass asks it of every shot.
inline int has_position(const approxdata *net, const spreadtables *tab, int p)
{
    if (p >= net->nsta) return tab->iobj[p - net->nsta] == OBJ_PLACED;
    return tab->itheo[p] == THEO_PLACED || tab->itheo[p] == THEO_DONE;
}

// Points other than stations s1 and s2 with a shot from both.
int common_shots(const approxdata *net, const spreadtables *tab, int s1, int s2);

} // namespace vornengine

#endif
