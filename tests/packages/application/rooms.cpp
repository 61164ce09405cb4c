// Reads a network with the reader of the host library and says how many distances it has.

#include <stdio.h>
#include <vorn/version.h>

#include "adjust/adjustment.h"
#include "host/input/network_file.h"

int main(int argc, char **argv)
{
    vornhost::Model model;
    vornhost::Faults faults;
    if (argc != 2 || !vornhost::read_network(argv[1], model, faults)) return 2;
    printf("vorn %s: %d distances, %d points\n", VORN_VERSION, (int)model.distances.size(), (int)model.targets.size());
    return vornadjust::Outcome().status == vornadjust::Status::adjusted ? 0 : 1;
}
