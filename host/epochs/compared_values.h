// What a comparison takes from adjusted networks: values and cofactors of the compared coordinates, open motions.

#ifndef VORNHOST_COMPARED_VALUES_H
#define VORNHOST_COMPARED_VALUES_H

#include <vector>

#include "adjust/congruence.h"
#include "host/epochs/epoch_networks.h"
#include "host/own/road.h"

namespace vornhost {

// Of a run whose network named its covariance points: coordinates less the origin, and their cofactors.
vornadjust::EpochValues compared_values(const Model &network, const OwnOutcome &run,
                                        const std::vector<ComparedPoint> &points, const double origin[3]);

// All motions that some of the runs leaves open, over the compared coordinates at their places in the first run.
vornadjust::Dense open_motions(const std::vector<const OwnOutcome *> &runs, const std::vector<ComparedPoint> &points);

} // namespace vornhost

#endif
