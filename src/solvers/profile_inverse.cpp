// Inverse of a large factored matrix in profile storage, from its last columns to its first.
//
// With A = L D L^T the inverse Z satisfies Z L = L^-T D^-1. For a block J of columns and all
// rows R behind it, with X = L(J,J)^-1 and Y = L(R,J) X,
//   Z(R,J) = - Z(R,R) Y,    Z(J,R) its transpose,
//   Z(J,J) = X^T D(J)^-1 X - Z(J,R) Y.
// Rows of R that do not reach back to J are zero in Y and take no part: of a profile of order n
// every block costs n times the number of rows that reach it. X and Y lie in strips of 24
// columns, the wide side of the tiles,
//   x[strip][row within J][24],  y[strip][place among the rows that reach J][24];
// the narrow side is 8 rows of the profile or of Z.

#include <string.h>

#include "numerics/tiles.h"
#include "solvers/profile.h"

namespace vornengine {

enum { STRIPS = 8, BLOCK = STRIPS * TILE_LANES };

static const size_t TILE = (size_t)TILE_COLUMNS * TILE_LANES; // numbers of a tile

struct inverseblock {
    const tilekernel *tiles;
    int n;
    const double *a; // factors
    const size_t *add;
    double *z;    // [n][n]
    int from, to; // columns from to to - 1
    int nstrip;   // strips in use
    int nreach;   // rows that reach the block, in whole groups of TILE_COLUMNS
    size_t depth; // rows that a strip of y holds
    double *x;    // [STRIPS][BLOCK][TILE_LANES], its sign reversed
    double *y;    // [STRIPS][depth][TILE_LANES]
    double *b;    // [TILE_COLUMNS][TILE_STRIDE] narrow side
    double *c;    // [TILE_COLUMNS][TILE_LANES] tile at the edge of Z
};

static int min_int(int a, int b) { return a < b ? a : b; }

long long inversespace(int n)
{
    const long long depth = (long long)n + TILE_COLUMNS;
    return (depth + BLOCK) * BLOCK + (long long)TILE_COLUMNS * (TILE_STRIDE + TILE_LANES) + CACHE_LINE;
}

static double *xat(const inverseblock *q, int strip, int row)
{
    return q->x + ((size_t)strip * BLOCK + (size_t)row) * TILE_LANES;
}

static double *yat(const inverseblock *q, int strip, int place)
{
    return q->y + (strip * q->depth + (size_t)place) * TILE_LANES;
}

// x = - L(J,J)^-1, by forward substitution from minus the identity.
static void invertdiagonal(const inverseblock *q)
{
    memset(q->x, 0, (size_t)q->nstrip * BLOCK * TILE_LANES * sizeof(double));
    for (int i = 0; i < q->to - q->from; i++) xat(q, i / TILE_LANES, i)[i % TILE_LANES] = -1.0;
    for (int j = 0; j < q->to - q->from; j += TILE_COLUMNS) {
        if (j > 0) profilerows(q->n, q->a, q->add, q->from + j, q->from, q->from + j, q->b);
        for (int s = 0; s * TILE_LANES < j; s++) {
            const int k = s * TILE_LANES;
            q->tiles->product(j - k, xat(q, s, k), q->b + k, xat(q, s, j), TILE_LANES);
        }
        profilerows(q->n, q->a, q->add, q->from + j, q->from + j, q->from + j + TILE_COLUMNS, q->b);
        for (int s = 0; s * TILE_LANES <= j; s++) q->tiles->corner(q->b, xat(q, s, j));
    }
}

// Whether one of the rows r to r + 7 reaches the block.
static int reaches(const inverseblock *q, int r)
{
    for (int i = r; i < min_int(r + TILE_COLUMNS, q->n); i++)
        if (firstcol(q->add, i) < q->to) return 1;
    return 0;
}

// Rows r to r + 7 of y.
static void fillrows(const inverseblock *q, int r, int place)
{
    profilerows(q->n, q->a, q->add, r, q->from, q->to, q->b);
    for (int s = 0; s < q->nstrip; s++) {
        const int k = s * TILE_LANES;
        memset(yat(q, s, place), 0, TILE * sizeof(double));
        q->tiles->product(q->to - q->from - k, xat(q, s, k), q->b + k, yat(q, s, place), TILE_LANES);
    }
}

static void fillreaching(inverseblock *q)
{
    q->nreach = 0;
    for (int r = q->to; r < q->n; r += TILE_COLUMNS) {
        if (!reaches(q, r)) continue;
        fillrows(q, r, q->nreach);
        q->nreach += TILE_COLUMNS;
    }
}

// End of the next run of rows from r on that reach the block, at most TILE_DEPTH of them; *r is
// moved to its begin. No run is left when *r passes n.
static int nextrun(const inverseblock *q, int *r)
{
    while (*r < q->n && !reaches(q, *r)) *r += TILE_COLUMNS;
    int end = *r;
    while (end < q->n && end - *r < TILE_DEPTH && reaches(q, end)) end += TILE_COLUMNS;
    return min_int(end, q->n);
}

// Fills b with rows r to r + 7 of Z, columns from to to - 1.
static void inverserows(const inverseblock *q, int r, int from, int to)
{
    for (int c = 0; c < TILE_COLUMNS; c++) {
        double *b = q->b + (size_t)c * TILE_STRIDE;
        if (r + c < q->n)
            memcpy(b, q->z + (size_t)(r + c) * (size_t)q->n + from, (size_t)(to - from) * sizeof(double));
        else
            memset(b, 0, (size_t)(to - from) * sizeof(double));
    }
}

// The tile of Z at row r and a strip of the block, less the product of a and b. At the edge of
// the matrix the tile goes through c.
static void takeoff(const inverseblock *q, int r, int strip, int n, const double *a, const double *b)
{
    const int col = q->from + strip * TILE_LANES;
    const size_t order = (size_t)q->n;
    double *z = q->z + (size_t)r * order + col;
    if (r + TILE_COLUMNS <= q->n && col + TILE_LANES <= q->n) {
        q->tiles->product(n, a, b, z, order);
        return;
    }
    const int rows = min_int(TILE_COLUMNS, q->n - r), cols = min_int(TILE_LANES, q->n - col);
    memset(q->c, 0, TILE * sizeof(double));
    q->tiles->product(n, a, b, q->c, TILE_LANES);
    for (int i = 0; i < rows; i++)
        for (int j = 0; j < cols; j++) z[i * order + j] += q->c[i * TILE_LANES + j];
}

// Z(rows, J) less Z(rows, R) Y for rows first to last - 1. Rows within the block reach only the
// strips at and left of their diagonal.
static void reducerows(const inverseblock *q, int first, int last)
{
    int place = 0;
    for (int k = q->to; k < q->n;) {
        const int end = nextrun(q, &k);
        for (int r = first; r < last && k < end; r += TILE_COLUMNS) {
            inverserows(q, r, k, end);
            for (int s = 0; s < q->nstrip && q->from + s * TILE_LANES < r + TILE_COLUMNS; s++)
                takeoff(q, r, s, end - k, yat(q, s, place), q->b);
        }
        place += end - k;
        k = end;
    }
}

// Z(J,R) = Z(R,J)^T.
static void mirrorrows(const inverseblock *q)
{
    const size_t n = (size_t)q->n;
    for (int r = q->to; r < q->n; r += TILE_COLUMNS) {
        const int end = min_int(r + TILE_COLUMNS, q->n);
        for (int j = q->from; j < q->to; j++)
            for (int i = r; i < end; i++) q->z[(size_t)j * n + i] = q->z[(size_t)i * n + j];
    }
}

// Adds X^T D^-1 X to Z(J,J), lower triangle.
static void adddiagonal(const inverseblock *q)
{
    const int size = q->to - q->from;
    for (int j = 0; j < size; j += TILE_COLUMNS) {
        const int strip = j / TILE_LANES;
        for (int m = j; m < size; m++) {
            const double d = -rowbase(q->a, q->add, q->from + m)[q->from + m];
            const double *x = xat(q, strip, m) + j % TILE_LANES;
            for (int c = 0; c < TILE_COLUMNS; c++) q->b[c * TILE_STRIDE + (m - j)] = x[c] * d;
        }
        for (int s = 0; s <= strip; s++) takeoff(q, q->from + j, s, size - j, xat(q, s, j), q->b);
    }
}

static void mirrordiagonal(const inverseblock *q)
{
    const size_t n = (size_t)q->n;
    for (int i = q->from; i < q->to; i++)
        for (int j = q->from; j < i; j++) q->z[(size_t)j * n + i] = q->z[(size_t)i * n + j];
}

void inverseprofile(int n, const double *a, const size_t *add, double *inv, double *space, const tilekernel *tiles)
{
    inverseblock q = inverseblock();
    q.tiles = tiles;
    q.n = n;
    q.a = a;
    q.add = add;
    q.z = inv;
    q.depth = (size_t)n + TILE_COLUMNS;
    q.x = cachealigned(space);
    q.y = q.x + (size_t)BLOCK * BLOCK;
    q.b = q.y + q.depth * BLOCK;
    q.c = q.b + (size_t)TILE_COLUMNS * TILE_STRIDE;
    for (int from = (n - 1) / BLOCK * BLOCK; from >= 0; from -= BLOCK) {
        q.from = from;
        q.to = min_int(from + BLOCK, n);
        q.nstrip = (q.to - from + TILE_LANES - 1) / TILE_LANES;
        invertdiagonal(&q);
        fillreaching(&q);
        reducerows(&q, q.to, n);
        mirrorrows(&q);
        adddiagonal(&q);
        reducerows(&q, from, q.to);
        mirrordiagonal(&q);
    }
}

} // namespace vornengine
