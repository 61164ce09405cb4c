// Point table: stations first, then targets, in the order of the host, each with its copies
// behind it when a lump splits it by epoch.
//
// Lengths become metres; orientations stand in radians already. Reads the host's stations,
// targets and groups; writes points, ia1[0..5], nweighted, nfixh, nstat100, the typ of the
// groups, and the point indexes of imported points in lcon. The sizes nsta and npoints may
// be smaller than what the host's records need: filling then stops at the end of the array.

#include "vorn/run.h"

#include <limits.h>
#include <stdlib.h>
#include <string.h>

#include "numerics/memory.h"
#include "vorn/message.h"
#include "loading/names.h"
#include "loading/numbers.h"
#include "vorn/records.h"

namespace vornengine {

// Groups of every station, in the order of the groups and of their members:
// station i belongs to group[start[i]] to group[start[i + 1] - 1].
struct membership {
    int *start; // [npsta + 1]
    int *group; // [start[npsta]]
};

static void release_membership(membership *m)
{
    free(m->start);
    free(m->group);
    m->start = m->group = NULL;
}

// Entries of a group that are indexes of stations; a member may be anything.
static bool is_station(int member, int nstation) { return member >= 0 && member < nstation; }

// Counts every station's entries in start[i + 1]. False when there are more than an int holds.
static bool count_members(int *start, int nstation, const group_input *groups, int ngroup)
{
    long long n = 0;
    for (int i = 0; i < ngroup; i++) {
        if (groups[i].typ < 0) continue;
        for (int j = 0; j < groups[i].nmember; j++) {
            if (!is_station(groups[i].member[j], nstation)) continue;
            if (++n > INT_MAX) return false;
            start[groups[i].member[j] + 1]++;
        }
    }
    for (int i = 0; i < nstation; i++) start[i + 1] += start[i];
    return true;
}

// Both arrays null without memory.
static membership make_membership(int nstation, const group_input *groups, int ngroup)
{
    if (nstation < 0) nstation = 0;
    membership m = {(int *)zeroed(nstation + 1LL, sizeof(int)), NULL};
    int *next = (int *)zeroed(nstation + 1LL, sizeof(int)); // place of a station's next entry
    if (m.start && next && count_members(m.start, nstation, groups, ngroup))
        m.group = (int *)zeroed(m.start[nstation], sizeof(int));
    if (!m.group) release_membership(&m);
    for (int i = 0; m.group && i < nstation; i++) next[i] = m.start[i];
    for (int i = 0; m.group && i < ngroup; i++) {
        if (groups[i].typ < 0) continue;
        for (int j = 0; j < groups[i].nmember; j++)
            if (is_station(groups[i].member[j], nstation)) m.group[next[groups[i].member[j]]++] = i;
    }
    free(next);
    return m;
}

// Where filling stands, and what it looks up.
struct pointwalk {
    int ip;                       // the next point
    int iplace;                   // the next place in lcon
    const int *ilumtable;         // [nlump] null: no lumps
    const numberindex *lumpindex; // of ilumtable, or null
    int **isplit;                 // null: no copies
    int first, end;               // rows of isplit of this kind
    int nepoch;                   // columns of isplit behind the first
    int irow;                     // row to try first
};

// Mixed coordinates: a height can be held while the plane position stays free.
static void hold_height(solverinput *in, point *p, const int ix[3])
{
    if (in->dim != 3 || in->iearth != 2 || ix[2] != CODE_FIXED) return;
    if (ix[0] == CODE_FIXED && ix[1] == CODE_FIXED) {
        p->n0[2] = N_NONE;
        return;
    }
    p->defdatum[2] = DATUM_FIXED_HEIGHT;
    in->nfixh++;
}

// Mixed coordinates with a single fixed height: on a station whose plane position is weighted
// the height counts as weighted as well, and the report says so.
static void lone_fixed_height(solverinput *in)
{
    FILE *out = in->out;
    for (int i = 0; i < in->nsta && i < in->npoints; i++) {
        point *p = in->points + i;
        if (p->defdatum[2] != DATUM_FIXED_HEIGHT) continue;
        if (p->defdatum[0] != DATUM_WEIGHTED || p->defdatum[1] != DATUM_WEIGHTED) continue;
        p->defdatum[2] = DATUM_WEIGHTED;
        in->nfixh = 0;
        fprintf(out, "\n***** temporary test in fill_pt()***\n");
        fprintf(out, "%s\n", p->name);
        fprintf(out, "%15.6lf%15.6lf%15.6lf\n", p->xpt[0], p->xpt[1], p->xpt[2]);
        fprintf(out, "%15.6lf%15.6lf%15.6lf\n", p->x0[0], p->x0[1], p->x0[2]);
        fprintf(out, "h = %15.6lf%%\n", p->h);
        fprintf(out, "\n*****                           ***\n");
        return;
    }
}

void vornrun::fill_pt(int *ilumtable, int **isplit, int nsplitsta, int nsplittar, int nepoch)
{
    for (int i = 0; i < 9; i++) ia1[i] = 0;
    nstat100 = 0;
    drop_pointindex();
    membership groups = make_membership(npsta, pproject->groups, pproject->ngroups);
    numberindex *lumpindex = ilumtable ? numberindex_of(ilumtable, nlump) : NULL;
    pointwalk w = {0, 0, ilumtable, lumpindex, isplit, 0, isplit ? nsplitsta : 0, nepoch, 0};
    fill_stations(&w, &groups);
    w.irow = w.first = w.end;
    w.end += isplit ? nsplittar : 0;
    fill_targets(&w);
    numberindex_free(lumpindex);
    release_membership(&groups);
    if (dim == 3 && iearth == 2 && nfixh == 1) lone_fixed_height(this);
}

void vornrun::fill_stations(pointwalk *w, const membership *groups)
{
    for (int i = 0; i < npsta && w->ip < npoints; i++) {
        const station_input *s = psta + i;
        if (s->status <= 0) continue;
        point *p = points + w->ip;
        const nametext name = name_in(s->name, sizeof s->name);
        memcpy(p->name, name.text, sizeof p->name);
        fill_coordinates(p, s->x, s->sx, s->ix, s->status);
        fill_orientations(p, s);
        if (s->typ == 2) fill_groups(p, i, groups);
        hold_height(this, p, s->ix);
        p->typ = s->ilevel == 1 ? 1 : 0;
        place_point(w, 1, i, s->ilump, s->iconn);
        if (w->ip > nsta) break;
    }
}

void vornrun::fill_targets(pointwalk *w)
{
    for (int i = 0; i < nptar && w->ip < npoints; i++) {
        const target_input *t = ptar + i;
        if (t->status <= 0) continue;
        point *p = points + w->ip;
        const nametext name = name_in(t->name, sizeof t->name);
        memcpy(p->name, name.text, sizeof p->name);
        fill_coordinates(p, t->x, t->sx, t->ix, t->status);
        hold_height(this, p, t->ix);
        if (t->status > 100) nstat100++;
        place_point(w, 2, i, t->ilump, t->iconn);
    }
}

// Code of a coordinate before numbering.
static int coordinate_code(int c, int status)
{
    if (c < 0) return N_NONE;
    if (status == STATUS_COMPUTE) return c == CODE_FIXED ? N_FIXED_MISSING : N_MISSING;
    return c == CODE_FIXED ? N_NONE : N_UNKNOWN;
}

// Coordinates and their roles in the datum; counts what is fixed and what is weighted.
void vornrun::fill_coordinates(point *p, const double x[3], const double sx[3], const int ix[3], int status)
{
    const double f = lengthfactor();
    for (int i = 0; i < 3; i++) {
        p->xpt[i] = f * x[i];
        p->sxpt[i] = f * sx[i];
        p->n0[i] = coordinate_code(ix[i], status);
        if (p->n0[i] < 0) ia1[i]++;
        if (ix[i] == CODE_NO_DATUM) p->defdatum[i] = DATUM_UNUSED;
        if (ix[i] == CODE_WEIGHTED) {
            p->defdatum[i] = DATUM_WEIGHTED;
            nweighted++;
        }
    }
}

// Orientations of a station, and its constants as they are without a group.
void vornrun::fill_orientations(point *p, const station_input *s)
{
    for (int i = 0; i < 3; i++) {
        p->xex[i] = s->r[i];
        p->sxex[i] = s->sr[i];
        p->n1[i] = s->ir[i] == CODE_FIXED || s->ir[i] < 0 ? N_NONE : N_UNKNOWN;
        if (p->n1[i] == N_NONE) ia1[3 + i]++;
        if (s->ir[i] == CODE_WEIGHTED) {
            p->defdatum[3 + i] = DATUM_WEIGHTED;
            nweighted++;
        }
        p->n1[3 + i] = N_NONE;
        p->xex[3 + i] = 0.0;
    }
    p->xex[4] = 1.0; // scale
}

// Gives a station the constants of its groups; of two groups the later one counts.
void vornrun::fill_groups(point *p, int ihost, const membership *groups)
{
    if (groups->start) {
        for (int i = groups->start[ihost]; i < groups->start[ihost + 1]; i++) fill_constants(p, groups->group[i]);
        return;
    }
    for (int i = 0; i < pproject->ngroups; i++) {
        const group_input *g = pproject->groups + i;
        if (g->typ < 0) continue;
        for (int j = 0; j < g->nmember; j++)
            if (g->member[j] == ihost) fill_constants(p, i);
    }
}

// Adds 6 + j to the typ of a group that does not yet hold constant j.
static void mark_constant(group_input *g, int j)
{
    static const int without[3][4] = {{0, 7, 8, 15}, {0, 6, 8, 14}, {0, 6, 7, 13}};
    for (int k = 0; k < 4; k++) {
        if (g->typ != without[j][k]) continue;
        g->typ += 6 + j;
        return;
    }
}

// Constants of one group. A weighted one gets no unknown number, but stays counted in the
// typ of its group.
void vornrun::fill_constants(point *p, int igroup)
{
    group_input *g = pproject->groups + igroup;
    for (int j = 0; j < 3; j++) {
        if (g->ic[j] == CODE_FIXED || g->ic[j] < 0) continue;
        mark_constant(g, j);
        p->n1[3 + j] = igroup;
        p->xex[3 + j] = g->c[j];
        if (g->ic[j] != CODE_WEIGHTED) continue;
        p->n1[3 + j] = N_NONE;
        p->e0[3 + j] = g->c[j];
        p->sxex[3 + j] = g->sc[j];
        nweighted++;
    }
}

// Number of copies of a point in a lump: its epochs less one; -1 when it is in no row or was
// never observed. Rows stand in the order of the host, so the search begins at w->irow, the
// row behind the last one found.
static int count_copies(pointwalk *w, int ihost)
{
    int row = w->irow;
    if (row >= w->end || w->isplit[row][0] != ihost)
        for (row = w->first; row < w->end && w->isplit[row][0] != ihost;) row++;
    if (row >= w->end) return -1;
    w->irow = row + 1;
    int n = 0;
    for (int c = 1; c <= w->nepoch; c++)
        if (w->isplit[row][c] != 0) n++;
    return n - 1;
}

// Lump, connected net and copies of the point at w->ip; moves w->ip behind them.
// kind is 1 for a station, 2 for a target.
void vornrun::place_point(pointwalk *w, int kind, int ihost, int ilump, int iconn)
{
    int ncopy = -1;
    if (ilump != 0) {
        if (w->ilumtable) points[w->ip].ilump = place_of(ilump, w->ilumtable, nlump, w->lumpindex) + 1;
        if (w->nepoch != 0) ncopy = count_copies(w, ihost);
    }
    if (iconn == 2 && lcon && w->iplace < nimport) {
        lcon[w->iplace] = w->ip;
        if (w->iplace + 1 < nimport) w->iplace++;
    }
    if (ncopy > 0) {
        if (idebug)
            fprintf(out,
                    kind == 1 ? "fill_pt: must duplicate station %s %d times\n"
                              : "fill_pt: must duplicate target %s %d times\n",
                    points[w->ip].name, ncopy);
        duplicate(kind, w->ip, ncopy);
        w->ip = ncopy < npoints - w->ip ? w->ip + ncopy : npoints - 1;
    }
    w->ip++;
}

// Copies hold what the point is, not where: coordinates, constants and n1[5] stay 0.
void vornrun::duplicate(int, int ipoint, int ncopy)
{
    drop_pointindex();
    const point *from = points + ipoint;
    for (int k = 1; k <= ncopy && k < npoints - ipoint; k++) {
        point *to = points + ipoint + k;
        memcpy(to->name, from->name, sizeof to->name);
        to->typ = from->typ;
        for (int i = 0; i < 3; i++) to->n0[i] = N_MISSING;
        for (int i = 0; i < 5; i++) to->n1[i] = from->n1[i];
        for (int i = 0; i < 8; i++) to->defdatum[i] = from->defdatum[i];
    }
}

void vornrun::drop_pointindex()
{
    nameindex_free(pointindex);
    pointindex = NULL;
}

void vornrun::drop_hostindex()
{
    nameindex_free(hostindex);
    hostindex = NULL;
}

int vornrun::vornsearch(const char *name)
{
    if (!points || npoints < 1) return -1;
    if (!pointindex) {
        pointindex = nameindex_make(npoints);
        for (int i = 0; pointindex && i < npoints; i++) nameindex_add(pointindex, points[i].name, i);
    }
    if (pointindex) return nameindex_find(pointindex, name);
    for (int i = 0; i < npoints; i++)
        if (same_name(points[i].name, name)) return i;
    return -1;
}

// Stations and targets whose status is not negative, by name; null without memory.
static nameindex *index_host(const station_input *sta, int nsta, const target_input *tar, int ntar)
{
    if ((long long)nsta + ntar > INT_MAX) return NULL;
    nameindex *ix = nameindex_make(nsta + ntar);
    for (int i = 0; ix && i < nsta; i++)
        if (sta[i].status >= 0) nameindex_add(ix, sta[i].name, i);
    for (int i = 0; ix && i < ntar; i++)
        if (tar[i].status >= 0) nameindex_add(ix, tar[i].name, nsta + i);
    return ix;
}

int vornrun::searchnam(const char *name)
{
    if (!hostindex) hostindex = index_host(psta, npsta, ptar, nptar);
    if (hostindex) return nameindex_find(hostindex, name);
    for (int i = 0; i < npsta; i++)
        if (psta[i].status >= 0 && same_name(psta[i].name, name)) return i;
    for (int i = 0; i < nptar; i++)
        if (ptar[i].status >= 0 && same_name(ptar[i].name, name)) return npsta + i;
    return -1;
}

} // namespace vornengine
