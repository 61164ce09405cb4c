// A network as an importer finds it in a foreign file: points with codes, observations of every table of the network
// file, set-ups, covariances, units, and notes on what was left out or assumed, each with its place. What is here can
// be written as a network file; whatever the file cannot say stands in the notes.

#ifndef VORNHOST_DRAFT_H
#define VORNHOST_DRAFT_H

#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/input/model.h"

namespace vornhost {

// In the order in which the components of a covariance matrix are counted.
enum class DraftKind {
    distance,
    horizontal_distance,
    height_difference,
    direction,
    vertical_angle,
    azimuth,
    bearing,
    angle,
    baseline,
    coordinates,
    coordinate_difference,
    scale_bar
};
constexpr size_t draft_kinds = 12;

using MaybeNumber = std::optional<double>;

// Words of [units]; empty: that of the network file.
struct DraftUnits {
    std::string length, angle; // of values
    std::string sigma_length, sigma_angle;
    bool dms = false; // angles are decimal degrees here and are written as degrees-minutes-seconds
};

struct DraftPoint {
    std::string name;
    std::array<MaybeNumber, 3> value;                                    // x, y, z
    std::array<int, 3> code = {{CODE_ABSENT, CODE_ABSENT, CODE_ABSENT}}; // CODE_... of project.h
    std::array<MaybeNumber, 3> sigma;                                    // of weighted coordinates
    bool station = false;                                                // an instrument stood there
    bool off = false;                                                    // left out with its observations
    Source where;
};

struct DraftRow {
    std::string at; // of angles
    std::string from, to;
    std::array<MaybeNumber, 3> value; // one, or x, y, z
    std::array<MaybeNumber, 3> sigma;
    std::array<MaybeNumber, 6> product; // of baselines: xx, yy, zz, xy, xz, yz in squared units of sigma
    MaybeNumber h1, h2;                 // heights of instrument and target
    MaybeNumber length;                 // of a levelling line
    std::string setup, set, id, covariance, transformation;
    std::string level; // of horizontal distances that were reduced: "ellipsoid", "geoid"
    bool use = true;
    Source where;
};

struct DraftSetup {
    std::string station, setup;
    MaybeNumber height, orientation;
    Source where;
};

// One value of a row.
struct DraftComponent {
    DraftKind kind;
    size_t row;
    int axis; // of the value
};

// A band of the upper triangle by rows: row i holds the elements i to min(i + width, n - 1), in squared units of sigma.
struct DraftCovariance {
    std::string name;
    std::vector<DraftComponent> components; // n, in the order of the foreign file
    size_t width = 0;
    std::vector<double> elements;
    Source where;
};

struct DraftNote {
    Source at;
    std::string text;
};

struct Draft {
    std::string file; // as the user named it
    std::string title;
    std::vector<std::string> description; // lines
    int dimension = 0;
    DraftUnits units;
    // Keys of [crs] with their values as TOML; empty: coordinates are plain numbers. With it x and y of points are
    // latitude and longitude in degrees, and observed coordinates are geocentric where `coordinates` is among the keys.
    std::vector<std::pair<std::string, std::string>> crs;
    struct Transformation {
        std::string name, system; // geocentric, as PROJ knows it
        MaybeNumber epoch;        // year
        Source where;
    };
    std::vector<Transformation> transformations;
    MaybeNumber azimuth_rotation;
    MaybeNumber sigma_per_root_km;                     // of height differences with a length and without a sigma
    std::vector<std::pair<std::string, double>> sigma; // further keys of [sigma]
    std::vector<DraftPoint> points;
    std::vector<DraftSetup> setups;
    std::array<std::vector<DraftRow>, draft_kinds> rows;
    std::vector<DraftCovariance> covariances;
    std::vector<DraftNote> notes;

    std::vector<DraftRow> &of(DraftKind kind) { return rows[(size_t)kind]; }
    const std::vector<DraftRow> &of(DraftKind kind) const { return rows[(size_t)kind]; }
};

} // namespace vornhost

#endif
