// Loading pipeline: the order in which the records of the host become the network.
//
// Counts come first, for they size the arrays; points come before measures, for measures
// hold addresses of points. Reads the project; leaves points, the measure lists, baselines,
// cameras and image coordinates in metres and radians, ia1 and sigma0. The tables of the
// lumps live inside fill_vorn only: it releases them on every road, and load_network,
// which fills them, may return anywhere.

#include "vorn/run.h"

#include <limits.h>
#include <math.h>
#include <stdlib.h>

#include "numerics/memory.h"
#include "vorn/message.h"
#include "loading/numbers.h"
#include "vorn/records.h"
#include "loading/splitrows.h"

namespace vornengine {

// Numbers of unknowns are ints: three coordinates and three orientations a point, and as much
// again for all that is not counted by points. For more points there is no memory.
static const int MOST_POINTS = INT_MAX / 12;

// Tables of the lumps while the network is loaded.
struct lumptables {
    int *ilumtable;  // [nlump] distinct lump indexes
    int *itimetable; // [npdir1] distinct epochs of the directions, then zeros
    int **isplit;    // [nsplitsta + nsplittar][nepoch + 1] host index, then who is seen when
    int nsplitsta;   // selected stations in a lump
    int nsplittar;   // selected targets in a lump
    int nepoch;      // epochs by which points are split; 0 without isplit
};

int vornrun::fill_vorn()
{
    lumptables t = {NULL, NULL, NULL, 0, 0, 0};
    const int result = load_network(&t);
    const int nrow = count_of((long long)t.nsplitsta + t.nsplittar);
    if (result == 0) {
        clean_templump(t.ilumtable, t.itimetable, t.isplit, t.nepoch, nrow);
        if (icon == 2 || icon == 3) fill_connect();
    } else {
        free(t.ilumtable);
        free(t.itimetable);
        free_rows(t.isplit, nrow);
    }
    drop_hostindex();
    return result;
}

// Root of the mean a-priori variance of all observations; not a number without any.
static double unit_sigma(const solverinput *in)
{
    const double sum = in->ndist * in->sdist * in->sdist + in->ndifh * in->sdifh * in->sdifh +
                       in->ndir1 * in->sdir1 * in->sdir1 + in->ndir2 * in->sdir2 * in->sdir2 +
                       2.0 * in->nobsuv * in->suv * in->suv + in->naz * in->saz * in->saz +
                       in->ngps * in->sgps * in->sgps;
    const double n = (double)in->ndist + in->ndifh + in->ndir1 + in->ndir2 + 2.0 * in->nobsuv + in->naz + in->ngps;
    return n > 0.0 ? sqrt(sum / n) : NAN;
}

int vornrun::load_network(lumptables *t)
{
    if (iphoto == 1 && dim != 3) {
        dim = 3;
        tell_and_print(pfeedback, out, "fill_vorn: With photogrammetric data, dim=3");
    }
    t->ilumtable = (int *)zeroed((long long)npsta + nptar, sizeof(int));
    if (!t->ilumtable) give_up_lumps("fill_vorn: Could not allocate ilumtable=> no lumps");
    chk_numbers(t->ilumtable, &t->nsplitsta, &t->nsplittar);
    if (chk_connect() < 0) {
        tell_and_print(pfeedback, out, "fill_vorn: Stop in chk_connect");
        return -1;
    }
    count_observations(t);
    if (verif() < 0) {
        tell_and_print(pfeedback, out, "fill_vorn: Stop in verif");
        return -2;
    }
    sigma0 = unit_sigma(this);
    split_points(t);
    npoints = count_of((long long)nsta + ntar);
    if (vornallocate() < 0) {
        tell_and_print(pfeedback, out, "fill_vorn: Stop in vornallocate");
        return -3;
    }
    fill_pt(t->ilumtable, t->isplit, t->nsplitsta, t->nsplittar, t->nepoch);
    count_constants();
    return load_observations(t);
}

// Goes on without lumps when a table of theirs could not be had.
void vornrun::give_up_lumps(const char *why)
{
    tell(pfeedback, "%s", why);
    pproject->lumpmethod = 0;
    nlump = 0;
}

// Sizes of all lists of observations, and the number of epochs.
void vornrun::count_observations(lumptables *t)
{
    if (pproject->lumpmethod == 9) {
        t->itimetable = (int *)zeroed(npdir1, sizeof(int));
        if (!t->itimetable) give_up_lumps("fill_vorn: Could not allocate itimetable=> no lumps");
    }
    ndist = selectm(KIND_DISTANCE, t->itimetable);
    ndifh = selectm(KIND_HEIGHT_DIFFERENCE, t->itimetable);
    ndir1 = selectm(KIND_DIRECTION, t->itimetable);
    ndir2 = selectm(KIND_VERTICAL, t->itimetable);
    naz = selectm(KIND_AZIMUTH, t->itimetable);
    if (pproject->igps != 0)
        for (int i = 0; i < pproject->nbaselines; i++)
            if (pproject->baselines[i].status > 0) ngps++;
    if (pproject->lumpmethod == 9)
        while (t->nepoch < npdir1 && t->itimetable[t->nepoch] != 0) t->nepoch++;
    if (iphoto == 1) count_photo();
}

// nrow rows of nepoch + 1 zeros; null without memory, nothing is kept then.
static int **split_rows(int nrow, int nepoch)
{
    int **rows = (int **)zeroed(nrow, sizeof(int *));
    for (int i = 0; rows && i < nrow; i++) {
        rows[i] = (int *)zeroed(nepoch + 1LL, sizeof(int));
        if (rows[i]) continue;
        free_rows(rows, i);
        rows = NULL;
    }
    return rows;
}

// Builds isplit and adds the copies of the points that it splits.
void vornrun::split_points(lumptables *t)
{
    if (t->nepoch == 0) return;
    npoints = count_of((long long)t->nsplitsta + t->nsplittar);
    if (npoints > 0) {
        t->isplit = split_rows(npoints, t->nepoch);
        if (!t->isplit) {
            give_up_lumps("fill_vorn: Could not allocate isplit");
            t->nepoch = 0;
            return;
        }
    }
    fill_isplit(t->isplit, t->nsplitsta, t->nsplittar, t->nepoch, t->itimetable);
}

// Groups that use each constant. A group's typ is the sum of 6, 7, 8 for its constants.
void vornrun::count_constants()
{
    static const int with[3][4] = {{6, 13, 14, 21}, {7, 13, 15, 21}, {8, 14, 15, 21}};
    for (int i = 0; i < pproject->ngroups; i++)
        for (int j = 0; j < 3; j++)
            for (int k = 0; k < 4; k++)
                if (pproject->groups[i].typ == with[j][k]) ia1[6 + j]++;
}

int vornrun::load_observations(const lumptables *t)
{
    const struct {
        int kind, n, failure;
    } lists[] = {{KIND_DISTANCE, ndist, -4},
                 {KIND_HEIGHT_DIFFERENCE, ndifh, -5},
                 {KIND_DIRECTION, ndir1, -6},
                 {KIND_VERTICAL, ndir2, -7},
                 {KIND_AZIMUTH, naz, -9}};
    const int nlist = (int)(sizeof lists / sizeof lists[0]);
    for (int i = 0; i < nlist; i++) {
        if (lists[i].n <= 0) continue;
        if (fill_measure(lists[i].kind, t->isplit, t->nsplitsta, t->nsplittar, t->nepoch) < 0) return lists[i].failure;
    }
    if (pproject->igps != 0 && fill_gps() < 0) return -10;
    if (iphoto == 1 && fill_photo() < 0) return -8;
    return 0;
}

// Negates a code that would take part; 0 stays as it is.
static void exclude(int *code)
{
    if (*code > 0) *code = -*code;
}

int vornrun::verif()
{
    if (dim == 1) return verif1D();
    if (dim == 2) return verif2D();
    return verif3D();
}

// Heights only. The codes of the stations stand as the host left them.
int vornrun::verif1D()
{
    for (int i = 0; i < nptar; i++) {
        if (ptar[i].status <= 0) continue;
        exclude(&ptar[i].ix[0]);
        exclude(&ptar[i].ix[1]);
    }
    if (ndist != 0) deselall(KIND_DISTANCE);
    if (ndir1 != 0) deselall(KIND_DIRECTION);
    if (ndir2 != 0) deselall(KIND_VERTICAL);
    if (naz != 0) deselall(KIND_AZIMUTH);
    if (ndifh > 0) ndifh -= checkm(KIND_HEIGHT_DIFFERENCE);
    return ndifh < 1 ? -1 : 0;
}

// Plane positions and one orientation a station.
int vornrun::verif2D()
{
    for (int i = 0; i < npsta; i++) {
        if (psta[i].status <= 0) continue;
        exclude(&psta[i].ix[2]);
        exclude(&psta[i].ir[0]);
        exclude(&psta[i].ir[1]);
    }
    for (int i = 0; i < nptar; i++)
        if (ptar[i].status > 0) exclude(&ptar[i].ix[2]);
    if (ndifh != 0) deselall(KIND_HEIGHT_DIFFERENCE);
    if (ndir2 != 0) deselall(KIND_VERTICAL);
    check_list(KIND_DISTANCE);
    check_list(KIND_DIRECTION);
    check_list(KIND_AZIMUTH);
    return ndist == 0 && ndir1 == 0 && naz == 0 ? -2 : 0;
}

int vornrun::verif3D()
{
    check_list(KIND_DISTANCE);
    check_list(KIND_HEIGHT_DIFFERENCE);
    check_list(KIND_DIRECTION);
    check_list(KIND_VERTICAL);
    check_list(KIND_AZIMUTH);
    const bool none = ndist == 0 && ndifh == 0 && ndir1 == 0 && ndir2 == 0 && naz == 0;
    return none && iphoto == 0 && pproject->igps == 0 ? -3 : 0;
}

// Takes what checkm deselects from the count of a list; the count does not fall below 0.
void vornrun::check_list(int kind)
{
    int *n = listof(kind).n;
    if (*n > 0) *n -= checkm(kind);
    if (*n < 0) *n = 0;
}

int vornrun::vornallocate()
{
    if (npoints < 1) {
        fprintf(out, "\nMust have some points to adjust!!!\n");
        return -1;
    }
    drop_pointindex();
    points = (point *)zeroed(npoints <= MOST_POINTS ? npoints : -1, sizeof(point));
    if (!points) {
        fprintf(out, "\nProgram stops with the allocation of points\n");
        clean();
        return -1;
    }
    for (int i = 0; i < npoints; i++)
        for (int j = 0; j < 3; j++) points[i].defdatum[j] = DATUM_USED;
    const int result = allocate_lists();
    if (result < 0) clean();
    return result;
}

// Says which list has found no memory.
static int stopped(FILE *out, const char *name, int code)
{
    fprintf(out, "\nProgram stops with the allocation of %s\n", name);
    return code;
}

// An empty list stays null and is no failure.
static bool take_measures(measure **list, int n)
{
    if (n > 0) *list = (measure *)zeroed(n, sizeof(measure));
    return n <= 0 || *list;
}

int vornrun::allocate_lists()
{
    if (!take_measures(&dist, ndist)) return stopped(out, "dist", -1);
    if (!take_measures(&difh, ndifh)) return stopped(out, "difh", -1);
    if (!take_measures(&dir1, ndir1)) return stopped(out, "dir1", -1);
    if (!take_measures(&dir2, ndir2)) return stopped(out, "dir2", -1);
    if (!take_measures(&az, naz)) return stopped(out, "az", -1);
    if (ngps > 0) gps = (gpsbase *)zeroed(ngps, sizeof(gpsbase));
    if (ngps > 0 && !gps) return stopped(out, "gps", -1);
    if (ncamera > 0) cameras = (camera *)zeroed(ncamera, sizeof(camera));
    if (ncamera > 0 && !cameras) return stopped(out, "camera", -2);
    const bool u = take_measures(&obsuv1, nobsuv), v = take_measures(&obsuv2, nobsuv);
    if (!u || !v) return stopped(out, "obsuv", -2);
    return 0;
}

// Releases one measure list and forgets it.
static void release_list(measure **list)
{
    free(*list);
    *list = NULL;
}

static void release_lump(lump *l)
{
    free(l->iunk);
    free(l->epoch);
    double *const arrays[] = {l->tx,  l->ty,  l->tz,  l->rx,  l->ry,  l->rz,  l->scale,
                              l->stx, l->sty, l->stz, l->srx, l->sry, l->srz, l->sscale};
    for (size_t i = 0; i < sizeof arrays / sizeof arrays[0]; i++) free(arrays[i]);
}

void vornrun::drop_lumps()
{
    for (int i = 0; lumps && i < nlump; i++) release_lump(lumps + i);
    free(lumps);
    lumps = NULL;
    nlump = 0;
}

// lcon and Qcon are released where the results go back to the host.
void vornrun::clean()
{
    drop_pointindex();
    drop_hostindex();
    free(points);
    points = NULL;
    drop_lumps();
    free(cameras);
    cameras = NULL;
    measure **const lists[] = {&dist, &difh, &dir1, &dir2, &az, &obsuv1, &obsuv2};
    for (size_t i = 0; i < sizeof lists / sizeof lists[0]; i++) release_list(lists[i]);
    free(gps);
    gps = NULL;
    free(temp_res);
    temp_res = NULL;
}

} // namespace vornengine
