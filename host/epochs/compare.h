// Comparison of the epochs of a network: which points kept their places to one another, and how far the others moved.

#ifndef VORNHOST_COMPARE_H
#define VORNHOST_COMPARE_H

#include <array>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/epochs/epoch_networks.h"
#include "host/epochs/fisher.h"
#include "host/epochs/strain.h"
#include "host/results/results.h"

namespace vornhost {

struct CompareOptions {
    EpochSettings epochs;
    double level = usual_level;                   // of each test
    bool apriori = false;                         // the variance factor is 1 instead of that of the epochs
    std::vector<std::vector<std::string>> groups; // of points whose strain is wanted
};

// How far a point moved since the first epoch, against the points that stayed.
struct Shift {
    std::optional<double> by[3], deviation[3]; // metres
    std::optional<EllipseResult> ellipse;      // of confidence 1 - level, in the plane of x and y
    FisherTest test;                           // that it did not move
};

// Steady motion of a point through all epochs, metres a year.
struct Velocity {
    std::optional<double> by[3], deviation[3];
    FisherTest moving; // that it is zero
    FisherTest steady; // that the point kept to it; not made of two epochs
};

struct PointComparison {
    std::string name;
    std::optional<double> place[3]; // compared coordinates in the first epoch, metres
    bool stable = false;
    std::vector<Shift> shifts; // one for each epoch behind the first
    std::optional<Velocity> velocity;
};

// A point that was left out of those that stayed, and the test with it.
struct Departure {
    std::string point;
    FisherTest before;
};

struct GroupStrain {
    std::vector<std::string> points;
    std::vector<Strain> epochs; // one for each behind the first
};

struct Comparison {
    std::vector<std::string> words; // why there is none
    bool bad_input = false, stopped = false;
    bool control = false; // the epochs are given control points and the free network
    FileUnits units;      // of the first file
    int dimension = 0;
    double level = usual_level;
    bool apriori = false;
    std::vector<EpochResult> epochs;
    VarianceFactor factor;         // of all epochs together, or 1
    FisherTest variances;          // that the largest and the smallest of the epochs are the same
    std::string larger, smaller;   // files of these
    int coordinates = 0, open = 0; // compared; motions that some epoch leaves open
    FisherTest congruence;         // of all points
    std::vector<Departure> departures;
    std::vector<std::string> taken_again; // departures that fit the others after all: they count as stable
    FisherTest stable;                    // of those that stayed
    bool stable_found = true;             // false: no group of points passed; shifts are then against all of them
    std::vector<PointComparison> points;
    std::set<std::pair<int, int>> sights; // pairs of points with an observation between them in some epoch
    std::vector<GroupStrain> strains;
    std::vector<std::string> elsewhere, notes;

    bool made() const { return words.empty() && !stopped; }
};

Comparison compare(std::vector<Model> &networks, const CompareOptions &options, const RunWatch &watch = {});

// Which control points (fixed or weighted coordinates) do not fit the free network and one another. Of the options
// level and variance factor count.
Comparison compare_with_control(Model &network, const CompareOptions &options, const RunWatch &watch = {});

} // namespace vornhost

#endif
