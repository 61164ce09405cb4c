// Plane coordinates (metres) and orientations (radians) of all points, from what is known and
// the directions and distances; heights at the end.
//
// The start is the first of these that the network allows: known stations that measure
// distances, resections on known targets, a pair of stations that sighted each other, a guess.
// A start by a pair or a guess is in a frame of its own, transformed to the known points at
// the end. The points are written when everything is computed; what a known station reached by
// direction and distance is written at once.

#include "approx/spread.h"

#include <stdlib.h>

#include "approx/collimation.h"
#include "approx/guess.h"
#include "approx/resection.h"
#include "approx/transformation.h"
#include "numerics/memory.h"

namespace vornengine {

// What one spread works on.
struct spreading {
    spreadtables tab;
    int nused;   // done stations that measure distances
    int nresec;  // stations that can be resected at the start
    int npair;   // pairs of stations that sighted each other
    int nleft;   // stations to compute
    int iscale;  // 1: distances may be used in the frame at hand
    int itransf; // 1: the frame is a local one
};

// Rows of the table of shots. Returns 0, or -7 with its line.
static int take_table(const approxdata *net, spreadtables *tab)
{
    tab->table = (int **)zeroed(net->nsta, sizeof(int *));
    tab->itheo = (int *)zeroed(net->nsta, sizeof(int));
    tab->iobj = (int *)zeroed((long long)net->npoints - net->nsta, sizeof(int));
    if (!tab->table || !tab->itheo || !tab->iobj) {
        fprintf(net->out, "In spread: pb with table\n");
        return -7;
    }
    for (int i = 0; i < net->nsta; i++) {
        tab->table[i] = (int *)zeroed(net->npoints, sizeof(int));
        if (tab->table[i]) continue;
        fprintf(net->out, "In spread: pb with table when i=%d\n", i);
        return -7;
    }
    return 0;
}

static void free_table(spreadtables *tab, int nsta)
{
    for (int i = 0; tab->table && i < nsta; i++) free(tab->table[i]);
    free(tab->table);
    free(tab->itheo);
    free(tab->iobj);
    tab->table = NULL;
    tab->itheo = tab->iobj = NULL;
}

// The tables and the lists. Returns 0, or -7 with its line.
static int take_spreading(approxdata *net, spreadtables *tab)
{
    tab->xap = (double *)zeroed(net->npoints, sizeof(double));
    tab->yap = (double *)zeroed(net->npoints, sizeof(double));
    tab->oap = (double *)zeroed(net->nsta, sizeof(double));
    if (!tab->xap || !tab->yap || !tab->oap) {
        fprintf(net->out, "In spread: pb with xap\n");
        return -7;
    }
    if (take_table(net, tab) != 0) return -7;
    if (take_lists(net) == 0) return 0;
    fprintf(net->out, "In spread: pb with table\n");
    return -7;
}

static void free_spreading(approxdata *net, spreadtables *tab)
{
    free_table(tab, net->nsta);
    free(tab->xap);
    free(tab->yap);
    free(tab->oap);
    drop_lists(net);
}

static void show_counts(const approxdata *net, const spreading *s)
{
    fprintf(net->out, "Number of stations: %d\n", net->nsta);
    fprintf(net->out, "             nused: %d\n", s->nused);
    fprintf(net->out, "            nresec: %d\n", s->nresec);
    fprintf(net->out, "             npair: %d\n", s->npair);
    fprintf(net->out, "             nleft: %d\n", s->nleft);
}

// Chooses and makes the start; nleft is then the number of stations to compute. Returns 0,
// -1 (resection), -2 (pair) or -3 (guess).
static int start(const approxdata *net, spreading *s)
{
    s->nleft = net->nsta - s->nused;
    if (net->idebug) show_counts(net, s);
    if (s->nused == 0 && s->nresec != 0) {
        if (start_resec(net, &s->tab, &s->nresec) != 0) return -1;
        s->nleft = net->nsta - s->nresec;
    }
    if (s->nused != 0 || s->nresec != 0) return 0;
    s->itransf = 1;
    s->nleft = net->nsta - 2;
    if (s->npair != 0) return colli_spread(net, &s->tab, s->npair, &s->iscale) == 0 ? 0 : -2;
    return guess_spread(net, &s->tab, &s->iscale) == 0 ? 0 : -3;
}

static void show_spread(const approxdata *net, const spreadtables *tab)
{
    fprintf(net->out, "\nAll points have been computed\n");
    for (int i = 0; i < net->nsta; i++)
        fprintf(net->out, "%s %3d %15.5lf %15.5lf %15.5lf\n", net->points[i].name, tab->itheo[i], tab->xap[i],
                tab->yap[i], tab->oap[i]);
    for (int i = net->nsta; i < net->npoints; i++)
        fprintf(net->out, "%s %3d %15.5lf %15.5lf\n", net->points[i].name, tab->iobj[i - net->nsta], tab->xap[i],
                tab->yap[i]);
}

// Every point takes its computed position, also one that was known; the arrays become zero.
static void write_points(const approxdata *net, spreadtables *tab)
{
    for (int i = 0; i < net->npoints; i++) {
        net->points[i].xpt[0] = tab->xap[i];
        net->points[i].xpt[1] = tab->yap[i];
        tab->xap[i] = tab->yap[i] = 0.0;
    }
    for (int i = 0; i < net->nsta; i++) net->points[i].xex[2] = -tab->oap[i];
}

// The course of a spread on arrays that its caller releases.
static int spread_with(approxdata *net, spreading *s)
{
    spreadtables *tab = &s->tab;
    if (take_spreading(net, tab) != 0) return -7;
    s->iscale = 1;
    if (start_spread(net, tab, &s->nused, &s->nresec, &s->npair) != 0) return -9;
    const int result = start(net, s);
    if (result != 0) return result;
    while (s->nleft != 0)
        if (spread_step(net, tab, &s->nleft, s->iscale) != 0) return -5;
    if (net->idebug) show_spread(net, tab);
    free_table(tab, net->nsta);
    if (s->itransf && transformations(net, tab) != 0) return -6;
    write_points(net, tab);
    if (net->dim == 3) height_spread(net, tab->xap, tab->yap);
    return 0;
}

// Returns 0, or
//   -1 the resection at the start failed      -5 nothing more to do, or a resection failed
//   -2 no start from a pair of stations       -6 the frame could not be transformed
//   -3 no start by a guess                    -7 no memory
//   -9 the tables could not be built (no network does this)
// After a failure no point is written but those reached by direction and distance.
int spread(approxdata *net)
{
    spreading s = spreading();
    const int result = spread_with(net, &s);
    free_spreading(net, &s.tab);
    return result;
}

} // namespace vornengine
