// Vectors of three components, of numbers or of numbers with derivatives.

#ifndef VORNADJUST_VEC3_H
#define VORNADJUST_VEC3_H

namespace vornadjust {

template <class T> struct Vec3 {
    T x, y, z;
};

template <class T> Vec3<T> operator+(const Vec3<T> &a, const Vec3<T> &b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
template <class T> Vec3<T> operator-(const Vec3<T> &a, const Vec3<T> &b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
template <class T, class S> Vec3<T> operator*(const S &s, const Vec3<T> &a) { return {s * a.x, s * a.y, s * a.z}; }
template <class T> T dot(const Vec3<T> &a, const Vec3<T> &b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

} // namespace vornadjust

#endif
