// Balancing of the observations: cost weights newpd with which all of them carry about the
// same redundancy, the mean one
//
//   rbar = 1 - (nunk + ndatum) / number of rows
//
// With A the design matrix without weights (metres, radians) and P = diag(newpd), observation
// i has the influence h = p_i a_i inverse(A'PA) a_i' on its own computed value and the
// redundancy 1 - h. One sweep sets p_i to  (1 - h) p_i nunk / h / (rows - nunk).
// Only the costs of the programme change: the rows are not scaled by newpd.

#include "solvers/simplex.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include "numerics/ludcmp.h"
#include "numerics/memory.h"

namespace vornengine {

static const double SHORTEST = 1.0e-07;   // of a sight, as the rows of the adjustment test it
static const double NEGLIGIBLE = 1.0e-07; // a smaller influence counts as 0
static const double ROUNDING = 1.0e-09;   // of an influence; WEIGHT_CAP beside a weight of 1 leaves 1e-08 of redundancy
static const double BALANCED = 0.05;      // largest distance of a redundancy from the mean one
static const int MOST_SWEEPS = 10;        // behind the first; one more may run

// A matrix by rows in one block.
struct rowblock {
    double **row;
    double *block;
};

struct balancing {
    rowblock design; // [rows][nunk] A
    rowblock norm;   // [nunk][nunk] A'PA, then its factors
    rowblock inv;    // [nunk][nunk] inverse of A'PA
    double *column;  // [nunk] a unit vector, then a column of the inverse
    int *indx;       // [nunk] interchanges of the factors
    int *list;       // [nunk] columns of a row that count
    bool defined;    // the inverse holds finite numbers only
};

// Takes the elements of a matrix whose row table stands.
static bool take_block(rowblock *m, int rows, int cols)
{
    m->block = (double *)zeroed((long long)rows * cols, sizeof *m->block);
    for (int i = 0; m->block && i < rows; i++) m->row[i] = m->block + (size_t)i * (size_t)cols;
    return m->block;
}

static void release(balancing *b)
{
    rowblock *const matrices[] = {&b->design, &b->norm, &b->inv};
    for (rowblock *m : matrices) {
        free(m->row);
        free(m->block);
    }
    free(b->column);
    free(b->indx);
    free(b->list);
}

// ---- design matrix ----

void simplex::designdist(double **row)
{
    double d[3], r1[3][3], r2[3][3];
    int l1, l2;
    for (int i = 0; i < ndist; i++) {
        double c = distance(i, d, r1, r2, &l1, &l2);
        distrow1(i, c, 1.0, d, r1, r2, l1, l2);
        ia2[0] = 0;
        if (dist[i].typ == 1 || l1 != -1 || l2 != -1) distrow2(i, &c, 1.0, d, r1, r2, l1, l2);
        copyrow(ia1[0], ia2[0], row[nobs++]);
    }
}

int simplex::designdir1(double **row)
{
    double d[3], e[3], g[3], r1[3][3], r2[3][3], rr, ca = 0, sa = 0, cb = 0, sb = 0, cc = 0, sc = 0;
    int l1, l2;
    const point *station = NULL;
    for (int i = 0; i < ndir1; i++) {
        if (dir1[i].p1 != station) setrot(1, i, &ca, &sa, &cb, &sb, &cc, &sc);
        station = dir1[i].p1;
        dir1comp(i, d, e, &rr, r1, r2, &l1, &l2);
        if (fabs(rr) < SHORTEST) {
            fprintf(out, "\nProblem with horizontal direction %d\n", i);
            return -5;
        }
        dir1row1(i, 1.0, e, rr, g, r1, r2, l1, l2);
        dir1row2(i, 1.0, d, e, rr, g, ca, sa, cc, sc, r1, r2, l1, l2);
        copyrow(ia1[0], ia2[0], row[nobs++]);
    }
    return 0;
}

int simplex::designdir2(double **row)
{
    double d[3], e[3], g[3], r1[3][3], r2[3][3], rr, l, ca = 0, sa = 0, cb = 0, sb = 0, cc = 0, sc = 0;
    int l1, l2;
    const point *station = NULL;
    for (int i = 0; i < ndir2; i++) {
        if (dir2[i].p1 != station) setrot(2, i, &ca, &sa, &cb, &sb, &cc, &sc);
        station = dir2[i].p1;
        dir2comp(i, d, e, &rr, &l, r1, r2, &l1, &l2);
        if (fabs(l) < SHORTEST) {
            fprintf(out, "\nProblem with vertical direction %d\n", i);
            return -5;
        }
        dir2row1(i, 1.0, d, e, rr, l, g, r1, r2, l1, l2);
        dir2row2(i, 1.0, d, ca, sa, cb, l, g, r1, r2, l1, l2);
        copyrow(ia1[0], ia2[0], row[nobs++]);
    }
    return 0;
}

// nobs counts the rows stored and ends without those of the fixed heights. Returns 0, or -5 for
// a sight without direction.
int simplex::design(double **row)
{
    nobs = 0;
    designdist(row);
    for (int i = 0; i < ndifh; i++) {
        difhrow(i, difh[i].p2->xpt[2] - difh[i].p1->xpt[2], 1.0);
        copyrow(ia1[0], ia2[0], row[nobs++]);
    }
    if (designdir1(row) != 0) return -5;
    return designdir2(row);
}

// ---- arrays ----

int simplex::takedesign(balancing *b)
{
    b->design.row = (double **)zeroed(nplan, sizeof *b->design.row);
    if (!b->design.row) {
        fprintf(out, "pb with adesign\n");
        return -7;
    }
    if (!take_block(&b->design, nplan, nunk)) {
        fprintf(out, "pb with adesign when i=%d\n", 0);
        return -7;
    }
    return 0;
}

int simplex::takenormal(balancing *b)
{
    b->norm.row = (double **)zeroed(nunk, sizeof *b->norm.row);
    b->inv.row = (double **)zeroed(nunk, sizeof *b->inv.row);
    b->column = (double *)zeroed(nunk, sizeof *b->column);
    b->indx = (int *)zeroed(nunk, sizeof *b->indx);
    b->list = (int *)zeroed(nunk, sizeof *b->list);
    if (!b->norm.row || !b->inv.row || !b->column || !b->indx || !b->list) {
        fprintf(out, "pb with anorm..\n");
        return -7;
    }
    if (!take_block(&b->norm, nunk, nunk) || !take_block(&b->inv, nunk, nunk)) {
        fprintf(out, "pb with anorm or ainv when i=%d\n", 0);
        return -7;
    }
    return 0;
}

// ---- sweeps ----

// Columns of a row that count in its products: those that are not 0, or all of them.
int simplex::columns(const double *row, bool all, int *list) const
{
    int n = 0;
    for (int j = 0; j < nunk; j++)
        if (all || row[j] != 0.0) list[n++] = j;
    return n;
}

// Adds p a a' of one row. An infinite weight or coefficient times 0 has no number: then all
// columns count.
void simplex::addproducts(balancing *b, const double *row, double p)
{
    double **norm = b->norm.row;
    int n = columns(row, !isfinite(p), b->list);
    for (int j = 0; j < n && n < nunk; j++)
        if (!isfinite(p * row[b->list[j]])) n = columns(row, true, b->list);
    const int *list = b->list;
    for (int j = 0; j < n; j++) {
        const double f = p * row[list[j]];
        for (int k = 0; k < n; k++) norm[list[j]][list[k]] += f * row[list[k]];
    }
}

// A'PA and its inverse, column by column. A singular matrix is only told by ludcmp.
void simplex::invertnormal(balancing *b)
{
    double **norm = b->norm.row, d;
    memset(b->norm.block, 0, sizeof(double) * (size_t)nunk * (size_t)nunk);
    for (int i = 0; i < nobs; i++) addproducts(b, b->design.row[i], newpd[i]);
    ludcmp(norm, nunk, b->indx, &d, out);
    b->defined = true;
    for (int k = 0; k < nunk; k++) {
        for (int j = 0; j < nunk; j++) b->column[j] = j == k ? 1.0 : 0.0;
        lubksb(norm, nunk, b->indx, b->column);
        for (int j = 0; j < nunk; j++) {
            b->inv.row[j][k] = b->column[j];
            if (!isfinite(b->column[j])) b->defined = false;
        }
    }
}

// Influence of row i, as computed: rounding can take it out of [0, 1]. What is not finite in the
// inverse reaches every row, as in a full sum.
double simplex::influence(const balancing *b, int i) const
{
    const double *row = b->design.row[i];
    const int n = columns(row, !b->defined, b->list), *list = b->list;
    double sum = 0.0;
    for (int j = 0; j < n; j++) {
        const double *q = b->inv.row[list[j]];
        for (int k = 0; k < n; k++) sum += row[list[j]] * q[list[k]] * row[list[k]];
    }
    return newpd[i] * sum;
}

// New weights from the inverse of the present ones, but for observations without redundancy or
// without influence, which keep theirs; the first sweep prints the redundancies.
// Returns the largest distance of a redundancy from rbar; 0 and 1 take no part.
double simplex::sweep(balancing *b, double rbar, bool first)
{
    double maxdev = 0.0;
    invertnormal(b);
    for (int i = 0; i < nobs; i++) {
        double h = influence(b, i);
        if (h > 1.0 - ROUNDING)
            h = 1.0;
        else if (h <= NEGLIGIBLE)
            h = 0.0;
        else
            newpd[i] = (1.0 - h) * newpd[i] * nunk / h / (nobs - nunk);
        const double r = 1.0 - h;
        if (first) fprintf(out, "first r[%3d] = %10.6lf  original pd = %15.6lf\n", i, r, rhs[i]);
        if (r != 0.0 && r != 1.0 && fabs(r - rbar) > maxdev) maxdev = fabs(r - rbar);
    }
    return maxdev;
}

void simplex::equalize(balancing *b, double rbar)
{
    double maxdev = sweep(b, rbar, true);
    int iter = 0;
    while (maxdev > BALANCED) {
        iter++;
        maxdev = sweep(b, rbar, false);
        if (iter > MOST_SWEEPS) maxdev = 0.0;
    }
    fprintf(out, "After %d iterations:\n", iter);
    for (int i = 0; i < nobs; i++) {
        double h = influence(b, i);
        if (h > 1.0) h = 1.0;
        if (h < NEGLIGIBLE) h = 0.0;
        fprintf(out, " r[%3d] = %10.6lf   newpd = %16.6lf   oldpd = %16.6lf\n", i, 1.0 - h, newpd[i], rhs[i]);
    }
}

// Returns 0, -5 for a sight without direction, -7 without memory. The mean redundancy counts
// the rows of fixed heights, which take no part in the sweeps.
int simplex::balance()
{
    balancing b = balancing();
    nobs -= ndatum;
    const double rbar = 1.0 - (double)(nunk + ndatum) / nobs;
    int result = takedesign(&b);
    if (result == 0) result = design(b.design.row);
    if (result == 0) result = takenormal(&b);
    if (result == 0) equalize(&b, rbar);
    release(&b);
    return result;
}

} // namespace vornengine
