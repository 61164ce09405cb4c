// The copies of the points of lumps: which copy stands for which epoch.
//
// The network was split by epoch when it was loaded, and the tables of that are gone: lumps
// and epochs are listed again from the host's records, and a point's copies, which lie in
// the order of its epochs, are told apart by the epochs at which directions sighted it.

#include "results/lumpcopies.h"

#include <stdlib.h>

#include "numerics/memory.h"
#include "vorn/message.h"

namespace vornengine {

enum { SIGHTED = 1, MIN_COPIES = 3 };

// ---- lumps and epochs of the host ----

static const char *point_name(const void *points, int i) { return ((const point *)points)[i].name; }
// A direction has no ends where loading stopped before it.
static const char *end_name(const point *p) { return p ? p->name : ""; }
static const char *from_name(const void *dir1, int i) { return end_name(((const measure *)dir1)[i].p1); }
static const char *to_name(const void *dir1, int i) { return end_name(((const measure *)dir1)[i].p2); }

// Place of a lump index in the table; a new one is appended.
static int enter_lump(lumpcopies *w, int ilump, int host)
{
    const int known = place_of(ilump, w->ilumtable, w->nlump, w->lumpindex);
    if (known >= 0) return known;
    if (w->lumpindex) numberindex_add(w->lumpindex, ilump, w->nlump);
    w->ilumtable[w->nlump] = ilump;
    w->first[w->nlump] = w->last[w->nlump] = host;
    return w->nlump++;
}

// The points of a host point take the number of lumps so far, which is that of their own lump
// only while the host lists its points lump by lump.
static void mark_points(lumpcopies *w, int host)
{
    for (int p = namechain_first(&w->byname, w->host.name(host)); p >= 0; p = w->byname.next[p])
        if ((p < w->nsta) == w->host.is_station(host)) w->points[p].ilump = w->nlump;
}

static void list_lumps(lumpcopies *w)
{
    const int nhost = w->host.nsta + w->host.ntar;
    for (int h = 0; h < nhost; h++) {
        w->next[h] = -1;
        const int ilump = w->host.active_lump(h);
        if (ilump == 0) continue;
        const int b = enter_lump(w, ilump, h);
        if (w->last[b] != h) w->next[w->last[b]] = h;
        w->last[b] = h;
        mark_points(w, h);
    }
    for (int i = 0; i < w->npoints; i++)
        if (w->points[i].ilump > 0 && w->points[i].ilump <= w->nlump) w->ncopies[w->points[i].ilump - 1]++;
}

// A direction that takes no part keeps the outcome of the search before it: behind a new epoch
// it enters its own time once more, which leaves a column without copies.
static void list_epochs(lumpcopies *w)
{
    bool is_new = false;
    for (int i = 0; i < w->ndirections; i++) {
        const measure_input *m = w->directions + i;
        if (m->typ > 0 && m->time != 0) is_new = place_of(m->time, w->itimetable, w->nepoch, w->epochindex) < 0;
        if (!is_new) continue;
        if (w->epochindex) numberindex_add(w->epochindex, m->time, w->nepoch);
        w->itimetable[w->nepoch++] = m->time;
    }
}

static bool take_tables(lumpcopies *w)
{
    const long long nhost = (long long)w->host.nsta + w->host.ntar;
    int **const lists[] = {&w->ilumtable, &w->first, &w->last, &w->next, &w->ncopies};
    bool all = true;
    for (size_t i = 0; i < sizeof lists / sizeof lists[0]; i++) {
        *lists[i] = (int *)zeroed(nhost, sizeof(int));
        all = all && *lists[i];
    }
    w->itimetable = (int *)zeroed(w->ndirections, sizeof(int));
    if (!all || !w->itimetable) return false;
    if (namechain_make(&w->byname, w->npoints, point_name, w->points) != 0) return false;
    if (namechain_make(&w->from, w->ndir1, from_name, w->dir1) != 0) return false;
    if (namechain_make(&w->to, w->ndir1, to_name, w->dir1) != 0) return false;
    w->lumpindex = numberindex_make(nhost);
    w->epochindex = numberindex_make(w->ndirections);
    return true;
}

int copies_make(lumpcopies *w)
{
    if (!take_tables(w)) {
        tell(w->fb, "usesimili: Could not allocate itimetable");
        return -1;
    }
    list_lumps(w);
    list_epochs(w);
    w->tab = (int *)zeroed((w->npoints + 1LL) * (w->nepoch + 1LL), sizeof(int));
    if (w->tab) return 0;
    tell(w->fb, "usesimili: Could not allocate tab");
    return -2;
}

void copies_free(lumpcopies *w)
{
    int **const lists[] = {&w->ilumtable, &w->first, &w->last, &w->next, &w->ncopies, &w->itimetable, &w->tab};
    for (size_t i = 0; i < sizeof lists / sizeof lists[0]; i++) {
        free(*lists[i]);
        *lists[i] = NULL;
    }
    numberindex_free(w->lumpindex);
    numberindex_free(w->epochindex);
    namechain_free(&w->byname);
    namechain_free(&w->from);
    namechain_free(&w->to);
    w->lumpindex = w->epochindex = NULL;
}

// ---- the table of one lump ----

static int *row(const lumpcopies *w, int r) { return w->tab + (size_t)r * ((size_t)w->nepoch + 1); }

const char *member_name(const lumpcopies *w, int r) { return w->host.name(row(w, r)[0]); }

int copy_at(const lumpcopies *w, int r, int c) { return row(w, r)[c + 1]; }

int *copy_counts(const lumpcopies *w) { return row(w, w->nrow) + 1; }

int column_of(const lumpcopies *w, int epoch)
{
    const int c = place_of(epoch, w->itimetable, w->nepoch, w->epochindex);
    return c >= 0 && copy_counts(w)[c] >= 0 ? c : -1;
}

// Marks the epochs at which directions touch a member: from a station, to a target.
static void mark_sightings(const lumpcopies *w, int host, int *cells)
{
    const namechain *ends = w->host.is_station(host) ? &w->from : &w->to;
    for (int d = namechain_first(ends, w->host.name(host)); d >= 0; d = ends->next[d]) {
        if (w->dir1[d].time <= 0) continue;
        const int c = place_of(w->dir1[d].time, w->itimetable, w->nepoch, w->epochindex);
        if (c >= 0) cells[c + 1] = SIGHTED;
    }
}

// Opens a row for each host point of lump b; 0, or -1 when there are more than points.
static int enter_members(lumpcopies *w, int b)
{
    w->nrow = 0;
    for (int h = w->first[b]; h >= 0; h = w->next[h]) {
        if (w->nrow == w->npoints) {
            if (w->idebug)
                fprintf(w->out, "usesimili: Could load tab(%s) %d\n", w->host.is_station(h) ? "sta" : "tar",
                        w->nrow + 1);
            tell(w->fb, "usesimili: Could not load tab");
            return -1;
        }
        int *cells = row(w, w->nrow++);
        cells[0] = h;
        for (int c = 1; c <= w->nepoch; c++) cells[c] = NO_COPY;
        mark_sightings(w, h, cells);
    }
    return 0;
}

// Gives the marked epochs of a row to the points of its name, in their order. Returns the
// points of that name; *left is the number of epochs for which there is none.
static int resolve_row(const lumpcopies *w, int r, int *left)
{
    int *cells = row(w, r);
    int c = 1, n = 0;
    for (int p = namechain_first(&w->byname, member_name(w, r)); p >= 0; p = w->byname.next[p], n++) {
        while (c <= w->nepoch && cells[c] != SIGHTED) c++;
        if (c <= w->nepoch) cells[c++] = p;
    }
    *left = 0;
    for (; c <= w->nepoch; c++) *left += cells[c] == SIGHTED;
    return n;
}

static void show_copies(const lumpcopies *w, int b)
{
    fprintf(w->out, "\nlump %d has %d points\n", w->ilumtable[b], w->nrow);
    for (int r = 0; r < w->nrow; r++) {
        fprintf(w->out, "%s   ", name_in(member_name(w, r), NAME_LENGTH + 1).text);
        for (int c = 0; c < w->nepoch; c++) fprintf(w->out, "%3d  ", copy_at(w, r, c));
        fprintf(w->out, "\n");
    }
}

// Copies of an epoch, of all epochs.
static int count_column(const lumpcopies *w, int c)
{
    int n = 0;
    for (int r = 0; r < w->nrow; r++) n += copy_at(w, r, c) >= 0;
    return n;
}

static int count_all(const lumpcopies *w)
{
    int n = 0;
    for (int c = 0; c < w->nepoch; c++) n += count_column(w, c);
    return n;
}

int copies_fill(lumpcopies *w, int b)
{
    if (enter_members(w, b) != 0) return -1;
    int nleft = 0;
    for (int r = 0; r < w->nrow; r++) {
        int left;
        if (resolve_row(w, r, &left) == 0) return -1;
        nleft += left;
    }
    if (w->idebug) show_copies(w, b);
    if (nleft != 0 || count_all(w) != w->ncopies[b]) {
        tell(w->fb, "usesimili: pb with ntot");
        return -1;
    }
    for (int c = 0; c < w->nepoch; c++) {
        const int n = count_column(w, c);
        copy_counts(w)[c] = n < MIN_COPIES ? FEW_COPIES : n;
    }
    return 0;
}

} // namespace vornengine
