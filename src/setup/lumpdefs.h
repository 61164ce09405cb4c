// What the host defines of a lump.

#ifndef VORN_LUMPDEFS_H
#define VORN_LUMPDEFS_H

#include "vorn/project.h"

namespace vornengine {

// Kinds of a lump; 0: all seven parameters.
enum { WITHOUT_ROTATION = 1, WITHOUT_SCALE = 2 };

// First definition of a lump, by the host's lump index, or null.
const lump_definition *find_definition(const project *p, int id);

// First entry of a definition for an epoch, or -1.
int defined_epoch(const lump_definition *def, int epoch);

} // namespace vornengine

#endif
