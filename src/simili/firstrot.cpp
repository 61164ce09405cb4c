// First rotation of the similarity transformation in closed form (Sanso, Photogrammetria 29,
// 1973; Horn, Journal of the Optical Society of America A 4, 1987).
//
// With a and b the coordinates of a pair less the means of their lists, the rotation that
// makes  sum |b - R a|^2  least is that of the unit quaternion q with
//     sum |b q - q a|^2 = q' S q  least,
// the eigenvector of the smallest eigenvalue of S, a 4 by 4 matrix. The scale has no part
// in it. The angles are radians, in the convention of simili.h.

#include <math.h>
#include <stdlib.h>

#include "numerics/memory.h"
#include "simili/simili.h"

namespace vornengine {

// Means of the paired points, ca of the first and cb of the second ones.
static void means(const simpair *pair, int npair, double ca[3], double cb[3])
{
    for (int k = 0; k < 3; k++) {
        ca[k] = cb[k] = 0.0;
        for (int i = 0; i < npair; i++) {
            ca[k] += pair[i].first->x[k];
            cb[k] += pair[i].second->x[k];
        }
        ca[k] /= npair;
        cb[k] /= npair;
    }
}

// Adds A' A of one pair to S: b q - q a = -A q for the pair's centred coordinates a and b.
static void add_pair(const double a[3], const double b[3], double **S)
{
    const double e[3] = {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
    const double s[3] = {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
    const double A[4][4] = {
        {0.0, e[0], e[1], e[2]}, {-e[0], 0.0, -s[2], s[1]}, {-e[1], s[2], 0.0, -s[0]}, {-e[2], -s[1], s[0], 0.0}};
    for (int i = 0; i < 4; i++)
        for (int j = 0; j < 4; j++)
            for (int k = 0; k < 4; k++) S[i][j] += A[k][i] * A[k][j];
}

// Rotation of the unit quaternion q.
static void rotation_of(const double q[4], double R[3][3])
{
    const double q00 = q[0] * q[0], q11 = q[1] * q[1], q22 = q[2] * q[2], q33 = q[3] * q[3];
    R[0][0] = q11 + q00 - q22 - q33;
    R[0][1] = 2.0 * (q[1] * q[2] - q[0] * q[3]);
    R[0][2] = 2.0 * (q[0] * q[2] + q[1] * q[3]);
    R[1][0] = 2.0 * (q[0] * q[3] + q[1] * q[2]);
    R[1][1] = q22 + q00 - q11 - q33;
    R[1][2] = 2.0 * (q[2] * q[3] - q[0] * q[1]);
    R[2][0] = 2.0 * (q[1] * q[3] - q[0] * q[2]);
    R[2][1] = 2.0 * (q[0] * q[1] + q[2] * q[3]);
    R[2][2] = q33 + q00 - q11 - q22;
}

// Room of the closed formula.
struct closedform {
    double (*a)[3], (*b)[3]; // centred coordinates of each pair
    double (*S)[4], (*V)[4]; // matrix and eigenvectors
};

// Rotation R by the tables of w. Returns 0, or 2 without memory for the eigenvectors.
int simili::closedrotation(closedform *w, const double ca[3], const double cb[3], double R[3][3])
{
    double *S[4] = {w->S[0], w->S[1], w->S[2], w->S[3]}, *V[4] = {w->V[0], w->V[1], w->V[2], w->V[3]};
    for (int i = 0; i < npair; i++) {
        for (int k = 0; k < 3; k++) {
            w->a[i][k] = pair[i].first->x[k] - ca[k];
            w->b[i][k] = pair[i].second->x[k] - cb[k];
        }
        add_pair(w->a[i], w->b[i], S);
    }
    double d[4];
    int nrot;
    jacobi(S, 4, d, V, &nrot);
    if (nrot < 0) return 2;
    eigsrt(d, V, 4);
    const double q[4] = {V[0][3], V[1][3], V[2][3], V[3][3]}; // of the smallest eigenvalue
    rotation_of(q, R);
    return 0;
}

// Means ca and cb of the paired points and the rotation R that turns the first into the
// second ones. Returns 0; 1 without memory for the coordinates, 2 for the matrices.
int simili::firstrotation(double ca[3], double cb[3], double R[3][3])
{
    closedform w;
    w.a = (double(*)[3])zeroed(npair, sizeof *w.a);
    w.b = (double(*)[3])zeroed(npair, sizeof *w.b);
    w.S = (double(*)[4])zeroed(4, sizeof *w.S);
    w.V = (double(*)[4])zeroed(4, sizeof *w.V);
    means(pair, npair, ca, cb);
    int code = !w.a || !w.b ? 1 : !w.S || !w.V ? 2 : closedrotation(&w, ca, cb, R);
    free(w.a);
    free(w.b);
    free(w.S);
    free(w.V);
    return code;
}

const double SMALL_COSINE = 0.2;  // of c: below it R(0,1), else R(0,0), gives the cosine of b
const double GIMBAL_COSINE = 0.1; // of b: below it the third column is too short to give a
const double LEAST_SINE = 1.0e-05;

// Angles of a rotation, the inverse of  R = R(a, b, c)  of simili.h.
//   a, c  out  -pi to pi, radians   b  out  -pi / 2 to pi / 2 for a rotation
// Returns 0, or 1 when R holds what is no number; the angles stay untouched then.
int simili::rotangles(const double R[3][3], double *a, double *b, double *c)
{
    const double c3 = atan2(R[0][1], R[0][0]), cc = cos(c3), sc = sin(c3);
    const double along = fabs(cc) > SMALL_COSINE ? R[0][0] / cc : R[0][1] / sc; // cosine of b
    const double c2 = atan2(-R[0][2], along), cb = cos(c2), sb = sin(c2);
    double c1;
    if (fabs(cb) > GIMBAL_COSINE) {
        c1 = atan2(R[1][2], R[2][2]);
    } else { // near the gimbal case: a from the first two columns, sc^2 + cc^2 = 1
        const double g = sb * (sc * sc + cc * cc);
        if (!(fabs(g) >= LEAST_SINE)) return 1; // fails for what is no number only
        c1 = atan2((sc * R[1][1] + cc * R[1][0]) / g, (cc * R[1][1] - sc * R[1][0]) * sb / g);
    }
    *a = c1, *b = c2, *c = c3;
    return 0;
}

} // namespace vornengine
