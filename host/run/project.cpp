// The seven operations of project: angular units and the release of results.
//
// Raw angles are gon, degree, packed degree (ddd.mmss) or radian; a vertical angle is a
// zenith angle or an elevation, and the engine sees elevations. Values, standard
// deviations and small differences share the unit.

#include "vorn/project.h"

#include <math.h>
#include <stdlib.h>

#include "host/input/angle.h"
#include "vorn/result.h"

namespace {

enum { INPUT_VALUE = 1, OUTPUT_DIFFERENCE = 0, OUTPUT_VALUE = 1 };

const double pi = 4.0 * atan(1.0);

// Elevation in [-pi/2, pi/2] of an angle that may have been read in face two.
double fold(double elevation)
{
    const double e = remainder(elevation, 2.0 * pi);
    if (e > 0.5 * pi) return pi - e;
    if (e < -0.5 * pi) return -pi - e;
    return e;
}

} // namespace

double project::rawtoh(int mode, double raw)
{
    if (mode != INPUT_VALUE) return vornhost::to_radians(iangle, raw);
    return vornhost::readable_angle(iangle, raw) ? vornhost::to_direction(iangle, raw) : 2.0 * pi;
}

double project::rawtoaz(int mode, double raw) { return rawtoh(mode, raw); }

double project::rawtov(int mode, double raw)
{
    if (mode != INPUT_VALUE) return vornhost::to_radians(iangle, raw);
    if (!vornhost::readable_angle(iangle, raw)) return pi;
    const double angle = vornhost::to_radians(iangle, raw);
    return fold(izenith ? 0.5 * pi - angle : angle);
}

double project::htoraw(int mode, double rad)
{
    if (mode == OUTPUT_DIFFERENCE) return vornhost::from_radians(iangle, rad);
    return mode == OUTPUT_VALUE ? vornhost::from_direction(iangle, rad) : rad;
}

double project::aztoraw(int mode, double rad) { return htoraw(mode, rad); }

double project::vtoraw(int mode, double rad)
{
    if (mode == OUTPUT_DIFFERENCE) return vornhost::from_radians(iangle, rad);
    if (mode != OUTPUT_VALUE) return rad;
    return vornhost::from_radians(iangle, izenith ? 0.5 * pi - rad : rad);
}

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
