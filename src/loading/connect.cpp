// Connected networks: coordinates with their covariance, taken over from another run or
// left to a later one in a text file.
//
// lcon[max(nimport, nexport)] holds, one after the other, indexes of the imported points as
// the points were filled in, the same in the order of the file, and their first unknowns;
// the export puts the first unknowns of its own points there. Qcon is a packed symmetric
// matrix (numerics/packed.h) of order dim * max(nimport, nexport), coordinate c of point p in
// row dim p + c: the weight matrix of the import, 1 / metre squared, then the cofactors of
// the export.
//
// The file, coordinates in metres:
//   File: NAME for N connections in dimension D
//   NNNNNNNN  x y z                    N lines, name in 8 characters
//   q                                  m (m + 1) / 2 lines, m = D N

#include "loading/connect.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "numerics/memory.h"
#include "numerics/packed.h"
#include "numerics/sidefile.h"
#include "vorn/run.h"
#include "vorn/message.h"
#include "loading/names.h"

namespace vornengine {

// What makes a file unfit for the import.
enum { FIT = 0, OTHER_HEAD = 1, NO_MEMORY = 2, UNKNOWN_POINT = 3, TOO_MANY_LINES = 4, TOO_FEW_LINES = 5 };

int block_unknown(const point *p, int dim)
{
    if (dim == 1) return p->n0[2];
    const int u = p->n0[0];
    if (u == N_NONE || p->n0[1] != u + 1) return N_NONE;
    if (dim == 3 && p->n0[2] != u + 2) return N_NONE;
    return u;
}

// Decides which sides are on and takes the tables. A side with fewer marked points than the
// dimension is off. Returns 0, or -1 when the tables cannot be allocated.
int vornrun::chk_connect()
{
    icon = 0;
    if (dim < 1 || dim > 3) return 0;
    if (nexport >= dim) icon += 1;
    if (nimport >= dim) icon += 2;
    if (icon == 0) return 0;

    const char *refusal = NULL;
    if (irun == -1)
        refusal = "chk_connect: Simplex case => no connected net";
    else if (irun == 0 && icon == 1)
        refusal = "chk_connect: no export possible with solution only";
    if (refusal) {
        tell_and_print(pfeedback, out, "%s", refusal);
        fprintf(out, "\n");
        icon = 0;
        return 0;
    }

    const long long n = nimport > nexport ? nimport : nexport;
    lcon = (int *)zeroed(n, sizeof(int));
    Qcon = (double *)zeroed(packed_size(dim * n), sizeof(double));
    nweighted = (int)((long long)dim * nimport);
    if (lcon && Qcon) return 0;

    free(lcon);
    free(Qcon);
    lcon = NULL;
    Qcon = NULL;
    tell_and_print(pfeedback, out, "chk_connect: Cannot allocate lcon or Qcon");
    return -1;
}

// The head has eight words; the fourth is the number of points, the eighth the dimension.
// Nine digits hold every number that can agree.
static int read_head(FILE *f, int nimport, int dim)
{
    char line[80], word[80];
    int n, d;
    if (!fgets(line, sizeof line, f)) return OTHER_HEAD;
    const int nread = sscanf(line, "%79s%79s%79s%9d%79s%79s%79s%9d", word, word, word, &n, word, word, word, &d);
    return nread == 8 && n == nimport && d == dim ? FIT : OTHER_HEAD;
}

// Index of the imported point of that name, or -1.
static int imported_point(const point *points, const int *lcon, int nimport, const char *name)
{
    for (int i = 0; i < nimport; i++)
        if (same_name(points[lcon[i]].name, name)) return lcon[i];
    return -1;
}

// Reads the coordinates of one point into points and returns its index; -1 when the line
// names no imported point or does not hold three numbers.
static int read_point(FILE *f, point *points, const int *lcon, int nimport)
{
    char line[256], name[9];
    if (!fgets(line, sizeof line, f)) return -1;
    snprintf(name, sizeof name, "%.8s", line);
    const int ip = imported_point(points, lcon, nimport, name);
    double x[3];
    if (ip < 0 || strlen(line) < 8 || sscanf(line + 8, "%lf%lf%lf", x, x + 1, x + 2) != 3) return -1;
    for (int c = 0; c < 3; c++) points[ip].xpt[c] = x[c];
    return ip;
}

// Brings lcon into the order of the file. Points that are found take their coordinates from
// the file even when another is not.
static int read_points(FILE *f, point *points, int *lcon, int nimport)
{
    int *order = (int *)zeroed(nimport, sizeof(int));
    if (!order) return NO_MEMORY;
    int code = FIT;
    for (int i = 0; i < nimport; i++) {
        const int ip = read_point(f, points, lcon, nimport);
        if (ip < 0)
            code = UNKNOWN_POINT;
        else
            order[i] = ip;
    }
    for (int i = 0; i < nimport; i++) lcon[i] = order[i];
    free(order);
    return code;
}

// Reads exactly nline lines, a number on each. The count of lines decides before what stands on
// them: a line without a number is one of them, and then there are too few numbers.
static int read_matrix(FILE *f, double *a, long long nline)
{
    char line[80];
    long long i = 0, nnumber = 0;
    for (; fgets(line, sizeof line, f); i++) {
        if (i == nline) return TOO_MANY_LINES;
        nnumber += sscanf(line, "%lf", a + i) == 1;
    }
    return nnumber == nline ? FIT : TOO_FEW_LINES;
}

// Reads the file of the import: coordinates into the points, inverse covariance into Qcon.
// A file that cannot be opened or does not fit turns the connected net off.
void vornrun::fill_connect()
{
    char path[sizeof pproject->confile + 1];
    snprintf(path, sizeof path, "%.*s", (int)sizeof pproject->confile, pproject->confile);
    FILE *f = fopen(path, "rb");
    if (!f) {
        tell(pfeedback, "fill_vorn: Cannot open %s file", pname);
        icon = 0;
        nweighted -= nimport * dim;
        tell(pfeedback, "=>disable connected computation");
        return;
    }
    const int n = nimport * dim;
    int code = read_head(f, nimport, dim);
    if (code == FIT) code = read_points(f, points, lcon, nimport);
    if (code == FIT) code = read_matrix(f, Qcon, packed_size(n));
    fclose(f);

    if (code == FIT) {
        invers(Qcon, n);
        return;
    }
    // nweighted keeps the imported coordinates on this road.
    tell(pfeedback, "fill_connect: Incompatibilities with %d code", code);
    icon = 0;
    tell(pfeedback, "=>disable connected computation");
    if (idebug) fprintf(out, "\nWarning disable connected computation\n\n");
}

// Turns the point indexes in lcon into first unknowns, those of unfit points left out. Their
// number stays nimport: behind the good ones lcon keeps what stood there, -1 or an index, and
// no entry reaches past the unknowns. Returns 0, or -1 without memory.
int vornrun::set_connect()
{
    int nbad = 0;
    for (int i = 0; i < nimport; i++) {
        const point *p = points + lcon[i];
        if (block_unknown(p, dim) != N_NONE) continue;
        lcon[i] = -1;
        nbad++;
        tell_and_print(pfeedback, out, "set_connect: %s cannot be used in connected net", p->name);
    }
    if (nbad == nimport) {
        tell_and_print(pfeedback, out, "set_connect: put back icon to 0 because no connection");
        icon = 0;
        return 0;
    }

    int *ltemp = (int *)zeroed(nimport, sizeof(int));
    if (!ltemp) {
        tell_and_print(pfeedback, out, "set_connect: cannot allocate ltemp");
        return -1;
    }
    int n = 0;
    for (int i = 0; i < nimport; i++)
        if (lcon[i] >= 0) ltemp[n++] = block_unknown(points + lcon[i], dim);
    for (int i = 0; i < n; i++) lcon[i] = ltemp[i];
    for (int i = n; i < nimport; i++)
        if (lcon[i] + dim > nunk1) lcon[i] = -1;
    free(ltemp);
    return 0;
}

// The first point whose block begins with the unknown u; null if none.
static const point *point_of(const point *points, int npoints, int dim, int u)
{
    const int c = dim == 1 ? 2 : 0;
    if (!points || u < 0) return NULL;
    for (int i = 0; i < npoints; i++)
        if (points[i].n0[c] == u) return points + i;
    return NULL;
}

// Writes the connected-net file under the run's name with the extension "con", then puts
// "inp" back. Returns 0, or -9 when the file cannot be opened: the name then keeps "con".
// A file that is lost on a full disk is a line to the user; the results do not need it.
int vornrun::writecon()
{
    char *dot = strchr(pname, '.');
    const bool extension = dot && strlen(dot + 1) >= 3;
    if (extension) memcpy(dot + 1, "con", 3);
    FILE *f = extension ? fopen(pname, "wb") : NULL;
    if (!f) {
        tell(pfeedback, "backtoproject: Cannot open %s file", pname);
        return -9;
    }

    fprintf(f, "File: %s for %d connections in dimension %d\n", pname, nexport, dim);
    for (int i = 0; i < nexport; i++) {
        const point *p = point_of(points, npoints, dim, lcon[i]);
        if (!p) continue;
        const double z = iearth == 2 ? p->h : p->xpt[2];
        fprintf(f, "%8s  %22.6lf%22.6lf%22.6lf\n", p->name, p->xpt[0] + trans[0], p->xpt[1] + trans[1], z + trans[2]);
    }
    const long long nline = packed_size((long long)dim * nexport);
    for (long long i = 0; i < nline; i++) fprintf(f, "%25.21lf\n", Qcon[i]);

    int error = 0;
    close_side(f, &error);
    if (error != 0) tell(pfeedback, "backtoproject: Cannot write %s file", pname);
    memcpy(dot + 1, "inp", 3);
    return 0;
}

} // namespace vornengine
