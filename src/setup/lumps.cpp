// Lump check: which lumps stand, at which epochs, and from which reference.
//
// The adjustment moves a lump by seven parameters for each epoch but the reference. A lump
// stands when it has three points, horizontal directions sight it at two epochs, three times
// at each, and none sights it at epoch 0. Any other lump is dissolved: its points go back to
// the world. Reads the codes before numbering; writes nlump, lumps and ilump of the points.
//
// table[L][k] counts the sightings of lump L at the k-th epoch among the directions, each
// sighting once, whatever its point; tab_epoch[L][k] is 1 where they are enough. There is a
// column for each epoch that occurs. Example, times 0 7 3 7: columns 0 3 7.
//
// The tables are indexed by the lump's number at the start, id by its place among the lumps
// that stand. The records read both with the place, so that after a dissolved lump the
// epochs of a record are those of an earlier lump, perhaps of the dissolved one, which has none.

#include "vorn/run.h"

#include <stdlib.h>

#include "numerics/memory.h"
#include "setup/lumpdefs.h"
#include "loading/names.h"
#include "loading/numbers.h"
#include "vorn/records.h"

namespace vornengine {

enum { MIN_POINTS = 3, MIN_SIGHTINGS = 3, MIN_EPOCHS = 2, MIN_WORLD = 4 };

// Why a lump cannot stand; kept in place of its reference epoch.
enum { FEW_POINTS = -1, HAS_EPOCH_ZERO = -2, FEW_SIGHTINGS = -3, FEW_EPOCHS = -4 };

struct lumpwork {
    FILE *out;
    point *points; // [npoints]
    int npoints;
    const measure *dir1; // [ndir1]
    int ndir1;
    hostpoints host;

    int nlump;              // at the start
    int nepoch;             // columns
    int *epoch;             // [nepoch] distinct epochs of the directions from 0 up, ascending
    int *start;             // [nlump + 2] members of lump L: member[start[L]] to member[start[L + 1] - 1]
    int *member;            // numbers of points, lump by lump
    int *twin;              // [npoints] another member of the same name, in another lump, or -1
    nameindex *names;       // of the members
    nameindex *hostnames;   // of the points of the host
    int *tab_epoch, *table; // [nlump][nepoch]
    int *nusable;           // [nlump] usable epochs of a lump that stands, else 0
    int *iref;              // [nlump] reference epoch, or why the lump cannot stand
    int *id;                // [nstand] the host's index of each lump that stands
    int nstand;
};

// ---- work arrays ----

static void release_work(lumpwork *w)
{
    int *const arrays[] = {w->epoch, w->start, w->member, w->twin, w->tab_epoch, w->table, w->nusable, w->iref, w->id};
    for (size_t i = 0; i < sizeof arrays / sizeof arrays[0]; i++) free(arrays[i]);
    nameindex_free(w->names);
    nameindex_free(w->hostnames);
}

static int *take(long long n) { return (int *)zeroed(n, sizeof(int)); }

static bool take_arrays(lumpwork *w)
{
    w->epoch = take(w->ndir1);
    w->start = take(w->nlump + 2LL);
    w->member = take(w->npoints);
    w->twin = take(w->npoints);
    w->names = nameindex_make(w->npoints);
    w->hostnames = nameindex_make(count_of((long long)w->host.nsta + w->host.ntar));
    w->nusable = take(w->nlump);
    w->iref = take(w->nlump);
    w->id = take(w->nlump);
    return w->epoch && w->start && w->member && w->twin && w->names && w->hostnames && w->nusable && w->iref && w->id;
}

static bool failed(FILE *out, const char *what)
{
    fprintf(out, "lumpcheck: Cannot allocate %s\n", what);
    return false;
}

// ---- members and sightings ----

static int compare_int(const void *a, const void *b)
{
    const int x = *(const int *)a, y = *(const int *)b;
    return (x > y) - (x < y);
}

static void list_epochs(lumpwork *w)
{
    int n = 0;
    for (int i = 0; i < w->ndir1; i++)
        if (w->dir1[i].time >= 0) w->epoch[n++] = w->dir1[i].time;
    qsort(w->epoch, (size_t)n, sizeof(int), compare_int);
    for (int i = 0; i < n; i++)
        if (i == 0 || w->epoch[i] != w->epoch[i - 1]) w->epoch[w->nepoch++] = w->epoch[i];
}

// Column of an epoch, or -1.
static int column(const lumpwork *w, int epoch)
{
    const void *found = bsearch(&epoch, w->epoch, (size_t)w->nepoch, sizeof(int), compare_int);
    return found ? (int)((const int *)found - w->epoch) : -1;
}

static bool in_lump(const lumpwork *w, const point *p) { return p->ilump >= 1 && p->ilump <= w->nlump; }

// Sorts the points by lump: start[L + 1] runs from the first place of lump L to its last.
static void list_members(lumpwork *w)
{
    for (int i = 0; i < w->npoints; i++)
        if (in_lump(w, w->points + i)) w->start[w->points[i].ilump + 1]++;
    for (int i = 0; i < w->nlump; i++) w->start[i + 2] += w->start[i + 1];
    for (int i = 0; i < w->npoints; i++)
        if (in_lump(w, w->points + i)) w->member[w->start[w->points[i].ilump]++] = i;
}

// Enters the members' names, each once a lump; the members of one name are chained.
static void list_names(lumpwork *w)
{
    for (int i = 0; i < w->npoints; i++) w->twin[i] = -1;
    for (int k = 0; k < w->start[w->nlump]; k++) {
        const int p = w->member[k], q = nameindex_find(w->names, w->points[p].name);
        if (q < 0) {
            nameindex_add(w->names, w->points[p].name, p);
            continue;
        }
        const int last = w->twin[q] >= 0 ? w->twin[q] : q; // the one entered last
        if (w->points[last].ilump == w->points[p].ilump) continue;
        w->twin[p] = w->twin[q];
        w->twin[q] = p;
    }
}

static void list_host(lumpwork *w)
{
    for (int i = 0; i < w->host.nsta + w->host.ntar; i++) nameindex_add(w->hostnames, w->host.name(i), i);
}

static int *row(const lumpwork *w, int *t, int lump) { return t + (size_t)lump * (size_t)w->nepoch; }

static void count_sightings(lumpwork *w)
{
    for (const measure *m = w->dir1; m < w->dir1 + w->ndir1; m++) {
        const int k = column(w, m->time);
        if (k < 0) continue;
        for (int p = nameindex_find(w->names, m->p2->name); p >= 0; p = w->twin[p])
            row(w, w->table, w->points[p].ilump - 1)[k]++;
    }
}

static bool prepare_work(lumpwork *w)
{
    if (!take_arrays(w)) return failed(w->out, "arrays");
    list_epochs(w);
    list_members(w);
    list_names(w);
    list_host(w);
    w->tab_epoch = take((long long)w->nlump * w->nepoch);
    if (!w->tab_epoch) return failed(w->out, "columns for tab_epoch");
    w->table = take((long long)w->nlump * w->nepoch);
    if (!w->table) return failed(w->out, "columns for table");
    count_sightings(w);
    return true;
}

// ---- judgement ----

static bool unknown(int code) { return code != N_NONE && code != N_FIXED_MISSING; }

static bool fully_fixed(const point *p)
{
    for (int c = 0; c < 3; c++)
        if (unknown(p->n0[c]) || p->n1[c] != N_NONE) return false;
    return true;
}

// Epoch of the last direction from a fully fixed station, -1 when there is none.
static int world_epoch(const measure *dir1, int ndir1)
{
    for (int i = ndir1 - 1; i >= 0; i--)
        if (fully_fixed(dir1[i].p1)) return dir1[i].time;
    return -1;
}

// Reference epoch of a lump of n points: that of the world if it is sighted well enough, else
// the one sighted most, the earlier of two. least takes the smallest count that it rests on.
static int choose_reference(const lumpwork *w, const int *count, int world, int n, int *least)
{
    const int k = column(w, world);
    if (k >= 0 && count[k] >= MIN_WORLD) {
        *least = count[k];
        return world;
    }
    int iref = 0, best = 0;
    *least = n;
    for (int i = 0; i < w->nepoch; i++) {
        if (w->epoch[i] == 0 || count[i] == 0) continue;
        if (count[i] < *least) *least = count[i];
        if (count[i] > best) {
            best = count[i];
            iref = w->epoch[i];
        }
    }
    return iref;
}

// Marks the usable epochs of a lump; returns their number.
static int mark_epochs(const lumpwork *w, int lump)
{
    const int *count = row(w, w->table, lump);
    int n = 0;
    for (int i = 0; i < w->nepoch; i++) {
        if (w->epoch[i] == 0 || count[i] < MIN_SIGHTINGS) continue;
        row(w, w->tab_epoch, lump)[i] = 1;
        n++;
    }
    return n;
}

// Reference epoch of a lump, or why it cannot stand.
static int judge(const lumpwork *w, int lump, int world)
{
    const int *count = row(w, w->table, lump), n = w->start[lump + 1] - w->start[lump];
    if (n < MIN_POINTS) return FEW_POINTS;
    const int zero = column(w, 0);
    if (zero >= 0 && count[zero] != 0) return HAS_EPOCH_ZERO;
    int least;
    const int iref = choose_reference(w, count, world, n, &least);
    if (least < MIN_SIGHTINGS) return FEW_SIGHTINGS;
    const int nusable = mark_epochs(w, lump);
    if (nusable < MIN_EPOCHS) return FEW_EPOCHS;
    w->nusable[lump] = nusable;
    return iref;
}

static void dissolve(const lumpwork *w, int lump)
{
    static const char *const why[] = {"lumps must contain at least 3 points", "lumps must not contain epoch 0",
                                      "all epochs must have 3 points", "must have at least 2 epochs"};
    fprintf(w->out, "lumpcheck: %s\n", why[-w->iref[lump] - 1]);
    for (int k = w->start[lump]; k < w->start[lump + 1]; k++) {
        point *p = w->points + w->member[k];
        p->ilump = 0;
        fprintf(w->out, "           %8s put back to world\n", p->name);
    }
}

// The host's index of a lump, from the record that bears the name of its first member.
static int host_index(const lumpwork *w, int lump)
{
    const int i = nameindex_find(w->hostnames, w->points[w->member[w->start[lump]]].name);
    if (i >= 0) return w->host.lump(i);
    fprintf(w->out, "\nlumpcheck: stange no lump insex connection\n");
    return 0;
}

static void judge_lumps(lumpwork *w)
{
    const int world = world_epoch(w->dir1, w->ndir1);
    for (int lump = 0; lump < w->nlump; lump++) {
        w->iref[lump] = judge(w, lump, world);
        if (w->iref[lump] < 0)
            dissolve(w, lump);
        else
            w->id[w->nstand++] = host_index(w, lump);
    }
}

// ---- records ----

static bool take_doubles(double **const *field, int count, int n)
{
    bool all = true;
    for (int i = 0; i < count; i++) {
        *field[i] = (double *)zeroed(n, sizeof(double));
        all = all && *field[i];
    }
    return all;
}

// The arrays of n entries; deviations when the run makes them.
static bool take_record(lump *l, int n, bool deviations, FILE *out)
{
    double **values[] = {&l->tx, &l->ty, &l->tz, &l->rx, &l->ry, &l->rz, &l->scale};
    double **stds[] = {&l->stx, &l->sty, &l->stz, &l->srx, &l->sry, &l->srz, &l->sscale};
    l->epoch = take(n);
    l->iunk = take(n);
    if (!take_doubles(values, 7, n) || !l->epoch || !l->iunk) return failed(out, "lumps arrays");
    if (deviations && !take_doubles(stds, 7, n)) return failed(out, "lumps stds");
    return true;
}

// Start values of entry j from the host's definition, where it lists the epoch.
static void start_values(lump *l, int j, const lump_definition *def)
{
    const int t = defined_epoch(def, l->epoch[j]);
    if (t < 0) return;
    l->scale[j] = def->scale[t];
    l->tx[j] = def->tx[t];
    l->ty[j] = def->ty[t];
    l->tz[j] = def->tz[t];
    l->rx[j] = def->rx[t];
    l->ry[j] = def->ry[t];
    l->rz[j] = def->rz[t];
}

// The n entries of a record, from row i of the tables. A reference that is no usable epoch
// leaves one epoch more than there are entries: the last one gets none.
static void fill_epochs(lump *l, int n, const lumpwork *w, int i, const lump_definition *def)
{
    const int *usable = row(w, w->tab_epoch, i);
    for (int k = 0, j = 0; k < w->nepoch && j < n; k++) {
        if (!usable[k] || w->epoch[k] == l->iref) continue;
        l->epoch[j] = w->epoch[k];
        l->scale[j] = 1.0;
        if (def) start_values(l, j, def);
        if (l->kind == WITHOUT_SCALE) l->scale[j] = 1.0;
        j++;
    }
}

// The record at place i. A definition that describes epochs names their reference, if positive.
static bool build_lump(lump *l, const lumpwork *w, int i, const project *host, bool deviations)
{
    const int n = w->nusable[i] > 1 ? w->nusable[i] - 1 : 0;
    if (!take_record(l, n, deviations, w->out)) return false;
    l->nepoch = w->nusable[i];
    l->iref = w->iref[i];
    l->id = w->id[i];

    const lump_definition *def = find_definition(host, l->id);
    if (def) l->kind = def->kind;
    if (def && def->n > 0 && def->iref > 0) l->iref = def->iref;
    fill_epochs(l, n, w, i, def);
    return true;
}

int vornrun::build_lumps(const lumpwork *w)
{
    nlump = w->nstand;
    if (nlump == 0) return 0;
    lumps = (lump *)zeroed(nlump, sizeof(lump));
    if (!lumps) {
        fprintf(out, "lumpcheck: Cannot allocate lumps structure\n");
        return -1;
    }
    for (int i = 0; i < nlump; i++)
        if (!build_lump(lumps + i, w, i, pproject, irun == 1 || irun == -2)) return -1;
    return 0;
}

// Why there can be no lumps in this run, or null.
static const char *lumps_refused(const solverinput *in)
{
    if (in->iredux != 0) return "no reduction on observations with lumps now";
    if (in->dim != 3) return "treat lumps only in 3 dimensions";
    for (int i = 0; i < in->ndifh; i++)
        if (in->difh[i].time != 0) return "no dot treat height differrences now";
    for (int i = 0; i < in->ndir1; i++)
        if (in->dir1[i].time >= 2) return NULL;
    return "must have at least 2 epochs";
}

int vornrun::lumpcheck()
{
    const char *why = lumps_refused(this);
    if (why) {
        fprintf(out, "lumpcheck: %s\n", why);
        fprintf(out, "           elimate all lumps notions\n");
        nlump = 0;
        return 0;
    }
    lumpwork w = lumpwork();
    w.out = out;
    w.points = points;
    w.npoints = npoints;
    w.dir1 = dir1;
    w.ndir1 = ndir1;
    w.host = hosts();
    w.nlump = nlump;
    int result = -1;
    if (prepare_work(&w)) {
        judge_lumps(&w);
        result = build_lumps(&w);
    }
    release_work(&w);
    return result;
}

} // namespace vornengine
