// The space that the coordinates of a network live in, and where up is at a point.
//
// heights     1D: only the third coordinate of a point exists, a height.
// plane       2D: first and second coordinate; a third one may be held, for slope distances.
// space       3D: x3 up, verticals parallel everywhere.
// sphere      3D: x3 up at the origin; verticals meet in the centre C = (0, 0, -(radius + height)). The origin of the
//             coordinates lies `height` above the sphere. The third coordinate of a point is x3 itself (cartesian) or
//             the height of the point above the sphere (mixed).
//
// In the plane, too, held third coordinates may be heights above a sphere (mixed). Metres and radians. A position is a
// cartesian vector; position() makes it from the three coordinates of a point.
//
// Lengths are differences of coordinates here, never of distances from the centre, so that a radius of 1e15 metres
// gives the numbers of parallel verticals. Valid for points on the near half of the sphere.

#ifndef ADJUST_FRAMES_H
#define ADJUST_FRAMES_H

#include <cmath>

#include "adjust/jet.h"

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
    bool mixed = false;            // the third coordinate is the height above the sphere (plane, sphere)
    double radius = 6371000.0;     // metres, of the sphere; of refraction and convergence in every space
    double height = 0.0;           // metres, of the origin above the sphere
    double azimuth_rotation = 0.0; // radians, added to the bearing of the axes
    double latitude = 0.0;         // radians, for the convergence of the meridians in azimuths
    bool parallel = false; // verticals taken as parallel; refraction and convergence have no derivative by place

    bool curved() const { return !parallel && (space == Space::sphere || mixed); }
    double origin_radius() const { return radius + height; }

    // The same coordinates with parallel verticals, in which shifts, turns and scale are exact.
    Frame flat() const
    {
        Frame f = *this;
        f.parallel = true;
        return f;
    }
};

// x, without its derivatives where verticals are taken as parallel.
template <class T> T placed(const Frame &frame, const T &x) { return frame.parallel ? T(value_of(x)) : x; }

// Position of a point with the coordinates c. With heights h above the sphere
//   z = (h - height) - (x^2 + y^2) / ((radius + h) + sqrt((radius + h)^2 - x^2 - y^2)).
template <class T> Vec3<T> position(const Frame &frame, const Vec3<T> &c)
{
    using std::sqrt;
    if (!frame.curved() || !frame.mixed) return c;
    const T r = c.z + frame.radius, across = c.x * c.x + c.y * c.y;
    return {c.x, c.y, (c.z - frame.height) - across / (r + sqrt(r * r - across))};
}

// From the centre of the sphere to a position, and the unit vector of it: up at the position.
template <class T> Vec3<T> from_centre(const Frame &frame, const Vec3<T> &p)
{
    return {p.x, p.y, p.z + frame.origin_radius()};
}

template <class T> Vec3<T> up(const Frame &frame, const Vec3<T> &p)
{
    using std::sqrt;
    if (!frame.curved()) return {T(0.0), T(0.0), T(1.0)};
    const Vec3<T> a = from_centre(frame, p);
    return (1.0 / sqrt(dot(a, a))) * a;
}

// Height of q above the level of p: |B| - |A| = (B - A)(B + A) / (|A| + |B|) with A, B from the centre to p, q.
template <class T> T rise(const Frame &frame, const Vec3<T> &p, const Vec3<T> &q)
{
    using std::sqrt;
    if (!frame.curved()) return q.z - p.z;
    const Vec3<T> a = from_centre(frame, p), b = from_centre(frame, q);
    return dot(q - p, a + b) / (sqrt(dot(a, a)) + sqrt(dot(b, b)));
}

// d as seen at p in axes turned the shortest way from x3 to up at p: horizontal components and the one along up.
template <class T> Vec3<T> levelled(const Frame &frame, const Vec3<T> &p, const Vec3<T> &d)
{
    if (!frame.curved()) return d;
    const Vec3<T> n = up(frame, p);
    const T lean = d.z + (n.x * d.x + n.y * d.y) / (1.0 + n.z);
    return {d.x - n.x * lean, d.y - n.y * lean, dot(n, d)};
}

} // namespace vornadjust

#endif
