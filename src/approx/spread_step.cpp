// One pass of the spreading: stations that have become resectable are resected in their order,
// and what they open up is intersected.

#include "approx/intersection.h"
#include "approx/patches.h"
#include "approx/resection.h"
#include "approx/spread.h"

namespace vornengine {

// Points of known position that station i sees.
static int known_sights(const approxdata *net, const spreadtables *tab, int i)
{
    int n = 0;
    for (int e = net->seen.first[i]; e < net->seen.first[i + 1]; e++) n += has_position(net, tab, net->seen.to[e]);
    return n;
}

// Marks every unfinished station that can be resected, also one of which position or
// orientation is known. A marked station does not count as known for those after it.
static int mark_resectable(const approxdata *net, spreadtables *tab)
{
    int nmarked = 0;
    for (int i = 0; i < net->nsta; i++) {
        if (tab->itheo[i] == THEO_DONE || known_sights(net, tab, i) < 3) continue;
        tab->itheo[i] = THEO_RESECT;
        nmarked++;
    }
    return nmarked;
}

// Nothing can be resected: what do the unfinished stations see? Whatever that diagnosis finds,
// it only goes to the report.
static void diagnose(const approxdata *net, const spreadtables *tab)
{
    if (net->idebug) fprintf(net->out, "\nTry patching...\n");
    for (int i = 0; i < net->nsta; i++) {
        if (tab->itheo[i] == THEO_DONE || patch_spread(net, tab, i) != 0) continue;
        fprintf(net->out, "\nPatching successful ... now what??\n");
        return;
    }
    fprintf(net->out, "\n!! Cannot do anything more !!\n");
}

int spread_step(const approxdata *net, spreadtables *tab, int *nleft, int iscale)
{
    if (mark_resectable(net, tab) == 0) {
        diagnose(net, tab);
        return -4;
    }
    for (int i = 0; i < net->nsta; i++) {
        if (tab->itheo[i] != THEO_RESECT) continue;
        if (resec(net, tab, iscale, i) < 0) return -1;
        tab->itheo[i] = THEO_DONE;
        (*nleft)--;
        intersect_targets(net, tab, i);
        intersect_stations(net, tab, i);
    }
    return 0;
}

} // namespace vornengine
