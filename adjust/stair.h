// Storage of a dense symmetric matrix that the tile kernels write to: its lower triangle in columns
// that begin with the strip of their diagonal, padded to whole strips.
//
// Columns LANES t to LANES t + LANES - 1 hold rows LANES t to the padded order.

#ifndef VORNADJUST_STAIR_H
#define VORNADJUST_STAIR_H

#include <cstddef>

#include "adjust/kernels.h"

namespace vornadjust {

// Numbers that an order takes.
inline std::size_t stair_size(int order)
{
    const std::size_t t = (std::size_t)strips_of(order);
    return t * (t + 1) / 2 * LANES * LANES;
}

// Distance of the columns of a strip of columns.
inline std::size_t stair_step(int order, int strip) { return (std::size_t)(strips_of(order) - strip) * LANES; }

// Element (LANES * strip, LANES * strip), the begin of a strip of columns.
inline std::size_t stair_begin(int order, int strip)
{
    const std::size_t t = (std::size_t)strip, all = (std::size_t)strips_of(order);
    return (t * all - t * (t - 1) / 2) * LANES * LANES;
}

// Column j, by rows from the begin of its strip on: element (i, j) is [i - j / LANES * LANES].
inline std::size_t stair_column(int order, int j)
{
    return stair_begin(order, j / LANES) + (std::size_t)(j % LANES) * stair_step(order, j / LANES);
}

} // namespace vornadjust

#endif
