// What all kinds of sights share: the line from instrument to target, and the axes of an instrument.
//
// The rotation by three angles a, b, c (radians) is
//            | cb cc             cb sc             -sb   |
//     R =    | sa sb cc - ca sc  ca cc + sa sb sc  sa cb |     with ca = cos a, sa = sin a ...
//            | sa sc + ca sb cc  ca sb sc - sa cc  ca cb |
// An instrument sees transposed(R) d of a difference d; a moved group of points stands at scale R x + t.

#ifndef VORNADJUST_KINDS_SIGHT_H
#define VORNADJUST_KINDS_SIGHT_H

#include "adjust/frames.h"

namespace vornadjust {

// Shortest length (metres) that still has a direction; sights below it have no derivative.
constexpr double shortest = 1e-6;

template <class T> struct Rotation {
    Vec3<T> row[3];
};

template <class T> Rotation<T> rotation(const Vec3<T> &angles)
{
    using std::cos, std::sin;
    const T ca = cos(angles.x), sa = sin(angles.x), cb = cos(angles.y), sb = sin(angles.y), cc = cos(angles.z),
            sc = sin(angles.z);
    return {{{cb * cc, cb * sc, -sb},
             {sa * sb * cc - ca * sc, ca * cc + sa * sb * sc, sa * cb},
             {sa * sc + ca * sb * cc, ca * sb * sc - sa * cc, ca * cb}}};
}

template <class T> Vec3<T> turned(const Rotation<T> &r, const Vec3<T> &d)
{
    return {dot(r.row[0], d), dot(r.row[1], d), dot(r.row[2], d)};
}

template <class T> Vec3<T> turned_back(const Rotation<T> &r, const Vec3<T> &d)
{
    return d.x * r.row[0] + d.y * r.row[1] + d.z * r.row[2];
}

// Heights of instrument and target above their marks, metres.
struct Heights {
    double instrument = 0.0, target = 0.0;
};

// How the verticals at both ends lean; null where they are the normals.
template <class T> struct Leans {
    const Lean<T> *from = nullptr, *to = nullptr;
};

// From the instrument above p to the target above q, each raised along its own vertical.
template <class T>
Vec3<T> sight(const Frame &frame, const Vec3<T> &p, const Vec3<T> &q, const Heights &h, const Leans<T> &leans = {})
{
    Vec3<T> u = q - p;
    if (h.target != 0.0) u = u + h.target * up(frame, q, leans.to);
    if (h.instrument != 0.0) u = u - h.instrument * up(frame, p, leans.from);
    return u;
}

// The same for angles 0, 0, c.
template <class T> Vec3<T> turned_back(const T &c, const Vec3<T> &d)
{
    using std::cos, std::sin;
    const T cc = cos(c), sc = sin(c);
    return {cc * d.x - sc * d.y, sc * d.x + cc * d.y, d.z};
}

// An instrument: its three angles, and whether it is levelled at its point or its angles count from the axes of the
// network.
template <class T> struct Axes {
    Vec3<T> angles;
    bool levelled;
    bool tilted; // false: the first two angles are 0 and have no derivative
};

// The sight from p to q in the axes of the instrument at p.
template <class T>
Vec3<T> instrument_sight(const Frame &frame, const Vec3<T> &p, const Vec3<T> &q, const Heights &h, const Axes<T> &axes,
                         const Leans<T> &leans = {})
{
    Vec3<T> u = sight(frame, p, q, h, leans);
    if (axes.levelled) u = levelled(frame, p, u, leans.from);
    return axes.tilted ? turned_back(rotation(axes.angles), u) : turned_back(axes.angles.z, u);
}

template <class T> T length(const Vec3<T> &d)
{
    using std::sqrt;
    return sqrt(dot(d, d));
}

template <class T> T horizontal_length(const Vec3<T> &d)
{
    using std::sqrt;
    return sqrt(d.x * d.x + d.y * d.y);
}

} // namespace vornadjust

#endif
