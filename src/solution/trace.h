// Lists of observations in a trace.

#ifndef VORN_TRACE_H
#define VORN_TRACE_H

#include "vorn/settings.h"

namespace vornengine {

// A list in metres: names, value, standard deviation.
void trace_measures(FILE *out, const char *title, const measure *list, int n);

// Directions and vertical angles, in the host's unit.
void trace_directions(const solverinput *in);

} // namespace vornengine

#endif
