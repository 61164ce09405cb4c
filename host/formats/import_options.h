// What the user says of a foreign file beside its name.

#ifndef VORNHOST_IMPORT_OPTIONS_H
#define VORNHOST_IMPORT_OPTIONS_H

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/formats/recognise.h"

namespace vornhost {

struct ImportOptions {
    ImportOptions() = default;
    ImportOptions(std::nullopt_t) {}
    ImportOptions(std::optional<Format> its_format) : format(its_format) {}

    std::optional<Format> format;
    bool keep_sets = false; // of field books: every set, not the mean of them
    std::map<std::string, double>
        sigma;           // where the file gives none: keys of [sigma]; millimetres, mgon or arc seconds, ppm
    std::string station; // of field books: of sights before any set-up
    std::vector<std::string> station_codes = {"2", "21"}; // of GSI: codes of blocks that open a set-up
    std::string points;                                   // file with coordinates of points
    std::vector<std::string> fixed;                       // names of points that are held
    std::vector<std::string> datum;                       // names of points that alone hold a free network
    std::string geoid; // of DynAdjust: a grid file that PROJ reads, or metres above the ellipsoid

    bool given = false; // whether the user named any of them
};

// Keys that the option of standard deviations takes.
const std::vector<std::string> &sigma_keys();

} // namespace vornhost

#endif
