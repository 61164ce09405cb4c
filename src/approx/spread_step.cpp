// One pass of the spreading: stations that have become resectable are resected in their order,
// and what they open up is intersected.

#include "approx/approx.h"

namespace vornengine {

// Points of known position that station i sees.
int approx::known_sights(int i, const int *itheo, const int *iobj) const
{
    int n = 0;
    for (int e = seen.first[i]; e < seen.first[i + 1]; e++) {
        const int j = seen.to[e];
        n += j < nsta ? itheo[j] == THEO_PLACED || itheo[j] == THEO_DONE : iobj[j - nsta] == OBJ_PLACED;
    }
    return n;
}

// Marks every unfinished station that can be resected, also one of which position or
// orientation is known. A marked station does not count as known for those after it.
int approx::mark_resectable(int *itheo, const int *iobj) const
{
    int nmarked = 0;
    for (int i = 0; i < nsta; i++) {
        if (itheo[i] == THEO_DONE || known_sights(i, itheo, iobj) < 3) continue;
        itheo[i] = THEO_RESECT;
        nmarked++;
    }
    return nmarked;
}

// Nothing can be resected: what do the unfinished stations see? Whatever that diagnosis finds,
// it only goes to the report.
void approx::diagnose(int **table, int *itheo, int *iobj)
{
    if (idebug) fprintf(out, "\nTry patching...\n");
    for (int i = 0; i < nsta; i++) {
        if (itheo[i] == THEO_DONE || patch_spread(i, table, itheo, iobj) != 0) continue;
        fprintf(out, "\nPatching successful ... now what??\n");
        return;
    }
    fprintf(out, "\n!! Cannot do anything more !!\n");
}

// Stations without a position that station i and another finished station shot. One that gets
// its position and had its orientation is finished, without leaving the count of those to do.
void approx::intersect_stations(int i, int **table, int *itheo, double *xap, double *yap, double *oap)
{
    for (int e = seen.first[i]; e < seen.first[i + 1]; e++) {
        const int s = seen.to[e];
        if (s >= nsta || (itheo[s] != THEO_UNKNOWN && itheo[s] != THEO_ORIENTED)) continue;
        const int k = finished_partner(i, s, itheo);
        if (k < 0) continue;
        intersect(i, k, s, table, xap, yap, oap);
        itheo[s] = itheo[s] == THEO_UNKNOWN ? THEO_PLACED : THEO_DONE;
    }
}

int approx::spread_step(int *nleft, int iscale, int **table, int *itheo, int *iobj, double *xap, double *yap,
                        double *oap)
{
    if (mark_resectable(itheo, iobj) == 0) {
        diagnose(table, itheo, iobj);
        return -4;
    }
    for (int i = 0; i < nsta; i++) {
        if (itheo[i] != THEO_RESECT) continue;
        if (resec(iscale, i, table, itheo, iobj, xap, yap, oap) < 0) return -1;
        itheo[i] = THEO_DONE;
        (*nleft)--;
        intersect_targets(i, table, itheo, iobj, xap, yap, oap);
        intersect_stations(i, table, itheo, xap, yap, oap);
    }
    return 0;
}

} // namespace vornengine
