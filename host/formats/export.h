// Networks and their adjusted coordinates in foreign formats.

#ifndef VORNHOST_EXPORT_H
#define VORNHOST_EXPORT_H

#include <time.h>

#include <string>
#include <vector>

#include "host/input/faults.h"
#include "host/input/model.h"
#include "host/results/results.h"

namespace vornhost {

enum class Target { gkf, lines, dynaml, json, sinex, landxml, points };

struct TargetWord {
    Target target;
    const char *word; // of the option --to
    const char *ending;
    const char *meaning;
};

const std::vector<TargetWord> &export_targets();

// Whether it holds results of an adjustment, not the network.
bool holds_results(Target target);

// The network in that format; notes say what is not written. Empty after a fault.
std::string export_network(const Model &network, Target target, std::vector<std::string> &notes, Faults &faults);

// The results of its adjustment in that format. `now` is the time of writing, seconds since 1970.
std::string export_results(const Results &results, Target target, time_t now, std::vector<std::string> &notes,
                           Faults &faults);

} // namespace vornhost

#endif
