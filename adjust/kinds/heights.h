// Height differences (metres): target above q less instrument above p, along the verticals. Linear but for curvature.

#ifndef ADJUST_KINDS_HEIGHTS_H
#define ADJUST_KINDS_HEIGHTS_H

#include "adjust/kinds/sight.h"

namespace vornadjust {

template <class T> T height_difference(const Frame &frame, const Vec3<T> &p, const Vec3<T> &q, const Heights &h)
{
    return rise(frame, p, q) + (h.target - h.instrument);
}

} // namespace vornadjust

#endif
