// Resections that the known targets allow before anything else is known.

#include "approx/approx.h"

namespace vornengine {

// Resects station i. Returns 0 or -1.
int approx::resect_marked(int i, int **table, int *itheo, int *iobj, double *xap, double *yap, double *oap)
{
    if (resec(1, i, table, itheo, iobj, xap, yap, oap) < 0) return -1;
    itheo[i] = THEO_DONE;
    return 0;
}

// The only resection; it is of use when the station measured a distance. Returns 0 or -1.
int approx::lone_resection(int **table, int *nresec, double *xap, double *yap, double *oap, int *itheo, int *iobj)
{
    if (idebug) fprintf(out, "Only one resection possible at the start\n");
    for (int i = 0; i < nsta; i++) {
        if (itheo[i] != THEO_RESECT) continue;
        if (idebug) fprintf(out, "  Theo : %s\n", points[i].name);
        if (lengths.first[i + 1] > lengths.first[i]) return resect_marked(i, table, itheo, iobj, xap, yap, oap);
        if (idebug) fprintf(out, "and not a useful one...\n\n");
        *nresec = 0;
    }
    return 0;
}

// The first finished station other than i that shot the point, or -1.
int approx::finished_partner(int i, int p, const int *itheo) const
{
    for (int e = seenby.first[p]; e < seenby.first[p + 1]; e++)
        if (seenby.to[e] != i && itheo[seenby.to[e]] == THEO_DONE) return seenby.to[e];
    return -1;
}

// Targets that station i and another finished station shot.
void approx::intersect_targets(int i, int **table, const int *itheo, int *iobj, double *xap, double *yap, double *oap)
{
    for (int e = seen.first[i]; e < seen.first[i + 1]; e++) {
        const int p = seen.to[e];
        if (p < nsta || iobj[p - nsta] != OBJ_UNKNOWN) continue;
        const int k = finished_partner(i, p, itheo);
        if (k < 0) continue;
        intersect(i, k, p, table, xap, yap, oap);
        iobj[p - nsta] = OBJ_PLACED;
    }
}

int approx::start_resec(int **table, int *nresec, double *xap, double *yap, double *oap, int *itheo, int *iobj)
{
    if (*nresec == 1) return lone_resection(table, nresec, xap, yap, oap, itheo, iobj);
    if (idebug) fprintf(out, "Number of resections at the start = %d\n", *nresec);
    for (int i = 0; i < nsta; i++) {
        if (itheo[i] != THEO_RESECT) continue;
        if (idebug) fprintf(out, "  Theo : %s\n", points[i].name);
        if (resect_marked(i, table, itheo, iobj, xap, yap, oap) != 0) return -1;
        intersect_targets(i, table, itheo, iobj, xap, yap, oap);
    }
    return 0;
}

} // namespace vornengine
