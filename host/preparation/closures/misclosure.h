// Sums of observed components around a loop with their covariance, and the limit that this sets.

#ifndef VORNHOST_CLOSURES_MISCLOSURE_H
#define VORNHOST_CLOSURES_MISCLOSURE_H

#include <vector>

#include "adjust/model.h"
#include "host/preparation/closures/closures.h"
#include "host/preparation/closures/loops.h"

namespace vornhost::closures {

// A sum of 1 to 3 components and its covariance, by rows.
struct Sum {
    int n = 1;
    double w[3] = {0, 0, 0};
    double c[3][3] = {};
};

// What a component of an observation does to a sum.
struct Part {
    int observation, component;
    double by[3]; // derivative of each component of the sum
};

// Covariance of a sum of these parts, which are sorted.
void add_covariances(const vornadjust::Model &model, std::vector<Part> *parts, Sum *sum);

// Length of w, signed where it has one component, and the largest that its covariance allows in its direction. False
// where the covariance is not positive definite.
bool judge(const Sum &sum, double *misclosure, double *limit);

// What stands between two nodes: node b is node a and the value.
struct Leg {
    double value[3] = {0, 0, 0};
    int observation[3] = {-1, -1, -1}; // of each component; -1: known
    int component[3] = {0, 0, 0};      // of the observation
    int station = -1;                  // where an angle or direction was read
    int second = -1;                   // of a height by a distance (above) and a vertical angle: the latter
    double by[2] = {1, 1};             // derivatives of the first component by these two
};

// A graph of legs of n components; values of angles count up to full circles.
struct LegGraph {
    int n = 1, nodes = 0;
    int known = -1; // the node of what is known
    bool circular = false;
    std::vector<Link> links;
    std::vector<Leg> legs; // [links]

    void add(int a, int b, const Leg &leg)
    {
        links.push_back({a, b});
        legs.push_back(leg);
    }
    Sum sum(const vornadjust::Model &model, const Loop &loop, std::vector<Part> *work) const;
    std::vector<int> observations(const Loop &loop) const;
};

} // namespace vornhost::closures

#endif
