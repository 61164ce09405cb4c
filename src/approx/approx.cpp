// The course of a computation of first values: codes saved, turned into working codes,
// completed to a datum, coordinates spread, codes put back.
//
// Working codes: N_NONE known, its value stands in xpt or xex; anything else to be computed.
// Of the parameters of a station the third orientation alone is computed. Reads directions,
// vertical angles and distances; writes xpt (metres) and xex[2] (radians).

#include "approx/approx.h"

#include "approx/codes.h"
#include "approx/spread.h"

namespace vornengine {

approx::approx(const solverinput &in, int *ia1) : net()
{
    net.pproject = in.pproject;
    net.host = in.hosts();
    net.out = in.out;
    net.pi = in.pi;
    net.idebug = in.idebug;
    net.dim = in.dim;
    net.points = in.points;
    net.nsta = in.nsta;
    net.ntar = in.ntar;
    net.npoints = in.nsta + in.ntar;
    net.dist = in.dist;
    net.dir1 = in.dir1;
    net.dir2 = in.dir2;
    net.ndist = in.ndist;
    net.ndir1 = in.ndir1;
    net.ndir2 = in.ndir2;
    net.ia1 = ia1;
}

approx::~approx() { drop_lists(&net); }

// One height that was to be held is held as it stands; the others become unknown.
static void heights_as_they_are(const approxdata *net)
{
    if (net->idebug) fprintf(net->out, "No real need for approximation computation:\nUse 0. for each height\n");
    int held = 0;
    for (point *p = net->points; p < net->points + net->npoints; p++) {
        if (p->n0[2] == N_MISSING) p->n0[2] = N_UNKNOWN;
        if (p->n0[2] != N_FIXED_MISSING) continue;
        p->n0[2] = held ? N_UNKNOWN : N_NONE;
        if (held) fprintf(net->out, "Approx Warning!!!\nAlready 1 height not known fixed\n");
        held = 1;
    }
}

// Values that stand are not used: everything that is not fixed is to be computed.
static void forget_values(const approxdata *net)
{
    for (int i = 0; i < net->npoints; i++)
        for (int k = 0; k < 3; k++) {
            if (net->points[i].n0[k] == N_UNKNOWN) net->points[i].n0[k] = N_MISSING;
            if (i < net->nsta && net->points[i].n1[k] == N_UNKNOWN) net->points[i].n1[k] = N_MISSING;
        }
}

// Whether a code means a value that can be used.
static int has_value(int code) { return code == N_NONE || code == N_UNKNOWN; }

// Turns the codes into working codes and counts what is known in ia1.
static void working_codes(const approxdata *net)
{
    for (int k = 0; k < 8; k++) net->ia1[k] = 0;
    for (int i = 0; i < net->npoints; i++) {
        point *p = net->points + i;
        for (int k = 0; k < 3; k++)
            if (has_value(p->n0[k])) {
                p->n0[k] = N_NONE;
                net->ia1[k]++;
            }
        if (i >= net->nsta) continue;
        if (has_value(p->n1[2])) {
            p->n1[2] = N_NONE;
            net->ia1[5]++;
        }
        p->n1[0] = p->n1[1] = p->n1[3] = p->n1[4] = N_NONE;
    }
}

static void show_codes(const approxdata *net)
{
    for (const point *p = net->points; p < net->points + net->npoints; p++)
        fprintf(net->out, "%s   %3d%3d%3d  %3d%3d%3d  %3d%3d\n", p->name, p->n0[0], p->n0[1], p->n0[2], p->n1[0],
                p->n1[1], p->n1[2], p->n1[3], p->n1[4]);
    fprintf(net->out, "\n");
}

static void show_working_codes(const approxdata *net)
{
    for (const point *p = net->points; p < net->points + net->npoints; p++)
        fprintf(net->out, "%s   %3d%3d%3d  %3d%3d%3d\n", p->name, p->n0[0], p->n0[1], p->n0[2], p->n1[0], p->n1[1],
                p->n1[2]);
    fprintf(net->out, "\n");
}

// From working codes to coordinates. Returns 0, or -2, -12 as compute.
static int datum_and_spread(approxdata *net)
{
    if (datum_approx(net) < 0) return -2;
    if (net->nunk == 0) {
        if (net->idebug) fprintf(net->out, "In approx: no need to compute any coordimates\n");
        return 0;
    }
    return spread(net) == 0 ? 0 : -12;
}

static int compute_plane(approxdata *net, int iapprox, savedcodes *saved)
{
    if (net->idebug) {
        fprintf(net->out, "\nAt the beginning of approx: iapprox=%d\n", iapprox);
        show_codes(net);
    }
    if (iapprox != 9) forget_values(net);
    if (codes_take(saved, net->npoints, net->out) != 0) return -1;
    codes_save(saved, net->points, net->npoints, net->ia1);
    working_codes(net);
    if (net->idebug) {
        fprintf(net->out, "\nBefore datum_approx\n");
        show_working_codes(net);
    }
    const int result = datum_and_spread(net);
    if (result != 0) {
        fflush(net->out);
        return result;
    }
    codes_restore(saved, net->points, net->npoints, net->ia1);
    if (net->idebug) {
        fprintf(net->out, "\nAt the end of approx: iapprox=%d\n", iapprox);
        show_codes(net);
    }
    return 0;
}

int approx::compute(int iapprox)
{
    if (net.dim == 1) {
        heights_as_they_are(&net);
        return 0;
    }
    savedcodes saved = savedcodes();
    const int result = compute_plane(&net, iapprox, &saved);
    codes_free(&saved);
    return result;
}

} // namespace vornengine
