// Where a network of DynAdjust lies: a projection for it, and its stations in latitude, longitude and height, whatever
// they are written in. Needs projections.

#ifndef VORNHOST_DNA_PLACES_H
#define VORNHOST_DNA_PLACES_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/earth/reference.h"
#include "host/formats/dna.h"

namespace vornhost {

class DnaPlaces {
public:
    // geoid: a grid file, metres, or empty. Nothing, with a word in `fault`, where PROJ cannot do it.
    static std::optional<DnaPlaces> open(const DnaNetwork &network, const std::string &geoid, std::string *fault);

    // Keys of [crs] with their values.
    const std::vector<std::pair<std::string, std::string>> &keys() const { return crs_keys; }
    bool orthometric() const { return !crs.ellipsoidal; }

    // Latitude and longitude in degrees, height as the network counts it; nothing where the type has none of them or
    // the place has no undulation.
    std::optional<std::array<double, 3>> place(const DnaStation &station) const;

    // A height above the ellipsoid, at a place in degrees, as the network counts it.
    std::optional<double> from_ellipsoid(double latitude, double longitude, double height) const;

    // Height of the geoid at a place in degrees; 0 where none is known.
    std::optional<double> undulation(double latitude, double longitude) const;

    // North, east and the azimuth of the grid's north (radians) at a place in degrees.
    struct InGrid {
        double north = 0, east = 0, convergence = 0;
    };
    std::optional<InGrid> in_grid(double latitude, double longitude) const;

private:
    DnaPlaces(Crs settings, Reference opened) : crs(std::move(settings)), reference(std::move(opened)) {}

    Crs crs;
    Reference reference;
    std::vector<std::pair<std::string, std::string>> crs_keys;
};

// The geocentric system of a frame as PROJ knows it: "GDA2020" gives "EPSG:7842"; empty for others.
std::string geocentric_system(const std::string &frame);

} // namespace vornhost

#endif
