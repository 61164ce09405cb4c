// Building of the simplex tableau: arrays and weights, the row of an observation, the
// conditions of a free network.
//
//   rows                  cost weight
//   ndist, ndifh,         a-priori standard deviation of the list / own one, not squared
//   ndir1, ndir2
//   nfixh                 WEIGHT_CAP: fixed heights
//   ndatum                1: conditions of a free network
//
// Rows carry no weight (metres, radians); the weight acts as cost only. rhs keeps the first
// weights, by which addrow divides, newpd what becomes of them.

#include "solvers/simplex.h"

#include <limits.h>
#include <stdlib.h>
#include <string.h>

#include "numerics/memory.h"
#include "solution/trace.h"

namespace vornengine {

// Additive constants and scales are not adjusted in a network with lumps. Every station counts,
// also where several share one unknown, so that the parameters behind are not pushed below 0.
void simplex::dropconstants()
{
    int c = 0;
    for (point *p = points; p < points + nsta; p++)
        for (int k = 3; k < 5; k++)
            if (p->n1[k] != N_NONE) {
                p->n1[k] = N_NONE;
                c++;
            }
    for (lump *l = lumps; l < lumps + nlump; l++)
        for (int e = 0; e < l->nepoch - 1; e++)
            if (l->epoch[e] != l->iref) l->iunk[e] = l->iunk[e] > c ? l->iunk[e] - c : 0;
    nunk2 = nunk2 > c ? nunk2 - c : 0;
    nunk = nunk1 + nunk2;
    if (idebug) fprintf(out, "prepare: take away %d nuisance parameters\n", c);
}

// Takes all arrays for nplan + ndatum rows; delta also has room for the nparam unknowns that
// the network numbered. Identifiers must fit an int.
int simplex::allocate(int nparam)
{
    const long long rows = (long long)nplan + ndatum;
    if (2 * (rows + nunk) + ndatum <= INT_MAX) {
        a = (double **)zeroed(rows, sizeof *a);
        rhs = (double *)zeroed(rows, sizeof *rhs);
        newpd = (double *)zeroed(rows, sizeof *newpd);
        delta = (double *)zeroed(rows > nparam ? rows : nparam, sizeof *delta);
        ibase = (int *)zeroed(rows, sizeof *ibase);
        cost = (double *)zeroed(nunk, sizeof *cost);
        inplus = (int *)zeroed(nunk, sizeof *inplus);
    }
    if (!a || !rhs || !newpd || !delta || !ibase || !cost || !inplus) {
        fprintf(out, "pb with matrix or others\n");
        return -1;
    }
    const long long width = (nunk / SIMPLEX_GROUP + 1LL) * SIMPLEX_GROUP; // at least one group
    block = (double *)zeroed(rows * width, sizeof *block);
    if (!block) {
        fprintf(out, "pb with matrix when i=%d\n", 0);
        return -1;
    }
    for (int i = 0; i < (int)rows; i++) a[i] = block + i * (size_t)width;
    return 0;
}

static double *listweights(double *w, const measure *list, int n, double s)
{
    for (int i = 0; i < n; i++) *w++ = weightfactor(s, list[i].val[1]);
    return w;
}

// The positive part of its residual is basic in a row that stays empty.
void simplex::fillweights()
{
    double *w = listweights(rhs, dist, ndist, sdist);
    w = listweights(w, difh, ndifh, sdifh);
    w = listweights(w, dir1, ndir1, sdir1);
    w = listweights(w, dir2, ndir2, sdir2);
    for (int i = 0; i < nfixh; i++) *w++ = WEIGHT_CAP;
    for (int i = 0; i < ndatum; i++) *w++ = 1.0;
    nobs = nplan + ndatum;
    memcpy(newpd, rhs, sizeof *newpd * nobs);
    for (int i = 0; i < nplan; i++) ibase[i] = 2 * nunk + i;
}

static long long rowsof(int n) { return n > 0 ? n : 0; }

int simplex::prepare()
{
    if (idebug) {
        trace_measures(out, "distances\n", dist, ndist);
        trace_measures(out, "height differences\n", difh, ndifh);
        trace_directions(this);
    }
    const int nparam = nunk;
    if (nlump > 0) dropconstants();
    setcentre();
    const long long n = rowsof(ndist) + rowsof(ndifh) + rowsof(ndir1) + rowsof(ndir2) + rowsof(nfixh);
    nplan = n + ndatum <= INT_MAX ? (int)n : INT_MAX - ndatum;
    if (allocate(nparam) != 0) return -1;
    fillweights();

    char question[] = "Do you want to balance the observations?", title[] = "Simplex Choice";
    if (pfeedback && pfeedback->decision(question, title) != 0 && balance() < 0) return -1;
    nobs = nextra = 0;
    return 0;
}

// The row buffer as a row of nunk columns; an unknown that comes twice keeps the later value.
void simplex::copyrow(int n1, int n2, double *row) const
{
    for (int k = 1; k <= n1; k++) row[ia1[k]] = a1[k];
    for (int k = 1; k <= n2; k++) row[nunk1 + ia2[k]] = a2[k];
}

// One observation without its weight. Its right-hand side is kept at 0 or above: the negative
// part of the residual is basic, in a row of negative misclosure, which changes sign, the
// positive one. Rows that a list leaves out keep their places, so that the rows behind them meet
// their own weights. A row beyond those that the lists ask for is only counted.
void simplex::addrow(int n1, int n2, double b)
{
    const int r = nobs + nskip;
    if (r >= nplan) {
        nextra++;
        return;
    }
    const double w = rhs[r];
    const bool negative = b / w < 0.0;
    for (int k = 1; k <= n1; k++) a1[k] = negative ? -(a1[k] / w) : a1[k] / w;
    for (int k = 1; k <= n2; k++) a2[k] = negative ? -(a2[k] / w) : a2[k] / w;
    copyrow(n1, n2, a[r]);
    delta[r] = negative ? -(b / w) : b / w;
    ibase[r] = 2 * nunk + r + (negative ? 0 : nplan);
    nobs++;
}

} // namespace vornengine
