// Measurements of DynAdjust other than GNSS as observations of a network on the ellipsoid.

#ifndef VORNHOST_DNA_TERRESTRIAL_H
#define VORNHOST_DNA_TERRESTRIAL_H

#include <array>
#include <string>
#include <unordered_map>

#include "host/formats/dna_places.h"
#include "host/formats/draft_builder.h"

namespace vornhost {

// The first two points of a measurement with its value, standard deviation and heights.
DraftRow row_of(const DnaMeasure &m);

class DnaTerrestrial {
public:
    // Latitude and longitude in degrees and height of the stations that have them.
    using Places = std::unordered_map<std::string, std::array<double, 3>>;

    DnaTerrestrial(DraftBuilder &its_builder, const DnaPlaces &where, const Places &of_stations)
        : builder(its_builder), earth(where), stations(of_stations)
    {
    }

    // Why a measurement is left out; empty where it was taken.
    std::string add(const DnaMeasure &m);

    // Latitudes and longitudes stand by themselves in the file and are one observation of a point here.
    void finish();

private:
    struct Parallel {
        const DnaMeasure *latitude = nullptr, *longitude = nullptr;
    };
    void add_set(const DnaMeasure &m);
    std::string add_height(const DnaMeasure &m);
    std::string add_parallel(const DnaMeasure &m);
    void add_place(const std::string &name, const Parallel &p);

    DraftBuilder &builder;
    const DnaPlaces &earth;
    const Places &stations;
    std::unordered_map<std::string, int> sets; // of directions, by station
    std::vector<std::string> order;            // of stations with latitudes or longitudes
    std::unordered_map<std::string, Parallel> parallels;
};

} // namespace vornhost

#endif
