// A network as a draft, for writers of foreign formats: points, observations and covariances in metres and gon.
//
// Only what those formats can say of a network: points with codes, observations without constants of instruments,
// upright instruments. What is beyond is a fault, what changes no result a note.

#ifndef VORNHOST_MODEL_DRAFT_H
#define VORNHOST_MODEL_DRAFT_H

#include "host/formats/draft.h"
#include "host/input/faults.h"

namespace vornhost {

// False after a fault. A network in space with a reference system can be written in geocentric coordinates alone, where
// the caller wants these.
bool draft_of(const Model &network, Draft &draft, Faults &faults, bool geocentric);

} // namespace vornhost

#endif
