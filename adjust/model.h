// A network as numbers: unknowns in one flat array, and what was observed of them.
//
// Unknowns (metres, radians; factors without unit). Coordinate k of point p is unknown 3 p + k, all points first. Then
// come blocks in any order, each named by its first unknown:
//   Setup      3 angles rx1, rx2, rx3 of an instrument that stands on a point
//   Constants  3: additive constant (metres), scale, coefficient of refraction of an instrument group
//   Camera    10: c, x0, y0, a, b, k1, k2, k3, p1, p2
//   Motion     7: tx, ty, tz, rx, ry, rz, scale of a group of points at an epoch other than its reference
// Example, 2 points, 1 set-up: 6 coordinates 0..5, angles 6..8.
//
// Every parameter that exists has an unknown, a held one too; its code says what becomes of it. A weighted unknown is
// `free` and has an observation of kind `unknown`. Nothing here knows names, files or units; indexes are the host's
// too.

#ifndef VORNADJUST_MODEL_H
#define VORNADJUST_MODEL_H

#include <cstddef>
#include <vector>

#include "adjust/frames.h"

namespace vornadjust {

enum class Code : unsigned char {
    absent, // not part of the network; its value may still stand in formulas (a height of 0 in the plane)
    fixed,  // keeps its value, and ties the network to it
    free,   // estimated
    datum   // estimated; part of the datum where motions are open (coordinates only)
};

enum class Meaning : unsigned char { coordinate, angle, additive, scale, refraction, camera, motion };

struct Setup {
    int point;
    int first;     // rx1, rx2, rx3; a horizontal direction is bearing + rx3 where rx1 = rx2 = 0
    bool levelled; // upright on the vertical at its point; otherwise its angles count from the axes of the network
};

struct Constants {
    int first; // additive, scale, refraction
};

struct Camera {
    int first;     // c, x0, y0 in the unit of the pixel size; a, b, k1, k2, k3, p1, p2
    double pu, pv; // size of a pixel
    double cu, cv; // centre of the image, pixels
};

struct Motion {
    int first; // tx, ty, tz, rx, ry, rz, scale: position = scale R(rx, ry, rz) (plain position) + t
};

enum class Kind : unsigned char {
    slope_distance,      // straight line from instrument (h1 above from) to target (h2 above to)
    plane_distance,      // horizontal length between the marks; in the plane the length of the coordinate difference
    level_distance,      // slope distance over plane coordinates that lie on the level of the origin (plane, with held
                         // heights)
    horizontal_distance, // plane_distance in every space, as a kind of its own
    scale_bar,           // straight line between the marks, in the plane that of the first two coordinates
    height_difference,   // of target over instrument, along the verticals
    direction,           // horizontal circle of a set-up
    angle,               // horizontal angle at from, from `to` to `third`: direction(third) - direction(to)
    vertical_angle,      // elevation above the horizon of a set-up
    azimuth,             // of the line between the marks
    bearing,             // of the first two coordinates, from the first axis towards the second
    baseline,   // to - from in the axes of the network: 3 components, in the plane 2, of heights the third alone
    difference, // of one coordinate, to - from, as it is an unknown
    image,      // 2 components u, v, pixels
    unknown     // an unknown itself: weighted or imported coordinates, angles, constants
};

constexpr int n_kinds = static_cast<int>(Kind::unknown) + 1;

// Number of components (rows) of a kind.
int components(Kind kind, Space space);

// -1 for what an observation does not have.
struct Observation {
    Kind kind = Kind::slope_distance;
    bool use = true;        // false: as if it were not there
    unsigned char axis = 0; // kind difference only: which coordinate
    int from = -1, to = -1; // points
    int third = -1;         // point, kind angle only
    int setup = -1;         // direction, vertical_angle, image: the set-up on `from`; angle: -1 or a tilted set-up
    int constants = -1;     // additive and scale of distances, refraction of vertical angles
    int camera = -1;
    int motion_from = -1, motion_to = -1, motion_third = -1; // motions of the ends at the observation's epoch
    int unknown = -1;                                        // kind unknown only: which
    double value[3] = {};                                    // metres, radians, pixels
    double sigma[3] = {};    // standard deviations of the components, > 0; not read of members of a group
    double h1 = 0.0;         // metres, height of the instrument above from
    double h2 = 0.0;         // metres, height of the target above to (and above third)
    double refraction = 0.0; // vertical_angle without constants only: the coefficient of this sight
    int group = -1;          // correlated group
    int place = 0;           // row of the first component in the group's covariance; the others follow
    double factor = 1.0;     // a-priori factor of the kind: weight = (factor / sigma)^2
};

// Components whose errors are correlated: a baseline alone (size 3), baselines of a session, imported coordinates.
// The covariance (squares of metres and radians) is dense, size x size by rows, at Model::covariance[first].
// Each place belongs to exactly one component of one observation.
struct Group {
    int size;
    std::size_t first;
};

struct Model {
    Frame frame;
    std::vector<Site> sites; // [points] on the ellipsoid; otherwise empty

    int n_points = 0;
    std::vector<double> value;    // [unknowns] now
    std::vector<double> start;    // [unknowns] x0: as given, or the program's own first value
    std::vector<Code> code;       // [unknowns]
    std::vector<Meaning> meaning; // [unknowns]

    std::vector<Setup> setups;
    std::vector<Constants> constants;
    std::vector<Camera> cameras;
    std::vector<Motion> motions;

    std::vector<Observation> observations;
    std::vector<Group> groups;
    std::vector<double> covariance;

    int n_unknowns() const { return (int)value.size(); }
    bool estimated(int unknown) const { return code[unknown] == Code::free || code[unknown] == Code::datum; }

    // Appends and returns the index of what was appended (observation index for observe). Points come first. Values are
    // taken as start too; `codes` has one code for each value.
    int add_point(const double xyz[3], const Code codes[3]);
    int add_setup(int point, bool levelled, const double angles[3], const Code codes[3]);
    int add_constants(const double values[3], const Code codes[3]);
    int add_camera(const double values[10], const Code codes[10], double pu, double pv, double cu, double cv);
    int add_motion(const double values[7], const Code codes[7]);
    int add_group(int size, const double *covariance);
    int observe(const Observation &observation);

private:
    int add_unknowns(int n, const double *values, const Code *codes, const Meaning *meanings);
};

} // namespace vornadjust

#endif
