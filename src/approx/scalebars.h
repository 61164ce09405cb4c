// Scale bars: distances between two targets, which give a local frame its true scale when
// both stations of a pair observed the two ends.

#ifndef VORN_SCALEBARS_H
#define VORN_SCALEBARS_H

#include "approx/spreadtables.h"

namespace vornengine {

struct scalebar {
    int idist;      // index in dist
    int end1, end2; // points
    int mark;       // its own number while the station at hand observed it, otherwise -1
};

struct barlist {
    scalebar *bar; // [nbar]
    int nbar;
};

// Lists the bars of the network. Returns 0 or -1; the caller releases l->bar.
int take_bars(const approxdata *net, barlist *l);

// Ends of distance idist as points. Returns 1 when both are targets.
int bar_ends(const approxdata *net, int idist, int *end1, int *end2);

// Whether station i shot both ends of a bar.
int shot_bar(const scalebar *bar, int i, const spreadtables *tab);

} // namespace vornengine

#endif
