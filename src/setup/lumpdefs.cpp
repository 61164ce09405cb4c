// What the host defines of a lump.

#include "setup/lumpdefs.h"

#include <stddef.h>

namespace vornengine {

const lump_definition *find_definition(const project *p, int id)
{
    for (int i = 0; i < p->nlumpdefs; i++)
        if (p->lumpdefs[i].id == id) return p->lumpdefs + i;
    return NULL;
}

int defined_epoch(const lump_definition *def, int epoch)
{
    for (int t = 0; t < def->n; t++)
        if (def->epoch[t] == epoch) return t;
    return -1;
}

} // namespace vornengine
