// The network of a file as numbers for the program's own adjustment: metres and radians, less an origin (that
// of the file, or one nearby where none matters), and for each number the record that it came from.

#ifndef VORNHOST_NUMBERS_H
#define VORNHOST_NUMBERS_H

#include <array>
#include <map>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "adjust/model.h"
#include "adjust/ranks.h"
#include "host/input/model.h"
#include "host/own/round_cuts.h"
#include "host/run/accounts.h"

namespace vornhost {

enum class Item {
    distance,
    height_difference,
    direction,
    vertical_angle,
    azimuth,
    baseline,
    horizontal_distance,
    bearing,
    angle,
    scale_bar,
    observed_coordinate,
    observed_point, // geocentric, of the table of observed coordinates
    coordinate_difference,
    image_point,
    weighted_coordinate,
    weighted_rotation,
    weighted_constant,
    weighted_deflection,
    weighted_parameter, // of a transformation
    imported_coordinate,
    centring
};

// What an observation was made of.
struct ItemPlace {
    Item item;
    int record = 0; // of its table; stations, then targets, for weighted and imported coordinates; set-up of the
                    // numbers for weighted rotations, motion of the numbers for centring
    int part = 0;   // axis, rotation or constant of items that are such; line in the file of an image point
};

struct PointPlace {
    bool station = false;
    int record = 0; // in the table of stations or targets
};

struct SetupPlace {
    int station = 0; // record
    int named = -1;  // in the table of set-ups
    int set = -1;    // of the file, where it has a zero of its own
    bool orientation_given = false;
};

// A lump at an epoch; or, with lump 0, how an instrument (no target) or a target seen from there stands beside its
// mark.
struct MotionPlace {
    int lump = 0, epoch = 0, reference = 0;
    int instrument = -1, target = -1; // points
    int transformation = -1;          // record; then it is no lump
};

// What the reduction into the grid added to an observation, metres or radians.
struct GridReduction {
    double ellipsoid = 0; // of a distance between the marks to the geodesic, of a direction at the height of the target
                          // to that of the geodesic
    double projection = 0;   // of the geodesic to the straight line in the grid
    double arc_to_chord = 0; // of directions and azimuths
    double convergence = 0;  // of azimuths
};

struct Numbers {
    vornadjust::Model model;
    std::vector<PointPlace> points;           // [points]
    std::vector<ItemPlace> items;             // [observations]
    std::vector<SetupPlace> setups;           // [set-ups]
    std::vector<int> constant_groups;         // [constants] record of the group
    std::vector<int> camera_records;          // [cameras]
    std::vector<MotionPlace> motions;         // [motions]
    double origin[3] = {0, 0, 0};             // metres; coordinates of the file are those of the model and this
    std::vector<int> covariances;             // [groups] of the file's, -1
    std::unordered_set<int> absent;           // coordinates that a point has not, though the dimension does
    std::map<int, std::array<double, 3>> raw; // by observation: baselines between antennas, metres
    // By observation: baselines and observed points as PROJ takes them into the network's system, metres.
    std::map<int, std::array<double, 3>> framed;
    std::vector<int> deflections;                      // [deflections] record of each
    std::unordered_map<int, GridReduction> reductions; // by observation, in the plane of a grid
    std::vector<std::pair<int, double>> uncentred; // observations with their sigma without centring, metres or radians
    std::vector<DoubtfulZero> doubtful;            // directions
    Reasons left_out;                              // rows that the file selects and that take no part
    std::vector<std::string> notes;                // one line each
    std::vector<std::string> words;                // why there are none, for the user; empty when there are
};

// What a point or observation is called: "P", its table and place.
const char *point_name(const Model &network, const PointPlace &point);
Source point_source(const Model &network, const PointPlace &point);

class Reference;

// Coordinates must be there (first_coordinates). Where ranks have read the network by parts, the numbers have the
// observations of the own part and the unknowns of all. Observations that cannot take part (a point that is off, an
// image of too few points) are deselected in the network.
Numbers make_numbers(Model &network, const Reference *reference = nullptr, vornadjust::Ranks *ranks = nullptr);

// First orientations of set-ups whose station gives none: the circular mean of what its directions give.
void orient_setups(Numbers &numbers);

} // namespace vornhost

#endif
