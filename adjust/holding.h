// What keeps each of the seven basic motions of a network: by which observations and coordinates it is
// counted as held. For the account of a run; nothing is decided by it.

#ifndef VORNADJUST_HOLDING_H
#define VORNADJUST_HOLDING_H

#include <array>
#include <vector>

#include "adjust/block_elimination.h"
#include "adjust/motion_rows.h"

namespace vornadjust {

struct Holding {
    bool exists = false;                   // in this space and these parts
    bool open = false;                     // nothing keeps it
    std::array<int, n_kinds> of_kind = {}; // observations that answer to it, by kind, but for weighted coordinates
    int fixed = 0;                         // held coordinates that do
    int weighted = 0;                      // weighted and imported coordinates that do
};

// Of all parts together, by basic motion. Coordinates hold a turn when they do so wherever the network is
// shifted, and the scale when they do so however it is shifted and turned. The same on all ranks.
//   elimination  of the blocks before the motions of the parts at least
//   open         named open motions
std::array<Holding, n_motions> count_holding(const MotionRows &rows, const BlockElimination &elimination,
                                             const std::vector<NamedMotion> &open);

} // namespace vornadjust

#endif
