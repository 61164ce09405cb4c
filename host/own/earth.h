// A network with a reference system: baselines in its axes, places on the ellipsoid, observations reduced into the
// grid.

#ifndef VORNHOST_EARTH_H
#define VORNHOST_EARTH_H

#include <string>
#include <vector>

#include "host/earth/reference.h"
#include "host/own/builder.h"

namespace vornhost {

// Where a point of the numbers lies by its present coordinates; its height is that above the ellipsoid.
std::optional<Place3> place_of(const Numbers &numbers, const Reference &reference, int point);

// Horizontal axes of the grid and up, near the middle of the points that are given; those of the earth where none is.
struct GridHorizon {
    vornadjust::Vec3<double> north{1, 0, 0}, east{0, 1, 0}, up{0, 0, 1};
    double scale = 1;                              // of the grid against the ellipsoid
    double undulation = 0;                         // metres
    vornadjust::Vec3<double> place{6378137, 0, 0}; // geocentric

    vornadjust::Vec3<double> seen(const double geocentric[3]) const
    {
        const vornadjust::Vec3<double> d{geocentric[0], geocentric[1], geocentric[2]};
        return {dot(north, d), dot(east, d), dot(up, d)};
    }
};

GridHorizon middle_horizon(const Builder &b);

// Baselines that stand in a system of their own at an epoch, by PROJ; the transformation in the middle counts for all.
void set_frames_of_baselines(Builder &b, const GridHorizon &middle);

// Distances of the plane as those of the grid near the middle, for first coordinates.
void reduce_roughly(Builder &b);

// The reference is null for a local system.
// In space: the sites of all points at their present coordinates, the model on the ellipsoid, baselines between the
// marks in geocentric axes. In the plane: readings as grid values at the present coordinates. Returns why not.
std::vector<std::string> set_on_earth(const Model &network, const Reference *reference, Numbers &numbers);

// The same again at adjusted coordinates: how far a value or a coordinate changed, metres (angles at a kilometre).
double set_again(const Model &network, const Reference *reference, Numbers &numbers);

} // namespace vornhost

#endif
