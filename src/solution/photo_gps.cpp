// Image coordinates and baselines.
//
// An image coordinate pair is a central projection. With d = target - station and
// e = transposed(rot) d, the difference in the frame of the camera, c the focal length:
//   x = -c e0 / e2,  y = -c e1 / e2,  r2 = x^2 + y^2
//   u = -(x + dx) / pu + cu,  v = -(y + dy) / pv + cv
// in pixels, with the corrections of the inner parameters par[1..9] (in metres):
//   dx = b y - a x + x q + p1 (2 x^2 + r2) + 2 p2 x y + x0     a, b  par[3], par[4]
//   dy = b x       + y q + 2 p1 x y + p2 (2 y^2 + r2) + y0     p1, p2 par[8], par[9]
//   q = k1 r2 + k2 r2^2 + k3 r2^3                              k  par[5..7], x0, y0 par[1], par[2]
// The columns take the derivatives of the plain projection: in those of coordinates, angles and
// focal length the corrections are left out, and a lump that moves an end has no columns.
//
// A baseline does not use the row buffer: its three components reach the solver together with
// their weight block.

#include "solution/solution.h"

#include <math.h>

namespace vornengine {

static const double SHALLOWEST = 1.0e-07; // distance from the image plane, metres

struct plainimage {
    double x, y, r2;
};

static plainimage project_plain(const camera *cam, const double e[3])
{
    plainimage im;
    im.x = -cam->par[0] * e[0] / e[2];
    im.y = -cam->par[0] * e[1] / e[2];
    im.r2 = im.x * im.x + im.y * im.y;
    return im;
}

static void corrections_of(const camera *cam, const plainimage *im, double *dx, double *dy)
{
    const double *p = cam->par, x = im->x, y = im->y, r2 = im->r2;
    const double q = ((r2 * p[7] + p[6]) * r2 + p[5]) * r2, t = 2.0 * x * y;
    *dx = y * p[4] - x * p[3] + x * q + (2.0 * x * x + r2) * p[8] + t * p[9] + p[1];
    *dy = x * p[4] + y * q + t * p[8] + (2.0 * y * y + r2) * p[9] + p[2];
}

// Computed image coordinates u, v of observation i, in pixels, through camera icam; d, e as
// above, l1, l2, r1, r2 the lumps of the two ends. Returns 0, or -1 when the target lies in
// the plane of the projection centre; u, v are then untouched.
int solution::image_coor(int i, int icam, double d[3], double e[3], double *u, double *v, double r1[3][3],
                         double r2[3][3], int *l1, int *l2)
{
    const measure *m = obsuv1 + i;
    difference(m, d, r1, r2, l1, l2);
    toinstrument(d, e);
    if (!(fabs(e[2]) > SHALLOWEST)) {
        fprintf(out, "image_coor: third local delta too small\n");
        return -1;
    }
    const camera *cam = cameras + icam;
    const plainimage im = project_plain(cam, e);
    double dx, dy;
    corrections_of(cam, &im, &dx, &dy);
    *u = -(im.x + dx) / cam->pu + cam->cu;
    *v = -(im.y + dy) / cam->pv + cam->cv;
    return 0;
}

// First-kind row of u (which 0) or v (which 1); f the weight over the pixel size.
void solution::photorow1(int i, int which, int icam, double f, const double e[3])
{
    const point *p = obsuv1[i].p1, *q = obsuv1[i].p2;
    const double c = cameras[icam].par[0];
    ia1[0] = 0;
    for (int j = 0; j < 3; j++) {
        const double t = (rot[j][which] - e[which] * rot[j][2] / e[2]) * c / e[2];
        coorentry(p->n0[j], -f * t);
        coorentry(q->n0[j], f * t);
    }
}

// Entries of the three angles of the station; k = f c / e2.
void solution::photoangles(const point *p, int which, double k, const double d[3], const double e[3], double ca,
                           double sa, double cb, double sb, double cc, double sc)
{
    const double s = e[which] / e[2];
    const double a = rot[2][which] * d[1] - rot[1][which] * d[2];
    const double b = ca * sb * d[2] + sa * sb * d[1] + cb * d[0];
    paramentry(p->n1[0], k * (a - (rot[2][2] * d[1] - rot[1][2] * d[2]) * s));
    paramentry(p->n1[1], k * ((which == 0 ? cc : sc) * e[2] + b * s));
    paramentry(p->n1[2], which == 0 ? -k * e[1] : k * e[0]);
}

// Second-kind row: angles of the station, then the inner parameters that the camera uses.
void solution::photorow2(int i, int which, int icam, double f, const double d[3], const double e[3], double ca,
                         double sa, double cb, double sb, double cc, double sc)
{
    const camera *cam = cameras + icam;
    const plainimage im = project_plain(cam, e);
    const double x = im.x, y = im.y, r2 = im.r2, z = which == 0 ? x : y;
    const double du[10] = {e[0] / e[2], -1.0, 0.0, x, -y, 0.0, 0.0, 0.0, -(2.0 * x * x + r2), -2.0 * x * y};
    const double dv[10] = {e[1] / e[2], 0.0, -1.0, 0.0, -x, 0.0, 0.0, 0.0, -2.0 * x * y, -(2.0 * y * y + r2)};
    const double radial[3] = {-z * r2, -z * r2 * r2, -z * r2 * r2 * r2};

    ia2[0] = 0;
    photoangles(obsuv1[i].p1, which, f * cam->par[0] / e[2], d, e, ca, sa, cb, sb, cc, sc);
    for (int p = 0; p < cam->npar; p++) {
        if (p == 2 - which || (p == 3 && which == 1)) continue; // the parameter of the other axis
        const double c = p >= 5 && p <= 7 ? radial[p - 5] : which == 0 ? du[p] : dv[p];
        paramentry(cam->ipar[p], f * c);
    }
}

// Rows of u and v. The weight factor is suv itself, whatever the standard deviation of the
// observation; the camera is that of the first observation of a run of one station. A
// target in the plane of the projection centre ends the list for this iteration, and so does
// a record that no line of an image file has filled.
void solution::norm_photo()
{
    double d[3], e[3], r1[3][3], r2[3][3], u, v, ca = 0, sa = 0, cb = 0, sb = 0, cc = 0, sc = 0;
    int l1, l2, icam = 0;
    const point *station = NULL;
    for (int i = 0; i < nobsuv && obsuv1[i].p1; i++) {
        const measure *m1 = obsuv1 + i, *m2 = obsuv2 + i;
        if (m1->p1 != station) {
            setrot(3, i, &ca, &sa, &cb, &sb, &cc, &sc);
            icam = m1->typ;
        }
        station = m1->p1;
        if (image_coor(i, icam, d, e, &u, &v, r1, r2, &l1, &l2) != 0) {
            fprintf(out, "norm_photo: Pb in image_coor at obs %d\n", i);
            return;
        }
        const double fu = suv / cameras[icam].pu, fv = suv / cameras[icam].pv;
        photorow1(i, 0, icam, fu, e);
        photorow2(i, 0, icam, fu, d, e, ca, sa, cb, sb, cc, sc);
        addrow(ia1[0], ia2[0], (m1->val[0] - u) * suv);
        photorow1(i, 1, icam, fv, e);
        photorow2(i, 1, icam, fv, d, e, ca, sa, cb, sb, cc, sc);
        addrow(ia1[0], ia2[0], (m2->val[0] - v) * suv);
    }
}

// Misclosures (metres) and unknowns of each baseline, in every dimension all three components.
// Its own weight block weighs it; sgps does not.
void solution::norm_gps()
{
    for (int i = 0; i < ngps; i++) {
        const gpsbase *g = gps + i;
        double w[3];
        int iu[6];
        for (int k = 0; k < 3; k++) {
            w[k] = g->dx[k] - (g->p2->xpt[k] - g->p1->xpt[k]);
            iu[k] = g->p1->n0[k];
            iu[3 + k] = g->p2->n0[k];
        }
        buildgps(i, iu, w);
    }
}

} // namespace vornengine
