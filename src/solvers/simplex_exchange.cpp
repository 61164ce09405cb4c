// One exchange step of the simplex solver: the search for the entering column, the row that
// leaves, and the change of the tableau.
//
// Entering a variable at column c and row r, with p = a[r][c]:
//   a[i][j] -= a[i][c] / p a[r][j],  a[i][c] = -a[i][c] / p,  delta[i] -= a[i][c] / p delta[r]
//   a[r][j] /= p,  a[r][c] = 1 / p,  delta[r] /= p
// Entries below TINY are rounding and become 0. Rows are worked in whole groups of GROUP
// columns; what stands behind the last column in use is never read for a result.

#include "solvers/simplex.h"

#include <math.h>

namespace vornengine {

static const double TINY = 1.0e-10;         // of coefficients without weight and of costs
static const double LARGEST_RATIO = 1.0e20; // of a right-hand side and a pivot

// Number of columns in whole groups: the loops over a row then need no remainder.
static int wholegroups(int cols) { return (cols + (SIMPLEX_GROUP - 1)) & ~(SIMPLEX_GROUP - 1); }

// r -= f p
static void subtract(double *__restrict r, const double *__restrict p, double f, int n)
{
    n &= ~(SIMPLEX_GROUP - 1);
    for (int j = 0; j < n; j++) r[j] -= f * p[j];
}

static void flushrow(double *r, int n)
{
    n &= ~(SIMPLEX_GROUP - 1);
    for (int j = 0; j < n; j++) r[j] = r[j] != 0.0 && fabs(r[j]) < TINY ? 0.0 : r[j];
}

static void negaterow(double *r, int n)
{
    n &= ~(SIMPLEX_GROUP - 1);
    for (int j = 0; j < n; j++) r[j] = -r[j];
}

// Type 1 to 5 in the order of the table in simplex.h, index of the unknown, row or artificial
// variable; 0 and -1 for what is no identifier.
void simplex::decode(int id, int *complement, int *type, int *index) const
{
    const int u = nunk, m = nobs, first[] = {0, u, 2 * u, 2 * u + m, 2 * (u + m)}, other[] = {u, -u, m, -m};
    *complement = *index = -1;
    *type = 0;
    if (id < 0) return;
    int t = 4;
    while (id < first[t]) t--;
    *type = t + 1;
    *index = id - first[t];
    if (t < 4) *complement = id + other[t];
}

// Column col becomes that of the other part of its variable.
void simplex::negatecolumn(int rows, int col)
{
    for (int i = 0; i < rows; i++) a[i][col] = -a[i][col];
}

// The unknown with the largest cost enters, the first of equal ones. Returns 1, 2 when its
// column was negated for the complement, -1 when none improves.
int simplex::search1(int rows, int cols, int *newid, int *col)
{
    double best = 0.0;
    int res = -1, complement, type, index;
    for (int j = 0; j < cols; j++) {
        decode(inplus[j], &complement, &type, &index);
        if (type != 1 && type != 2) continue;
        const double c = cost[j];
        if (c > best) {
            res = 1;
            *newid = inplus[j];
            *col = j;
            best = c;
            continue;
        }
        if (fabs(c) < TINY) {
            cost[j] = 0.0;
            if (idebug) fprintf(out, "in search1: put cost[%d] to 0.\n", j);
        }
        if (-c > best) {
            res = 2;
            *newid = complement;
            *col = j;
            best = -c;
        }
    }
    if (res != 2) return res;
    negatecolumn(rows, *col);
    cost[*col] = best;
    return res;
}

// The same among the residuals; turning one to its other part costs twice its weight. A
// variable of iobsout -1 has left the basis in this stage and may not come back.
int simplex::search2(int rows, int cols, int *newid, int *col, const int *iobsout)
{
    double best = 0.0;
    int res = -1, complement, type, index;
    for (int j = 0; j < cols; j++) {
        decode(inplus[j], &complement, &type, &index);
        if (type != 3 && type != 4) continue;
        const double c = cost[j];
        double gain = c;
        int part = 1;
        if (!(c > best)) {
            double calt = -c - 2.0 * newpd[index];
            if (calt != 0.0 && fabs(calt) < TINY) {
                calt = 0.0;
                if (idebug) fprintf(out, "in search2: put calt to 0. for j=%d\n", j);
            }
            if (!(calt > best)) continue;
            gain = calt;
            part = 2;
        }
        const int id = part == 1 ? inplus[j] : complement;
        if (iobsout[id] == -1) {
            if (idebug) fprintf(out, "Observation %d already discarded in step2\n", inplus[j]);
            continue;
        }
        res = part;
        *newid = id;
        *col = j;
        best = gain;
    }
    if (res != 2) return res;
    negatecolumn(rows, *col);
    cost[*col] = best;
    return res;
}

// The row whose basic variable reaches 0 first, the last of equal ones; an unknown in the
// basis stays there. -2 when no row limits the step.
int simplex::pivotrow(int rows, int, int col) const
{
    double best = LARGEST_RATIO;
    int row = -2;
    for (int i = 0; i < rows; i++) {
        if (ibase[i] < 2 * nunk) continue;
        const double p = a[i][col];
        if (!(p > 0.0) || !(delta[i] / p <= best)) continue;
        row = i;
        best = delta[i] / p;
    }
    return row;
}

// Sets what is rounding in the tableau to 0. Behind the first exchange only the rows that one
// has changed, those with an entry in its column, can hold any.
void simplex::flush(int rows, int cols, int col)
{
    for (int i = 0; i < rows; i++) {
        double *r = a[i];
        if (flushed && r[col] == 0.0) continue;
        for (int j = 0; idebug && j < cols; j++)
            if (r[j] != 0.0 && fabs(r[j]) < TINY) fprintf(out, "in exchange put a[%d][%d] to 0.\n", i, j);
        flushrow(r, wholegroups(cols));
    }
    flushed = true;
}

// Keeps right-hand sides at 0 or above: the other part of the variable becomes basic.
void simplex::turnaround(int rows, int cols)
{
    int complement, type, index;
    for (int i = 0; i < rows; i++) {
        if (!(delta[i] < 0.0)) continue;
        if (idebug) fprintf(out, "in exchange turn around delta[%d]=%15.9lf\n", i, delta[i]);
        negaterow(a[i], wholegroups(cols));
        delta[i] = -delta[i];
        decode(ibase[i], &complement, &type, &index);
        ibase[i] = complement;
    }
}

// Brings the variable newid, whose column is col, into the basis at row; the basic variable of
// the row takes the column.
void simplex::exchange(int rows, int cols, int newid, int col, int row)
{
    double *pivot = a[row];
    const double p = pivot[col];
    const int n = wholegroups(cols);
    for (int i = 0; i < rows; i++) {
        if (i == row || a[i][col] == 0.0) continue;
        const double f = a[i][col] / p;
        if (fabs(f) <= TINY) {
            if (idebug) fprintf(out, "in exchange do nothing at line %d  (col %d)\n", i, col);
            continue;
        }
        subtract(a[i], pivot, f, n);
        a[i][col] = -f;
        delta[i] -= f * delta[row];
    }
    for (int j = 0; j < n; j++) pivot[j] /= p;
    pivot[col] = 1.0 / p;
    delta[row] /= p;
    flush(rows, cols, col);
    turnaround(rows, cols);

    const double c = cost[col];
    cost[col] = 0.0;
    for (int j = 0; j < cols; j++) cost[j] -= c * pivot[j];
    gcost += c * delta[row];
    inplus[col] = ibase[row];
    ibase[row] = newid;
}

} // namespace vornengine
