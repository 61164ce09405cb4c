// The settings as the project has them when a run is made, and the lists by their kinds.

#include "vorn/settings.h"

#include <math.h>
#include <string.h>

namespace vornengine {

// A negative count of the host counts for none.
static int records(int n) { return n > 0 ? n : 0; }

// The file name in its field; one that fills the field is cut.
static char *terminated(char *name, size_t size)
{
    if (!memchr(name, '\0', size)) name[size - 1] = '\0';
    return name;
}

settings::settings(project *p)
    : pproject(p), pfeedback(p->pfeedback), pname(terminated(p->filename, sizeof p->filename)), out(p->out),
      idebug(p->idebug), dim(p->dim), irun(p->irun), iearth(p->iearth),
      radius(p->radius), trans{p->trans[0], p->trans[1], p->trans[2]}, horigin(p->horigin), itmax(p->itmax),
      convergence(p->convergence), iredux(p->iredux), iunit(p->iunit), iphoto(p->iphoto), psta(p->stations),
      npsta(records(p->nstations)), ptar(p->targets), nptar(records(p->ntargets)), pdist(p->distances),
      npdist(records(p->ndistances)), pdifh(p->heightdiffs), npdifh(records(p->nheightdiffs)), pdir1(p->directions),
      npdir1(records(p->ndirections)), pdir2(p->verticals), npdir2(records(p->nverticals)), sdist(p->sdist),
      sdifh(p->sdifh), sdir1(p->sdir1), sdir2(p->sdir2), suv(p->suv), saz(p->saz), sgps(p->sgps), pi(4.0 * atan(1.0)),
      sidefiles(NULL)
{
    latitude = p->latitude * pi / 180.0;
}

double settings::lengthfactor() const
{
    if (iunit == 1) return 0.001;
    if (iunit == 2) return 0.0254;
    return 1.0;
}

kindlist solverinput::listof(int kind)
{
    switch (kind) {
    case KIND_DISTANCE: return {"distance", pdist, npdist, dist, &ndist};
    case KIND_HEIGHT_DIFFERENCE: return {"height difference", pdifh, npdifh, difh, &ndifh};
    case KIND_DIRECTION: return {"horizontal direction", pdir1, npdir1, dir1, &ndir1};
    case KIND_VERTICAL: return {"vertical angle", pdir2, npdir2, dir2, &ndir2};
    default: return {"azimuth angle", pproject->azimuths, pproject->nazimuths, az, &naz};
    }
}

} // namespace vornengine
