// Text at the opening of a run: what takes part, the unknowns, the approximate values;
// and two listings of the working records for debugging. Lengths in metres, angles in
// radians. Everything goes to the report stream.

#include "vorn/run.h"

#include "vorn/records.h"

namespace vornengine {

static void print_problem(FILE *out, int dim, int iearth)
{
    if (dim == 1) fprintf(out, "1D problem\n");
    if (dim == 2) fprintf(out, "2D problem\n");
    if (dim != 3) return;
    if (iearth == 0) {
        fprintf(out, "3D problem\n");
        return;
    }
    fprintf(out, "3D problem with earth model and ");
    fprintf(out, iearth == 1 ? "using cartesian coordinates\n" : "using mixed coordinates\n");
}

void vornrun::summary()
{
    fprintf(out, "\nSummary\n");
    print_problem(out, dim, iearth);
    if (nsta > 0) fprintf(out, "number of instruments            %5d\n", nsta);
    if (ntar > 0) fprintf(out, "number of points                 %5d\n", ntar);
    if (ncamera > 0) fprintf(out, "number of cameras                %5d\n", ncamera);
    if (ndist > 0 && (iredux == 0 || iredux == 1)) {
        fprintf(out, "number of distances              %5d\n", ndist);
    } else if (ndist > 0) {
        fprintf(out, "number of distances              %5d  ", ndist);
        fprintf(out, "(reduced to horizontal with code %d)\n", iredux);
    }
    if (ndifh > 0) fprintf(out, "number of height differences     %5d\n", ndifh);
    if (ndir1 > 0) fprintf(out, "number of horizontal directions  %5d\n", ndir1);
    if (ndir2 > 0) fprintf(out, "number of vertical angles        %5d\n", ndir2);
    if (naz > 0) fprintf(out, "number of azimuth angles         %5d\n", naz);
    if (ngps > 0) fprintf(out, "number of GPS baselines          %5d\n", ngps);
    if (nfixh > 0) fprintf(out, "number of fixed heights          %5d\n", nfixh);
    if (nobsuv > 0) fprintf(out, "number of photo coordinates pair %5d\n", nobsuv);
}

void vornrun::summary2()
{
    if (nunk1 > 0) fprintf(out, "number of coordinates unknowns   %5d\n", nunk1);
    if (nunk2 > 0) fprintf(out, "number of nuisance parameters    %5d\n", nunk2);
    if (ndatum > 0) fprintf(out, "number of datum parameters       %5d\n", ndatum);
    if (icon != 0) {
        fprintf(out, "\nnumber of exported points         %5d\n", nexport);
        fprintf(out, "number of imported points         %5d\n", nimport);
    }
    if (iearth != 0) {
        fprintf(out, "\nradius of sphere %15.6lf\n", radius);
        fprintf(out, "height of origin %15.6lf\n", horigin);
        fprintf(out, "translation      %15.6lf %15.6lf %15.6lf\n", trans[0], trans[1], trans[2]);
    }
}

// State of coordinate i after numbering: weighted, outside the datum, fixed, fixed height.
static char coordinate_state(const point *p, int i)
{
    char c = ' ';
    if (p->defdatum[i] == DATUM_WEIGHTED) c = 'w';
    if (p->defdatum[i] == DATUM_UNUSED) c = 'o';
    if (p->n0[i] == N_NONE) c = 'f';
    if (i == 2 && p->defdatum[2] == DATUM_FIXED_HEIGHT) c = 'h';
    return c;
}

static char rotation_state(const point *p, int i)
{
    if (p->defdatum[3 + i] == DATUM_WEIGHTED) return 'w';
    return p->n1[i] == N_NONE ? 'f' : ' ';
}

static void print_plane(const settings *set, const point *p, bool station)
{
    FILE *out = set->out;
    const double *trans = set->trans;
    fprintf(out, "%s%22.6lf%c%15.6lf%c", p->name, p->xpt[0] + trans[0], coordinate_state(p, 0), p->xpt[1] + trans[1],
            coordinate_state(p, 1));
    if (station)
        fprintf(out, "%22.6lf%c\n", p->xex[2], rotation_state(p, 2));
    else
        fprintf(out, "\n");
}

static void print_space(const settings *set, const point *p, bool station)
{
    FILE *out = set->out;
    const double *x = p->xpt, *trans = set->trans;
    double x3 = x[2];
    if (set->iearth == 2)
        x3 += (x[0] * x[0] + x[1] * x[1]) / (2 * (set->radius + p->h)) + set->horigin; // a height prints
    fprintf(out, "%s%22.6lf%c%15.6lf%c%15.6lf%c\n", p->name, x[0] + trans[0], coordinate_state(p, 0), x[1] + trans[1],
            coordinate_state(p, 1), x3 + trans[2], coordinate_state(p, 2));
    if (station)
        fprintf(out, "%8s%22.6lf%c%15.6lf%c%15.6lf%c\n", "", p->xex[0], rotation_state(p, 0), p->xex[1],
                rotation_state(p, 1), p->xex[2], rotation_state(p, 2));
}

void vornrun::outputapprox()
{
    fprintf(out, "\nApproximate values\n\n");
    for (int i = 0; i < npoints; i++) {
        const point *p = points + i;
        if (dim == 1) fprintf(out, "%s%22.6lf%c\n", p->name, p->xpt[2], coordinate_state(p, 2));
        if (dim == 2) print_plane(this, p, i < nsta);
        if (dim == 3) print_space(this, p, i < nsta);
    }
}

static void show_point(FILE *out, int i, const point *p)
{
    const double *x = p->xpt;
    fprintf(out, "\n points[%d]     %s\n", i, p->name);
    fprintf(out, "  xpt    %15.6lf %15.6lf %15.6lf\n", x[0], x[1], x[2]);
    x = p->x0;
    fprintf(out, "  x0     %15.6lf %15.6lf %15.6lf\n", x[0], x[1], x[2]);
    x = p->sxpt;
    fprintf(out, "  sxpt   %15.6lf %15.6lf %15.6lf\n", x[0], x[1], x[2]);
    fprintf(out, "  h      %15.6lf\n", p->h);
    x = p->xex;
    fprintf(out, "  xex    %15.6lf %15.6lf %15.6lf   %15.6lf %15.6lf\n", x[0], x[1], x[2], x[3], x[4]);
    x = p->e0;
    fprintf(out, "  e0     %15.6lf %15.6lf %15.6lf   %15.6lf %15.6lf\n", x[0], x[1], x[2], x[3], x[4]);
    x = p->sxex;
    fprintf(out, "  sxex   %15.6lf %15.6lf %15.6lf   %15.6lf %15.6lf\n", x[0], x[1], x[2], x[3], x[4]);
    const int *n = p->n0;
    fprintf(out, "  n0         %3d %3d %3d\n", n[0], n[1], n[2]);
    n = p->n1;
    fprintf(out, "  n1         %3d %3d %3d    %3d %3d\n", n[0], n[1], n[2], n[3], n[4]);
    n = p->defdatum;
    fprintf(out, "  defdatum   %3d %3d %3d", n[0], n[1], n[2]);
    fprintf(out, "    %3d %3d %3d     %3d %3d\n", n[3], n[4], n[5], n[6], n[7]);
    fprintf(out, "  ntie      %4d\n", p->ntie);
    fprintf(out, "  typ       %4d\n", p->typ);
    const double(*e)[3] = p->ell; // by columns
    fprintf(out, "  ell   %15.6lf %15.6lf %15.6lf\n", e[0][0], e[1][0], e[2][0]);
    for (int c = 1; c < 3; c++) fprintf(out, "        %15.6lf %15.6lf %15.6lf\n", e[0][c], e[1][c], e[2][c]);
}

void vornrun::showpoints()
{
    for (int i = 0; i < npoints; i++) show_point(out, i, points + i);
    fprintf(out, "\n  ia1        %3d %3d %3d   %3d %3d %3d         %3d %3d\n", ia1[0], ia1[1], ia1[2], ia1[3], ia1[4],
            ia1[5], ia1[6], ia1[7]);
    fflush(out);
}

static void show_list(FILE *out, const measure *m, int n)
{
    for (int i = 0; i < n; i++, m++) {
        fprintf(out, "%5d      typ %3d\n", i, m->typ);
        fprintf(out, "  %s %15.5lf       %s %15.5lf\n", m->p1->name, m->h1, m->p2->name, m->h2);
        fprintf(out, "     val    %15.6lf     %15.6lf\n", m->val[0], m->val[1]);
        fprintf(out, "     res    %15.6lf     %15.6lf\n", m->res[0], m->res[1]);
    }
}

void vornrun::showmeasures()
{
    fprintf(out, "\nDistances      ndist = %d\n", ndist);
    show_list(out, dist, ndist);
    fprintf(out, "\nHeight difference      ndifh = %d\n", ndifh);
    show_list(out, difh, ndifh);
    fprintf(out, "\nHorizontal directions      ndir1 = %d\n", ndir1);
    show_list(out, dir1, ndir1);
    fprintf(out, "\nVertival angles      ndir2 = %d\n", ndir2);
    show_list(out, dir2, ndir2);
    fprintf(out, "\nAzimuth angles      naz = %d\n", naz);
    show_list(out, az, naz);

    fprintf(out, "\nGPS baselines        ngps = %d\n", ngps);
    for (const gpsbase *g = gps; g < gps + ngps; g++) {
        fprintf(out, "  %s     %s \n", g->p1->name, g->p2->name);
        fprintf(out, "   %15.6lf     %15.6lf     %15.6lf\n", g->dx[0], g->dx[1], g->dx[2]);
    }
    fprintf(out, "\nImage coordinates    nobsuv= %d\n", nobsuv);
    for (int i = 0; i < nobsuv; i++) {
        const measure *u = obsuv1 + i, *v = obsuv2 + i;
        if (!u->p1 || !u->p2) continue; // an image whose file went away left it empty
        fprintf(out, "  %s  %s %19.5lf %15.6lf %5d\n", u->p1->name, u->p2->name, u->val[0], v->val[0], u->typ);
    }
    fflush(out);
}

} // namespace vornengine
