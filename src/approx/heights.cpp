// Heights carried through vertical angles.

#include "approx/approx.h"

void approx::height_spread(double *, double *) {}
