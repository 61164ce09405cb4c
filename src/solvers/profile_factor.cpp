// Factorization of a large matrix in profile storage by panels of rows.
//
// With G(i,j) = L(i,j) D(j), as in profile.cpp,
//   G(i,j) = a(i,j) - sum of G(i,k) L(j,k) over k < j.
// A panel of 192 rows is worked on in a buffer and written back when it is finished: rows behind
// a failing one stay untouched. The buffer holds G by columns, 24 rows side by side (a strip), each
// strip from its own first column on:
//   g[strip][column - base[strip]][row within the strip]
// so that a strip is the wide side of the tiles. The narrow side, 8 rows of L, comes from the
// profile for columns left of the panel, and from the buffer, as G / D, inside. Columns go in
// blocks of 192 against all columns before them, TILE_DEPTH at a time, so that what is used
// again and again stays in the nearer caches. Elements outside the profile are zeros in the
// buffer; sums start where both sides begin, so that time grows with the squares of the lengths
// of the rows.

#include <math.h>
#include <string.h>

#include "numerics/tiles.h"
#include "solvers/profile.h"

namespace vornengine {

enum {
    STRIPS = 8,
    PANEL = STRIPS * TILE_LANES,
    CHUNK = 64 // columns copied at a time: 24 rows of them stay in the nearest cache
};

struct factorpanel {
    const tilekernel *tiles;
    int n;
    double *a;
    const size_t *add;
    double *d; // [n] reciprocal pivots of the finished rows
    double eps;
    int top, end;      // rows top to end - 1
    int nstrip;        // strips in use
    int base;          // first column of all, a multiple of TILE_COLUMNS
    int first[STRIPS]; // first column of each strip
    double *g[STRIPS]; // [columns from first, rounded down, to the last of the strip][TILE_LANES]
    double *b;         // [TILE_COLUMNS][TILE_STRIDE] narrow side
};

static int min_int(int a, int b) { return a < b ? a : b; }
static int max_int(int a, int b) { return a > b ? a : b; }
static int roundup(int v, int step) { return (v + step - 1) / step * step; }

// Smallest first column of rows from to to - 1.
static int firstof(int n, const size_t *add, int from, int to)
{
    int f = from;
    for (int i = from; i < min_int(to, n); i++) f = min_int(f, firstcol(add, i));
    return f;
}

// First column of a strip in the buffer.
static int rounddown(int v) { return v / TILE_COLUMNS * TILE_COLUMNS; }

// Columns that the strip at row from holds, its own last one among them.
static size_t stripwidth(int n, const size_t *add, int from)
{
    return (size_t)(from + TILE_LANES - rounddown(firstof(n, add, from, from + TILE_LANES)));
}

long long factorspace(int n, const size_t *add)
{
    long long most = 0;
    for (int top = 0; top < n; top += PANEL) {
        long long width = 0;
        for (int from = top; from < min_int(top + PANEL, n); from += TILE_LANES)
            width += (long long)stripwidth(n, add, from);
        if (width > most) most = width;
    }
    return most * TILE_LANES + (long long)TILE_COLUMNS * TILE_STRIDE + CACHE_LINE;
}

static double *column(const factorpanel *p, int strip, int col)
{
    return p->g[strip] + (size_t)(col - rounddown(p->first[strip])) * TILE_LANES;
}

// Copies columns from to to - 1 of the rows of a strip into the buffer, which is zero.
static void loadcolumns(const factorpanel *p, int strip, int from, int to)
{
    const int first = p->top + strip * TILE_LANES, end = min_int(first + TILE_LANES, p->n);
    for (int i = first; i < end; i++) {
        const double *row = rowbase(p->a, p->add, i);
        double *g = column(p, strip, from) + (i - first);
        const int last = min_int(to, i + 1);
        for (int k = max_int(from, firstcol(p->add, i)); k < last; k++) g[(size_t)(k - from) * TILE_LANES] = row[k];
    }
}

// Lays a strip at g and returns the address behind it.
static double *loadstrip(factorpanel *p, int strip, double *g)
{
    const int first = p->top + strip * TILE_LANES, end = min_int(first + TILE_LANES, p->n);
    const size_t size = stripwidth(p->n, p->add, first) * TILE_LANES;
    p->g[strip] = g;
    p->first[strip] = firstof(p->n, p->add, first, end);
    p->base = min_int(p->base, rounddown(p->first[strip]));
    memset(g, 0, size * sizeof(double));
    for (int k = p->first[strip]; k < end; k += CHUNK) loadcolumns(p, strip, k, k + CHUNK);
    return g + size;
}

static void loadpanel(factorpanel *p, int top, double *g)
{
    p->top = p->base = top;
    p->end = min_int(top + PANEL, p->n);
    p->nstrip = (p->end - top + TILE_LANES - 1) / TILE_LANES;
    for (int s = 0; s < p->nstrip; s++) g = loadstrip(p, s, g);
    p->b = g;
}

// Writes columns from to to - 1 of a row back as L.
static void storecolumns(const factorpanel *p, int i, int from, int to)
{
    double *row = rowbase(p->a, p->add, i);
    const int at = i - p->top, last = min_int(to, i);
    const int first = max_int(from, firstcol(p->add, i));
    if (first >= last) return;
    const double *g = column(p, at / TILE_LANES, first) + at % TILE_LANES;
    for (int k = first; k < last; k++, g += TILE_LANES) row[k] = *g * p->d[k];
}

// Writes the rows before end back, with the reciprocals of their pivots; row failed keeps its
// diagonal.
static void storerows(const factorpanel *p, int end, int failed)
{
    for (int first = p->top; first < end; first += TILE_LANES) {
        const int last = min_int(first + TILE_LANES, end);
        for (int k = p->base; k < last; k += CHUNK)
            for (int i = first; i < last; i++) storecolumns(p, i, k, k + CHUNK);
    }
    for (int i = p->top; i < end; i++)
        if (i != failed) rowbase(p->a, p->add, i)[i] = p->d[i];
}

// Fills b with columns from to to - 1 of rows j to j + 7, which are finished, zeros outside the
// profile.
void profilerows(int n, const double *a, const size_t *add, int j, int from, int to, double *b)
{
    for (int c = 0; c < TILE_COLUMNS; c++, b += TILE_STRIDE) {
        const int row = j + c, end = min_int(to, row);
        const int start = row < n ? max_int(from, min_int(firstcol(add, row), end)) : from;
        if (row >= n || start >= end) {
            memset(b, 0, (size_t)(to - from) * sizeof(double));
            continue;
        }
        memset(b, 0, (size_t)(start - from) * sizeof(double));
        memcpy(b + (start - from), a + add[row + 1] - 1 - (size_t)(row - start),
               (size_t)(end - start) * sizeof(double));
        memset(b + (end - from), 0, (size_t)(to - end) * sizeof(double));
    }
}

// The same from the rows of the panel itself.
static void panelrows(const factorpanel *p, int j, int from, int to)
{
    const int at = j - p->top;
    const double *g = column(p, at / TILE_LANES, from) + at % TILE_LANES;
    for (int k = from; k < to; k++, g += TILE_LANES)
        for (int c = 0; c < TILE_COLUMNS; c++) p->b[c * TILE_STRIDE + (k - from)] = g[c] * p->d[k];
}

// Takes the columns from to to - 1 off the columns j to j + 7 of all strips that hold them.
static void reducecolumns(const factorpanel *p, int j, int from, int to)
{
    const int start = max_int(from, firstof(p->n, p->add, j, j + TILE_COLUMNS));
    if (start >= to) return;
    const int inside = j >= p->top;
    if (inside)
        panelrows(p, j, start, to);
    else
        profilerows(p->n, p->a, p->add, j, start, to, p->b);
    for (int s = inside ? (j - p->top) / TILE_LANES : 0; s < p->nstrip; s++) {
        const int k = max_int(start, p->first[s]);
        if (k < to) p->tiles->product(to - k, column(p, s, k), p->b + (k - start), column(p, s, j), TILE_LANES);
    }
}

// Takes the unit triangle in b off columns j to j + 7 of the strips from first on that hold them.
static void corners(const factorpanel *p, int j, int first)
{
    for (int s = first; s < p->nstrip; s++)
        if (j + TILE_COLUMNS > p->first[s]) p->tiles->corner(p->b, column(p, s, j));
}

// Finishes columns j to j + 7 left of the panel.
static void cornerbefore(const factorpanel *p, int j)
{
    profilerows(p->n, p->a, p->add, j, j, j + TILE_COLUMNS, p->b);
    corners(p, j, 0);
}

// The same inside the panel, with its pivots. Returns 0, or the failing row + 1.
static int cornerinside(const factorpanel *p, int j)
{
    const int strip = (j - p->top) / TILE_LANES, lane = (j - p->top) % TILE_LANES;
    double *g = column(p, strip, j);
    for (int c = 0; c < TILE_COLUMNS && j + c < p->n; c++) {
        double *gc = g + (size_t)c * TILE_LANES;
        for (int e = 0; e < c; e++) {
            const double *ge = g + (size_t)e * TILE_LANES;
            const double l = ge[lane + c] * p->d[j + e];
            p->b[c * TILE_STRIDE + e] = l;
            for (int r = lane + c; r < TILE_LANES; r++) gc[r] -= l * ge[r];
        }
        const double pivot = gc[lane + c];
        if (fabs(pivot) < p->eps) {
            p->d[j + c] = pivot;
            return j + c + 1;
        }
        p->d[j + c] = 1.0 / pivot;
    }
    corners(p, j, strip + 1);
    return 0;
}

// Works the columns from to to - 1, at most PANEL, off the panel.
static int reduceblock(const factorpanel *p, int from, int to)
{
    for (int k = p->base; k < from; k += TILE_DEPTH)
        for (int j = from; j < to; j += TILE_COLUMNS) reducecolumns(p, j, k, min_int(k + TILE_DEPTH, from));
    for (int j = from; j < to; j += TILE_COLUMNS) {
        reducecolumns(p, j, from, j);
        if (j < p->top) {
            cornerbefore(p, j);
            continue;
        }
        const int failed = cornerinside(p, j);
        if (failed) return failed;
    }
    return 0;
}

static int factorrows(factorpanel *p)
{
    int from = p->base;
    while (from < p->end) {
        const int to = min_int(from / PANEL * PANEL + PANEL, roundup(p->end, TILE_COLUMNS));
        const int failed = reduceblock(p, from, to);
        if (failed) {
            storerows(p, failed, failed - 1);
            return failed;
        }
        from = to;
    }
    storerows(p, p->end, -1);
    return 0;
}

int factorprofile(int n, double *a, const size_t *add, double *d, double *space, const tilekernel *tiles)
{
    factorpanel p = factorpanel();
    p.tiles = tiles;
    p.n = n;
    p.a = a;
    p.add = add;
    p.d = d;
    p.eps = pivotlimit(n, a, add);
    for (int top = 0; top < n; top += PANEL) {
        loadpanel(&p, top, cachealigned(space));
        const int failed = factorrows(&p);
        if (failed) return failed;
    }
    return 0;
}

} // namespace vornengine
