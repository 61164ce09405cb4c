// Resections that the known targets allow before anything else is known.

#include "approx/intersection.h"
#include "approx/resection.h"

namespace vornengine {

// Resects station i. Returns 0 or -1.
static int resect_marked(const approxdata *net, spreadtables *tab, int i)
{
    if (resec(net, tab, 1, i) < 0) return -1;
    tab->itheo[i] = THEO_DONE;
    return 0;
}

// The only resection; it is of use when the station measured a distance. Returns 0 or -1.
static int lone_resection(const approxdata *net, spreadtables *tab, int *nresec)
{
    if (net->idebug) fprintf(net->out, "Only one resection possible at the start\n");
    for (int i = 0; i < net->nsta; i++) {
        if (tab->itheo[i] != THEO_RESECT) continue;
        if (net->idebug) fprintf(net->out, "  Theo : %s\n", net->points[i].name);
        if (net->lengths.first[i + 1] > net->lengths.first[i]) return resect_marked(net, tab, i);
        if (net->idebug) fprintf(net->out, "and not a useful one...\n\n");
        *nresec = 0;
    }
    return 0;
}

int start_resec(const approxdata *net, spreadtables *tab, int *nresec)
{
    if (*nresec == 1) return lone_resection(net, tab, nresec);
    if (net->idebug) fprintf(net->out, "Number of resections at the start = %d\n", *nresec);
    for (int i = 0; i < net->nsta; i++) {
        if (tab->itheo[i] != THEO_RESECT) continue;
        if (net->idebug) fprintf(net->out, "  Theo : %s\n", net->points[i].name);
        if (resect_marked(net, tab, i) != 0) return -1;
        intersect_targets(net, tab, i);
    }
    return 0;
}

} // namespace vornengine
