// A frame of the plan that grows: which points have a place in it, and which circles a turn. The ground is the frame
// of the network itself; a local frame begins anywhere, with a turn, and without lengths a scale, of its own.

#ifndef VORNHOST_START_FRAME_H
#define VORNHOST_START_FRAME_H

#include <vector>

#include "host/preparation/start/sightings.h"

namespace vornhost::start {

struct Place {
    double x = 0, y = 0;
    double sigma = 0; // standard deviation of both, as far as the growth tells
    bool known = false;
};

struct Turn {
    double value = 0, sigma = 0;
    int votes = 0; // rays that agree
    bool known = false;
    bool given = false; // not to be voted on
};

struct Frame {
    explicit Frame(const Sightings &s) : places((size_t)s.n_points), turns((size_t)s.n_circles()) {}

    std::vector<Place> places; // [points]
    std::vector<Turn> turns;   // [circles]
    std::vector<int> members;  // points with a place, in the order in which they got it
    bool scaled = true;        // lengths are true
    bool true_axes = false;    // its axes are those of the network

    void put(int point, double x, double y, double sigma)
    {
        places[(size_t)point] = {x, y, sigma, true};
        members.push_back(point);
    }
};

} // namespace vornhost::start

#endif
