// Coordinates and codes that the user states for the points of a foreign file.

#ifndef VORNHOST_DATUM_OPTIONS_H
#define VORNHOST_DATUM_OPTIONS_H

#include "host/formats/draft.h"
#include "host/formats/import_options.h"
#include "host/input/faults.h"

namespace vornhost {

// Takes the coordinates of the points from the file that the options name; they go before those of the draft. False
// after a fault.
bool add_known_points(const ImportOptions &options, Draft &draft, Faults &faults);

// Fixes points, or lets some alone hold a free network. False after a fault.
bool choose_datum(const ImportOptions &options, Draft &draft, Faults &faults);

} // namespace vornhost

#endif
