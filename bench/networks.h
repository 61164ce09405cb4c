// Networks made up for the benchmarks and the generator, with known true geometry.
//
//   levelling  heights: points in a grid of about 1 km, height differences along its lines,
//              which close loops; the first and the last point are bench marks
//   chain      heights: points in a line of levelling between two bench marks, with a line that
//              passes over ten points from every tenth on
//   plane      plane positions: stations in a grid of about 200 m and a target in each cell;
//              every station takes directions to all points around it and distances to the
//              near ones, about 20 observations a station; the first and the last station are fixed
//   hall       positions in space: 4 stations in a hall of 60 m x 30 m x 12 m take directions,
//              zenith angles and distances to all targets on its walls; the 4 targets in the
//              corners are fixed
//
// The same recipe gives the same network on every machine. Observations are truth plus
// noise; coordinates of free points are truth plus a few centimetres. All values lie on the
// grid of the printed digits (1e-6 m, 1e-7 gon), so that a network read from its file equals the one
// in memory. Lengths in metres, angles in gon, zenith angles.

#ifndef BENCH_NETWORKS_H
#define BENCH_NETWORKS_H

#include <stdint.h>
#include <stdio.h>

#include <array>
#include <string>
#include <vector>

#include "vorn/project.h"

namespace networks {

const int smallest = 4;      // points or stations of the smallest network
const int largest = 1000000; // names of points have 8 characters

struct Recipe {
    int size = smallest; // points of levelling and chain, stations of plane, targets of hall
    uint64_t seed = 1;
    double noise = 1.0;    // factor on the standard deviations; 0 gives true observations
    bool shuffled = false; // targets in random order; observations and names stay
};

using Position = std::array<double, 3>;

struct Network {
    std::string title;
    int dimension = 0;
    std::vector<station_input> stations;
    std::vector<target_input> targets;
    std::vector<measure_input> distances, heightdiffs, directions, verticals;
    std::vector<Position> station_truth, target_truth; // one a station, one a target

    size_t points() const { return stations.size() + targets.size(); }
    size_t observations() const { return distances.size() + heightdiffs.size() + directions.size() + verticals.size(); }

    // A run without statistics over the records of this network, which the project points to.
    project run(FILE *report, Feedback *feedback);
};

Network levelling(const Recipe &recipe);
Network chain(const Recipe &recipe);
Network plane(const Recipe &recipe);
Network hall(const Recipe &recipe);

// Prints the network file: settings and tables. Write errors are left in out.
void write_file(FILE *out, const Network &network);

// Prints the true coordinates: a heading, then name, x, y, z with commas.
void write_truth(FILE *out, const Network &network);

} // namespace networks

#endif
