// Variance components of the kinds of a network, apart by instrument groups and named covariances.

#ifndef VORNHOST_COMPONENTS_H
#define VORNHOST_COMPONENTS_H

#include <string>
#include <vector>

#include "adjust/components.h"
#include "host/own/numbers.h"
#include "host/results/results.h"

namespace vornhost {

// Which class each observation belongs to: its kind ("distance"), with the instrument group of its station where it has
// one ("distance, group TS15"), or the covariance that it shares ("covariance week12"). Weighted and imported values
// belong to none.
struct ComponentClasses {
    std::vector<int> of; // [observations], -1
    std::vector<std::string> names;
};

ComponentClasses component_classes(const Model &network, const Numbers &numbers);

// Estimates components from an adjustment with statistics of residuals. Numbers and adjustment become those with the
// factors where `use` says so. Empty, and a note, where the watch or a failure ended it.
std::vector<ComponentResult> find_components(const Model &network, Numbers &numbers, vornadjust::Outcome &adjustment,
                                             const vornadjust::Options &options, bool use,
                                             std::vector<std::string> &notes);

} // namespace vornhost

#endif
