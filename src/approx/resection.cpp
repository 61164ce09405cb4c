// Position and orientation of a station from its directions to points of known position.
//
// With x, y of the second and third aimed point relative to the first and their directions
// alp1, alp2 relative to the first direction, the station lies at (r, m r) relative to the
// first point:
//   m = (y1/t1 - x1 + x2 - y2/t2) / (x1/t1 + y1 - y2 - x2/t2),  t = tan(alp)
//   r = ((x1/t1 + y1) m + x1 - y1/t1) / (m^2 + 1)
// No test for the danger circle: there the values are what the division gives.

#include "approx/approx.h"

#include <math.h>

namespace vornengine {

enum { MAX_SHOTS = 5 }; // shots that a resection looks at

const double NEAR_SINGULAR = 1e-5;  // radians from an angle with tangent 0 or without one
const double MIN_TOLERANCE = 1.0;   // metres between measured and computed distance
const double PART_TOLERANCE = 10.0; // the tolerance is at least the distance divided by this

// Moves an angle out of the way of the poles of the formula; -pi/2 is not one of the guarded.
void approx::guard_angle(double *alp, int k)
{
    if (fabs(alp[k]) < NEAR_SINGULAR) {
        if (idebug) fprintf(out, "Warning: Play around with alp[%d] around 0.\n", k);
        alp[k] = NEAR_SINGULAR;
    }
    if (fabs(alp[k] - pi / 2) < NEAR_SINGULAR) {
        if (idebug) fprintf(out, "Warning: Play around with alp[%d] around Pi/2.\n", k);
        alp[k] = alp[k] <= pi / 2 ? 1.57079 : 1.5708;
    }
}

// Station relative to the first aimed point.
static void place_station(const double *xx, const double *yy, const double *alp, double *x, double *y)
{
    const double t1 = tan(alp[1]), t2 = tan(alp[2]);
    const double x1 = xx[1], y1 = yy[1], x2 = xx[2], y2 = yy[2];
    const double m = (y1 / t1 - x1 + x2 - y2 / t2) / (x1 / t1 + y1 - y2 - x2 / t2);
    const double r = ((x1 / t1 + y1) * m + x1 - y1 / t1) / (m * m + 1);
    *x = r;
    *y = m * r;
}

// Places station i by three shots.
//   ishot        in   indexes in dir1
//   xx, yy       out  [3] the aimed points
//   alp          out  [3] reading of the first shot, then angles from it
//   xap,yap,oap  out  at i
void approx::resec3(int i, const int *ishot, double *xx, double *yy, double *alp, double *xap, double *yap, double *oap)
{
    for (int k = 0; k < 3; k++) {
        const measure *shot = dir1 + ishot[k];
        const int p = number(shot->p2);
        if (idebug)
            fprintf(out, "%s %s   %15.5lf\n", shot->p1->name, shot->p2->name, pproject->htoraw(1, shot->val[0]));
        alp[k] = shot->val[0];
        xx[k] = xap[p];
        yy[k] = yap[p];
    }
    for (int k = 1; k < 3; k++) {
        alp[k] = wrap(alp[k] - alp[0]);
        xx[k] -= xx[0];
        yy[k] -= yy[0];
    }
    for (int k = 1; k < 3; k++) guard_angle(alp, k);

    double x, y;
    place_station(xx, yy, alp, &x, &y);
    oap[i] = wrap(atan2(-y, -x) - alp[0]);
    xap[i] = x + xx[0];
    yap[i] = y + yy[0];
    for (int k = 1; k < 3; k++) {
        xx[k] += xx[0];
        yy[k] += yy[0];
    }
}

// Shots of station i to known targets, then to known stations; returns their number, at most 5.
int approx::known_shots(int i, const int *itheo, const int *iobj, int *ishot) const
{
    int n = 0;
    for (int e = seen.first[i]; e < seen.first[i + 1] && n < MAX_SHOTS; e++)
        if (seen.to[e] >= nsta && iobj[seen.to[e] - nsta] == OBJ_PLACED) ishot[n++] = seen.item[e];
    for (int e = seen.first[i]; e < seen.first[i + 1] && n < MAX_SHOTS; e++) {
        const int j = seen.to[e];
        if (j < nsta && (itheo[j] == THEO_PLACED || itheo[j] == THEO_DONE)) ishot[n++] = seen.item[e];
    }
    return n;
}

// Horizontal length of a distance along a shot; shot and vertical angle share the index.
double approx::level_length(int idist, int ishot) const
{
    const double d = dist[idist].val[0];
    return dim == 3 ? d * cos(dir2[ishot].val[0]) : d;
}

// Whether slope distances can be levelled: in the plane they are level.
int approx::can_level() const { return dim == 2 || (dim == 3 && ndir1 == ndir2); }

// Compares the first distance along each of the three shots with the computed one. Returns
// the number of contradictions, or -1 when no distance could be compared.
int approx::bad_distances(int i, const int *ishot, const double *xx, const double *yy, const double *xap,
                          const double *yap)
{
    int nbad = -1;
    if (istotal(i) != 1 || !can_level()) return nbad;
    for (int k = 0; k < 3; k++) {
        const measure *shot = dir1 + ishot[k];
        const int e = pairlist_find(&lengths, i, number(shot->p2));
        if (e < 0) continue;
        if (nbad == -1) nbad = 0;
        const double d = level_length(lengths.item[e], ishot[k]);
        const double dx = xx[k] - xap[i], dy = yy[k] - yap[i], c = sqrt(dx * dx + dy * dy);
        const double tolerance = d / PART_TOLERANCE < MIN_TOLERANCE ? MIN_TOLERANCE : d / PART_TOLERANCE;
        if (!(fabs(d - c) > tolerance)) continue;
        nbad++;
        if (!idebug) continue;
        fprintf(out, "Problem with distance between %s %s\n", shot->p1->name, shot->p2->name);
        fprintf(out, "   measured horizontal %15.5lf\n   computed horizontal %15.5lf\n", d, c);
    }
    return nbad;
}

// Places station i anew with the shots beyond the third: 3, 1, 2 of four, 3, 4, 2 of five. The
// result replaces the first one; without distances a large turn between the two is reported.
void approx::use_extra_shots(int i, int n, int nbad, int *ishot, double *xap, double *yap, double *oap)
{
    double xx[3], yy[3], alp[3];
    if (idebug) fprintf(out, "Check the resection with extra shots\n");
    const double o = oap[i];
    ishot[0] = ishot[3];
    if (n == MAX_SHOTS) ishot[1] = ishot[4];
    resec3(i, ishot, xx, yy, alp, xap, yap, oap);
    if (nbad == -1 && fabs(oap[i] - o) > pi / 3) // not wrapped: two orientations about pi may warn
        fprintf(out, "Warning: The resection for %s does not check\n", points[i].name);
}

// Places targets without a position by direction and distance from station i.
void approx::polar_targets(int i, int *iobj, double *xap, double *yap, const double *oap) const
{
    if (!can_level()) return;
    for (int e = lengths.first[i]; e < lengths.first[i + 1]; e++) {
        const int j = lengths.to[e];
        if (j < nsta || iobj[j - nsta] == OBJ_PLACED) continue;
        const int s = pairlist_find(&shots, i, j);
        if (s < 0) continue;
        const double a = dir1[shots.item[s]].val[0] + oap[i], d = level_length(lengths.item[e], shots.item[s]);
        xap[j] = cos(a) * d + xap[i];
        yap[j] = sin(a) * d + yap[i];
        iobj[j - nsta] = OBJ_PLACED;
    }
}

int approx::resec(int iscale, int i, int **, int *itheo, int *iobj, double *xap, double *yap, double *oap)
{
    int ishot[MAX_SHOTS];
    const int n = known_shots(i, itheo, iobj, ishot);
    if (n < 3) {
        fprintf(out, "resec: Cannot find 3 fixed points to resect %s\n", points[i].name);
        return -1;
    }
    double xx[3], yy[3], alp[3];
    resec3(i, ishot, xx, yy, alp, xap, yap, oap);
    const int nbad = bad_distances(i, ishot, xx, yy, xap, yap);
    if (nbad == 0 && idebug) fprintf(out, "Resection checked with distances\n");
    if (nbad != 0 && n > 3) use_extra_shots(i, n, nbad, ishot, xap, yap, oap);
    if (iscale == 1) polar_targets(i, iobj, xap, yap, oap);
    return 0;
}

} // namespace vornengine
