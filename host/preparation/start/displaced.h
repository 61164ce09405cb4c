// Given coordinates against the network that the sights make without them: single points that lie elsewhere, and all of
// them as a mirror image (exchanged axes) or on another scale (another unit). Metres.

#ifndef VORNHOST_START_DISPLACED_H
#define VORNHOST_START_DISPLACED_H

#include <vector>

#include "host/preparation/start/sightings.h"
#include "host/preparation/start/trial.h"

namespace vornhost::start {

// A network without what is given in the plan of some points.
struct Loosened {
    vornadjust::Model model;
    Given given;
};

Loosened loosen(const vornadjust::Model &model, const Given &given, const std::vector<int> &points);

// Points whose plan is given.
std::vector<int> given_points(const vornadjust::Model &model, const Given &given);

// What the given coordinates are, as the sights see them.
struct Comparison {
    bool mirrored = false;      // they fit as a mirror image only
    double scale = 1;           // of their lengths to observed ones, where they fit with it only
    std::vector<int> displaced; // otherwise: points that do not fit, where most of the others do
};

// `loose` has the points where the sights alone put them, `sight` is the length of a typical one. Points that are held
// decide where there are two of them; approximate ones may be off by half a sight.
Comparison compare_given(const vornadjust::Model &model, const std::vector<int> &points, const Trial &loose,
                         double sight);

} // namespace vornhost::start

#endif
