// Least squares with the full normal matrix: one Gauss-Jordan elimination with full pivot
// search gives the step and the inverse.
//
// The system of order nunk, both triangles stored, row by row:
//
//   | N  C' |  rows 0 .. nunk1 - 1 coordinates (type 1), then nunk2 nuisance unknowns (type 2)
//   | C  0  |  last ndatum rows: conditions on the coordinates (type 3)
//
// The right-hand side of a condition is zero, so that C delta = 0; the last ndatum entries of
// delta are the multipliers. Memory: two matrices of nunk squared; time: cubic in nunk.

#include "solvers/jordan.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include "numerics/memory.h"
#include "solution/datumrows.h"

namespace vornengine {

static const double LARGEST_DETERMINANT = 1.0e+100;

jordan::jordan(const solverinput &in) : solution(in), tiny(1.0e-20), ierralloc(-20), ierror(0), norm(NULL) {}

static void release(double **a)
{
    free(*a);
    *a = NULL;
}

jordan::~jordan()
{
    releasework();
    release(&inv);
}

// All arrays but inv.
void jordan::releasework()
{
    release(&rhs);
    release(&delta);
    release(&norm);
    freestat();
    dropimport();
}

void jordan::finish()
{
    releasework();
    if (!inv) return;
    if (dim == 3) stationcofactors();
    release(&inv);
}

void jordan::banner()
{
    fprintf(out, "\n\nGauss Jordan solution\n");
    fprintf(out, "Version 0.0\n");
}

// Rows first to last - 1 of the lower triangle without their zeros. *count numbers all
// elements of the triangle, printed or not.
void jordan::debugrows(const char *title, int first, int last, long long *count)
{
    fprintf(out, "%s", title);
    for (int r = first; r < last; r++) {
        const double *row = norm + (size_t)r * nunk;
        fprintf(out, "line %d   delta %25.12lf\n", r, rhs[r]);
        for (int c = 0; c <= r; c++, (*count)++)
            if (row[c] != 0.0) fprintf(out, "%ld    %25.12lf\n", (long)*count, row[c]);
    }
}

void jordan::debugnormal()
{
    const int r0 = nunk1 + nunk2;
    long long count = 0;
    debugrows("type 1\n", 0, nunk1, &count);
    debugrows("type 2\n", nunk1, r0, &count);
    debugrows("type 3\n", r0, nunk, &count);
    fprintf(out, "\nRHS to check\n");
    for (int r = 0; r < nunk1; r++) fprintf(out, "first RHS     #%3d = %25.12lf\n", r, rhs[r]);
    for (int r = nunk1; r < r0; r++) fprintf(out, "other RHS     #%3d = %25.12lf\n", r - nunk1, rhs[r]);
    for (int r = r0; r < nunk; r++) fprintf(out, "datum RHS     #%3d = %25.12lf\n", r - r0, rhs[r]);
}

int jordan::prepare()
{
    if (idebug) traceobs(0);
    setcentre();
    nunk += ndatum;
    norm = (double *)zeroed_square(nunk, sizeof *norm);
    rhs = (double *)zeroed(nunk, sizeof *rhs);
    if (!norm || !rhs || indeximport() != 0) {
        fprintf(out, "pb with allocation of norm\n");
        return -1;
    }
    inv = (double *)zeroed_square(nunk, sizeof *inv);
    delta = (double *)zeroed(nunk, sizeof *delta);
    if (!inv || !delta) {
        fprintf(out, "pb with allocation of inv\n");
        return -1;
    }
    return 0;
}

// Weight matrix of the imported coordinates (packed lower triangle) and its right-hand side,
// weight times initial less current value. The last entries of lcon may be stale when some
// imported points dropped out: a number that is no coordinate adds nothing to the matrix.
void jordan::addimport()
{
    const int n = nimport * dim;
    double t = 0.0;
    for (int q = 0; q < n; q++) {
        const int col = lcon[q / dim] + q % dim;
        t = importdiff(col, t);
        for (int r = 0; r < n; r++) {
            const int row = lcon[r / dim] + r % dim;
            if (row < 0 || row >= nunk1) continue;
            const long long low = q < r ? q : r, high = q < r ? r : q;
            const double w = Qcon[high * (high + 1) / 2 + low];
            if (col >= 0 && col < nunk1) norm[(size_t)row * nunk + col] += w;
            rhs[row] += t * w;
        }
    }
}

void jordan::zeronormal()
{
    memset(rhs, 0, sizeof *rhs * nunk);
    memset(norm, 0, sizeof *norm * nunk * nunk);
    if (icon == 2 || icon == 3) addimport();
    if (ndatum != 0) datumrows();
}

// Coefficient of a coordinate in a condition; a coordinate without unknown has none. ndatum
// ends the rows.
void jordan::condition(int row, int col, double c)
{
    if (row >= nunk || col < 0 || col >= nunk1) return;
    norm[(size_t)row * nunk + col] = norm[(size_t)col * nunk + row] = c;
}

void jordan::datumrows()
{
    const datumflags flags = dim == 3 ? FLAG_NOT_OF_X3 : FLAG_OF_VALUE;
    for (const point *p = points; p < points + npoints; p++) {
        datumentry e[DATUM_ENTRIES];
        const int n = datum_entries(p, centre, dim, ndatum, flags, e);
        for (int k = 0; k < n; k++) condition(nunk1 + nunk2 + e[k].row, p->n0[e[k].coordinate], e[k].value);
    }
}

// Both triangles, so that a number that occurs twice in a row simply adds up.
void jordan::addrow(int n1, int n2, double b)
{
    int u[24] = {0};
    double a[24] = {0.0};
    const int n = n1 + n2;
    for (int i = 0; i < n1; i++) {
        u[i] = ia1[i + 1];
        a[i] = a1[i + 1];
    }
    for (int i = 0; i < n2; i++) {
        u[n1 + i] = nunk1 + ia2[i + 1];
        a[n1 + i] = a2[i + 1];
    }
    for (int i = 0; i < n; i++) {
        double *row = norm + (size_t)u[i] * nunk;
        const double ai = a[i];
        rhs[u[i]] += b * ai;
        for (int j = 0; j < n; j++) row[u[j]] += ai * a[j];
    }
}

// Derivative -1 for the first point, 1 for the second; w are the misclosures, in metres.
void jordan::buildgps(int ibase, const int iu[6], const double w[3])
{
    const double *p = gps[ibase].w;
    const double weight[3][3] = {{p[0], p[1], p[3]}, {p[1], p[2], p[4]}, {p[3], p[4], p[5]}};
    for (int c = 0; c < 6; c++) {
        if (iu[c] < 0) continue;
        const double *v = weight[c % 3];
        const double sign = c < 3 ? -1.0 : 1.0;
        double *row = norm + (size_t)iu[c] * nunk;
        rhs[iu[c]] += sign * (v[0] * w[0] + v[1] * w[1] + v[2] * w[2]);
        for (int e = 0; e < 6; e++)
            if (iu[e] >= 0) row[iu[e]] += (e < 3 ? -sign : sign) * v[e % 3];
    }
}

int jordan::resolution()
{
    double det;
    gaussj(norm, rhs, nunk, delta, inv, &det);
    return geterror();
}

int jordan::inverse()
{
    if (irun != -2) return 0;
    zeronormal();
    normal();
    return resolution();
}

void jordan::swapd(double *a, double *b)
{
    const double t = *a;
    *a = *b;
    *b = t;
}

double jordan::clampdet(double det) { return det > LARGEST_DETERMINANT ? LARGEST_DETERMINANT : det; }

void jordan::seterror(int code) { ierror = code; }

int jordan::geterror() { return ierror; }

void jordan::checkalloc(void *p)
{
    if (!p) seterror(ierralloc);
}

struct pivot {
    int row, col;
    double size; // magnitude of the element
};

// Takes the largest element of row r in the columns that had no pivot, if it exceeds the best
// so far: the first of equal elements wins.
static void searchrow(const double *row, int r, const char *used, int n, pivot *best)
{
    double size = best->size;
    int col = -1;
    for (int k = 0; k < n; k++) {
        if (used[k] || !(fabs(row[k]) > size)) continue;
        size = fabs(row[k]);
        col = k;
    }
    if (col < 0) return;
    best->row = r;
    best->col = col;
    best->size = size;
}

// Row less m times the pivot row.
static void subtractrow(double *row, const double *pivotrow, double m, int n)
{
    for (int k = 0; k < n; k++) row[k] -= m * pivotrow[k];
}

// Brings the pivot to the diagonal and divides its row; returns the pivot.
double jordan::preparerow(double *a, double *b, int n, int irow, int icol)
{
    double *row = a + (size_t)icol * n;
    if (irow != icol) {
        double *other = a + (size_t)irow * n;
        for (int k = 0; k < n; k++) swapd(row + k, other + k);
        swapd(b + irow, b + icol);
    }
    const double p = row[icol];
    row[icol] = 1.0;
    for (int k = 0; k < n; k++) row[k] /= p;
    b[icol] /= p;
    return p;
}

// n steps in place: a becomes its inverse with permuted columns, b the solution. The search
// for the next pivot goes along with the elimination, row by row.
void jordan::eliminate(double *a, double *b, int n, double *det, int *pivots, char *used)
{
    pivot best = {0, 0, 0.0};
    for (int r = 0; r < n; r++) searchrow(a + (size_t)r * n, r, used, n, &best);
    for (int i = 0; i < n; i++) {
        const int irow = best.row, icol = best.col;
        best.size = 0.0;
        used[icol] = 1;
        pivots[2 * (size_t)i] = irow;
        pivots[2 * (size_t)i + 1] = icol;
        if (irow != icol) *det = -*det;
        *det = clampdet(preparerow(a, b, n, irow, icol) * *det);
        const double *pivotrow = a + (size_t)icol * n;
        for (int r = 0; r < n; r++) {
            if (r == icol) continue;
            double *row = a + (size_t)r * n;
            const double m = row[icol];
            row[icol] = 0.0;
            subtractrow(row, pivotrow, m, n);
            b[r] -= m * b[icol];
            if (!used[r]) searchrow(row, r, used, n, &best);
        }
    }
}

// Undoes the exchanges of rows on the columns of the inverse, the last one first.
void jordan::unscramble(double *a, int n, const int *pivots)
{
    for (int r = 0; r < n; r++) {
        double *row = a + (size_t)r * n;
        for (int i = n - 1; i >= 0; i--)
            if (pivots[2 * (size_t)i] != pivots[2 * (size_t)i + 1])
                swapd(row + pivots[2 * (size_t)i], row + pivots[2 * (size_t)i + 1]);
    }
}

// Inverse of a, solution of a x = b and determinant by elimination with full pivot search.
//   a     in   n by n, row by row
//   b     in   n, destroyed
//   x     out  n
//   ainv  out  n by n
//   det   out  held at 1e+100 from above
// There is no test of singularity: without an element above zero the pivot stays where the
// step before left it, at (0, 0) to begin with, and x and ainv fill with infinities and
// not-a-numbers. Without memory x and ainv are zero, det is 1 and the error is recorded.
void jordan::gaussj(const double *a, double *b, int n, double *x, double *ainv, double *det)
{
    *det = 1.0;
    if (n <= 0) return;
    int *pivots = (int *)zeroed(2LL * n, sizeof *pivots); // row and column of each step
    char *used = (char *)zeroed(n, sizeof *used);         // rows and columns that had their pivot
    checkalloc(pivots);
    checkalloc(used);
    if (pivots && used) {
        memcpy(ainv, a, sizeof *ainv * n * n);
        eliminate(ainv, b, n, det, pivots, used);
        unscramble(ainv, n, pivots);
        memcpy(x, b, sizeof *x * n);
    } else {
        memset(ainv, 0, sizeof *ainv * n * n);
        memset(x, 0, sizeof *x * n);
    }
    free(pivots);
    free(used);
}

} // namespace vornengine
