// The course of a computation of first values: codes saved, turned into working codes,
// completed to a datum, coordinates spread, codes put back.
//
// Working codes: N_NONE known, its value stands in xpt or xex; anything else to be computed.
// Of the parameters of a station the third orientation alone is computed. Reads directions,
// vertical angles and distances; writes xpt (metres) and xex[2] (radians).

#include "approx/approx.h"

#include <math.h>
#include <stdlib.h>

#include "approx/codes.h"
#include "loading/names.h"

namespace vornengine {

approx::approx(project *pproject_, point *points_, measure *dist_, measure *dir1_, measure *dir2_, int nsta_, int ntar_,
               int ndist_, int ndir1_, int ndir2_, int *ia1_)
{
    pproject = pproject_;
    out = pproject->out;
    pi = 4 * atan(1.0);
    idebug = pproject->idebug;
    dim = pproject->dim;
    points = points_;
    nsta = nsta_;
    ntar = ntar_;
    npoints = nsta + ntar;
    dist = dist_;
    dir1 = dir1_;
    dir2 = dir2_;
    ndist = ndist_;
    ndir1 = ndir1_;
    ndir2 = ndir2_;
    ia1 = ia1_;
    nunk1 = nunk2 = nunk = 0;
    shots = seen = seenby = lengths = pairlist();
}

approx::~approx() { drop_lists(); }

// One height that was to be held is held as it stands; the others become unknown.
void approx::heights_as_they_are()
{
    if (idebug) fprintf(out, "No real need for approximation computation:\nUse 0. for each height\n");
    int held = 0;
    for (point *p = points; p < points + npoints; p++) {
        if (p->n0[2] == N_MISSING) p->n0[2] = N_UNKNOWN;
        if (p->n0[2] != N_FIXED_MISSING) continue;
        p->n0[2] = held ? N_UNKNOWN : N_NONE;
        if (held) fprintf(out, "Approx Warning!!!\nAlready 1 height not known fixed\n");
        held = 1;
    }
}

// Values that stand are not used: everything that is not fixed is to be computed.
void approx::forget_values()
{
    for (int i = 0; i < npoints; i++)
        for (int k = 0; k < 3; k++) {
            if (points[i].n0[k] == N_UNKNOWN) points[i].n0[k] = N_MISSING;
            if (i < nsta && points[i].n1[k] == N_UNKNOWN) points[i].n1[k] = N_MISSING;
        }
}

// Whether a code means a value that can be used.
static int has_value(int code) { return code == N_NONE || code == N_UNKNOWN; }

// Turns the codes into working codes and counts what is known in ia1.
void approx::working_codes()
{
    for (int k = 0; k < 8; k++) ia1[k] = 0;
    for (int i = 0; i < npoints; i++) {
        point *p = points + i;
        for (int k = 0; k < 3; k++)
            if (has_value(p->n0[k])) {
                p->n0[k] = N_NONE;
                ia1[k]++;
            }
        if (i >= nsta) continue;
        if (has_value(p->n1[2])) {
            p->n1[2] = N_NONE;
            ia1[5]++;
        }
        p->n1[0] = p->n1[1] = p->n1[3] = p->n1[4] = N_NONE;
    }
}

void approx::show_codes()
{
    for (const point *p = points; p < points + npoints; p++)
        fprintf(out, "%s   %3d%3d%3d  %3d%3d%3d  %3d%3d\n", p->name, p->n0[0], p->n0[1], p->n0[2], p->n1[0], p->n1[1],
                p->n1[2], p->n1[3], p->n1[4]);
    fprintf(out, "\n");
}

void approx::show_working_codes()
{
    for (const point *p = points; p < points + npoints; p++)
        fprintf(out, "%s   %3d%3d%3d  %3d%3d%3d\n", p->name, p->n0[0], p->n0[1], p->n0[2], p->n1[0], p->n1[1],
                p->n1[2]);
    fprintf(out, "\n");
}

// From working codes to coordinates. Returns 0, or -2, -12 as compute.
int approx::datum_and_spread()
{
    if (datum_approx() < 0) return -2;
    if (nunk == 0) {
        if (idebug) fprintf(out, "In approx: no need to compute any coordimates\n");
        return 0;
    }
    return spread() == 0 ? 0 : -12;
}

int approx::compute_plane(int iapprox, savedcodes *saved)
{
    if (idebug) {
        fprintf(out, "\nAt the beginning of approx: iapprox=%d\n", iapprox);
        show_codes();
    }
    if (iapprox != 9) forget_values();
    if (codes_take(saved, npoints, out) != 0) return -1;
    codes_save(saved, points, npoints, ia1);
    working_codes();
    if (idebug) {
        fprintf(out, "\nBefore datum_approx\n");
        show_working_codes();
    }
    const int result = datum_and_spread();
    if (result != 0) {
        fflush(out);
        return result;
    }
    codes_restore(saved, points, npoints, ia1);
    if (idebug) {
        fprintf(out, "\nAt the end of approx: iapprox=%d\n", iapprox);
        show_codes();
    }
    return 0;
}

int approx::compute(int iapprox)
{
    if (dim == 1) {
        heights_as_they_are();
        return 0;
    }
    savedcodes saved = savedcodes();
    const int result = compute_plane(iapprox, &saved);
    codes_free(&saved);
    return result;
}

int approx::istotal(int i)
{
    if (i >= nsta) return 0;
    for (int k = 0; k < pproject->nstations; k++) {
        const station_input *s = pproject->stations + k;
        if (same_name(s->name, points[i].name)) return s->typ > 1 ? 1 : s->typ;
    }
    return 0;
}

} // namespace vornengine
