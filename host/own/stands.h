// Stands of instruments, as the file describes them: the set-ups that it names, and for each station the one of the
// rows that name none.

#ifndef VORNHOST_STANDS_H
#define VORNHOST_STANDS_H

#include "host/input/model.h"

namespace vornhost {

// Stands count through: those of the stations that no row of the table setups describes, then the named ones.
int stand_count(const Model &network);

// Of a row with this note at a station (its record).
int stand_of(const Model &network, int station, int setup);

// Named set-up of a stand, -1 for that of a station.
int named_of(const Model &network, int stand);

// What the file says of a stand.
SetupRecord describe_stand(const Model &network, int stand);

// Whether its instrument is held upright, so that its tilts have no part in what it observes.
bool is_upright(const SetupRecord &setup);

} // namespace vornhost

#endif
