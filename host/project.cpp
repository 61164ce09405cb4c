// The seven operations of project: angular units and the release of results.
//
// Raw angles are gon, degree, packed degree (ddd.mmss) or radian; a vertical angle is a
// zenith angle or an elevation, and the engine sees elevations. Values, standard
// deviations and small differences share the unit.

#include "project.h"

#include <math.h>
#include <stdlib.h>

#include "result.h"

double project::rawtoh(int, double raw) { return raw; }
double project::rawtoaz(int mode, double raw) { return rawtoh(mode, raw); }
double project::rawtov(int, double raw) { return raw; }
double project::htoraw(int, double rad) { return rad; }
double project::aztoraw(int mode, double rad) { return htoraw(mode, rad); }
double project::vtoraw(int, double rad) { return rad; }

void project::freerun(result *run) { free(run); }
