// Fit of a local frame to the known points of the network, in the plane (metres, radians).
//
// Two known points: the similarity transformation that takes both to their coordinates,
//   X = a x - b y + tx,  Y = b x + a y + ty,  rotation = atan2(b, a),  scale = sqrt(a^2 + b^2)
// from the frame (x, y) = (xap, yap) to (X, Y) = xpt[0..1]; a, b, tx, ty from
//   | x1  -y1  1  0 | | a  |   | X1 |
//   | y1   x1  0  1 | | b  | = | Y1 |
//   | x2  -y2  1  0 | | tx |   | X2 |
//   | y2   x2  0  1 | | ty |   | Y2 |
// One known point: a shift.

#include "approx/approx.h"

#include <math.h>

#include "approx/rows.h"
#include "numerics/ludcmp.h"
#include "numerics/memory.h"

namespace vornengine {

enum { NPARAMETER = 4 };

// The two rows of one point.
static void point_rows(double **row, double x, double y)
{
    row[0][0] = x;
    row[0][1] = -y;
    row[0][2] = 1.0;
    row[1][0] = y;
    row[1][1] = x;
    row[1][3] = 1.0;
}

// Puts a, b, tx, ty in place of the right-hand side X1, Y1, X2, Y2. Returns 0 or -1.
static int solve(double **mat, double *parameter, FILE *out)
{
    int indx[NPARAMETER];
    double d;
    if (ludcmp(mat, NPARAMETER, indx, &d, out) != 0) return -1;
    lubksb(mat, NPARAMETER, indx, parameter);
    return 0;
}

void approx::similarity(const double *parameter, double *xap, double *yap, double *oap) const
{
    const double a = parameter[0], b = parameter[1], tx = parameter[2], ty = parameter[3];
    const double rotation = atan2(b, a), scale = sqrt(a * a + b * b);
    if (idebug) fprintf(out, "tx   %15.5lf\nty   %15.5lf\nscale in t2pt %15.5lf\n", tx, ty, scale);
    for (int i = 0; i < npoints; i++) {
        const double x = xap[i], y = yap[i];
        xap[i] = a * x - b * y + tx;
        yap[i] = b * x + a * y + ty;
        if (i < nsta) oap[i] += rotation;
    }
}

int approx::t2pt(int p1, int p2, double *xap, double *yap, double *oap)
{
    double **mat = (double **)zeroed(NPARAMETER, sizeof(double *));
    if (!mat || rows_take(mat, NPARAMETER) < NPARAMETER) {
        fprintf(out, "in t2pt, cannot allocate\n");
        rows_free(mat, NPARAMETER);
        return -1;
    }
    point_rows(mat, xap[p1], yap[p1]);
    point_rows(mat + 2, xap[p2], yap[p2]);
    double parameter[NPARAMETER] = {points[p1].xpt[0], points[p1].xpt[1], points[p2].xpt[0], points[p2].xpt[1]};
    const int result = solve(mat, parameter, out);
    rows_free(mat, NPARAMETER);
    if (result == 0) similarity(parameter, xap, yap, oap);
    return result;
}

// A pure shift: orientations stay, also where a station has a fixed one.
void approx::t1pt(int p, double *xap, double *yap, double *)
{
    const double dx = points[p].xpt[0] - xap[p], dy = points[p].xpt[1] - yap[p];
    for (int i = 0; i < npoints; i++) {
        xap[i] += dx;
        yap[i] += dy;
    }
}

// The first point from start on with a known plane position, or npoints.
int approx::next_known(int start) const
{
    int i = start;
    while (i < npoints && (points[i].n0[0] != N_NONE || points[i].n0[1] != N_NONE)) i++;
    return i;
}

int approx::transformations(double *xap, double *yap, double *oap)
{
    if (idebug) fprintf(out, "Must do transformations.. \n");
    const int p1 = next_known(0), p2 = p1 < npoints ? next_known(p1 + 1) : npoints;
    if (p1 == npoints) {
        if (idebug) fprintf(out, "no control found \n");
        return 0;
    }
    if (p2 == npoints) {
        if (idebug) fprintf(out, "only 1 point %s \n", points[p1].name);
        t1pt(p1, xap, yap, oap);
        return 0;
    }
    if (idebug) fprintf(out, "use points %s and %s\n", points[p1].name, points[p2].name);
    if (t2pt(p1, p2, xap, yap, oap) == 0) return 0;
    fprintf(out, "In spread: stop in t2pt\n");
    return -5;
}

} // namespace vornengine
