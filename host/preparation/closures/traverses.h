// Linear closures of traverses: horizontal distances between stations with the angles between them.

#ifndef VORNHOST_CLOSURES_TRAVERSES_H
#define VORNHOST_CLOSURES_TRAVERSES_H

#include "host/preparation/closures/closures.h"
#include "host/preparation/start/sightings.h"

namespace vornhost::closures {

// Of rings, and of lines between fixed points: two components where one of the two has an orientation, the length
// alone where none has. Rings and lines in which an angle is missing count as none. Where verticals are parallel.
Closures traverse_closures(const vornadjust::Model &model, const start::Sightings &sightings);

} // namespace vornhost::closures

#endif
