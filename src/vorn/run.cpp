// The run driver: what a run copies from the project, the order of its set-up, and
// the entries of the three solvers.

#include "vorn/run.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include <new>

#include "numerics/decimal_point.h"
#include "numerics/memory.h"
#include "vorn/sidefiles.h"
#include "solvers/compact.h"
#include "solvers/jordan.h"
#include "solvers/simplex.h"
#include "vorn/message.h"
#include "loading/names.h"

namespace vornengine {

// A negative count of the host counts for none.
static int records(int n) { return n > 0 ? n : 0; }

vornrun::vornrun(project *p)
{
    pproject = p;
    papprox = NULL;
    psimplex = NULL;
    pcompact = NULL;
    pjordan = NULL;
    pfeedback = p->pfeedback;
    char *const end = p->filename + sizeof p->filename - 1;
    if (!memchr(p->filename, '\0', sizeof p->filename)) *end = '\0'; // a name that fills its field is cut
    pname = p->filename;
    out = p->out;
    idebug = p->idebug;
    dim = p->dim;
    irun = p->irun;

    iearth = p->iearth;
    radius = p->radius;
    for (int i = 0; i < 3; i++) trans[i] = p->trans[i];
    horigin = p->horigin;
    latitude = p->latitude;
    itmax = p->itmax;
    convergence = p->convergence;
    iredux = p->iredux;
    iunit = p->iunit;

    nlump = 0;
    lumps = NULL;
    icon = 0;
    nexport = nimport = 0;
    lcon = NULL;
    Qcon = NULL;

    psta = p->stations;
    npsta = records(p->nstations);
    ptar = p->targets;
    nptar = records(p->ntargets);
    pdist = p->distances;
    npdist = records(p->ndistances);
    pdifh = p->heightdiffs;
    npdifh = records(p->nheightdiffs);
    pdir1 = p->directions;
    npdir1 = records(p->ndirections);
    pdir2 = p->verticals;
    npdir2 = records(p->nverticals);
    sdist = p->sdist;
    sdifh = p->sdifh;
    sdir1 = p->sdir1;
    sdir2 = p->sdir2;
    suv = p->suv;
    saz = p->saz;
    sgps = p->sgps;

    pi = 4 * atan(1.0);
    iapprox = 0;
    points = NULL;
    nsta = ntar = npoints = 0;
    dist = difh = dir1 = dir2 = NULL;
    ndist = ndifh = ndir1 = ndir2 = 0;
    nweighted = 0;
    nfixh = 0;
    sigma0 = 0.0;
    nobsuv = 0;
    obsuv1 = obsuv2 = NULL;
    az = NULL;
    naz = 0;
    gps = NULL;
    ngps = 0;
    ncamera = 0;
    cameras = NULL;
    nstat100 = 0;
    for (int i = 0; i < 9; i++) ia1[i] = 0;

    latitude *= pi / 180;
    ndatum = 0;
    nunk1 = nunk2 = nunk = 0;
    for (int i = 0; i < 7; i++) datum[i] = 0.0;
    temp_res = NULL;
    pointindex = NULL;
    hostindex = NULL;
    begun = ready = false;
    sidefiles = NULL;
}

vornrun::~vornrun()
{
    const decimal_point held;
    if (backtoproject() != 0) tell(pfeedback, "backtoproject failed");
    clean();
    free(lcon); // still here when backtoproject stopped before the connected net
    free(Qcon);
}

vornrun &vornrun::operator=(const vornrun &other) = default;

void side_files::watch(vorn &run, side_files *files) { inside::of(run).sidefiles = files; }

int vornrun::vornstart()
{
    const decimal_point held;
    if (begun) {
        tell(pfeedback, "vornstart: a run is set up once");
        return -1;
    }
    begun = true;
    if (fill_vorn() != 0) {
        fflush(out);
        return -1;
    }
    trigapprox();
    summary();
    fflush(out);

    // Methodology 9 works the lumps out after the run.
    if (nlump != 0 && pproject->lumpmethod != 9 && lumpcheck() < 0) return -2;
    if (!lumps) nlump = 0; // points of lumps may have been counted and not split, for want of epochs

    if (datumcheck() != 0) {
        fflush(out);
        return -3;
    }

    if (irun == -2 || pproject->iphoto != 0) {
        if (iapprox != 0) {
            fprintf(out, "\nvornstart: for error propagation, need coordinates\n");
            return -5;
        }
    } else if (vornapprox() != 0) {
        return -4;
    }

    set_prepare();
    if ((icon == 2 || icon == 3) && set_connect() < 0) return -6;
    summary2();
    outputapprox();
    ready = true;
    return 0;
}

void vornrun::handover(solverinput *in)
{
    in->pproject = pproject;
    in->points = points;
    in->dist = dist;
    in->difh = difh;
    in->dir1 = dir1;
    in->dir2 = dir2;
    in->nsta = nsta;
    in->ntar = ntar;
    in->ndist = ndist;
    in->ndifh = ndifh;
    in->ndir1 = ndir1;
    in->ndir2 = ndir2;
    in->nweighted = nweighted;
    in->nfixh = nfixh;
    in->sdist = sdist;
    in->sdifh = sdifh;
    in->sdir1 = sdir1;
    in->sdir2 = sdir2;
    in->sigma0 = sigma0;
    in->ia1 = ia1;
    in->iredux = iredux;
    in->nunk1 = nunk1;
    in->nunk2 = nunk2;
    in->ndatum = ndatum;
    in->nunk = nunk;
    in->datum = datum;
    in->nlump = nlump;
    in->lumps = lumps;
    in->icon = icon;
    in->nexport = nexport;
    in->nimport = nimport;
    in->lcon = lcon;
    in->Qcon = Qcon;
    in->naz = naz;
    in->az = az;
    in->saz = saz;
    in->ngps = ngps;
    in->gps = gps;
    in->sgps = sgps;
    in->nobsuv = nobsuv;
    in->obsuv1 = obsuv1;
    in->obsuv2 = obsuv2;
    in->suv = suv;
    in->ncamera = ncamera;
    in->cameras = cameras;
    in->temp_res = temp_res;
    in->sidefiles = sidefiles;
}

// The record that the statistics fill; a run of error propagation has none.
bool vornrun::take_temp_res(const char *entry)
{
    free(temp_res);
    temp_res = NULL;
    if (irun == -2) return true;
    temp_res = (tempresult *)zeroed(1, sizeof(tempresult));
    if (!temp_res) fprintf(out, "%s: Cannot allocate temp_res\n", entry);
    return temp_res;
}

// A run that was not set up to its end has lists without records.
static int not_ready(Feedback *fb, const char *entry)
{
    tell(fb, "%s: vornstart has not returned 0", entry);
    return -1;
}

// Without memory for the object itself.
static int no_solver(Feedback *fb, const char *entry)
{
    tell(fb, "%s: Cannot allocate the solver", entry);
    return -1;
}

int vornrun::vornL2()
{
    const decimal_point held;
    if (!ready) return not_ready(pfeedback, "vornL2");
    if (!take_temp_res("vornL2+")) return -1;
    solverinput in;
    handover(&in);
    pcompact = new (std::nothrow) compact(in);
    if (!pcompact) return no_solver(pfeedback, "vornL2");

    int result = pcompact->iterate();
    fflush(out);
    if (result == 0 && irun != 0) result = pcompact->inversion(); // any mode but 0 inverts
    fflush(out);
    delete pcompact;
    return result;
}

int vornrun::vornjordan()
{
    const decimal_point held;
    if (!ready) return not_ready(pfeedback, "vornjordan");
    if (!take_temp_res("vornjordan")) return -1;
    solverinput in;
    handover(&in);
    pjordan = new (std::nothrow) jordan(in);
    if (!pjordan) return no_solver(pfeedback, "vornjordan");

    int result = pjordan->iterate();
    fflush(out);
    if (result == 0 && (irun == 1 || irun == -2)) result = pjordan->inversion();
    fflush(out);
    delete pjordan;
    return result;
}

// Keeps no statistics: temp_res stays null.
int vornrun::vornL1()
{
    const decimal_point held;
    if (!ready) return not_ready(pfeedback, "vornL1");
    solverinput in;
    handover(&in);
    psimplex = new (std::nothrow) simplex(in);
    if (!psimplex) return no_solver(pfeedback, "vornL1");

    const int result = psimplex->iterate();
    fflush(out);
    delete psimplex;
    return result;
}

} // namespace vornengine
