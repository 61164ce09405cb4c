// Horizontal directions, angles, azimuths and bearings (radians, from the first axis towards the second).
// No derivative where the horizontal length of the sight is below `shortest`.

#ifndef VORNADJUST_KINDS_DIRECTIONS_H
#define VORNADJUST_KINDS_DIRECTIONS_H

#include "adjust/kinds/sight.h"

namespace vornadjust {

// Of a sight in the axes of its instrument, (-pi, pi].
template <class T> T direction(const Vec3<T> &sight)
{
    using std::atan2;
    return atan2(sight.y, sight.x);
}

// From the sight `left` to the sight `right` of one instrument, (-2 pi, 2 pi).
template <class T> T horizontal_angle(const Vec3<T> &left, const Vec3<T> &right)
{
    return direction(right) - direction(left);
}

// Direction at p in the horizon there, turned to the network's north, less the convergence of the meridians
//   tan(latitude) x / (radius + height),  x the first coordinate of p in the axes turned likewise.
template <class T>
T azimuth(const Frame &frame, const Vec3<T> &p, const Vec3<T> &q, const Heights &h, const Leans<T> &leans = {})
{
    const double t = frame.azimuth_rotation;
    const T x = placed(frame, std::cos(t) * p.x - std::sin(t) * p.y);
    const T convergence = std::tan(frame.latitude) / frame.origin_radius() * x;
    return direction(levelled(frame, p, sight(frame, p, q, h, leans), leans.from)) + t - convergence;
}

// Of the first two coordinates, whatever is up.
template <class T> T bearing(const Vec3<T> &p, const Vec3<T> &q) { return direction(q - p); }

} // namespace vornadjust

#endif
