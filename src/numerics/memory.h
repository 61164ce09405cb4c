// Zeroed arrays from the C allocator.

#ifndef VORN_MEMORY_H
#define VORN_MEMORY_H

#include <stddef.h>

namespace vornengine {

// n zeroed elements of size bytes; a count of 0 gives a valid empty array. Returns
// null without memory, on a negative count and when n * size exceeds the address space.
void *zeroed(long long n, size_t size);

// The same for a full square array of order n.
void *zeroed_square(long long n, size_t size);

} // namespace vornengine

#endif
