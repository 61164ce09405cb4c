// The bytes are the file of a connected net, from which a small network takes three points.

#include "scratch.h"

using namespace vornhost;

static const char network[] = R"([run]
dimension = 2
iterations = 4

[connected_net]
file = "import.con"

[tables]
stations = """
name  y         x         code
41    6340.200  1759.700  free
42    6520.300  1540.100  free
"""
targets = """
name  y         x         code   connect
31    5710.300  1984.800  free   import
32    6019.700  1735.100  free   import
33    5890.100  1380.500  free   import
51    6610.300  1984.600  free   export
52    6790.200  1310.300  free   export
"""
directions = """
from  to  value     sigma
41    42  287.9470  0.0008
41    31  53.4382   0.0008
41    32  26.6369   0.0008
41    33  386.9561  0.0008
41    51  187.3715  0.0008
42    31  322.2811  0.0008
42    32  313.9729  0.0008
42    52  135.2174  0.0008
"""
distances = """
from  to  value    sigma
41    42  284.253  0.003
41    31  668.975  0.003
41    51  351.460  0.003
42    33  649.992  0.003
42    52  354.685  0.003
"""
)";

static void write_network()
{
    enter_scratch();
    write_bytes("net.inp", (const uint8_t *)network, sizeof network - 1);
}

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const int ready = (write_network(), 1);
    (void)ready;
    write_bytes("import.con", data, size);
    adjust_file("net.inp", (Solver)(size % 3));
    return 0;
}
