// Adjusts a network file and prints the coordinates with their standard deviations: adjust NETWORK.inp

#include <cstdio>

#include "vorn/network.h"

static int tell(const std::vector<vornapi::Fault> &faults)
{
    for (const vornapi::Fault &fault : faults) std::fprintf(stderr, "%s\n", fault.text().c_str());
    return 1;
}

int main(int argc, char **argv)
{
    if (argc != 2) return 2;
    const vornapi::Reading reading = vornapi::read_file(argv[1]);
    if (!reading.network) return tell(reading.faults);
    const vornapi::Result result = reading.network->adjust();
    if (!result.adjusted()) return tell(result.faults);
    for (const vornapi::Point &p : result.points) {
        std::printf("%-8s", p.name.c_str());
        for (int k = 0; k < result.dimension; k++)
            std::printf("%12.5f %7.5f", p.adjusted[k].value_or(0), p.deviation[k].value_or(0));
        std::printf("\n");
    }
    return 0;
}
