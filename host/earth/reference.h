// The reference system of a network, by the PROJ library: grid, geographic coordinates, geoid, geodesics.
//
// Metres and radians; north and east are the grid coordinates x and y of a network. Every object has a context of its
// own and takes part in one thread at a time; several may work in several threads. Nothing is printed, and nothing is
// fetched from a network. Without the library open() gives nothing, and says so.

#ifndef VORNHOST_REFERENCE_H
#define VORNHOST_REFERENCE_H

#include <memory>
#include <optional>
#include <string>

#include "adjust/frames.h"
#include "host/earth/crs.h"

namespace vornhost {

struct GridPlace {
    double north = 0, east = 0;
};

struct LatLon {
    double latitude = 0, longitude = 0;
};

// Height with its place.
struct Place3 {
    LatLon at;
    double height = 0; // above the ellipsoid
};

// The shortest line on the ellipsoid.
struct Geodesic {
    double length = 0;
    double azimuth = 0; // at its beginning, from north to east
};

// How the grid lies at a place.
struct GridAxes {
    double convergence = 0; // of the grid's north, from north to east, as an azimuth
    // Change of latitude and longitude by a metre of north and of east.
    double latitude[2] = {0, 0}, longitude[2] = {0, 0};
};

// Whether PROJ is at hand: the program was built with it and finds the library.
bool has_proj();

class Reference {
public:
    // The system of a network. Nothing, with the reason in `fault`, for what PROJ does not know, for what is no
    // projected system with axes to north and east, and without PROJ.
    static std::optional<Reference> open(const Crs &crs, std::string *fault);

    Reference(Reference &&) noexcept;
    Reference &operator=(Reference &&) noexcept;
    ~Reference();

    const std::string &name() const; // "ETRS89 / UTM zone 32N"
    const vornadjust::Ellipsoid &ellipsoid() const;

    // Nothing outside the domain of the projection.
    std::optional<LatLon> geographic(GridPlace p) const;
    std::optional<GridPlace> grid(LatLon g) const;

    // 0 with ellipsoidal heights; nothing outside a grid.
    std::optional<double> undulation(LatLon g) const;

    std::optional<GridAxes> axes(LatLon g) const;
    Geodesic geodesic(LatLon from, LatLon to) const;

    // Longitude and latitude for maps, in WGS 84; nothing where PROJ has no way there.
    std::optional<LatLon> on_map(LatLon g) const;

private:
    struct Parts;
    explicit Reference(std::unique_ptr<Parts> its_parts);
    std::unique_ptr<Parts> parts;
    friend class Conversion;
};

// From another system to the geographic coordinates of a network's.
class Conversion {
public:
    // Of coordinates in the system of that name; empty: geographic ones in the network's own. Their epoch is a year, 0
    // that of the network.
    static std::optional<Conversion> open(const Reference &network, const std::string &from, std::string *fault,
                                          double epoch = 0);

    Conversion(Conversion &&) noexcept;
    Conversion &operator=(Conversion &&) noexcept;
    ~Conversion();

    bool geographic() const; // it takes longitude and latitude
    bool geocentric() const; // it takes X, Y, Z

    // Of longitude and latitude in radians with a height above the ellipsoid, of X, Y, Z, or of east, north, height.
    // Nothing where PROJ has no way.
    std::optional<Place3> operator()(double first, double second, double third) const;

private:
    struct Parts;
    explicit Conversion(std::unique_ptr<Parts> its_parts);
    std::unique_ptr<Parts> parts;
};

} // namespace vornhost

#endif
