// Image coordinates (pixels): a central projection with ten inner parameters.
//
// With e the target in the axes of the camera:
//   x = -c e.x / e.z,  y = -c e.y / e.z,  r2 = x^2 + y^2
//   u = -(x + dx) / pu + cu,  v = -(y + dy) / pv + cv
//   dx = b y - a x + x q + p1 (2 x^2 + r2) + 2 p2 x y + x0,   q = k1 r2 + k2 r2^2 + k3 r2^3
//   dy = b x       + y q + 2 p1 x y + p2 (2 y^2 + r2) + y0
// (Brown, Close-range camera calibration, 1971, with the affinity a acting across only.)
// No derivative where the target lies within `shortest` of the plane of the projection centre.

#ifndef ADJUST_KINDS_IMAGES_H
#define ADJUST_KINDS_IMAGES_H

#include "adjust/kinds/sight.h"

namespace vornadjust {

template <class T> struct Inner {
    T c, x0, y0, a, b, k1, k2, k3, p1, p2;
};

template <class T> struct Uv {
    T u, v;
};

// Size of a pixel and centre of the image.
struct Pixels {
    double pu, pv, cu, cv;
};

template <class T> Uv<T> image(const Vec3<T> &e, const Inner<T> &i, const Pixels &pixels)
{
    const T x = -(i.c * e.x / e.z), y = -(i.c * e.y / e.z), r2 = x * x + y * y, xy2 = 2.0 * (x * y);
    const T q = ((r2 * i.k3 + i.k2) * r2 + i.k1) * r2;
    const T dx = i.b * y - i.a * x + x * q + (2.0 * (x * x) + r2) * i.p1 + xy2 * i.p2 + i.x0;
    const T dy = i.b * x + y * q + xy2 * i.p1 + (2.0 * (y * y) + r2) * i.p2 + i.y0;
    return {pixels.cu - (x + dx) / pixels.pu, pixels.cv - (y + dy) / pixels.pv};
}

} // namespace vornadjust

#endif
