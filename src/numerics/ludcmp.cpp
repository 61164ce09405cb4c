// LU decomposition by Crout's method with implicit pivoting: the pivot of a column is the
// element that is largest when every row is scaled to a largest element of 1.
//
// The factors take the place of the matrix: U on and above the diagonal, L below it, its
// diagonal of ones not stored.  a(i,j) = sum over k < min(i,j) of l(i,k) u(k,j), and the rest.

#include "numerics/ludcmp.h"

#include <math.h>
#include <stdlib.h>

#include "numerics/memory.h"

namespace vornengine {

// vv[i] = 1 / largest of row i. Returns 0, or -2 when a row is zero.
static int row_scales(double **a, int n, double *vv)
{
    for (int i = 0; i < n; i++) {
        double big = 0.0;
        for (int j = 0; j < n; j++)
            if (fabs(a[i][j]) > big) big = fabs(a[i][j]);
        if (big == 0.0) return -2;
        vv[i] = 1.0 / big;
    }
    return 0;
}

// a(i,j) less what the first n columns of row i and rows of column j have in common.
static double reduced(double **a, int i, int j, int n)
{
    double sum = a[i][j];
    for (int k = 0; k < n; k++) sum -= a[i][k] * a[k][j];
    return sum;
}

// Reduces column j and returns the row of its pivot; the last one of equals.
static int reduce_column(double **a, int n, int j, const double *vv)
{
    for (int i = 0; i < j; i++) a[i][j] = reduced(a, i, j, i);
    double big = 0.0;
    int pivot = j;
    for (int i = j; i < n; i++) {
        a[i][j] = reduced(a, i, j, j);
        const double size = vv[i] * fabs(a[i][j]);
        if (size >= big) {
            big = size;
            pivot = i;
        }
    }
    return pivot;
}

static void swap_rows(double **a, int n, int i, int j)
{
    for (int k = 0; k < n; k++) {
        const double t = a[i][k];
        a[i][k] = a[j][k];
        a[j][k] = t;
    }
}

// The decomposition with a work array vv[n]. Returns 0, -2 or -3.
static int decompose(double **a, int n, int *indx, double *d, double *vv)
{
    *d = 1.0;
    if (row_scales(a, n, vv) != 0) return -2;
    for (int j = 0; j < n; j++) {
        const int pivot = reduce_column(a, n, j, vv);
        if (pivot != j) {
            swap_rows(a, n, pivot, j);
            *d = -*d;
            vv[pivot] = vv[j];
        }
        indx[j] = pivot;
        if (a[j][j] == 0.0) return -3;
        if (j == n - 1) continue;
        const double scale = 1.0 / a[j][j];
        for (int i = j + 1; i < n; i++) a[i][j] *= scale;
    }
    return 0;
}

int ludcmp(double **a, int n, int *indx, double *d, FILE *out)
{
    double *vv = (double *)zeroed(n, sizeof(double));
    if (!vv) {
        fprintf(out, "In ludcmp: pb with vv\n");
        return -1;
    }
    const int result = decompose(a, n, indx, d, vv);
    free(vv);
    if (result == -2) fprintf(out, "In ludcmp: singular matrix\n");
    if (result == -3) fprintf(out, "In ludcmp: null pivot\n");
    return result;
}

// Solves L y = P b in place of b; leading zeros of b stay zero and are skipped.
static void forward(double **a, int n, const int *indx, double *b)
{
    int first = -1;
    for (int i = 0; i < n; i++) {
        double sum = b[indx[i]];
        b[indx[i]] = b[i];
        if (first >= 0)
            for (int j = first; j < i; j++) sum -= a[i][j] * b[j];
        else if (sum != 0.0)
            first = i;
        b[i] = sum;
    }
}

void lubksb(double **a, int n, const int *indx, double *b)
{
    forward(a, n, indx, b);
    for (int i = n - 1; i >= 0; i--) {
        double sum = b[i];
        for (int j = i + 1; j < n; j++) sum -= a[i][j] * b[j];
        b[i] = sum / a[i][i];
    }
}

} // namespace vornengine
