// Vertical angles: elevations above the horizon of the instrument (radians, -pi/2 to pi/2).
// No derivative where the horizontal length of the sight is below `shortest`.

#ifndef ADJUST_KINDS_VERTICALS_H
#define ADJUST_KINDS_VERTICALS_H

#include "adjust/kinds/sight.h"

namespace vornadjust {

// Of a sight in the axes of its instrument. The ray arrives on a circle of radius R / k, so that a target is seen
// higher than it stands by k s / (2 R), with k the coefficient of refraction, s the horizontal length, R the radius of
// the sphere (W. Torge, Geodesy, on vertical refraction).
template <class T> T vertical_angle(const Frame &frame, const Vec3<T> &sight, const T &refraction)
{
    using std::atan2;
    const T s = horizontal_length(sight);
    return atan2(sight.z, s) + 0.5 / frame.radius * (refraction * placed(frame, s));
}

} // namespace vornadjust

#endif
