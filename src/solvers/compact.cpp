// Least squares in profile storage: set-up of the profile, assembly, datum rows,
// exchanges, solution and inverse. Unknowns in metres and radians.
//
// Full rows, which start at column 0, are needed wherever unknowns are exchanged: all
// rows of lump parameters, the last ndatum coordinates (the last seven with lumps and no
// datum) and all datum rows.

#include "solvers/compact.h"

#include <limits.h>
#include <math.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include "numerics/memory.h"
#include "numerics/packed.h"
#include "solution/datumrows.h"
#include "solvers/profile.h"

namespace vornengine {

const int NLUMPPAR = 7; // parameters of one lump epoch

compact::compact(const solverinput &in) : solution(in)
{
    compadd = NULL;
    cnorm = NULL;
    work = NULL;
}

void compact::finish()
{
    free(rhs);
    free(delta);
    free(compadd);
    free(cnorm);
    free(work);
    rhs = delta = cnorm = work = NULL;
    compadd = NULL;
    freestat();
    dropimport();
    if (!inv) return;
    if (dim == 3) stationcofactors();
    free(inv);
    inv = NULL;
}

void compact::banner()
{
    fprintf(out, "\n\nCompact storage solution\n");
    fprintf(out, "Version 0.0\n");
}

// ---- profile -------------------------------------------------------------------

// Lowers the first column of all unknowns of one row to the smallest coordinate among
// them; without a coordinate, to the smallest nuisance unknown. During the scan
// compadd[r] is the first column of row r.
void compact::lower(const int *first, int nfirst, const int *second, int nsecond)
{
    int m = INT_MAX;
    for (int i = 0; i < nfirst; i++)
        if (first[i] != N_NONE && first[i] < m) m = first[i];
    if (m == INT_MAX)
        for (int i = 0; i < nsecond; i++)
            if (second[i] != N_NONE && nunk1 + second[i] < m) m = nunk1 + second[i];
    for (int i = 0; i < nfirst; i++)
        if (first[i] != N_NONE && compadd[first[i]] > (size_t)m) compadd[first[i]] = (size_t)m;
    for (int i = 0; i < nsecond; i++)
        if (second[i] != N_NONE && compadd[nunk1 + second[i]] > (size_t)m) compadd[nunk1 + second[i]] = (size_t)m;
}

// The numbers of the six coordinates of two points.
static void sixcoordinates(const point *p, const point *q, int number[6])
{
    for (int c = 0; c < 3; c++) {
        number[c] = p->n0[c];
        number[3 + c] = q->n0[c];
    }
}

// Scans a list with the nuisance unknowns n1[first..last] of the station, and the
// refraction term too if asked for.
void compact::scanpair(const measure *list, int n, int first, int last, int alsorefraction)
{
    for (int i = 0; i < n; i++) {
        int number[6], second[4] = {N_NONE, N_NONE, N_NONE, N_NONE}, nsecond = 0;
        sixcoordinates(list[i].p1, list[i].p2, number);
        for (int c = first; c <= last; c++) second[nsecond++] = list[i].p1->n1[c];
        if (alsorefraction) second[nsecond++] = list[i].p1->n1[5];
        lower(number, 6, second, nsecond);
    }
}

void compact::scangps()
{
    for (int i = 0; i < ngps; i++) {
        int number[6];
        sixcoordinates(gps[i].p1, gps[i].p2, number);
        lower(number, 6, NULL, 0);
    }
}

// A run of image points with one station takes the camera of its first one in the rows.
void compact::scanphoto()
{
    int icam = -1;
    for (int i = 0; i < nobsuv && obsuv1[i].p1; i++) {
        const measure *m = obsuv1 + i;
        if (i == 0 || m->p1 != obsuv1[i - 1].p1) icam = m->typ;
        int number[6], second[23], nsecond = 0;
        sixcoordinates(m->p1, m->p2, number);
        for (int c = 0; c < 3; c++) second[nsecond++] = m->p1->n1[c];
        for (int k = 0; k < (icam == m->typ ? 1 : 2); k++) {
            const int c = k == 0 ? m->typ : icam;
            if (c < 0 || c >= ncamera) continue;
            for (int p = 0; p < cameras[c].npar; p++) second[nsecond++] = cameras[c].ipar[p];
        }
        lower(number, 6, second, nsecond);
    }
}

void compact::scanobs()
{
    scanpair(dist, ndist, 3, 4, 0);
    for (int i = 0; i < ndifh; i++) {
        const int number[2] = {difh[i].p1->n0[2], difh[i].p2->n0[2]};
        lower(number, 2, NULL, 0);
    }
    // With equal counts the two lists of angles are taken as parallel.
    if (ndir1 != ndir2) scanpair(dir1, ndir1, 0, 2, 0);
    scanpair(dir2, ndir2, 0, 2, 1);
    scangps();
    scanphoto();
}

// Couplings that the observations scanned above may not hold: azimuths between points
// that nothing else connects, directions that are not parallel to the vertical angles, a
// fixed height of a point without observations in its plane. Rows grow only where such a
// row would fall outside the profile.
void compact::scanextra()
{
    scanpair(az, naz, 0, -1, 0);
    if (ndir1 == ndir2) scanpair(dir1, ndir1, 0, 2, 0);
    if (nfixh > 0)
        for (int i = 0; i < npoints; i++)
            if (points[i].defdatum[2] == DATUM_FIXED_HEIGHT) lower(points[i].n0, 3, NULL, 0);
}

// Rows of lump parameters are full. When the last seven unknowns are exchanged, the rows
// before them must reach the columns that they are exchanged with.
void compact::scanlumps()
{
    for (int i = 0; i < nlump; i++)
        for (int j = 0; j < lumps[i].nepoch - 1; j++)
            for (int p = 0; p < NLUMPPAR; p++) compadd[nunk1 + lumps[i].iunk[j] + p] = 0;
    if (nlump == 0 || ndatum != 0 || nunk1 < NLUMPPAR || nunk2 < NLUMPPAR) return;
    const size_t reached = (size_t)(nunk1 - NLUMPPAR);
    for (int r = nunk1; r < nunk; r++)
        if (compadd[r] > reached) compadd[r] = reached;
    for (int r = nunk - NLUMPPAR; r < nunk; r++) compadd[r] = 0;
}

// Lowers the rows of all imported coordinates to the smallest of them.
void compact::scanimport()
{
    if (icon != 2 && icon != 3) return;
    int m = INT_MAX;
    for (int k = 0; k < nimport * dim; k++) {
        const int number = lcon[k / dim] + k % dim;
        if (number >= 0 && number < m) m = number;
    }
    for (int k = 0; k < nimport * dim; k++) {
        const int row = lcon[k / dim] + k % dim;
        if (row >= 0 && row < nunk1 && compadd[row] > (size_t)m) compadd[row] = (size_t)m;
    }
}

// Turns first columns into addresses. Returns -1 when the profile, with the rows that
// become full later, exceeds the address space.
int compact::addresses()
{
    unsigned long long total = 2ULL * (NLUMPPAR + (unsigned)ndatum) * ((unsigned long long)nunk + ndatum + 1);
    for (int r = 0; r < nunk; r++) total += (size_t)r - compadd[r] + 1;
    if (total > SIZE_MAX / sizeof(double)) return -1;

    size_t acc = 0;
    for (int r = 0; r < nunk; r++) {
        const size_t length = (size_t)r - compadd[r] + 1;
        compadd[r] = acc;
        acc += length;
    }
    compadd[nunk] = acc;
    return 0;
}

// Makes rows first to last - 1 full.
void compact::fullrows(int first, int last)
{
    for (int q = first < 0 ? 0 : first; q < last; q++) {
        const size_t more = (size_t)firstcol(compadd, q);
        for (int r = q + 1; r <= nunk; r++) compadd[r] += more;
    }
}

int compact::prepare()
{
    compadd = (size_t *)zeroed((long long)nunk + 1 + ndatum, sizeof(size_t));
    if (!compadd) {
        fprintf(out, "\n*** pb with allocation of compadd ***\n");
        return -1;
    }
    for (int i = 0; i <= nunk; i++) compadd[i] = (size_t)i;

    if (idebug) traceobs(1);
    // This line comes with or without a trace.
    else if (ndir1 != ndir2 && !(dim == 2 && ndir2 == 0))
        fprintf(out, "\n");

    scanobs();
    scanextra();
    scanlumps();
    scanimport();
    if (addresses() != 0) {
        fprintf(out, "\n*** pb with compact allocation ***\n");
        return -1;
    }

    const int exchanged = ndatum != 0 ? ndatum : nlump != 0 ? NLUMPPAR : 0;
    fullrows(nunk1 - exchanged, nunk1);
    if (ndatum != 0) {
        for (int k = 0; k < ndatum; k++) compadd[nunk + k + 1] = compadd[nunk + k] + (size_t)(nunk + 1 + k);
        if (dim != 1) setcentre();
        nunk += ndatum;
    }
    if (exchanged) {
        rhs = (double *)zeroed(nunk, sizeof(double));
        if (!rhs) {
            fprintf(out, "\n*** pb with allocation of t ***\n");
            return -1;
        }
    }

    cnorm = (double *)zeroed((long long)compadd[nunk], sizeof(double));
    delta = (double *)zeroed(nunk, sizeof(double));
    work = (double *)zeroed(solvespace(nunk, compadd), sizeof(double));
    if (!cnorm || !delta || !work || indeximport() != 0) {
        fprintf(out, "\n*** pb with compact allocation ***\n");
        return -1;
    }
    return 0;
}

// ---- system --------------------------------------------------------------------

// Element of the lower triangle, or null when it lies outside the profile.
double *compact::element(int row, int col)
{
    if (row < 0 || row >= nunk || col > row || col < firstcol(compadd, row)) return NULL;
    return rowbase(cnorm, compadd, row) + col;
}

void compact::add(int row, int col, double value)
{
    double *e = element(row, col);
    if (e) *e += value;
}

// Writes an entry of a datum row; col is the number of a coordinate, negative for none.
void compact::put(int row, int col, double value)
{
    double *e = col < 0 ? NULL : element(row, col);
    if (e) *e = value;
}

void compact::zeronormal()
{
    memset(delta, 0, (size_t)nunk * sizeof(double));
    memset(cnorm, 0, compadd[nunk] * sizeof(double));
    if (icon == 2 || icon == 3) importblock();
    if (ndatum != 0) datumrows();
}

// Place of the element (r, q) of a symmetric matrix in rows of its lower triangle.
static size_t packed(int r, int q) { return r > q ? packed_place(r, q) : packed_place(q, r); }

// Adds the weight matrix of the imported points; the right-hand side takes all of its
// entries, the matrix those of the lower triangle. The last entries of lcon may be stale when
// some imported points dropped out: a number that is no coordinate adds nothing.
void compact::importblock()
{
    const int n = nimport * dim;
    double t = 0.0;
    for (int q = 0; q < n; q++) {
        const int col = lcon[q / dim] + q % dim;
        t = importdiff(col, t);
        for (int r = 0; r < n; r++) {
            const int row = lcon[r / dim] + r % dim;
            if (row < 0 || row >= nunk1) continue;
            const double w = Qcon[packed(r, q)];
            if (col <= row) add(row, col, w);
            delta[row] += t * w;
        }
    }
}

// Scale of a height network's datum row: the smallest standard deviation of its height
// differences, between 1e-5 and 1.
double compact::heightscale()
{
    double v = 1.0;
    for (int i = 0; i < ndifh; i++)
        if (difh[i].val[1] < v) v = difh[i].val[1];
    return v < 1.0e-05 ? 1.0e-05 : v;
}

void compact::datumrows()
{
    const int r0 = nunk1 + nunk2;
    const double v = dim == 1 ? heightscale() : 1.0;
    const datumflags flags = dim == 2 ? FLAG_OF_COLUMN : FLAG_OF_VALUE;
    const bool mixed = dim == 3 && pproject->imixed != -1;
    for (const point *p = points; p < points + npoints; p++) {
        datumentry e[DATUM_ENTRIES];
        const int n = mixed ? turn_entries(p, centre, flags, e) : datum_entries(p, centre, dim, ndatum, flags, e);
        for (int k = 0; k < n; k++) put(r0 + e[k].row, p->n0[e[k].coordinate], e[k].value / v);
    }
}

void compact::addrow(int n1, int n2, double b)
{
    for (int i = 1; i <= n1; i++) {
        const int u = ia1[i];
        delta[u] += b * a1[i];
        for (int j = 1; j <= n1; j++)
            if (ia1[j] <= u) add(u, ia1[j], a1[i] * a1[j]);
    }
    for (int i = 1; i <= n2; i++) {
        const int u = nunk1 + ia2[i];
        delta[u] += b * a2[i];
        for (int j = 1; j <= n1; j++) add(u, ia1[j], a2[i] * a1[j]);
        for (int j = 1; j <= n2; j++)
            if (nunk1 + ia2[j] <= u) add(u, nunk1 + ia2[j], a2[i] * a2[j]);
    }
}

void compact::buildgps(int ibase, const int iu[6], const double w[3])
{
    const double *q = gps[ibase].w;
    const double W[3][3] = {{q[0], q[1], q[3]}, {q[1], q[2], q[4]}, {q[3], q[4], q[5]}};
    for (int c = 0; c < 6; c++) {
        if (iu[c] < 0) continue;
        const double *row = W[c % 3], side = c < 3 ? -1.0 : 1.0;
        delta[iu[c]] += side * (row[0] * w[0] + row[1] * w[1] + row[2] * w[2]);
        for (int e = 0; e < 6; e++)
            if (iu[e] >= 0 && iu[e] <= iu[c]) add(iu[c], iu[e], side * (e < 3 ? -1.0 : 1.0) * row[e % 3]);
    }
}

// ---- exchanges -----------------------------------------------------------------

// Number of exchanged pairs: the datum rows, or the last lump epoch without a datum.
int compact::npair() { return ndatum != 0 ? ndatum : nlump != 0 ? NLUMPPAR : 0; }

// Pair k: one of the last coordinates, and the datum row or lump parameter put before it.
void compact::pair(int k, int *a, int *b)
{
    const int n = npair();
    *a = nunk1 - n + k;
    *b = ndatum != 0 ? nunk1 + nunk2 + k : nunk - n + k;
}

// Symmetric exchange of the unknowns a and b, whose rows are full.
int compact::exchange(int a, int b)
{
    if (a < 0 || a >= b || b >= nunk || firstcol(compadd, a) != 0 || firstcol(compadd, b) != 0) {
        fprintf(out, "\nProblem in exchange between %d and %d\n", a, b);
        return -1;
    }
    double *rowa = rowbase(cnorm, compadd, a), *rowb = rowbase(cnorm, compadd, b);
    double *t = rhs, *w = work; // columns a and b of the symmetric matrix, up to row b
    for (int j = 0; j <= b; j++) {
        const double *ja = j <= a ? rowa + j : element(j, a);
        t[j] = ja ? *ja : 0.0;
        w[j] = rowb[j];
    }
    for (int j = 0; j < a; j++) rowa[j] = w[j];
    rowa[a] = w[b];
    for (int r = a + 1; r < b; r++) {
        double *ra = element(r, a);
        if (ra) *ra = rowb[r];
    }
    for (int j = 0; j < b; j++) rowb[j] = t[j];
    rowb[a] = t[b];
    rowb[b] = t[a];
    for (int r = b + 1; r < nunk; r++) {
        double *ra = element(r, a), *rb = element(r, b);
        if (!ra || !rb) continue;
        const double keep = *ra;
        *ra = *rb;
        *rb = keep;
    }
    return 0;
}

int compact::exchanges()
{
    for (int k = 0; k < npair(); k++) {
        int a, b;
        pair(k, &a, &b);
        if (exchange(a, b) != 0) return -1;
    }
    return 0;
}

// ---- solution and inverse ------------------------------------------------------

static void swapd(double *a, double *b)
{
    const double keep = *a;
    *a = *b;
    *b = keep;
}

void compact::swapdelta()
{
    for (int k = 0; k < npair(); k++) {
        int a, b;
        pair(k, &a, &b);
        swapd(delta + a, delta + b);
    }
}

// The line of a pivot below the limit; row is the failing one.
void compact::pivotline(const char *routine, int row)
{
    fprintf(out, "\n*** Problem with routine %s at line %d ***\n", routine, row);
    fprintf(out, "pivot[%d]=%19.15lf\n", row, work[row]);
    if (idebug == 9) debugnormal();
}

int compact::resolution()
{
    if (exchanges() != 0) return -1;
    swapdelta();
    const int r = cvec(nunk, cnorm, compadd, delta, work);
    if (r != 0) {
        pivotline("cvec", r - 1);
        return -2;
    }
    swapdelta();
    return 0;
}

// Swaps rows and columns of the inverse back to the natural order of the unknowns.
void compact::swapinverse(int a, int b)
{
    const size_t n = (size_t)nunk;
    for (size_t c = 0; c < n; c++) swapd(inv + a * n + c, inv + b * n + c);
    for (size_t r = 0; r < n; r++) swapd(inv + r * n + a, inv + r * n + b);
}

int compact::inverse()
{
    zeronormal(); // the profile holds factors since the last solution
    normal();
    inv = (double *)zeroed_square(nunk, sizeof(double));
    double *space = (double *)zeroed(invertspace(nunk), sizeof(double));
    if (!inv || !space) {
        free(space);
        free(inv); // without it finish exports nothing
        inv = NULL;
        fprintf(out, "\n*** pb with allocation of inv ***\n");
        return -9;
    }
    const int r = exchanges() != 0 ? -1 : cinverse(nunk, cnorm, compadd, inv, work, space);
    free(space);
    if (r < 0) return -1;
    if (r != 0) {
        pivotline("cmat", r - 1);
        return -2;
    }
    for (int k = 0; k < npair(); k++) {
        int a, b;
        pair(k, &a, &b);
        swapinverse(a, b);
    }
    return 0;
}

// ---- trace ---------------------------------------------------------------------

// Rows first to last - 1 with their non-zero elements, indexed by position in the profile.
void compact::printrows(const char *type, int first, int last)
{
    fprintf(out, "%s\n", type);
    for (int row = first; row < last; row++) {
        if (irun == -2)
            fprintf(out, "line %d \n", row);
        else
            fprintf(out, "line %d   delta %25.12lf\n", row, delta[row]);
        for (size_t p = compadd[row]; p < compadd[row + 1]; p++)
            if (cnorm[p] != 0.0) fprintf(out, "%ld    %25.12lf\n", (long)p, cnorm[p]);
    }
}

void compact::debugnormal()
{
    fprintf(out, "\nNormal matrix line by line\n");
    printrows("type 1", 0, nunk1);
    printrows("type 2", nunk1, nunk1 + nunk2);
    printrows("type 3", nunk1 + nunk2, nunk);
    if (irun == -2) return;
    fprintf(out, "\nRHS to check \n");
    for (int i = 0; i < nunk1; i++) fprintf(out, "first RHS     #%3d = %25.12lf\n", i, delta[i]);
    for (int i = 0; i < nunk2; i++) fprintf(out, "other RHS     #%3d = %25.12lf\n", i, delta[nunk1 + i]);
    for (int i = nunk1 + nunk2; i < nunk; i++)
        fprintf(out, "datum RHS     #%3d = %25.12lf\n", i - nunk1 - nunk2, delta[i]);
}

} // namespace vornengine
