// Least absolute values by the simplex method: one pass over the observations, then three
// stages of exchange steps on the tableau, then the read-out.
//
//   0  free networks: the artificial variables of the datum rows leave the basis and go
//   1  the unknowns enter the basis; the cost line is the gain in sum newpd |v| of each column
//   2  residuals enter while that lowers the sum; a residual that left may not come back
//
// A stage ends when no column improves (-1), when no row limits the step (-2) or at its limit
// of exchanges (-3). None of these stops the solver: the vertex reached is read out. The
// linearisation is not iterated. Metres and radians; the cost is without unit.

#include "solvers/simplex.h"

#include <stdlib.h>

#include "numerics/memory.h"
#include "vorn/message.h"

namespace vornengine {

// Exchanges in a stage without limit: far beyond what a network needs, it ends a search that
// goes round in a circle.
static const int MOST_EXCHANGES = 100000;

simplex::simplex(const solverinput &in)
    : solution(in), gcost(0.0), cost(NULL), inplus(NULL), ibase(NULL), a(NULL), newpd(NULL), nobs(0), block(NULL),
      nplan(0), nextra(0), flushed(false)
{
}

void simplex::finish()
{
    double **const doubles[] = {&newpd, &rhs, &delta, &cost, &block};
    int **const ints[] = {&inplus, &ibase};
    for (double **d : doubles) {
        free(*d);
        *d = NULL;
    }
    for (int **n : ints) {
        free(*n);
        *n = NULL;
    }
    free(a);
    a = NULL;
    freestat(); // the class limits of residuals that are listed where the iterations are limited to none
}

void simplex::banner()
{
    fprintf(out, "\n\nSimplex solution\n");
    fprintf(out, "Version 0.0\n");
    irun = -1;
}

void simplex::zeronormal()
{
    for (int j = 0; j < nunk; j++) inplus[j] = j;
    flushed = false;
}

void simplex::buildgps(int, const int[6], const double[3]) { fprintf(out, "buildgps in simplex TO DO\n"); }

// ---- stages ----

void simplex::stagetrace(int rows, int cols)
{
    if (!idebug) return;
    unknowntable();
    debugsimplex(rows, cols);
}

void simplex::stageend(int stage, int res)
{
    tell_and_print(pfeedback, out, "end of of phase %d with res=%d", stage, res);
}

// Exchanges until the search, the row or the limit ends the stage: -1, -2, -3. With iobsout
// residuals enter, otherwise unknowns. Without a limit (0 or less) only the search and the
// row end it.
int simplex::exchanges(int rows, int cols, int limit, int *iobsout)
{
    const int last = limit > 0 ? limit : MOST_EXCHANGES;
    for (int iter = 0; iter < last; iter++) {
        int newid = 0, col = 0;
        const int found = iobsout ? search2(rows, cols, &newid, &col, iobsout) : search1(rows, cols, &newid, &col);
        if (found < 0) return found;
        const int row = pivotrow(rows, cols, col);
        if (row < 0) return row;
        fprintf(out, "iter %4d  new %4d  old %4d    cost %15.6lf\n", iter, newid, ibase[row], gcost);
        if (iobsout) iobsout[ibase[row]] = -1;
        exchange(rows, cols, newid, col, row);
    }
    return -3;
}

// The columns of the artificial variables go, the last one first. Returns 0, or -3 when one is
// still in the basis.
int simplex::removeartificial(int rows, int *cols)
{
    int complement, type, index;
    for (int k = 0; k < ndatum; k++) {
        int j = *cols - 1;
        for (; j >= 0; j--) {
            decode(inplus[j], &complement, &type, &index);
            if (type == 5) break;
        }
        if (j < 0) return -3;
        --*cols;
        for (int i = 0; i < rows; i++)
            for (int c = j; c < *cols; c++) a[i][c] = a[i][c + 1];
        for (int c = j; c < *cols; c++) inplus[c] = inplus[c + 1];
    }
    return 0;
}

// The conditions of a free network; their rows and columns then belong to the tableau.
int simplex::artificialstage(int *rows, int *cols)
{
    datumrows();
    *rows += ndatum;
    for (int k = 0; k < ndatum; k++) ibase[nobs + k] = k + 2 * nobs + 2 * nunk;
    gcost = 0.0;
    for (int j = 0; j < *cols; j++) {
        cost[j] = 0.0;
        for (int i = nobs; i < *rows; i++) cost[j] += a[i][j] * newpd[i];
    }
    fprintf(out, "\nSimplex loop for artificial variables\n");
    stagetrace(*rows, *cols);
    stageend(0, exchanges(*rows, *cols, ndatum, NULL));
    return removeartificial(*rows, cols);
}

// Weights from here on are at most 1. The cost line counts all rows, those of the datum, whose
// weight was 1 before the division, with them.
void simplex::unknownstage(int rows, int cols)
{
    double wmax = 1.0;
    for (int i = 0; i < rows; i++)
        if (newpd[i] > wmax) wmax = newpd[i];
    double sum = 0.0;
    for (int j = 0; j < cols; j++) cost[j] = 0.0;
    for (int i = 0; i < rows; i++) {
        newpd[i] /= wmax;
        sum += delta[i] * newpd[i];
        for (int j = 0; j < cols; j++) cost[j] += a[i][j] * newpd[i];
    }
    gcost = -sum;
    fprintf(out, "\nSimplex loop first step\n");
    stagetrace(rows, cols);
    stageend(1, exchanges(rows, cols, nunk - ndatum, NULL));
}

int simplex::residualstage(int rows, int cols)
{
    int *iobsout = (int *)zeroed(2LL * nobs + 2LL * nunk, sizeof *iobsout);
    if (!iobsout) {
        fprintf(out, "pb with allocation of iobsout\n");
        return -8;
    }
    fprintf(out, "\nSimplex loop second step\n");
    stagetrace(rows, cols);
    const int res = exchanges(rows, cols, nobs - nunk, iobsout);
    free(iobsout);
    stageend(2, res);
    return 0;
}

// Residual and identifier of a row follow from its place among the rows that the lists ask for.
// A row that did not come, where a sight without direction ended its list, is empty: a residual
// of 0 that no exchange moves. Kinds of observation without rows of their own bring too many.
int simplex::resolution()
{
    if (nextra > 0) {
        fprintf(out, "resolution: %d rows came for %d observations and fixed heights\n", nobs + nextra, nplan);
        return -3;
    }
    nobs = nplan;
    int rows = nobs, cols = nunk;
    if (ndatum != 0 && artificialstage(&rows, &cols) != 0) return -3;
    unknownstage(rows, cols);
    const int res = residualstage(rows, cols);
    if (res == 0) readout(rows);
    return res;
}

} // namespace vornengine
