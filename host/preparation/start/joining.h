// How a local frame lies in the ground: by a shift, a turn, a scale and a reflection, as far as what they share tells
// it. Shared are points, and directions: circles with a turn in both, azimuths and vectors.

#ifndef VORNHOST_START_JOINING_H
#define VORNHOST_START_JOINING_H

#include <optional>
#include <vector>

#include "host/preparation/start/frame.h"

namespace vornhost::start {

// x' = a x - m b y + p, y' = b x + m a y + q with m = 1, or -1 for a mirror image.
struct Motion {
    double a = 1, b = 0, p = 0, q = 0;
    double mirror = 1;
    double agreed = 0;    // common points that it brings together
    bool guessed = false; // a mirror image would do as well

    void apply(double x, double y, double *to_x, double *to_y) const
    {
        *to_x = a * x - mirror * b * y + p;
        *to_y = b * x + mirror * a * y + q;
    }
};

// A point in two frames.
struct Common {
    double x, y, to_x, to_y;
};

double distance_after(const Motion &m, const Common &c);

// The motion on which most points agree within t, of those that two of them propose; rigid keeps lengths.
std::optional<Motion> motion_of_most(const std::vector<Common> &all, double t, bool rigid, double mirror);

// No value where too little is shared. Frames without circles may be mirror images; where both do as well, mirror_first
// takes the mirror image.
std::optional<Motion> find_motion(const Sightings &s, const Frame &local, const Frame &ground, bool mirror_first);

// Turns and scales a frame by azimuths, given turns and vectors inside it; true when it then has the axes of the
// network.
bool find_axes(const Sightings &s, Frame *frame, const std::vector<Turn> &given);

} // namespace vornhost::start

#endif
