// How the supernodes are shared among threads: bunches of whole subtrees, each worked off by one
// thread, and the crown above them, whose blocks all threads work on together.
//
// Nothing here depends on the number of threads.

#ifndef VORNADJUST_SCHEDULE_H
#define VORNADJUST_SCHEDULE_H

#include <cstddef>
#include <vector>

#include "adjust/symbolic.h"

namespace vornadjust {

struct Bunch {
    int first, end; // supernodes first to end - 1
    double operations;
    std::size_t stack; // numbers of its stack of updates
};

struct Schedule {
    std::vector<Bunch> bunch;      // by descending operations
    std::vector<int> crown;        // supernodes, ascending
    std::vector<char> in_crown;    // [nsuper]
    std::vector<std::size_t> held; // [nsuper] where the update of the root of a subtree under the crown is kept
    std::size_t held_size = 0;     // numbers of all of these
    std::size_t crown_stack = 0;   // numbers of the stack of the crown
    double operations = 0.0;

    std::size_t bunch_stack() const; // the largest
};

// Products and sums that the columns of a supernode take, with the filling.
double supernode_operations(const Symbolic &symbolic, int s);

Schedule make_schedule(const Symbolic &symbolic);

} // namespace vornadjust

#endif
