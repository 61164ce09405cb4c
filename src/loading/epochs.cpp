// Epochs and the splitting of points.
//
// A lump is a group of points that moves rigidly between epochs. With methodology 9 a point
// of a lump appears once for each epoch in which a direction touches it: from a station, to
// a target. The rows of isplit stand in the order of the host, stations first, then targets:
// isplit[row][0] is the host index, isplit[row][c] the epoch itimetable[c - 1] when the point
// was observed then, otherwise 0. Example, epochs 3 and 5, host station 4 seen at 5 only,
// host target 0 at both:  4 0 5  and  0 3 5.

#include "vorn/run.h"

#include <stdlib.h>

#include "vorn/message.h"
#include "loading/names.h"
#include "loading/numbers.h"
#include "vorn/records.h"
#include "loading/splitrows.h"

namespace vornengine {

// Which end of a direction a point of a lump stands at: stations at from, targets at to.
enum { AT_STATION, AT_TARGET };

static const char *end_of(const measure_input *m, int which) { return which == AT_STATION ? m->from : m->to; }

// Selected directions without epoch, by the name at one end; null without memory.
static nameindex *index_untimed(const measure_input *list, int n, int which)
{
    nameindex *ix = nameindex_make(n);
    for (int i = 0; ix && i < n; i++)
        if (list[i].typ > 0 && list[i].time == 0) nameindex_add(ix, end_of(list + i, which), i);
    return ix;
}

// The first selected direction without epoch at a point, or -1.
static int untimed(const measure_input *list, int n, int which, const char *name, const nameindex *ix)
{
    if (ix) return nameindex_find(ix, name);
    for (int i = 0; i < n; i++)
        if (list[i].typ > 0 && list[i].time == 0 && same_name(end_of(list + i, which), name)) return i;
    return -1;
}

// What counting the lumps needs beside the project; both indexes may be null.
struct lumpcount {
    int *ilumtable;         // [nlump] null: lumps are not told apart
    numberindex *lumpindex; // of ilumtable
    nameindex *untimed;     // directions without epoch
    int which;              // end of a direction
};

void vornrun::chk_numbers(int *ilumtable, int *nsplitsta, int *nsplittar)
{
    nsta = ntar = 0;
    *nsplitsta = *nsplittar = 0;
    lumpcount c = {ilumtable, NULL, NULL, AT_STATION};
    if (ilumtable) c.lumpindex = numberindex_make((long long)npsta + nptar);
    for (int i = 0; i < npsta; i++) {
        if (psta[i].status <= 0) continue;
        nsta++;
        if (psta[i].iconn == 1) nexport++;
        if (psta[i].iconn == 2) nimport++;
        if (count_lump(&c, psta[i].name, &psta[i].ilump)) ++*nsplitsta;
    }
    nameindex_free(c.untimed);
    c.untimed = NULL;
    c.which = AT_TARGET;
    for (int i = 0; i < nptar; i++) {
        if (ptar[i].status <= 0) continue;
        ntar++;
        if (ptar[i].iconn == 1) nexport++;
        if (ptar[i].iconn == 2) nimport++;
        if (count_lump(&c, ptar[i].name, &ptar[i].ilump)) ++*nsplittar;
    }
    nameindex_free(c.untimed);
    numberindex_free(c.lumpindex);
    if (pproject->lumpmethod == 0) {
        nlump = 0;
    } else if (nlump == 0) {
        tell(pfeedback, "fill_vorn: Put back the lump methodology to 0");
        pproject->lumpmethod = 0;
    }
}

// Enters the lump of a point. A point with a direction without epoch loses its lump in the
// host's record. Returns whether the point has one.
bool vornrun::count_lump(lumpcount *c, const char *field, int *ilump)
{
    if (*ilump == 0) return false;
    if (!c->untimed) c->untimed = index_untimed(pdir1, npdir1, c->which);
    const int i = untimed(pdir1, npdir1, c->which, field, c->untimed);
    if (i >= 0) {
        const nametext from = name_in(pdir1[i].from, sizeof pdir1[i].from);
        const nametext to = name_in(pdir1[i].to, sizeof pdir1[i].to);
        fprintf(out, "fill_vorn: no time for %s to %s\n", from.text, to.text);
        fprintf(out, "           put lump index 0 to %s\n", c->which == AT_STATION ? from.text : to.text);
        *ilump = 0;
        return false;
    }
    if (c->ilumtable && place_of(*ilump, c->ilumtable, nlump, c->lumpindex) < 0) {
        if (c->lumpindex) numberindex_add(c->lumpindex, *ilump, nlump);
        c->ilumtable[nlump++] = *ilump;
    }
    return true;
}

// Enters the points of lumps in rows from nfilled on, at most up to nrow; returns the rows filled.
static int enter_rows(const hostpoints *host, int **isplit, int nfilled, int nrow)
{
    for (int i = 0; i < host->nsta + host->ntar && nfilled < nrow; i++)
        if (host->active_lump(i) != 0) isplit[nfilled++][0] = i;
    return nfilled;
}

// Marks in every row the epochs of the directions that touch its point. A direction marks the
// first row of its name; the other rows of that name then take its marks.
static void mark_epochs(splitrows *s, int which, const measure_input *list, int n, const int *itimetable)
{
    chain_rows(s);
    numberindex *epochs = numberindex_of(itimetable, s->nepoch);
    for (int i = 0; i < n && s->n > 0; i++) {
        if (list[i].typ <= 0) continue;
        const int r = next_row(s, end_of(list + i, which), -1);
        const int c = r < 0 ? -1 : place_of(list[i].time, itimetable, s->nepoch, epochs);
        if (c >= 0) s->rows[r][c + 1] = itimetable[c];
    }
    for (int r = 0; r < s->n; r++) {
        const int first = next_row(s, row_name(s, r), -1);
        for (int c = 1; first < r && c <= s->nepoch; c++) s->rows[r][c] = s->rows[first][c];
    }
    numberindex_free(epochs);
    unchain_rows(s);
}

static void show_rows(FILE *out, const splitrows *s)
{
    for (int r = 0; r < s->n; r++) {
        fprintf(out, "%s   ", name_in(row_name(s, r), NAME_LENGTH + 1).text);
        for (int c = 1; c <= s->nepoch; c++) fprintf(out, "%3d ", s->rows[r][c]);
        fprintf(out, "\n");
    }
}

// Entries that are set in the rows from first to end - 1.
static long long count_marks(int **isplit, int first, int end, int nepoch)
{
    long long n = 0;
    for (int r = first; r < end; r++)
        for (int c = 1; c <= nepoch; c++)
            if (isplit[r][c] != 0) n++;
    return n;
}

void vornrun::fill_isplit(int **isplit, int nsplitsta, int nsplittar, int nepoch, int *itimetable)
{
    const int nrow = count_of((long long)nsplitsta + nsplittar);
    const hostpoints stations = {psta, npsta, NULL, 0}, targets = {NULL, 0, ptar, nptar};
    const int nsplit = enter_rows(&stations, isplit, 0, nrow);
    npoints = enter_rows(&targets, isplit, nsplit, nrow); // counts the rows
    splitrows sta = {stations, nsplit, nepoch, isplit, {}};
    splitrows tar = {targets, npoints - nsplit, nepoch, isplit ? isplit + nsplit : NULL, {}};
    mark_epochs(&sta, AT_STATION, pdir1, npdir1, itimetable);
    mark_epochs(&tar, AT_TARGET, pdir1, npdir1, itimetable);
    if (idebug) {
        fprintf(out, "table for points dissociation\n");
        show_rows(out, &sta);
        show_rows(out, &tar);
    }

    const long long nmoresta = count_marks(isplit, 0, nsplitsta, nepoch) - nsplitsta;
    if (idebug) fprintf(out, "\nDissociation of points for lumps\n");
    if (idebug && nmoresta > 0) fprintf(out, "Must add %d theodolites\n", count_of(nmoresta));
    nsta = count_of(nsta + nmoresta);

    // Targets are counted in rows nsplitsta to nsplittar - 1, which are not all of theirs: the
    // number can come out low, or negative. fill_pt then stops at the end of the array.
    const long long nmoretar = count_marks(isplit, nsplitsta, nsplittar, nepoch) - nsplittar;
    if (idebug) fprintf(out, "\nDissociation of points for lumps\n");
    if (idebug && nmoretar > 0) fprintf(out, "Must add %d object points\n", count_of(nmoretar));
    ntar = count_of(ntar + nmoretar);
}

void vornrun::clean_templump(int *ilumtable, int *itimetable, int **isplit, int nepoch, int nrow)
{
    free(ilumtable);
    free(itimetable);
    if (nepoch == 0) return;
    free_rows(isplit, nrow);
    nlump = 0;
    for (int i = 0; points && i < npoints; i++) points[i].ilump = 0;
}

} // namespace vornengine
