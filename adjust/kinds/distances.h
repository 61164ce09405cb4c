// Distances (metres): additive constant + scale * length. No derivative where the length is below `shortest`.

#ifndef VORNADJUST_KINDS_DISTANCES_H
#define VORNADJUST_KINDS_DISTANCES_H

#include "adjust/kinds/sight.h"

namespace vornadjust {

template <class T> struct DistanceConstants {
    T additive, scale;
};

template <class T> T measured(const DistanceConstants<T> &c, const T &length) { return c.additive + c.scale * length; }

// Straight line from the instrument above p to the target above q.
template <class T>
T slope_length(const Frame &frame, const Vec3<T> &p, const Vec3<T> &q, const Heights &h, const Leans<T> &leans = {})
{
    return length(sight(frame, p, q, h, leans));
}

// Between the marks, without the third coordinate; on the ellipsoid in the horizon of the first.
template <class T> T plane_length(const Frame &frame, const Vec3<T> &p, const Vec3<T> &q, const Lean<T> *lean = nullptr)
{
    return horizontal_length(frame.ellipsoidal() ? levelled(frame, p, q - p, lean) : q - p);
}

// Between the marks: in the plane without the third coordinate.
template <class T> T bar_length(const Frame &frame, const Vec3<T> &p, const Vec3<T> &q)
{
    return frame.space == Space::plane ? plane_length(frame, p, q) : length(q - p);
}

// Straight line over plane coordinates that lie on the level of the origin; p.z, q.z are heights above the sphere.
// With the mean height m of instrument and target the plane length is longer by (radius + m) / (radius + height).
template <class T> T level_length(const Frame &frame, const Vec3<T> &p, const Vec3<T> &q, const Heights &h)
{
    using std::sqrt;
    const T a = p.z + h.instrument, b = q.z + h.target, mean = placed(frame, 0.5 * (a + b));
    const T along = (mean + frame.radius) / frame.origin_radius() * plane_length(frame, p, q);
    return sqrt(along * along + (b - a) * (b - a));
}

} // namespace vornadjust

#endif
