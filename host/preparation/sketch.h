// First positions by plain geometry: what a surveyor would compute by hand before the
// adjustment.
//
// Stations with a position are oriented on the points that they sight; points are placed by
// direction and distance, by a baseline, where the rays of two stations meet, or by three
// distances; heights follow height differences, vertical angles and baselines. Lengths in metres,
// angles in radians; a direction reading r of an oriented station lies along the plane angle r + turn.

#ifndef VORNHOST_SKETCH_H
#define VORNHOST_SKETCH_H

#include <string>
#include <unordered_map>
#include <vector>

#include "host/input/model.h"

namespace vornhost {

struct SketchPoint {
    double x[3] = {0, 0, 0};
    bool placed = false;   // x and y are known
    bool levelled = false; // z is known
    bool station = false;
    double turn = 0;
    bool oriented = false;
};

class Sketch {
public:
    // Points in use, stations first, with what the model gives of each; its observations in use.
    explicit Sketch(const Model &model);

    // Places and orients all that follows from what is known.
    void carry();

    // Gives every point a height: carried from those that are known, else their mean.
    void carry_heights();

    // Elevation of one point seen from another, 0 when no vertical angle was observed.
    double elevation(int from, int to) const;

    // Index of a point by the name in its record, -1 without one.
    int find(const char *name) const;

    std::vector<SketchPoint> points;

    // The station with the most points in direction and distance; -1 without any.
    int best_centre() const;

    // A point at which a baseline begins; -1 without any.
    int baseline_start() const { return vectors.empty() ? -1 : vectors[0].from; }

private:
    struct Shot {
        int from, to;
        double reading;
    };
    struct Step {
        int from, to;
        double offset; // height of to above from
        double rise;   // added for each metre of horizontal distance
    };

    struct Vector {
        int from, to;
        double d[2];
    };

    template <class Record> void add_points(const List<Record> &list, bool stations);
    void take_orientations(const Model &model);
    void add_observations(const Model &model);
    void add_steps(const Model &model);
    void add_lengths(const Model &model);
    void add_vectors(const Model &model);
    bool ends(const measure_input &m, int *from, int *to) const;

    void climb(const Step &step);
    bool orient();
    bool place_by_distance();
    bool place_by_vectors();
    bool place_by_rays();
    bool place_by_lengths();
    bool trilaterate(size_t i);
    bool meet(const Shot &a, const Shot &b, double x[2], double *sine) const;
    double bearing(int from, int to) const;

    std::unordered_map<std::string, int> index;
    std::vector<Shot> shots;
    std::vector<Vector> vectors;
    std::vector<std::vector<int>> rays;                        // shots to each point
    std::vector<std::vector<int>> measured;                    // points at the other end of the lengths of each point
    std::vector<Step> steps;                                   // height differences, vertical angles, baselines
    std::unordered_map<long long, double> lengths, elevations; // of a pair of points, by key
};

} // namespace vornhost

#endif
