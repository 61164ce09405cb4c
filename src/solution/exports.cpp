// What the inverse leaves for other programs: the cofactors of the exported points of a
// connected net, and the file "tessalpin.cov" with the cofactors of chosen stations.
//
// Qcon is a packed lower triangle (numerics/packed.h), coordinate c of the p-th exported point
// in row dim p + c. All numbers are plain cofactors, without the variance factor.

#include "solution/solution.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>

#include "numerics/memory.h"
#include "numerics/packed.h"
#include "numerics/sidefile.h"
#include "vorn/sidefiles.h"
#include "loading/connect.h"
#include "vorn/message.h"
#include "loading/names.h"

namespace vornengine {

// ---- connected net ----

// Index of the first of n points from first on with that name, or -1.
static int point_named(const point *points, const char *name, int first, int n)
{
    for (int i = first; i < first + n; i++)
        if (same_name(points[i].name, name)) return i;
    return -1;
}

// Enters the point of an exported host record behind the n that lcon holds; returns their new
// number, at most nexport.
static int collect(const network *net, int n, int iconn, const char *name, int first, int npoint)
{
    if (iconn != 1) return n;
    const int ip = point_named(net->points, name, first, npoint);
    if (ip < 0 || n >= net->nexport) return n;
    net->lcon[n] = ip;
    return n + 1;
}

// Exported points, the host's targets before its stations, into lcon; returns their number.
static int collect_exports(const solverinput *in)
{
    int n = 0;
    for (const target_input *t = in->ptar; t < in->ptar + in->nptar; t++)
        n = collect(in, n, t->iconn, name_in(t->name, sizeof t->name).text, in->nsta, in->ntar);
    for (const station_input *s = in->psta; s < in->psta + in->npsta; s++)
        n = collect(in, n, s->iconn, name_in(s->name, sizeof s->name).text, 0, in->nsta);
    return n;
}

// Turns the n point indexes in lcon into first unknowns, without those that cannot be
// exported; returns how many remain. The places behind them are -1.
static int keep_blocks(const solverinput *in, int n)
{
    int nkept = 0;
    for (int i = 0; i < n; i++) {
        const point *p = in->points + in->lcon[i];
        const int u = block_unknown(p, in->dim);
        in->lcon[i] = -1;
        if (u == N_NONE)
            tell_and_print(in->pfeedback, in->out, "writeQcon: %s cannot be exported", p->name);
        else
            in->lcon[nkept++] = u;
    }
    return nkept;
}

// Takes the exported block out of the inverse: lcon and Qcon, an import in them ends here.
// nexport sinks when points drop out; that of the run stays.
void solution::writeQcon()
{
    if (nimport > 0) {
        memset(lcon, 0, sizeof *lcon * nimport);
        memset(Qcon, 0, sizeof *Qcon * (size_t)packed_size((long long)dim * nimport));
    }
    nexport = collect_exports(this);
    const int nkept = keep_blocks(this, nexport);
    if (nkept != nexport) tell_and_print(pfeedback, out, "writeQcon: had %d exports (vs %d wanted)", nkept, nexport);
    nexport = nkept;

    const int n = dim * nexport;
    for (int i = 0; i < n; i++)
        for (int j = 0; j <= i; j++) Qcon[packed_place(i, j)] = Q(lcon[i / dim] + i % dim, lcon[j / dim] + j % dim);
}

// ---- covariance of stations ----

// A station whose six unknowns are all there.
static bool estimated(const point *p)
{
    for (int c = 0; c < 3; c++)
        if (p->n0[c] == N_NONE || p->n1[c] == N_NONE) return false;
    return true;
}

// Name in the first 8 characters of a line, filled up with blanks; a line ends as on Linux or as
// on Windows.
static void linename(const char *line, char name[9])
{
    int n = 0;
    while (n < 8 && line[n] != '\0' && line[n] != '\n' && line[n] != '\r') {
        name[n] = line[n];
        n++;
    }
    while (n < 8) name[n++] = ' ';
    name[8] = '\0';
}

// Marks the stations that the lines of f name; returns their number. A line has at most 89
// characters.
static int choose_stations(const network *in, FILE *f, int *chosen)
{
    char line[90], name[9];
    int n = 0;
    while (fgets(line, sizeof line, f)) {
        linename(line, name);
        const int i = point_named(in->points, name, 0, in->nsta);
        if (i >= 0 && chosen[i] == 0 && estimated(in->points + i)) chosen[i] = ++n;
    }
    return n;
}

// Unknown k of a station: 0 to 2 its coordinates, 3 to 5 its orientation.
static int station_unknown(const point *p, int k, int nunk1) { return k < 3 ? p->n0[k] : nunk1 + p->n1[k - 3]; }

// Writes the cofactors of the unknown row with all unknowns of the chosen stations, their
// coordinates before their orientations.
void solution::writecofactors(FILE *f, const int *chosen, int row)
{
    for (int part = 0; part < 6; part += 3)
        for (int i = 0; i < nsta; i++)
            for (int k = part; chosen[i] != 0 && k < part + 3; k++) {
                const int column = station_unknown(points + i, k, nunk1);
                fprintf(f, "%5d %5d %22.15lf\n", row, column, Q(row, column));
            }
}

void solution::writestations(FILE *f, const int *chosen, int n)
{
    fprintf(f, "%d stations taken from %s\n", n, pname);
    for (int i = 0; i < nsta; i++) {
        if (chosen[i] == 0) continue;
        const point *p = points + i;
        fprintf(f, "%s %15.6lf%15.6lf%15.6lf\n", p->name, p->xpt[0], p->xpt[1], p->xpt[2]);
        fprintf(f, "%8s %15.6lf%15.6lf%15.6lf\n", "", p->xex[0], p->xex[1], p->xex[2]);
    }
    for (int part = 0; part < 6; part += 3)
        for (int i = 0; i < nsta; i++)
            for (int k = part; chosen[i] != 0 && k < part + 3; k++)
                writecofactors(f, chosen, station_unknown(points + i, k, nunk1));
}

// Reads the names of stations from f, closes it, and writes "tessalpin.cov".
void solution::input_for_tessalpin(FILE *f)
{
    int *error = sidefiles ? &sidefiles->cofactors : NULL;
    int *chosen = (int *)zeroed(nsta, sizeof(int)); // running number of a chosen station, 0 the others
    if (!chosen) {
        fprintf(out, "\ninput_for_tessalpin: cannot allocate\n");
        keep_error(error, ENOMEM);
        fclose(f);
        return;
    }
    const int n = choose_stations(this, f, chosen);
    fclose(f);
    if (n < 2) {
        fprintf(out, "\ninput_for_tessalpin: need at least 2 stations\n");
        free(chosen);
        return;
    }
    FILE *cov = open_side("tessalpin.cov", error);
    if (!cov) {
        fprintf(out, "\ninput_for_tessalpin: cannot open tessalpin.cov\n");
        free(chosen);
        return;
    }
    writestations(cov, chosen, n);
    free(chosen);
    close_side(cov, error);
}

// Cofactors of the stations that "tessalpin.sta" names; without that file there is nothing to do.
void solution::stationcofactors()
{
    FILE *f = fopen("tessalpin.sta", "rb");
    if (f)
        input_for_tessalpin(f); // closes the file
    else if (errno != ENOENT && sidefiles)
        keep_error(&sidefiles->cofactors, errno);
}

} // namespace vornengine
