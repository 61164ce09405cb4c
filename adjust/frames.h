// The space that the coordinates of a network live in, and where up is at a point.
//
// heights     1D: only the third coordinate of a point exists, a height.
// plane       2D: first and second coordinate; a third one may be held, for slope distances.
// space       3D: x3 up, verticals parallel everywhere.
// sphere      3D: x3 up at the origin; verticals meet in the centre (0, 0, -(height + radius)). The origin of the
//             coordinates lies `height` above the sphere. The third coordinate of a point is x3 itself (cartesian) or
//             the height of the point above the sphere (mixed).
//
// Metres and radians. Positions are cartesian vectors; with mixed coordinates position() makes them.

#ifndef ADJUST_FRAMES_H
#define ADJUST_FRAMES_H

#include <cmath>

namespace vornadjust {

template <class T> struct Vec3 {
    T x, y, z;
};

template <class T> Vec3<T> operator+(const Vec3<T> &a, const Vec3<T> &b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
template <class T> Vec3<T> operator-(const Vec3<T> &a, const Vec3<T> &b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
template <class T, class S> Vec3<T> operator*(const S &s, const Vec3<T> &a) { return {s * a.x, s * a.y, s * a.z}; }
template <class T> T dot(const Vec3<T> &a, const Vec3<T> &b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

enum class Space { heights, plane, space, sphere };

struct Frame {
    Space space = Space::space;
    bool mixed = false;            // sphere: the third coordinate is the height above the sphere
    double radius = 6371000.0;     // metres, of the sphere; of refraction and convergence in every space
    double height = 0.0;           // metres, of the origin above the sphere
    double azimuth_rotation = 0.0; // radians, from the azimuth of the axes to that of the network's north
    double latitude = 0.0;         // radians, for the convergence of the meridians in azimuths

    bool curved() const { return space == Space::sphere; }
    double origin_radius() const { return radius + height; } // from the centre to the origin

    // The same coordinates with parallel verticals, as the search for open motions sees them.
    Frame flat() const;
};

} // namespace vornadjust

#endif
