// Lumps as the observation rows use them, and the rows of conditions and a-priori weights.
//
// A lump moves between epochs by  X' = scale R(rx, ry, rz) X + (tx, ty, tz), one set of the
// seven parameters (metres, radians) for each epoch but the reference, whose points stand at
// their coordinates. R is the matrix that setrot builds; a lump applies it directly, an
// instrument transposed. The unknowns of an epoch are seven second-kind numbers from iunk on,
// in the order tx, ty, tz, rx, ry, rz, scale.

#include "solution/solution.h"

#include <math.h>

#include "setup/lumpdefs.h"

namespace vornengine {

enum { SHIFT = 0, ROTATION = 3, SCALE = 6 }; // places among the seven parameters

// ---- geometry of a lump ----

// The position of epoch t in the lump of a point, -1 when the point stands at its coordinates:
// no lump, the reference epoch, or an epoch that the lump does not know.
static int lump_position(const network *net, const point *p, int t)
{
    if (p->ilump < 1 || p->ilump > net->nlump) return -1;
    const lump *l = net->lumps + p->ilump - 1;
    if (l->iref == t) return -1;
    for (int j = 0; j < l->nepoch - 1; j++)
        if (l->epoch[j] == t) return j;
    return -1;
}

// Coordinates x of a point at epoch t. Returns the position, with its rotation in r, or -1.
int solution::lumpmoved(const point *p, int t, double x[3], double r[3][3])
{
    for (int k = 0; k < 3; k++) x[k] = p->xpt[k];
    const int j = lump_position(this, p, t);
    if (j >= 0) lumppoint(p->ilump - 1, j, x, r);
    return j;
}

// Difference d of the two ends of an observation, each moved to its epoch. l1, l2 (-1 on entry) take the epoch
// positions of the ends that are moved, r1, r2 their rotations.
void solution::lumpdelta(const measure *m, double d[3], double r1[3][3], double r2[3][3], int *l1, int *l2)
{
    double a[3], b[3];
    const int j1 = lumpmoved(m->p1, m->time, a, r1), j2 = lumpmoved(m->p2, m->time, b, r2);
    if (j1 >= 0) *l1 = j1;
    if (j2 >= 0) *l2 = j2;
    for (int k = 0; k < 3; k++) d[k] = b[k] - a[k];
}

// Moves x by position j of a lump and leaves the rotation in r.
void solution::lumppoint(int ilump, int j, double x[3], double r[3][3])
{
    const lump *l = lumps + ilump;
    const double ca = cos(l->rx[j]), sa = sin(l->rx[j]), cb = cos(l->ry[j]), sb = sin(l->ry[j]), cc = cos(l->rz[j]),
                 sc = sin(l->rz[j]);
    const double rotation[3][3] = {{cb * cc, cb * sc, -sb},
                                   {sa * sb * cc - ca * sc, ca * cc + sa * sb * sc, sa * cb},
                                   {sa * sc + ca * sb * cc, ca * sb * sc - sa * cc, ca * cb}};
    const double shift[3] = {l->tx[j], l->ty[j], l->tz[j]}, s = l->scale[j], v[3] = {x[0], x[1], x[2]};
    for (int k = 0; k < 3; k++) {
        for (int c = 0; c < 3; c++) r[k][c] = rotation[k][c];
        x[k] = s * (r[k][0] * v[0] + r[k][1] * v[1] + r[k][2] * v[2]) + shift[k];
    }
}

// Derivatives b of the moved coordinates by the seven parameters; x not moved, r as lumppoint
// left it.
void solution::lumpderiv(int ilump, int j, const double x[3], const double r[3][3], double b[3][7])
{
    const lump *l = lumps + ilump;
    const double ca = cos(l->rx[j]), sa = sin(l->rx[j]), cb = cos(l->ry[j]), sb = sin(l->ry[j]), cc = cos(l->rz[j]),
                 sc = sin(l->rz[j]), s = l->scale[j];
    double u[3];
    for (int k = 0; k < 3; k++) {
        u[k] = r[k][0] * x[0] + r[k][1] * x[1] + r[k][2] * x[2];
        for (int c = 0; c < 3; c++) b[k][SHIFT + c] = k == c ? 1.0 : 0.0;
        b[k][ROTATION + 2] = s * (r[k][0] * x[1] - r[k][1] * x[0]);
        b[k][SCALE] = u[k];
    }
    b[0][ROTATION] = 0.0;
    b[1][ROTATION] = s * u[2];
    b[2][ROTATION] = -s * u[1];
    b[0][ROTATION + 1] = -s * (cb * x[2] + (sc * x[1] + cc * x[0]) * sb);
    b[1][ROTATION + 1] = s * sa * u[0];
    b[2][ROTATION + 1] = s * ca * u[0];
}

// Appends the seven entries f v b of the unknowns from first on.
void solution::lumprow(int first, double f, const double v[3], const double b[3][7])
{
    for (int p = 0; p < 7; p++) paramentry(first + p, f * (v[0] * b[0][p] + v[1] * b[1][p] + v[2] * b[2][p]));
}

// ---- conditions ----

// One row with one coordinate: coefficient a, right-hand side b.
void solution::coorcondition(int number, double a, double b)
{
    ia1[0] = ia2[0] = 0;
    coorentry(number, a);
    if (ia1[0] > 0) addrow(ia1[0], 0, b);
}

// The same with one second-kind unknown.
void solution::paramcondition(int number, double a, double b)
{
    ia1[0] = ia2[0] = 0;
    paramentry(number, a);
    if (ia2[0] > 0) addrow(0, ia2[0], b);
}

// Holds value at wanted, with a weight that no observation can move.
void solution::holdparam(int number, double wanted, double value)
{
    paramcondition(number, WEIGHT_CAP, (wanted - value) * WEIGHT_CAP);
}

// Scales that the host fixes, where its definition has the same reference epoch.
void solution::fixedscales(const lump *l)
{
    const lump_definition *def = find_definition(pproject, l->id);
    if (!def || def->iref != l->iref) return;
    for (int j = 0; j < l->nepoch - 1; j++) {
        const int t = defined_epoch(def, l->epoch[j]);
        if (t >= 0 && def->code[t] == CODE_FIXED) holdparam(l->iunk[j] + SCALE, def->scale[t], l->scale[j]);
    }
}

// Hard conditions of one lump on its epoch position j.
void solution::lumpconditions(const lump *l, int j)
{
    if (l->kind == WITHOUT_ROTATION) {
        holdparam(l->iunk[j] + ROTATION, 0.0, l->rx[j]);
        holdparam(l->iunk[j] + ROTATION + 1, 0.0, l->ry[j]);
        holdparam(l->iunk[j] + ROTATION + 2, 0.0, l->rz[j]);
    }
    if (l->kind == WITHOUT_SCALE) holdparam(l->iunk[j] + SCALE, 1.0, l->scale[j]);
}

void solution::norm_lump()
{
    for (int i = 0; i < nlump; i++) {
        const lump *l = lumps + i;
        for (int j = 0; j < l->nepoch - 1; j++) lumpconditions(l, j);
        if (l->kind != WITHOUT_SCALE) fixedscales(l);
    }
}

// Holds points with a fixed height on the sphere of that height: the linear form of a constant
// height. There is no misclosure, since h is what the coordinates are being held to.
void solution::norm_fixh()
{
    for (int i = 0; i < npoints; i++) {
        const point *p = points + i;
        if (p->defdatum[2] != DATUM_FIXED_HEIGHT) continue;
        const double f = WEIGHT_CAP / (radius + p->h);
        ia1[0] = ia2[0] = 0;
        coorentry(p->n0[0], f * p->xpt[0]);
        coorentry(p->n0[1], f * p->xpt[1]);
        coorentry(p->n0[2], WEIGHT_CAP);
        addrow(ia1[0], 0, 0.0);
    }
}

// Coordinates and station parameters with an a-priori standard deviation; metres, radians.
void solution::norm_weighted()
{
    for (int i = 0; i < npoints; i++) {
        const point *p = points + i;
        const bool station = i < nsta;
        for (int k = 0; k < 3; k++) {
            if (p->defdatum[k] == DATUM_WEIGHTED) {
                const double w = weightfactor(1.0, p->sxpt[k]);
                coorcondition(p->n0[k], w, (p->x0[k] - p->xpt[k]) * w);
            }
            if (station && p->defdatum[3 + k] == DATUM_WEIGHTED) weightparam(p, k);
        }
        // No step of the loading weights the additive constant.
        if (station && p->defdatum[6] == DATUM_WEIGHTED) weightparam(p, 3);
    }
}

// Weight of xex[k] of a station.
void solution::weightparam(const point *p, int k)
{
    const double w = weightfactor(1.0, p->sxex[k]);
    paramcondition(p->n1[k], w, (p->e0[k] - p->xex[k]) * w);
}

} // namespace vornengine
