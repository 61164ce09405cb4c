// Closures of a network before it is adjusted: sums of observations around loops, or between known points, that would
// be zero without errors. Metres and radians.
//
// The limit of a closure of one component is 3 standard deviations by the sigmas and covariances of its observations;
// of 2 or 3 components it is the length that a misclosure w in its direction passes with the same probability of
// 0.27 %: |w| sqrt(chi^2 limit / (w' C^-1 w)).

#ifndef VORNHOST_CLOSURES_H
#define VORNHOST_CLOSURES_H

#include <cstddef>
#include <vector>

#include "adjust/model.h"

namespace vornhost::closures {

enum class ClosureKind {
    levelling, // height differences
    heights,   // those of vertical angles and distances too
    baselines, // baselines and differences of coordinates
    horizon,   // directions and angles at one station
    angles,    // directions, angles, azimuths and bearings of several stations
    traverse   // horizontal distances with the angles between them
};

constexpr double probability = 0.9973; // with which a closure without gross errors stays within its limit
constexpr size_t most_listed = 20;     // of a kind

struct Closure {
    int at = -1;                   // station of a horizon
    std::vector<int> points;       // in order; a loop ends at its first point, a line between known points does not
    std::vector<int> observations; // that it was made of
    int components = 1;
    double off[3] = {0, 0, 0}; // of the components; of a horizon or angles the first
    double misclosure = 0;     // off of one component, the length of more
    double limit = 0;
    double length = 0; // metres, of traverses and baselines

    double ratio() const;
};

// The closures of one kind.
struct Closures {
    ClosureKind kind = ClosureKind::levelling;
    size_t found = 0, beyond = 0; // beyond their limit
    size_t missed = 0;            // loops too long to be looked for
    std::vector<Closure> worst;   // the worst first

    // Whether a closure of this ratio to its limit would be listed.
    bool wants(double ratio) const;
    void count(double ratio);
    void list(Closure closure);
};

// Of the kinds that the network has, in their order. `placed`: all points have first coordinates; those that are not
// fixed serve only to make slope distances horizontal where no vertical angle was observed.
std::vector<Closures> find_closures(const vornadjust::Model &model, bool placed);

} // namespace vornhost::closures

#endif
