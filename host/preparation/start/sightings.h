// What a network's observations say in the plan, for first coordinates: rays of circles, lengths and vectors between
// points, by index. Metres and radians.
//
// A circle is whatever shares one zero: a set-up (same index), the pair of sights of an angle, or north, the circle of
// azimuths and bearings, whose turn is 0 everywhere. A ray with the reading r lies along the bearing r + turn.
// Slope distances become horizontal by the vertical angle of the same sight, by known heights, or are taken as they
// are with a standard deviation that says so.

#ifndef VORNHOST_START_SIGHTINGS_H
#define VORNHOST_START_SIGHTINGS_H

#include <vector>

#include "adjust/model.h"

namespace vornhost::start {

// What is known of a coordinate before anything is computed.
enum class Known : unsigned char {
    wanted,
    given,
    nothing // the point has no such coordinate
};

// Which values of a model were given and are not to be computed.
struct Given {
    std::vector<Known> coordinate; // [3 points]
    std::vector<char> setup;       // [set-ups] orientations

    Known at(int point, int axis) const { return coordinate[3 * (size_t)point + (size_t)axis]; }
    bool plan(int point) const { return at(point, 0) == Known::given && at(point, 1) == Known::given; }
    bool height(int point) const { return at(point, 2) == Known::given; }
    bool wants_plan(int point) const { return at(point, 0) == Known::wanted || at(point, 1) == Known::wanted; }
};

// Indexes in lists of unequal length, one behind the other.
class Lists {
public:
    // `of` lists the owner of each item, -1 for none; items keep their order.
    void make(int owners, const std::vector<int> &of);
    const int *begin(int owner) const { return item.data() + first[(size_t)owner]; }
    const int *end(int owner) const { return item.data() + first[(size_t)owner + 1]; }
    int count(int owner) const { return first[(size_t)owner + 1] - first[(size_t)owner]; }

private:
    std::vector<int> first, item;
};

struct Ray {
    int circle, from, to;
    double reading, sigma;
    int observation;
    double slope; // tangent of the elevation of this sight, no number where none was observed
};

struct Length {
    int a, b;
    double value, sigma;
    int observation;

    int other(int end) const { return end == a ? b : a; }
};

struct Vector {
    int from, to;
    double x, y, sigma;
    int observation;
};

struct Sightings {
    int n_points = 0;
    int north = 0;                 // index of the last circle
    std::vector<int> circle_point; // [circles] where it stands; north: -1
    std::vector<Ray> rays;
    std::vector<Length> lengths;
    std::vector<Vector> vectors;
    Lists rays_of;                // of a circle
    Lists circles_at;             // of a point: set-ups and angles, without north
    Lists rays_to, rays_from;     // of a point
    Lists azimuths_from;          // of a point: rays of north; indexes of rays
    Lists lengths_at, vectors_at; // of a point: twice the index, and 1 more at the second end

    int n_circles() const { return (int)circle_point.size(); }
};

// `height` has a height for each point, no number where it is not known. Observations with a 1 in `left_out` take no
// part.
Sightings sightings_of(const vornadjust::Model &model, const std::vector<double> &height,
                       const std::vector<char> &left_out);

// Vertical angles by the ends of their sights.
class Elevations {
public:
    explicit Elevations(const vornadjust::Model &model, const std::vector<char> &left_out);
    // Index of an observation between these ends in either direction, -1 without one.
    int between(int from, int to) const;
    bool any() const { return !pairs.empty(); }

private:
    std::vector<std::pair<long long, int>> pairs; // sorted
};

// Standard deviation of a component of an observation.
double standard_deviation(const vornadjust::Model &model, const vornadjust::Observation &observation, int component);

} // namespace vornhost::start

#endif
