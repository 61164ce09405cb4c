// First coordinates of points that the file gives none of, in two and three dimensions.

#ifndef VORNHOST_FIRST_VALUES_H
#define VORNHOST_FIRST_VALUES_H

#include <stdio.h>

#include <string>
#include <vector>

#include "host/input/model.h"

namespace vornhost {

struct FirstValues {
    std::vector<std::string> notes; // what was computed, one line
    std::vector<std::string> words; // why not all could be, for the user; empty when none is missing
};

// Writes coordinates into the records of used points with status compute and turns their status
// on: by plain geometry as far as that goes, then stations by the engine, then the rest. When
// points remain, nothing is written and the engine's diagnosis goes to report. Does nothing in
// one dimension, where the engine takes heights as they stand, and where the engine wants
// coordinates: in error propagation and with images.
FirstValues compute_first_values(Model &model, FILE *report);

} // namespace vornhost

#endif
