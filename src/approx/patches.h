// Diagnosis of a station that could not be computed.

#ifndef VORN_PATCHES_H
#define VORN_PATCHES_H

#include "approx/spreadtables.h"

namespace vornengine {

// Reports what station i sees. Returns 0, -1, -4, -5 or -9: see patches.cpp.
int patch_spread(const approxdata *net, const spreadtables *tab, int i);

} // namespace vornengine

#endif
