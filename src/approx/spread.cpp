// Plane coordinates (metres) and orientations (radians) of all points, from what is known and
// the directions and distances; heights at the end.
//
// The start is the first of these that the network allows: known stations that measure
// distances, resections on known targets, a pair of stations that sighted each other, a guess.
// A start by a pair or a guess is in a frame of its own, transformed to the known points at
// the end. The points are written when everything is computed; what a known station reached by
// direction and distance is written at once.

#include "approx/approx.h"

#include <stdlib.h>

#include "approx/spreading.h"
#include "numerics/memory.h"

namespace vornengine {

// Rows of the table of shots. Returns 0, or -7 with its line.
static int take_table(spreading *s, int nsta, int npoints, FILE *out)
{
    s->nrow = nsta;
    s->table = (int **)zeroed(nsta, sizeof(int *));
    s->itheo = (int *)zeroed(nsta, sizeof(int));
    s->iobj = (int *)zeroed((long long)npoints - nsta, sizeof(int));
    if (!s->table || !s->itheo || !s->iobj) {
        fprintf(out, "In spread: pb with table\n");
        return -7;
    }
    for (int i = 0; i < nsta; i++) {
        s->table[i] = (int *)zeroed(npoints, sizeof(int));
        if (s->table[i]) continue;
        fprintf(out, "In spread: pb with table when i=%d\n", i);
        return -7;
    }
    return 0;
}

static void free_table(spreading *s)
{
    for (int i = 0; s->table && i < s->nrow; i++) free(s->table[i]);
    free(s->table);
    free(s->itheo);
    free(s->iobj);
    s->table = NULL;
    s->itheo = s->iobj = NULL;
}

int approx::take_spreading(spreading *s)
{
    s->xap = (double *)zeroed(npoints, sizeof(double));
    s->yap = (double *)zeroed(npoints, sizeof(double));
    s->oap = (double *)zeroed(nsta, sizeof(double));
    if (!s->xap || !s->yap || !s->oap) {
        fprintf(out, "In spread: pb with xap\n");
        return -7;
    }
    if (take_table(s, nsta, npoints, out) != 0) return -7;
    if (take_lists() == 0) return 0;
    fprintf(out, "In spread: pb with table\n");
    return -7;
}

static void free_spreading(spreading *s)
{
    free_table(s);
    free(s->xap);
    free(s->yap);
    free(s->oap);
    s->xap = s->yap = s->oap = NULL;
}

void approx::show_counts(const spreading *s)
{
    fprintf(out, "Number of stations: %d\n", nsta);
    fprintf(out, "             nused: %d\n", s->nused);
    fprintf(out, "            nresec: %d\n", s->nresec);
    fprintf(out, "             npair: %d\n", s->npair);
    fprintf(out, "             nleft: %d\n", s->nleft);
}

// Chooses and makes the start; nleft is then the number of stations to compute. Returns 0,
// -1 (resection), -2 (pair) or -3 (guess).
int approx::start(spreading *s)
{
    s->nleft = nsta - s->nused;
    if (idebug) show_counts(s);
    if (s->nused == 0 && s->nresec != 0) {
        if (start_resec(s->table, &s->nresec, s->xap, s->yap, s->oap, s->itheo, s->iobj) != 0) return -1;
        s->nleft = nsta - s->nresec;
    }
    if (s->nused != 0 || s->nresec != 0) return 0;
    s->itransf = 1;
    s->nleft = nsta - 2;
    if (s->npair != 0)
        return colli_spread(s->npair, &s->iscale, s->table, s->itheo, s->iobj, s->xap, s->yap, s->oap) == 0 ? 0 : -2;
    return guess_spread(&s->iscale, s->table, s->itheo, s->iobj, s->xap, s->yap, s->oap) == 0 ? 0 : -3;
}

void approx::show_spread(const spreading *s)
{
    fprintf(out, "\nAll points have been computed\n");
    for (int i = 0; i < nsta; i++)
        fprintf(out, "%s %3d %15.5lf %15.5lf %15.5lf\n", points[i].name, s->itheo[i], s->xap[i], s->yap[i], s->oap[i]);
    for (int i = nsta; i < npoints; i++)
        fprintf(out, "%s %3d %15.5lf %15.5lf\n", points[i].name, s->iobj[i - nsta], s->xap[i], s->yap[i]);
}

// Every point takes its computed position, also one that was known; the arrays become zero.
void approx::write_points(spreading *s)
{
    for (int i = 0; i < npoints; i++) {
        points[i].xpt[0] = s->xap[i];
        points[i].xpt[1] = s->yap[i];
        s->xap[i] = s->yap[i] = 0.0;
    }
    for (int i = 0; i < nsta; i++) points[i].xex[2] = -s->oap[i];
}

// The course of a spread on arrays that its caller releases.
int approx::spread_with(spreading *s)
{
    if (take_spreading(s) != 0) return -7;
    s->iscale = 1;
    if (start_spread(s->table, &s->nused, &s->nresec, &s->npair, s->xap, s->yap, s->oap, s->itheo, s->iobj) != 0)
        return -9;
    const int result = start(s);
    if (result != 0) return result;
    while (s->nleft != 0)
        if (spread_step(&s->nleft, s->iscale, s->table, s->itheo, s->iobj, s->xap, s->yap, s->oap) != 0) return -5;
    if (idebug) show_spread(s);
    free_table(s);
    if (s->itransf && transformations(s->xap, s->yap, s->oap) != 0) return -6;
    write_points(s);
    if (dim == 3) height_spread(s->xap, s->yap);
    return 0;
}

// Returns 0, or
//   -1 the resection at the start failed      -5 nothing more to do, or a resection failed
//   -2 no start from a pair of stations       -6 the frame could not be transformed
//   -3 no start by a guess                    -7 no memory
//   -9 the tables could not be built (no network does this)
// After a failure no point is written but those reached by direction and distance.
int approx::spread()
{
    spreading s = spreading();
    const int result = spread_with(&s);
    free_spreading(&s);
    drop_lists();
    return result;
}

} // namespace vornengine
