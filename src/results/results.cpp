// Results to the host: one result record on the project, adjusted constants back into the
// groups. Coordinates in metres, orientations and ellipses in radians, residuals of angles
// in the host's raw unit.
//
// The n-th selected record of a host list is the n-th internal point or measure. On a
// failure the record keeps what has been filled so far.

#include "vorn/run.h"

#include <limits.h>
#include <stdlib.h>
#include <string.h>

#include "numerics/memory.h"
#include "vorn/message.h"
#include "vorn/records.h"

namespace vornengine {

// Allocates n zeroed doubles (ints) for each of the count pointers; 0 when one failed. Places in
// the arrays are ints: for more of them there is no memory.
static int take_doubles(double **const *field, int count, long long n)
{
    int all = 1;
    for (int i = 0; i < count; i++) {
        *field[i] = (double *)zeroed(n <= INT_MAX ? n : -1, sizeof(double));
        if (!*field[i]) all = 0;
    }
    return all;
}

static int take_ints(int **const *field, int count, long long n)
{
    int all = 1;
    for (int i = 0; i < count; i++) {
        *field[i] = (int *)zeroed(n <= INT_MAX ? n : -1, sizeof(int));
        if (!*field[i]) all = 0;
    }
    return all;
}

#define COUNT(list) (int)(sizeof(list) / sizeof(list)[0])

// ---- observations ----------------------------------------------------------------

struct kindfields {
    double *s, *sp;
    int *ichi, *nnorm, *nnormb, *ntau, *ntaub;
};

static void copy_kind(const kindfields &to, double s, const kindresult &from)
{
    *to.s = s;
    *to.sp = from.sp;
    *to.ichi = from.ichi;
    *to.nnorm = from.nnorm;
    *to.nnormb = from.nnormb;
    *to.ntau = from.ntau;
    *to.ntaub = from.ntaub;
}

void vornrun::fill_obs_stat()
{
    if (irun != 0 && irun != 1) return;
    const tempresult none = tempresult(), *tests = temp_res ? temp_res : &none; // a run that stopped made none
    result *r = pproject->runresults;
    r->dof = tests->dof;
    r->sig0 = sigma0;
    r->sigpost = tests->sigpost;
    r->itest = tests->itest;
    if (irun != 1) return;

    copy_kind({&r->sdist, &r->spdist, &r->ichidist, &r->nnormdist, &r->nnormbdist, &r->ntaudist, &r->ntaubdist}, sdist,
              tests->dist);
    copy_kind({&r->sdifh, &r->spdifh, &r->ichidifh, &r->nnormdifh, &r->nnormbdifh, &r->ntaudifh, &r->ntaubdifh}, sdifh,
              tests->difh);
    copy_kind({&r->sdir1, &r->spdir1, &r->ichidir1, &r->nnormdir1, &r->nnormbdir1, &r->ntaudir1, &r->ntaubdir1}, sdir1,
              tests->dir1);
    copy_kind({&r->sdir2, &r->spdir2, &r->ichidir2, &r->nnormdir2, &r->nnormbdir2, &r->ntaudir2, &r->ntaubdir2}, sdir2,
              tests->dir2);
    copy_kind({&r->saz, &r->spaz, &r->ichiaz, &r->nnormaz, &r->nnormbaz, &r->ntauaz, &r->ntaubaz}, saz, tests->az);
}

void vornrun::flagdecode(int flag, int *a, int *b, int *c, int *d, int *e)
{
    int *digit[] = {a, b, c, d, e};
    int divisor = 10000;
    for (int i = 0; i < 5; i++, divisor /= 10) {
        *digit[i] = flag / divisor == 1; // any other quotient is no mark
        if (*digit[i]) flag -= divisor;
    }
}

// Residuals of one list, from position n of the residual arrays up to position last.
// Returns the next position, or -3 when the host has more selected records than the list.
// A run that stopped while loading has no measures; its residuals are 0.
int vornrun::fill_residuals(int kind, int n, int last)
{
    result *r = pproject->runresults;
    const kindlist lists = listof(kind);
    const measure none = measure();
    int k = 0; // place in the list
    for (int i = 0; i < lists.nhost; i++) {
        if (lists.host[i].typ <= 0) continue;
        if (n >= last || k >= *lists.n) return size_problem();
        const measure *m = lists.list ? lists.list + k : &none;
        k++;
        double res = m->res[0], sres = m->res[1];
        if (kind == KIND_DIRECTION) {
            res = pproject->htoraw(0, pproject->htoraw(2, res));
            sres = pproject->htoraw(0, sres);
        } else if (kind == KIND_VERTICAL) {
            res = pproject->vtoraw(0, pproject->vtoraw(2, res));
            sres = pproject->vtoraw(0, sres);
        }
        r->iobs[n] = i;
        r->res[n] = res;
        if (irun == 1) {
            r->sres[n] = sres;
            flagdecode(m->iflag, r->iout + n, r->inorm + n, r->inormb + n, r->itau + n, r->itaub + n);
        }
        n++;
    }
    return n;
}

int vornrun::fill_obs_res()
{
    int n = 0, last = 0;
    const int kinds[] = {KIND_DISTANCE, KIND_HEIGHT_DIFFERENCE, KIND_DIRECTION, KIND_VERTICAL};
    for (int i = 0; i < COUNT(kinds); i++) {
        last += *listof(kinds[i]).n;
        n = fill_residuals(kinds[i], n, last);
        if (n < 0) return -3;
    }
    return 0;
}

int vornrun::take_residuals()
{
    result *r = pproject->runresults;
    const long long nres = (long long)r->ndist + r->ndifh + r->ndir1 + r->ndir2;
    int **ints[] = {&r->iobs, &r->iout, &r->inorm, &r->inormb, &r->itau, &r->itaub};
    double **doubles[] = {&r->res, &r->sres};
    const int all = take_ints(ints, irun == 1 ? COUNT(ints) : 1, nres);
    if (take_doubles(doubles, irun == 1 ? 2 : 1, nres) && all) return 0;
    tell(pfeedback, "Allocation in pproject->runresults failed");
    return -2;
}

// ---- lumps -----------------------------------------------------------------------

int vornrun::take_lumps()
{
    result *r = pproject->runresults;
    int **ints[] = {&r->ilump, &r->iepoch, &r->iref};
    double **doubles[] = {&r->tx, &r->ty, &r->tz, &r->lrx, &r->lry, &r->lrz, &r->tscale};
    double **deviations[] = {&r->stx, &r->sty, &r->stz, &r->slrx, &r->slry, &r->slrz, &r->stscale};
    const int all = take_ints(ints, COUNT(ints), r->nrow);
    if (!take_doubles(doubles, COUNT(doubles), r->nrow) || !all) {
        tell(pfeedback, "Allocation # 1 for lumps in runresults failed");
        return -2;
    }
    if ((irun == 1 || irun == -2) && !take_doubles(deviations, COUNT(deviations), r->nrow)) {
        tell(pfeedback, "Allocation # 2 for lumps in runresults failed");
        return -2;
    }
    return 0;
}

// Rows of a lump: its epochs but the reference; none when its arrays found no memory.
static int lump_rows(const lump *l)
{
    const bool all = l->epoch && l->tx && l->ty && l->tz && l->rx && l->ry && l->rz && l->scale;
    return all && l->nepoch > 1 ? l->nepoch - 1 : 0;
}

void vornrun::fill_lumprow(int row, const lump *l, int e)
{
    result *r = pproject->runresults;
    r->ilump[row] = l->id;
    r->iepoch[row] = l->epoch[e];
    r->iref[row] = l->iref;
    r->tx[row] = l->tx[e];
    r->ty[row] = l->ty[e];
    r->tz[row] = l->tz[e];
    r->lrx[row] = l->rx[e];
    r->lry[row] = l->ry[e];
    r->lrz[row] = l->rz[e];
    r->tscale[row] = l->scale[e];
    if (pproject->lumpmethod != 1 || !r->stx || !l->sscale) return;
    r->stx[row] = l->stx[e];
    r->sty[row] = l->sty[e];
    r->stz[row] = l->stz[e];
    r->slrx[row] = l->srx[e];
    r->slry[row] = l->sry[e];
    r->slrz[row] = l->srz[e];
    r->stscale[row] = l->sscale[e];
}

int vornrun::fill_lumps()
{
    result *r = pproject->runresults;
    const int n = lumps ? nlump : 0; // a run that stopped early has counted lumps, but none stands
    for (int i = 0; i < n; i++) r->nrow += lump_rows(lumps + i);
    if (r->nrow <= 0) return 0;
    if (take_lumps() != 0) return -2;
    int row = 0;
    for (int i = 0; i < n; i++)
        for (int e = 0; e < lump_rows(lumps + i); e++) fill_lumprow(row++, lumps + i, e);
    return 0;
}

// ---- points ----------------------------------------------------------------------

// Points that bear the name of the one before them: the copies of points split by epoch.
static int count_duplicates(const point *first, int n)
{
    int count = 0;
    for (int i = 1; i < n; i++) count += strcmp(first[i].name, first[i - 1].name) == 0;
    return count;
}

int vornrun::take_ellipses(int npt)
{
    result *r = pproject->runresults;
    double **e12[] = {&r->ell12a, &r->ell12b, &r->ell12t};
    double **e13[] = {&r->ell13a, &r->ell13b, &r->ell13t};
    double **e23[] = {&r->ell23a, &r->ell23b, &r->ell23t};
    const char *failed = NULL;
    if (!take_doubles(e12, 3, npt))
        failed = "Allocation for ell 1-2 in pproject->runresults failed";
    else if (!take_doubles(e13, 3, npt))
        failed = "Allocation for ell 1-3 in pproject->runresults failed";
    else if (!take_doubles(e23, 3, npt))
        failed = "Allocation for ell 2-3 in pproject->runresults failed";
    if (!failed) return 0;
    tell(pfeedback, "%s", failed);
    return -2;
}

int vornrun::take_coordinates(int npt)
{
    result *r = pproject->runresults;
    int **code[] = {&r->code1, &r->code2, &r->code3};
    double **value[3][3] = {{&r->xpt, &r->x0, &r->sxpt}, {&r->ypt, &r->y0, &r->sypt}, {&r->zpt, &r->z0, &r->szpt}};
    double **rotation[3][2] = {{&r->rx, &r->srx}, {&r->ry, &r->sry}, {&r->rz, &r->srz}};

    int **ihost[] = {&r->ihost};
    int all = take_ints(ihost, 1, npt);
    const int first = dim == 1 ? 2 : 0, last = dim == 2 ? 2 : dim == 1 || dim == 3 ? 3 : 0;
    for (int c = first; c < last; c++) {
        all &= take_doubles(value[c], dim == 3 ? 3 : 2, npt);
        if (dim == 3 && r->nstar > 0) all &= take_doubles(rotation[c], 2, r->nstar);
        all &= take_ints(code + c, 1, npt);
    }
    if (all) return 0;
    tell(pfeedback, "Allocation in pproject->runresults failed");
    return -2;
}

// Code of coordinate c for the host; n is the unknown number that tells whether it is fixed.
static int host_code(const point *p, int c, int n)
{
    int code = CODE_FREE;
    if (p->defdatum[c] == DATUM_WEIGHTED) code = CODE_WEIGHTED;
    if (p->defdatum[c] == DATUM_UNUSED) code = CODE_NO_DATUM;
    if (n == N_NONE) code = CODE_FIXED;
    return code;
}

// Whether the run makes ellipses and their arrays hold position i.
bool vornrun::has_ellipse(int i)
{
    const result *r = pproject->runresults;
    return (irun == 1 || irun == -2) && i < r->nstar + r->ntarr;
}

void vornrun::fill_1D(int i)
{
    result *r = pproject->runresults;
    const point *p = points + i;
    r->zpt[i] = p->xpt[2];
    r->z0[i] = p->x0[2];
    r->code3[i] = host_code(p, 2, p->n0[2]);
    if (!has_ellipse(i)) return;
    r->ell13a[i] = p->ell[0][1];
    r->ell23a[i] = p->ell[0][2];
    r->ell13t[i] = r->ell23t[i] = pi / 2;
}

void vornrun::fill_tar2D(int i)
{
    result *r = pproject->runresults;
    const point *p = points + i;
    r->xpt[i] = p->xpt[0];
    r->x0[i] = p->x0[0];
    r->code1[i] = host_code(p, 0, p->n1[0]); // n1, not n0: targets, whose n1[0] is 0, never show fixed here
    r->ypt[i] = p->xpt[1];
    r->y0[i] = p->x0[1];
    r->code2[i] = host_code(p, 1, p->n0[1]);
    if (!has_ellipse(i)) return;
    r->ell12a[i] = p->ell[0][0];
    r->ell12b[i] = p->ell[1][0];
    r->ell12t[i] = p->ell[2][0];
}

void vornrun::fill_sta2D(int i) { fill_tar2D(i); }

void vornrun::fill_tar3D(int iout, int ipoint)
{
    result *r = pproject->runresults;
    const point *p = points + ipoint;
    int *code[] = {r->code1, r->code2, r->code3};
    double *value[] = {r->xpt, r->ypt, r->zpt}, *start[] = {r->x0, r->y0, r->z0}, *s[] = {r->sxpt, r->sypt, r->szpt};
    for (int c = 0; c < 3; c++) {
        value[c][iout] = p->xpt[c];
        start[c][iout] = p->x0[c];
        s[c][iout] = p->sxpt[c];
        code[c][iout] = host_code(p, c, p->n0[c]);
    }
    if (!has_ellipse(iout)) return;
    double *ell[3][3] = {
        {r->ell12a, r->ell13a, r->ell23a}, {r->ell12b, r->ell13b, r->ell23b}, {r->ell12t, r->ell13t, r->ell23t}};
    for (int i = 0; i < 3; i++)
        for (int plane = 0; plane < 3; plane++) ell[i][plane][iout] = p->ell[i][plane];
}

void vornrun::fill_sta3D(int iout, int ipoint)
{
    fill_tar3D(iout, ipoint);
    result *r = pproject->runresults;
    const point *p = points + ipoint;
    double *angle[] = {r->rx, r->ry, r->rz}, *s[] = {r->srx, r->sry, r->srz};
    for (int c = 0; c < 3; c++) {
        angle[c][iout] = p->xex[c];
        s[c][iout] = p->sxex[c];
    }
}

int vornrun::size_problem()
{
    tell(pfeedback, "Size problem in pproject->runresults");
    return -3;
}

// Dimensions 1 and 2: the same index reads and writes.
int vornrun::fill_plane()
{
    result *r = pproject->runresults;
    int iout = 0;
    for (int j = 0; j < npsta; j++) {
        if (psta[j].status <= 0) continue;
        if (!points || iout >= nsta || iout >= npoints) return size_problem();
        if (dim == 1)
            fill_1D(iout);
        else
            fill_sta2D(iout);
        r->ihost[iout++] = j;
    }
    for (int j = 0; j < nptar; j++) {
        if (ptar[j].status <= 0) continue;
        if (!points || iout >= npoints) return size_problem();
        if (dim == 1)
            fill_1D(iout);
        else
            fill_tar2D(iout);
        r->ihost[iout++] = nsta + j;
    }
    return 0;
}

// First point behind k, up to end, whose name is not that of point k - 1; k itself when
// the names run on to the end.
int vornrun::next_name(int k, int end)
{
    if (pproject->lumpmethod != 9) return k;
    int m = k;
    while (m < end && strcmp(points[m].name, points[k - 1].name) == 0) m++;
    return m < end ? m : k;
}

// Dimension 3: of points split by epoch only the first reaches the host. The index of the
// internal points goes on from the stations to the targets without a reset.
int vornrun::fill_space()
{
    result *r = pproject->runresults;
    const int npt = r->nstar + r->ntarr;
    int iout = 0, k = 0;
    for (int j = 0; j < npsta; j++) {
        if (psta[j].status <= 0) continue;
        if (!points || iout >= r->nstar || k >= nsta || k >= npoints) return size_problem();
        fill_sta3D(iout, k++);
        r->ihost[iout++] = j;
        k = next_name(k, nsta);
    }
    for (int j = 0; j < nptar; j++) {
        if (ptar[j].status <= 0) continue;
        if (!points || iout >= npt || k >= npoints) return size_problem();
        fill_tar3D(iout, k++);
        r->ihost[iout++] = r->nstar + j;
        k = next_name(k, npoints);
    }
    return 0;
}

// The arrays hold as many points as the record says, also when loading ended before the points
// were counted: they are zeros then.
int vornrun::fill_points()
{
    result *r = pproject->runresults;
    int nstadup = 0, ntardup = 0;
    if (pproject->lumpmethod == 9 && points) {
        nstadup = count_duplicates(points, nsta < npoints ? nsta : npoints);
        ntardup = count_duplicates(points + (npoints - ntar), ntar);
    }
    r->nstar = nsta - nstadup;
    r->ntarr = ntar - ntardup;
    const int npt = r->nstar + r->ntarr;
    if ((irun == 1 || irun == -2) && take_ellipses(npt) != 0) return -2;
    if (take_coordinates(dim == 3 || npt > npoints ? npt : npoints) != 0) return -2;
    return dim == 3 ? fill_space() : dim == 1 || dim == 2 ? fill_plane() : 0;
}

// ---- groups ----------------------------------------------------------------------

// The adjusted constants of a group, from its first member.
void vornrun::fill_group(group_input *g)
{
    if (g->nmember <= 0 || !g->member || !points) return;
    int p = -1; // internal point of the host station
    for (int j = 0; j < npsta && p + 1 < nsta; j++) {
        if (psta[j].status <= 0) continue;
        p++;
        if (j != g->member[0]) continue;
        for (int m = 0; m < 3; m++)
            if (points[p].n1[3 + m] >= 0) {
                g->c[m] = points[p].xex[3 + m];
                g->sc[m] = points[p].sxex[3 + m];
            }
        return;
    }
}

int vornrun::backtoproject()
{
    if (pproject->runresults) pproject->freerun(pproject->runresults);
    pproject->runresults = (result *)zeroed(1, sizeof(result));
    result *r = pproject->runresults;
    if (!r) {
        tell(pfeedback, "Create pproject->runresults failed");
        fprintf(out, "\nbacktoproject: Cannot allocate runresults\n");
        return -1;
    }
    r->irun = irun;
    r->dim = dim;
    r->ndist = ndist;
    r->ndifh = ndifh;
    r->ndir1 = ndir1;
    r->ndir2 = ndir2;
    if ((long long)ndist + ndifh + ndir1 + ndir2 > 0) fill_obs_stat();
    if (take_residuals() != 0) return -2;
    if (fill_obs_res() != 0) return -3;

    if (pproject->lumpmethod == 9) { // moves the points, so it comes before they are copied
        fprintf(out, "\nA Posteriori lump transformation\n");
        if (usesimili(1) != 0) {
            tell(pfeedback, "backtoproject: Pb with usesimili");
            fprintf(out, "\nbacktoproject: Pb with usesimili\n");
        }
    }
    if (fill_lumps() != 0) return -2;
    const int code = fill_points();
    if (code != 0) return code;

    if (lcon) {
        if ((icon == 1 || icon == 3) && writecon() != 0) return -9;
        free(Qcon);
        free(lcon);
        Qcon = NULL;
        lcon = NULL;
    }
    for (int g = 0; g < pproject->ngroups; g++) fill_group(pproject->groups + g);
    return 0;
}

} // namespace vornengine
