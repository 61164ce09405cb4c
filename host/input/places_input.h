// Coordinates of points as the tables have them, taken over into the grid and the heights of the network. Metres and
// radians.

#ifndef VORNHOST_PLACES_INPUT_H
#define VORNHOST_PLACES_INPUT_H

#include <optional>
#include <string>

#include "host/earth/reference.h"

namespace vornhost {

// Coordinates in the order of their columns: latitude and longitude, X and Y, or x (north) and y (east); then the
// height or Z. Afterwards x, y and the height of the network.
struct PointPlan {
    double first = 0, second = 0;
    bool has_third = false;
    double third = 0;
    double x[3] = {0, 0, 0};
};

class PlacesInput {
public:
    PlacesInput(Reference its_network, const Crs &its_crs) : network(std::move(its_network)), crs(its_crs) {}

    // The system of the stations or the targets; empty: the network's own.
    void set_table(bool station, const std::string &system, std::string *fault);

    // Whether coordinates of a table have to be converted; those in latitude and longitude always.
    bool converts(bool station, bool geographic) const;
    bool geographic(bool station) const; // a table is in latitude and longitude

    // Why a system is no geocentric one from which there is a way; nothing where it is one.
    std::string no_geocentric(const std::string &system) const;

    // Returns what is wrong, nothing when nothing is.
    std::string into_network(bool station, PointPlan &point) const;

private:
    const std::optional<Conversion> &of(bool station) const { return station ? stations : targets; }

    Reference network;
    const Crs &crs;
    std::optional<Conversion> stations, targets;
    bool other[2] = {false, false}; // targets, stations: of another system
};

} // namespace vornhost

#endif
