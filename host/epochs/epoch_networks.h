// The epochs of a network adjusted one by one, in one datum: what a comparison takes from their files.
//
// Held coordinates are set free, since it is the question which points hold still: each epoch is adjusted as the
// network that its observations alone make. The second and later epochs take the adjusted coordinates of the first as
// the first values, and thereby the datum, of the points that all have: what is left between them is small, however
// their files count. Metres.

#ifndef VORNHOST_EPOCH_NETWORKS_H
#define VORNHOST_EPOCH_NETWORKS_H

#include <array>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "adjust/congruence.h"
#include "host/input/model.h"
#include "host/run/run_watch.h"

namespace vornhost {

// Coordinates that a comparison takes, all epochs together: its matrices are full.
constexpr int most_compared = 3000;

struct EpochSettings {
    bool held = false;               // held coordinates stay held, and their points are not compared
    std::vector<std::string> points; // those to compare; empty: all that the epochs have in common
    std::vector<std::string> dates;  // one an epoch, instead of those in the files; or empty
};

struct EpochResult {
    std::string file, title, date;
    std::optional<double> day; // of the date
    std::string datum;         // what the observations leave open, one line
    double squares = 0;        // v^T P v
    int redundancy = 0;
};

struct ComparedPoint {
    std::string name;
    std::vector<int> axes;                  // those compared, ascending
    std::array<double, 3> first{{0, 0, 0}}; // adjusted coordinates of the first epoch
};

struct AdjustedEpochs {
    std::vector<std::string> words; // why there are none; the first sentence says what is wrong
    bool bad_input = false;         // it is the fault of the files, not of the networks
    bool stopped = false;           // by the watch
    std::vector<EpochResult> epochs;
    std::vector<ComparedPoint> points;
    std::vector<std::string> elsewhere;   // names of points that not all epochs have
    std::vector<std::string> notes;       // of the runs
    std::set<std::pair<int, int>> sights; // pairs of points with an observation between them in some epoch
    vornadjust::Epochs numbers;
};

// Adjusts the networks, which are used up. Each file is one epoch, in the order of time.
AdjustedEpochs adjust_epochs(std::vector<Model> &networks, const EpochSettings &settings, const RunWatch &watch = {});

// The free network on its control points, as two epochs: first the held coordinates of the file, with the cofactors of
// their standard deviations (0 of fixed ones), then the network that the observations alone make.
AdjustedEpochs adjust_to_control(Model &network, const RunWatch &watch = {});

} // namespace vornhost

#endif
