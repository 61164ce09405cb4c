// The seven operations of the host of these tests.

#include <gtest/gtest.h>
#include <stdlib.h>

#include "ownhost/host.h"
#include "vorn/project.h"
#include "vorn/result.h"

ownhost::Conversions &ownhost::conversions()
{
    static Conversions c;
    return c;
}

double project::rawtoh(int mode, double raw) { return ownhost::conversions().rawtoh[mode] * raw; }
double project::rawtoaz(int mode, double raw) { return ownhost::conversions().rawtoaz[mode] * raw; }
double project::rawtov(int mode, double raw) { return ownhost::conversions().rawtov[mode] * raw; }
double project::htoraw(int mode, double rad) { return ownhost::conversions().htoraw[mode] * rad; }
double project::aztoraw(int mode, double rad) { return ownhost::conversions().aztoraw[mode] * rad; }
double project::vtoraw(int mode, double rad) { return ownhost::conversions().vtoraw[mode] * rad; }

void project::freerun(result *run)
{
    if (!run) return;
    void *const arrays[] = {run->ihost,  run->code1,  run->code2,  run->code3,  run->x0,     run->y0,     run->z0,
                            run->xpt,    run->ypt,    run->zpt,    run->sxpt,   run->sypt,   run->szpt,   run->rx,
                            run->ry,     run->rz,     run->srx,    run->sry,    run->srz,    run->iobs,   run->res,
                            run->sres,   run->iout,   run->inorm,  run->inormb, run->itau,   run->itaub,  run->ell12a,
                            run->ell12b, run->ell12t, run->ell13a, run->ell13b, run->ell13t, run->ell23a, run->ell23b,
                            run->ell23t, run->ilump,  run->iepoch, run->iref,   run->tx,     run->ty,     run->tz,
                            run->lrx,    run->lry,    run->lrz,    run->tscale, run->stx,    run->sty,    run->stz,
                            run->slrx,   run->slry,   run->slrz,   run->stscale};
    for (void *array : arrays) free(array);
    free(run);
    if (run == runresults) runresults = nullptr;
}
