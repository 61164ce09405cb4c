// What a network file says of its reference system.

#ifndef VORNHOST_CRS_H
#define VORNHOST_CRS_H

#include <optional>
#include <string>

namespace vornhost {

// Height of the geoid above the ellipsoid, metres.
struct Geoid {
    enum class Form { none, constant, plane, grid };

    Form form = Form::none;
    double undulation = 0;              // constant; of a plane at its place
    double latitude = 0, longitude = 0; // radians, place of a plane
    double north = 0, east = 0;         // slopes of a plane, metres per metre
    std::string file;                   // of a grid
};

struct Crs {
    std::string network;           // "EPSG:25832", or "local"; empty: coordinates are plain numbers
    std::string stations, targets; // of these tables, where it is another one
    std::string coordinates;       // geocentric, of observed coordinates; empty: they are the grid's
    bool ellipsoidal = false;      // heights count from the ellipsoid, not from the geoid
    Geoid geoid;
    std::optional<double> height; // metres, of points in the plane that have none; of the level of a local system
    double scale = 1;             // of a local system
    std::optional<double> epoch;  // of the coordinates, year

    bool given() const { return !network.empty(); }
    bool local() const { return network == "local"; }
};

} // namespace vornhost

#endif
