// What the tests of this folder allocate, counted, and an allocation that fails when a test wants it.

#ifndef TESTS_ADJUST_ALLOCATIONS_H
#define TESTS_ADJUST_ALLOCATIONS_H

#include <atomic>

namespace vornadjust {

extern std::atomic<long long> allocated_bytes;  // asked for
extern std::atomic<long long> allocations_left; // until one fails; negative for none

} // namespace vornadjust

#endif
