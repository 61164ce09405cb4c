// Zeroed arrays from the C allocator, with counts checked before they are multiplied.

#include "numerics/memory.h"

#include <stdint.h>
#include <stdlib.h>

namespace vornengine {

void *zeroed(long long n, size_t size)
{
    if (n < 0 || size == 0) return NULL;
    if ((unsigned long long)n > SIZE_MAX / size) return NULL;
    return calloc(n > 0 ? (size_t)n : 1, size);
}

void *zeroed_square(long long n, size_t size)
{
    if (n < 0 || n > 3037000499LL) return NULL; // n * n stays below 2^63
    return zeroed(n * n, size);
}

} // namespace vornengine
