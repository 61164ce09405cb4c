// Reports of the iteration, of the adjusted network and of its plain residuals.
//
// applydelta adds the solved corrections to every estimated value; corrections,
// finalresults and residualtables print on the report stream out, the last one also on
// the file "rejects" of the working directory. Lengths in metres, angles in radians; the
// residual tables turn angles into the host's unit. Columns line up because names are
// held with blanks up to 8 characters.
//
// delta[nunk]: coordinate unknowns (nunk1), nuisance unknowns (nunk2), datum unknowns.

#include "solution/solution.h"

#include <math.h>

#include "numerics/sidefile.h"
#include "vorn/sidefiles.h"

namespace vornengine {

void reduceangle(double *a)
{
    const double t = 8.0 * atan(1.0);
    const double k = trunc(*a / t);
    if (k != 0.0) *a -= k * t;
}

// ---- the step of one iteration ----

static void add_coordinates(point *p, const double *d1)
{
    for (int c = 0; c < 3; c++)
        if (p->n0[c] != N_NONE) p->xpt[c] += d1[p->n0[c]];
}

static void add_instrument(point *p, const double *d2)
{
    for (int c = 0; c < 6; c++)
        if (p->n1[c] != N_NONE) p->xex[c] += d2[p->n1[c]];
}

static void add_camera(camera *cam, const double *d2)
{
    for (int p = 0; p < cam->npar; p++)
        if (cam->ipar[p] != N_NONE) cam->par[p] += d2[cam->ipar[p]];
}

static void add_lump(lump *l, const double *d2)
{
    for (int e = 0; e < l->nepoch - 1; e++) {
        const double *d = d2 + l->iunk[e];
        l->tx[e] += d[0];
        l->ty[e] += d[1];
        l->tz[e] += d[2];
        l->rx[e] += d[3];
        l->ry[e] += d[4];
        l->rz[e] += d[5];
        reduceangle(&l->rx[e]);
        reduceangle(&l->ry[e]);
        reduceangle(&l->rz[e]);
        l->scale[e] += d[6];
    }
}

void solution::tracedelta(int iter)
{
    fprintf(out, "\nSolution iteration # %d\n", iter);
    for (int i = 0; i < nunk1; i++) fprintf(out, "first unknown #%3d = %25.15lf\n", i, delta[i]);
    for (int i = 0; i < nunk2; i++) fprintf(out, "other unknown #%3d = %25.15lf\n", i, delta[nunk1 + i]);
    for (int i = nunk1 + nunk2; i < nunk; i++)
        fprintf(out, "datum unknown #%3d = %25.15lf\n", i - nunk1 - nunk2, delta[i]);
}

// Height above the sphere, h = z + horigin + (x^2 + y^2) / 2r with r the distance of z
// from the centre. A height that is fixed without its plane position stays.
static void add_heights(const solverinput *in)
{
    const double radius = in->radius, horigin = in->horigin;
    for (point *p = in->points; p < in->points + in->npoints; p++) {
        if (p->defdatum[2] == DATUM_FIXED_HEIGHT) continue;
        p->h = (p->xpt[0] * p->xpt[0] + p->xpt[1] * p->xpt[1]) / (2.0 * (radius + horigin + p->xpt[2])) + horigin +
               p->xpt[2];
    }
}

// Datum parameter of each datum row, by dimension. In 3D four and five rows skip the
// rotations Rx1 and Rx2. Never more rows than there are: a weighted 3D network can carry
// a single row.
void solution::adddatum()
{
    static const int line[] = {2}, plane[] = {0, 1, 5, 6}, space[] = {0, 1, 2, 3, 4, 5, 6}, level[] = {0, 1, 2, 5, 6};
    const int *row = dim == 1 ? line : dim == 2 ? plane : ndatum >= 6 ? space : level;
    const int most = dim == 1 ? 1 : dim == 2 ? 4 : ndatum >= 6 ? 7 : 5;
    const double *d = delta + nunk1 + nunk2;
    for (int k = 0; k < ndatum && k < most; k++) datum[row[k]] += d[k];
}

void solution::applydelta(int iter)
{
    if (idebug != 0 && irun != -1) tracedelta(iter);
    const double *d2 = delta + nunk1;
    for (int i = 0; i < nsta; i++) {
        add_coordinates(points + i, delta);
        add_instrument(points + i, d2);
    }
    for (int i = nsta; i < npoints; i++) add_coordinates(points + i, delta);
    for (int i = 0; i < ncamera; i++) add_camera(cameras + i, d2);
    for (int i = 0; i < nlump; i++) add_lump(lumps + i, d2);
    if (dim == 3 && iearth != 0) add_heights(this);
    if (ndatum != 0 && irun != -1) adddatum();
}

// ---- corrections ----

static double length(double x, double y, double z)
{
    const double s = x * x + y * y + z * z;
    return s > 0.0 ? sqrt(s) : 0.0;
}

static void print_epoch(FILE *out, const lump *l, int e)
{
    fprintf(out, "\nEpoch %d versus %d\n", l->epoch[e], l->iref);
    fprintf(out, "translation%19.6lf%16.6lf%16.6lf%16.6lf\n", l->tx[e], l->ty[e], l->tz[e],
            length(l->tx[e], l->ty[e], l->tz[e]));
    fprintf(out, "rotation     %17.6lf %15.6lf %15.6lf\n", l->rx[e], l->ry[e], l->rz[e]);
    fprintf(out, "scale        %17.6lf\n", l->scale[e]);
}

static void print_lumps(FILE *out, const network *net)
{
    fprintf(out, "\n\nLumps information\n");
    for (int k = 0; k < net->nlump; k++) {
        const lump *l = net->lumps + k;
        fprintf(out, "\nLump %d observed at %d epochs is made of:\n", l->id, l->nepoch);
        for (int i = 0; i < net->npoints; i++)
            if (net->points[i].ilump == k + 1) fprintf(out, "     %s\n", net->points[i].name);
        for (int e = 0; e < l->nepoch - 1; e++) print_epoch(out, l, e);
    }
}

void solution::corrections()
{
    fprintf(out, "\n\nCorrections to coordinates\n\n");
    for (int i = 0; i < npoints; i++) {
        const point *p = points + i;
        const double dx = p->xpt[0] - p->x0[0], dy = p->xpt[1] - p->x0[1], dz = p->xpt[2] - p->x0[2];
        if (dim == 1) fprintf(out, "%s%22.6lf\n", p->name, dz);
        if (dim == 2) fprintf(out, "%s%22.6lf %15.6lf\n", p->name, dx, dy);
        if (dim == 3) fprintf(out, "%s%22.6lf %15.6lf %15.6lf\n", p->name, dx, dy, dz);
    }
    if (dim == 3 && nlump > 0) print_lumps(out, this);
}

// ---- final results ----

// Coordinates as the report shows them, origin put back.
static void reported(const settings *set, const point *p, double x[3])
{
    for (int c = 0; c < 3; c++) x[c] = p->xpt[c] + set->trans[c];
    if (set->iearth == 2) x[2] = p->h + set->trans[2];
}

// Orientation, with the refraction term if it is estimated; coordinates, with the
// additive constant and the scale if one of them is.
static void print_station(FILE *out, const point *p, const double x[3])
{
    fprintf(out, "%s\n", p->name);
    fprintf(out, "RxRyRz :%22.9lf %15.9lf %15.9lf", p->xex[0], p->xex[1], p->xex[2]);
    if (p->n1[5] != N_NONE) fprintf(out, " %15.9lf", p->xex[5]);
    fprintf(out, "\n xyz   :%22.6lf %15.6lf %15.6lf", x[0], x[1], x[2]);
    if (p->n1[3] != N_NONE || p->n1[4] != N_NONE) fprintf(out, " %15.6lf %13.7lf", p->xex[3], p->xex[4]);
    fprintf(out, "\n");
}

static void print_space(const solverinput *in)
{
    double x[3];
    for (int i = 0; i < in->nsta; i++) {
        reported(in, in->points + i, x);
        print_station(in->out, in->points + i, x);
    }
    fprintf(in->out, "\n");
    for (const point *p = in->points + in->nsta; p < in->points + in->npoints; p++) {
        reported(in, p, x);
        fprintf(in->out, "%s%22.6lf %15.6lf %15.6lf\n", p->name, x[0], x[1], x[2]);
    }
}

static int any_estimated(const camera *cam, int from, int to)
{
    for (int p = from; p <= to; p++)
        if (cam->ipar[p] != N_NONE) return 1;
    return 0;
}

// The distortion lines come only when one of their parameters is estimated.
static void print_distortion(FILE *f, const camera *cam)
{
    const double *p = cam->par;
    if (any_estimated(cam, 3, 4)) fprintf(f, "%10saxis trans.  %16.2e%13.2e\n", "", p[3], p[4]);
    if (any_estimated(cam, 5, 7)) fprintf(f, "%10sradial dist. %16.2e%13.2e%13.2e\n", "", p[5], p[6], p[7]);
    if (any_estimated(cam, 8, 9)) fprintf(f, "%10sdecentering  %16.2e%13.2e\n", "", p[8], p[9]);
}

// Inner parameters of every camera; all: distortion lines whatever npar says.
static void print_cameras(FILE *f, const camera *cameras, int ncamera, bool all)
{
    fprintf(f, "\nCamera information\n");
    for (const camera *cam = cameras; cam < cameras + ncamera; cam++) {
        fprintf(f, "\n%-9s focal length %16.6lf\n", cam->name, cam->par[0]);
        fprintf(f, "%10sprincipal point %13.6lf%13.6lf\n", "", cam->par[1], cam->par[2]);
        if (all || cam->npar > 3) print_distortion(f, cam);
    }
}

static void print_plane(FILE *out, const point *p, const double trans[3], int station)
{
    fprintf(out, "%s%22.6lf  %15.6lf", p->name, p->xpt[0] + trans[0], p->xpt[1] + trans[1]);
    if (station) fprintf(out, "%22.6lf", p->xex[2]);
    fprintf(out, "\n");
}

void solution::finalresults(int iter)
{
    if (irun == -1)
        fprintf(out, "\n\nFinal results\n\n");
    else
        fprintf(out, "\n\nFinal results after %d iterations\n\n", iter + 1);
    if (dim == 1)
        for (int i = 0; i < npoints; i++) fprintf(out, "%s%22.6lf\n", points[i].name, points[i].xpt[2]);
    if (dim == 2)
        for (int i = 0; i < npoints; i++) print_plane(out, points + i, trans, i < nsta);
    if (dim == 3) print_space(this);
    if (nobsuv != 0) print_cameras(out, cameras, ncamera, false);
}

// ---- plain residuals ----

double solution::toraw(int kind, int mode, double x)
{
    switch (kind) {
    case KIND_DIRECTION: return pproject->htoraw(mode, x);
    case KIND_VERTICAL: return pproject->vtoraw(mode, x);
    case KIND_AZIMUTH: return pproject->aztoraw(mode, x);
    default: return x;
    }
}

// Mark of a class code: * beyond the limits, Q outermost class, q the next two on either
// side when the classes are fine enough.
static char residual_mark(const histograms *h, int c)
{
    const int nclass = h->nclass;
    char mark = ' ';
    if (c == 9999 || c == -9999) mark = '*';
    if (c == 0 || c == nclass - 1) mark = 'Q';
    if (nclass > 9 && h->hrange > 4.9)
        if (c == 1 || c == 2 || c == nclass - 2 || c == nclass - 3) mark = 'q';
    return mark;
}

void solution::residualtable(int kind, const char *title, const measure *list, int n)
{
    if (n <= 0) return;
    fprintf(out, "%s", title);
    for (int i = 0; i < n; i++) {
        const measure *m = list + i;
        fprintf(out, "%s %s %15.6lf %15.6lf         %c\n", m->p1->name, m->p2->name, toraw(kind, 1, m->val[0]),
                toraw(kind, 0, toraw(kind, 2, m->res[0])), residual_mark(this, m->iflag));
    }
}

void solution::gpstable()
{
    if (ngps <= 0) return;
    fprintf(out, "\n\ngps baseline residuals\n");
    for (int i = 0; i < ngps; i++) {
        const gpsbase *g = gps + i;
        fprintf(out, "%s %s %15.6lf %15.6lf         %c\n", g->p1->name, g->p2->name, g->dx[0], g->res[0],
                residual_mark(this, g->iflag[0]));
        for (int k = 1; k < 3; k++)
            fprintf(out, "%33.6lf %15.6lf         %c\n", g->dx[k], g->res[k], residual_mark(this, g->iflag[k]));
    }
}

// Camera whose pixel size scales the residuals of image observation i: the one at the
// position given by the typ of the station's point record. That typ tells a levelled
// instrument and may lie beyond the cameras; then the camera of the observation serves.
// Null when that does not exist either.
static const camera *photo_camera(const network *net, int i)
{
    int c = net->obsuv1[i].p1->typ;
    if (c < 0 || c >= net->ncamera) c = net->obsuv1[i].typ;
    return c >= 0 && c < net->ncamera ? net->cameras + c : NULL;
}

// Residuals in pixels and in thousandths of the camera's unit. A residual above half a
// pixel carries a star and puts the observation on rejects, which may be null.
static void print_photo(FILE *out, FILE *rejects, const network *net, int i)
{
    const measure *u = net->obsuv1 + i;
    const camera *cam = photo_camera(net, i);
    const double ru = u->res[0], rv = net->obsuv2[i].res[0];
    const double pu = cam ? cam->pu : 0.0, pv = cam ? cam->pv : 0.0;
    const char mu = fabs(ru) > 0.5 ? '*' : ' ', mv = fabs(rv) > 0.5 ? '*' : ' ';
    const char *from = u->p1->name, *to = u->p2->name;
    if (rejects && (mu == '*' || mv == '*')) fprintf(rejects, "%s %s %10.2lf%c %8.2lf%c\n", from, to, ru, mu, rv, mv);
    fprintf(out, "%s %s %10.2lf%c %8.2lf%c %15.1lf %7.1lf\n", from, to, ru, mu, rv, mv, ru * pu * 1000.0,
            rv * pv * 1000.0);
}

// A file "rejects" that cannot be opened is left out without a word in the report.
void solution::phototable()
{
    if (nobsuv <= 0) return;
    int *error = sidefiles ? &sidefiles->rejects : NULL;
    FILE *rejects = open_side("rejects", error);
    if (rejects) fprintf(rejects, "%s\n", pname);
    fprintf(out, "\n\nphoto coordinates (pixel and 1/1000th unit)\n");
    for (int i = 0; i < nobsuv && obsuv1[i].p1; i++) print_photo(out, rejects, this, i); // those behind were never read
    if (!rejects) return;
    print_cameras(rejects, cameras, ncamera, true);
    close_side(rejects, error);
}

void solution::residualtables()
{
    residualtable(KIND_DISTANCE, "\n\ndistance residuals\n", dist, ndist);
    residualtable(KIND_HEIGHT_DIFFERENCE, "\n\nheight difference residuals\n", difh, ndifh);
    residualtable(KIND_DIRECTION, "\n\nhorizontal direction residuals\n", dir1, ndir1);
    residualtable(KIND_VERTICAL, "\n\nvertical angle residuals\n", dir2, ndir2);
    residualtable(KIND_AZIMUTH, "\n\nazimuth residuals\n", az, naz);
    gpstable();
    phototable();
}

} // namespace vornengine
