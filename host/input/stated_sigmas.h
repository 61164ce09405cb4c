// Standard deviations as instruments state them, and what a reading needs before it is an observation.
//
//   distances            sigma = constant + ppm * length
//   height differences   sigma^2 = constant^2 + per_km^2 * length in kilometres + per_setup^2 * set-ups of the level
//
// In the file's units of standard deviations.

#ifndef VORNHOST_STATED_SIGMAS_H
#define VORNHOST_STATED_SIGMAS_H

#include "host/input/network_tables.h"

namespace vornhost {

// Columns of a table that say more of it than sigma; -1 where it has none.
struct StatedColumns {
    int ppm = -1;                 // distances
    int length = -1, setups = -1; // height differences
    int atmosphere = -1, prism = -1;
    int face = -1;
};

// The standard deviation of a row that gives none in its column sigma, 0 where nothing says it.
double usual_sigma(Network &net, Row &row, TableId id, const StatedColumns &columns, double metres);

// What the row adds to the standard deviation in its column sigma.
double added_sigma(Network &net, Row &row, const StatedColumns &columns, double metres);

// A distance in metres less the effects of atmosphere and prism that the row or the file states.
double reduced_distance(Network &net, Row &row, const StatedColumns &columns, double metres);

// Whether the row is a reading of the second face.
bool second_face(Row &row, const StatedColumns &columns);

// Length between two points by their coordinates in the tables, in metres; 1 where they are not known or the same.
double planned_distance(const Network &net, int from, int to);

} // namespace vornhost

#endif
