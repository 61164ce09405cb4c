// Entries of a point in the conditions that give a free network its datum.
//
// The conditions hold the translations, the turns about the three axes and the scale of the
// points, in this order. With d the point less the centre, metres:
//   translation     1 at each coordinate
//   turn about x3   -d1 at x1,  d0 at x2;  about x1, x2 by exchange of the axes
//   scale           dk at xk
//   rows   dimension 1: the height; 2: two translations, a turn, with 4 conditions the scale;
//          3: three translations, then with 6 or 7 three turns, with 4 or 5 the turn about x3,
//          with 5 or 7 the scale
// A coordinate takes part by its flag in the datum. The solvers differ in whose flag an entry
// of a turn asks for.

#ifndef VORN_DATUMROWS_H
#define VORN_DATUMROWS_H

#include "vorn/records.h"

namespace vornengine {

enum datumflags {
    FLAG_OF_VALUE,     // that of the coordinate whose difference is the value
    FLAG_OF_COLUMN,    // that of the coordinate at which the entry stands
    FLAG_OF_EXCHANGED, // that of the column, the two entries having changed their columns
    FLAG_NOT_OF_X3     // as FLAG_OF_VALUE, but x3 as a value at x1 needs none
};

struct datumentry {
    int row;        // condition, from 0
    int coordinate; // of the point
    double value;
};

enum { DATUM_ENTRIES = 12 }; // of a point, at most

// Collects the entries of the conditions of a datum; returns their number. Rows from ndatum on
// may occur: a weighted network can have fewer than its dimension asks for.
int datum_entries(const point *p, const double centre[3], int dim, int ndatum, datumflags flags,
                  datumentry e[DATUM_ENTRIES]);

// The same of the three turns alone, rows 0 to 2: what a mixed datum holds.
int turn_entries(const point *p, const double centre[3], datumflags flags, datumentry e[DATUM_ENTRIES]);

} // namespace vornengine

#endif
