// The bytes are a file of image coordinates. It belongs to one of two images of a small
// network, which is adjusted with what can be read of it.

#include "scratch.h"

using namespace vornhost;

static const char network[] = R"([run]
dimension = 3
iterations = 4

[tables]
cameras = """
name  width  height  pu  pv  c     code_c  code_x0  code_y0  code_k1
cam   6000   4000    1   1   5800  free    fixed    free     free
"""
images = """
file       station  camera
image.txt  C1       cam
known.txt  C4       cam
"""
stations = """
name  x      y      z      rx1    rx2   rx3    levelled
C1    -9.00  -4.89  22.42  -14.1  22.8  1.1    no
C4    -9.59  5.05   22.39  14.5   21.0  202.6  no
"""
targets = """
name  x        y       z      code
P01   -10.919  -5.929  1.110  fixed
P03   -11.4    0.4     0.6    free
P05   -9.962   5.962   1.917  fixed
P06   -8.3     -5.8    2.6    free
P08   -8.2     0.2     2.0    free
P10   -7.7     6.4     2.6    free
P12   -4.1     -3.0    2.8    free
P15   -4.4     5.5     1.6    free
P18   -0.814   0.570   2.973  fixed
"""
)";

static const char known[] = "P01      584.44 351.18\n"
                            "P03      390.60 2075.12\n"
                            "P05      737.48 3675.41\n"
                            "P06      1403.17 273.50\n"
                            "P08      1313.91 2000.19\n"
                            "P10      1530.53 3770.77\n"
                            "P12      2523.05 1038.33\n"
                            "P15      2431.97 3497.58\n"
                            "P18      3408.91 2024.60\n";

static void write_networks()
{
    enter_scratch();
    write_bytes("net.inp", (const uint8_t *)network, sizeof network - 1);
    write_bytes("known.txt", (const uint8_t *)known, sizeof known - 1);
}

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const int ready = (write_networks(), 1);
    (void)ready;
    write_bytes("image.txt", data, size);
    adjust_file("net.inp", (Solver)(size % 3));
    return 0;
}
