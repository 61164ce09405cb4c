// The tile kernels of the engine, under the names that the sparse factorization uses.

#include "adjust/kernels.h"

#include "numerics/tiles.h"

namespace vornadjust {

using namespace vornengine;

static_assert(LANES == TILE_LANES && COLUMNS == TILE_COLUMNS && STRIDE == TILE_STRIDE && DEPTH <= TILE_DEPTH,
              "shape of the tiles");
static_assert(DEPTH % LANES == 0, "products end with a strip");

Kernels best_kernels()
{
    const tilekernel *tiles = besttiles();
    return Kernels{tiles->product, tiles->corner};
}

} // namespace vornadjust
