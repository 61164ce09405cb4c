// A sight between two points of a grid: as it is in space, on the ellipsoid, and in the grid. Metres and radians.
//
// With the heights h1, h2 of its ends above the ellipsoid, its length d in space, and the radius R of the ellipsoid
// along it (Euler's, at its middle), the geodesic is
//   S0^2 = (d^2 - (h2 - h1)^2) / ((1 + h1 / R) (1 + h2 / R)),  S = 2 R asin(S0 / (2 R))
// (W. Torge, J. Mueller, Geodesy, 2012, section 6.2; exact on a sphere). What the ellipsoid adds to this is taken from
// the line between the present coordinates, whose chord and geodesic are both known. The length in the grid is S times
// that of the straight line in the grid by that of the geodesic, again between the present coordinates: the mean of the
// point scale along the line.

#ifndef VORNHOST_LINE_H
#define VORNHOST_LINE_H

#include <optional>

#include "host/earth/reference.h"

namespace vornhost {

// A point of a network: its grid coordinates, and where these lie.
struct EarthPoint {
    GridPlace grid;
    LatLon at;
    double height = 0;      // of the mark above the ellipsoid
    double convergence = 0; // of the grid's north
};

struct Line {
    double chord = 0;        // in space, between instrument and target
    double geodesic = 0;     // on the ellipsoid
    double straight = 0;     // in the grid
    double radius = 0;       // of the ellipsoid along the line
    double azimuth = 0;      // of the geodesic at its beginning
    double skew = 0;         // azimuth of the geodesic less that of the sight to the target at its height
    double arc_to_chord = 0; // of the projected geodesic at its beginning: its bearing less that of the straight line
    double h1 = 0, h2 = 0;   // of instrument and target above the ellipsoid
};

// Between instrument and target, h1 and h2 above the marks; nothing for ends in one place.
std::optional<Line> line_between(const Reference &reference, const EarthPoint &from, double h1, const EarthPoint &to,
                                 double h2);

// A distance that was observed along the line, on the ellipsoid and in the grid, and how much it grows by a metre of
// the observed one. Nothing where it is shorter than the difference of heights.
struct ReducedDistance {
    double geodesic = 0, straight = 0, slope = 1;
};

std::optional<ReducedDistance> reduced(const Line &line, double distance);

// The same for a local system: a plane at a level (metres above the sphere), with a scale.
std::optional<ReducedDistance> reduced_to_level(double distance, double h1, double h2, double level, double scale);

} // namespace vornhost

#endif
