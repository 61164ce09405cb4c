// Where a point of a moved group stands at the group's epoch: scale R(rx, ry, rz) x + t (metres). The same takes a
// point into another reference system.

#ifndef VORNADJUST_KINDS_MOTIONS_H
#define VORNADJUST_KINDS_MOTIONS_H

#include "adjust/kinds/sight.h"

namespace vornadjust {

template <class T> struct Moved {
    Vec3<T> shift, angles;
    T scale;
};

template <class T> Vec3<T> moved(const Vec3<T> &x, const Moved<T> &m)
{
    return m.scale * turned(rotation(m.angles), x) + m.shift;
}

} // namespace vornadjust

#endif
