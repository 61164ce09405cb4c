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

#include "approx/transformation.h"

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

static void similarity(const approxdata *net, spreadtables *tab, const double *parameter)
{
    const double a = parameter[0], b = parameter[1], tx = parameter[2], ty = parameter[3];
    const double rotation = atan2(b, a), scale = sqrt(a * a + b * b);
    if (net->idebug) fprintf(net->out, "tx   %15.5lf\nty   %15.5lf\nscale in t2pt %15.5lf\n", tx, ty, scale);
    for (int i = 0; i < net->npoints; i++) {
        const double x = tab->xap[i], y = tab->yap[i];
        tab->xap[i] = a * x - b * y + tx;
        tab->yap[i] = b * x + a * y + ty;
        if (i < net->nsta) tab->oap[i] += rotation;
    }
}

int t2pt(const approxdata *net, spreadtables *tab, int p1, int p2)
{
    double **mat = (double **)zeroed(NPARAMETER, sizeof(double *));
    if (!mat || rows_take(mat, NPARAMETER) < NPARAMETER) {
        fprintf(net->out, "in t2pt, cannot allocate\n");
        rows_free(mat, NPARAMETER);
        return -1;
    }
    point_rows(mat, tab->xap[p1], tab->yap[p1]);
    point_rows(mat + 2, tab->xap[p2], tab->yap[p2]);
    double parameter[NPARAMETER] = {net->points[p1].xpt[0], net->points[p1].xpt[1], net->points[p2].xpt[0],
                                    net->points[p2].xpt[1]};
    const int result = solve(mat, parameter, net->out);
    rows_free(mat, NPARAMETER);
    if (result == 0) similarity(net, tab, parameter);
    return result;
}

void t1pt(const approxdata *net, spreadtables *tab, int p)
{
    const double dx = net->points[p].xpt[0] - tab->xap[p], dy = net->points[p].xpt[1] - tab->yap[p];
    for (int i = 0; i < net->npoints; i++) {
        tab->xap[i] += dx;
        tab->yap[i] += dy;
    }
}

int transformations(const approxdata *net, spreadtables *tab)
{
    if (net->idebug) fprintf(net->out, "Must do transformations.. \n");
    const int p1 = next_known(net, 0), p2 = p1 < net->npoints ? next_known(net, p1 + 1) : net->npoints;
    if (p1 == net->npoints) {
        if (net->idebug) fprintf(net->out, "no control found \n");
        return 0;
    }
    if (p2 == net->npoints) {
        if (net->idebug) fprintf(net->out, "only 1 point %s \n", net->points[p1].name);
        t1pt(net, tab, p1);
        return 0;
    }
    if (net->idebug) fprintf(net->out, "use points %s and %s\n", net->points[p1].name, net->points[p2].name);
    if (t2pt(net, tab, p1, p2) == 0) return 0;
    fprintf(net->out, "In spread: stop in t2pt\n");
    return -5;
}

} // namespace vornengine
