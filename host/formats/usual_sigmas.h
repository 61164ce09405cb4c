// Standard deviations for what a foreign file gives none, by the keys of [sigma].

#ifndef VORNHOST_USUAL_SIGMAS_H
#define VORNHOST_USUAL_SIGMAS_H

#include <map>
#include <string>

#include "host/formats/draft.h"
#include "host/input/faults.h"

namespace vornhost {

// Gives them to the observations that have none: millimetres; mgon, or arc seconds where the draft is in
// degrees-minutes-seconds; ppm. A fault for each kind that goes without.
void apply_usual_sigmas(const std::map<std::string, double> &sigmas, Draft &draft, Faults &faults);

} // namespace vornhost

#endif
