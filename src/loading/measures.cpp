// Measure table: the selected records of one host list become measures.
//
// Names become addresses in points; lengths metres, angles radians; the heights of instrument
// and target stay as given. With points split by epoch, an observation that has an epoch goes
// to the copies of that epoch: the copies of a point stand behind it in the order of the
// non-zero columns of its row in isplit, and the first of them is the point itself.

#include "vorn/run.h"

#include <stdio.h>

#include "loading/names.h"
#include "vorn/records.h"
#include "loading/splitrows.h"

namespace vornengine {

// Says which angle the host cannot read.
static int unreadable(FILE *out, const char *line, int code)
{
    fputs(line, out);
    return code;
}

// Column of an epoch in a row, or 0. Empty columns on the way are added to nempty.
static int epoch_column(const splitrows *s, int row, int time, int *nempty)
{
    for (int c = 1; c <= s->nepoch; c++) {
        if (s->rows[row][c] == 0)
            ++*nempty;
        else if (s->rows[row][c] == time)
            return c;
    }
    return 0;
}

// Visits in order the rows of the stations at both ends. True when the epoch was found.
// nempty goes on from row to row. A station at the far end is placed from ip1 as well.
static bool redirect_stations(const splitrows *s, const measure_input *m, int *nempty, int *ip1, int *ip2)
{
    int ifrom = next_row(s, m->from, -1), ito = next_row(s, m->to, -1);
    while (ifrom >= 0 || ito >= 0) {
        const bool near = ifrom >= 0 && (ito < 0 || ifrom <= ito);
        const int row = near ? ifrom : ito;
        const int c = epoch_column(s, row, m->time, nempty);
        if (c > 0) {
            *(near ? ip1 : ip2) = *ip1 - 1 + c - *nempty;
            return true;
        }
        if (row == ito) ito = next_row(s, m->to, ito);
        if (near) ifrom = next_row(s, m->from, ifrom);
    }
    return false;
}

// Visits in order the rows of the target at the far end.
static void redirect_target(const splitrows *s, const measure_input *m, int nempty, int *ip2, FILE *trace)
{
    for (int row = next_row(s, m->to, -1); row >= 0; row = next_row(s, m->to, row)) {
        const int c = epoch_column(s, row, m->time, &nempty);
        if (c == 0) continue;
        const int ip = *ip2 - 1 + c - nempty;
        if (trace) fprintf(trace, "change ip2 from %d to %d\n", *ip2, ip);
        *ip2 = ip;
        return;
    }
}

// Finds the points of a record, of its epoch when points are split. Returns 0, -1 without the
// first or -2 without the second point; a copy outside the points is none.
int vornrun::find_ends(const measure_input *m, int ihost, const splitrows *sta, const splitrows *tar, int *ip1,
                       int *ip2)
{
    *ip1 = vornsearch(m->from);
    if (*ip1 < 0) return -1;
    *ip2 = vornsearch(m->to);
    if (*ip2 < 0) return -2;
    if (sta->nepoch == 0 || m->time == 0) return 0;
    if (idebug)
        fprintf(out, "fill_measure: %-5d : %s to %s at %d\n", ihost, name_in(m->from, sizeof m->from).text,
                name_in(m->to, sizeof m->to).text, m->time);
    int nempty = 0;
    if (!redirect_stations(sta, m, &nempty, ip1, ip2)) redirect_target(tar, m, nempty, ip2, idebug ? out : NULL);
    if (*ip1 < 0 || *ip1 >= npoints) return -1;
    return *ip2 < 0 || *ip2 >= npoints ? -2 : 0;
}

// Value and standard deviation in metres or radians, by the record's own typ. Returns 0, or -4
// or -5 when the host cannot read the angle: it then gives exactly 2 pi, or pi for a vertical.
int vornrun::fill_value(const measure_input *m, double val[2])
{
    const double f = m->typ <= KIND_HEIGHT_DIFFERENCE ? lengthfactor() : 1.0;
    val[0] = f * m->val;
    val[1] = f * m->sig;
    if (m->typ == KIND_DIRECTION) {
        val[0] = pproject->rawtoh(1, m->val);
        if (val[0] == 2 * pi) return unreadable(out, "fill_measure: horizontal directions..\n", -4);
        val[1] = pproject->rawtoh(2, m->sig);
    } else if (m->typ == KIND_AZIMUTH) {
        val[0] = pproject->rawtoaz(1, m->val);
        if (val[0] == 2 * pi) return unreadable(out, "fill_measure: azimuth angles..\n", -4);
        val[1] = pproject->rawtoaz(2, m->sig);
    } else if (m->typ == KIND_VERTICAL) {
        val[0] = pproject->rawtov(1, m->val);
        if (val[0] == pi) return unreadable(out, "fill_measure: vertical angles..\n", -5);
        val[1] = pproject->rawtov(2, m->sig);
    }
    return 0;
}

int vornrun::fill_measure(int kind, int **isplit, int nsplitsta, int nsplittar, int nepoch)
{
    splitrows sta = {{psta, npsta, NULL, 0}, isplit ? nsplitsta : 0, nepoch, isplit, {}};
    splitrows tar = {{NULL, 0, ptar, nptar}, isplit ? nsplittar : 0, nepoch, isplit ? isplit + nsplitsta : NULL, {}};
    if (nepoch != 0) {
        chain_rows(&sta);
        chain_rows(&tar);
    }
    const int result = fill_list(kind, &sta, &tar);
    unchain_rows(&sta);
    unchain_rows(&tar);
    return result;
}

int vornrun::fill_list(int kind, const splitrows *sta, const splitrows *tar)
{
    const kindlist lists = listof(kind);
    measure *list = lists.list;
    int k = 0;
    for (int i = 0; i < lists.nhost && k < *lists.n; i++) {
        const measure_input *m = lists.host + i;
        if (m->typ <= 0) continue;
        // Constants of the station: it is the distance of this number that is marked.
        if (m->typ == KIND_DISTANCE_CONSTANTS && k < ndist && dist) dist[k].typ = 1;
        int ip1, ip2;
        const int found = find_ends(m, i, sta, tar, &ip1, &ip2);
        if (found != 0) return found;
        list[k].p1 = points + ip1;
        list[k].p2 = points + ip2;
        list[k].h1 = m->h1;
        list[k].h2 = m->h2;
        points[ip1].ntie++;
        points[ip2].ntie++;
        const int unread = fill_value(m, list[k].val);
        if (unread != 0) return unread;
        list[k].time = m->time;
        k++;
    }
    fflush(out);
    return 0;
}

} // namespace vornengine
