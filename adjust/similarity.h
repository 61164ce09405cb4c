// Small motions of a network as a whole: shifts, turns and the scale, and what to call a combination.
//
// A motion has 7 coefficients: shifts along x, y, z; turns about x, y, z through the centre, in
// radians times the size; the scale times the size. Each basic motion so displaces the point that
// lies farthest from the centre by about 1:
//   displacement of x = c[0..2] + c[3..5] cross d + c[6] d,  d = (x - centre) / size.
// In the plane only shifts along x and y, the turn about z and the scale exist and move x and y
// alone; of heights alone the shift along z and the scale exist.

#ifndef VORNADJUST_SIMILARITY_H
#define VORNADJUST_SIMILARITY_H

#include <vector>

#include "adjust/model.h"
#include "adjust/small_svd.h"

namespace vornadjust {

constexpr int n_motions = 7;

struct Similarity {
    Space space = Space::space;
    double centre[3] = {0, 0, 0}; // metres
    double size = 1;              // metres, largest distance from the centre

    bool exists(int motion) const;
    // Component k of what basic motion m does to a vector of the network (metres, shifts leave it).
    double of_vector(int m, const double vector[3], int k) const;
    // The same for a point.
    double of_point(int m, const double x[3], int k) const;
    // Adds f times component k of what each basic motion does to a vector, or to a point.
    void add_vector(double f, const double vector[3], int k, double sums[n_motions]) const;
    void add_point(double f, const double x[3], int k, double sums[n_motions]) const;
};

// About the centroid of points, from their present coordinates.
Similarity similarity(const Model &model, const std::vector<int> &points);

enum class MotionKind { shift, turn, scale };

// One motion of several points, in words by numbers.
struct NamedMotion {
    MotionKind kind = MotionKind::shift;
    double direction[3] = {0, 0, 0}; // unit vector of the shift or of the axis; 0 for a scale
    bool centred = false;            // turn, scale: whether it is known which place stays
    double centre[3] = {0, 0, 0};    // metres, that place, or the place on the axis nearest to the centroid
};

// Names the motions spanned by the columns of c (7 by any): pure shifts first, along the axes where
// the space of shifts allows it, then turns, then scales. A turn or scale has a centre where no
// shift and no other turn stands beside it.
std::vector<NamedMotion> name_motions(const Similarity &similarity, const Dense &c);

} // namespace vornadjust

#endif
